#include "filter/base/media_sample.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vantaro {

CMediaSample::CMediaSample(CMemAllocator* allocator, uint8_t* buffer, int32_t size)
    : allocator_(allocator), buffer_(buffer), size_(size) {}

CMediaSample::~CMediaSample() { DeleteMediaType(mediaType_); }

HRESULT CMediaSample::QueryInterface(const GUID& iid, void** object) {
  if (object == nullptr) return kEPointer;
  if (iid == kIidIUnknown || iid == kIidIMediaSample || iid == kIidIMediaSample2) {
    return GetInterface(static_cast<IMediaSample2*>(this), object);
  }
  *object = nullptr;
  return kENoInterface;
}

uint32_t CMediaSample::AddRef() { return static_cast<uint32_t>(++references_); }

uint32_t CMediaSample::Release() {
  const int32_t left = --references_;
  // The last reference sends the sample home; the allocator may delete it
  // there, so nothing of `this` is touched afterwards.
  if (left == 0) allocator_->ReleaseBuffer(this);
  return static_cast<uint32_t>(left);
}

void CMediaSample::Reset() {
  actual_ = 0;
  flags_ = 0;
  typeSpecificFlags_ = 0;
  streamId_ = kStreamMedia;
  start_ = stop_ = mediaStart_ = mediaStop_ = 0;
  mediaTimeValid_ = false;
  DeleteMediaType(mediaType_);
  mediaType_ = nullptr;
}

HRESULT CMediaSample::GetPointer(uint8_t** buffer) {
  if (buffer == nullptr) return kEPointer;
  *buffer = buffer_;
  return kSOk;
}

HRESULT CMediaSample::GetTime(ReferenceTime* start, ReferenceTime* stop) {
  if (start == nullptr || stop == nullptr) return kEPointer;
  if ((flags_ & kSampleTimeValid) == 0) return kVfwESampleTimeNotSet;
  *start = start_;
  if ((flags_ & kSampleStopValid) != 0) {
    *stop = stop_;
    return kSOk;
  }
  *stop = start_ + 1;
  return kVfwSNoStopTime;
}

HRESULT CMediaSample::SetTime(ReferenceTime* start, ReferenceTime* stop) {
  SetFlag(kSampleTimeValid, start != nullptr);
  SetFlag(kSampleStopValid, start != nullptr && stop != nullptr);
  if (start != nullptr) start_ = *start;
  if (start != nullptr && stop != nullptr) stop_ = *stop;
  return kSOk;
}

HRESULT CMediaSample::SetSyncPoint(Bool32 value) {
  SetFlag(kSampleSplicePoint, value != 0);
  return kSOk;
}

HRESULT CMediaSample::SetPreroll(Bool32 value) {
  SetFlag(kSamplePreroll, value != 0);
  return kSOk;
}

HRESULT CMediaSample::SetDiscontinuity(Bool32 value) {
  SetFlag(kSampleDataDiscontinuity, value != 0);
  return kSOk;
}

HRESULT CMediaSample::SetActualDataLength(int32_t length) {
  if (length < 0 || length > size_) return kEInvalidArg;
  actual_ = length;
  return kSOk;
}

HRESULT CMediaSample::GetMediaType(AM_MEDIA_TYPE** type) {
  if (type == nullptr) return kEPointer;
  *type = nullptr;
  if ((flags_ & kSampleTypeChanged) == 0 || mediaType_ == nullptr) return kSFalse;
  *type = CreateMediaType(mediaType_);
  return *type == nullptr ? kEOutOfMemory : kSOk;
}

HRESULT CMediaSample::SetMediaType(AM_MEDIA_TYPE* type) {
  DeleteMediaType(mediaType_);
  mediaType_ = nullptr;
  SetFlag(kSampleTypeChanged, false);
  if (type == nullptr) return kSOk;
  mediaType_ = CreateMediaType(type);
  if (mediaType_ == nullptr) return kEOutOfMemory;
  SetFlag(kSampleTypeChanged, true);
  return kSOk;
}

HRESULT CMediaSample::GetMediaTime(ReferenceTime* start, ReferenceTime* stop) {
  if (start == nullptr || stop == nullptr) return kEPointer;
  if (!mediaTimeValid_) return kVfwEMediaTimeNotSet;
  *start = mediaStart_;
  *stop = mediaStop_;
  return kSOk;
}

HRESULT CMediaSample::SetMediaTime(ReferenceTime* start, ReferenceTime* stop) {
  mediaTimeValid_ = start != nullptr && stop != nullptr;
  if (mediaTimeValid_) {
    mediaStart_ = *start;
    mediaStop_ = *stop;
  }
  return kSOk;
}

HRESULT CMediaSample::GetProperties(uint32_t size, uint8_t* properties) {
  if (properties == nullptr && size != 0) return kEPointer;
  AM_SAMPLE2_PROPERTIES all{};
  all.cbData = std::min<uint32_t>(size, sizeof(all));
  all.dwTypeSpecificFlags = typeSpecificFlags_;
  all.dwSampleFlags = flags_;
  all.lActual = actual_;
  all.tStart = start_;
  all.tStop = stop_;
  all.dwStreamId = streamId_;
  all.pMediaType = mediaType_;
  all.pbBuffer = buffer_;
  all.cbBuffer = size_;
  if (size != 0) std::memcpy(properties, &all, all.cbData);
  return kSOk;
}

