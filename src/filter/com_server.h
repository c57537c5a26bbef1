// The in-process server: its class table, the factory it hands out, the
// registration of its one class, and the module entry's processor check.
#pragma once

#include "filter/base/com_base.h"

namespace vantaro {

struct CFactoryTemplate {
  const char16_t* m_Name;
  const GUID* m_ClsID;
  CUnknown* (*m_lpfnNew)(IUnknown* outer, HRESULT* result);
  void (*m_lpfnInit)(bool loading, const GUID* clsid);
  const AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;
};

extern const CFactoryTemplate g_Templates[];
extern const int32_t g_cTemplates;

class CClassFactory final : public IClassFactory, public CBaseObject {
 public:
  explicit CClassFactory(const CFactoryTemplate* row) : row_(row) {}

  HRESULT VTC_STDCALL QueryInterface(const GUID& iid, void** object) override;
  uint32_t VTC_STDCALL AddRef() override;
  uint32_t VTC_STDCALL Release() override;
  HRESULT VTC_STDCALL CreateInstance(IUnknown* outer, const GUID& iid, void** object) override;
  HRESULT VTC_STDCALL LockServer(Bool32 lock) override;

 private:
  const CFactoryTemplate* row_;
  std::atomic<int32_t> references_{0};
};

// Registers (true) or removes (false) every class of the table: the class
// keys under the classes root and the filter descriptions in the mapper.
HRESULT AMovieDllRegisterServer2(bool registering);

// The library's load-time entry: refuses the load without SSE2, then runs
// each class's initialiser. True lets the load go on.
bool ServerModuleAttach();

}  // namespace vantaro
