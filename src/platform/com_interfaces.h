// The component-object and media-graph interfaces the filter speaks, in the
// platform's method order. Each is a class of pure virtual methods with no
// virtual destructor, so that an object's first word points to a table whose
// slots run in declaration order and each method takes the object first:
// the platform's binary convention on both targets.
#pragma once

#include <cstdint>

#include "platform/dshow_records.h"
#include "platform/guid.h"

#define VTC_METHOD virtual HRESULT VTC_STDCALL

namespace vantaro {

struct IUnknown {
  VTC_METHOD QueryInterface(const GUID& iid, void** object) = 0;
  virtual uint32_t VTC_STDCALL AddRef() = 0;
  virtual uint32_t VTC_STDCALL Release() = 0;
};

struct IClassFactory : IUnknown {
  VTC_METHOD CreateInstance(IUnknown* outer, const GUID& iid, void** object) = 0;
  VTC_METHOD LockServer(Bool32 lock) = 0;
};

struct IReferenceClock : IUnknown {};  // passed through only
struct IFilterGraph : IUnknown {};     // passed through only
struct IEnumPins;
struct IEnumMediaTypes;
struct IMediaSample;
struct IMemAllocator;

struct IPersist : IUnknown {
  VTC_METHOD GetClassID(GUID* clsid) = 0;
};

struct IMediaFilter : IPersist {
  VTC_METHOD Stop() = 0;
  VTC_METHOD Pause() = 0;
  VTC_METHOD Run(ReferenceTime start) = 0;
  VTC_METHOD GetState(uint32_t timeoutMs, FILTER_STATE* state) = 0;
  VTC_METHOD SetSyncSource(IReferenceClock* clock) = 0;
  VTC_METHOD GetSyncSource(IReferenceClock** clock) = 0;
};

struct IBaseFilter : IMediaFilter {
  VTC_METHOD EnumPins(IEnumPins** pins) = 0;
  VTC_METHOD FindPin(const char16_t* id, IPin** pin) = 0;
  VTC_METHOD QueryFilterInfo(FILTER_INFO* info) = 0;
  VTC_METHOD JoinFilterGraph(IFilterGraph* graph, const char16_t* name) = 0;
  VTC_METHOD QueryVendorInfo(char16_t** vendorInfo) = 0;
};

struct IAMovieSetup : IUnknown {
  VTC_METHOD Register() = 0;
  VTC_METHOD Unregister() = 0;
};

struct IPin : IUnknown {
  VTC_METHOD Connect(IPin* receivePin, const AM_MEDIA_TYPE* mediaType) = 0;
  VTC_METHOD ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* mediaType) = 0;
  VTC_METHOD Disconnect() = 0;
  VTC_METHOD ConnectedTo(IPin** pin) = 0;
  VTC_METHOD ConnectionMediaType(AM_MEDIA_TYPE* mediaType) = 0;
  VTC_METHOD QueryPinInfo(PIN_INFO* info) = 0;
  VTC_METHOD QueryDirection(PIN_DIRECTION* direction) = 0;
  VTC_METHOD QueryId(char16_t** id) = 0;
  VTC_METHOD QueryAccept(const AM_MEDIA_TYPE* mediaType) = 0;
  VTC_METHOD EnumMediaTypes(IEnumMediaTypes** types) = 0;
  VTC_METHOD QueryInternalConnections(IPin** pins, uint32_t* count) = 0;
  VTC_METHOD EndOfStream() = 0;
  VTC_METHOD BeginFlush() = 0;
  VTC_METHOD EndFlush() = 0;
  VTC_METHOD NewSegment(ReferenceTime start, ReferenceTime stop, double rate) = 0;
};

struct IEnumPins : IUnknown {
  VTC_METHOD Next(uint32_t count, IPin** pins, uint32_t* fetched) = 0;
  VTC_METHOD Skip(uint32_t count) = 0;
  VTC_METHOD Reset() = 0;
  VTC_METHOD Clone(IEnumPins** copy) = 0;
};

struct IEnumMediaTypes : IUnknown {
  VTC_METHOD Next(uint32_t count, AM_MEDIA_TYPE** types, uint32_t* fetched) = 0;
  VTC_METHOD Skip(uint32_t count) = 0;
  VTC_METHOD Reset() = 0;
  VTC_METHOD Clone(IEnumMediaTypes** copy) = 0;
};

