// Platform records and codes that the codec's front doors speak, written for
// this project so that nothing depends on a system header of the platform.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vantaro/vantaro.h"

namespace vantaro {

// A FourCC holds its first character in the low byte.
constexpr uint32_t MakeFourCC(char a, char b, char c, char d) {
  return static_cast<uint32_t>(static_cast<uint8_t>(a)) |
         (static_cast<uint32_t>(static_cast<uint8_t>(b)) << 8) |
         (static_cast<uint32_t>(static_cast<uint8_t>(c)) << 16) |
         (static_cast<uint32_t>(static_cast<uint8_t>(d)) << 24);
}

// The four characters of a FourCC, in memory order, for log lines.
constexpr char FourCCChar(uint32_t fourcc, int index) {
  return static_cast<char>((fourcc >> (8 * index)) & 0xFF);
}

// Video-compression driver result codes.
constexpr int64_t kIcErrOk = 0;
constexpr int64_t kIcErrUnsupported = -1;
constexpr int64_t kIcErrBadFormat = -2;
constexpr int64_t kIcErrBadSize = -7;

// biCompression values for uncompressed RGB.
constexpr uint32_t kBiRgb = 0;
constexpr uint32_t kBiBitfields = 3;

static_assert(sizeof(BITMAPINFOHEADER) == 40);
static_assert(offsetof(BITMAPINFOHEADER, biWidth) == 4);
static_assert(offsetof(BITMAPINFOHEADER, biHeight) == 8);
static_assert(offsetof(BITMAPINFOHEADER, biPlanes) == 12);
static_assert(offsetof(BITMAPINFOHEADER, biBitCount) == 14);
static_assert(offsetof(BITMAPINFOHEADER, biCompression) == 16);
static_assert(offsetof(BITMAPINFOHEADER, biSizeImage) == 20);
static_assert(offsetof(BITMAPINFOHEADER, biXPelsPerMeter) == 24);
static_assert(offsetof(BITMAPINFOHEADER, biClrImportant) == 36);

}  // namespace vantaro
