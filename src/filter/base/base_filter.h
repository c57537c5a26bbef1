// The generic filter and pins: connection, media-type agreement, allocator
// choice, state changes and delivery. The transform filter and the tests'
// sources and sinks are built on these.
#pragma once

#include <mutex>
#include <string>

#include "filter/base/com_base.h"
#include "filter/base/media_sample.h"
#include "filter/base/media_type.h"

namespace vantaro {

class CBasePin;

class CBaseFilter : public CUnknown, public IBaseFilter, public IAMovieSetup {
 public:
  CBaseFilter(const char16_t* name, IUnknown* outer, std::recursive_mutex* lock,
              const GUID& clsid);
  ~CBaseFilter() override;

  VTC_DECLARE_IUNKNOWN
  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

  virtual HRESULT StreamTime(ReferenceTime* time);
  virtual int32_t GetPinVersion() { return 1; }
  virtual int32_t GetPinCount() = 0;
  virtual CBasePin* GetPin(int32_t index) = 0;
  virtual const AMOVIESETUP_FILTER* GetSetupData() { return nullptr; }

  HRESULT VTC_STDCALL GetClassID(GUID* clsid) override;
  HRESULT VTC_STDCALL Stop() override;
  HRESULT VTC_STDCALL Pause() override;
  HRESULT VTC_STDCALL Run(ReferenceTime start) override;
  HRESULT VTC_STDCALL GetState(uint32_t timeoutMs, FILTER_STATE* state) override;
  HRESULT VTC_STDCALL SetSyncSource(IReferenceClock* clock) override;
  HRESULT VTC_STDCALL GetSyncSource(IReferenceClock** clock) override;
  HRESULT VTC_STDCALL EnumPins(IEnumPins** pins) override;
  HRESULT VTC_STDCALL FindPin(const char16_t* id, IPin** pin) override;
  HRESULT VTC_STDCALL QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT VTC_STDCALL JoinFilterGraph(IFilterGraph* graph, const char16_t* name) override;
  HRESULT VTC_STDCALL QueryVendorInfo(char16_t** vendorInfo) override;
  HRESULT VTC_STDCALL Register() override;
  HRESULT VTC_STDCALL Unregister() override;

  bool IsStopped() const { return state_ == State_Stopped; }
  // Sends an event to the graph, if the graph takes events.
  HRESULT NotifyEvent(int32_t code, intptr_t param1, intptr_t param2);

 protected:
  FILTER_STATE state_ = State_Stopped;
  std::recursive_mutex* filterLock_;

 private:
  std::u16string name_;
  GUID clsid_;
  IReferenceClock* clock_ = nullptr;
  IFilterGraph* graph_ = nullptr;  // not held: the graph holds the filter
};

class CBasePin : public CUnknown, public IPin {
 public:
  CBasePin(CBaseFilter* filter, std::recursive_mutex* lock, const char16_t* name,
           PIN_DIRECTION direction);
  ~CBasePin() override;

  VTC_DECLARE_IUNKNOWN
  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;
  // A pin lives as long as its filter and counts its references there.
  uint32_t NonDelegatingAddRef() override { return filter_->AddRef(); }
  uint32_t NonDelegatingRelease() override { return filter_->Release(); }

  HRESULT VTC_STDCALL Connect(IPin* receivePin, const AM_MEDIA_TYPE* mediaType) override;
  HRESULT VTC_STDCALL ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* mediaType) override;
  HRESULT VTC_STDCALL Disconnect() override;
  HRESULT VTC_STDCALL ConnectedTo(IPin** pin) override;
  HRESULT VTC_STDCALL ConnectionMediaType(AM_MEDIA_TYPE* mediaType) override;
  HRESULT VTC_STDCALL QueryPinInfo(PIN_INFO* info) override;
  HRESULT VTC_STDCALL QueryDirection(PIN_DIRECTION* direction) override;
  HRESULT VTC_STDCALL QueryId(char16_t** id) override;
  HRESULT VTC_STDCALL QueryAccept(const AM_MEDIA_TYPE* mediaType) override;
  HRESULT VTC_STDCALL EnumMediaTypes(IEnumMediaTypes** types) override;
  HRESULT VTC_STDCALL QueryInternalConnections(IPin** pins, uint32_t* count) override;
  HRESULT VTC_STDCALL EndOfStream() override { return kSOk; }
  HRESULT VTC_STDCALL BeginFlush() override { return kSOk; }
  HRESULT VTC_STDCALL EndFlush() override { return kSOk; }
  HRESULT VTC_STDCALL NewSegment(ReferenceTime start, ReferenceTime stop, double rate) override;

