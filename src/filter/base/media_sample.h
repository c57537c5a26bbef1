// Samples and the memory allocator that lends them: a sample is a buffer
// with times, flags and an optional media type, and goes back to its
// allocator when its last reference is released.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "filter/base/com_base.h"
#include "filter/base/media_type.h"

namespace vantaro {

class CMemAllocator;

class CMediaSample final : public IMediaSample2, public CBaseObject {
 public:
  CMediaSample(CMemAllocator* allocator, uint8_t* buffer, int32_t size);
  ~CMediaSample() override;

  HRESULT VTC_STDCALL QueryInterface(const GUID& iid, void** object) override;
  uint32_t VTC_STDCALL AddRef() override;
  uint32_t VTC_STDCALL Release() override;

  HRESULT VTC_STDCALL GetPointer(uint8_t** buffer) override;
  int32_t VTC_STDCALL GetSize() override { return size_; }
  HRESULT VTC_STDCALL GetTime(ReferenceTime* start, ReferenceTime* stop) override;
  HRESULT VTC_STDCALL SetTime(ReferenceTime* start, ReferenceTime* stop) override;
  HRESULT VTC_STDCALL IsSyncPoint() override { return Flag(kSampleSplicePoint); }
  HRESULT VTC_STDCALL SetSyncPoint(Bool32 value) override;
  HRESULT VTC_STDCALL IsPreroll() override { return Flag(kSamplePreroll); }
  HRESULT VTC_STDCALL SetPreroll(Bool32 value) override;
  int32_t VTC_STDCALL GetActualDataLength() override { return actual_; }
  HRESULT VTC_STDCALL SetActualDataLength(int32_t length) override;
  HRESULT VTC_STDCALL GetMediaType(AM_MEDIA_TYPE** type) override;
  HRESULT VTC_STDCALL SetMediaType(AM_MEDIA_TYPE* type) override;
  HRESULT VTC_STDCALL IsDiscontinuity() override { return Flag(kSampleDataDiscontinuity); }
  HRESULT VTC_STDCALL SetDiscontinuity(Bool32 value) override;
  HRESULT VTC_STDCALL GetMediaTime(ReferenceTime* start, ReferenceTime* stop) override;
  HRESULT VTC_STDCALL SetMediaTime(ReferenceTime* start, ReferenceTime* stop) override;
  HRESULT VTC_STDCALL GetProperties(uint32_t size, uint8_t* properties) override;
  HRESULT VTC_STDCALL SetProperties(uint32_t size, const uint8_t* properties) override;

  // Clears times, flags and type for the next loan.
  void Reset();

 private:
  HRESULT Flag(uint32_t bit) const { return (flags_ & bit) != 0 ? kSOk : kSFalse; }
  void SetFlag(uint32_t bit, bool value) { flags_ = value ? flags_ | bit : flags_ & ~bit; }

  CMemAllocator* allocator_;
  uint8_t* buffer_;
  int32_t size_;
  int32_t actual_ = 0;
  uint32_t flags_ = 0;
  uint32_t typeSpecificFlags_ = 0;
  uint32_t streamId_ = kStreamMedia;
  ReferenceTime start_ = 0, stop_ = 0;
  bool mediaTimeValid_ = false;
  ReferenceTime mediaStart_ = 0, mediaStop_ = 0;
  AM_MEDIA_TYPE* mediaType_ = nullptr;
  std::atomic<int32_t> references_{0};
};

class CMemAllocator final : public CUnknown, public IMemAllocator {
 public:
  CMemAllocator();
  ~CMemAllocator() override;
  // A new allocator with one reference.
  static CMemAllocator* Create();

  VTC_DECLARE_IUNKNOWN
  HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;

  HRESULT VTC_STDCALL SetProperties(ALLOCATOR_PROPERTIES* request,
                                    ALLOCATOR_PROPERTIES* actual) override;
  HRESULT VTC_STDCALL GetProperties(ALLOCATOR_PROPERTIES* properties) override;
  HRESULT VTC_STDCALL Commit() override;
  HRESULT VTC_STDCALL Decommit() override;
  HRESULT VTC_STDCALL GetBuffer(IMediaSample** sample, ReferenceTime* start, ReferenceTime* stop,
                                uint32_t flags) override;
  HRESULT VTC_STDCALL ReleaseBuffer(IMediaSample* sample) override;

 private:
  void FreeIdleSamples();

  std::mutex lock_;
  std::condition_variable returned_;
  ALLOCATOR_PROPERTIES properties_{};
  bool committed_ = false;
  int32_t outstanding_ = 0;
  std::vector<CMediaSample*> free_;
  std::vector<std::unique_ptr<uint8_t[]>> memory_;
};

}  // namespace vantaro
