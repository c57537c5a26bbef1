// The picture description the front doors read, for tests.
#pragma once

#include <cstdint>

#include "vantaro/vantaro.h"

namespace vantaro::test {

inline BITMAPINFOHEADER PictureHeader(uint32_t compression, uint16_t bits, int32_t width = 64,
                                      int32_t height = 64) {
  BITMAPINFOHEADER h{};
  h.biSize = sizeof h;
  h.biWidth = width;
  h.biHeight = height;
  h.biPlanes = 1;
  h.biBitCount = bits;
  h.biCompression = compression;
  return h;
}

}  // namespace vantaro::test
