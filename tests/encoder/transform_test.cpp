// The forward transform and the quantiser: exact values on the edge cases,
// and the vector kernels against their scalar twins. Every bit the transform
// gives real pictures is pinned by the golden streams (tests/codec).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>

#include "encoder/encoder_kernels.h"
#include "encoder/forward_dct.h"
#include "encoder/quantise.h"
#include "support/twins.h"

namespace vantaro::encoder {
namespace {

// Flat blocks give only the level-shifted DC; the quantiser rounds half to
// even with no dead zone and clamps to 16 bits, and the level shift wraps.
TEST(ForwardTransform, QuantisedValuesOnTheEdgeCases) {
  const struct {
    int16_t sample;  // every sample; 0: none, the transform skipped
    int16_t dc, value;  // before the quantiser: the DC and position 1
    float reciprocal;
    int16_t quantisedDc, quantised;
  } cases[] = {
      {0, 0, 0, 1.0f, -1024, 0},        {128, 0, 0, 1.0f, 0, 0},        {255, 0, 0, 1.0f, 1016, 0},
      {0, 1024 + 5, 1, 0.5f, 2, 0},     {0, 1024, 3, 0.5f, 0, 2},       {0, 1024, -3, 0.5f, 0, -2},
      {0, 1024, -1, 0.5f, 0, 0},        {0, 1024, 7, 0.5f, 0, 4},       {0, 1024, 20000, 4.0f, 0, 32767},
      {0, -32768, -20000, 4.0f, 32767, -32768},  // -32768 - 1024 wraps to 31744
  };
  for (const auto& c : cases) {
    alignas(16) int16_t block[64] = {};
    alignas(16) float reciprocals[64];
    for (float& r : reciprocals) r = c.reciprocal;
    if (c.sample != 0 || c.dc == 0) {
      for (int16_t& v : block) v = c.sample;
      ForwardDctScalar(block);
      EXPECT_EQ(block[0], 8 * c.sample);
    } else {
      block[0] = c.dc;
      block[1] = c.value;
    }
    QuantiseBlockScalar(block, reciprocals);
    EXPECT_EQ(block[0], c.quantisedDc) << c.sample << " " << c.dc;
    EXPECT_EQ(block[1], c.quantised) << c.value << " * " << c.reciprocal;
    EXPECT_EQ(NonZeroMaskScalar(block), (c.quantisedDc != 0 ? 1u : 0u) | (c.quantised != 0 ? 2u : 0u));
  }
}

// Every vector level against the scalar kernels, several blocks a call:
// random blocks of every range, patterns that make every saturating step
// bite, and guard values around the blocks that must stay as they were.
TEST(ForwardKernelTwins, AgreeWithScalarOnRandomAndSaturatingBlocks) {
  constexpr int kBlocks = 5, kGuard = 8;
  std::mt19937 rng(1234);
  alignas(16) float reciprocals[64];
  alignas(16) int16_t input[kBlocks * 64];
  const auto compare = [&](const ForwardKernels& vector, const char* what, int n) {
    alignas(16) int16_t a[kBlocks * 64 + 2 * kGuard], b[kBlocks * 64 + 2 * kGuard];
    uint64_t maskA[kBlocks + 1] = {}, maskB[kBlocks + 1] = {};
    for (int i = 0; i < kBlocks * 64 + 2 * kGuard; ++i) a[i] = b[i] = static_cast<int16_t>(0x5A5A);
    std::memcpy(a + kGuard, input, sizeof input);
    std::memcpy(b + kGuard, input, sizeof input);
    const int count = 1 + n % kBlocks;
    kForwardKernelsScalar.forwardBlocks(a + kGuard, count, reciprocals, maskA);
    vector.forwardBlocks(b + kGuard, count, reciprocals, maskB);
    ASSERT_EQ(std::memcmp(a, b, sizeof a), 0) << what << " values, case " << n;
    ASSERT_EQ(std::memcmp(maskA, maskB, sizeof maskA), 0) << what << " masks, case " << n;
  };
  const int16_t patterns[][2] = {{32767, 32767}, {-32768, -32768}, {32767, -32768},
                                 {-32768, 32767}, {255, 0}, {0, 255}, {255, 255}};
  for (const Kernels* k : test::VectorKernels()) {
    for (float& r : reciprocals) r = 1.0f;
    for (int p = 0; p < 7; ++p) {
      for (int layout = 0; layout < 3; ++layout) {  // by sample, by row, by column
        for (int i = 0; i < kBlocks * 64; ++i) {
          const int j = i % 64, sel = layout == 0 ? j : (layout == 1 ? j / 8 : j % 8);
          input[i] = patterns[(p + i / 64) % 7][sel & 1];
        }
        compare(*k->forward, "pattern", 3 * p + layout);
      }
    }
    for (int n = 0; n < 60000; ++n) {
      const int kind = n % 5;  // full 16-bit, coefficient range, samples twice, mostly flat samples
      const int lo = kind == 0 ? -32768 : (kind == 1 ? -2048 : 0);
      const int hi = kind == 0 ? 32767 : (kind == 1 ? 2047 : 255);
      std::uniform_int_distribution<int> range(lo, hi);
      for (int16_t& v : input) v = static_cast<int16_t>(kind == 4 && rng() % 4 != 0 ? 128 : range(rng));
      if (n % 64 == 0) {
        std::uniform_real_distribution<float> r(0.0f, kind == 0 ? 4.0f : 1.0f);
        for (float& v : reciprocals) v = r(rng);
        reciprocals[0] = 1.0f;
      }
      compare(*k->forward, "random", n);
    }
  }
}

}  // namespace
}  // namespace vantaro::encoder
