// YUV4MPEG2 headers as other tools write them (streams, whole and cut, run
// through the command line in cli_test.cpp).
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "input/y4m.h"

namespace vantaro::tool {
namespace {

TEST(Y4m, ParsesHeaders) {
    const struct Case {
        const char* line; int32_t w, h; uint32_t rate, scale; Chroma chroma; bool interlaced, tff; size_t frame_bytes;
    } cases[] = {
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

}  // namespace
}  // namespace vantaro::tool
