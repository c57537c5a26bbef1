// A small graph for the decoder filter: a push source of compressed frames,
// the filter, and a sink that records what reaches it. The sink lends an
// allocator that can attach a new media type to the next buffer, as a
// renderer does to change the surface under the filter.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "filter/vantaro_decoder.h"
#include "platform/registry.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro::testing {

constexpr GUID kSourceClass{0x1234, 0x5678, 0x9ABC, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr GUID kSinkClass{0x4321, 0x8765, 0xCBA9, {8, 7, 6, 5, 4, 3, 2, 1}};
constexpr GUID kEnhancedVideoRenderer{0xFA10746C, 0x9B63, 0x4B6C,
                                      {0xBC, 0x49, 0xFC, 0x30, 0x0E, 0xA5, 0xF2, 0x56}};
constexpr GUID kOverlayMixer{0xCD8743A1, 0x3736, 0x11D0,
                             {0x9E, 0x69, 0x00, 0xC0, 0x4F, 0xD7, 0xC1, 0x5B}};
constexpr GUID kVideoMixingRenderer7{0xB87BEB7B, 0x8D29, 0x423F,
                                     {0xAE, 0x4D, 0x65, 0x82, 0xC1, 0x01, 0x75, 0xAC}};
constexpr GUID kVideoRenderer{0x70E102B0, 0x5556, 0x11CE,
                              {0x97, 0xC0, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kVideoMixingRenderer9{0x51B4ABF3, 0x748F, 0x4E3B,
                                     {0xA2, 0x76, 0xC8, 0x28, 0x33, 0x0E, 0x92, 0x6A}};

constexpr uint8_t kFill = 0xCD;  // every lent output buffer starts so

using test::FourCC;

struct StreamOptions {
  bool videoInfo2 = false;
  uint16_t planes = 1;
  int32_t xPels = 0, yPels = 0;
  ReferenceTime avgTimePerFrame = 400000;
};

// A compressed-video input type.
inline CMediaType StreamType(uint32_t fourcc, int32_t width, int32_t height,
                             const StreamOptions& options = {}) {
  CMediaType type;
  type.majortype = kMediaTypeVideo;
  type.subtype = FourCCSubtype(fourcc);
  BITMAPINFOHEADER* header = nullptr;
  if (options.videoInfo2) {
    auto* info = reinterpret_cast<VIDEOINFOHEADER2*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER2)));
    type.formattype = kFormatVideoInfo2;
    info->AvgTimePerFrame = options.avgTimePerFrame;
    info->dwInterlaceFlags = 0xFFFF;  // never read
    header = &info->bmiHeader;
  } else {
    auto* info = reinterpret_cast<VIDEOINFOHEADER*>(type.AllocFormatBuffer(sizeof(VIDEOINFOHEADER)));
    type.formattype = kFormatVideoInfo;
    info->AvgTimePerFrame = options.avgTimePerFrame;
    header = &info->bmiHeader;
  }
  header->biSize = 40;
  header->biWidth = width;
  header->biHeight = height;
  header->biPlanes = options.planes;
  header->biCompression = fourcc;
  header->biXPelsPerMeter = options.xPels;
  header->biYPelsPerMeter = options.yPels;
  return type;
}

inline BITMAPINFOHEADER* HeaderOf(const AM_MEDIA_TYPE& type) {
  return type.formattype == kFormatVideoInfo2
             ? &reinterpret_cast<VIDEOINFOHEADER2*>(type.pbFormat)->bmiHeader
             : &reinterpret_cast<VIDEOINFOHEADER*>(type.pbFormat)->bmiHeader;
}

