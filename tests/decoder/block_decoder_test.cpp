#include "decoder/block_decoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "codec/code_rows.h"
#include "stream_writer.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;

struct Decoded {
  bool ok;
  uint64_t bits;
  int16_t block[64];
};

Decoded DecodeOne(const std::vector<uint8_t>& bytes, bool luma, uint64_t start = 0) {
  const BlockDecodeTables& t = BlockDecodeTablesInstance();
  Decoded d{};
  BitWindow win(StreamView{bytes.data(), bytes.size()}, start);
  d.ok = DecodeBlock(t, luma ? t.dcLuma : t.dcChroma, win, d.block);
  d.bits = win.Position() - start;
  return d;
}

TEST(BlockDecoder, EveryRunAndLevelReadsBack) {
  // One block per (run, level), all in one stream: the decode tables must give
  // back every code of the writer's table with its length: the longest code
  // the first level finishes (run 16 level 1), the 17-bit ones the second
  // level does (run 1 level 18) and escapes up to run 62, landing on 63.
  StreamWriter w(1 << 22);
  for (int32_t run = 0; run < 63; ++run) {
    for (int32_t level = -2048; level < 2048; level += (run < 32 ? 1 : 97)) {
      if (level != 0) w.Block(0, true, {{run, level}});
    }
  }
  const std::vector<uint8_t> bytes = w.Bytes();
  const BlockDecodeTables& t = BlockDecodeTablesInstance();
  BitWindow win(StreamView{bytes.data(), bytes.size()}, 0);
  for (int32_t run = 0; run < 63; ++run) {
    for (int32_t level = -2048; level < 2048; level += (run < 32 ? 1 : 97)) {
      if (level == 0) continue;
      alignas(16) int16_t block[64] = {};
      ASSERT_TRUE(DecodeBlock(t, t.dcLuma, win, block));
      ASSERT_EQ(block[ZigzagScan[1 + run]], level) << "run " << run;
      for (int k = 1; k < 64; ++k) {
        if (k == ZigzagScan[1 + run]) continue;
        ASSERT_EQ(block[k], 0) << "run " << run << " level " << level;
      }
    }
  }
  EXPECT_EQ(win.Position(), w.BitPos());
}

TEST(BlockDecoder, EveryDcDifferenceReadsBack) {
  for (bool luma : {true, false}) {
    StreamWriter w(1 << 16);
    for (int32_t diff = -2047; diff <= 2047; ++diff) w.Block(diff, luma);
    const std::vector<uint8_t> bytes = w.Bytes();
    const BlockDecodeTables& t = BlockDecodeTablesInstance();
    BitWindow win(StreamView{bytes.data(), bytes.size()}, 0);
    for (int32_t diff = -2047; diff <= 2047; ++diff) {
      alignas(16) int16_t block[64] = {};
      ASSERT_TRUE(DecodeBlock(t, luma ? t.dcLuma : t.dcChroma, win, block));
      ASSERT_EQ(block[0], diff) << (luma ? "luma" : "chroma");
      ASSERT_EQ(block[1], kNoAcMark);
      for (int k = 2; k < 64; ++k) ASSERT_EQ(block[k], 0);
    }
    EXPECT_EQ(win.Position(), w.BitPos());
  }
}

// Zeros written by codes: twelve zero bits (no code of the format) cost 17
// bits and advance the scan by one; an escape of level 0 leaves the block
// unmarked, so the transform takes the full path.
TEST(BlockDecoder, ZeroLevelsFromCodes) {
  Decoded d =
      DecodeOne(StreamWriter().Bits("100").Bits("00000000000000000").Ac(0, 5).Eob().Bytes(), true);
  ASSERT_TRUE(d.ok);
  EXPECT_EQ(d.block[ZigzagScan[1]], 0);
  EXPECT_EQ(d.block[ZigzagScan[2]], 5);
  EXPECT_EQ(d.bits, 3u + 17 + 6 + 4);

  d = DecodeOne(StreamWriter().Dc(0, true).Ac(0, 0).Eob().Bytes(), true);
  EXPECT_EQ(d.block[1], 0);
  EXPECT_EQ(d.bits, 3u + 24 + 4);
}

