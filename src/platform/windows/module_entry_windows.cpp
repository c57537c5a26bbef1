// The library's entry. The global tables are built by static initialisation
// before it runs; the entry refuses the load on a processor without SSE2,
// whatever the reason for the call, before anything else.
#include "filter/com_server.h"
#include "platform/processor.h"
#include "platform/windows/module_handle.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {
namespace {
HMODULE g_module = nullptr;
}  // namespace

HMODULE ThisModule() { return g_module; }

}  // namespace vantaro

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
  if (!vantaro::ProcessorHasSse2()) return FALSE;
  if (reason == DLL_PROCESS_ATTACH) {
    vantaro::g_module = module;
    // No per-thread work: spare every thread start and end a call here.
    DisableThreadLibraryCalls(module);
    if (!vantaro::ServerModuleAttach()) return FALSE;
  }
  return TRUE;
}
