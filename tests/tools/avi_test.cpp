// The AVI writer and reader: frames back byte for byte across OpenDML
// segments, and the files other software writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "avi/avi.h"
#include "avi/riff.h"
#include "io/file.h"
#include "support/pictures.h"

namespace vantaro::tool {
namespace {

std::string TempPath(const std::string& name) {
    return (std::filesystem::temp_directory_path() / ("vantaro_tools_" + name)).string();
}

// Odd and even lengths, including one empty frame.
std::vector<uint8_t> FrameBytes(size_t index) {
    return test::PatternBytes((index * 977 + 13) % 3001, uint32_t(index), 64);
}

TEST(Avi, WriterReaderRoundTripAcrossSegments) {
    AviVideo video;
    video.fourcc = fourcc("vtq2");
    std::tie(video.coded_width, video.coded_height, video.display_width, video.display_height) = std::tuple(1936, 1080, 1921, 1079);
    std::tie(video.rate, video.scale, video.top_field_first, video.size_image) = std::tuple(30000, 1001, false, 1234);
    // {RIFF size limit, frames, RIFF chunks expected (0: more than one)}
    for (const auto& [limit, frames, segments] : {std::tuple<uint64_t, size_t, size_t>{uint64_t(1) << 30, 40, 1},
                                                  {16384, 40, 0}, {4096, 7, 0}}) {
        SCOPED_TRACE(limit);
        const std::string path = TempPath("roundtrip.avi");
        {
            OutputFile out(path);
            AviWriter writer(out.file(), video, limit);
            for (size_t i = 0; i < frames; ++i) writer.add_frame(FrameBytes(i).data(), uint32_t(FrameBytes(i).size()));
            writer.finish();
            out.commit();
        }
        File f = File::open_read(path);
        std::vector<uint8_t> all(f.size());
        f.read_some(all.data(), all.size());
        size_t riffs = 0, avix = 0;
        for (uint64_t at = 0; at + 12 <= all.size(); at += 8 + get32(&all[at + 4]) + (get32(&all[at + 4]) & 1)) {
            ASSERT_EQ(get32(&all[at]), fourcc("RIFF"));
            ++riffs;
            avix += get32(&all[at + 8]) == fourcc("AVIX");
            EXPECT_TRUE(limit >= all.size() || get32(&all[at + 4]) + 8u <= limit + 3008) << at;
        }
        EXPECT_EQ(riffs, avix + 1);
        EXPECT_TRUE(segments ? riffs == segments : riffs > 1) << riffs;

        AviReader reader(path);
        const AviVideo& v = reader.video();
        // The writer stores the FourCC in capitals.
        EXPECT_EQ(std::tie(v.fourcc, v.coded_width, v.coded_height, v.display_width, v.display_height, v.rate, v.scale,
                           v.interlaced, v.top_field_first),
                  std::make_tuple(fourcc("VTQ2"), 1936, 1080, 1921, 1079, 30000u, 1001u, true, false));
        ASSERT_EQ(std::make_tuple(reader.truncated(), reader.frames().size()), std::make_tuple(false, frames));
        std::vector<uint8_t> got;
        size_t largest = 0;
        for (size_t i = 0; i < frames; ++i) {
            ASSERT_TRUE(reader.read_frame(i, got));
            EXPECT_EQ(got, FrameBytes(i)) << "frame " << i;
            largest = std::max(largest, got.size());
        }
        EXPECT_EQ(v.size_image, largest);  // the largest frame beats the given bound
        std::filesystem::remove(path);
    }
}

// An AVI laid out the way other programs write them: an audio stream first,
// JUNK, no handler, a top-down picture, optional rec lists and a partial index.
std::vector<uint8_t> ForeignAvi(bool rec_lists, bool with_index) {
    Packer p;
    std::vector<size_t> open;  // where each open list's size goes
    const auto begin = [&](const char (&type)[5], const char (&name)[5]) {
        p.u32(fourcc(type)), open.push_back(p.bytes.size()), p.u32(0), p.u32(fourcc(name));
    };
    const auto end = [&] {
        const size_t size = p.bytes.size() - open.back() - 4;
        for (int i = 0; i < 4; ++i) p.bytes[open.back() + size_t(i)] = uint8_t(size >> (8 * i));
        open.pop_back();
    };
    // A chunk of these words, then `tail`, padded to even.
    const auto chunk = [&](const char (&id)[5], std::initializer_list<uint32_t> words, const std::vector<uint8_t>& tail) {
        p.u32(fourcc(id)), p.u32(uint32_t(words.size() * 4 + tail.size()));
        for (const uint32_t w : words) p.u32(w);
        p.bytes.insert(p.bytes.end(), tail.begin(), tail.end()), p.zeros(tail.size() & 1);
    };
    const auto zeros = [](size_t n) { return std::vector<uint8_t>(n); };
    begin("RIFF", "AVI "), begin("LIST", "hdrl");
    chunk("avih", {}, zeros(56)), chunk("JUNK", {}, zeros(3));
    begin("LIST", "strl"), chunk("strh", {fourcc("auds")}, zeros(52)), end();
    begin("LIST", "strl");
    chunk("strh", {fourcc("vids"), 0, 0, 0, 0, 1, 24}, zeros(28));  // no handler; rate 24
    // 64 wide, 16 high top-down (a negative height), one plane of 24 bits.
    chunk("strf", {40, 64, uint32_t(-16), 1 | 24 << 16, fourcc("vtq0")}, zeros(20));
    end(), end();
    begin("LIST", "movi");
    for (size_t i = 0; i < 5; ++i) {
        if (rec_lists) begin("LIST", "rec ");
        chunk("00wb", {}, std::vector<uint8_t>(7, 9));
        chunk("01dc", {}, FrameBytes(i + 1));
        if (rec_lists) end();
    }
    end();
    if (with_index) chunk("idx1", {}, zeros(16));  // partial
    end();
    return p.bytes;
}

TEST(Avi, ReadsForeignLayoutsAndCutFiles) {
    const std::string path = TempPath("foreign.avi");
    // {rec lists, index, bytes cut from the end, frames, truncated}
    for (const auto& [rec, index, cut, frames, truncated] :
         {std::tuple{false, false, 0, 5u, false}, {true, true, 0, 5u, false}, {false, false, 100, 4u, true},
          {true, false, 900, 4u, true}}) {
        SCOPED_TRACE(rec * 100 + index * 10 + cut);
        const auto bytes = ForeignAvi(rec, index);
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size() - size_t(cut)));
        AviReader reader(path);
        const AviVideo& v = reader.video();
        EXPECT_EQ(fourcc_upper(v.fourcc), fourcc("VTQ0"));
        EXPECT_EQ(std::tie(v.coded_width, v.coded_height, v.display_height, v.rate), std::make_tuple(64, 16, 16, 24u));
        EXPECT_EQ(reader.truncated(), truncated);
        ASSERT_EQ(reader.frames().size(), frames);
        std::vector<uint8_t> got;
        for (size_t i = 0; i < frames; ++i) {
            ASSERT_TRUE(reader.read_frame(i, got));
            EXPECT_EQ(got, FrameBytes(i + 1));
        }
    }
    std::ofstream(path, std::ios::binary) << "RIFF\x04\0\0\0WAVE";
    EXPECT_THROW(AviReader{path}, UserError);
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace vantaro::tool
