#include "decoder/inverse_transform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "codec/codec_instance.h"
#include "decoder/block_decode_tables.h"
#include "support/pictures.h"
#include "support/twins.h"

namespace vantaro::decoder {
namespace {

std::vector<int16_t> Transform(std::vector<int16_t> block, const uint16_t* m,
                               const BlockKernels& k = kBlockKernelsScalar) {
  alignas(16) int16_t b[64];
  std::memcpy(b, block.data(), sizeof b);
  k.inverseTransform(b, m);
  return std::vector<int16_t>(b, b + 64);
}

TEST(InverseTransform, ShortcutIsOneLevelAboveTheFullPath) {
  test::TestInstance i;  // quality 96
  // Marked: (v + 1032) >> 3. Unmarked (an AC code with level 0): the full path.
  const struct {
    int16_t dc, index1, expected;
  } cases[] = {{0, kNoAcMark, 129}, {-8, kNoAcMark, 128}, {-1024, kNoAcMark, 1}, {1016, kNoAcMark, 256},
               {0, 0, 128},         {8, 0, 129},         {-8, 0, 127},         {-1024, 0, 0}, {1016, 0, 255}};
  for (const auto& c : cases) {
    std::vector<int16_t> block(64, 0);
    block[0] = c.dc, block[1] = c.index1;
    for (int16_t s : Transform(block, i->multiplierTable)) ASSERT_EQ(s, c.expected) << c.dc;
  }
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

// Every level's kernels against the scalar ones, single blocks and pairs, on
// random data and on the patterns where saturation and wrap-around bite; the
// memory around the blocks must stay as it was.
TEST(BlockKernels, EveryLevelMatchesScalarAndStaysInsideTheBlocks) {
  std::mt19937 rng(11);
  // Blocks 1 and 2 between guards. Half the blocks keep their levels in rows
  // 0..3 (the shortcut for empty lower rows), a few with one level below;
  // some have no AC.
  auto fill = [&](int16_t* a, int trial) {
    for (int k = 0; k < 64 * 4; ++k) a[k] = static_cast<int16_t>(rng());
    for (int16_t* block : {a + 64, a + 128}) {
      const int kind = static_cast<int>(rng() % 6), rows = rng() % 2 == 0 ? 8 : 4;
      for (int k = 0; k < 64; ++k) block[k] = k < 8 * rows ? test::Sample(kind, k, rng) : 0;
      if (rows == 4 && rng() % 5 == 0) block[32 + rng() % 32] = test::Sample(kind, 1, rng) | 1;
      if (trial % 7 == 0 && rng() % 2 == 0) block[1] = kNoAcMark;
    }
  };
  for (const Kernels* level : test::VectorKernels()) {
    const BlockKernels& vector = *level->blocks;
    for (int trial = 0; trial < 3000; ++trial) {
      alignas(16) int16_t a[64 * 4], b[64 * 4], c[64 * 4];
      fill(a, trial);
      uint16_t m[64];
      for (int k = 0; k < 64; ++k) {
        m[k] = trial % 3 == 0 ? static_cast<uint16_t>(rng()) : static_cast<uint16_t>(1 + rng() % 9296);
      }
      std::memcpy(b, a, sizeof a);
      std::memcpy(c, a, sizeof a);
      kBlockKernelsScalar.inverseTransform(a + 64, m);
      kBlockKernelsScalar.inverseTransform(a + 128, m);
      vector.inverseTransform(b + 64, m);
      vector.inverseTransform(b + 128, m);
      vector.inverseTransformPair(c + 64, c + 128, m);
      ASSERT_EQ(0, std::memcmp(a, b, sizeof a)) << "trial " << trial;
      ASSERT_EQ(0, std::memcmp(a, c, sizeof a)) << "trial " << trial;
    }
    alignas(16) int16_t c[64 * 5];
    for (int16_t& v : c) v = 77;
    vector.clearBlocks(c + 64, 3);
    for (int k = 0; k < 64 * 5; ++k) ASSERT_EQ(c[k], (k >= 64 && k < 256) ? 0 : 77) << k;
  }
}

}  // namespace
}  // namespace vantaro::decoder
