// Tables built once at library load, before any entry point can run, and
// read-only afterwards: colour conversion, the encoder's code tables, the
// alpha run/value codes and two byte tables for the coefficient mask.
#pragma once

#include <cstdint>

namespace vantaro {

// Four signed 16-bit lanes, fetched by one 8-byte load and added lane-wise.
struct alignas(8) ColorLanes {
  int16_t lane[4];
};

// RGB to YUV, indexed by the pixel's own bytes; lanes U, V, Y, 0 with five
// fractional bits. The sum of the three entries >> 5 gives the sample.
extern ColorLanes LutBlue[256];
extern ColorLanes LutGreen[256];
extern ColorLanes LutRed[256];  // holds the offsets 128.5 and 16.5

// YUV to RGB; lanes blue, green, red, 0 (the output's byte order).
extern ColorLanes LutLuma[256];  // holds the rounding half
extern ColorLanes LutCb[256];
extern ColorLanes LutCr[256];

// DC difference codes indexed by difference + 2048: code ready for PutCode
// (size code first, then the extra bits least significant first) and length.
// Entry 0 (difference -2048) is empty.
struct DcCodeTable {
  uint32_t code[4096];
  uint8_t length[4096];
};
extern DcCodeTable DcCodeLuma;    // luma and DCT-alpha blocks
extern DcCodeTable DcCodeChroma;

// [run][level + 2048]: length in the low 8 bits, stream-order code above.
// Sign included; combinations without a row hold the 24-bit escape.
extern uint32_t AcCodeTable[64][4096];

// Alpha pairs [value][run]: the run's code first, then the value's.
extern uint32_t AlphaPairCode[256][128];
extern uint8_t AlphaPairLength[256][128];
// Indexed by the next 10 stream bits: result in the low byte, code length in
// the high byte. The run table answers 255 (length 3) for the end marker.
extern uint16_t AlphaRunDecode[1024];
extern uint16_t AlphaValueDecode[1024];
constexpr uint32_t kAlphaEndMarkerCode = 3;  // "110" in stream order
constexpr uint32_t kAlphaEndMarkerLength = 3;

extern uint8_t TrailingOnesTable[256];  // consecutive one bits from bit 0
extern uint8_t TopBitTable[256];        // index of the highest set bit plus one

// Fills every table above; runs from a static initialiser at load. Returns true.
bool BuildGlobalTables();

}  // namespace vantaro
