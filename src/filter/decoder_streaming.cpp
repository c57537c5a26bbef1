// The decoder filter's per-sample work: one whole frame per input sample,
// decoded straight into the downstream buffer, with the sample's times and
// flags rewritten on the way and any format change it carries taken up.
#include <cstdlib>

#include "codec/layout_facts.h"
#include "filter/vantaro_decoder.h"

namespace vantaro {

namespace {

// Releases the second interface of the output sample on every way out.
struct Sample2Hold {
  IMediaSample2* sample = nullptr;
  ~Sample2Hold() {
    if (sample != nullptr) sample->Release();
  }
};

}  // namespace

HRESULT CVantaroDecoder::Transform(IMediaSample* in, IMediaSample* out) {
  // Times the input lacks leave as 0 and 0, overwriting what the base copied.
  ReferenceTime mediaStart = 0, mediaStop = 0;
  (void)in->GetMediaTime(&mediaStart, &mediaStop);
  out->SetMediaTime(&mediaStart, &mediaStop);
  ReferenceTime start = 0, stop = 0;
  (void)in->GetTime(&start, &stop);
  out->SetTime(&start, &stop);
  // Before any format change below, so a changing sample keeps the old length.
  out->SetActualDataLength(static_cast<int32_t>(f_.outputBufferSize));
  out->SetSyncPoint(1);  // the stream has only key frames
  // The raw answer goes in as a truth value: a discontinuity (S_OK, 0)
  // leaves unmarked and an ordinary frame (S_FALSE, 1) leaves marked.
  // Inverted, and required so.
  out->SetDiscontinuity(in->IsDiscontinuity());
  out->SetPreroll(0);

  Sample2Hold hold;
  if (Succeeded(out->QueryInterface(kIidIMediaSample2, reinterpret_cast<void**>(&hold.sample))) &&
      hold.sample != nullptr) {
    AM_MEDIA_TYPE* changed = nullptr;
    HRESULT formatResult = kSOk;
    if (hold.sample->GetMediaType(&changed) == kSOk && changed != nullptr) {
      formatResult = ApplyOutputFormat(changed);
    }
    if (f_.writeSampleFlags) {
      AM_SAMPLE2_PROPERTIES props{};
      if (Succeeded(hold.sample->GetProperties(sizeof(props), reinterpret_cast<uint8_t*>(&props)))) {
        props.dwTypeSpecificFlags =
            f_.alphaStream && f_.enhancedRenderer ? 0 : f_.typeSpecificFlags;
        hold.sample->SetProperties(sizeof(props), reinterpret_cast<const uint8_t*>(&props));
      }
    }
    if (changed != nullptr) {
      // The pin records the type (and applies it once more, harmlessly).
      const CMediaType copy(*changed);
      m_pOutput->SetMediaType(&copy);
      hold.sample->SetMediaType(changed);
      DeleteMediaType(changed);
    }
    if (formatResult != kSOk) return formatResult;
  }
  return DecodeInto(in, out);
}

HRESULT CVantaroDecoder::DecodeInto(IMediaSample* in, IMediaSample* out) {
  (void)in->GetActualDataLength();  // the frame carries its own lengths
  if (out->IsPreroll() == kSOk) return kSFalse;
  uint8_t* input = nullptr;
  uint8_t* output = nullptr;
  if (in->GetPointer(&input) != kSOk || out->GetPointer(&output) != kSOk) return kSFalse;
  // Nothing to decode with after a refused output type, and no writing past
  // a buffer smaller than the frame.
  void* instance = f_.instance;
  if (instance == nullptr || out->GetSize() < 0 ||
      static_cast<uint32_t>(out->GetSize()) < f_.outputFrameBytes) {
    return kSFalse;
  }
  if (IsPlanar(f_.outputLayout)) {
    // The second plane follows the frame's lines, as the driver lays it out.
    const int64_t lines = std::llabs(int64_t{f_.frameHeight});
    uint8_t* chroma = output + lines * f_.outputStride;
    VTC_DecompressFrameEx(instance, output, chroma, input, f_.outputStride);
  } else {
    VTC_DecompressFrame(instance, output, input, f_.outputStride);
  }
  return kSOk;
}

}  // namespace vantaro
