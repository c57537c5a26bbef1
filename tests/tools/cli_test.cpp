// The vantaro program run as a user runs it: round trips against the
// library's own, pipes, the bench line, and every failure with its message,
// exit code and no file left under the output's name.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <tuple>
#include <vector>

#include "avi/avi.h"
#include "avi/riff.h"
#include "convert/colour.h"
#include "input/png_reader.h"
#include "input/y4m.h"
#include "png_maker.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

#ifdef VANTARO_CLI_PATH
namespace vantaro::tool {
namespace {

namespace fs = std::filesystem;

// A folder per test (ctest runs the cases side by side); Dir() empties it,
// so nothing another run left can pass for output.
fs::path TestPath() {
    return fs::temp_directory_path() / "vantaro_cli_test" / ::testing::UnitTest::GetInstance()->current_test_info()->name();
}
fs::path Dir() {
    fs::remove_all(TestPath());
    fs::create_directories(TestPath());
    return TestPath();
}

std::string ReadFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// Runs the program through the shell: its exit code and standard error.
std::pair<int, std::string> Vantaro(const std::string& args) {
    const std::string err = TestPath().string() + ".err";
    const int status = std::system((std::string(VANTARO_CLI_PATH) + " " + args + " 2>" + err).c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(err)};
}

// Frame `index` of a stream: the suites' picture pattern.
std::vector<uint8_t> Frame(const Y4mFormat& f, int index) {
    return test::PatternBytes(f.frame_bytes(), uint32_t(index), f.width);
}

void WriteY4m(const fs::path& p, const char* header, int frames) {
    const Y4mFormat f = parse_y4m_header(header, "x");
    std::ofstream out(p, std::ios::binary);
    out << header << '\n';
    for (int i = 0; i < frames; ++i) {
        const auto b = Frame(f, i);
        out << "FRAME\n";
        out.write(reinterpret_cast<const char*>(b.data()), std::streamsize(b.size()));
    }
}

// The library's own round trip of one frame, in the input's planar format.
std::vector<uint8_t> LibraryRoundTrip(uint32_t fourcc, vantaro_format fmt, const Y4mFormat& f, std::vector<uint8_t> in) {
    vantaro_picture pic;
    std::vector<uint8_t> coded, out(in.size());
    EXPECT_EQ(vantaro_picture_fill(&pic, fmt, f.width, f.height, in.data(), in.size()), VANTARO_OK);
    EXPECT_EQ(test::Encode(fourcc, pic, 96, coded), VANTARO_OK);
    EXPECT_EQ(vantaro_picture_fill(&pic, fmt, f.width, f.height, out.data(), out.size()), VANTARO_OK);
    EXPECT_EQ(test::Decode(fourcc, coded, pic), VANTARO_OK);
    return out;
}

TEST(Cli, Y4mThroughAviMatchesTheLibraryAtEveryThreadCount) {
    const struct { const char* header; const char* fourcc; vantaro_format fmt; } cases[] = {
        {"YUV4MPEG2 W37 H21 F30000:1001 It C420mpeg2", "VTQ0", VANTARO_FORMAT_YUV420P},
        {"YUV4MPEG2 W48 H16 F25:1 Ib C422", "VTQ2", VANTARO_FORMAT_YUV422P},
        {"YUV4MPEG2 W33 H18 F24:1 Ip C444alpha", "VTQ5", VANTARO_FORMAT_YUVA444P},
    };
    const fs::path d = Dir();
    const std::string in = (d / "in.y4m").string(), a = (d / "a.avi").string(), out = (d / "out.y4m").string();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.header);
        WriteY4m(in, c.header, 5);
        ASSERT_EQ(Vantaro("encode " + in + " -o " + a + " --threads 1 --quiet").first, 0);
        ASSERT_EQ(Vantaro("encode - -o " + (d / "b.avi").string() + " --threads=3 --quiet < " + in).first, 0);
        EXPECT_EQ(ReadFile(a), ReadFile(d / "b.avi"));
        AviReader avi(a);
        EXPECT_EQ(std::make_tuple(fourcc_text(avi.video().fourcc), avi.frames().size()), std::make_tuple(std::string(c.fourcc), size_t{5}));

