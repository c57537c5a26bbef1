// The block syntax as written: DC codes, run/level codes, escapes, end of block.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "codec/bit_stream.h"
#include "codec/code_rows.h"
#include "codec/global_tables.h"
#include "encoder/block_coder.h"
#include "support/pictures.h"

namespace vantaro::encoder {
namespace {

struct Coded {
  std::string bits;
  uint32_t length;
};

// Codes a scanned block (position 0 the DC difference) and reads it back.
Coded Code(const int16_t (&block)[64], bool luma) {
  alignas(16) uint8_t buffer[512] = {};
  BitWriter w{buffer, 0, 0, sizeof buffer};
  CodecInstance unused{};
  if (luma) {
    EncodeLumaBlock(unused, block, w);
  } else {
    EncodeChromaBlock(unused, block, w);
  }
  test::BitPeek peek(buffer, 0);
  return {peek.Bits(static_cast<int>(w.bitPos)), w.bitPos};
}

std::string Field(uint32_t value, int width) {  // least significant bit first
  std::string s;
  for (int i = 0; i < width; ++i) s.push_back(static_cast<char>('0' + ((value >> i) & 1u)));
  return s;
}

TEST(BlockCoder, AllZeroBlocksCostSevenBitsLumaAndSixChroma) {
  const int16_t zero[64] = {};
  EXPECT_EQ(Code(zero, true).bits, "100" "0110");
  EXPECT_EQ(Code(zero, false).bits, "00" "0110");
}

TEST(BlockCoder, DcDifferencesCarrySizeCodeThenExtraBitsLeastSignificantFirst) {
  int16_t block[64] = {};
  block[0] = -5;
  EXPECT_EQ(Code(block, true).bits, "101" "010" "0110");
  block[0] = 5;
  EXPECT_EQ(Code(block, true).bits, "101" "101" "0110");
  block[0] = 1;
  EXPECT_EQ(Code(block, false).bits, "01" "1" "0110");
  block[0] = -1;
  EXPECT_EQ(Code(block, false).bits, "01" "0" "0110");
  block[0] = 2047;  // size 11: the longest codes, 20 bits luma and 21 chroma
  EXPECT_EQ(Code(block, true).bits, "111111111" + Field(2047, 11) + "0110");
  EXPECT_EQ(Code(block, false).bits, "1111111111" + Field(2047, 11) + "0110");
  block[0] = -1024;
  EXPECT_EQ(Code(block, true).bits, "111111111" + Field(1023, 11) + "0110");
}

TEST(BlockCoder, RunLevelCodesHaveTheSignLast) {
  int16_t block[64] = {};
  block[1] = 1;
  EXPECT_EQ(Code(block, true).bits, "100" "100" "0110");
  block[1] = -1;
  EXPECT_EQ(Code(block, true).bits, "100" "101" "0110");
  block[1] = 0;
  block[2] = -3;  // run 1, level -3
  EXPECT_EQ(Code(block, true).bits, "100" "11110011" "0110");
  block[2] = 20;  // one of the rows the MPEG-2 intra table lacks: run 1 level 20
  EXPECT_EQ(Code(block, true).bits, "100" "0000000010111" "0" "0110");
}

TEST(BlockCoder, EscapesCarryRunAndBiasedLevelLeastSignificantFirst) {
  int16_t block[64] = {};
  block[41] = -300;  // run 40
  EXPECT_EQ(Code(block, true).bits, "100" "000001" "000101" "001010110110" "0110");
  std::memset(block, 0, sizeof block);
  block[63] = 1;  // only scan position 63: run 62, escape form, then end of block
  EXPECT_EQ(Code(block, true).bits, "100" "000001" + Field(62, 6) + Field(2049, 12) + "0110");
  std::memset(block, 0, sizeof block);
  block[32] = 2;  // run 31 level 2 has no row, run 31 level 1 has one
  EXPECT_EQ(Code(block, true).bits, "100" "000001" + Field(31, 6) + Field(2050, 12) + "0110");
  block[32] = 1;
  EXPECT_EQ(Code(block, true).bits, "100" "0000000000011011" "0" "0110");
  std::memset(block, 0, sizeof block);
  block[1] = 41;  // above 40: escape even at run 0
  EXPECT_EQ(Code(block, true).bits, "100" "000001" + Field(0, 6) + Field(2089, 12) + "0110");
}

TEST(BlockCoder, RunsAreCountedAcrossMaskBytesAndAFullBlockEndsWithEndOfBlock) {
  int16_t block[64] = {};
  block[5] = 1;   // run 4
  block[30] = 1;  // run 24, across three mask bytes
  block[31] = -1;
  EXPECT_EQ(Code(block, true).bits,
            "100" "000110" "0" "0000000011101" "0" "10" "1" "0110");
  for (int s = 0; s < 64; ++s) block[s] = 1;
  const Coded full = Code(block, false);
  EXPECT_EQ(full.length, 3u + 63u * 3u + 4u);
  EXPECT_EQ(full.bits.substr(full.bits.size() - 4), "0110");
}

// Coding straight from raster order (the macroblock encoder's way) must give
// the bits of the scanned block, whatever the mask's bit 0 and raster[0] say.
TEST(BlockCoder, RasterOrderCodingMatchesTheScannedBlock) {
  std::mt19937 rng(99);
  for (int n = 0; n < 4000; ++n) {
    alignas(16) int16_t raster[64], scanned[64];
    const int density = 1 + n % 8;  // from nearly full to nearly empty
    for (int16_t& v : raster) {
      v = rng() % static_cast<uint32_t>(density) == 0 ? static_cast<int16_t>(static_cast<int>(rng() % 4095) - 2047) : 0;
    }
    ZigzagBlock(scanned, raster);
    scanned[0] = static_cast<int16_t>(static_cast<int>(rng() % 4095) - 2047);
    for (bool chroma : {false, true}) {
      alignas(16) uint8_t a[512] = {}, b[512] = {};
      BitWriter wa{a, 0, 0, sizeof a}, wb{b, 0, 0, sizeof b};
      CodecInstance unused{};
      if (chroma) {
        EncodeChromaBlock(unused, scanned, wa);
      } else {
        EncodeLumaBlock(unused, scanned, wa);
      }
      raster[0] = static_cast<int16_t>(rng());
      EncodeRasterBlock(chroma, scanned[0], raster, ~ZeroMask(raster) | (rng() & 1), wb);
      ASSERT_EQ(wa.bitPos, wb.bitPos) << n;
      ASSERT_EQ(std::memcmp(a, b, sizeof a), 0) << n;
      ASSERT_EQ(ScanOrderMask(uint64_t{1} << ZigzagScan[n % 64]), uint64_t{1} << (n % 64));
    }
  }
}

// The coder gathers bits before storing them; what it leaves in memory, the
// bytes past the last bit included, must be what one PutCode per code leaves,
// from any starting bit and over a buffer full of other bytes.
TEST(BlockCoder, LeavesTheBytesOfOnePutCodePerCode) {
  std::mt19937 rng(5);
  const GlobalTables& t = Tables();
  const CanonicalCode eob = ParseCode(kEndOfBlockCode);
  for (int n = 0; n < 3000; ++n) {
    int16_t block[64] = {};
    const uint32_t density = 1 + static_cast<uint32_t>(n) % 6;
    for (int16_t& v : block) v = rng() % density == 0 ? static_cast<int16_t>(static_cast<int>(rng() % 81) - 40) : 0;
    block[0] = static_cast<int16_t>(static_cast<int>(rng() % 4095) - 2047);
    alignas(16) uint8_t a[600], b[600];
    for (size_t i = 0; i < sizeof a; ++i) a[i] = b[i] = static_cast<uint8_t>(rng());
    const uint32_t start = static_cast<uint32_t>(rng() % 64);
    const uint32_t carry = (a[start >> 3] & ((1u << (start & 7)) - 1));
    BitWriter wa{a, carry, start, sizeof a}, wb{b, carry, start, sizeof b};
    CodecInstance unused{};
    EncodeLumaBlock(unused, block, wa);
    PutCode(wb, t.dcLuma.code[block[0] + 2048], t.dcLuma.length[block[0] + 2048]);
    for (int s = 1, run = 0; s < 64; ++s) {
      if (block[s] == 0) {
        ++run;
        continue;
      }
      const uint32_t entry = t.acCode[run][block[s] + 2048];
      PutCode(wb, entry >> 8, entry & 255u);
      run = 0;
    }
    PutCode(wb, StreamOrder(eob), eob.length);
    ASSERT_EQ(wa.bitPos, wb.bitPos) << n;
    ASSERT_EQ(wa.carry, wb.carry) << n;
    ASSERT_EQ(std::memcmp(a, b, sizeof a), 0) << n;
  }
}

}  // namespace
}  // namespace vantaro::encoder