TEST(BlockDecoder, RunPastTheBlockIsAFault) {
  EXPECT_FALSE(DecodeOne(StreamWriter().Block(0, true, {{40, 1}, {40, 1}}).Bytes(), true).ok);
  // Position 63 is the last one a run may reach.
  EXPECT_TRUE(DecodeOne(StreamWriter().Block(0, true, {{31, 1}, {30, 1}}).Bytes(), true).ok);
  // Twelve zeros past position 63 fault too, rather than writing on.
  StreamWriter w;
  w.Dc(0, true).Ac(62, 1);
  w.Bits("00000000000000000").Eob();
  EXPECT_FALSE(DecodeOne(w.Bytes(), true).ok);
}

// Runs of short codes, where one lookup reads two codes or a code and the
// end of block, mixed with long codes and escapes at every bit offset.
TEST(BlockDecoder, RandomBlocksOfShortAndLongCodesReadBack) {
  std::mt19937 rng(21);
  StreamWriter w(1 << 20);
  std::vector<std::vector<std::pair<int32_t, int32_t>>> blocks(3000);
  for (auto& ac : blocks) {
    int32_t position = 0;
    while (true) {
      const bool shortCode = rng() % 8 != 0;
      const int32_t run = static_cast<int32_t>(shortCode ? rng() % 3 : rng() % 20);
      int32_t level = static_cast<int32_t>(shortCode ? 1 + rng() % 3 : 1 + rng() % 300);
      if (rng() & 1) level = -level;
      if (position + run + 1 > 63 || rng() % 24 == 0) break;
      ac.emplace_back(run, level);
      position += run + 1;
    }
    w.Block(static_cast<int32_t>(rng() % 21) - 10, true, ac);
  }
  const std::vector<uint8_t> bytes = w.Bytes();
  const BlockDecodeTables& t = BlockDecodeTablesInstance();
  BitWindow win(StreamView{bytes.data(), bytes.size()}, 0);
  for (size_t n = 0; n < blocks.size(); ++n) {
    alignas(16) int16_t block[64] = {};
    ASSERT_TRUE(DecodeBlock(t, t.dcLuma, win, block)) << n;
    int16_t expected[64] = {};
    int32_t position = 0;
    for (const auto& [run, level] : blocks[n]) {
      position += run + 1;
      expected[ZigzagScan[position]] = static_cast<int16_t>(level);
    }
    if (blocks[n].empty()) expected[1] = kNoAcMark;
    for (int k = 1; k < 64; ++k) ASSERT_EQ(block[k], expected[k]) << "block " << n << " at " << k;
  }
  EXPECT_EQ(win.Position(), w.BitPos());
}

// The window against a plain bit-by-bit reading of the same stream, over
// random consumption: each refill (offset above 40, never at 40) must leave
// the next 24 bits exact, also where the stream ends and zeros stand in.
TEST(BitWindow, MatchesTheStreamBitForBit) {
  std::mt19937 rng(7);
  std::vector<uint8_t> bytes(301);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(rng());
  auto bitAt = [&](uint64_t p) -> uint32_t {
    return p / 8 < bytes.size() ? (bytes[p / 8] >> (p % 8)) & 1 : 0;
  };
  for (uint64_t start : {0u, 40u, 41u, 45u, 63u}) {
    BitWindow win(StreamView{bytes.data(), bytes.size()}, start);
    uint64_t pos = start;
    while (pos < bytes.size() * 8 + 64) {
      win.Refill();
      ASSERT_EQ(win.Position(), pos);
      uint32_t expected = 0;
      for (uint32_t i = 0; i < 24; ++i) expected |= bitAt(pos + i) << i;
      ASSERT_EQ(static_cast<uint32_t>(win.Bits()) & 0xFFFFFF, expected) << "at " << pos;
      const uint32_t n = 1 + rng() % 24;
      win.Consume(n);
      pos += n;
    }
  }
}

}  // namespace
}  // namespace vantaro::decoder
