// The facts of every uncompressed layout, in one table: what a pixel costs,
// which planes there are and how the second plane moves with the main one.
// The encoder's loaders, the decoder's stores, the field flow, the driver and
// the filter all derive their geometry from here; nothing else states it.
//
// Vocabulary shared by both directions (this namespace): a stream's chroma
// Family, its AlphaCoding, and a layout id. Each direction keeps its own
// internals in vantaro::encoder and vantaro::decoder.
#pragma once

#include <cstdint>

namespace vantaro {

// Chroma rate of a stream: 4:2:0, 4:2:2 or 4:4:4.
enum class Family : uint8_t { k420, k422, k444 };
// How a stream carries alpha: not at all, as run/value pairs, or as four more
// luma-like DCT blocks.
enum class AlphaCoding : uint8_t { kNone, kRunValue, kDct };

// Layout ids 0..13 are the colour spaces the doors name. 7 has a name and no
// code: nothing maps to it. Ids from kColorSpaceCount on are free for layouts
// only the native API reaches (planar YUV with three or four planes).
enum ColorSpace : uint32_t {
  kCsInvalid = 0,
  kCsNV12 = 1,
  kCsNV16 = 2,
  kCsNV24 = 3,
  kCsYA20 = 4,
  kCsYA22 = 5,
  kCsYA44 = 6,
  kCsYV12 = 7,
  kCsYUY2 = 8,
  kCsUYVY = 9,
  kCsUYVA = 10,
  kCsAYUV = 11,
  kCsRGB24 = 12,
  kCsRGB32 = 13,
};
constexpr uint32_t kColorSpaceCount = 14;

// Layouts only the native API reaches: separate Y, U, V planes (and a
// full-resolution alpha plane), each with its own signed stride. A walk over
// one of them is handed a PlaneField (codec/layout_traits.h) for `picture`.
enum PlaneSetLayout : uint32_t {
  kPlanesYUV420 = kColorSpaceCount,
  kPlanesYUVA420,
  kPlanesYUV422,
  kPlanesYUVA422,
  kPlanesYUV444,
  kPlanesYUVA444,
};
// Rows of kLayouts: the colour spaces, then the plane sets. The walk tables
// cover them all.
constexpr uint32_t kLayoutCount = kColorSpaceCount + 6;

// What lies beside the main plane.
enum class SecondPlane : uint8_t {
  kNone,
  kChroma,  // interleaved U, V lines (the NV and YA layouts)
  kAlpha,   // csUYVA: a byte a pixel behind the field's image lines
  kPlanes,  // the plane sets: U, V (and alpha) planes of their own
};

struct LayoutFacts {
  const char* name;
  int32_t bitCount;    // biBitCount the doors declare for it
  int32_t driverStep;  // bytes a pixel of a driver line (see kLayouts)
  int32_t pixelBytes;  // main-plane bytes a pixel; 0 where no walk exists
  bool hasAlpha;
  bool lumaAlpha;  // the main plane holds (luma, alpha) byte pairs
  SecondPlane second;
  // Chroma subsampling of the layout (not of the stream): 1 halves.
  uint8_t chromaShiftX;
  uint8_t chromaShiftY;
  // The second plane's advance per field line, (t >> unitShift) * unitMul for
  // a field stride t: slice starts and macroblock-row moves are multiples.
  uint8_t unitShift;
  uint8_t unitMul;
  // Distance of consecutive second-plane lines inside a macroblock,
  // (t >> lineShift) * lineMul.
  uint8_t lineShift;
  uint8_t lineMul;
  bool secondFieldHalfLine;  // the second field's plane starts half a line in
  uint8_t planes;            // planes a picture of the layout has
};

// The planar entries of driverStep say 2 although a luma plane has one byte
// a pixel: the driver's line length for them comes from here and its
// decompress path relies on it. The second field's chroma starts half a line
// in for NV24, YA20 and YA22: right for the YA pair, whose luma lines are
// twice as long as their chroma lines, and half a chroma line in for NV24,
// which both directions have always done and the streams depend on.
// clang-format off
inline constexpr LayoutFacts kLayouts[kLayoutCount] = {
  //  name       bits step px  alpha  ya     second               sx sy us um ls lm half   planes
    {"Invalid",   8,  1,  0, false, false, SecondPlane::kNone,   0, 0, 0, 0, 0, 0, false, 0},
    {"csNV12",   12,  2,  1, false, false, SecondPlane::kChroma, 1, 1, 1, 1, 0, 1, false, 2},
    {"csNV16",   16,  2,  1, false, false, SecondPlane::kChroma, 1, 0, 0, 1, 0, 1, false, 2},
    {"csNV24",   24,  2,  1, false, false, SecondPlane::kChroma, 0, 0, 0, 2, 0, 2, true,  2},
    {"csYA20",   12,  2,  2, true,  true,  SecondPlane::kChroma, 1, 1, 2, 1, 2, 2, true,  2},
    {"csYA22",   16,  2,  2, true,  true,  SecondPlane::kChroma, 1, 0, 1, 1, 1, 1, true,  2},
    {"csYA44",   24,  2,  2, true,  true,  SecondPlane::kChroma, 0, 0, 0, 1, 0, 1, false, 2},
    {"csYV12",    8,  1,  0, false, false, SecondPlane::kNone,   0, 0, 0, 0, 0, 0, false, 0},
    {"csYUY2",   16,  2,  2, false, false, SecondPlane::kNone,   1, 0, 0, 0, 0, 0, false, 1},
    {"csUYVY",   16,  2,  2, false, false, SecondPlane::kNone,   1, 0, 0, 0, 0, 0, false, 1},
    {"csUYVA",   24,  2,  2, true,  false, SecondPlane::kAlpha,  1, 0, 1, 1, 0, 0, false, 2},
    {"csAYUV",   32,  4,  4, true,  false, SecondPlane::kNone,   0, 0, 0, 0, 0, 0, false, 1},
    {"csRGB24",  24,  3,  3, false, false, SecondPlane::kNone,   0, 0, 0, 0, 0, 0, false, 1},
    {"csRGB32",  32,  4,  4, true,  false, SecondPlane::kNone,   0, 0, 0, 0, 0, 0, false, 1},
    {"YUV420P",  12,  1,  1, false, false, SecondPlane::kPlanes, 1, 1, 0, 0, 0, 0, false, 3},
    {"YUVA420P", 20,  1,  1, true,  false, SecondPlane::kPlanes, 1, 1, 0, 0, 0, 0, false, 4},
    {"YUV422P",  16,  1,  1, false, false, SecondPlane::kPlanes, 1, 0, 0, 0, 0, 0, false, 3},
    {"YUVA422P", 24,  1,  1, true,  false, SecondPlane::kPlanes, 1, 0, 0, 0, 0, 0, false, 4},
    {"YUV444P",  24,  1,  1, false, false, SecondPlane::kPlanes, 0, 0, 0, 0, 0, 0, false, 3},
    {"YUVA444P", 32,  1,  1, true,  false, SecondPlane::kPlanes, 0, 0, 0, 0, 0, 0, false, 4},
};
// clang-format on

// The facts of a layout id; an unknown id reads as Invalid.
constexpr const LayoutFacts& LayoutOf(uint32_t id) {
  return kLayouts[id < kLayoutCount ? id : kCsInvalid];
}

// The two-plane layouts with a second plane of interleaved U, V.
constexpr bool IsPlanar(uint32_t id) { return LayoutOf(id).second == SecondPlane::kChroma; }
// The native door's layouts of three or four planes.
constexpr bool IsPlaneSet(uint32_t id) { return LayoutOf(id).second == SecondPlane::kPlanes; }

constexpr bool FullWidthChroma(const LayoutFacts& f) { return f.chromaShiftX == 0; }
constexpr bool HalfHeightChroma(const LayoutFacts& f) { return f.chromaShiftY != 0; }

// Bytes of the second plane a macroblock column covers: 16 pixels of
// interleaved pairs at half or full rate, or 16 alpha bytes.
constexpr int32_t SecondStep(const LayoutFacts& f) {
  if (f.second == SecondPlane::kNone || f.second == SecondPlane::kPlanes) return 0;
  return f.second == SecondPlane::kChroma && FullWidthChroma(f) ? 32 : 16;
}

// Bytes a pixel of a whole frame, every plane counted; the planar layouts
// answer 0 (their second plane's extent depends on the walks, see the driver).
constexpr int32_t PackedFrameBytesPerPixel(const LayoutFacts& f) {
  if (f.second == SecondPlane::kChroma) return 0;
  return f.pixelBytes + (f.second == SecondPlane::kAlpha ? 1 : 0);
}

// The second plane's advance per field line for field stride t. The csUYVA
// alpha plane halves by division (toward zero) and the chroma planes by an
// arithmetic shift (toward minus infinity): both kept, bottom-up strides
// depend on them.
constexpr int64_t SecondUnit(const LayoutFacts& f, int64_t t) {
  if (f.second == SecondPlane::kAlpha) return t / 2;
  return (t >> f.unitShift) * f.unitMul;
}

// Distance of consecutive second-plane lines of a macroblock as the stores
// reach them. The csUYVA alpha lines sit a sixteen-rounded half stride apart.
constexpr int64_t SecondLineDistance(const LayoutFacts& f, int64_t t) {
  if (f.second == SecondPlane::kAlpha) return t / 16 / 2 * 16;
  return (t >> f.lineShift) * f.lineMul;
}

// Where the second field's second plane starts behind the first's, for a
// frame whose lines are `stride` apart.
constexpr int32_t SecondFieldOffset(const LayoutFacts& f, int32_t stride) {
  return f.secondFieldHalfLine ? stride / 2 : stride;
}

// Second-plane lines of `lineBytes` each per macroblock row of a field whose
// stride is two such lines: 16 rows of SecondUnit(2 * lineBytes).
constexpr int32_t SecondLinesPerFieldRow(const LayoutFacts& f) {
  return f.second == SecondPlane::kChroma ? (16 * 2 * f.unitMul) >> f.unitShift : 0;
}

}  // namespace vantaro
