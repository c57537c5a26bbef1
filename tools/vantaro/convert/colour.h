// The tool's one colour matrix: studio-range BT.601 (Y' 16..235, Cb and Cr
// 16..240 around 128). PNG input goes in through rgb_to_yuv and RGB output
// comes out through yuv_to_rgb, so a picture taken round both returns within
// two steps a channel.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantaro::tool {

// One pixel from Y'CbCr to R, G, B (red first).
void yuv_to_rgb(uint8_t y, uint8_t u, uint8_t v, uint8_t* rgb);

// A run of n pixels from planes to packed RGB (step 3) or RGBA (step 4,
// alpha from `a`), each pixel as yuv_to_rgb gives it.
void yuv_to_rgb_run(const uint8_t* y, const uint8_t* u, const uint8_t* v, const uint8_t* a, size_t n, size_t step,
                    uint8_t* out);

// One pixel from R, G, B (red first) to Y'CbCr; grey (r = g = b) gives
// Cb = Cr = 128 exactly.
void rgb_to_yuv(const uint8_t* rgb, uint8_t& y, uint8_t& u, uint8_t& v);

}  // namespace vantaro::tool
