// The block decoder's lookup tables, indexed by the next 12 stream bits
// (first transmitted bit in bit 0). Every code word's length is known from
// its first 12 bits, so one lookup gives the length of any AC code, long ones
// and the escape included, and one gives the length of any DC code.
#pragma once

#include <cstdint>

namespace vantaro::decoder {

// One DC table set: luma (also DCT alpha) or chroma, indexed by the next ten
// stream bits, which hold any size code whole. Bits 0..4: the whole code's
// length, size code and extra bits (bits 5..7 clear, so that the entry
// serves as a shift count); 8..11: the size, the number of extra bits;
// 12..15: the size code's length. The difference follows from the extra
// bits by arithmetic, so the tables stay at 2 KiB and leave the first-level
// cache to the AC table. Read once a block, a DC is too seldom to keep 2 KiB
// in that cache against the AC tables: `head` holds the entries of the size
// codes of eight bits or fewer (luma sizes 0..9, chroma 0..7) in eight lines
// that stay, and 0 where the code is longer.
struct DcDecodeTables {
  uint16_t head[256];
  uint16_t entry[1024];
};
constexpr uint32_t DcSize(uint32_t e) { return (e >> 8) & 15; }
constexpr uint32_t DcSizeCodeLength(uint32_t e) { return e >> 12; }

constexpr uint8_t kAcEndOfBlock = 0x80;  // in acLength: end of block, length in the low bits
constexpr uint8_t kAcUnfinished = 0x80;  // in acRun: a long code or the escape follows
constexpr int16_t kNoAcMark = 0x4000;    // at raster index 1: the block had no AC code

// The AC table the block decoder walks, one 32-bit entry per 12-bit index
// (16 KiB, so that it stays in the first-level cache beside the DC tables).
// When the index holds a whole short code and, after it, another whole short
// code or the end of block, the entry gives both, so common pairs cost one
// load; an end of block after such a pair comes with it. Bits 0..5: the bits
// the entry consumes (bit 5 always clear), so that the entry itself serves
// as a shift count, which the processor takes modulo 64; 6..7: flags; 8..15:
// the first code's scan step (run + 1; the escape's own run from its index),
// one byte move away; 16..21: the second code's step (0: none); 22..26 and
// 27..31: their levels, signed. Codes of twelve bits or fewer have runs up to
// 16 and levels up to 15, which these fields hold. A long code or the escape
// stands alone and takes its run or level from further bits; the flag in
// bit 16, free in such entries, says which. An index opening with the end
// of block is an entry of step kEndStep that ends the block (see
// DecodeBlock).
constexpr uint32_t kAcPairSlow = 0x40;     // a long code or the escape
constexpr uint32_t kAcPairThenEnd = 0x80;  // the block ends with this entry
constexpr uint32_t kAcPairLong = 0x10000;  // with kAcPairSlow: seven leading zeros, second-level table;
                                           // without it the escape, level + 2048 in bits 12..23
constexpr uint32_t kEndStep = 192;
constexpr uint32_t AcPairStep1(uint32_t e) { return (e >> 8) & 0xFF; }
constexpr uint32_t AcPairStep2(uint32_t e) { return (e >> 16) & 0x3F; }
constexpr int32_t AcPairLevel1(uint32_t e) { return static_cast<int32_t>(e << 5) >> 27; }
constexpr int32_t AcPairLevel2(uint32_t e) { return static_cast<int32_t>(e) >> 27; }

// Beside each entry, its bit-field-extract control: bits 0..7 the bits the
// entry consumes, 8..15 the index's twelve. One extract with it takes the
// next index from the window as it stood before the entry (see IndexStep).
constexpr uint32_t kExtractIndexBits = 12u << 8;

struct BlockDecodeTables {
  uint32_t acPair[4096];
  uint16_t acNext[4096];
  DcDecodeTables dcLuma;
  DcDecodeTables dcChroma;
  uint8_t acLength[4096];
  uint8_t acRun[4096];
  int8_t acLevel[4096];
  // Codes opening with seven zeros, by bits 7..16: such codes are 17 bits at
  // most, and small tables keep the first-level cache for the walked one.
  uint8_t acLongRun[1024];
  int8_t acLongLevel[1024];
  // Scan position to raster index: zigzag for 0..63, raster 0 past it (see
  // DecodeBlock).
  uint8_t scanOrder[256];
};

// Built by rule from the canonical code rows on first use; constant after.
const BlockDecodeTables& BlockDecodeTablesInstance();

}  // namespace vantaro::decoder
