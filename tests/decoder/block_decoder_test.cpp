#include "decoder/block_decoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "codec/code_rows.h"
#include "stream_writer.h"

namespace vantaro {
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
  // back every code of the writer's table, escapes included, with its length.
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
    }
    EXPECT_EQ(win.Position(), w.BitPos());
  }
}

TEST(BlockDecoder, ShortBlocksAndTheNoAcMark) {
  Decoded d = DecodeOne(StreamWriter().Bits("100 0110").Bytes(), true);
  EXPECT_EQ(d.bits, 7u);
  EXPECT_EQ(d.block[0], 0);
  EXPECT_EQ(d.block[1], kNoAcMark);
  for (int k = 2; k < 64; ++k) EXPECT_EQ(d.block[k], 0);

  d = DecodeOne(StreamWriter().Bits("00 0110").Bytes(), false);
  EXPECT_EQ(d.bits, 6u);
  EXPECT_EQ(d.block[1], kNoAcMark);

  // A level-0 coefficient written by a code leaves the block unmarked.
  d = DecodeOne(StreamWriter().Dc(0, true).Ac(0, 0).Eob().Bytes(), true);
  EXPECT_EQ(d.block[1], 0);
}

TEST(BlockDecoder, DcLengthsAcrossTheThreeTables) {
  struct Case {
    int32_t diff;
    bool luma;
    uint64_t bits;  // DC code plus end of block
  };
  // Luma size 6 (11 bits, short table), chroma size 6 (12 bits, mid table),
  // chroma size 9 (18 bits, long table), chroma size 11 (21 bits).
  for (const Case c : {Case{-40, true, 15}, Case{33, false, 16}, Case{-300, false, 22},
                       Case{2047, false, 25}, Case{-2047, true, 24}}) {
    const Decoded d = DecodeOne(StreamWriter().Block(c.diff, c.luma).Bytes(), c.luma);
    EXPECT_EQ(d.block[0], c.diff);
    EXPECT_EQ(d.bits, c.bits) << c.diff;
  }
}

TEST(BlockDecoder, EscapeAtRun62AndLongCodes) {
  Decoded d = DecodeOne(StreamWriter().Block(0, true, {{62, -300}}).Bytes(), true);
  EXPECT_EQ(d.block[63], -300);
  EXPECT_EQ(d.bits, 3u + 24 + 4);

  // Run 16 level 1: the longest code the first level finishes; run 1 level 18
  // needs the second level (17 bits with its sign).
  d = DecodeOne(StreamWriter().Block(0, true, {{16, 1}, {1, -18}}).Bytes(), true);
  EXPECT_EQ(d.block[ZigzagScan[17]], 1);
  EXPECT_EQ(d.block[ZigzagScan[19]], -18);
  EXPECT_EQ(d.bits, 3u + 11 + 17 + 4);
}

TEST(BlockDecoder, TwelveZeroBitsCostSeventeenAndAdvanceOne) {
  const Decoded d =
      DecodeOne(StreamWriter().Bits("100").Bits("00000000000000000").Ac(0, 5).Eob().Bytes(), true);
  ASSERT_TRUE(d.ok);
  EXPECT_EQ(d.block[ZigzagScan[1]], 0);
  EXPECT_EQ(d.block[ZigzagScan[2]], 5);
  EXPECT_EQ(d.bits, 3u + 17 + 6 + 4);
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
}  // namespace vantaro
