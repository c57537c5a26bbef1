#include "decoder/block_decoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "codec/code_rows.h"
#include "platform/processor.h"
#include "stream_writer.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;

// Runs `check` with each way of finding the next index this processor has;
// both must read every stream alike.
template <class Check>
void ForEachIndexStep(Check check) {
  check(std::integral_constant<IndexStep, IndexStep::kShiftMask>{});
  if (ProcessorHasBmi1()) check(std::integral_constant<IndexStep, IndexStep::kExtract>{});
}

using AcCodes = std::vector<std::pair<int32_t, int32_t>>;  // (run, level)
struct Coded {
  bool luma;
  int32_t dc;
  AcCodes ac;
};

// Writes `blocks` into one stream and reads them back: every coefficient in
// place, the mark where a block has no AC code, and every bit consumed.
template <IndexStep S>
void ExpectReadsBack(const std::vector<Coded>& blocks) {
  StreamWriter w(1 << 22);
  for (const Coded& b : blocks) w.Block(b.dc, b.luma, b.ac);
  const std::vector<uint8_t> bytes = w.Bytes();
  const BlockDecodeTables& t = BlockDecodeTablesInstance();
  BitWindow win(StreamView{bytes.data(), bytes.size()}, 0);
  uint32_t index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
  for (size_t n = 0; n < blocks.size(); ++n) {
    alignas(16) int16_t block[64] = {};
    ASSERT_TRUE(DecodeBlock<S>(t, blocks[n].luma ? t.dcLuma : t.dcChroma, win, index, block)) << n;
    int16_t expected[64] = {static_cast<int16_t>(blocks[n].dc)};
    int32_t position = 0;
    for (const auto& [run, level] : blocks[n].ac) expected[ZigzagScan[position += run + 1]] = static_cast<int16_t>(level);
    if (blocks[n].ac.empty()) expected[1] = kNoAcMark;
    ASSERT_EQ(0, std::memcmp(block, expected, sizeof block)) << "block " << n;
  }
  EXPECT_EQ(win.Position(), w.BitPos());
}

// Every DC difference of both tables, and every (run, level): the longest
// code the first level finishes (run 16 level 1), the 17-bit ones the second
// level does (run 1 level 18) and escapes up to run 62, landing on 63.
TEST(BlockDecoder, EveryCodeReadsBack) {
  std::vector<Coded> blocks;
  for (bool luma : {true, false}) {
    for (int32_t diff = -2047; diff <= 2047; ++diff) blocks.push_back({luma, diff, {}});
  }
  for (int32_t run = 0; run < 63; ++run) {
    for (int32_t level = -2048; level < 2048; level += (run < 32 ? 1 : 97)) {
      if (level != 0) blocks.push_back({true, 0, {{run, level}}});
    }
  }
  ForEachIndexStep([&](auto s) { ExpectReadsBack<s()>(blocks); });
}

// Runs of short codes, where one lookup reads two codes or a code and the
// end of block, mixed with long codes and escapes at every bit offset.
TEST(BlockDecoder, RandomBlocksOfShortAndLongCodesReadBack) {
  std::mt19937 rng(21);
  std::vector<Coded> blocks(3000);
  for (Coded& b : blocks) {
    b = {rng() % 2 == 0, static_cast<int32_t>(rng() % 21) - 10, {}};
    for (int32_t position = 0;;) {
      const bool shortCode = rng() % 8 != 0;
      const int32_t run = static_cast<int32_t>(shortCode ? rng() % 3 : rng() % 20);
      const int32_t level = static_cast<int32_t>(shortCode ? 1 + rng() % 3 : 1 + rng() % 300) * (rng() & 1 ? -1 : 1);
      if (position + run + 1 > 63 || rng() % 24 == 0) break;
      b.ac.emplace_back(run, level);
      position += run + 1;
    }
  }
  ForEachIndexStep([&](auto s) { ExpectReadsBack<s()>(blocks); });
}

