#include "filter/base/transform_filter.h"

#include <string>

namespace vantaro {

CTransformInputPin::CTransformInputPin(CTransformFilter* filter, std::recursive_mutex* lock)
    : CBaseInputPin(filter, lock, u"XForm In"), transform_(filter) {}

HRESULT CTransformInputPin::CheckConnect(IPin* pin) {
  const HRESULT hr = transform_->CheckConnect(PINDIR_INPUT, pin);
  return Failed(hr) ? hr : CBaseInputPin::CheckConnect(pin);
}

HRESULT CTransformInputPin::BreakConnect() {
  transform_->BreakConnect(PINDIR_INPUT);
  return CBaseInputPin::BreakConnect();
}

HRESULT CTransformInputPin::CompleteConnect(IPin* receivePin) {
  const HRESULT hr = transform_->CompleteConnect(PINDIR_INPUT, receivePin);
  return Failed(hr) ? hr : CBaseInputPin::CompleteConnect(receivePin);
}

HRESULT CTransformInputPin::CheckMediaType(const CMediaType* mediaType) {
  const HRESULT hr = transform_->CheckInputType(mediaType);
  if (hr != kSOk) return hr;
  if (transform_->m_pOutput->IsConnected()) {
    return transform_->CheckTransform(mediaType, &transform_->m_pOutput->CurrentMediaType());
  }
  return kSOk;
}

HRESULT CTransformInputPin::SetMediaType(const CMediaType* mediaType) {
  const HRESULT hr = CBasePin::SetMediaType(mediaType);
  return Failed(hr) ? hr : transform_->SetMediaType(PINDIR_INPUT, mediaType);
}

HRESULT CTransformInputPin::Receive(IMediaSample* sample) {
  std::lock_guard<std::recursive_mutex> guard(transform_->m_csReceive);
  HRESULT hr = CBaseInputPin::Receive(sample);
  if (hr == kSOk) hr = transform_->Receive(sample);
  return hr;
}

HRESULT CTransformInputPin::EndOfStream() {
  std::lock_guard<std::recursive_mutex> guard(transform_->m_csReceive);
  const HRESULT hr = CheckStreaming();
  return hr == kSOk ? transform_->EndOfStream() : hr;
}

HRESULT CTransformInputPin::BeginFlush() {
  std::lock_guard<std::recursive_mutex> guard(transform_->m_csFilter);
  if (!IsConnected() || !transform_->m_pOutput->IsConnected()) return kVfwENotConnected;
  const HRESULT hr = CBaseInputPin::BeginFlush();
  return Failed(hr) ? hr : transform_->BeginFlush();
}

HRESULT CTransformInputPin::EndFlush() {
  std::lock_guard<std::recursive_mutex> guard(transform_->m_csFilter);
  if (!IsConnected() || !transform_->m_pOutput->IsConnected()) return kVfwENotConnected;
  const HRESULT hr = transform_->EndFlush();
  return Failed(hr) ? hr : CBaseInputPin::EndFlush();
}

HRESULT CTransformInputPin::NewSegment(ReferenceTime start, ReferenceTime stop, double rate) {
  CBasePin::NewSegment(start, stop, rate);
  return transform_->NewSegment(start, stop, rate);
}

CTransformOutputPin::CTransformOutputPin(CTransformFilter* filter, std::recursive_mutex* lock)
    : CBaseOutputPin(filter, lock, u"XForm Out"), transform_(filter) {}

HRESULT CTransformOutputPin::CheckConnect(IPin* pin) {
  if (!transform_->m_pInput->IsConnected()) return kEUnexpected;
  HRESULT hr = CBaseOutputPin::CheckConnect(pin);
  if (Failed(hr)) return hr;
  hr = transform_->CheckConnect(PINDIR_OUTPUT, pin);
  return hr;
}

HRESULT CTransformOutputPin::BreakConnect() {
  transform_->BreakConnect(PINDIR_OUTPUT);
  return CBaseOutputPin::BreakConnect();
}

HRESULT CTransformOutputPin::CompleteConnect(IPin* receivePin) {
  const HRESULT hr = transform_->CompleteConnect(PINDIR_OUTPUT, receivePin);
  return Failed(hr) ? hr : CBaseOutputPin::CompleteConnect(receivePin);
}

HRESULT CTransformOutputPin::CheckMediaType(const CMediaType* mediaType) {
  if (!transform_->m_pInput->IsConnected()) return kEInvalidArg;
  return transform_->CheckTransform(&transform_->m_pInput->CurrentMediaType(), mediaType);
}

HRESULT CTransformOutputPin::SetMediaType(const CMediaType* mediaType) {
  const HRESULT hr = CBasePin::SetMediaType(mediaType);
  return Failed(hr) ? hr : transform_->SetMediaType(PINDIR_OUTPUT, mediaType);
}

HRESULT CTransformOutputPin::GetMediaType(int32_t position, CMediaType* mediaType) {
  if (!transform_->m_pInput->IsConnected()) return kVfwSNoMoreItems;
  return transform_->GetMediaType(position, mediaType);
}

HRESULT CTransformOutputPin::DecideBufferSize(IMemAllocator* allocator,
                                              ALLOCATOR_PROPERTIES* request) {
  return transform_->DecideBufferSize(allocator, request);
}

CTransformFilter::CTransformFilter(const char16_t* name, IUnknown* outer, const GUID& clsid)
    : CBaseFilter(name, outer, &m_csFilter, clsid),
      m_pInput(new CTransformInputPin(this, &m_csFilter)),
      m_pOutput(new CTransformOutputPin(this, &m_csFilter)) {}

CTransformFilter::~CTransformFilter() {
  delete m_pInput;
  delete m_pOutput;
}

CBasePin* CTransformFilter::GetPin(int32_t index) {
  if (index == 0) return m_pInput;
  if (index == 1) return m_pOutput;
  return nullptr;
}

HRESULT CTransformFilter::InitializeOutputSample(IMediaSample* in, IMediaSample** out) {
  const AM_SAMPLE2_PROPERTIES& props = m_pInput->SampleProps();
  ReferenceTime start = props.tStart;
  ReferenceTime stop = props.tStop;
  const bool timed = (props.dwSampleFlags & kSampleTimeValid) != 0;
  const bool stopped = (props.dwSampleFlags & kSampleStopValid) != 0;
  HRESULT hr = m_pOutput->GetDeliveryBuffer(out, timed ? &start : nullptr,
                                            stopped ? &stop : nullptr, 0);
  if (Failed(hr)) return hr;
  IMediaSample2* out2 = nullptr;
  if (Succeeded((*out)->QueryInterface(kIidIMediaSample2, reinterpret_cast<void**>(&out2))) &&
      out2 != nullptr) {
    AM_SAMPLE2_PROPERTIES outProps{};
    constexpr uint32_t kUpToStream = offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId);
    out2->GetProperties(kUpToStream, reinterpret_cast<uint8_t*>(&outProps));
    outProps.dwTypeSpecificFlags = props.dwTypeSpecificFlags;
    outProps.dwSampleFlags =
        (outProps.dwSampleFlags & kSampleTypeChanged) | (props.dwSampleFlags & ~kSampleTypeChanged);
    outProps.tStart = props.tStart;
    outProps.tStop = props.tStop;
    outProps.cbData = kUpToStream;
    hr = out2->SetProperties(kUpToStream, reinterpret_cast<const uint8_t*>(&outProps));
    if ((props.dwSampleFlags & kSampleDataDiscontinuity) != 0) m_bSampleSkipped = false;
    out2->Release();
  } else {
    if (timed) (*out)->SetTime(&start, stopped ? &stop : nullptr);
    (*out)->SetSyncPoint((props.dwSampleFlags & kSampleSplicePoint) != 0);
    (*out)->SetDiscontinuity((props.dwSampleFlags & kSampleDataDiscontinuity) != 0);
    (*out)->SetPreroll((props.dwSampleFlags & kSamplePreroll) != 0);
  }
  ReferenceTime mediaStart = 0, mediaStop = 0;
  if (in->GetMediaTime(&mediaStart, &mediaStop) == kSOk) (*out)->SetMediaTime(&mediaStart, &mediaStop);
  return kSOk;
}