  virtual HRESULT CheckMediaType(const CMediaType* mediaType) = 0;
  // Records the connection's type.
  virtual HRESULT SetMediaType(const CMediaType* mediaType);
  // Refuses a pin of the same direction.
  virtual HRESULT CheckConnect(IPin* pin);
  virtual HRESULT BreakConnect() { return kSOk; }
  virtual HRESULT CompleteConnect(IPin*) { return kSOk; }
  // The types this pin proposes, by position; VFW_S_NO_MORE_ITEMS past the end.
  virtual HRESULT GetMediaType(int32_t position, CMediaType* mediaType);
  virtual HRESULT Active() { return kSOk; }
  virtual HRESULT Inactive() { return kSOk; }

  bool IsConnected() const { return connected_ != nullptr; }
  IPin* GetConnected() const { return connected_; }
  const CMediaType& CurrentMediaType() const { return mediaType_; }
  CBaseFilter* Filter() const { return filter_; }

 protected:
  std::recursive_mutex* lock_;

 private:
  HRESULT AgreeMediaType(IPin* receivePin, const CMediaType& partial);
  HRESULT TryMediaTypes(IPin* receivePin, const CMediaType& partial, IEnumMediaTypes* types);
  HRESULT AttemptConnection(IPin* receivePin, const CMediaType& mediaType);
  void DropConnection();

  CBaseFilter* filter_;
  std::u16string name_;
  PIN_DIRECTION direction_;
  IPin* connected_ = nullptr;
  CMediaType mediaType_;
};

class CBaseOutputPin : public CBasePin {
 public:
  CBaseOutputPin(CBaseFilter* filter, std::recursive_mutex* lock, const char16_t* name);

  HRESULT CheckConnect(IPin* pin) override;
  HRESULT CompleteConnect(IPin* receivePin) override;
  HRESULT BreakConnect() override;
  HRESULT Active() override;
  HRESULT Inactive() override;
  HRESULT VTC_STDCALL EndOfStream() override { return kEUnexpected; }
  HRESULT VTC_STDCALL BeginFlush() override { return kEUnexpected; }
  HRESULT VTC_STDCALL EndFlush() override { return kEUnexpected; }

  virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) = 0;
  // The downstream pin's allocator if it lends one that takes our sizes,
  // else one of our own.
  virtual HRESULT DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator);

  HRESULT GetDeliveryBuffer(IMediaSample** sample, ReferenceTime* start, ReferenceTime* stop,
                            uint32_t flags);
  HRESULT Deliver(IMediaSample* sample);
  HRESULT DeliverEndOfStream();
  HRESULT DeliverBeginFlush();
  HRESULT DeliverEndFlush();
  HRESULT DeliverNewSegment(ReferenceTime start, ReferenceTime stop, double rate);
  IMemInputPin* InputPin() const { return inputPin_; }

 private:
  IMemAllocator* allocator_ = nullptr;
  IMemInputPin* inputPin_ = nullptr;
};

class CBaseInputPin : public CBasePin, public IMemInputPin {
 public:
  CBaseInputPin(CBaseFilter* filter, std::recursive_mutex* lock, const char16_t* name);
  ~CBaseInputPin() override;

  VTC_DECLARE_IUNKNOWN
  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

  HRESULT VTC_STDCALL GetAllocator(IMemAllocator** allocator) override;
  HRESULT VTC_STDCALL NotifyAllocator(IMemAllocator* allocator, Bool32 readOnly) override;
  HRESULT VTC_STDCALL GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override {
    return kENotImpl;
  }
  // Checks the streaming state and takes the sample's properties.
  HRESULT VTC_STDCALL Receive(IMediaSample* sample) override;
  HRESULT VTC_STDCALL ReceiveMultiple(IMediaSample** samples, int32_t count,
                                      int32_t* processed) override;
  HRESULT VTC_STDCALL ReceiveCanBlock() override { return kSOk; }
  HRESULT VTC_STDCALL BeginFlush() override;
  HRESULT VTC_STDCALL EndFlush() override;

  HRESULT BreakConnect() override;
  HRESULT Inactive() override;
  // S_OK when a sample may be taken now, S_FALSE while flushing.
  HRESULT CheckStreaming();
  const AM_SAMPLE2_PROPERTIES& SampleProps() const { return sampleProps_; }

 private:
  IMemAllocator* allocator_ = nullptr;
  bool flushing_ = false;
  AM_SAMPLE2_PROPERTIES sampleProps_{};
};

// Enumerators over a filter's pins and over a pin's proposed types.
HRESULT NewPinEnumerator(CBaseFilter* filter, IEnumPins** pins);
HRESULT NewMediaTypeEnumerator(CBasePin* pin, IEnumMediaTypes** types);

}  // namespace vantaro
