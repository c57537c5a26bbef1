// The vantaro program run as a user runs it: round trips against the
// library's own, pipes, and every failure with its message, exit code and no
// file left under the output's name.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "avi/avi.h"
#include "avi/riff.h"
#include "convert/colour.h"
#include "input/png_reader.h"
#include "input/y4m.h"
#include "png_maker.h"
#include "vantaro/vantaro.h"

#ifdef VANTARO_CLI_PATH
namespace vantaro::tool {
namespace {

namespace fs = std::filesystem;

struct Outcome {
    int code;
    std::string err;
};

// Runs the program through the shell with stderr captured.
Outcome Vantaro(const std::string& args) {
    // One capture file per test: ctest runs the cases side by side.
    const fs::path err = fs::temp_directory_path() /
                         ("vantaro_cli_stderr_" +
                          std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) +
                          ".txt");
    const std::string cmd = std::string(VANTARO_CLI_PATH) + " " + args + " 2>" + err.string();
    const int status = std::system(cmd.c_str());
    std::ifstream in(err);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, text};
}

// A fresh folder per test, so nothing another test left can pass for output.
fs::path Dir() {
    const fs::path d = fs::temp_directory_path() / "vantaro_cli_test" /
                       ::testing::UnitTest::GetInstance()->current_test_info()->name();
    fs::remove_all(d);
    fs::create_directories(d);
    return d;
}

std::vector<uint8_t> Frame(const Y4mFormat& f, int index) {
    std::vector<uint8_t> b(f.frame_bytes());
    for (size_t i = 0; i < b.size(); ++i) b[i] = uint8_t((i % size_t(f.width)) * 3 + (i / size_t(f.width)) * 5 + index * 17);
    return b;
}

void WriteY4m(const fs::path& p, const char* header, int frames) {
    std::string line = header;
    const Y4mFormat f = parse_y4m_header(line, "x");
    std::ofstream out(p, std::ios::binary);
    out << line << '\n';
    for (int i = 0; i < frames; ++i) {
        const auto b = Frame(f, i);
        out << "FRAME\n";
        out.write(reinterpret_cast<const char*>(b.data()), std::streamsize(b.size()));
    }
}