// Forwards to a memory allocator, granting at least `minimum` bytes a
// buffer, filling each lent buffer with kFill, and attaching a pending
// media type to the next buffer.
class SinkAllocator final : public CUnknown, public IMemAllocator {
 public:
  SinkAllocator() : CUnknown(nullptr), inner_(CMemAllocator::Create()) {}
  ~SinkAllocator() override { inner_->Release(); }
  VTC_DECLARE_IUNKNOWN
  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override {
    if (iid == kIidIMemAllocator) return GetInterface(static_cast<IMemAllocator*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(iid, object);
  }
  HRESULT VTC_STDCALL SetProperties(ALLOCATOR_PROPERTIES* request,
                                    ALLOCATOR_PROPERTIES* actual) override {
    ALLOCATOR_PROPERTIES granted = *request;
    granted.cbBuffer = std::max(granted.cbBuffer, minimum);
    return inner_->SetProperties(&granted, actual);
  }
  HRESULT VTC_STDCALL GetProperties(ALLOCATOR_PROPERTIES* p) override {
    return inner_->GetProperties(p);
  }
  HRESULT VTC_STDCALL Commit() override { return inner_->Commit(); }
  HRESULT VTC_STDCALL Decommit() override { return inner_->Decommit(); }
  HRESULT VTC_STDCALL GetBuffer(IMediaSample** sample, ReferenceTime* start, ReferenceTime* stop,
                                uint32_t flags) override {
    const HRESULT hr = inner_->GetBuffer(sample, start, stop, flags);
    if (hr != kSOk) return hr;
    uint8_t* data = nullptr;
    (*sample)->GetPointer(&data);
    std::memset(data, kFill, static_cast<size_t>((*sample)->GetSize()));
    if (pending.IsValid()) {
      (*sample)->SetMediaType(&pending);
      pending = CMediaType();
    }
    return kSOk;
  }
  HRESULT VTC_STDCALL ReleaseBuffer(IMediaSample* sample) override {
    return inner_->ReleaseBuffer(sample);
  }

  int32_t minimum = 0;
  CMediaType pending;

 private:
  IMemAllocator* inner_;
};

// What the sink saw of one sample.
struct Received {
  HRESULT timeResult;
  ReferenceTime start, stop;
  HRESULT mediaTimeResult;
  ReferenceTime mediaStart, mediaStop;
  bool sync, discontinuity, preroll;
  int32_t actual;
  uint32_t typeSpecificFlags;
  std::vector<uint8_t> data;  // the whole buffer
};

class TestSink final : public CBaseFilter {
 public:
  explicit TestSink(const GUID& clsid)
      : CBaseFilter(u"Sink", nullptr, &lock_, clsid), pin_(this, &lock_) {
    allocator_ = new SinkAllocator;
    allocator_->NonDelegatingAddRef();
  }
  ~TestSink() override { allocator_->NonDelegatingRelease(); }
  int32_t GetPinCount() override { return 1; }
  CBasePin* GetPin(int32_t index) override { return index == 0 ? &pin_ : nullptr; }

  // Accept only this subtype in this kind of format block (null: anything).
  GUID wantedSubtype = kGuidNull;
  GUID wantedFormat = kGuidNull;
  std::vector<Received> received;
  SinkAllocator* Allocator() { return allocator_; }
  CBasePin* Pin() { return &pin_; }

 private:
  class InPin final : public CBaseInputPin {
   public:
    InPin(TestSink* sink, std::recursive_mutex* lock) : CBaseInputPin(sink, lock, u"In"), sink_(sink) {}
    HRESULT CheckMediaType(const CMediaType* type) override {
      if (!(sink_->wantedSubtype == kGuidNull) && !(type->subtype == sink_->wantedSubtype)) {
        return kSFalse;
      }
      if (!(sink_->wantedFormat == kGuidNull) && !(type->formattype == sink_->wantedFormat)) {
        return kSFalse;
      }
      return kSOk;
    }
    HRESULT VTC_STDCALL GetAllocator(IMemAllocator** allocator) override {
      return GetInterface(static_cast<IMemAllocator*>(sink_->allocator_),
                          reinterpret_cast<void**>(allocator));
    }
    HRESULT VTC_STDCALL Receive(IMediaSample* sample) override {
      const HRESULT hr = CBaseInputPin::Receive(sample);
      if (hr != kSOk) return hr;
      Received r{};
      r.timeResult = sample->GetTime(&r.start, &r.stop);
      r.mediaTimeResult = sample->GetMediaTime(&r.mediaStart, &r.mediaStop);
      r.sync = sample->IsSyncPoint() == kSOk;
      r.discontinuity = sample->IsDiscontinuity() == kSOk;
      r.preroll = sample->IsPreroll() == kSOk;
      r.actual = sample->GetActualDataLength();
      r.typeSpecificFlags = SampleProps().dwTypeSpecificFlags;
      uint8_t* data = nullptr;
      sample->GetPointer(&data);
      r.data.assign(data, data + sample->GetSize());
      sink_->received.push_back(std::move(r));
      return kSOk;
    }

   private:
    TestSink* sink_;
  };