HRESULT CTransformFilter::Receive(IMediaSample* sample) {
  const AM_SAMPLE2_PROPERTIES& props = m_pInput->SampleProps();
  if (props.dwStreamId != kStreamMedia) return m_pOutput->Deliver(sample);
  IMediaSample* out = nullptr;
  HRESULT hr = InitializeOutputSample(sample, &out);
  if (Failed(hr)) return hr;
  hr = Transform(sample, out);
  if (hr == kSOk) {
    hr = m_pOutput->Deliver(out);
    m_bSampleSkipped = false;
  } else if (hr == kSFalse) {
    out->Release();
    m_bSampleSkipped = true;
    if (!m_bQualityChanged) {
      NotifyEvent(kEcQualityChange, 0, 0);
      m_bQualityChanged = true;
    }
    return kSOk;
  }
  out->Release();
  return hr;
}

HRESULT CTransformFilter::EndOfStream() { return m_pOutput->DeliverEndOfStream(); }
HRESULT CTransformFilter::BeginFlush() { return m_pOutput->DeliverBeginFlush(); }
HRESULT CTransformFilter::EndFlush() { return m_pOutput->DeliverEndFlush(); }

HRESULT CTransformFilter::NewSegment(ReferenceTime start, ReferenceTime stop, double rate) {
  return m_pOutput->DeliverNewSegment(start, stop, rate);
}

