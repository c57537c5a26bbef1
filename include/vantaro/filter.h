/*
 * Vantaro decoder filter: the in-process COM server of the library.
 *
 * The library offers one class, the "Quorin Vantaro Decoder" media-graph
 * filter, through the four server entry points below. They keep the
 * platform's binary conventions on every system: a GUID is the 16-byte
 * record, a result is a signed 32-bit code (negative is a failure), and an
 * interface pointer points to a pointer to its table of methods, which starts
 * with QueryInterface, AddRef and Release, each method taking the interface
 * pointer first. On systems other than the original one the registry and the
 * filter mapper that registration reaches are in-process stand-ins.
 */
#ifndef VANTARO_FILTER_H
#define VANTARO_FILTER_H

#include <stdint.h>

#include "vantaro/vantaro.h"

#if defined(_WIN32) && !defined(_WIN64)
#  define VTC_STDCALL __stdcall
#else
#  define VTC_STDCALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A result code: 0 success, 1 "false" (success with a no), negative failure. */
typedef int32_t VtcResult;

/* The platform's GUID record, 16 bytes. */
typedef struct VtcGuid {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} VtcGuid;

/* The decoder's class id, the same GUID as the media subtype of VTQ0. */
#define VTC_CLSID_DECODER_INIT \
    { 0x30515456u, 0x0000u, 0x0010u, { 0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71 } }
/* IUnknown and IClassFactory, for DllGetClassObject's interface argument. */
#define VTC_IID_IUNKNOWN_INIT \
    { 0x00000000u, 0x0000u, 0x0000u, { 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46 } }
#define VTC_IID_ICLASSFACTORY_INIT \
    { 0x00000001u, 0x0000u, 0x0000u, { 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46 } }

typedef struct VtcUnknown VtcUnknown;
typedef struct VtcUnknownVtbl {
    VtcResult (VTC_STDCALL* QueryInterface)(VtcUnknown* self, const VtcGuid* iid, void** object);
    uint32_t (VTC_STDCALL* AddRef)(VtcUnknown* self);
    uint32_t (VTC_STDCALL* Release)(VtcUnknown* self);
} VtcUnknownVtbl;
struct VtcUnknown {
    const VtcUnknownVtbl* lpVtbl;
};

typedef struct VtcClassFactory VtcClassFactory;
typedef struct VtcClassFactoryVtbl {
    VtcResult (VTC_STDCALL* QueryInterface)(VtcClassFactory* self, const VtcGuid* iid,
                                            void** object);
    uint32_t (VTC_STDCALL* AddRef)(VtcClassFactory* self);
    uint32_t (VTC_STDCALL* Release)(VtcClassFactory* self);
    /* `outer` aggregates the new object; then `iid` must be IUnknown. */
    VtcResult (VTC_STDCALL* CreateInstance)(VtcClassFactory* self, VtcUnknown* outer,
                                            const VtcGuid* iid, void** object);
    /* A non-zero `lock` keeps the server loaded; zero takes one lock away. */
    VtcResult (VTC_STDCALL* LockServer)(VtcClassFactory* self, int32_t lock);
} VtcClassFactoryVtbl;
struct VtcClassFactory {
    const VtcClassFactoryVtbl* lpVtbl;
};

/*
 * Hands out a class factory for `clsid` with one reference. `iid` must be
 * IUnknown or IClassFactory (else 0x80004002, checked first); an unknown
 * class gives 0x80040111. `*object` is null after any failure.
 */
VTC_API VtcResult VTC_STDCALL DllGetClassObject(const VtcGuid* clsid, const VtcGuid* iid,
                                                void** object);
/* 1 while a server lock stands or any object of the library lives, else 0. */
VTC_API VtcResult VTC_STDCALL DllCanUnloadNow(void);
/*
 * Writes the class keys (with this module's path) and hands the filter's
 * description to the filter mapper; each registration first removes the old
 * one. Stops at the first failure, leaving what was written.
 */
VTC_API VtcResult VTC_STDCALL DllRegisterServer(void);
/* Removes the filter from the mapper and deletes the class keys; 0 also when
 * the filter was never registered. */
VTC_API VtcResult VTC_STDCALL DllUnregisterServer(void);

#ifdef __cplusplus
}
#endif

#endif /* VANTARO_FILTER_H */
