// The AVI writer and reader: frames back byte for byte across OpenDML
// segments, and the files other software writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "avi/avi.h"
#include "avi/riff.h"
#include "io/file.h"

namespace vantaro::tool {
namespace {

std::string TempPath(const std::string& name) {
    return (std::filesystem::temp_directory_path() / ("vantaro_tools_" + name)).string();
}

std::vector<uint8_t> FrameBytes(size_t index) {
    // Odd and even lengths, including one empty frame.
    std::vector<uint8_t> bytes((index * 977 + 13) % 3001);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 31 + index * 7);
    return bytes;
}

AviVideo Video() {
    AviVideo v;
    v.fourcc = fourcc("vtq2");
    v.coded_width = 1936;
    v.coded_height = 1080;
    v.display_width = 1921;
    v.display_height = 1079;
    v.rate = 30000;
    v.scale = 1001;
    v.top_field_first = false;
    v.size_image = 1234;
    return v;
}

std::vector<uint8_t> ReadAll(const std::string& path) {
    File f = File::open_read(path);
    std::vector<uint8_t> all(f.size());
    f.read_some(all.data(), all.size());
    return all;
}

TEST(Avi, WriterReaderRoundTripAcrossSegments) {
    struct Case {
        uint64_t riff_limit;
        size_t frames;
        size_t segments;  // RIFF chunks expected
    };
    for (const Case c : {Case{uint64_t(1) << 30, 40, 1}, Case{16384, 40, 0}, Case{4096, 7, 0}}) {
        SCOPED_TRACE(c.riff_limit);
        const std::string path = TempPath("roundtrip.avi");
        {
            OutputFile out(path);
            AviWriter writer(out.file(), Video(), c.riff_limit);
            for (size_t i = 0; i < c.frames; ++i) {
                const auto b = FrameBytes(i);
                writer.add_frame(b.data(), uint32_t(b.size()));
            }
            writer.finish();
            out.commit();
        }
        const std::vector<uint8_t> all = ReadAll(path);
        size_t riffs = 0, avix = 0;
        for (uint64_t at = 0; at + 12 <= all.size(); at += 8 + get32(&all[at + 4]) + (get32(&all[at + 4]) & 1)) {
            ASSERT_EQ(get32(&all[at]), fourcc("RIFF"));
            ++riffs;
            avix += get32(&all[at + 8]) == fourcc("AVIX");
            if (c.riff_limit < all.size()) {
                EXPECT_LE(get32(&all[at + 4]) + 8u, c.riff_limit + 3008);
            }
        }
        EXPECT_EQ(riffs, avix + 1);
        EXPECT_TRUE(c.segments ? riffs == c.segments : riffs > 1) << riffs;

        AviReader reader(path);
        EXPECT_FALSE(reader.truncated());
        const AviVideo& v = reader.video();
        const AviVideo w = Video();
        EXPECT_EQ(v.fourcc, fourcc("VTQ2"));
        EXPECT_EQ(std::tie(v.coded_width, v.coded_height, v.display_width, v.display_height, v.rate, v.scale),
                  std::tie(w.coded_width, w.coded_height, w.display_width, w.display_height, w.rate, w.scale));
        EXPECT_TRUE(v.interlaced);
        EXPECT_FALSE(v.top_field_first);
        size_t largest = 0;
        for (size_t i = 0; i < c.frames; ++i) largest = std::max(largest, FrameBytes(i).size());
        EXPECT_EQ(v.size_image, largest);  // the largest frame beats the given bound
        ASSERT_EQ(reader.frames().size(), c.frames);
        std::vector<uint8_t> got;
        for (size_t i = 0; i < c.frames; ++i) {
            ASSERT_TRUE(reader.read_frame(i, got));
            EXPECT_EQ(got, FrameBytes(i)) << "frame " << i;
        }
        std::remove(path.c_str());
    }
}

// Builds an AVI by hand the way other programs lay them out.
struct Builder {
    Packer p;
    std::vector<size_t> open;
    void begin(const char (&type)[5], const char (&name)[5]) {
        p.u32(fourcc(type));
        open.push_back(p.bytes.size());
        p.u32(0);
        p.u32(fourcc(name));
    }
    void end() {
        const size_t at = open.back();
        open.pop_back();
        const uint32_t size = uint32_t(p.bytes.size() - at - 4);
        for (int i = 0; i < 4; ++i) p.bytes[at + size_t(i)] = uint8_t(size >> (8 * i));
    }
    void chunk(uint32_t id, const std::vector<uint8_t>& body) {
        p.u32(id);
        p.u32(uint32_t(body.size()));
        p.bytes.insert(p.bytes.end(), body.begin(), body.end());
        if (body.size() & 1) p.u8(0);
    }
};

std::vector<uint8_t> ForeignAvi(bool rec_lists, bool with_index) {
    Builder b;
    b.begin("RIFF", "AVI ");
    b.begin("LIST", "hdrl");
    b.chunk(fourcc("avih"), std::vector<uint8_t>(56));
    b.chunk(fourcc("JUNK"), std::vector<uint8_t>(3));
    b.begin("LIST", "strl");
    Packer strh;
    strh.u32(fourcc("auds"));
    strh.zeros(52);
    b.chunk(fourcc("strh"), strh.bytes);
    b.end();
    b.begin("LIST", "strl");
    Packer vs;
    vs.u32(fourcc("vids"));
    vs.u32(0);  // no handler
    vs.zeros(12);
    vs.u32(1);
    vs.u32(24);
    vs.zeros(28);
    b.chunk(fourcc("strh"), vs.bytes);
    Packer bi;
    bi.u32(40);
    bi.u32(64);
    bi.u32(uint32_t(-16));  // top-down: a negative height
    bi.u16(1);
    bi.u16(24);
    bi.u32(fourcc("vtq0"));
    bi.zeros(20);
    b.chunk(fourcc("strf"), bi.bytes);
    b.end();
    b.end();
    b.begin("LIST", "movi");
    for (size_t i = 0; i < 5; ++i) {
        if (rec_lists) b.begin("LIST", "rec ");
        b.chunk(fourcc("00wb"), std::vector<uint8_t>(7, 9));
        b.chunk(fourcc("01dc"), FrameBytes(i + 1));
        if (rec_lists) b.end();
    }
    b.end();
    if (with_index) b.chunk(fourcc("idx1"), std::vector<uint8_t>(16));  // partial
    b.end();
    return b.p.bytes;
}

void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

TEST(Avi, ReadsForeignLayoutsAndCutFiles) {
    const std::string path = TempPath("foreign.avi");
    struct Case {
        bool rec, index;
        size_t cut;  // bytes dropped from the end
        size_t frames;
        bool truncated;
    };
    for (const Case c : {Case{false, false, 0, 5, false}, Case{true, true, 0, 5, false},
                         Case{false, false, 100, 4, true}, Case{true, false, 900, 4, true}}) {
        SCOPED_TRACE(c.rec * 100 + c.index * 10 + c.cut);
        auto bytes = ForeignAvi(c.rec, c.index);
        bytes.resize(bytes.size() - c.cut);
        WriteBytes(path, bytes);
        AviReader reader(path);
        const AviVideo& v = reader.video();
        EXPECT_EQ(fourcc_upper(v.fourcc), fourcc("VTQ0"));
        EXPECT_EQ(std::tie(v.coded_width, v.coded_height, v.display_height, v.rate), std::make_tuple(64, 16, 16, 24u));
        EXPECT_EQ(reader.truncated(), c.truncated);
        ASSERT_EQ(reader.frames().size(), c.frames);
        std::vector<uint8_t> got;
        for (size_t i = 0; i < c.frames; ++i) {
            ASSERT_TRUE(reader.read_frame(i, got));
            EXPECT_EQ(got, FrameBytes(i + 1));
        }
    }
    WriteBytes(path, {'R', 'I', 'F', 'F', 4, 0, 0, 0, 'W', 'A', 'V', 'E'});
    EXPECT_THROW(AviReader{path}, UserError);
    std::remove(path.c_str());
}

}  // namespace
}  // namespace vantaro::tool