std::vector<uint8_t> ReadFile(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The library's own round trip of one frame, in the input's planar format.
std::vector<uint8_t> LibraryRoundTrip(uint32_t fourcc, vantaro_format fmt, const Y4mFormat& f, std::vector<uint8_t> in) {
    vantaro_encoder* enc = nullptr;
    vantaro_decoder* dec = nullptr;
    EXPECT_EQ(vantaro_encoder_create(fourcc, f.width, f.height, 96, nullptr, &enc), VANTARO_OK);
    EXPECT_EQ(vantaro_decoder_create(fourcc, f.width, f.height, nullptr, &dec), VANTARO_OK);
    vantaro_picture pic;
    EXPECT_EQ(vantaro_picture_fill(&pic, fmt, f.width, f.height, in.data(), in.size()), VANTARO_OK);
    std::vector<uint8_t> coded(vantaro_frame_bound(fourcc, f.width, f.height));
    size_t n = 0;
    EXPECT_EQ(vantaro_encode(enc, &pic, coded.data(), coded.size(), &n), VANTARO_OK);
    std::vector<uint8_t> out(in.size());
    EXPECT_EQ(vantaro_picture_fill(&pic, fmt, f.width, f.height, out.data(), out.size()), VANTARO_OK);
    EXPECT_EQ(vantaro_decode(dec, coded.data(), n, &pic, nullptr), VANTARO_OK);
    vantaro_encoder_destroy(enc);
    vantaro_decoder_destroy(dec);
    return out;
}

TEST(Cli, Y4mThroughAviMatchesTheLibraryAtEveryThreadCount) {
    struct Case {
        const char* header;
        const char* fourcc;
        vantaro_format fmt;
    };
    const Case cases[] = {
        {"YUV4MPEG2 W37 H21 F30000:1001 It C420mpeg2", "VTQ0", VANTARO_FORMAT_YUV420P},
        {"YUV4MPEG2 W48 H16 F25:1 Ib C422", "VTQ2", VANTARO_FORMAT_YUV422P},
        {"YUV4MPEG2 W33 H18 F24:1 Ip C444alpha", "VTQ5", VANTARO_FORMAT_YUVA444P},
    };
    const fs::path d = Dir();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.header);
        WriteY4m(d / "in.y4m", c.header, 5);
        ASSERT_EQ(Vantaro("encode " + (d / "in.y4m").string() + " -o " + (d / "a.avi").string() + " --threads 1 --quiet").code, 0);
        ASSERT_EQ(Vantaro("encode - -o " + (d / "b.avi").string() + " --threads=3 --quiet < " + (d / "in.y4m").string()).code, 0);
        EXPECT_EQ(ReadFile(d / "a.avi"), ReadFile(d / "b.avi"));
        AviReader avi((d / "a.avi").string());
        EXPECT_EQ(avi.video().fourcc, fourcc_upper(uint32_t(c.fourcc[0]) | uint32_t(c.fourcc[1]) << 8 | uint32_t(c.fourcc[2]) << 16 | uint32_t(c.fourcc[3]) << 24));
        ASSERT_EQ(avi.frames().size(), 5u);

        ASSERT_EQ(Vantaro("decode " + (d / "a.avi").string() + " -o - --quiet > " + (d / "out.y4m").string()).code, 0);
        File in = File::open_read((d / "out.y4m").string());
        Y4mReader r(in);
        const Y4mFormat f = parse_y4m_header(c.header, "x");
        EXPECT_EQ(r.format().width, f.width);
        EXPECT_EQ(r.format().interlaced, f.interlaced);
        std::vector<uint8_t> got;
        for (int i = 0; i < 5; ++i) {
            ASSERT_TRUE(r.read(got));
            EXPECT_EQ(got, LibraryRoundTrip(avi.video().fourcc, c.fmt, f, Frame(f, i))) << "frame " << i;
        }
        EXPECT_FALSE(r.read(got));
    }
}

TEST(Cli, PngThroughAviMatchesTheLibraryBothWays) {
    const struct Case {
        int type;
        const char* fourcc;
        vantaro_format fmt;
        int channels_out;
    } cases[] = {
        {PNG_COLOR_TYPE_GRAY, "VTQ4", VANTARO_FORMAT_YUV444P, 3},
        {PNG_COLOR_TYPE_RGB, "VTQ4", VANTARO_FORMAT_YUV444P, 3},
        {PNG_COLOR_TYPE_GRAY_ALPHA, "VTQ5", VANTARO_FORMAT_YUVA444P, 4},
        {PNG_COLOR_TYPE_RGB_ALPHA, "VTQ5", VANTARO_FORMAT_YUVA444P, 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type);
        const fs::path d = Dir();
        // Numbered from 1, with a gap before 5: three frames, odd-sized.
        for (int i : {1, 2, 3, 5})
            ASSERT_TRUE(testing::MakePng((d / ("in_00" + std::to_string(i) + ".png")).string(),
                                         testing::Pattern(c.type, 37, 21, i)));
        const std::string in = (d / "in_%03d.png").string(), avi = (d / "a.avi").string();
        ASSERT_EQ(Vantaro("encode " + in + " -o " + avi + " --threads 2 --quiet").code, 0);
        AviReader reader(avi);
        EXPECT_EQ(fourcc_text(reader.video().fourcc), c.fourcc);
        ASSERT_EQ(reader.frames().size(), 3u);
        EXPECT_FALSE(reader.video().interlaced);
        // One picture on standard input codes as the sequence's first frame.
        ASSERT_EQ(Vantaro("encode - -o " + (d / "b.avi").string() + " --quiet < " + (d / "in_001.png").string()).code, 0);
        AviReader single((d / "b.avi").string());
        ASSERT_EQ(single.frames().size(), 1u);
        std::vector<uint8_t> first_a, first_b;
        ASSERT_TRUE(reader.read_frame(0, first_a));
        ASSERT_TRUE(single.read_frame(0, first_b));
        EXPECT_EQ(first_a, first_b);

        ASSERT_EQ(Vantaro("decode " + avi + " -o " + (d / "one.y4m").string() + " --threads 1 --quiet").code, 0);
        ASSERT_EQ(Vantaro("decode " + avi + " -o " + (d / "three.y4m").string() + " --threads 3 --quiet").code, 0);
        EXPECT_EQ(ReadFile(d / "one.y4m"), ReadFile(d / "three.y4m"));
        ASSERT_EQ(Vantaro("decode " + avi + " -o " + (d / "out_%d.png").string() + " --quiet").code, 0);
        EXPECT_FALSE(fs::exists(d / "out_3.png"));

        File y4m_file = File::open_read((d / "one.y4m").string());
        Y4mReader decoded(y4m_file);
        PngSequence source(in);
        const Y4mFormat& f = source.format();
        const size_t n = size_t(f.width) * size_t(f.height);
        std::vector<uint8_t> frame, got;
        for (int i = 0; i < 3; ++i) {
            SCOPED_TRACE(i);
            ASSERT_TRUE(source.read(frame));
            const std::vector<uint8_t> expected = LibraryRoundTrip(reader.video().fourcc, c.fmt, f, frame);
            ASSERT_TRUE(decoded.read(got));
            EXPECT_EQ(got, expected);
            // The PNG is the same frame through the tool's one RGB matrix.
            const PngPicture png = read_png((d / ("out_" + std::to_string(i) + ".png")).string());
            ASSERT_EQ(png.channels, c.channels_out);
            std::vector<uint8_t> rgb(n * size_t(c.channels_out));
            for (size_t p = 0; p < n; ++p) {
                yuv_to_rgb(expected[p], expected[n + p], expected[2 * n + p], &rgb[p * size_t(c.channels_out)]);
                if (c.channels_out == 4) rgb[p * 4 + 3] = expected[3 * n + p];
            }
            EXPECT_EQ(png.pixels, rgb);
        }
    }
}

