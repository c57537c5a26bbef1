// PNG output of 8-bit RGB or RGBA pictures, written in one go.
#pragma once

#include <cstdint>
#include <vector>

#include "io/file.h"

namespace vantaro::tool {

// `rgb` holds height lines of width pixels, channels 3 (RGB) or 4 (RGBA).
// Safe to call from several threads at once.
std::vector<uint8_t> encode_png(const uint8_t* rgb, int32_t width, int32_t height, int channels);

inline void write_png(File& out, const uint8_t* rgb, int32_t width, int32_t height, int channels) {
    const std::vector<uint8_t> bytes = encode_png(rgb, width, height, channels);
    out.write(bytes.data(), bytes.size());
}

}  // namespace vantaro::tool