  std::recursive_mutex lock_;
  InPin pin_;
  SinkAllocator* allocator_;
};

struct PushFlags {
  bool timed = false;
  ReferenceTime start = 0, stop = 0;
  bool discontinuity = false;
  bool preroll = false;
  uint32_t typeSpecificFlags = 0;
};

class TestSource final : public CBaseFilter {
 public:
  explicit TestSource(const CMediaType& type)
      : CBaseFilter(u"Source", nullptr, &lock_, kSourceClass), type_(type), pin_(this, &lock_) {}
  int32_t GetPinCount() override { return 1; }
  CBasePin* GetPin(int32_t index) override { return index == 0 ? &pin_ : nullptr; }
  CBaseOutputPin* Pin() { return &pin_; }

  HRESULT Push(const std::vector<uint8_t>& frame, const PushFlags& flags = {}) {
    IMediaSample* sample = nullptr;
    HRESULT hr = pin_.GetDeliveryBuffer(&sample, nullptr, nullptr, 0);
    if (hr != kSOk) return hr;
    uint8_t* data = nullptr;
    sample->GetPointer(&data);
    std::memcpy(data, frame.data(), frame.size());
    sample->SetActualDataLength(static_cast<int32_t>(frame.size()));
    ReferenceTime start = flags.start, stop = flags.stop;
    if (flags.timed) sample->SetTime(&start, &stop);
    sample->SetDiscontinuity(flags.discontinuity);
    sample->SetPreroll(flags.preroll);
    IMediaSample2* sample2 = nullptr;
    sample->QueryInterface(kIidIMediaSample2, reinterpret_cast<void**>(&sample2));
    AM_SAMPLE2_PROPERTIES props{};
    sample2->GetProperties(sizeof(props), reinterpret_cast<uint8_t*>(&props));
    props.dwTypeSpecificFlags = flags.typeSpecificFlags;
    sample2->SetProperties(sizeof(props), reinterpret_cast<const uint8_t*>(&props));
    sample2->Release();
    hr = pin_.Deliver(sample);
    sample->Release();
    return hr;
  }

 private:
  class OutPin final : public CBaseOutputPin {
   public:
    OutPin(TestSource* source, std::recursive_mutex* lock)
        : CBaseOutputPin(source, lock, u"Out"), source_(source) {}
    HRESULT CheckMediaType(const CMediaType*) override { return kSOk; }
    HRESULT GetMediaType(int32_t position, CMediaType* type) override {
      if (position != 0) return kVfwSNoMoreItems;
      *type = source_->type_;
      return kSOk;
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
      const BITMAPINFOHEADER* header = HeaderOf(source_->type_);
      request->cBuffers = 1;
      request->cbBuffer = header->biWidth * std::abs(header->biHeight) * 8 + 4096;
      ALLOCATOR_PROPERTIES actual{};
      return allocator->SetProperties(request, &actual);
    }

   private:
    TestSource* source_;
  };

  std::recursive_mutex lock_;
  CMediaType type_;
  OutPin pin_;
};

// Source, decoder and sink, each held by one reference.
struct Graph {
  TestSource* source;
  CVantaroDecoder* decoder;
  TestSink* sink;

  explicit Graph(const CMediaType& input, const GUID& sinkClass = kSinkClass)
      : source(new TestSource(input)),
        decoder(new CVantaroDecoder(nullptr)),
        sink(new TestSink(sinkClass)) {
    source->NonDelegatingAddRef();
    decoder->NonDelegatingAddRef();
    sink->NonDelegatingAddRef();
  }
  ~Graph() {
    Stop();
    Disconnect();
    source->NonDelegatingRelease();
    decoder->NonDelegatingRelease();
    sink->NonDelegatingRelease();
  }
  CBasePin* In() { return decoder->GetPin(0); }
  CBasePin* Out() { return decoder->GetPin(1); }
  HRESULT ConnectInput() { return source->Pin()->Connect(In(), nullptr); }
  // Connects the output to the sink, which takes the first offer of this
  // subtype in this kind of block.
  HRESULT ConnectOutput(const GUID& subtype = kGuidNull, const GUID& format = kGuidNull) {
    sink->wantedSubtype = subtype;
    sink->wantedFormat = format;
    return Out()->Connect(sink->Pin(), nullptr);
  }
  void DisconnectOutput() {
    Out()->Disconnect();
    sink->Pin()->Disconnect();
  }
  void Disconnect() {
    DisconnectOutput();
    source->Pin()->Disconnect();
    In()->Disconnect();
  }
  HRESULT Run() {
    HRESULT hr = sink->Run(0);
    if (hr == kSOk) hr = decoder->Run(0);
    if (hr == kSOk) hr = source->Run(0);
    return hr;
  }
  void Stop() {
    source->Stop();
    decoder->Stop();
    sink->Stop();
  }
};

}  // namespace vantaro::testing
