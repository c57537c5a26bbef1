// Two graph endpoints built on the library's filter base classes, for the
// decoder filter's tests here and inside the system's media graph on
// Windows: a push source of compressed frames, and a sink that records what
// reaches it. The sink lends an allocator that can attach a new media type to
// the next buffer, as a renderer does to change the surface under the filter.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "filter/base/base_filter.h"
#include "filter/base/media_sample.h"
#include "vantaro/vantaro.h"

namespace vantaro::testing {

constexpr GUID kSourceClass{0x1234, 0x5678, 0x9ABC, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr GUID kSinkClass{0x4321, 0x8765, 0xCBA9, {8, 7, 6, 5, 4, 3, 2, 1}};
constexpr uint8_t kFill = 0xCD;  // every lent output buffer starts so

inline BITMAPINFOHEADER* HeaderOf(const AM_MEDIA_TYPE& type) {
  return type.formattype == kFormatVideoInfo2 ? &reinterpret_cast<VIDEOINFOHEADER2*>(type.pbFormat)->bmiHeader
                                              : &reinterpret_cast<VIDEOINFOHEADER*>(type.pbFormat)->bmiHeader;
}

struct StreamOptions {
  bool videoInfo2 = false;
  uint16_t planes = 1;
  int32_t xPels = 0, yPels = 0;
  ReferenceTime avgTimePerFrame = 400000;
};

// A compressed-video input type.
inline CMediaType StreamType(uint32_t fourcc, int32_t width, int32_t height, const StreamOptions& options = {}) {
  CMediaType type;
  type.majortype = kMediaTypeVideo;
  type.subtype = FourCCSubtype(fourcc);
  type.formattype = options.videoInfo2 ? kFormatVideoInfo2 : kFormatVideoInfo;
  // Both blocks start alike, up to the frame time.
  auto* info = reinterpret_cast<VIDEOINFOHEADER*>(
      type.AllocFormatBuffer(options.videoInfo2 ? sizeof(VIDEOINFOHEADER2) : sizeof(VIDEOINFOHEADER)));
  info->AvgTimePerFrame = options.avgTimePerFrame;
  if (options.videoInfo2) reinterpret_cast<VIDEOINFOHEADER2*>(info)->dwInterlaceFlags = 0xFFFF;  // never read
  *HeaderOf(type) = BITMAPINFOHEADER{40, width, height, options.planes, 0, fourcc, 0, options.xPels, options.yPels, 0, 0};
  return type;
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
    return iid == kIidIMemAllocator ? GetInterface(static_cast<IMemAllocator*>(this), object)
                                    : CUnknown::NonDelegatingQueryInterface(iid, object);
  }
  HRESULT VTC_STDCALL SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
    ALLOCATOR_PROPERTIES granted{request->cBuffers, std::max(request->cbBuffer, minimum), request->cbAlign, request->cbPrefix};
    return inner_->SetProperties(&granted, actual);
  }
  HRESULT VTC_STDCALL GetProperties(ALLOCATOR_PROPERTIES* p) override { return inner_->GetProperties(p); }
  HRESULT VTC_STDCALL Commit() override { return inner_->Commit(); }
  HRESULT VTC_STDCALL Decommit() override { return inner_->Decommit(); }
  HRESULT VTC_STDCALL GetBuffer(IMediaSample** sample, ReferenceTime* start, ReferenceTime* stop,
                                uint32_t flags) override {
    const HRESULT hr = inner_->GetBuffer(sample, start, stop, flags);
    if (hr != kSOk) return hr;
    uint8_t* data = nullptr;
    (*sample)->GetPointer(&data);
    std::memset(data, kFill, size_t((*sample)->GetSize()));
    if (pending.IsValid()) (*sample)->SetMediaType(&pending);
    pending = CMediaType();
    return kSOk;
  }
  HRESULT VTC_STDCALL ReleaseBuffer(IMediaSample* sample) override { return inner_->ReleaseBuffer(sample); }

  int32_t minimum = 0;
  CMediaType pending;

 private:
  IMemAllocator* inner_;
};

// What the sink saw of one sample.
struct Received {
  HRESULT timeResult;
  ReferenceTime start, stop;
  bool sync, discontinuity, preroll;
  int32_t actual;
  uint32_t typeSpecificFlags;
  std::vector<uint8_t> data;  // the whole buffer
};

class TestSink final : public CBaseFilter {
 public:
  explicit TestSink(const GUID& clsid) : CBaseFilter(u"Sink", nullptr, &lock_, clsid), pin_(this, &lock_) {
    allocator_->NonDelegatingAddRef();
  }
  ~TestSink() override { allocator_->NonDelegatingRelease(); }
  int32_t GetPinCount() override { return 1; }
  CBasePin* GetPin(int32_t index) override { return index == 0 ? &pin_ : nullptr; }
  SinkAllocator* Allocator() { return allocator_; }
  CBasePin* Pin() { return &pin_; }

  // Accept only this subtype in this kind of format block (null: anything).
  GUID wantedSubtype = kGuidNull;
  GUID wantedFormat = kGuidNull;
  std::vector<Received> received;
  bool endOfStream = false;

 private:
  class InPin final : public CBaseInputPin {
   public:
    InPin(TestSink* sink, std::recursive_mutex* lock) : CBaseInputPin(sink, lock, u"In"), sink_(sink) {}
    HRESULT CheckMediaType(const CMediaType* type) override {
      const bool subtype = sink_->wantedSubtype == kGuidNull || type->subtype == sink_->wantedSubtype;
      const bool format = sink_->wantedFormat == kGuidNull || type->formattype == sink_->wantedFormat;
      return subtype && format ? kSOk : kSFalse;
    }
    HRESULT VTC_STDCALL EndOfStream() override { return sink_->endOfStream = true, kSOk; }
    HRESULT VTC_STDCALL GetAllocator(IMemAllocator** allocator) override {
      return GetInterface(static_cast<IMemAllocator*>(sink_->allocator_), reinterpret_cast<void**>(allocator));
    }
    HRESULT VTC_STDCALL Receive(IMediaSample* sample) override {
      const HRESULT hr = CBaseInputPin::Receive(sample);
      if (hr != kSOk) return hr;
      Received r{0, 0, 0, sample->IsSyncPoint() == kSOk, sample->IsDiscontinuity() == kSOk, sample->IsPreroll() == kSOk,
                 sample->GetActualDataLength(), SampleProps().dwTypeSpecificFlags, {}};
      r.timeResult = sample->GetTime(&r.start, &r.stop);
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
  SinkAllocator* allocator_ = new SinkAllocator;
};

struct PushFlags {
  bool timed = false;
  ReferenceTime start = 0, stop = 0;
  bool discontinuity = false, preroll = false;
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
    IMediaSample2* sample2 = nullptr;  // the type-specific flags ride in the second interface's properties
    AM_SAMPLE2_PROPERTIES props{};
    sample->QueryInterface(kIidIMediaSample2, reinterpret_cast<void**>(&sample2));
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
    OutPin(TestSource* source, std::recursive_mutex* lock) : CBaseOutputPin(source, lock, u"Out"), source_(source) {}
    HRESULT CheckMediaType(const CMediaType*) override { return kSOk; }
    HRESULT GetMediaType(int32_t position, CMediaType* type) override {
      return position != 0 ? kVfwSNoMoreItems : (*type = source_->type_, kSOk);
    }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
      const BITMAPINFOHEADER* header = HeaderOf(source_->type_);
      request->cBuffers = 1;
      request->cbBuffer = header->biWidth * std::abs(header->biHeight) * 8 + 4096;  // room for any frame
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

}  // namespace vantaro::testing
