// The driver host of the compression manager: its default handler, the SSE2
// test, a message box and the debugger channel.
#include "platform/debug_output.h"
#include "platform/driver_host.h"
#include "platform/processor.h"
#include "platform/windows/windows_headers.h"

#include <mmsystem.h>  // DefDriverProc; needs windows.h before it

namespace vantaro {
namespace {

class WindowsDriverHost final : public DriverHost {
 public:
  int64_t DefDriverProc(uint64_t driverId, void* driverHandle, uint32_t message, int64_t lParam1,
                        int64_t lParam2) override {
    return ::DefDriverProc(static_cast<DWORD_PTR>(driverId), static_cast<HDRVR>(driverHandle),
                           message, static_cast<LPARAM>(lParam1), static_cast<LPARAM>(lParam2));
  }
  bool ProcessorHasSse2() override { return vantaro::ProcessorHasSse2(); }
  void ShowMessageBox(const char* text, const char* title, uint32_t style) override {
    MessageBoxA(nullptr, text, title, style);
  }
  void DebugOutput(const char* text) override { vantaro::DebugOutput(text); }
};

WindowsDriverHost g_windowsHost;
DriverHost* g_installed = nullptr;

}  // namespace

DriverHost& CurrentDriverHost() { return g_installed != nullptr ? *g_installed : g_windowsHost; }

void SetDriverHost(DriverHost* host) { g_installed = host; }

}  // namespace vantaro
