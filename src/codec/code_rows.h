// The variable-length codes of the block syntax in their canonical form:
// each code as its bits in transmission order, first bit on the left. Every
// encoder and decoder table is derived from these rows, nowhere else.
#pragma once

#include <cstdint>

namespace vantaro {

struct CanonicalCode {
  uint32_t bits;    // first transmitted bit on the highest of `length` bits
  uint8_t length;
};

constexpr CanonicalCode ParseCode(const char* text) {
  CanonicalCode c{0, 0};
  for (; *text != '\0'; ++text) {
    c.bits = (c.bits << 1) | static_cast<uint32_t>(*text == '1');
    ++c.length;
  }
  return c;
}

// Bit-reverses the low `length` bits: a canonical code into stream order
// (first transmitted bit lowest), and back.
constexpr uint32_t ReverseBits(uint32_t value, uint32_t length) {
  uint32_t r = 0;
  for (uint32_t i = 0; i < length; ++i) r |= ((value >> i) & 1u) << (length - 1 - i);
  return r;
}

// A canonical code as it lies in the stream: first transmitted bit lowest.
constexpr uint32_t StreamOrder(CanonicalCode c) { return ReverseBits(c.bits, c.length); }

// DC size codes by size 0..11: luma (also DCT alpha) and chroma.
struct DcSizeRow {
  const char* luma;
  const char* chroma;
};
extern const DcSizeRow DcSizeCode[12];

// Run/level rows without the sign bit, which follows each code.
struct AcRow {
  uint8_t run;
  uint8_t level;
  const char* code;
};
constexpr int kAcRowCount = 121;
extern const AcRow AcBaseTable[kAcRowCount];

// The block syntax's fixed codes, and the end marker of a run/value alpha half.
constexpr const char* kEndOfBlockCode = "0110";
constexpr const char* kEscapePrefix = "000001";
constexpr const char* kAlphaEndMarker = "110";

// Zigzag scan: raster index (row * 8 + column) of scan position s.
extern const uint8_t ZigzagScan[64];

}  // namespace vantaro
