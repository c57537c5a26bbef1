#include "encoder/block_coder.h"

#include <bit>
#include <cstring>

#include "codec/code_rows.h"
#include "codec/global_tables.h"

namespace vantaro::encoder {
namespace {

inline void StoreLe64(uint8_t* p, uint64_t v) { std::memcpy(p, &v, 8); }

constexpr uint32_t kEndOfBlock = StreamOrder(ParseCode(kEndOfBlockCode));
constexpr uint32_t kEndOfBlockLength = ParseCode(kEndOfBlockCode).length;

constexpr uint8_t kIdentityOrder[64] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                                        13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25,
                                        26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38,
                                        39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51,
                                        52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

// The writer's state lives in locals for the block: every store goes through
// a byte pointer, which may alias anything the compiler keeps in memory.
// Codes gather in a 64-bit accumulator above the unfinished byte's bits; at
// most two codes (7 + 2 * 24 bits) are added before it is stored whole and
// `out` moves past the finished bytes, with no branch on how full it is.
// The stores reach at most eight bytes past the last bit, the bytes past it
// zero, well inside the room a macroblock is given; the end of block goes
// through PutCode, so every byte up to its reach is that of a PutCode per code.
// `ac` has a bit per non-zero scan position 1..63; coefficient s is
// values[order[s]].
VANTARO_FORCE_INLINE void EncodeCodes(const DcCodeTable& dc, int32_t dcDifference, const int16_t* values,
                                      const uint8_t* order, uint64_t ac, BitWriter& writer) {
  const GlobalTables& tables = Tables();
  uint8_t* out = writer.buffer + (writer.bitPos >> 3);
  uint64_t bits = writer.carry;       // bits not yet stored, from `out` on
  uint32_t fill = writer.bitPos & 7;  // how many
  const auto add = [&](uint32_t code, uint32_t length) {
    bits |= static_cast<uint64_t>(code) << fill;
    fill += length;
  };
  const auto addEntry = [&](uint32_t entry) { add(entry >> 8, entry & 255u); };  // code << 8 | length
  const auto flush = [&] {
    StoreLe64(out, bits);
    out += fill >> 3;
    bits >>= fill & ~7u;
    fill &= 7;
  };
  const uint32_t* const acRows = &tables.acCode[0][2048];  // [run << 12 | level], level signed
  uint32_t runStart = 1;  // the scan position the next run counts from
  const auto next = [&] {
    const uint32_t position = static_cast<uint32_t>(std::countr_zero(ac));
    ac &= ac - 1;
    const uint32_t entry = acRows[static_cast<int32_t>((position - runStart) << 12) + values[order[position]]];
    runStart = position + 1;
    return entry;
  };
  const uint32_t dcIndex = static_cast<uint32_t>(dcDifference + 2048);
  add(dc.code[dcIndex], dc.length[dcIndex]);
  while (ac != 0) {
    addEntry(next());
    flush();
    if (ac == 0) break;
    addEntry(next());
  }
  flush();
  writer.bitPos = static_cast<uint32_t>(out - writer.buffer) * 8 + fill;
  writer.carry = static_cast<uint32_t>(bits);
  PutCode(writer, kEndOfBlock, kEndOfBlockLength);
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
