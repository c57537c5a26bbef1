// The native door's calls that need no codec instance: coded size, planar
// picture geometry, and the frame header check against the length given.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "vantaro/vantaro.h"

namespace {

void PutU24(std::vector<uint8_t>& bytes, size_t at, uint32_t value) {
    bytes[at] = static_cast<uint8_t>(value);
    bytes[at + 1] = static_cast<uint8_t>(value >> 8);
    bytes[at + 2] = static_cast<uint8_t>(value >> 16);
}

// A frame of quality 90 whose eight slices have the given lengths, each slice
// holding its length then zero bytes; the offset is the first field's end.
std::vector<uint8_t> FrameWithSlices(const uint32_t (&lengths)[8]) {
    size_t total = 4;
    for (uint32_t length : lengths) total += length;
    std::vector<uint8_t> bytes(total, 0);
    bytes[0] = 90;
    size_t pos = 4;
    for (int slice = 0; slice < 8; ++slice) {
        if (slice == 4) PutU24(bytes, 1, static_cast<uint32_t>(pos));
        PutU24(bytes, pos, lengths[slice]);
        pos += lengths[slice];
    }
    return bytes;
}

TEST(ApiBasics, CodedSizeRoundsWidthTo16AndHeightTo2) {
    struct Case { int32_t w, h, cw, ch; vantaro_status status; };
    const Case cases[] = {
        {1, 1, 16, 2, VANTARO_OK},     {16, 2, 16, 2, VANTARO_OK},
        {17, 3, 32, 4, VANTARO_OK},    {1920, 1080, 1920, 1080, VANTARO_OK},
        {16384, 16383, 16384, 16384, VANTARO_OK},
        {0, 4, 0, 0, VANTARO_ERROR_BAD_SIZE}, {4, -2, 0, 0, VANTARO_ERROR_BAD_SIZE},
        {16385, 4, 0, 0, VANTARO_ERROR_BAD_SIZE},
    };
    for (const Case& c : cases) {
        int32_t cw = 0, ch = 0;
        EXPECT_EQ(vantaro_coded_size(c.w, c.h, &cw, &ch), c.status) << c.w << "x" << c.h;
        EXPECT_EQ(cw, c.cw);
        EXPECT_EQ(ch, c.ch);
    }
    EXPECT_EQ(vantaro_coded_size(4, 4, nullptr, nullptr), VANTARO_ERROR_INVALID_ARGUMENT);
}

TEST(ApiBasics, PlanarPicturesLayPlanesBackToBack) {
    struct Case { vantaro_format format; int32_t w, h; size_t size; int32_t chroma_stride, chroma_h; bool alpha; };
    const Case cases[] = {
        {VANTARO_FORMAT_YUV420P, 5, 3, 15 + 2 * 3 * 2, 3, 2, false},
        {VANTARO_FORMAT_YUVA420P, 4, 4, 16 + 2 * 4 + 16, 2, 2, true},
        {VANTARO_FORMAT_YUV422P, 5, 3, 15 + 2 * 3 * 3, 3, 3, false},
        {VANTARO_FORMAT_YUVA444P, 3, 2, 6 * 4, 3, 2, true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(vantaro_picture_size(c.format, c.w, c.h), c.size) << c.format;
        std::vector<uint8_t> buffer(c.size);
        vantaro_picture picture{};
        ASSERT_EQ(vantaro_picture_fill(&picture, c.format, c.w, c.h, buffer.data(), buffer.size()),
                  VANTARO_OK);
        EXPECT_EQ(picture.strides[1], c.chroma_stride);
        EXPECT_EQ(picture.planes[3] != nullptr, c.alpha);
        // The last plane ends exactly at the buffer's end.
        const int last = c.alpha ? 3 : 2;
        const size_t last_bytes =
            static_cast<size_t>(picture.strides[last]) * static_cast<size_t>(c.alpha ? c.h : c.chroma_h);
        EXPECT_EQ(picture.planes[last] + last_bytes, buffer.data() + buffer.size());
        EXPECT_EQ(vantaro_picture_fill(&picture, c.format, c.w, c.h, buffer.data(), c.size - 1),
                  VANTARO_ERROR_BUFFER_TOO_SMALL);
    }
    EXPECT_EQ(vantaro_picture_size(VANTARO_FORMAT_YUV420P, 0, 4), 0u);
    EXPECT_EQ(vantaro_picture_size(static_cast<vantaro_format>(99), 4, 4), 0u);
}

TEST(ApiBasics, FrameInspectReadsAWellFormedHeader) {
    const uint32_t lengths[8] = {3, 10, 3, 7, 5, 3, 3, 9};
    const std::vector<uint8_t> frame = FrameWithSlices(lengths);
    vantaro_frame_info info{};
    ASSERT_EQ(vantaro_frame_inspect(frame.data(), frame.size(), &info), VANTARO_OK);
    EXPECT_EQ(info.quality, 90u);
    EXPECT_EQ(info.second_field_offset, 4u + 3 + 10 + 3 + 7);
    EXPECT_EQ(info.frame_bytes, frame.size());
    EXPECT_EQ(std::memcmp(info.slice_lengths, lengths, sizeof(lengths)), 0);
}

TEST(ApiBasics, FrameInspectRejectsTruncatedAndLyingHeaders) {
    const uint32_t lengths[8] = {3, 10, 3, 7, 5, 3, 3, 9};
    const std::vector<uint8_t> good = FrameWithSlices(lengths);
    struct Case { const char* what; size_t length; int patch_at; uint32_t value; vantaro_status status; };
    const Case cases[] = {
        {"no header", 3, -1, 0, VANTARO_ERROR_TRUNCATED},
        {"last slice cut", good.size() - 1, -1, 0, VANTARO_ERROR_TRUNCATED},
        {"second field's lengths cut", 4 + 23 + 2, -1, 0, VANTARO_ERROR_TRUNCATED},
        {"offset disagrees", good.size(), 1, 26, VANTARO_ERROR_BAD_HEADER},
        {"slice shorter than its length bytes", good.size(), 4, 2, VANTARO_ERROR_BAD_HEADER},
        {"slice claims 16 MiB", good.size(), 7, 0xFFFFFF, VANTARO_ERROR_TRUNCATED},
    };
    for (const Case& c : cases) {
        std::vector<uint8_t> frame = good;
        if (c.patch_at >= 0) PutU24(frame, static_cast<size_t>(c.patch_at), c.value);
        // Copy exactly `length` bytes so the sanitizer sees any read beyond it.
        std::vector<uint8_t> exact(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(c.length));
        vantaro_frame_info info{};
        EXPECT_EQ(vantaro_frame_inspect(exact.data(), exact.size(), &info), c.status) << c.what;
    }
}

TEST(ApiBasics, StatusesHaveDistinctTextAndOptionsDefaultToOneThread) {
    std::vector<std::string> seen;
    for (int s = VANTARO_OK; s <= VANTARO_ERROR_CANNOT_FEED; ++s) {
        const std::string text = vantaro_status_string(static_cast<vantaro_status>(s));
        for (const std::string& other : seen) EXPECT_NE(text, other);
        seen.push_back(text);
    }
    EXPECT_STREQ(vantaro_version_string(), "1.0.0");
    EXPECT_EQ(vantaro_version(), static_cast<uint32_t>(VANTARO_VERSION));
    vantaro_options options{};
    vantaro_options_default(&options);
    EXPECT_EQ(options.size, sizeof(vantaro_options));
    EXPECT_EQ(options.threads, 1);
    EXPECT_EQ(options.kernels, VANTARO_KERNELS_AUTO);
}

}  // namespace
