// vantaro bench as a user runs it: one line per chosen variant whose bits a
// pixel match the library's own frame of the same picture, and the command
// line's refusals.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "convert/colour.h"
#include "png_maker.h"
#include "vantaro/vantaro.h"

#ifdef VANTARO_CLI_PATH
namespace {

namespace fs = std::filesystem;

constexpr int32_t kWidth = 64, kHeight = 48;

fs::path Dir() {
    const fs::path d = fs::temp_directory_path() / "vantaro_bench_test" /
                       ::testing::UnitTest::GetInstance()->current_test_info()->name();
    fs::remove_all(d);
    fs::create_directories(d);
    return d;
}

// A 4:2:2 picture: planes Y, U, V back to back, as vantaro_picture_fill lays them out.
std::vector<uint8_t> Picture() {
    std::vector<uint8_t> b(vantaro_picture_size(VANTARO_FORMAT_YUV422P, kWidth, kHeight));
    for (size_t i = 0; i < b.size(); ++i) b[i] = uint8_t((i * 7 + (i / kWidth) * 13) & 255);
    return b;
}

struct BenchRun {
    int code;
    std::string out;
};

BenchRun Bench(const fs::path& dir, const std::string& args) {
    const fs::path out = dir / "stdout.txt";
    const std::string cmd = std::string(VANTARO_CLI_PATH) + " bench " + args + " >" + out.string() + " 2>&1";
    const int status = std::system(cmd.c_str());
    std::ifstream in(out);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>())};
}

double LibraryBitsPerPixel(uint32_t fourcc, std::vector<uint8_t> bytes) {
    vantaro_picture p{};
    EXPECT_EQ(vantaro_picture_fill(&p, VANTARO_FORMAT_YUV422P, kWidth, kHeight, bytes.data(), bytes.size()), VANTARO_OK);
    vantaro_encoder* enc = nullptr;
    EXPECT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 96, nullptr, &enc), VANTARO_OK);
    std::vector<uint8_t> frame(vantaro_frame_bound(fourcc, kWidth, kHeight));
    size_t written = 0;
    EXPECT_EQ(vantaro_encode(enc, &p, frame.data(), frame.size(), &written), VANTARO_OK);
    vantaro_encoder_destroy(enc);
    return double(written) * 8.0 / (kWidth * kHeight);
}

TEST(BenchCommand, PrintsEachChosenVariantWithTheLibrarysBitsPerPixel) {
    const fs::path d = Dir();
    const std::vector<uint8_t> picture = Picture();
    {
        std::ofstream y4m(d / "in.y4m", std::ios::binary);
        y4m << "YUV4MPEG2 W64 H48 F25:1 Ip A1:1 C422\nFRAME\n";
        y4m.write(reinterpret_cast<const char*>(picture.data()), std::streamsize(picture.size()));
    }
    const BenchRun r = Bench(d, (d / "in.y4m").string() + " --fourcc VTQ2 --fourcc vtq3");
    ASSERT_EQ(r.code, 0) << r.out;
    EXPECT_NE(r.out.find("processor:"), std::string::npos);
    EXPECT_NE(r.out.find("build:"), std::string::npos);
    for (const char* name : {"VTQ2", "VTQ3"}) {
        const size_t at = r.out.find(std::string("\n") + name + " ");
        ASSERT_NE(at, std::string::npos) << name << " missing from\n" << r.out;
        std::istringstream line(r.out.substr(at + 1, r.out.find('\n', at + 1) - at - 1));
        std::string variant, chroma;
        double encodeRate = 0, encodeBlocks = 0, decodeRate = 0, decodeBlocks = 0, bits = 0;
        line >> variant >> chroma >> encodeRate >> encodeBlocks >> decodeRate >> decodeBlocks >> bits;
        EXPECT_GT(encodeRate, 0.0) << name;
        EXPECT_GT(decodeBlocks, 0.0) << name;
        const uint32_t fourcc = VTC_FOURCC(name[0], name[1], name[2], name[3]);
        EXPECT_NEAR(bits, LibraryBitsPerPixel(fourcc, picture), 0.0005) << name;
    }
    EXPECT_EQ(r.out.find("VTQ0"), std::string::npos) << "only the chosen variants run";
}

