#include "driver/compress_handlers.h"

#include <algorithm>
#include <cstring>

#include "codec/field_flow.h"
#include "diagnostics/codec_log.h"
#include "driver/driver_formats.h"

namespace vantaro {
namespace {

// The output room ICM_COMPRESS may fill: what ICM_COMPRESS_GET_SIZE told the
// host, or the output header's own size when the host says it gave more.
size_t OutputCapacity(const BITMAPINFOHEADER* output) {
  const int64_t worstCase = std::max<int64_t>(CompressWorstCaseSize(output), 0);
  return static_cast<size_t>(std::max<int64_t>(worstCase, output->biSizeImage));
}

bool SourceLargeEnough(const CodecInstance& instance, uint32_t colorSpace,
                       const BITMAPINFOHEADER* source) {
  const int64_t expected = DriverFrameBytes(colorSpace, instance.width, instance.height);
  const int32_t got = static_cast<int32_t>(source->biSizeImage);
  if (expected <= got) return true;
  CodecLog("Compress", "Expected Input Frame Size %d for Resolution %dx%d, Got %d",
           static_cast<int32_t>(expected), instance.width, instance.height, got);
  return false;
}

bool SameResolution(const CodecInstance& instance, const BITMAPINFOHEADER* source) {
  const int32_t height = WrapAbs(source->biHeight);
  if (source->biWidth == instance.width && height == instance.height) return true;
  CodecLog("Compress", "Received Resolution %dx%d, Expected %dx%d", source->biWidth, height,
           instance.width, instance.height);
  return false;
}

// Both fields of the frame, the first field's lines being the frame's even
// lines. RGB pictures the host keeps bottom-up are walked from their last line
// upward, so the picture's top line still opens field 0; every other layout,
// and RGB said to be top-down, runs downward. The second field's second plane
// is one line further, not the frame-call offset of the direct functions.
Status CompressBothFields(CodecInstance* instance, const ICCOMPRESS& frame, uint32_t colorSpace,
                          size_t capacity, int64_t* length) {
  const int32_t line = DriverLineBytes(colorSpace, instance->width);
  const bool rgb = colorSpace == kCsRGB24 || colorSpace == kCsRGB32;
  const auto* input = static_cast<const uint8_t*>(frame.lpInput);
  auto* output = static_cast<uint8_t*>(frame.lpOutput);
  if (instance->topDown == 0 && rgb) {
    const uint8_t* top = input + (static_cast<int64_t>(instance->height) - 1) * line;
    VANTARO_RETURN_IF_ERROR(
        CompressField(instance, output, capacity, top, nullptr, -2 * line, 0, length));
    return CompressField(instance, output, capacity, top - line, nullptr, -2 * line, 1, length);
  }
  instance->frameBase = input;
  const uint8_t* chroma = DriverSecondPlane(colorSpace, input, instance->width, instance->height);
  VANTARO_RETURN_IF_ERROR(CompressField(instance, output, capacity, input, chroma, 2 * line, 0, length));
  return CompressField(instance, output, capacity, input + line,
                       chroma != nullptr ? chroma + line : nullptr, 2 * line, 1, length);
}

// The frame is walked in the layout its own header states, with Begin's
// size; the instance keeps Begin's layout once the frame is done, also when
// compressing fails. A walk in Begin's layout over a buffer of another would
// read past the source the size test admitted.
class FrameColorSpace {
 public:
  FrameColorSpace(CodecInstance* instance, uint32_t colorSpace)
      : instance_(instance), saved_(instance->colorSpace) {
    instance->colorSpace = colorSpace;
  }
  ~FrameColorSpace() { instance_->colorSpace = saved_; }
  FrameColorSpace(const FrameColorSpace&) = delete;
  FrameColorSpace& operator=(const FrameColorSpace&) = delete;

