// What the scalar/vector twin tests share: the kernel records of the vector
// levels this processor runs, and 16-bit samples of the kinds where the
// saturating and wrapping steps bite.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "codec/kernels.h"

namespace vantaro::test {

// The vector levels' records present here, lowest first; may be empty.
inline std::vector<const Kernels*> VectorKernels() {
  std::vector<const Kernels*> levels;
  for (int level = 1; level < kKernelLevelCount; ++level) {
    if (const Kernels* k = KernelsAt(static_cast<KernelLevel>(level))) levels.push_back(k);
  }
  return levels;
}

// Sample `k` of a block of `kind`: 0 all maximum, 1 all minimum, 2 the two
// alternating, 3 the coefficient range's ends, 4 random in that range, 5 any
// value, 6 random around the sample range (-32..287).
constexpr int kSampleKinds = 7;
inline int16_t Sample(int kind, int k, std::mt19937& rng) {
  switch (kind) {
    case 0: return 32767;
    case 1: return -32768;
    case 2: return static_cast<int16_t>((k & 1) ? 32767 : -32768);
    case 3: return static_cast<int16_t>((k % 3 == 0) ? 2047 : -2048);
    case 4: return static_cast<int16_t>(static_cast<int32_t>(rng() % 4096) - 2048);
    case 5: return static_cast<int16_t>(rng());
    default: return static_cast<int16_t>(static_cast<int32_t>(rng() % 320) - 32);
  }
}

}  // namespace vantaro::test
