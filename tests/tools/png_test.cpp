// PNG in and out below the command line: the colour matrix both ways and
// the reader's conversions of every PNG flavour (numbered sequences run
// through the command line in cli_test.cpp).
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "convert/colour.h"
#include "input/png_reader.h"
#include "png_maker.h"

namespace vantaro::tool {
namespace {

namespace fs = std::filesystem;
using testing::MakePng;
using testing::PngPlan;

TEST(Colour, RgbToYuvAndBackStaysWithinTwoStepsInStudioRange) {
    uint8_t y, u, v, back[3];
    int worst = 0;
    for (int r = 0; r < 256; r += 15)
        for (int g = 0; g < 256; g += 15)
            for (int b = 0; b < 256; b += 15) {
                const uint8_t rgb[3] = {uint8_t(r), uint8_t(g), uint8_t(b)};
                rgb_to_yuv(rgb, y, u, v);
                yuv_to_rgb(y, u, v, back);
                for (int c = 0; c < 3; ++c) worst = std::max(worst, std::abs(int(back[c]) - int(rgb[c])));
                // Grey keeps chroma neutral; black and white sit at 16 and 235.
                if (r != g || g != b) continue;
                ASSERT_EQ(u * 1000 + v, 128128) << r;
                EXPECT_TRUE(r % 255 != 0 || y == (r ? 235 : 16)) << r;
            }
    EXPECT_LE(worst, 2);
    const uint8_t red[3] = {255, 0, 0};  // the matrix's scale, which a round trip cannot tell
    rgb_to_yuv(red, y, u, v);
    EXPECT_EQ(v, 240);
}

TEST(Colour, RunsGiveThePixelFormulasBytes) {
    // Every Y' and Cb pair, Cr mixed in, as one run each for RGB and RGBA.
    std::vector<uint8_t> y, u, v, a;
    for (int i = 0; i < 65536; ++i) {
        y.push_back(uint8_t(i >> 8));
        u.push_back(uint8_t(i));
        v.push_back(uint8_t(((i >> 8) * 7 + i * 13) & 255));
        a.push_back(uint8_t((i >> 8) ^ i));
    }
    for (size_t step : {3u, 4u}) {
        std::vector<uint8_t> run(y.size() * step), one(4);
        yuv_to_rgb_run(y.data(), u.data(), v.data(), a.data(), y.size(), step, run.data());
        for (size_t i = 0; i < y.size(); ++i) {
            yuv_to_rgb(y[i], u[i], v[i], one.data());
            one[3] = a[i];  // compared for RGBA only
            ASSERT_TRUE(std::equal(one.begin(), one.begin() + long(step), run.begin() + long(i * step))) << i;
        }
    }
}

TEST(PngReader, EveryFlavourBecomesEightBitGreyOrRgbWithAlphaWhenPresent) {
    const std::string path = (fs::temp_directory_path() / "vantaro_png_test.png").string();
    const png_color pal[2] = {{10, 20, 30}, {200, 100, 50}};
    // Pictures 3x1: the PNG's plan, then the channels and pixels read back.
    const struct Case { const char* what; PngPlan plan; int channels; std::vector<uint8_t> pixels; } cases[] = {
        {"grey 1-bit", {3, 1, PNG_COLOR_TYPE_GRAY, 1, {1, 0, 1}, {}, {}, -1}, 1, {255, 0, 255}},
        {"grey with a key", {3, 1, PNG_COLOR_TYPE_GRAY, 8, {5, 9, 5}, {}, {}, 9}, 2, {5, 255, 9, 0, 5, 255}},
        {"grey+alpha", {3, 1, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {1, 2, 3, 4, 5, 6}, {}, {}, -1}, 2, {1, 2, 3, 4, 5, 6}},
        {"rgb 16-bit", {3, 1, PNG_COLOR_TYPE_RGB, 16, {0, 257 * 9 + 100, 65535, 257, 514, 771, 65535, 0, 25700}, {}, {}, -1},
         3, {0, 9, 255, 1, 2, 3, 255, 0, 100}},
        {"palette", {3, 1, PNG_COLOR_TYPE_PALETTE, 8, {1, 0, 1}, {pal[0], pal[1]}, {}, -1}, 3,
         {200, 100, 50, 10, 20, 30, 200, 100, 50}},
        {"palette with alphas", {3, 1, PNG_COLOR_TYPE_PALETTE, 2, {1, 0, 1}, {pal[0], pal[1]}, {0, 128}, -1}, 4,
         {200, 100, 50, 128, 10, 20, 30, 0, 200, 100, 50, 128}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(MakePng(path, c.plan));
        const PngPicture p = read_png(path);
        EXPECT_EQ(std::tie(p.width, p.height, p.channels), std::make_tuple(3, 1, c.channels));
        EXPECT_EQ(p.pixels, c.pixels);
    }
    fs::remove(path);
}

}  // namespace
}  // namespace vantaro::tool
