// PNG output of 8-bit RGB or RGBA pictures, written in one go.
#pragma once

#include <cstdint>

#include "io/file.h"

namespace vantaro::tool {

// `rgb` holds height lines of width pixels, channels 3 (RGB) or 4 (RGBA).
void write_png(File& out, const uint8_t* rgb, int32_t width, int32_t height, int channels);

}  // namespace vantaro::tool