// A stop waits for a sample being transformed: the receive lock is taken
// after the input stops taking new ones.
HRESULT CTransformFilter::Stop() {
  std::lock_guard<std::recursive_mutex> filterGuard(m_csFilter);
  if (state_ == State_Stopped) return kSOk;
  if (!m_pInput->IsConnected() || !m_pOutput->IsConnected()) {
    state_ = State_Stopped;
    m_bEOSDelivered = false;
    return kSOk;
  }
  m_pInput->Inactive();
  std::lock_guard<std::recursive_mutex> receiveGuard(m_csReceive);
  m_pOutput->Inactive();
  const HRESULT hr = StopStreaming();
  if (Succeeded(hr)) {
    state_ = State_Stopped;
    m_bEOSDelivered = false;
  }
  return hr;
}

HRESULT CTransformFilter::Pause() {
  std::lock_guard<std::recursive_mutex> filterGuard(m_csFilter);
  HRESULT hr = kSOk;
  if (state_ == State_Paused) {
  } else if (!m_pInput->IsConnected()) {
    if (m_pOutput->IsConnected() && !m_bEOSDelivered) {
      m_pOutput->DeliverEndOfStream();
      m_bEOSDelivered = true;
    }
    state_ = State_Paused;
  } else if (!m_pOutput->IsConnected()) {
    state_ = State_Paused;
  } else {
    if (state_ == State_Stopped) {
      std::lock_guard<std::recursive_mutex> receiveGuard(m_csReceive);
      hr = StartStreaming();
    }
    if (Succeeded(hr)) hr = CBaseFilter::Pause();
  }
  m_bSampleSkipped = false;
  m_bQualityChanged = false;
  return hr;
}

HRESULT CTransformFilter::FindPin(const char16_t* id, IPin** pin) {
  if (id == nullptr || pin == nullptr) return kEPointer;
  const std::u16string name(id);
  CBasePin* found = name == u"In" ? static_cast<CBasePin*>(m_pInput)
                    : name == u"Out" ? static_cast<CBasePin*>(m_pOutput)
                                     : nullptr;
  if (found == nullptr) {
    *pin = nullptr;
    return kVfwENotFound;
  }
  return GetInterface(static_cast<IPin*>(found), reinterpret_cast<void**>(pin));
}

}  // namespace vantaro
