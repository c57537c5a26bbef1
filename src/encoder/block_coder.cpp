#include "encoder/block_coder.h"

#include <bit>

#include "codec/code_rows.h"
#include "codec/global_tables.h"

namespace vantaro::encoder {
namespace {

constexpr uint32_t kEndOfBlock = StreamOrder(ParseCode(kEndOfBlockCode));
constexpr uint32_t kEndOfBlockLength = ParseCode(kEndOfBlockCode).length;

constexpr uint8_t kIdentityOrder[64] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                                        13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,
                                        26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38,
                                        39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51,
                                        52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

// The writer's state lives in locals for the block: every store goes through
// a byte pointer, which may alias anything the compiler keeps in memory.
// Each code is the PutCode store, so the bytes match PutCode's exactly.
// `ac` has a bit per non-zero scan position 1..63; coefficient s is
// values[order[s]].
VANTARO_FORCE_INLINE void EncodeCodes(const DcCodeTable& dc, int32_t dcDifference, const int16_t* values,
                                      const uint8_t* order, uint64_t ac, BitWriter& writer) {
  const GlobalTables& tables = Tables();
  uint8_t* const buffer = writer.buffer;
  uint32_t carry = writer.carry;
  uint32_t bitPos = writer.bitPos;
  const auto put = [&](uint32_t code, uint32_t length) {
    const uint32_t offset = bitPos & 7;
    const uint32_t word = carry | (code << offset);
    StoreLe32(buffer + (bitPos >> 3), word);
    carry = word >> ((offset + length) & ~7u);
    bitPos += length;
  };
  const uint32_t dcIndex = static_cast<uint32_t>(dcDifference + 2048);
  put(dc.code[dcIndex], dc.length[dcIndex]);
  uint32_t runStart = 1;  // the scan position the next run counts from
  while (ac != 0) {
    const uint32_t position = static_cast<uint32_t>(std::countr_zero(ac));
    ac &= ac - 1;
    const uint32_t entry = tables.acCode[position - runStart][values[order[position]] + 2048];
    put(entry >> 8, entry & 255u);
    runStart = position + 1;
  }
  put(kEndOfBlock, kEndOfBlockLength);
  writer.carry = carry;
  writer.bitPos = bitPos;
}

void EncodeScannedBlock(const DcCodeTable& dc, const int16_t* block, BitWriter& writer) {
  EncodeCodes(dc, block[0], block, kIdentityOrder, ~ZeroMask(block) & ~uint64_t{1}, writer);
}

}  // namespace

void ZigzagBlock(int16_t* destination, const int16_t* source) {
  for (int s = 0; s < 64; ++s) destination[s] = source[ZigzagScan[s]];
}

uint64_t ZeroMask(const int16_t* block) {
  uint64_t mask = 0;
  for (int s = 0; s < 64; ++s) mask |= static_cast<uint64_t>(block[s] == 0) << s;
  return mask;
}

uint64_t ScanOrderMask(uint64_t rasterMask) {
  const GlobalTables& t = Tables();
  uint64_t m = 0;
  for (int k = 0; k < 8; ++k) m |= t.scanMask[k][(rasterMask >> (8 * k)) & 255u];
  return m;
}

void EncodeLumaBlock(const CodecInstance&, const int16_t* block, BitWriter& writer) {
  EncodeScannedBlock(Tables().dcLuma, block, writer);
}

void EncodeChromaBlock(const CodecInstance&, const int16_t* block, BitWriter& writer) {
  EncodeScannedBlock(Tables().dcChroma, block, writer);
}

void EncodeRasterBlock(bool chroma, int16_t dcDifference, const int16_t* raster, uint64_t rasterNonZero,
                       BitWriter& writer) {
  const GlobalTables& t = Tables();
  EncodeCodes(chroma ? t.dcChroma : t.dcLuma, dcDifference, raster, ZigzagScan,
              ScanOrderMask(rasterNonZero) & ~uint64_t{1}, writer);
}

}  // namespace vantaro::encoder
