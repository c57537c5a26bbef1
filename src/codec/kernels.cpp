#include "codec/kernels.h"

#include <atomic>

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
                  &decoder::kStoreKernelsScalar};
    r.present[0] = true;
    const encoder::ForwardKernels* forward = encoder::ForwardKernelsSse2();
    if (forward != nullptr && ProcessorHasSse2()) {
      r.level[1] = {KernelLevel::kSse2, forward, encoder::LoaderKernelsSse2(),
                    decoder::BlockKernelsSse2(), decoder::StoreKernelsSse2()};
      r.present[1] = true;
    }
    return r;
  }();
  return records;
}

std::atomic<KernelOverride> g_override{KernelOverride::kAutomatic};

}  // namespace

const Kernels* KernelsAt(KernelLevel level) {
  const Records& r = AllRecords();
  const auto i = static_cast<int>(level);
  return r.present[i] ? &r.level[i] : nullptr;
}

const Kernels& ActiveKernels() {
  const KernelOverride o = g_override.load(std::memory_order_relaxed);
  int top = o == KernelOverride::kScalar ? 0 : kKernelLevelCount - 1;
  while (top > 0 && KernelsAt(static_cast<KernelLevel>(top)) == nullptr) --top;
  return *KernelsAt(static_cast<KernelLevel>(top));
}

void SetKernelOverride(KernelOverride override) {
  g_override.store(override, std::memory_order_relaxed);
}

KernelOverride CurrentKernelOverride() { return g_override.load(std::memory_order_relaxed); }

}  // namespace vantaro
