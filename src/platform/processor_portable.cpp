#include "platform/processor.h"

namespace vantaro {
namespace {
ProcessorFeatureOverride g_override = nullptr;
}  // namespace

bool ProcessorHasSse2() {
  if (g_override != nullptr) return g_override();
#if defined(__x86_64__) || defined(_M_X64) || defined(__SSE2__)
  return true;
#else
  return false;
#endif
}

bool ProcessorHasAvx2() {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
  // The compiler's runtime asks the processor and the system's register state.
  return __builtin_cpu_supports("avx2");
#else
  return false;
#endif
}

bool ProcessorHasBmi1() {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
  return __builtin_cpu_supports("bmi");
#else
  return false;
#endif
}

void SetProcessorFeatureOverride(ProcessorFeatureOverride override) { g_override = override; }

}  // namespace vantaro