        ASSERT_EQ(Vantaro("decode " + a + " -o - --threads 3 --quiet > " + out).first, 0);
        File file = File::open_read(out);
        Y4mReader r(file);
        const Y4mFormat f = parse_y4m_header(c.header, "x");
        EXPECT_EQ(std::tie(r.format().width, r.format().interlaced), std::tie(f.width, f.interlaced));
        std::vector<uint8_t> got;
        for (int i = 0; i < 5; ++i) {
            ASSERT_TRUE(r.read(got));
            EXPECT_EQ(got, LibraryRoundTrip(avi.video().fourcc, c.fmt, f, Frame(f, i))) << "frame " << i;
        }
        EXPECT_FALSE(r.read(got));
    }
}

TEST(Cli, PngThroughAviMatchesTheLibraryBothWays) {
    const struct { int type; const char* fourcc; vantaro_format fmt; int channels; } cases[] = {
                 {PNG_COLOR_TYPE_RGB, "VTQ4", VANTARO_FORMAT_YUV444P, 3},
                 {PNG_COLOR_TYPE_GRAY_ALPHA, "VTQ5", VANTARO_FORMAT_YUVA444P, 4}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        const fs::path d = Dir();
        // Numbered from 1, with a gap before 5: three frames, odd-sized.
        for (int i : {1, 2, 3, 5})
            ASSERT_TRUE(testing::MakePng((d / ("in_00" + std::to_string(i) + ".png")).string(), testing::Pattern(c.type, 37, 21, i)));
        const std::string in = (d / "in_%03d.png").string(), avi = (d / "a.avi").string();
        ASSERT_EQ(Vantaro("encode " + in + " -o " + avi + " --threads 2 --quiet").first, 0);
        AviReader reader(avi);
        EXPECT_EQ(std::make_tuple(fourcc_text(reader.video().fourcc), reader.frames().size(), reader.video().interlaced),
                  std::make_tuple(std::string(c.fourcc), size_t{3}, false));
        // One picture on standard input codes as the sequence's first frame.
        ASSERT_EQ(Vantaro("encode - -o " + (d / "b.avi").string() + " --quiet < " + (d / "in_001.png").string()).first, 0);
        std::vector<uint8_t> first, single;
        EXPECT_TRUE(reader.read_frame(0, first) && AviReader((d / "b.avi").string()).read_frame(0, single) && first == single);

        // Each PNG out is the library's round trip of the picture read in,
        // through the tool's one RGB matrix.
        ASSERT_EQ(Vantaro("decode " + avi + " -o " + (d / "out_%d.png").string() + " --quiet").first, 0);
        EXPECT_FALSE(fs::exists(d / "out_3.png"));
        PngSequence source(in);
        const size_t n = size_t(source.format().width) * size_t(source.format().height);
        std::vector<uint8_t> frame;
        for (int i = 0; i < 3; ++i) {
            SCOPED_TRACE(i);
            ASSERT_TRUE(source.read(frame));
            const std::vector<uint8_t> expected = LibraryRoundTrip(reader.video().fourcc, c.fmt, source.format(), frame);
            const PngPicture png = read_png((d / ("out_" + std::to_string(i) + ".png")).string());
            ASSERT_EQ(png.channels, c.channels);
            std::vector<uint8_t> rgb(n * size_t(c.channels));
            for (size_t p = 0; p < n; ++p) {
                yuv_to_rgb(expected[p], expected[n + p], expected[2 * n + p], &rgb[p * size_t(c.channels)]);
                if (c.channels == 4) rgb[p * 4 + 3] = expected[3 * n + p];
            }
            EXPECT_EQ(png.pixels, rgb);
        }
    }
}

void WriteBytes(const fs::path& p, const std::string& bytes, size_t size) {
    std::ofstream(p, std::ios::binary).write(bytes.data(), std::streamsize(size));
}

