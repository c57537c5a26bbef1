// The forward transform and the quantiser: exact values on the edge cases,
// closeness to the true DCT, and the SSE2 kernels against their scalar twins.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>

#include "encoder/encoder_kernels.h"
#include "encoder/forward_dct.h"
#include "encoder/quantise.h"

namespace vantaro::encoder {
namespace {

void Fill(int16_t* block, int16_t value) {
  for (int i = 0; i < 64; ++i) block[i] = value;
}

TEST(ForwardTransform, FlatBlocksGiveOnlyTheLevelShiftedDc) {
  alignas(16) float unit[64];
  for (float& r : unit) r = 1.0f;
  const struct {
    int16_t sample, dc;
  } cases[] = {{0, -1024}, {128, 0}, {255, 1016}};
  for (const auto& c : cases) {
    alignas(16) int16_t block[64];
    Fill(block, c.sample);
    ForwardDctScalar(block);
    EXPECT_EQ(block[0], 8 * c.sample) << c.sample;
    QuantiseBlockScalar(block, unit);
    EXPECT_EQ(block[0], c.dc) << c.sample;
    for (int i = 1; i < 64; ++i) EXPECT_EQ(block[i], 0) << c.sample << " at " << i;
  }
}

// Row is the vertical frequency, column the horizontal; within 1 of the
// orthonormal DCT for 8-bit input.
TEST(ForwardTransform, StaysWithinOneOfTheOrthonormalDct) {
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> sample(0, 255);
  double worst = 0;
  for (int n = 0; n < 2000; ++n) {
    alignas(16) int16_t block[64];
    double x[64];
    for (int i = 0; i < 64; ++i) x[i] = block[i] = static_cast<int16_t>(sample(rng));
    if (n == 0) {  // a pure horizontal ramp: energy in row 0 only
      for (int i = 0; i < 64; ++i) x[i] = block[i] = static_cast<int16_t>(30 * (i % 8));
    }
    ForwardDctScalar(block);
    for (int v = 0; v < 8; ++v) {
      for (int u = 0; u < 8; ++u) {
        double sum = 0;
        for (int r = 0; r < 8; ++r) {
          for (int c = 0; c < 8; ++c) {
            sum += x[r * 8 + c] * std::cos((2 * r + 1) * v * M_PI / 16) *
                   std::cos((2 * c + 1) * u * M_PI / 16);
          }
        }
        const double cu = u == 0 ? std::sqrt(0.125) : 0.5;
        const double cv = v == 0 ? std::sqrt(0.125) : 0.5;
        const double diff = std::fabs(cu * cv * sum - block[v * 8 + u]);
        worst = std::max(worst, diff);
      }
    }
  }
  EXPECT_LT(worst, 1.0);
}

TEST(Quantiser, RoundsHalfToEvenWithoutDeadZoneAndClampsTo16Bits) {
  alignas(16) float half[64];
  for (float& r : half) r = 0.5f;
  alignas(16) int16_t block[64] = {};
  block[0] = 1024 + 5;  // after the level shift 5 * 0.5 = 2.5 -> 2
  block[1] = 1;   // 0.5 -> 0
  block[2] = 3;   // 1.5 -> 2
  block[3] = -3;  // -1.5 -> -2
  block[4] = -1;  // -0.5 -> -0
  block[5] = 7;   // 3.5 -> 4
  QuantiseBlockScalar(block, half);
  EXPECT_EQ(block[0], 2);
  EXPECT_EQ(block[1], 0);
  EXPECT_EQ(block[2], 2);
  EXPECT_EQ(block[3], -2);
  EXPECT_EQ(block[4], 0);
  EXPECT_EQ(block[5], 4);

  alignas(16) float big[64];
  for (float& r : big) r = 4.0f;
  Fill(block, 20000);
  block[1] = -20000;
  block[0] = -32768;  // the level shift wraps: -32768 - 1024 -> 31744
  QuantiseBlockScalar(block, big);
  EXPECT_EQ(block[0], 32767);
  EXPECT_EQ(block[1], -32768);
  EXPECT_EQ(block[2], 32767);
}

// The SSE2 kernels against the scalar ones: random blocks of every range,
// and the patterns that make every saturating step bite.
class VectorForwardKernels : public ::testing::Test {
 protected:
  void SetUp() override {
    vector_ = ForwardKernelsSse2();
    if (vector_ == nullptr) GTEST_SKIP() << "no SSE2 kernels in this build";
  }
  void ExpectSame(const int16_t* input, const float* reciprocals, const char* what, int n) {
    alignas(16) int16_t a[64 + 16], b[64 + 16];
    for (int i = 0; i < 80; ++i) a[i] = b[i] = static_cast<int16_t>(0x5A5A);
    std::memcpy(a + 8, input, 128);
    std::memcpy(b + 8, input, 128);
    kForwardKernelsScalar.forwardDct(a + 8);
    vector_->forwardDct(b + 8);
    ASSERT_EQ(std::memcmp(a, b, sizeof a), 0) << what << " transform, case " << n;
    kForwardKernelsScalar.quantise(a + 8, reciprocals);
    vector_->quantise(b + 8, reciprocals);
    ASSERT_EQ(std::memcmp(a, b, sizeof a), 0) << what << " quantiser, case " << n;
    ASSERT_EQ(kForwardKernelsScalar.nonZeroMask(a + 8), vector_->nonZeroMask(b + 8)) << what << " mask, case " << n;
  }
  const ForwardKernels* vector_ = nullptr;
};

TEST_F(VectorForwardKernels, AgreeWithScalarOnRandomAndSaturatingBlocks) {
  std::mt19937 rng(1234);
  alignas(16) float reciprocals[64];
  alignas(16) int16_t block[64];
  const int16_t patterns[][2] = {{32767, 32767}, {-32768, -32768}, {32767, -32768},
                                 {-32768, 32767}, {255, 0}, {0, 255}, {255, 255}};
  for (const auto& p : patterns) {
    for (int layout = 0; layout < 3; ++layout) {  // by sample, by row, by column
      for (int i = 0; i < 64; ++i) {
        const int sel = layout == 0 ? i : (layout == 1 ? i / 8 : i % 8);
        block[i] = p[sel & 1];
      }
      for (float& r : reciprocals) r = 1.0f;
      ExpectSame(block, reciprocals, "pattern", layout);
    }
  }
  for (int n = 0; n < 300000; ++n) {
    const int kind = n % 4;
    std::uniform_int_distribution<int> range(kind == 0 ? -32768 : (kind == 1 ? -2048 : 0),
                                             kind == 0 ? 32767 : (kind == 1 ? 2047 : 255));
    for (int16_t& v : block) v = static_cast<int16_t>(range(rng));
    if (n % 64 == 0) {
      std::uniform_real_distribution<float> r(0.0f, kind == 0 ? 4.0f : 1.0f);
      for (float& v : reciprocals) v = r(rng);
      reciprocals[0] = 1.0f;
    }
    ExpectSame(block, reciprocals, "random", n);
  }
  // Sparse blocks, as quantised ones are: the mask against a plain reading.
  for (int n = 0; n < 20000; ++n) {
    uint64_t expected = 0;
    for (int i = 0; i < 64; ++i) {
      block[i] = rng() % 5 == 0 ? static_cast<int16_t>(rng()) : 0;
      if (block[i] != 0) expected |= uint64_t{1} << i;
    }
    ASSERT_EQ(kForwardKernelsScalar.nonZeroMask(block), expected) << n;
    ASSERT_EQ(vector_->nonZeroMask(block), expected) << n;
  }
}

}  // namespace
}  // namespace vantaro::encoder
