#include "platform/processor.h"
#include "platform/windows/windows_headers.h"

namespace vantaro {
namespace {
ProcessorFeatureOverride g_override = nullptr;
// The system's feature number for SSE2.
constexpr DWORD kFeatureSse2 = 10;
// The system's feature number for AVX2 (set only where it saves the registers).
constexpr DWORD kFeatureAvx2 = 40;
}  // namespace

bool ProcessorHasSse2() {
  if (g_override != nullptr) return g_override();
  return IsProcessorFeaturePresent(kFeatureSse2) != FALSE;
}

bool ProcessorHasAvx2() { return IsProcessorFeaturePresent(kFeatureAvx2) != FALSE; }

// The system has no feature number for BMI1; the compiler's runtime asks
// the processor.
bool ProcessorHasBmi1() {
#if defined(__GNUC__)
  return __builtin_cpu_supports("bmi");
#else
  return false;
#endif
}

void SetProcessorFeatureOverride(ProcessorFeatureOverride override) { g_override = override; }

}  // namespace vantaro
