// The picture description the front doors read, for tests.
#pragma once

#include <cstdint>

#include "vantaro/vantaro.h"

namespace vantaro::test {

inline BITMAPINFOHEADER PictureHeader(uint32_t compression, uint16_t bits, int32_t width = 64,
                                      int32_t height = 64) {
  return {sizeof(BITMAPINFOHEADER), width, height, 1, bits, compression, 0, 0, 0, 0, 0};
}

}  // namespace vantaro::test
