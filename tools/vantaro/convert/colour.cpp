#include "convert/colour.h"

#include <algorithm>

namespace vantaro::tool {

void yuv_to_rgb(uint8_t y, uint8_t u, uint8_t v, uint8_t* rgb) {
    const double l = 1.164 * (y - 16), cb = u - 128.0, cr = v - 128.0;
    const double c[3] = {l + 1.596 * cr, l - 0.392 * cb - 0.813 * cr, l + 2.017 * cb};
    for (int i = 0; i < 3; ++i) rgb[i] = uint8_t(std::clamp(c[i] + 0.5, 0.0, 255.0));
}

// The forward matrix scaled by 219/255 (luma) and 224/255 (chroma) in 16
// fractional bits. Each chroma row sums to exactly zero, so grey stays
// neutral; the offsets keep every sum positive before the shift.
void rgb_to_yuv(const uint8_t* rgb, uint8_t& y, uint8_t& u, uint8_t& v) {
    const int32_t r = rgb[0], g = rgb[1], b = rgb[2];
    constexpr int32_t kHalf = 1 << 15;
    y = uint8_t((16829 * r + 33039 * g + 6416 * b + (16 << 16) + kHalf) >> 16);
    u = uint8_t((-9714 * r - 19070 * g + 28784 * b + (128 << 16) + kHalf) >> 16);
    v = uint8_t((28784 * r - 24103 * g - 4681 * b + (128 << 16) + kHalf) >> 16);
}

}  // namespace vantaro::tool