// A grey PNG with alpha: the reader's and the colour matrix's samples, so
// VTQ5's bits a pixel must be the library's for the same YUVA 4:4:4 picture.
TEST(BenchCommand, ReadsPngThroughTheToolsReaderAndMatrix) {
    const fs::path d = Dir();
    vantaro::tool::testing::PngPlan plan{kWidth, kHeight, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {}, {}, {}, -1};
    for (int32_t i = 0; i < kWidth * kHeight; ++i) {
        plan.samples.push_back(uint16_t((i * 5 + i / kWidth * 3) & 255));
        plan.samples.push_back(uint16_t(i % kWidth < 40 ? 255 : 30));
    }
    ASSERT_TRUE(vantaro::tool::testing::MakePng((d / "in.png").string(), plan));
    std::vector<uint8_t> bytes(vantaro_picture_size(VANTARO_FORMAT_YUVA444P, kWidth, kHeight));
    vantaro_picture p{};
    ASSERT_EQ(vantaro_picture_fill(&p, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, bytes.data(), bytes.size()), VANTARO_OK);
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) {
            const size_t i = size_t(y) * kWidth + size_t(x);
            const uint8_t g = uint8_t(plan.samples[2 * i]);
            const uint8_t rgb[3] = {g, g, g};
            vantaro::tool::rgb_to_yuv(rgb, p.planes[0][y * p.strides[0] + x], p.planes[1][y * p.strides[1] + x],
                                      p.planes[2][y * p.strides[2] + x]);
            p.planes[3][y * p.strides[3] + x] = uint8_t(plan.samples[2 * i + 1]);
        }
    const uint32_t fourcc = VTC_FOURCC('V', 'T', 'Q', '5');
    vantaro_encoder* enc = nullptr;
    ASSERT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 96, nullptr, &enc), VANTARO_OK);
    std::vector<uint8_t> frame(vantaro_frame_bound(fourcc, kWidth, kHeight));
    size_t written = 0;
    EXPECT_EQ(vantaro_encode(enc, &p, frame.data(), frame.size(), &written), VANTARO_OK);
    vantaro_encoder_destroy(enc);

    const BenchRun r = Bench(d, (d / "in.png").string() + " --fourcc VTQ5");
    ASSERT_EQ(r.code, 0) << r.out;
    const size_t at = r.out.find("\nVTQ5 ");
    ASSERT_NE(at, std::string::npos) << r.out;
    std::istringstream line(r.out.substr(at + 1, r.out.find('\n', at + 1) - at - 1));
    std::string variant, chroma;
    double rates[4] = {}, bits = 0;
    line >> variant >> chroma >> rates[0] >> rates[1] >> rates[2] >> rates[3] >> bits;
    EXPECT_NEAR(bits, double(written) * 8.0 / (kWidth * kHeight), 0.0005);
}

TEST(BenchCommand, RefusesWhatItCannotRun) {
    const fs::path d = Dir();
    const struct {
        std::string args;
        int code;
        const char* says;
    } cases[] = {
        {"--fourcc VTQ6 x.png", 1, "not a Vantaro variant"},
        {"a.png b.png", 2, "at most one INPUT"},
        {(d / "missing.png").string(), 1, "cannot open"},
        {(d / "in.y4m").string() + " --seconds 0", 1, "--seconds"},
        {"--threads 0 x.png", 1, "--threads"},
    };
    for (const auto& c : cases) {
        const BenchRun r = Bench(d, c.args);
        EXPECT_EQ(r.code, c.code) << c.args << "\n" << r.out;
        EXPECT_NE(r.out.find(c.says), std::string::npos) << c.args << "\n" << r.out;
    }
}

}  // namespace
#endif