 private:
  CodecInstance* instance_;
  uint32_t saved_;
};

void MarkKeyFrame(const ICCOMPRESS& frame) {
  if (frame.lpdwFlags != nullptr) *frame.lpdwFlags = AVIIF_KEYFRAME;
}

}  // namespace

int64_t CompressQuery(CodecInstance* instance, const BITMAPINFOHEADER* source) {
  const uint32_t c = source->biCompression;
  CodecLog("CompressQuery", "FMT = %dx%d (ColorSpace %c%c%c%c)", source->biWidth,
           source->biHeight, FourCCChar(c, 0), FourCCChar(c, 1), FourCCChar(c, 2),
           FourCCChar(c, 3));
  const uint32_t colorSpace = static_cast<uint32_t>(ColorSpaceFromHeader(source));
  int64_t result = kIcErrOk;
  if (colorSpace == kCsInvalid) {
    CodecLog("CompressQuery", "Returning Bad Format (csInvalid)");
    result = kIcErrBadFormat;
  } else if (source->biWidth % 16 != 0) {
    CodecLog("CompressQuery", "Returning Bad Format (biWidth)");
    result = kIcErrBadFormat;
  } else if (!CompressSourceSuits(instance->chromaFamily, colorSpace)) {
    LogAlphaRefusal("CompressQuery", instance->chromaFamily);
    result = kIcErrBadFormat;
  }
  // Even a refused query leaves its orientation behind: hosts rely on the
  // last query having set it before ICM_COMPRESS.
  instance->topDown = source->biHeight < 0 ? 1 : 0;
  return result;
}

int64_t CompressGetFormat(CodecInstance* instance, const BITMAPINFOHEADER* source,
                          BITMAPINFOHEADER* output) {
  if (output == nullptr) return sizeof(BITMAPINFOHEADER);
  // The copy keeps the source's planes, bit count and resolution fields: the
  // compressed format states no bit count of its own.
  std::memmove(output, source, sizeof(BITMAPINFOHEADER));
  output->biSize = sizeof(BITMAPINFOHEADER);
  output->biClrUsed = 0;
  output->biClrImportant = 0;
  output->biSizeImage = static_cast<uint32_t>(
      WrapMul(WrapMul(WrapAbs(source->biWidth), WrapAbs(source->biHeight)), 6));
  output->biCompression = instance->fourcc;
  output->biHeight = WrapAbs(source->biHeight);
  instance->topDown = source->biHeight < 0 ? 1 : 0;
  return kIcErrOk;
}

int64_t CompressWorstCaseSize(const BITMAPINFOHEADER* compressed) {
  return WrapMul(WrapMul(WrapAbs(compressed->biHeight), WrapAbs(compressed->biWidth)), 6);
}

int64_t CompressMessage(CodecInstance* instance, const ICCOMPRESS& frame) {
  if (frame.lpbiInput == nullptr || frame.lpInput == nullptr || frame.lpbiOutput == nullptr ||
      frame.lpOutput == nullptr) {
    return kIcErrBadFormat;
  }
  // The layout of this call's header; the instance keeps Begin's.
  const uint32_t colorSpace = static_cast<uint32_t>(ColorSpaceFromHeader(frame.lpbiInput));
  if (colorSpace == kCsInvalid) {
    MarkKeyFrame(frame);
    return kIcErrBadFormat;
  }
  if (!SourceLargeEnough(*instance, colorSpace, frame.lpbiInput)) return kIcErrBadFormat;
  if (!SameResolution(*instance, frame.lpbiInput)) return kIcErrBadFormat;
  int64_t length = 0;
  Status status;
  {
    const FrameColorSpace frameLayout(instance, colorSpace);
    status = CompressBothFields(instance, frame, colorSpace, OutputCapacity(frame.lpbiOutput),
                                &length);
  }
  if (status != Status::kOk) {
    // The log line keeps the wording it had when failures were exceptions.
    CodecLog("Compress", "Exception durring compression.");
    return kIcErrBadFormat;
  }
  frame.lpbiOutput->biSizeImage = static_cast<uint32_t>(length);
  MarkKeyFrame(frame);
  return kIcErrOk;
}

}  // namespace vantaro
