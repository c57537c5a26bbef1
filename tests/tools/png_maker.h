// Test pictures written with libpng directly, in every colour type and depth
// the tool's reader has to take.
#pragma once

#include <png.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/pictures.h"

namespace vantaro::tool::testing {

struct PngPlan {
    int width, height;
    int color_type;                   // PNG_COLOR_TYPE_*
    int depth;                        // 1..16
    std::vector<uint16_t> samples;    // width * height * channels, or palette indices
    std::vector<png_color> palette;   // for PNG_COLOR_TYPE_PALETTE
    std::vector<png_byte> trns;       // palette alphas
    int trns_grey = -1;               // a grey value shown transparent
};

inline int PlanChannels(int color_type) {
    return color_type == PNG_COLOR_TYPE_RGB_ALPHA ? 4 : color_type == PNG_COLOR_TYPE_RGB ? 3
         : color_type == PNG_COLOR_TYPE_GRAY_ALPHA ? 2 : 1;
}

// False if libpng refused; the file is then incomplete.
inline bool MakePng(const std::string& path, const PngPlan& s) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    const size_t per_row = size_t(s.width) * size_t(PlanChannels(s.color_type));
    std::vector<png_byte> row(per_row * 2);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        std::fclose(f);
        return false;
    }
    png_init_io(png, f);
    png_set_IHDR(png, info, png_uint_32(s.width), png_uint_32(s.height), s.depth, s.color_type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!s.palette.empty()) png_set_PLTE(png, info, s.palette.data(), int(s.palette.size()));
    if (!s.trns.empty()) png_set_tRNS(png, info, s.trns.data(), int(s.trns.size()), nullptr);
    png_color_16 key{0, 0, 0, 0, png_uint_16(s.trns_grey)};
    if (s.trns_grey >= 0) png_set_tRNS(png, info, nullptr, 0, &key);
    png_write_info(png, info);
    if (s.depth < 8) png_set_packing(png);  // one byte a sample in, packed out
    for (int y = 0; y < s.height; ++y) {
        for (size_t i = 0; i < per_row; ++i) {
            const uint16_t v = s.samples[size_t(y) * per_row + i];
            if (s.depth == 16) row[2 * i] = png_byte(v >> 8), row[2 * i + 1] = png_byte(v);  // big-endian
            else row[i] = png_byte(v);
        }
        png_write_row(png, row.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return std::fclose(f) == 0;
}

// A picture whose samples vary with position and `seed`: the suites' pattern.
inline PngPlan Pattern(int color_type, int width, int height, int seed) {
    const int line = width * PlanChannels(color_type);
    const std::vector<uint8_t> bytes = test::PatternBytes(size_t(line) * size_t(height), uint32_t(seed), line);
    return {width, height, color_type, 8, std::vector<uint16_t>(bytes.begin(), bytes.end()), {}, {}, -1};
}

}  // namespace vantaro::tool::testing
