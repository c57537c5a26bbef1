// The one-in, one-out transform filter and its two pins. A subclass says
// which types it takes and offers and turns each input sample into an
// output sample fetched from the downstream allocator.
#pragma once

#include "filter/base/base_filter.h"

namespace vantaro {

class CTransformFilter;

class CTransformInputPin final : public CBaseInputPin {
 public:
  CTransformInputPin(CTransformFilter* filter, std::recursive_mutex* lock);

  HRESULT CheckConnect(IPin* pin) override;
  HRESULT BreakConnect() override;
  HRESULT CompleteConnect(IPin* receivePin) override;
  HRESULT CheckMediaType(const CMediaType* mediaType) override;
  HRESULT SetMediaType(const CMediaType* mediaType) override;
  HRESULT VTC_STDCALL Receive(IMediaSample* sample) override;
  HRESULT VTC_STDCALL EndOfStream() override;
  HRESULT VTC_STDCALL BeginFlush() override;
  HRESULT VTC_STDCALL EndFlush() override;
  HRESULT VTC_STDCALL NewSegment(ReferenceTime start, ReferenceTime stop, double rate) override;

 private:
  CTransformFilter* transform_;
};

class CTransformOutputPin final : public CBaseOutputPin {
 public:
  CTransformOutputPin(CTransformFilter* filter, std::recursive_mutex* lock);

  HRESULT CheckConnect(IPin* pin) override;
  HRESULT BreakConnect() override;
  HRESULT CompleteConnect(IPin* receivePin) override;
  HRESULT CheckMediaType(const CMediaType* mediaType) override;
  HRESULT SetMediaType(const CMediaType* mediaType) override;
  HRESULT GetMediaType(int32_t position, CMediaType* mediaType) override;
  HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

 private:
  CTransformFilter* transform_;
};

class CTransformFilter : public CBaseFilter {
 public:
  CTransformFilter(const char16_t* name, IUnknown* outer, const GUID& clsid);
  ~CTransformFilter() override;

  int32_t GetPinCount() override { return 2; }
  CBasePin* GetPin(int32_t index) override;

  // The subclass's part.
  virtual HRESULT Transform(IMediaSample* in, IMediaSample* out) = 0;
  virtual HRESULT CheckInputType(const CMediaType* mediaType) = 0;
  virtual HRESULT CheckTransform(const CMediaType* in, const CMediaType* out) = 0;
  virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
  virtual HRESULT GetMediaType(int32_t position, CMediaType* mediaType) = 0;

  virtual HRESULT StartStreaming() { return kSOk; }
  virtual HRESULT StopStreaming() { return kSOk; }
  virtual HRESULT SetMediaType(PIN_DIRECTION, const CMediaType*) { return kSOk; }
  virtual HRESULT CheckConnect(PIN_DIRECTION, IPin*) { return kSOk; }
  virtual HRESULT BreakConnect(PIN_DIRECTION) { return kSOk; }
  virtual HRESULT CompleteConnect(PIN_DIRECTION, IPin*) { return kSOk; }

  // Fetches an output sample, runs Transform and delivers on S_OK; S_FALSE
  // drops the sample, and the graph hears of it once.
  virtual HRESULT Receive(IMediaSample* sample);
  virtual HRESULT EndOfStream();
  virtual HRESULT BeginFlush();
  virtual HRESULT EndFlush();
  virtual HRESULT NewSegment(ReferenceTime start, ReferenceTime stop, double rate);

  HRESULT VTC_STDCALL Stop() override;
  HRESULT VTC_STDCALL Pause() override;
  // The ids are "In" and "Out", whatever the pins are named.
  HRESULT VTC_STDCALL FindPin(const char16_t* id, IPin** pin) override;

 protected:
  // Gives the output sample the input's times, flags and type-specific flags.
  HRESULT InitializeOutputSample(IMediaSample* in, IMediaSample** out);

  friend class CTransformInputPin;
  friend class CTransformOutputPin;
  std::recursive_mutex m_csFilter;
  std::recursive_mutex m_csReceive;
  CTransformInputPin* m_pInput;
  CTransformOutputPin* m_pOutput;
  bool m_bSampleSkipped = false;
  bool m_bQualityChanged = false;
  bool m_bEOSDelivered = false;
};

constexpr int32_t kEcQualityChange = 11;

}  // namespace vantaro