// Streams that read unusually. Twelve zero bits (no code of the format) cost
// 17 bits and advance the scan by one; an escape of level 0 leaves the block
// unmarked, so the transform takes the full path; position 63 is the last a
// run may reach, and neither a run nor twelve zeros may pass it.
TEST(BlockDecoder, OddStreams) {
  const struct {
    std::vector<uint8_t> bytes;
    bool ok;
    uint64_t bits;
    int32_t position, level;  // a scan position and the level it must hold
  } cases[] = {
      {StreamWriter().Bits("100").Bits("00000000000000000").Ac(0, 5).Eob().Bytes(), true, 3 + 17 + 6 + 4, 2, 5},
      {StreamWriter().Bits("100").Bits("00000000000000000").Ac(0, 5).Eob().Bytes(), true, 3 + 17 + 6 + 4, 1, 0},
      {StreamWriter().Dc(0, true).Ac(0, 0).Eob().Bytes(), true, 3 + 24 + 4, 1, 0},
      {StreamWriter().Block(0, true, {{31, 1}, {30, 1}}).Bytes(), true, 0, 63, 1},
      {StreamWriter().Block(0, true, {{40, 1}, {40, 1}}).Bytes(), false, 0, 0, 0},
      {StreamWriter().Dc(0, true).Ac(62, 1).Bits("00000000000000000").Eob().Bytes(), false, 0, 0, 0},
  };
  const BlockDecodeTables& t = BlockDecodeTablesInstance();
  ForEachIndexStep([&](auto s) {
    for (const auto& c : cases) {
      alignas(16) int16_t block[64] = {};
      BitWindow win(StreamView{c.bytes.data(), c.bytes.size()}, 0);
      uint32_t index = static_cast<uint32_t>(win.Bits()) & 0xFFF;
      ASSERT_EQ(DecodeBlock<s()>(t, t.dcLuma, win, index, block), c.ok);
      if (!c.ok) continue;
      EXPECT_EQ(block[ZigzagScan[c.position]], c.level);
      EXPECT_TRUE(c.bits == 0 || win.Position() == c.bits);
    }
  });
}

// The window against a plain bit-by-bit reading of the same stream, over
// random consumption: each refill must leave the next 56 bits exact, also
// where the stream ends and zeros stand in.
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
      uint64_t expected = 0;
      for (uint32_t i = 0; i < 56; ++i) expected |= uint64_t{bitAt(pos + i)} << i;
      ASSERT_EQ(win.Bits() & ((uint64_t{1} << 56) - 1), expected) << "at " << pos;
      const uint32_t n = 1 + rng() % 24;
      win.Consume(n);
      pos += n;
    }
  }
}

// The most bits a macroblock can take: every DC of the longest code, then 63
// escapes a block, the last block faulting on a 64th. Stored in a buffer of
// just the size the walk's end-free loads are allowed from, so that under
// AddressSanitizer a load past that reach fails.
TEST(BlockDecoder, LongestMacroblockStaysInsideItsReach) {
  for (const bool fault : {false, true}) {
    StreamWriter w;
    for (size_t i = 0; i < std::size(kOrder422); ++i) {
      w.Dc(-2047, !IsChromaPlane(kOrder422[i].plane));
      for (int32_t k = 0; k < 63; ++k) w.Ac(0, 1000);
      fault && i + 1 == std::size(kOrder422) ? w.Ac(0, 1000) : w.Eob();
    }
    std::vector<uint8_t> bytes = w.Bytes();
    bytes.resize((std::size(kOrder422) * kMostBlockBits + 7) / 8 + 16);
    ForEachIndexStep([&](auto s) {
      alignas(16) int16_t blocks[8][64] = {};
      uint64_t pos = 0;
      constexpr size_t kCount = std::size(kOrder422);
      const StreamView view{bytes.data(), bytes.size()};
      ASSERT_EQ((DecodeBlocks<kOrder422, kCount, s()>(BlockDecodeTablesInstance(), view, pos, blocks)), !fault);
      EXPECT_EQ(pos, fault ? 0 : w.BitPos());
    });
  }
}

}  // namespace
}  // namespace vantaro::decoder
