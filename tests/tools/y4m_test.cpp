// YUV4MPEG2 headers as other tools write them, and a frame round trip.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <tuple>

#include "input/y4m.h"

namespace vantaro::tool {
namespace {

TEST(Y4m, ParsesHeaders) {
    struct Case {
        const char* line;
        int32_t w, h;
        uint32_t rate, scale;
        Chroma chroma;
        bool interlaced, tff;
        size_t frame_bytes;
    };
    const Case cases[] = {
        {"YUV4MPEG2 W1920 H1080 F25:1 It A1:1 C420jpeg", 1920, 1080, 25, 1, Chroma::k420, true, true, 1920 * 1080 * 3 / 2},
        {"YUV4MPEG2 W7 H5 F30000:1001 Ib C420paldv XYSCSS=420", 7, 5, 30000, 1001, Chroma::k420, true, false, 35 + 2 * 12},
        {"YUV4MPEG2 W16 H2", 16, 2, 25, 1, Chroma::k420, false, true, 48},
        {"YUV4MPEG2 C422 H4 W9 Ip", 9, 4, 25, 1, Chroma::k422, false, true, 36 + 2 * 20},
        {"YUV4MPEG2 W4 H4 C444", 4, 4, 25, 1, Chroma::k444, false, true, 48},
        {"YUV4MPEG2 W4 H4 C444alpha", 4, 4, 25, 1, Chroma::k444Alpha, false, true, 64},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const Y4mFormat f = parse_y4m_header(c.line, "in.y4m");
        EXPECT_EQ(std::tie(f.width, f.height, f.rate, f.scale, f.chroma, f.interlaced, f.top_field_first),
                  std::tie(c.w, c.h, c.rate, c.scale, c.chroma, c.interlaced, c.tff));
        EXPECT_EQ(f.frame_bytes(), c.frame_bytes);
        // What we write reads back the same.
        std::string again = y4m_header(f);
        again.pop_back();
        const Y4mFormat g = parse_y4m_header(again, "out.y4m");
        EXPECT_EQ(std::make_tuple(g.frame_bytes(), g.interlaced, g.top_field_first, g.rate * f.scale),
                  std::make_tuple(f.frame_bytes(), f.interlaced, f.top_field_first, f.rate * g.scale));
    }
}

TEST(Y4m, RejectsBadHeadersInTheUsersTerms) {
    const std::pair<const char*, const char*> cases[] = {
        {"YUV4MPEG2 W16 H16 Cmono", "in.y4m: greyscale (mono) chroma is not supported"},  // 4:1:1: cli_test
        {"YUV4MPEG W16 H16", "in.y4m: not a YUV4MPEG2 stream"},
        {"YUV4MPEG2 W16", "lacks a valid width (W) or height (H)"},
        {"YUV4MPEG2 W0 H16", "lacks a valid width (W) or height (H)"},
        {"YUV4MPEG2 W16 H16 F25", "frame rate '25' is not a ratio"},
        {"YUV4MPEG2 W20000 H16", "larger than 16384x16384"},
        {"YUV4MPEG2 W16 H16 Im", "mixed field order"},
    };
    for (const auto& [line, message] : cases) {
        SCOPED_TRACE(line);
        try {
            parse_y4m_header(line, "in.y4m");
            ADD_FAILURE() << "accepted";
        } catch (const UserError& e) {
            EXPECT_NE(std::string(e.what()).find(message), std::string::npos) << e.what();
        }
    }
}

// Whole streams round-trip through the command line (cli_test.cpp); a
// stream cut one byte short reports its last frame rather than return it.
TEST(Y4m, CutStreamsAreReported) {
    const std::string path = (std::filesystem::temp_directory_path() / "vantaro_tools_rt.y4m").string();
    const Y4mFormat f = parse_y4m_header("YUV4MPEG2 W5 H3 F24:1 C420", "x");
    const std::vector<uint8_t> frame(f.frame_bytes(), 7);
    {
        OutputFile out(path);
        Y4mWriter w(out.file(), f);
        for (int i = 0; i < 2; ++i) w.write(frame.data());
        out.commit();
    }
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
    File in = File::open_read(path);
    Y4mReader r(in);
    std::vector<uint8_t> got;
    ASSERT_TRUE(r.read(got));
    EXPECT_EQ(got, frame);
    EXPECT_THROW(r.read(got), UserError);
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace vantaro::tool
