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

void SetProcessorFeatureOverride(ProcessorFeatureOverride override) { g_override = override; }

}  // namespace vantaro
