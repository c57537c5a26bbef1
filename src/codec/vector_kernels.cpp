#include "codec/vector_kernels.h"

#include <atomic>

namespace vantaro {
namespace {
#if defined(__SSE2__)
std::atomic<bool> g_vector{true};
#else
std::atomic<bool> g_vector{false};
#endif
}  // namespace

bool VectorKernelsEnabled() { return g_vector.load(std::memory_order_relaxed); }

void SetVectorKernelsEnabled(bool enabled) {
#if defined(__SSE2__)
  g_vector.store(enabled, std::memory_order_relaxed);
#else
  (void)enabled;
#endif
}

}  // namespace vantaro
