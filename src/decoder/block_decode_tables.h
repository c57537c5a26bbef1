// The block decoder's lookup tables, indexed by the next 12 stream bits
// (first transmitted bit in bit 0). Every code word's length is known from
// its first 12 bits, so one lookup gives the length of any AC code, long ones
// and the escape included, and one gives the length of any DC code.
#pragma once

#include <cstdint>

namespace vantaro::decoder {

// One DC table set: luma (also DCT alpha) or chroma.
struct DcDecodeTables {
  uint8_t length[4096];  // size code plus extra bits, 2 to 21; bits 0..11
  int8_t shortDiff[4096];  // difference for lengths below 12; bits 0..11
  int16_t midDiff[4096];   // lengths 12 to 17; bits 5..16 (such codes open with five ones)
  int16_t longDiff[8192];  // lengths 18 and above; bits 8..20 (eight ones first)
};

constexpr uint8_t kAcEndOfBlock = 0x80;  // in acLength: end of block, length in the low bits
constexpr uint8_t kAcUnfinished = 0x80;  // in acRun: a long code or the escape follows
constexpr int16_t kNoAcMark = 0x4000;    // at raster index 1: the block had no AC code

// The AC table the block decoder walks, one 64-bit entry per 12-bit index.
// When the index holds a whole short code and, after it, another whole short
// code or the end of block, the entry gives both, so common pairs cost one
// load. Bits 0..7: the bits the entry consumes; 8..15: the first code's scan
// step (run + 1; the escape's own run from its index), one byte move away;
// 16..23: flags; 24..31: the second code's step (0: none); 32..47 and
// 48..63: their levels. A long code or the escape stands alone and takes its
// run or level from further bits, the flags say which. An index opening with
// the end of block is an entry of step kEndStep and level kNoAcMark that
// ends the block (see DecodeBlock).
constexpr uint64_t kAcPairLength = 0xFF;
constexpr uint64_t kAcPairLong = 0x20000;     // seven leading zeros: second-level table
constexpr uint64_t kAcPairEscape = 0x40000;   // the escape: level in bits 12..23
constexpr uint64_t kAcPairThenEnd = 0x80000;  // the block ends with this entry
constexpr uint64_t kAcPairSlow = kAcPairLong | kAcPairEscape;
constexpr uint32_t kEndStep = 192;

struct BlockDecodeTables {
  uint64_t acPair[4096];
  DcDecodeTables dcLuma;
  DcDecodeTables dcChroma;
  uint8_t acLength[4096];
  uint8_t acRun[4096];
  int8_t acLevel[4096];
  uint8_t acLongRun[4096];    // bits 7..18, for codes opening with seven zeros
  int8_t acLongLevel[4096];
  int16_t escapeLevel[4096];  // bits 12..23: the biased level field
  // Scan position to raster index: zigzag for 0..63; past it (see
  // DecodeBlock) raster 0, except 192, raster 1.
  uint8_t scanOrder[256];
};

// Built by rule from the canonical code rows on first use; constant after.
const BlockDecodeTables& BlockDecodeTablesInstance();

}  // namespace vantaro::decoder
