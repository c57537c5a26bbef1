// The native door's calls that need no codec instance (coded size, status
// text, option defaults; the frame header check lives with the damaged
// frames), and the C++ wrapper, which sees only the public headers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "vantaro/vantaro.hpp"

namespace {

TEST(ApiBasics, CodedSizeRoundsWidthTo16AndHeightTo2) {
    struct Case { int32_t w, h, cw, ch; vantaro_status status; };
    const Case cases[] = {
        {1, 1, 16, 2, VANTARO_OK}, {16, 2, 16, 2, VANTARO_OK}, {17, 3, 32, 4, VANTARO_OK},
        {16384, 16383, 16384, 16384, VANTARO_OK}, {0, 4, 0, 0, VANTARO_ERROR_BAD_SIZE},
        {4, -2, 0, 0, VANTARO_ERROR_BAD_SIZE}, {16385, 4, 0, 0, VANTARO_ERROR_BAD_SIZE},
    };
    for (const Case& c : cases) {
        int32_t cw = 0, ch = 0;
        EXPECT_EQ(vantaro_coded_size(c.w, c.h, &cw, &ch), c.status) << c.w << "x" << c.h;
        EXPECT_TRUE(cw == c.cw && ch == c.ch) << c.w << "x" << c.h << ": " << cw << "x" << ch;
    }
    EXPECT_EQ(vantaro_coded_size(4, 4, nullptr, nullptr), VANTARO_ERROR_INVALID_ARGUMENT);
}

TEST(ApiBasics, StatusesHaveDistinctTextAndOptionsDefaultToOneThread) {
    std::vector<std::string> seen;
    for (int s = VANTARO_OK; s <= VANTARO_ERROR_ALPHA_MISMATCH; ++s) {
        const std::string text = vantaro_status_string(static_cast<vantaro_status>(s));
        for (const std::string& other : seen) EXPECT_NE(text, other);
        seen.push_back(text);
    }
    vantaro_options options{};
    vantaro_options_default(&options);
    EXPECT_EQ(options.size, sizeof(vantaro_options));
    EXPECT_EQ(options.threads, 1);
    EXPECT_EQ(options.kernels, VANTARO_KERNELS_AUTO);
}

TEST(ApiBasics, CppWrapperOwnsHandlesAndPassesStatuses) {
    std::vector<uint8_t> in(vantaro_picture_size(VANTARO_FORMAT_YUVA422P, 40, 20)), out(in.size());
    for (size_t i = 0; i < in.size(); ++i) in[i] = static_cast<uint8_t>(60 + i % 40 * 2);
    vantaro_picture source, decoded;
    vantaro_picture_fill(&source, VANTARO_FORMAT_YUVA422P, 40, 20, in.data(), in.size());
    vantaro_picture_fill(&decoded, VANTARO_FORMAT_YUVA422P, 40, 20, out.data(), out.size());
    vantaro::Encoder encoder;
    ASSERT_EQ(vantaro::Encoder::Create(VANTARO_FOURCC_VTQ7, 40, 20, 95, nullptr, encoder), VANTARO_OK);
    std::vector<uint8_t> frame(vantaro::FrameBound(VANTARO_FOURCC_VTQ7, 40, 20));
    size_t written = 0;
    EXPECT_EQ(encoder.Encode(source, std::span(frame).first(4), written), VANTARO_ERROR_BUFFER_TOO_SMALL);
    ASSERT_EQ(encoder.Encode(source, frame, written), VANTARO_OK);
    vantaro::Decoder decoder;
    EXPECT_EQ(vantaro::Decoder::Create(VANTARO_FOURCC_VTQ7, 0, 20, nullptr, decoder), VANTARO_ERROR_BAD_SIZE);
    EXPECT_FALSE(decoder);
    ASSERT_EQ(vantaro::Decoder::Create(VANTARO_FOURCC_VTQ7, 40, 20, nullptr, decoder), VANTARO_OK);
    EXPECT_EQ(decoder.Decode(std::span(frame).first(written), decoded), VANTARO_OK);
    double err = 0;
    for (size_t i = 0; i < in.size(); ++i) err += std::abs(in[i] - out[i]);
    EXPECT_LT(err / static_cast<double>(in.size()), 2.0);
}

}  // namespace