// Takes the fields that `size` covers; a buffer pointer other than this
// sample's own is refused.
HRESULT CMediaSample::SetProperties(uint32_t size, const uint8_t* properties) {
  if (properties == nullptr) return kEPointer;
  AM_SAMPLE2_PROPERTIES given{};
  std::memcpy(&given, properties, std::min<uint32_t>(size, sizeof(given)));
  if (size > sizeof(given) || given.cbData > size) return kEInvalidArg;
  auto covers = [size](size_t offset) { return size > offset; };
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, pbBuffer)) && given.pbBuffer != nullptr &&
      given.pbBuffer != buffer_) {
    return kEInvalidArg;
  }
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, lActual)) &&
      (given.lActual < 0 || given.lActual > size_)) {
    return kEInvalidArg;
  }
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, dwTypeSpecificFlags))) {
    typeSpecificFlags_ = given.dwTypeSpecificFlags;
  }
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, dwSampleFlags))) {
    flags_ = (flags_ & kSampleTypeChanged) | (given.dwSampleFlags & ~kSampleTypeChanged);
  }
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, lActual))) actual_ = given.lActual;
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, tStart))) start_ = given.tStart;
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, tStop))) stop_ = given.tStop;
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, dwStreamId))) streamId_ = given.dwStreamId;
  if (covers(offsetof(AM_SAMPLE2_PROPERTIES, pMediaType)) &&
      (given.dwSampleFlags & kSampleTypeChanged) != 0 && given.pMediaType != mediaType_) {
    return SetMediaType(given.pMediaType);
  }
  return kSOk;
}

CMemAllocator::CMemAllocator() : CUnknown(nullptr) {}

CMemAllocator::~CMemAllocator() { FreeIdleSamples(); }

CMemAllocator* CMemAllocator::Create() {
  auto* allocator = new CMemAllocator;
  allocator->NonDelegatingAddRef();
  return allocator;
}

HRESULT CMemAllocator::NonDelegatingQueryInterface(const GUID& iid, void** object) {
  if (iid == kIidIMemAllocator) return GetInterface(static_cast<IMemAllocator*>(this), object);
  return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CMemAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
  if (request == nullptr || actual == nullptr) return kEPointer;
  std::lock_guard<std::mutex> guard(lock_);
  if (committed_) return kVfwEAlreadyCommitted;
  if (outstanding_ != 0) return kVfwEBuffersOutstanding;
  if (request->cbAlign < 1 || (request->cbAlign & (request->cbAlign - 1)) != 0) return kEInvalidArg;
  FreeIdleSamples();
  properties_ = *request;
  *actual = properties_;
  return kSOk;
}

HRESULT CMemAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
  if (properties == nullptr) return kEPointer;
  std::lock_guard<std::mutex> guard(lock_);
  *properties = properties_;
  return kSOk;
}

HRESULT CMemAllocator::Commit() {
  std::lock_guard<std::mutex> guard(lock_);
  if (committed_) return kSOk;
  if (properties_.cbBuffer <= 0 || properties_.cBuffers <= 0) return kVfwESizeNotSet;
  committed_ = true;
  if (!free_.empty() || outstanding_ != 0) return kSOk;  // the last loan's samples serve again
  const int32_t align = std::max(properties_.cbAlign, 16);
  for (int32_t i = 0; i < properties_.cBuffers; ++i) {
    const size_t bytes = static_cast<size_t>(properties_.cbPrefix) +
                         static_cast<size_t>(properties_.cbBuffer) + static_cast<size_t>(align);
    memory_.emplace_back(new uint8_t[bytes]);
    auto address = reinterpret_cast<uintptr_t>(memory_.back().get()) +
                   static_cast<uintptr_t>(properties_.cbPrefix);
    address = (address + static_cast<uintptr_t>(align) - 1) & ~static_cast<uintptr_t>(align - 1);
    free_.push_back(new CMediaSample(this, reinterpret_cast<uint8_t*>(address),
                                     properties_.cbBuffer));
  }
  return kSOk;
}

HRESULT CMemAllocator::Decommit() {
  std::lock_guard<std::mutex> guard(lock_);
  committed_ = false;
  if (outstanding_ == 0) FreeIdleSamples();
  returned_.notify_all();
  return kSOk;
}

HRESULT CMemAllocator::GetBuffer(IMediaSample** sample, ReferenceTime* start, ReferenceTime* stop,
                                 uint32_t) {
  if (sample == nullptr) return kEPointer;
  *sample = nullptr;
  CMediaSample* lent = nullptr;
  {
    std::unique_lock<std::mutex> guard(lock_);
    returned_.wait(guard, [this] { return !committed_ || !free_.empty(); });
    if (!committed_) return kVfwENotCommitted;
    lent = free_.back();
    free_.pop_back();
    ++outstanding_;
  }
  NonDelegatingAddRef();  // an outstanding sample keeps its allocator alive
  lent->Reset();
  lent->AddRef();
  if (start != nullptr) lent->SetTime(start, stop);
  *sample = lent;
  return kSOk;
}

HRESULT CMemAllocator::ReleaseBuffer(IMediaSample* sample) {
  {
    std::lock_guard<std::mutex> guard(lock_);
    free_.push_back(static_cast<CMediaSample*>(sample));
    --outstanding_;
    if (!committed_ && outstanding_ == 0) FreeIdleSamples();
    returned_.notify_all();
  }
  NonDelegatingRelease();
  return kSOk;
}

void CMemAllocator::FreeIdleSamples() {
  for (CMediaSample* sample : free_) delete sample;
  free_.clear();
  memory_.clear();
}

}  // namespace vantaro