TEST(Cli, FailuresSayWhatIsWrongAndLeaveNoOutput) {
    const fs::path d = Dir();
    WriteY4m(d / "ok.y4m", "YUV4MPEG2 W32 H16 F25:1 C420", 4);
    {
        std::ofstream bad(d / "bad.y4m");
        bad << "YUV4MPEG2 W32 H16 C411\nFRAME\n";
    }
    ASSERT_EQ(Vantaro("encode " + (d / "ok.y4m").string() + " -o " + (d / "ok.avi").string() + " --quiet").code, 0);
    auto avi = ReadFile(d / "ok.avi");
    {
        std::ofstream cut(d / "cut.avi", std::ios::binary);
        cut.write(reinterpret_cast<const char*>(avi.data()), std::streamsize(avi.size() - 40));
    }
    AviReader reader((d / "ok.avi").string());
    // Overwrite the second frame's slice lengths with nonsense.
    for (size_t i = 1; i < 12; ++i) avi[reader.frames()[1].offset + i] = 0xff;
    {
        std::ofstream bad(d / "damaged.avi", std::ios::binary);
        bad.write(reinterpret_cast<const char*>(avi.data()), std::streamsize(avi.size()));
    }
    struct Case {
        std::string args;
        std::string out;
        int code;
        std::string message;
    };
    ASSERT_TRUE(testing::MakePng((d / "mixed_0.png").string(), testing::Pattern(PNG_COLOR_TYPE_RGB, 8, 6, 0)));
    ASSERT_TRUE(testing::MakePng((d / "mixed_1.png").string(), testing::Pattern(PNG_COLOR_TYPE_RGB, 9, 6, 1)));
    ASSERT_TRUE(testing::MakePng((d / "alpha_0.png").string(), testing::Pattern(PNG_COLOR_TYPE_RGB, 8, 6, 0)));
    ASSERT_TRUE(testing::MakePng((d / "alpha_1.png").string(), testing::Pattern(PNG_COLOR_TYPE_RGBA, 8, 6, 1)));
    const auto png = ReadFile(d / "mixed_0.png");
    {
        std::ofstream cut(d / "cut.png", std::ios::binary);
        cut.write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size() / 2));
    }
    const std::string o = (d / "out.y4m").string(), oa = (d / "out.avi").string(), op = (d / "out.png").string();
    const std::string ok = (d / "ok.avi").string();
    const Case cases[] = {
        {"encode " + (d / "bad.y4m").string() + " -o " + oa, oa, 1, "4:1:1 chroma is not supported; use 4:2:0, 4:2:2 or 4:4:4"},
        {"encode " + (d / "missing.y4m").string() + " -o " + oa, oa, 1, "missing.y4m: cannot open"},
        {"encode " + (d / "ok.y4m").string() + " -o " + (d / "no" / "dir.avi").string(), "", 1, "dir.avi: cannot create"},
        {"encode " + (d / "ok.y4m").string() + " -o " + oa + " --fourcc VTQ8", oa, 1, "not a Vantaro variant"},
        {"encode " + (d / "ok.y4m").string(), oa, 2, "usage"},
        {"decode " + (d / "missing.avi").string() + " -o " + o, o, 1, "cannot open"},
        {"decode " + (d / "bad.y4m").string() + " -o " + o, o, 1, "not an AVI file"},
        {"encode " + (d / "mixed_%d.png").string() + " -o " + oa, oa, 1, "every picture must have one size"},
        {"encode " + (d / "alpha_%d.png").string() + " -o " + oa, oa, 1, "alpha_1.png: has alpha, but the sequence's first"},
        {"encode " + (d / "none_%d.png").string() + " -o " + oa, oa, 1, "no picture numbered 0 or 1"},
        {"encode " + (d / "cut.png").string() + " -o " + oa, oa, 1, "cut.png: damaged PNG"},
        {"encode " + (d / "ok.y4m").string() + " -o -", "", 2, "AVI output must be a file"},
        {"decode " + ok + " -o " + op, op, 1, "a PNG holds one picture, but 4 frames"},
        {"decode " + ok + " -o " + op + " --frames 1:1 --format yuv420p", op, 1, "PNG holds RGB or RGBA"},
        {"decode " + ok + " -o " + o + " --frames 5:6", o, 1, "expected FIRST:LAST within 0:3"},
        {"decode " + ok + " -o " + (d / "no" / "dir.y4m").string(), "", 1, "dir.y4m: cannot create"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args);
        const Outcome r = Vantaro(c.args);
        EXPECT_EQ(r.code, c.code);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        if (!c.out.empty()) {
            EXPECT_FALSE(fs::exists(c.out));
        }
    }
    for (const auto& e : fs::directory_iterator(d)) EXPECT_EQ(e.path().string().find(".part-"), std::string::npos);

    // Damage is reported by frame and the other frames still come out.
    const Outcome damaged = Vantaro("decode " + (d / "damaged.avi").string() + " -o " + o + " --quiet");
    EXPECT_EQ(damaged.code, 3);
    EXPECT_NE(damaged.err.find("frame 1:"), std::string::npos) << damaged.err;
    File in = File::open_read(o);
    Y4mReader r(in);
    std::vector<uint8_t> frame;
    int frames = 0;
    while (r.read(frame)) ++frames;
    EXPECT_EQ(frames, 4);
    const Outcome cut = Vantaro("decode " + (d / "cut.avi").string() + " -o " + o + " --quiet");
    EXPECT_EQ(cut.code, 3);
    EXPECT_NE(cut.err.find("cut short"), std::string::npos) << cut.err;
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
    const auto seen = ReadFile(d / "seen.txt");
    EXPECT_NE(std::string(seen.begin(), seen.end()).find("out.avi.part-"), std::string::npos);
    const auto code = ReadFile(d / "code.txt");
    EXPECT_EQ(std::string(code.begin(), code.end()), "130\n");  // killed by SIGINT, as a shell reports it
    for (const auto& e : fs::directory_iterator(d)) EXPECT_EQ(e.path().filename().string().find("out.avi"), std::string::npos);
}

}  // namespace
}  // namespace vantaro::tool
#endif
