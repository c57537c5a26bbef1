// The driver host for a machine without the compression manager: nothing
// takes driver messages on, and there is no screen to show a box on.
#include "platform/debug_output.h"
#include "platform/driver_host.h"
#include "platform/processor.h"

namespace vantaro {
namespace {

class PortableDriverHost final : public DriverHost {
 public:
  int64_t DefDriverProc(uint64_t, void*, uint32_t, int64_t, int64_t) override { return 0; }
  bool ProcessorHasSse2() override { return vantaro::ProcessorHasSse2(); }
  void ShowMessageBox(const char*, const char*, uint32_t) override {}
  void DebugOutput(const char* text) override { vantaro::DebugOutput(text); }
};

PortableDriverHost g_portableHost;
DriverHost* g_installed = nullptr;

}  // namespace

DriverHost& CurrentDriverHost() { return g_installed != nullptr ? *g_installed : g_portableHost; }

void SetDriverHost(DriverHost* host) { g_installed = host; }

}  // namespace vantaro
