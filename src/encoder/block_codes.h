// The block codes' writer, inline so that a macroblock's blocks run through
// it with the writer's state in registers from the first DC to the last end
// of block.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "codec/bit_stream.h"
#include "codec/code_rows.h"
#include "codec/global_tables.h"

namespace vantaro::encoder {

// The writer's state in locals: every store goes through a byte pointer,
// which may alias anything the compiler keeps in memory. Codes gather in a
// 64-bit accumulator above the unfinished byte's bits; at most 7 + 56 bits
// are added before it is stored whole and `out` moves past the finished
// bytes, with no branch on how full it is. The stores reach at most eight
// bytes past the last bit, the bytes past it zero, well inside the room a
// macroblock is given; up to the last bit the bytes are those of a PutCode
// per code.
struct CodeWriter {
  uint8_t* out;   // the unfinished byte
  uint64_t bits;  // bits not yet stored, from `out` on
  uint32_t fill;  // how many; at most 7 between blocks

  static CodeWriter From(const BitWriter& w) { return {w.buffer + (w.bitPos >> 3), w.carry, w.bitPos & 7}; }
  void To(BitWriter& w) const {
    w.bitPos = static_cast<uint32_t>(out - w.buffer) * 8 + fill;
    w.carry = static_cast<uint32_t>(bits);
  }
  VANTARO_FORCE_INLINE void Add(uint32_t code, uint32_t length) {
    bits |= static_cast<uint64_t>(code) << fill;
    fill += length;
  }
  VANTARO_FORCE_INLINE void Flush() {
    std::memcpy(out, &bits, 8);
    out += fill >> 3;
    bits >>= fill & ~7u;
    fill &= 7;
  }
};

// The scan-order form of a raster-order mask: bit s of the result is bit
// ZigzagScan[s] of `rasterMask`.
inline uint64_t ScanOrderMask(const GlobalTables& t, uint64_t rasterMask) {
  uint64_t m = 0;
  for (int k = 0; k < 8; ++k) m |= t.scanMask[k][(rasterMask >> (8 * k)) & 255u];
  return m;
}

inline constexpr CanonicalCode kEndOfBlock = ParseCode(kEndOfBlockCode);

// One block: the DC difference, a run/level code per bit of `ac` (scan
// positions 1..63; coefficient s is values[order[s]]), end of block. Codes
// are at most 24 bits, so two fit between flushes.
VANTARO_FORCE_INLINE void CodeBlock(const GlobalTables& tables, const DcCodeTable& dc, int32_t dcDifference,
                                    const int16_t* values, const uint8_t* order, uint64_t ac, CodeWriter& w) {
  const uint32_t* const acRows = tables.acCode[2048];  // [level << 6 | run], level signed
  uint32_t runStart = 1;  // the scan position the next run counts from
  const auto next = [&] {
    const uint32_t position = static_cast<uint32_t>(std::countr_zero(ac));
    ac &= ac - 1;
    const uint32_t entry = acRows[values[order[position]] * 64 + static_cast<int32_t>(position - runStart)];
    runStart = position + 1;
    w.Add(entry >> 8, entry & 255u);  // entry: code << 8 | length
  };
  const uint32_t dcIndex = static_cast<uint32_t>(dcDifference + 2048);
  w.Add(dc.code[dcIndex], dc.length[dcIndex]);
  while (ac != 0) {
    next();
    w.Flush();
    if (ac == 0) break;
    next();
  }
  w.Add(StreamOrder(kEndOfBlock), kEndOfBlock.length);
  w.Flush();
}

}  // namespace vantaro::encoder