TEST(Cli, FailuresSayWhatIsWrongAndLeaveNoOutput) {
    const fs::path d = Dir();
    WriteY4m(d / "ok.y4m", "YUV4MPEG2 W32 H16 F25:1 C420", 4);
    std::ofstream(d / "bad.y4m") << "YUV4MPEG2 W32 H16 C411\nFRAME\n";
    const std::string ok = (d / "ok.avi").string();
    ASSERT_EQ(Vantaro("encode " + (d / "ok.y4m").string() + " -o " + ok + " --quiet").first, 0);
    auto avi = ReadFile(ok);
    WriteBytes(d / "cut.avi", avi, avi.size() - 40);
    const auto y4mBytes = ReadFile(d / "ok.y4m");
    WriteBytes(d / "cut.y4m", y4mBytes, y4mBytes.size() - 1);
    // The second frame's slice lengths overwritten with nonsense.
    for (size_t i = 1; i < 12; ++i) avi[AviReader(ok).frames()[1].offset + i] = '\xff';
    WriteBytes(d / "damaged.avi", avi, avi.size());
    for (const auto& [name, type, width] : {std::tuple{"mixed_0", PNG_COLOR_TYPE_RGB, 8}, {"mixed_1", PNG_COLOR_TYPE_RGB, 9},
                                            {"alpha_0", PNG_COLOR_TYPE_RGB, 8}, {"alpha_1", PNG_COLOR_TYPE_RGBA, 8}})
        ASSERT_TRUE(testing::MakePng((d / (std::string(name) + ".png")).string(), testing::Pattern(type, width, 6, 0)));
    const auto png = ReadFile(d / "mixed_0.png");
    WriteBytes(d / "cut.png", png, png.size() / 2);
    const std::string o = (d / "out.y4m").string(), oa = (d / "out.avi").string(), op = (d / "out.png").string();
    const std::string y4m = (d / "ok.y4m").string();
    // {arguments, output that must not be left, exit code, message}
    const struct { std::string args, out; int code; const char* message; } cases[] = {
        {"encode " + (d / "bad.y4m").string() + " -o " + oa, oa, 1, "4:1:1 chroma is not supported; use 4:2:0, 4:2:2 or 4:4:4"},
        {"encode " + (d / "cut.y4m").string() + " -o " + oa, oa, 1, "cut.y4m: file ends in the middle of a frame"},
        {"encode " + (d / "missing.y4m").string() + " -o " + oa, oa, 1, "missing.y4m: cannot open"},
        {"encode " + y4m + " -o " + (d / "no" / "dir.avi").string(), "", 1, "dir.avi: cannot create"},
        {"encode " + y4m + " -o " + oa + " --fourcc VTQ8", oa, 1, "not a Vantaro variant"},
        {"encode " + y4m, oa, 2, "usage"},
        {"decode " + (d / "bad.y4m").string() + " -o " + o, o, 1, "not an AVI file"},
        {"encode " + (d / "mixed_%d.png").string() + " -o " + oa, oa, 1, "every picture must have one size"},
        {"encode " + (d / "alpha_%d.png").string() + " -o " + oa, oa, 1, "alpha_1.png: has alpha, but the sequence's first"},
        {"encode " + (d / "none_%d.png").string() + " -o " + oa, oa, 1, "no picture numbered 0 or 1"},
        {"encode " + (d / "cut.png").string() + " -o " + oa, oa, 1, "cut.png: damaged PNG"},
        {"encode " + y4m + " -o -", "", 2, "AVI output must be a file"},
        {"decode " + ok + " -o " + op, op, 1, "a PNG holds one picture, but 4 frames"},
        {"decode " + ok + " -o " + op + " --frames 1:1 --format yuv420p", op, 1, "PNG holds RGB or RGBA"},
        {"decode " + ok + " -o " + o + " --frames 5:6", o, 1, "expected FIRST:LAST within 0:3"},
        // Last, as it keeps the frames before the cut: damage has exit code 3.
        {"decode " + (d / "cut.avi").string() + " -o " + o, "", 3, "cut short"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args);
        const auto [code, err] = Vantaro(c.args);
        EXPECT_EQ(code, c.code);
        EXPECT_NE(err.find(c.message), std::string::npos) << err;
        EXPECT_TRUE(c.out.empty() || !fs::exists(c.out));
    }
    for (const auto& e : fs::directory_iterator(d)) EXPECT_EQ(e.path().string().find(".part-"), std::string::npos);

    // Damage is reported by frame and the other frames still come out.
    const auto damaged = Vantaro("decode " + (d / "damaged.avi").string() + " -o " + o + " --quiet");
    EXPECT_TRUE(damaged.first == 3 && damaged.second.find("frame 1:") != std::string::npos) << damaged.second;
    File in = File::open_read(o);
    Y4mReader r(in);
    std::vector<uint8_t> frame;
    int frames = 0;
    while (r.read(frame)) ++frames;
    EXPECT_EQ(frames, 4);
}

