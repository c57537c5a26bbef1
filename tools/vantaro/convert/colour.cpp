#include "convert/colour.h"

#include <algorithm>

namespace vantaro::tool {

namespace {
inline void pixel_to_rgb(uint8_t y, uint8_t u, uint8_t v, uint8_t* rgb) {
    const double l = 1.164 * (y - 16), cb = u - 128.0, cr = v - 128.0;
    const double c[3] = {l + 1.596 * cr, l - 0.392 * cb - 0.813 * cr, l + 2.017 * cb};
    for (int i = 0; i < 3; ++i) rgb[i] = uint8_t(std::clamp(c[i] + 0.5, 0.0, 255.0));
}
}  // namespace

void yuv_to_rgb(uint8_t y, uint8_t u, uint8_t v, uint8_t* rgb) { pixel_to_rgb(y, u, v, rgb); }

namespace {
// Red depends on Y' and Cr alone, blue on Y' and Cb: each is one byte table
// of every pair, filled by the very formula above, so the fast path gives
// yuv_to_rgb's bytes exactly. Green keeps the sum, from tables of the same
// double products taken in the same order.
struct RgbTables {
    uint8_t red[256 * 256], blue[256 * 256];
    double luma[256], green_cb[256], green_cr[256];
    RgbTables() {
        uint8_t rgb[3];
        for (int y = 0; y < 256; ++y) {
            luma[y] = 1.164 * (y - 16);
            for (int c = 0; c < 256; ++c) {
                pixel_to_rgb(uint8_t(y), 128, uint8_t(c), rgb);
                red[y << 8 | c] = rgb[0];
                pixel_to_rgb(uint8_t(y), uint8_t(c), 128, rgb);
                blue[y << 8 | c] = rgb[2];
            }
            green_cb[y] = 0.392 * (y - 128.0);
            green_cr[y] = 0.813 * (y - 128.0);
        }
    }
};
}  // namespace

void yuv_to_rgb_run(const uint8_t* y, const uint8_t* u, const uint8_t* v, const uint8_t* a, size_t n, size_t step,
                    uint8_t* out) {
    static const RgbTables t;
    for (size_t i = 0; i < n; ++i, out += step) {
        out[0] = t.red[y[i] << 8 | v[i]];
        out[1] = uint8_t(std::clamp(t.luma[y[i]] - t.green_cb[u[i]] - t.green_cr[v[i]] + 0.5, 0.0, 255.0));
        out[2] = t.blue[y[i] << 8 | u[i]];
        if (step == 4) out[3] = a[i];
    }
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
