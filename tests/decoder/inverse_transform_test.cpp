#include "decoder/inverse_transform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>

#include "codec/codec_instance.h"
#include "codec/quantiser.h"
#include "decoder/block_decode_tables.h"
#include "support/pictures.h"

namespace vantaro::decoder {
namespace {

struct Instance : test::TestInstance {
  explicit Instance(int32_t quality = 96) { SetQuality(get(), quality); }
  const uint16_t* Multipliers() const { return get()->multiplierTable; }
};

std::vector<int16_t> Transform(std::vector<int16_t> block, const uint16_t* m,
                               const BlockKernels& k = kBlockKernelsScalar) {
  alignas(16) int16_t b[64];
  std::memcpy(b, block.data(), sizeof b);
  k.inverseTransform(b, m);
  return std::vector<int16_t>(b, b + 64);
}

std::vector<int16_t> DcBlock(int16_t dc, int16_t index1) {
  std::vector<int16_t> b(64, 0);
  b[0] = dc;
  b[1] = index1;
  return b;
}

TEST(InverseTransform, ShortcutIsOneLevelAboveTheFullPath) {
  const Instance i;
  // Marked: (v + 1032) >> 3.
  for (const auto& [dc, expected] : {std::pair{0, 129}, {-8, 128}, {-1024, 1}, {1016, 256}}) {
    const auto out = Transform(DcBlock(static_cast<int16_t>(dc), kNoAcMark), i.Multipliers());
    for (int16_t s : out) ASSERT_EQ(s, expected) << "marked DC " << dc;
  }
  // Unmarked (an AC code with level 0): the full path.
  for (const auto& [dc, expected] : {std::pair{0, 128}, {8, 129}, {-8, 127}, {-1024, 0}, {1016, 255}}) {
    const auto out = Transform(DcBlock(static_cast<int16_t>(dc), 0), i.Multipliers());
    for (int16_t s : out) ASSERT_EQ(s, expected) << "unmarked DC " << dc;
  }
}

TEST(InverseTransform, FullPathRoundsByPositionAndTheMarkLivesOnlyAtIndexOne) {
  const Instance i;
  const auto out = Transform(DcBlock(100, 0), i.Multipliers());
  int low = 0, high = 0;
  for (int16_t s : out) {
    ASSERT_TRUE(s == 140 || s == 141) << s;
    (s == 140 ? low : high)++;
  }
  EXPECT_GT(low, 0);
  EXPECT_GT(high, 0);

  // 0x4000 anywhere else is an ordinary (huge) coefficient.
  uint16_t ones[64];
  for (uint16_t& v : ones) v = 1;
  ones[0] = 16;
  std::vector<int16_t> b = DcBlock(0, 0);
  b[2] = kNoAcMark;
  const auto full = Transform(b, ones);
  EXPECT_NE(full[0], full[2]);
}

TEST(InverseTransform, DequantisationWrapsAtSixteenBits) {
  // With a multiplier of 16, levels 2047 and -2049 give the same low 16 bits
  // of the product; only a wrapping dequantiser maps them alike.
  uint16_t m[64];
  for (uint16_t& v : m) v = 16;
  std::vector<int16_t> a = DcBlock(0, 0), b = DcBlock(0, 0);
  a[9] = 2047;
  b[9] = -2049;
  EXPECT_EQ(Transform(a, m), Transform(b, m));
  b[9] = 2047;
  b[0] = 1;  // and the pair is not simply insensitive
  EXPECT_NE(Transform(a, m), Transform(b, m));
}

// 512 blocks from a fixed generator (sparse small levels, the whole level
// range, arbitrary values with arbitrary multipliers), hashed after the
// scalar transform. The value was computed apart from this code, straight
// from the stated arithmetic, so it pins the row tables, each row's own
// rounding constant and the order of the saturating column steps: a slipped
// digit in any of them (1203 as 1230, say) fails here and nowhere else.
TEST(InverseTransform, MatchesTheStatedArithmeticBitForBit) {
  uint32_t x = 2024;
  auto next = [&x] {
    x = x * 1103515245u + 12345u;
    return x >> 16;
  };
  uint64_t hash = 0xcbf29ce484222325ull;
  for (int trial = 0; trial < 512; ++trial) {
    const int kind = trial % 3;
    std::vector<int16_t> b(64);
    uint16_t m[64];
    for (int k = 0; k < 64; ++k) {
      const uint32_t r = next();
      b[k] = static_cast<int16_t>(kind == 0   ? (r % 3 == 0 ? static_cast<int32_t>(r % 41) - 20 : 0)
                                  : kind == 1 ? static_cast<int32_t>(r % 4096) - 2048
                                              : static_cast<int32_t>(r));
      m[k] = static_cast<uint16_t>(kind < 2 ? 1 + next() % 9296 : next());
    }
    if (b[1] == kNoAcMark) b[1] = 0;
    for (int16_t v : Transform(b, m)) {
      for (int shift : {0, 8}) hash = (hash ^ ((static_cast<uint16_t>(v) >> shift) & 0xFF)) * 0x100000001b3ull;
    }
  }
  EXPECT_EQ(hash, 0x7eaba30277eda2b7ull);
}

// A plain double-precision inverse DCT of the dequantised block bounds the
// integer transform: within one level for moderate coefficients.
TEST(InverseTransform, StaysWithinOneLevelOfTheTrueTransform) {
  const Instance i(90);
  std::mt19937 rng(3);
  for (int trial = 0; trial < 300; ++trial) {
    std::vector<int16_t> b(64, 0);
    b[0] = static_cast<int16_t>(static_cast<int32_t>(rng() % 1600) - 800);
    for (int n = 0; n < 6; ++n) b[1 + rng() % 20] = static_cast<int16_t>(static_cast<int32_t>(rng() % 21) - 10);
    if (b[1] == kNoAcMark) continue;
    double f[64];
    for (int k = 0; k < 64; ++k) f[k] = static_cast<int16_t>(b[k] * i.Multipliers()[k]) >> 4;
    f[0] += 1024;
    const auto out = Transform(b, i.Multipliers());
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 8; ++x) {
        double s = 0;
        for (int v = 0; v < 8; ++v) {
          for (int u = 0; u < 8; ++u) {
            const double cu = u == 0 ? std::numbers::sqrt2 / 2 : 1.0;
            const double cv = v == 0 ? std::numbers::sqrt2 / 2 : 1.0;
            s += cu * cv * f[v * 8 + u] * std::cos((2 * x + 1) * u * std::numbers::pi / 16) *
                 std::cos((2 * y + 1) * v * std::numbers::pi / 16);
          }
        }
        ASSERT_NEAR(out[y * 8 + x], s / 4, 1.0) << "trial " << trial << " at " << y << "," << x;
      }
    }
  }
}

