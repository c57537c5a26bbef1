// Tables built once, on first use, and read-only afterwards: colour
// conversion, the encoder's code tables, the alpha run/value codes and the
// byte tables that turn a raster-order coefficient mask into scan order.
#pragma once

#include <cstdint>

#include "codec/built_once.h"
#include "codec/code_rows.h"

namespace vantaro {

// Four signed 16-bit lanes, fetched by one 8-byte load and added lane-wise.
struct alignas(8) ColorLanes {
  int16_t lane[4];
};

// DC difference codes indexed by difference + 2048: code ready for PutCode
// (size code first, then the extra bits least significant first) and length.
// Entry 0 (difference -2048) is empty: its size, 12, has no code row.
struct DcCodeTable {
  uint32_t code[4096];
  uint8_t length[4096];
};

// The end marker of a run/value alpha half, in stream order.
inline constexpr uint32_t kAlphaEndMarkerLength = ParseCode(kAlphaEndMarker).length;
inline constexpr uint32_t kAlphaEndMarkerCode = StreamOrder(ParseCode(kAlphaEndMarker));

// The YUV-to-RGB coefficients: BT.601 studio-range matrix entries times
// 8192. A table lane is (k * (x - centre)) >> 8 in 32 bits, plus 16 for
// luma, kept to 16 bits; the vector stores compute the same lanes.
struct YuvToRgbCoefficients {
  int16_t luma, cbBlue, cbGreen, crGreen, crRed;
};
inline constexpr YuvToRgbCoefficients kYuvToRgb{9535, 16531, -3202, -6659, 13074};

// The RGB-to-YUV coefficients, matrix entries times 8192, by source byte and
// then by lane U, V, Y; the red lanes carry the offsets 128.5 and 16.5 in
// five fractional bits (4112 = 128.5 * 32, 528 = 16.5 * 32).
struct RgbToYuvCoefficients {
  int16_t blue[3], green[3], red[3], offset[3];
};
inline constexpr RgbToYuvCoefficients kRgbToYuv{
    {3596, -581, 803}, {-2383, -3014, 4129}, {-1211, 3596, 2105}, {4112, 4112, 528}};

struct GlobalTables {
  // RGB to YUV, indexed by the pixel's own bytes; lanes U, V, Y, 0 with five
  // fractional bits. The sum of the three entries >> 5 gives the sample.
  ColorLanes lutBlue[256];
  ColorLanes lutGreen[256];
  ColorLanes lutRed[256];  // holds the offsets 128.5 and 16.5
  // YUV to RGB; lanes blue, green, red, 0 (the output's byte order).
  ColorLanes lutLuma[256];  // holds the rounding half
  ColorLanes lutCb[256];
  ColorLanes lutCr[256];

  DcCodeTable dcLuma;  // luma and DCT-alpha blocks
  DcCodeTable dcChroma;
  // [level + 2048][run]: length in the low 8 bits, stream-order code above.
  // Sign included; combinations without a row hold the 24-bit escape. Level
  // first, so that the small levels nearly every code has lie together in a
  // few pages rather than one page a run.
  uint32_t acCode[4096][64];

  // Alpha pairs [value][run]: the run's code first, then the value's.
  uint32_t alphaPairCode[256][128];
  uint8_t alphaPairLength[256][128];
  // Indexed by the next 10 stream bits: result in the low byte, code length
  // in the high byte. The run table answers 255 (length 3) for the end marker.
  uint16_t alphaRunDecode[1024];
  uint16_t alphaValueDecode[1024];

  // [k][b]: bit s set where scan position s holds one of the raster
  // positions 8k..8k+7 whose bit is set in b. OR-ing the eight entries of a
  // raster mask's bytes gives its scan-order mask.
  uint64_t scanMask[8][256];
};

void BuildGlobalTables(GlobalTables& tables);

// The tables, built on first use (thread-safe) and read-only after.
inline const GlobalTables& Tables() { return BuiltOnce<GlobalTables, BuildGlobalTables>(); }

}  // namespace vantaro
