// Test pictures for benchmarks: the photographs as 8-bit RGB, converted to
// the codec's uncompressed layouts with BT.601 studio-range arithmetic.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantaro::bench {

struct RgbPicture {
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> rgb;  // R, G, B per pixel, top-down
};

// Reads an 8-bit RGB or RGBA PNG; throws std::runtime_error on failure.
RgbPicture LoadPng(const std::string& path);

struct LayoutPicture {
  uint32_t compression;  // biCompression
  uint16_t bitCount;
  int32_t stride;        // main plane
  std::vector<uint8_t> bytes;  // main plane, then the second plane if any
  size_t chromaOffset = 0;     // 0 when the layout has one plane
};

// Converts to one of "YUY2", "UYVY", "UYVA", "AYUV", "RGB24", "RGB32",
// "NV12", "NV16", "NV24". Alpha, where the layout has it, is a soft ramp.
LayoutPicture ToLayout(const RgbPicture& picture, const std::string& layout);

}  // namespace vantaro::bench
