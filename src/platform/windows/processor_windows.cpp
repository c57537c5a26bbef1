#include "platform/processor.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {
namespace {
ProcessorFeatureOverride g_override = nullptr;
// The system's feature number for SSE2.
constexpr DWORD kFeatureSse2 = 10;
}  // namespace

bool ProcessorHasSse2() {
  if (g_override != nullptr) return g_override();
  return IsProcessorFeaturePresent(kFeatureSse2) != FALSE;
}

void SetProcessorFeatureOverride(ProcessorFeatureOverride override) { g_override = override; }

}  // namespace vantaro
