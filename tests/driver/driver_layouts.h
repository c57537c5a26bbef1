// The stream variants and uncompressed layouts the driver tests sweep, and
// the direct functions' view of a driver frame for comparison.
#pragma once

#include <cstdint>
#include <vector>

#include "driver/driver_formats.h"
#include "driver_session.h"
#include "vantaro/vantaro.h"

namespace vantaro::test {

struct Layout {
  const char* name;
  uint32_t compression;
  uint16_t bits;
};

inline const std::vector<Layout>& AllLayouts() {
  static const std::vector<Layout> layouts = {
      {"NV12", VTC_FOURCC('N', 'V', '1', '2'), 12}, {"NV16", VTC_FOURCC('N', 'V', '1', '6'), 16},
      {"NV24", VTC_FOURCC('N', 'V', '2', '4'), 24}, {"YA20", VTC_FOURCC('Y', 'A', '2', '0'), 24},
      {"YA22", VTC_FOURCC('Y', 'A', '2', '2'), 32}, {"YA44", VTC_FOURCC('Y', 'A', '4', '4'), 48},
      {"YUY2", VTC_FOURCC('Y', 'U', 'Y', '2'), 16}, {"UYVY", VTC_FOURCC('U', 'Y', 'V', 'Y'), 16},
      {"UYVY24", VTC_FOURCC('U', 'Y', 'V', 'Y'), 24}, {"UYVA", VTC_FOURCC('U', 'Y', 'V', 'A'), 24},
      {"AYUV", VTC_FOURCC('A', 'Y', 'U', 'V'), 32}, {"RGB24", 0, 24},
      {"RGB32", 0, 32},
  };
  return layouts;
}

inline const std::vector<uint32_t>& AllVariants() {
  static const std::vector<uint32_t> variants = {
      Fcc("VTQ0"), Fcc("VTQ1"), Fcc("VTQ2"), Fcc("VTQ3"),
      Fcc("VTQ4"), Fcc("VTQ5"), Fcc("VTQ7"), Fcc("VTQ9"),
  };
  return variants;
}

inline std::string VariantName(uint32_t fourcc) {
  return std::string{static_cast<char>(fourcc), static_cast<char>(fourcc >> 8),
                     static_cast<char>(fourcc >> 16), static_cast<char>(fourcc >> 24)};
}

inline bool IsBottomUpRgb(const BITMAPINFOHEADER& header, bool topDown) {
  const int32_t cs = ColorSpaceFromHeader(&header);
  return !topDown && (cs == kCsRGB24 || cs == kCsRGB32);
}

// Where a driver frame's lines and second plane lie.
struct FrameGeometry {
  int32_t line;
  int32_t height;
  size_t bytes;       // the whole frame in the driver's layout
  size_t planeStart;  // the second plane's offset; 0 for the packed layouts
};

inline FrameGeometry GeometryOf(const BITMAPINFOHEADER& header) {
  const uint32_t cs = static_cast<uint32_t>(ColorSpaceFromHeader(&header));
  const int32_t height = AbsHeight(header.biHeight);
  FrameGeometry g{DriverLineBytes(cs, header.biWidth), height,
                  static_cast<size_t>(DriverFrameBytes(cs, header.biWidth, height)), 0};
  if (IsPlanar(cs)) g.planeStart = static_cast<size_t>(height) * static_cast<size_t>(g.line);
  return g;
}

// The frame the direct functions make of the same picture: a frame call
// for the packed layouts (from the last line upward for bottom-up RGB), two
// field calls with the second plane one line on for the planar ones.
inline std::vector<uint8_t> DirectCompress(uint32_t fourcc, const BITMAPINFOHEADER& source,
                                           bool topDown, int32_t quality,
                                           const std::vector<uint8_t>& picture) {
  void* handle = VTC_CompressFieldBeginQuality(&source, fourcc, quality);
  const FrameGeometry g = GeometryOf(source);
  std::vector<uint8_t> stream(static_cast<size_t>(g.line > 0 ? g.line : 1) * g.height * 4 + 4096);
  int64_t length = 0;
  if (g.planeStart != 0) {
    const uint8_t* chroma = picture.data() + g.planeStart;
    VTC_CompressFieldEx(handle, stream.data(), picture.data(), chroma, 2 * g.line, 0);
    length = VTC_CompressFieldEx(handle, stream.data(), picture.data() + g.line, chroma + g.line,
                                 2 * g.line, 1);
  } else if (IsBottomUpRgb(source, topDown)) {
    const uint8_t* top = picture.data() + static_cast<size_t>(g.height - 1) * g.line;
    length = VTC_CompressFrame(handle, stream.data(), top, -g.line);
  } else {
    length = VTC_CompressFrame(handle, stream.data(), picture.data(), g.line);
  }
  VTC_CompressFieldEnd(handle);
  stream.resize(static_cast<size_t>(length));
  return stream;
}

}  // namespace vantaro::test
