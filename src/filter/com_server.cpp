// The server's class table, its class factory and the exported entries
// that find a factory and tell whether the library may be unloaded.
#include "filter/com_server.h"

#include <new>

#include "filter/vantaro_decoder.h"
#include "platform/processor.h"

namespace vantaro {

namespace {

constexpr GUID kVideoMajor = kMediaTypeVideo;
constexpr GUID kInputSubtypes[] = {
    FourCCSubtype(MakeFourCC('v', 't', 'q', '0')), FourCCSubtype(MakeFourCC('V', 'T', 'Q', '0')),
    FourCCSubtype(MakeFourCC('v', 't', 'q', '1')), FourCCSubtype(MakeFourCC('V', 'T', 'Q', '1')),
    FourCCSubtype(MakeFourCC('v', 't', 'q', '2')), FourCCSubtype(MakeFourCC('V', 'T', 'Q', '2')),
    FourCCSubtype(MakeFourCC('v', 't', 'q', '3')), FourCCSubtype(MakeFourCC('V', 'T', 'Q', '3')),
    FourCCSubtype(MakeFourCC('v', 't', 'q', '4')), FourCCSubtype(MakeFourCC('V', 'T', 'Q', '4')),
    FourCCSubtype(MakeFourCC('v', 't', 'q', '5')), FourCCSubtype(MakeFourCC('V', 'T', 'Q', '5')),
};
constexpr GUID kNull = kGuidNull;
constexpr GUID kDecoderClass = kClsidVantaroDecoder;

// Twelve input types: the DCT-alpha variants are left out of the mapper on
// purpose, though CheckInputType takes them once connected.
const REGPINTYPES kInputTypes[] = {
    {&kVideoMajor, &kInputSubtypes[0]},  {&kVideoMajor, &kInputSubtypes[1]},
    {&kVideoMajor, &kInputSubtypes[2]},  {&kVideoMajor, &kInputSubtypes[3]},
    {&kVideoMajor, &kInputSubtypes[4]},  {&kVideoMajor, &kInputSubtypes[5]},
    {&kVideoMajor, &kInputSubtypes[6]},  {&kVideoMajor, &kInputSubtypes[7]},
    {&kVideoMajor, &kInputSubtypes[8]},  {&kVideoMajor, &kInputSubtypes[9]},
    {&kVideoMajor, &kInputSubtypes[10]}, {&kVideoMajor, &kInputSubtypes[11]},
};
const REGPINTYPES kOutputTypes[] = {{&kVideoMajor, &kNull}};

const AMOVIESETUP_PIN kDecoderPins[] = {
    {u"Input", 0, 0, 0, 0, &kNull, u"Output", 12, kInputTypes},
    {u"Output", 0, 1, 0, 0, &kNull, u"Input", 1, kOutputTypes},
};

const AMOVIESETUP_FILTER kDecoderSetup = {&kDecoderClass, u"Quorin Vantaro Decoder",
                                          0x00800000,  // preferred
                                          2, kDecoderPins};

}  // namespace

const CFactoryTemplate g_Templates[] = {
    {u"Quorin Vantaro Decoder", &kDecoderClass, &CVantaroDecoder::CreateInstance, nullptr,
     &kDecoderSetup},
};
const int32_t g_cTemplates = 1;

HRESULT CClassFactory::QueryInterface(const GUID& iid, void** object) {
  if (object == nullptr) return kEPointer;
  if (iid == kIidIUnknown || iid == kIidIClassFactory) {
    return GetInterface(static_cast<IClassFactory*>(this), object);
  }
  *object = nullptr;
  return kENoInterface;
}

uint32_t CClassFactory::AddRef() { return static_cast<uint32_t>(++references_); }

uint32_t CClassFactory::Release() {
  const int32_t left = --references_;
  if (left == 0) delete this;
  return static_cast<uint32_t>(left);
}

HRESULT CClassFactory::CreateInstance(IUnknown* outer, const GUID& iid, void** object) {
  if (object == nullptr) return kEPointer;
  *object = nullptr;
  // An aggregated object can only hand its inner unknown to its outer one.
  if (outer != nullptr && !(iid == kIidIUnknown)) return kENoInterface;
  HRESULT hr = kSOk;
  CUnknown* created = row_->m_lpfnNew(outer, &hr);
  if (created == nullptr) return Succeeded(hr) ? kEOutOfMemory : hr;
  if (Failed(hr)) {
    delete created;
    return hr;
  }
  created->NonDelegatingAddRef();
  hr = created->NonDelegatingQueryInterface(iid, object);
  created->NonDelegatingRelease();
  return hr;
}

HRESULT CClassFactory::LockServer(Bool32 lock) {
  ChangeServerLock(lock != 0);
  return kSOk;
}

bool ServerModuleAttach() {
  if (!ProcessorHasSse2()) return false;
  for (int32_t i = 0; i < g_cTemplates; ++i) {
    if (g_Templates[i].m_lpfnInit != nullptr) g_Templates[i].m_lpfnInit(true, g_Templates[i].m_ClsID);
  }
  return true;
}

}  // namespace vantaro

using vantaro::GUID;
using vantaro::HRESULT;

extern "C" {

VTC_API VtcResult VTC_STDCALL DllGetClassObject(const VtcGuid* clsid, const VtcGuid* iid,
                                                void** object) {
  if (object == nullptr || clsid == nullptr || iid == nullptr) return vantaro::kEPointer;
  *object = nullptr;
  if (!(*iid == vantaro::kIidIUnknown) && !(*iid == vantaro::kIidIClassFactory)) {
    return vantaro::kENoInterface;
  }
  for (int32_t i = 0; i < vantaro::g_cTemplates; ++i) {
    if (!(*vantaro::g_Templates[i].m_ClsID == *clsid)) continue;
    auto* factory = new (std::nothrow) vantaro::CClassFactory(&vantaro::g_Templates[i]);
    if (factory == nullptr) return vantaro::kEOutOfMemory;
    factory->AddRef();
    *object = static_cast<vantaro::IClassFactory*>(factory);
    return vantaro::kSOk;
  }
  return vantaro::kClassENotAvailable;
}

VTC_API VtcResult VTC_STDCALL DllCanUnloadNow(void) {
  return vantaro::ServerLockCount() > 0 || vantaro::LivingObjectCount() > 0 ? vantaro::kSFalse
                                                                            : vantaro::kSOk;
}

VTC_API VtcResult VTC_STDCALL DllRegisterServer(void) {
  return vantaro::AMovieDllRegisterServer2(true);
}

VTC_API VtcResult VTC_STDCALL DllUnregisterServer(void) {
  return vantaro::AMovieDllRegisterServer2(false);
}

}  // extern "C"
