// The tool's one colour matrix: studio-range BT.601 (Y' 16..235, Cb and Cr
// 16..240 around 128). PNG input goes in through rgb_to_yuv and RGB output
// comes out through yuv_to_rgb, so a picture taken round both returns within
// two steps a channel.
#pragma once

#include <cstdint>

namespace vantaro::tool {

// One pixel from Y'CbCr to R, G, B (red first).
void yuv_to_rgb(uint8_t y, uint8_t u, uint8_t v, uint8_t* rgb);

// One pixel from R, G, B (red first) to Y'CbCr; grey (r = g = b) gives
// Cb = Cr = 128 exactly.
void rgb_to_yuv(const uint8_t* rgb, uint8_t& y, uint8_t& u, uint8_t& v);

}  // namespace vantaro::tool
