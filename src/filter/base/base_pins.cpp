// The generic pins: connection and type agreement, allocator choice and
// delivery downstream, and the input side's sample checks.
#include <algorithm>

#include "filter/base/base_filter.h"
#include "platform/com_runtime.h"

namespace vantaro {

CBasePin::CBasePin(CBaseFilter* filter, std::recursive_mutex* lock, const char16_t* name,
                   PIN_DIRECTION direction)
    : CUnknown(nullptr), lock_(lock), filter_(filter), name_(name), direction_(direction) {}

CBasePin::~CBasePin() {
  if (connected_ != nullptr) connected_->Release();
}

HRESULT CBasePin::NonDelegatingQueryInterface(const GUID& iid, void** object) {
  if (iid == kIidIPin) return GetInterface(static_cast<IPin*>(this), object);
  return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBasePin::Connect(IPin* receivePin, const AM_MEDIA_TYPE* mediaType) {
  if (receivePin == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  if (connected_ != nullptr) return kVfwEAlreadyConnected;
  if (!filter_->IsStopped()) return kVfwENotStopped;
  HRESULT hr = CheckConnect(receivePin);
  if (Failed(hr)) {
    BreakConnect();
    return hr;
  }
  const CMediaType partial = mediaType != nullptr ? CMediaType(*mediaType) : CMediaType();
  hr = AgreeMediaType(receivePin, partial);
  if (Failed(hr)) BreakConnect();
  return hr;
}

// A full type is tried alone; otherwise the receiving pin's own proposals
// first, then ours, each filtered by what `partial` names.
HRESULT CBasePin::AgreeMediaType(IPin* receivePin, const CMediaType& partial) {
  if (partial.IsValid() && !partial.IsPartiallySpecified()) {
    return AttemptConnection(receivePin, partial);
  }
  IEnumMediaTypes* theirs = nullptr;
  if (Succeeded(receivePin->EnumMediaTypes(&theirs)) && theirs != nullptr) {
    const HRESULT hr = TryMediaTypes(receivePin, partial, theirs);
    theirs->Release();
    if (Succeeded(hr)) return hr;
  }
  IEnumMediaTypes* ours = nullptr;
  if (Succeeded(EnumMediaTypes(&ours)) && ours != nullptr) {
    const HRESULT hr = TryMediaTypes(receivePin, partial, ours);
    ours->Release();
    if (Succeeded(hr)) return hr;
  }
  return kVfwENoAcceptableTypes;
}

HRESULT CBasePin::TryMediaTypes(IPin* receivePin, const CMediaType& partial,
                                IEnumMediaTypes* types) {
  for (;;) {
    AM_MEDIA_TYPE* candidate = nullptr;
    uint32_t fetched = 0;
    if (types->Next(1, &candidate, &fetched) != kSOk || fetched != 1) return kVfwENoAcceptableTypes;
    const CMediaType type(*candidate);
    DeleteMediaType(candidate);
    if (partial.MatchesPartial(type) && Succeeded(AttemptConnection(receivePin, type))) {
      return kSOk;
    }
  }
}

HRESULT CBasePin::AttemptConnection(IPin* receivePin, const CMediaType& mediaType) {
  HRESULT hr = CheckMediaType(&mediaType);
  if (hr != kSOk) return Failed(hr) ? hr : kVfwETypeNotAccepted;
  connected_ = receivePin;
  connected_->AddRef();
  hr = SetMediaType(&mediaType);
  if (Succeeded(hr)) hr = receivePin->ReceiveConnection(this, &mediaType);
  if (Succeeded(hr)) {
    hr = CompleteConnect(receivePin);
    if (Succeeded(hr)) return kSOk;
    receivePin->Disconnect();
  }
  DropConnection();
  return Failed(hr) ? hr : kEFail;
}

void CBasePin::DropConnection() {
  if (connected_ != nullptr) {
    connected_->Release();
    connected_ = nullptr;
  }
}

HRESULT CBasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* mediaType) {
  if (connector == nullptr || mediaType == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  if (connected_ != nullptr) return kVfwEAlreadyConnected;
  if (!filter_->IsStopped()) return kVfwENotStopped;
  HRESULT hr = CheckConnect(connector);
  if (Failed(hr)) {
    BreakConnect();
    return hr;
  }
  const CMediaType type(*mediaType);
  hr = CheckMediaType(&type);
  if (hr != kSOk) {
    BreakConnect();
    return Failed(hr) ? hr : kVfwETypeNotAccepted;
  }
  connected_ = connector;
  connected_->AddRef();
  hr = SetMediaType(&type);
  if (Succeeded(hr)) hr = CompleteConnect(connector);
  if (Failed(hr)) {
    DropConnection();
    BreakConnect();
  }
  return hr;
}

HRESULT CBasePin::Disconnect() {
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  if (!filter_->IsStopped()) return kVfwENotStopped;
  if (connected_ == nullptr) return kSFalse;
  const HRESULT hr = BreakConnect();
  if (Failed(hr)) return hr;
  DropConnection();
  return kSOk;
}

HRESULT CBasePin::ConnectedTo(IPin** pin) {
  if (pin == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  *pin = connected_;
  if (connected_ == nullptr) return kVfwENotConnected;
  connected_->AddRef();
  return kSOk;
}

HRESULT CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* mediaType) {
  if (mediaType == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  if (connected_ == nullptr) {
    *mediaType = AM_MEDIA_TYPE{};
    return kVfwENotConnected;
  }
  return CopyMediaType(mediaType, &mediaType_);
}

HRESULT CBasePin::QueryPinInfo(PIN_INFO* info) {
  if (info == nullptr) return kEPointer;
  info->pFilter = filter_;
  filter_->AddRef();
  info->dir = direction_;
  const size_t length = std::min(name_.size(), kMaxPinName - 1);
  std::copy_n(name_.data(), length, info->achName);
  info->achName[length] = 0;
  return kSOk;
}

HRESULT CBasePin::QueryDirection(PIN_DIRECTION* direction) {
  if (direction == nullptr) return kEPointer;
  *direction = direction_;
  return kSOk;
}

HRESULT CBasePin::QueryId(char16_t** id) {
  if (id == nullptr) return kEPointer;
  *id = static_cast<char16_t*>(CoTaskMemAlloc((name_.size() + 1) * sizeof(char16_t)));
  if (*id == nullptr) return kEOutOfMemory;
  std::copy_n(name_.c_str(), name_.size() + 1, *id);
  return kSOk;
}

HRESULT CBasePin::QueryAccept(const AM_MEDIA_TYPE* mediaType) {
  if (mediaType == nullptr) return kEPointer;
  const CMediaType type(*mediaType);
  const HRESULT hr = CheckMediaType(&type);
  return Failed(hr) ? kSFalse : hr;
}

HRESULT CBasePin::EnumMediaTypes(IEnumMediaTypes** types) {
  if (types == nullptr) return kEPointer;
  return NewMediaTypeEnumerator(this, types);
}

HRESULT CBasePin::QueryInternalConnections(IPin**, uint32_t*) { return kENotImpl; }

HRESULT CBasePin::NewSegment(ReferenceTime, ReferenceTime, double) { return kSOk; }

HRESULT CBasePin::SetMediaType(const CMediaType* mediaType) {
  mediaType_ = *mediaType;
  return kSOk;
}

HRESULT CBasePin::CheckConnect(IPin* pin) {
  PIN_DIRECTION theirs = PINDIR_INPUT;
  const HRESULT hr = pin->QueryDirection(&theirs);
  if (Failed(hr)) return hr;
  return theirs == direction_ ? kEInvalidArg : kSOk;
}

HRESULT CBasePin::GetMediaType(int32_t, CMediaType*) { return kVfwSNoMoreItems; }

CBaseOutputPin::CBaseOutputPin(CBaseFilter* filter, std::recursive_mutex* lock,
                               const char16_t* name)
    : CBasePin(filter, lock, name, PINDIR_OUTPUT) {}

HRESULT CBaseOutputPin::CheckConnect(IPin* pin) {
  const HRESULT hr = CBasePin::CheckConnect(pin);
  if (Failed(hr)) return hr;
  if (inputPin_ != nullptr) inputPin_->Release();
  inputPin_ = nullptr;
  return pin->QueryInterface(kIidIMemInputPin, reinterpret_cast<void**>(&inputPin_));
}

HRESULT CBaseOutputPin::CompleteConnect(IPin*) { return DecideAllocator(inputPin_, &allocator_); }

HRESULT CBaseOutputPin::BreakConnect() {
  if (allocator_ != nullptr) {
    allocator_->Decommit();
    allocator_->Release();
    allocator_ = nullptr;
  }
  if (inputPin_ != nullptr) {
    inputPin_->Release();
    inputPin_ = nullptr;
  }
  return kSOk;
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* pin, IMemAllocator** allocator) {
  if (pin == nullptr) return kVfwENotConnected;
  *allocator = nullptr;
  ALLOCATOR_PROPERTIES request{};
  (void)pin->GetAllocatorRequirements(&request);
  if (request.cbAlign == 0) request.cbAlign = 1;
  HRESULT hr = pin->GetAllocator(allocator);
  if (Succeeded(hr)) {
    hr = DecideBufferSize(*allocator, &request);
    if (Succeeded(hr)) hr = pin->NotifyAllocator(*allocator, 0);
    if (Succeeded(hr)) return kSOk;
  }
  if (*allocator != nullptr) {
    (*allocator)->Release();
    *allocator = nullptr;
  }
  *allocator = CMemAllocator::Create();
  hr = DecideBufferSize(*allocator, &request);
  if (Succeeded(hr)) hr = pin->NotifyAllocator(*allocator, 0);
  if (Succeeded(hr)) return kSOk;
  (*allocator)->Release();
  *allocator = nullptr;
  return hr;
}

HRESULT CBaseOutputPin::Active() {
  return allocator_ == nullptr ? kVfwENoAllocator : allocator_->Commit();
}

HRESULT CBaseOutputPin::Inactive() {
  return allocator_ == nullptr ? kVfwENoAllocator : allocator_->Decommit();
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, ReferenceTime* start,
                                          ReferenceTime* stop, uint32_t flags) {
  if (allocator_ == nullptr) return kVfwENoAllocator;
  return allocator_->GetBuffer(sample, start, stop, flags);
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* sample) {
  return inputPin_ == nullptr ? kVfwENotConnected : inputPin_->Receive(sample);
}

HRESULT CBaseOutputPin::DeliverEndOfStream() {
  return GetConnected() == nullptr ? kVfwENotConnected : GetConnected()->EndOfStream();
}

HRESULT CBaseOutputPin::DeliverBeginFlush() {
  return GetConnected() == nullptr ? kVfwENotConnected : GetConnected()->BeginFlush();
}

HRESULT CBaseOutputPin::DeliverEndFlush() {
  return GetConnected() == nullptr ? kVfwENotConnected : GetConnected()->EndFlush();
}

HRESULT CBaseOutputPin::DeliverNewSegment(ReferenceTime start, ReferenceTime stop, double rate) {
  return GetConnected() == nullptr ? kVfwENotConnected
                                   : GetConnected()->NewSegment(start, stop, rate);
}

CBaseInputPin::CBaseInputPin(CBaseFilter* filter, std::recursive_mutex* lock,
                             const char16_t* name)
    : CBasePin(filter, lock, name, PINDIR_INPUT) {}

CBaseInputPin::~CBaseInputPin() {
  if (allocator_ != nullptr) allocator_->Release();
}

HRESULT CBaseInputPin::NonDelegatingQueryInterface(const GUID& iid, void** object) {
  if (iid == kIidIMemInputPin) return GetInterface(static_cast<IMemInputPin*>(this), object);
  return CBasePin::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseInputPin::GetAllocator(IMemAllocator** allocator) {
  if (allocator == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  if (allocator_ == nullptr) allocator_ = CMemAllocator::Create();
  *allocator = allocator_;
  allocator_->AddRef();
  return kSOk;
}

HRESULT CBaseInputPin::NotifyAllocator(IMemAllocator* allocator, Bool32) {
  if (allocator == nullptr) return kEPointer;
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  allocator->AddRef();
  if (allocator_ != nullptr) allocator_->Release();
  allocator_ = allocator;
  return kSOk;
}

HRESULT CBaseInputPin::CheckStreaming() {
  if (!IsConnected()) return kVfwENotConnected;
  if (Filter()->IsStopped()) return kVfwEWrongState;
  return flushing_ ? kSFalse : kSOk;
}

HRESULT CBaseInputPin::Receive(IMediaSample* sample) {
  if (sample == nullptr) return kEPointer;
  const HRESULT hr = CheckStreaming();
  if (hr != kSOk) return hr;
  IMediaSample2* sample2 = nullptr;
  if (Succeeded(sample->QueryInterface(kIidIMediaSample2, reinterpret_cast<void**>(&sample2))) &&
      sample2 != nullptr) {
    const HRESULT got = sample2->GetProperties(sizeof(sampleProps_),
                                               reinterpret_cast<uint8_t*>(&sampleProps_));
    sample2->Release();
    return Failed(got) ? got : kSOk;
  }
  // A sample without the second interface: gather the same from the first.
  sampleProps_ = AM_SAMPLE2_PROPERTIES{};
  sampleProps_.cbData = sizeof(sampleProps_);
  const HRESULT timed = sample->GetTime(&sampleProps_.tStart, &sampleProps_.tStop);
  if (Succeeded(timed)) {
    sampleProps_.dwSampleFlags |= kSampleTimeValid;
    if (timed == kSOk) sampleProps_.dwSampleFlags |= kSampleStopValid;
  }
  if (sample->IsSyncPoint() == kSOk) sampleProps_.dwSampleFlags |= kSampleSplicePoint;
  if (sample->IsPreroll() == kSOk) sampleProps_.dwSampleFlags |= kSamplePreroll;
  if (sample->IsDiscontinuity() == kSOk) sampleProps_.dwSampleFlags |= kSampleDataDiscontinuity;
  sampleProps_.lActual = sample->GetActualDataLength();
  sampleProps_.cbBuffer = sample->GetSize();
  (void)sample->GetPointer(&sampleProps_.pbBuffer);
  return kSOk;
}

HRESULT CBaseInputPin::ReceiveMultiple(IMediaSample** samples, int32_t count,
                                       int32_t* processed) {
  if (samples == nullptr || processed == nullptr) return kEPointer;
  *processed = 0;
  HRESULT hr = kSOk;
  while (*processed < count) {
    hr = Receive(samples[*processed]);
    if (hr != kSOk) break;
    ++*processed;
  }
  return hr;
}

HRESULT CBaseInputPin::BeginFlush() {
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  flushing_ = true;
  return kSOk;
}

HRESULT CBaseInputPin::EndFlush() {
  std::lock_guard<std::recursive_mutex> guard(*lock_);
  flushing_ = false;
  return kSOk;
}

HRESULT CBaseInputPin::BreakConnect() {
  if (allocator_ != nullptr) {
    allocator_->Decommit();
    allocator_->Release();
    allocator_ = nullptr;
  }
  return kSOk;
}

HRESULT CBaseInputPin::Inactive() {
  flushing_ = false;
  return allocator_ == nullptr ? kVfwENoAllocator : allocator_->Decommit();
}

}  // namespace vantaro
