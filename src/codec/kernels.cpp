#include "codec/kernels.h"

#include <atomic>
#include <cstring>

#include "decoder/inverse_transform.h"
#include "decoder/store_kernels.h"
#include "encoder/encoder_kernels.h"
#include "platform/processor.h"

namespace vantaro {
namespace {

struct Records {
  Kernels level[kKernelLevelCount];
  bool present[kKernelLevelCount];
};

// Filled once, on first use: the scalar record, then each vector level the
// build has and the processor runs.
const Records& AllRecords() {
  static const Records records = [] {
    Records r{};
    r.level[0] = {KernelLevel::kScalar, &encoder::kForwardKernelsScalar,
                  &encoder::kLoaderKernelsScalar, &decoder::kBlockKernelsScalar,
                  &decoder::kStoreKernelsScalar, false};
    r.present[0] = true;
    const encoder::ForwardKernels* forward = encoder::ForwardKernelsSse2();
    if (forward != nullptr && ProcessorHasSse2()) {
      r.level[1] = {KernelLevel::kSse2, forward, encoder::LoaderKernelsSse2(),
                    decoder::BlockKernelsSse2(), decoder::StoreKernelsSse2(), false};
      r.present[1] = true;
    }
#if defined(VANTARO_KERNELS_AVX2)
    if (r.present[1] && ProcessorHasAvx2()) {
      // Every family without a wider twin keeps its SSE2 one.
      Kernels& avx2 = r.level[2];
      avx2 = r.level[1];
      avx2.level = KernelLevel::kAvx2;
      if (const encoder::ForwardKernels* f = encoder::ForwardKernelsAvx2()) avx2.forward = f;
      if (const decoder::BlockKernels* b = decoder::BlockKernelsAvx2()) avx2.blocks = b;
      avx2.extractIndex = ProcessorHasBmi1();
      r.present[2] = true;
    }
#endif
    return r;
  }();
  return records;
}

// An override other than automatic names the level one above its own number.
static_assert(static_cast<int>(KernelOverride::kAvx2) - 1 == static_cast<int>(KernelLevel::kAvx2));

std::atomic<KernelOverride> g_override{KernelOverride::kAutomatic};

}  // namespace

const Kernels* KernelsAt(KernelLevel level) {
  const Records& r = AllRecords();
  const auto i = static_cast<int>(level);
  return r.present[i] ? &r.level[i] : nullptr;
}

const Kernels& ActiveKernels() {
  const KernelOverride o = g_override.load(std::memory_order_relaxed);
  int top = o == KernelOverride::kAutomatic ? kKernelLevelCount - 1 : static_cast<int>(o) - 1;
  while (top > 0 && KernelsAt(static_cast<KernelLevel>(top)) == nullptr) --top;
  return *KernelsAt(static_cast<KernelLevel>(top));
}

void SetKernelOverride(KernelOverride override) {
  g_override.store(override, std::memory_order_relaxed);
}

const char* KernelLevelName(KernelLevel level) {
  static constexpr const char* kNames[kKernelLevelCount] = {"scalar", "sse2", "avx2"};
  return kNames[static_cast<int>(level)];
}

bool KernelOverrideNamed(const char* name, KernelOverride* override) {
  if (name == nullptr) return false;
  if (std::strcmp(name, "auto") == 0) {
    *override = KernelOverride::kAutomatic;
    return true;
  }
  for (int i = 0; i < kKernelLevelCount; ++i) {
    if (std::strcmp(name, KernelLevelName(static_cast<KernelLevel>(i))) == 0) {
      *override = static_cast<KernelOverride>(i + 1);
      return true;
    }
  }
  return false;
}

KernelOverride CurrentKernelOverride() { return g_override.load(std::memory_order_relaxed); }

}  // namespace vantaro