// The vector kernels against their scalar twins, on random data and on the
// patterns where saturation and wrap-around bite; the memory around the
// block must stay as it was.
TEST(BlockKernels, VectorMatchesScalarAndStaysInsideTheBlock) {
  const BlockKernels* vector = BlockKernelsSse2();
  if (vector == nullptr) GTEST_SKIP() << "no vector kernels on this build";
  std::mt19937 rng(11);
  auto pattern = [&](int kind, int k) -> int16_t {
    switch (kind) {
      case 0: return 32767;
      case 1: return -32768;
      case 2: return (k & 1) ? 32767 : -32768;
      case 3: return static_cast<int16_t>((k % 3 == 0) ? 2047 : -2048);
      case 4: return static_cast<int16_t>(static_cast<int32_t>(rng() % 4096) - 2048);
      default: return static_cast<int16_t>(rng());
    }
  };
  for (int trial = 0; trial < 2000; ++trial) {
    const int kind = trial % 6;
    alignas(16) int16_t a[64 * 3], b[64 * 3];
    for (int k = 0; k < 64 * 3; ++k) a[k] = static_cast<int16_t>(rng());
    for (int k = 0; k < 64; ++k) a[64 + k] = pattern(kind, k);
    if (trial % 7 == 0) a[65] = kNoAcMark;
    uint16_t m[64];
    for (int k = 0; k < 64; ++k) {
      m[k] = trial % 3 == 0 ? static_cast<uint16_t>(rng()) : static_cast<uint16_t>(1 + rng() % 9296);
    }
    std::memcpy(b, a, sizeof a);
    kBlockKernelsScalar.inverseTransform(a + 64, m);
    vector->inverseTransform(b + 64, m);
    ASSERT_EQ(0, std::memcmp(a, b, sizeof a)) << "trial " << trial;
  }
  alignas(16) int16_t c[64 * 5];
  for (int16_t& v : c) v = 77;
  vector->clearBlocks(c + 64, 3);
  for (int k = 0; k < 64 * 5; ++k) ASSERT_EQ(c[k], (k >= 64 && k < 256) ? 0 : 77) << k;
}

}  // namespace
}  // namespace vantaro::decoder
