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

// The AC table the block decoder walks: one 32-bit entry per 12-bit index,
// so a short code costs one load. Bits 0..4 the code's length (0..24), then
// three flags; bits 8..15 the scan step (run + 1; the escape's own run from
// its index); bits 16..31 the level. A long code or the escape takes its run
// or level from further bits, the flags say which.
constexpr uint32_t kAcEntryLength = 0x1F;
constexpr uint32_t kAcEntryEnd = 0x20;     // end of block
constexpr uint32_t kAcEntryLong = 0x40;    // seven leading zeros: second-level table
constexpr uint32_t kAcEntryEscape = 0x80;  // the escape: level in bits 12..23
constexpr uint32_t kAcEntrySlow = kAcEntryEnd | kAcEntryLong | kAcEntryEscape;

struct BlockDecodeTables {
  uint32_t acEntry[4096];
  DcDecodeTables dcLuma;
  DcDecodeTables dcChroma;
  uint8_t acLength[4096];
  uint8_t acRun[4096];
  int8_t acLevel[4096];
  uint8_t acLongRun[4096];    // bits 7..18, for codes opening with seven zeros
  int8_t acLongLevel[4096];
  int16_t escapeLevel[4096];  // bits 12..23: the biased level field
  uint8_t scanOrder[64];
};

// Built by rule from the canonical code rows on first use; constant after.
const BlockDecodeTables& BlockDecodeTablesInstance();

}  // namespace vantaro::decoder
