// Self-registration: the class keys of each class in the table, and the
// filter descriptions told to the platform's filter mapper.
#include <string>

#include "filter/com_server.h"
#include "platform/com_runtime.h"
#include "platform/filter_mapper.h"
#include "platform/registry.h"

namespace vantaro {

namespace {

// "file not found": a first registration or a repeated removal.
constexpr HRESULT kNotFound = HresultFromWin32(kErrorFileNotFound);

std::u16string ClassKeyPath(const GUID& clsid) { return u"CLSID\\" + GuidToString(clsid); }

int32_t WriteClassKeys(const CFactoryTemplate& row, const std::u16string& modulePath) {
  RegistryKey classKey = 0;
  int32_t error = RegistryCreateKey(kRegistryClassesRoot, ClassKeyPath(*row.m_ClsID), &classKey);
  if (error != kErrorSuccess) return error;
  error = RegistrySetString(classKey, u"", row.m_Name);
  RegistryKey serverKey = 0;
  if (error == kErrorSuccess) error = RegistryCreateKey(classKey, u"InprocServer32", &serverKey);
  if (error == kErrorSuccess) {
    error = RegistrySetString(serverKey, u"", modulePath);
    if (error == kErrorSuccess) error = RegistrySetString(serverKey, u"ThreadingModel", u"Both");
    RegistryCloseKey(serverKey);
  }
  RegistryCloseKey(classKey);
  return error;
}

// Depth-first: always the first remaining subkey, until none is left.
int32_t DeleteKeyTree(RegistryKey parent, const std::u16string& name) {
  RegistryKey key = 0;
  const int32_t opened = RegistryOpenKey(parent, name, &key);
  if (opened != kErrorSuccess) return opened;
  std::u16string subKey;
  while (RegistryEnumSubKey(key, 0, &subKey) == kErrorSuccess) {
    if (DeleteKeyTree(key, subKey) != kErrorSuccess) break;
  }
  RegistryCloseKey(key);
  return RegistryDeleteKey(parent, name);
}

// A key that can't be opened ends the removal silently.
void RemoveClassKeys(const CFactoryTemplate& row) {
  RegistryKey classes = 0;
  if (RegistryOpenKey(kRegistryClassesRoot, u"CLSID", &classes) != kErrorSuccess) return;
  (void)DeleteKeyTree(classes, GuidToString(*row.m_ClsID));
  RegistryCloseKey(classes);
}

HRESULT SetupWithMapper2(IFilterMapper2* mapper, const AMOVIESETUP_FILTER& setup,
                         bool registering) {
  HRESULT hr = mapper->UnregisterFilter(nullptr, nullptr, *setup.clsID);
  if (registering) {
    const REGFILTER2 description{1, setup.dwMerit, setup.nPins, setup.lpPin};
    hr = mapper->RegisterFilter(*setup.clsID, setup.strName, nullptr, nullptr, nullptr,
                                &description);
  }
  return hr == kNotFound ? kSOk : hr;
}

HRESULT RegisterPinsWithMapper(IFilterMapper* mapper, const AMOVIESETUP_FILTER& setup) {
  HRESULT hr = kSOk;
  for (uint32_t p = 0; p < setup.nPins && Succeeded(hr); ++p) {
    const AMOVIESETUP_PIN& pin = setup.lpPin[p];
    const GUID connectsTo = pin.clsConnectsToFilter ? *pin.clsConnectsToFilter : kGuidNull;
    hr = mapper->RegisterPin(*setup.clsID, pin.strName, pin.bRendered, pin.bOutput, pin.bZero,
                             pin.bMany, connectsTo, pin.strConnectsToPin);
    for (uint32_t t = 0; t < pin.nMediaTypes && Succeeded(hr); ++t) {
      hr = mapper->RegisterPinType(*setup.clsID, pin.strName, *pin.lpMediaType[t].clsMajorType,
                                   *pin.lpMediaType[t].clsMinorType);
    }
  }
  return hr;
}

HRESULT SetupWithMapper(IFilterMapper* mapper, const AMOVIESETUP_FILTER& setup, bool registering) {
  HRESULT hr = mapper->UnregisterFilter(*setup.clsID);
  if (registering) {
    hr = mapper->RegisterFilter(*setup.clsID, setup.strName, setup.dwMerit);
    if (Succeeded(hr)) hr = RegisterPinsWithMapper(mapper, setup);
  }
  return hr == kNotFound ? kSOk : hr;
}

// The current mapper if there is one, else the older one.
HRESULT TellMapper(bool registering) {
  IFilterMapper2* mapper2 = nullptr;
  IFilterMapper* mapper = nullptr;
  HRESULT hr = CoCreateInstance(kClsidFilterMapper2, nullptr, kClsCtxInprocServer,
                                kIidIFilterMapper2, reinterpret_cast<void**>(&mapper2));
  if (Failed(hr)) {
    hr = CoCreateInstance(kClsidFilterMapper, nullptr, kClsCtxInprocServer, kIidIFilterMapper,
                          reinterpret_cast<void**>(&mapper));
  }
  for (int32_t i = 0; i < g_cTemplates && Succeeded(hr); ++i) {
    const AMOVIESETUP_FILTER* setup = g_Templates[i].m_pAMovieSetup_Filter;
    if (setup == nullptr) continue;
    hr = mapper2 != nullptr ? SetupWithMapper2(mapper2, *setup, registering)
                            : SetupWithMapper(mapper, *setup, registering);
  }
  if (mapper2 != nullptr) mapper2->Release();
  if (mapper != nullptr) mapper->Release();
  return hr;
}

}  // namespace

// Registration stops at the first failure and undoes nothing.
HRESULT AMovieDllRegisterServer2(bool registering) {
  std::string path;
  std::u16string widePath;
  int32_t error = ModuleFileName(&path);
  if (error == kErrorSuccess) error = WidenSystemText(path, &widePath);
  if (error != kErrorSuccess) return HresultFromWin32(error);
  if (registering) {
    for (int32_t i = 0; i < g_cTemplates; ++i) {
      error = WriteClassKeys(g_Templates[i], widePath);
      if (error != kErrorSuccess) return HresultFromWin32(error);
    }
  }
  (void)CoInitialize();
  const HRESULT hr = TellMapper(registering);
  CoFreeUnusedLibraries();
  CoUninitialize();
  if (Failed(hr)) return hr;
  if (!registering) {
    for (int32_t i = 0; i < g_cTemplates; ++i) RemoveClassKeys(g_Templates[i]);
  }
  return hr;
}

}  // namespace vantaro