struct IMemInputPin : IUnknown {
  VTC_METHOD GetAllocator(IMemAllocator** allocator) = 0;
  VTC_METHOD NotifyAllocator(IMemAllocator* allocator, Bool32 readOnly) = 0;
  VTC_METHOD GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) = 0;
  VTC_METHOD Receive(IMediaSample* sample) = 0;
  VTC_METHOD ReceiveMultiple(IMediaSample** samples, int32_t count, int32_t* processed) = 0;
  VTC_METHOD ReceiveCanBlock() = 0;
};

struct IMemAllocator : IUnknown {
  VTC_METHOD SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) = 0;
  VTC_METHOD GetProperties(ALLOCATOR_PROPERTIES* properties) = 0;
  VTC_METHOD Commit() = 0;
  VTC_METHOD Decommit() = 0;
  VTC_METHOD GetBuffer(IMediaSample** sample, ReferenceTime* start, ReferenceTime* stop,
                       uint32_t flags) = 0;
  VTC_METHOD ReleaseBuffer(IMediaSample* sample) = 0;
};

struct IMediaSample : IUnknown {
  VTC_METHOD GetPointer(uint8_t** buffer) = 0;
  virtual int32_t VTC_STDCALL GetSize() = 0;
  VTC_METHOD GetTime(ReferenceTime* start, ReferenceTime* stop) = 0;
  VTC_METHOD SetTime(ReferenceTime* start, ReferenceTime* stop) = 0;
  VTC_METHOD IsSyncPoint() = 0;
  VTC_METHOD SetSyncPoint(Bool32 syncPoint) = 0;
  VTC_METHOD IsPreroll() = 0;
  VTC_METHOD SetPreroll(Bool32 preroll) = 0;
  virtual int32_t VTC_STDCALL GetActualDataLength() = 0;
  VTC_METHOD SetActualDataLength(int32_t length) = 0;
  VTC_METHOD GetMediaType(AM_MEDIA_TYPE** mediaType) = 0;
  VTC_METHOD SetMediaType(AM_MEDIA_TYPE* mediaType) = 0;
  VTC_METHOD IsDiscontinuity() = 0;
  VTC_METHOD SetDiscontinuity(Bool32 discontinuity) = 0;
  VTC_METHOD GetMediaTime(ReferenceTime* start, ReferenceTime* stop) = 0;
  VTC_METHOD SetMediaTime(ReferenceTime* start, ReferenceTime* stop) = 0;
};

struct IMediaSample2 : IMediaSample {
  VTC_METHOD GetProperties(uint32_t size, uint8_t* properties) = 0;
  VTC_METHOD SetProperties(uint32_t size, const uint8_t* properties) = 0;
};

struct IMediaEventSink : IUnknown {
  VTC_METHOD Notify(int32_t code, intptr_t param1, intptr_t param2) = 0;
};

// Interface ids.
constexpr GUID kIidIUnknown = VTC_IID_IUNKNOWN_INIT;
constexpr GUID kIidIClassFactory = VTC_IID_ICLASSFACTORY_INIT;
constexpr GUID kIidIDispatch{0x00020400, 0x0000, 0x0000,
                             {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr GUID kIidIPersist{0x0000010C, 0x0000, 0x0000,
                            {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr GUID kIidIMediaFilter{0x56A86899, 0x0AD4, 0x11CE,
                                {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIBaseFilter{0x56A86895, 0x0AD4, 0x11CE,
                               {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIPin{0x56A86891, 0x0AD4, 0x11CE,
                        {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIEnumPins{0x56A86892, 0x0AD4, 0x11CE,
                             {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIEnumMediaTypes{0x89C31040, 0x846B, 0x11CE,
                                   {0x97, 0xD3, 0x00, 0xAA, 0x00, 0x55, 0x59, 0x5A}};
constexpr GUID kIidIMemInputPin{0x56A8689D, 0x0AD4, 0x11CE,
                                {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIMemAllocator{0x56A8689C, 0x0AD4, 0x11CE,
                                 {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIMediaSample{0x56A8689A, 0x0AD4, 0x11CE,
                                {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kIidIMediaSample2{0x36B73884, 0xC2C8, 0x11CF,
                                 {0x8B, 0x46, 0x00, 0x80, 0x5F, 0x6C, 0xEF, 0x60}};
constexpr GUID kIidIAMovieSetup{0xA3D8CEC0, 0x7E5A, 0x11CF,
                                {0xBB, 0xC5, 0x00, 0x80, 0x5F, 0x6C, 0xEF, 0x20}};
constexpr GUID kIidIMediaEventSink{0x56A868A2, 0x0AD4, 0x11CE,
                                   {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};

}  // namespace vantaro