TEST(Cli, InterruptedWhileReadingAPipeLeavesNothingBehind) {
    const fs::path d = Dir();
    WriteY4m(d / "in.y4m", "YUV4MPEG2 W64 H32 F25:1 C420", 3);
    // The FIFO stays open for writing in the shell, so the encoder has read
    // the three frames and waits for more when the interrupt comes.
    const std::string script = "cd " + d.string() + " && mkfifo in.fifo && exec 3<>in.fifo && cat in.y4m >&3 && (" +
                               std::string(VANTARO_CLI_PATH) + " encode in.fifo -o out.avi --quiet & p=$!; n=0; " +
                               "until ls | grep -q part-; do sleep 0.05; n=$((n+1)); [ $n -gt 600 ] && break; done; " +
                               "ls > seen.txt; kill -INT $p; wait $p; echo $? > code.txt)";
    ASSERT_EQ(std::system(("sh -c '" + script + "'").c_str()), 0);
    EXPECT_NE(ReadFile(d / "seen.txt").find("out.avi.part-"), std::string::npos);
    EXPECT_EQ(ReadFile(d / "code.txt"), "130\n");  // killed by SIGINT, as a shell reports it
    for (const auto& e : fs::directory_iterator(d)) EXPECT_EQ(e.path().filename().string().find("out.avi"), std::string::npos);
}

// vantaro bench: a line for the chosen variant only, whose bits a pixel are
// the library's own for the same picture, and its refusals.
TEST(Cli, BenchPrintsTheChosenVariantWithTheLibrarysBitsPerPixel) {
    const char* header = "YUV4MPEG2 W64 H48 F25:1 Ip A1:1 C422";
    const fs::path d = Dir();
    WriteY4m(d / "in.y4m", header, 1);
    const auto [code, err] = Vantaro("bench " + (d / "in.y4m").string() + " --fourcc vtq3 > " + (d / "out.txt").string());
    const std::string out = ReadFile(d / "out.txt");
    ASSERT_EQ(code, 0) << err;
    const size_t at = out.find("\nVTQ3 ");
    ASSERT_NE(at, std::string::npos) << out;
    EXPECT_EQ(out.find("VTQ0"), std::string::npos) << "only the chosen variant runs";
    std::istringstream line(out.substr(at + 1, out.find('\n', at + 1) - at - 1));
    std::string variant, chroma;
    double encodeRate = 0, encodeBlocks = 0, decodeRate = 0, decodeBlocks = 0, bits = 0;
    line >> variant >> chroma >> encodeRate >> encodeBlocks >> decodeRate >> decodeBlocks >> bits;
    EXPECT_TRUE(encodeRate > 0 && decodeBlocks > 0) << out;
    std::vector<uint8_t> picture = Frame(parse_y4m_header(header, "x"), 0), frame;
    vantaro_picture p{};
    ASSERT_EQ(vantaro_picture_fill(&p, VANTARO_FORMAT_YUV422P, 64, 48, picture.data(), picture.size()), VANTARO_OK);
    ASSERT_EQ(test::Encode(VANTARO_FOURCC_VTQ3, p, 96, frame), VANTARO_OK);
    EXPECT_NEAR(bits, double(frame.size()) * 8.0 / (64 * 48), 0.0005);

    // One refusal: the option ranges and --fourcc share their parsers with
    // encode, whose refusals are covered above.
    const auto [refused, text] = Vantaro("bench " + (d / "in.y4m").string() + " --seconds 0");
    EXPECT_TRUE(refused == 1 && text.find("--seconds") != std::string::npos) << text;
}

}  // namespace
}  // namespace vantaro::tool
#endif
