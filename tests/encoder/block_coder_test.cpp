// The block syntax as written: DC codes, run/level codes, escapes, end of block.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "codec/bit_stream.h"
#include "codec/code_rows.h"
#include "codec/global_tables.h"
#include "encoder/block_coder.h"

namespace vantaro::encoder {
namespace {

// Codes a scanned block (position 0 the DC difference) and reads it back.
std::string Code(const int16_t (&block)[64], bool luma) {
  alignas(16) uint8_t buffer[512] = {};
  BitWriter w{buffer, 0, 0, sizeof buffer};
  CodecInstance unused{};
  if (luma) {
    EncodeLumaBlock(unused, block, w);
  } else {
    EncodeChromaBlock(unused, block, w);
  }
  std::string bits;  // in transmission order, first bit on the left
  for (uint64_t p = 0; p < w.bitPos; ++p) bits.push_back(static_cast<char>('0' + ((buffer[p >> 3] >> (p & 7)) & 1)));
  return bits;
}

std::string Field(uint32_t value, int width) {  // least significant bit first
  std::string s;
  for (int i = 0; i < width; ++i) s.push_back(static_cast<char>('0' + ((value >> i) & 1u)));
  return s;
}

TEST(BlockCoder, WritesTheCodesOfEachSyntaxElement) {
  const std::string eob = "0110", zeroDc = "100";
  const struct {
    const char* what;
    bool luma;
    std::vector<std::pair<int, int16_t>> values;  // scan position, value
    std::string bits;
  } cases[] = {
      {"empty luma", true, {}, zeroDc + eob},
      {"empty chroma", false, {}, "00" + eob},
      {"DC -5", true, {{0, -5}}, "101" "010" + eob},
      {"DC 5", true, {{0, 5}}, "101" "101" + eob},
      {"chroma DC 1", false, {{0, 1}}, "01" "1" + eob},
      {"longest luma DC", true, {{0, 2047}}, "111111111" + Field(2047, 11) + eob},
      {"longest chroma DC", false, {{0, 2047}}, "1111111111" + Field(2047, 11) + eob},
      {"DC -1024", true, {{0, -1024}}, "111111111" + Field(1023, 11) + eob},
      {"sign last", true, {{1, 1}, {2, -1}}, zeroDc + "100" "101" + eob},
      {"run 1 level -3", true, {{2, -3}}, zeroDc + "11110011" + eob},
      {"run 1 level 20, beyond the MPEG-2 rows", true, {{2, 20}}, zeroDc + "0000000010111" "0" + eob},
      {"escape run 40", true, {{41, -300}}, zeroDc + "000001" "000101" "001010110110" + eob},
      {"escape at position 63", true, {{63, 1}}, zeroDc + "000001" + Field(62, 6) + Field(2049, 12) + eob},
      {"run 31 level 2 escapes", true, {{32, 2}}, zeroDc + "000001" + Field(31, 6) + Field(2050, 12) + eob},
      {"run 31 level 1 has a row", true, {{32, 1}}, zeroDc + "0000000000011011" "0" + eob},
      {"level 41 escapes at run 0", true, {{1, 41}}, zeroDc + "000001" + Field(0, 6) + Field(2089, 12) + eob},
      {"runs across mask bytes", true, {{5, 1}, {30, 1}, {31, -1}},
       zeroDc + "000110" "0" "0000000011101" "0" "10" "1" + eob},
  };
  for (const auto& c : cases) {
    int16_t block[64] = {};
    for (const auto& [position, value] : c.values) block[position] = value;
    EXPECT_EQ(Code(block, c.luma), c.bits) << c.what;
  }
}

// Coding straight from raster order (the macroblock encoder's way) must give
// the bits of the scanned block, whatever the mask's bit 0 and raster[0] say,
// and leave what one PutCode per code leaves: the same bytes from any
// starting bit over a buffer of other bytes, up to the last bit; past it the
// coder's wider stores may leave zeros where PutCode left the bytes alone,
// and eight bytes on nothing at all.
TEST(BlockCoder, RasterOrderCodingLeavesTheBytesOfOnePutCodePerCode) {
  std::mt19937 rng(99);
  const GlobalTables& t = Tables();
  const CanonicalCode eob = ParseCode(kEndOfBlockCode);
  for (int n = 0; n < 6000; ++n) {
    alignas(16) int16_t raster[64], scanned[64];
    const int density = 1 + n % 8;  // from nearly full to nearly empty
    const int range = n % 3 == 0 ? 4095 : 81;
    for (int16_t& v : raster) {
      v = rng() % static_cast<uint32_t>(density) == 0 ? static_cast<int16_t>(static_cast<int>(rng() % range) - range / 2) : 0;
    }
    ZigzagBlock(scanned, raster);
    scanned[0] = static_cast<int16_t>(static_cast<int>(rng() % 4095) - 2047);
    const bool chroma = n % 2 == 1;
    const DcCodeTable& dc = chroma ? t.dcChroma : t.dcLuma;
    alignas(16) uint8_t a[600], b[600];
    for (size_t i = 0; i < sizeof a; ++i) a[i] = b[i] = static_cast<uint8_t>(rng());
    const uint32_t start = static_cast<uint32_t>(rng() % 64);
    const uint32_t carry = a[start >> 3] & ((1u << (start & 7)) - 1);
    BitWriter wa{a, carry, start, sizeof a}, wb{b, carry, start, sizeof b};
    raster[0] = static_cast<int16_t>(rng());
    EncodeRasterBlock(chroma, scanned[0], raster, ~ZeroMask(raster) | (rng() & 1), wa);
    PutCode(wb, dc.code[scanned[0] + 2048], dc.length[scanned[0] + 2048]);
    for (int s = 1, run = 0; s < 64; ++s, ++run) {
      if (scanned[s] == 0) continue;
      const uint32_t entry = t.acCode[scanned[s] + 2048][run];
      PutCode(wb, entry >> 8, entry & 255u);
      run = -1;
    }
    PutCode(wb, StreamOrder(eob), eob.length);
    ASSERT_EQ(wa.bitPos, wb.bitPos) << n;
    ASSERT_EQ(wa.carry, wb.carry) << n;
    const size_t end = (wb.bitPos + 7) >> 3;
    ASSERT_EQ(std::memcmp(a, b, end), 0) << n;
    for (size_t i = end; i < sizeof a; ++i) ASSERT_TRUE(a[i] == b[i] || (a[i] == 0 && i < end + 8)) << n << " at " << i;
    ASSERT_EQ(ScanOrderMask(uint64_t{1} << ZigzagScan[n % 64]), uint64_t{1} << (n % 64));
  }
}

}  // namespace
}  // namespace vantaro::encoder
