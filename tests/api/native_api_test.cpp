// The native door: round trips per variant and planar format, capacity,
// the frame bound, argument checks, damaged input and the C++ wrapper.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "api/api_pictures.h"
#include "vantaro/vantaro.hpp"

namespace api_test {
namespace {

const uint32_t kVariants[] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                              VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                              VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9};
const vantaro_format kPlanar[] = {VANTARO_FORMAT_YUV420P, VANTARO_FORMAT_YUVA420P,
                                  VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_YUVA422P,
                                  VANTARO_FORMAT_YUV444P, VANTARO_FORMAT_YUVA444P};

Picture Make(vantaro_format format, int32_t w, int32_t h, bool noise = false) {
  Picture p(format, w, h);
  Fill(p, noise);
  return p;
}

std::vector<uint8_t> Encoded(uint32_t fourcc, const Picture& p, int32_t quality) {
  std::vector<uint8_t> frame;
  EXPECT_EQ(Encode(fourcc, p.pic, quality, frame), VANTARO_OK);
  return frame;
}

TEST(NativeApi, RoundTripsEveryVariantAndPlanarFormatAtOddAndEvenSizes) {
  const int32_t sizes[][2] = {{64, 48}, {1, 1}, {17, 3}, {33, 35}};
  for (uint32_t fourcc : kVariants) {
    for (vantaro_format format : kPlanar) {
      for (const auto& s : sizes) {
        SCOPED_TRACE(testing::Message() << std::string(reinterpret_cast<const char*>(&fourcc), 4)
                                        << " format " << format << " " << s[0] << "x" << s[1]);
        const Picture in = Make(format, s[0], s[1]);
        Picture out(format, s[0], s[1]);
        ASSERT_EQ(Decode(fourcc, Encoded(fourcc, in, 96), out.pic), VANTARO_OK);
        EXPECT_GT(Psnr(in, out, 0), 38.0);
        // 4:2:2 chroma into a 4:2:2 variant comes back as sharp as luma.
        const int family = (format - 1) / 2;  // 0: 4:2:0, 1: 4:2:2, 2: 4:4:4
        const uint32_t digit = fourcc >> 24;
        const int variantFamily = digit <= '1' ? 0 : (digit <= '3' || digit == '7' ? 1 : 2);
        if (family == 1 && variantFamily == 1) {
          EXPECT_GT(Psnr(in, out, 1), 38.0);
          EXPECT_GT(Psnr(in, out, 2), 38.0);
        }
        const bool alphaPlane = format == VANTARO_FORMAT_YUVA420P ||
                                format == VANTARO_FORMAT_YUVA422P || format == VANTARO_FORMAT_YUVA444P;
        const bool alphaStream = fourcc != VANTARO_FOURCC_VTQ0 && fourcc != VANTARO_FOURCC_VTQ2 &&
                                 fourcc != VANTARO_FOURCC_VTQ4;
        if (alphaPlane && alphaStream) {
          EXPECT_GT(Psnr(in, out, 3), 38.0);
        } else if (alphaPlane) {
          EXPECT_EQ(out.pic.planes[3][0], 255);
        }
      }
    }
  }
}

TEST(NativeApi, FrameBoundHoldsNoiseAtQuality99) {
  for (uint32_t fourcc : kVariants) {
    for (vantaro_format format : {VANTARO_FORMAT_YUVA444P, VANTARO_FORMAT_YUV420P}) {
      const Picture in = Make(format, 80, 70, true);
      vantaro_encoder* e = nullptr;
      ASSERT_EQ(vantaro_encoder_create(fourcc, 80, 70, 99, nullptr, &e), VANTARO_OK);
      const size_t bound = vantaro_frame_bound(fourcc, 80, 70);
      std::vector<uint8_t> out(bound);
      size_t written = 0;
      EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), out.size(), &written), VANTARO_OK);
      EXPECT_LE(written, bound);
      EXPECT_GT(written, bound / 8) << "a bound far above noise frames";
      vantaro_encoder_destroy(e);
    }
  }
}

TEST(NativeApi, ArgumentChecksAnswerTheirStatus) {
  vantaro_encoder* e = nullptr;
  vantaro_decoder* d = nullptr;
  vantaro_options bad;
  vantaro_options_default(&bad);
  bad.threads = 9;
  const struct {
    uint32_t fourcc;
    int32_t w, h, quality;
    const vantaro_options* options;
    vantaro_status expected;
  } cases[] = {
      {VTC_FOURCC('V', 'T', 'Q', '6'), 16, 16, 90, nullptr, VANTARO_ERROR_UNKNOWN_FOURCC},
      {VANTARO_FOURCC_VTQ2, 0, 16, 90, nullptr, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FOURCC_VTQ2, 16, -4, 90, nullptr, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FOURCC_VTQ2, VANTARO_MAX_DIMENSION + 1, 16, 90, nullptr, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FOURCC_VTQ2, 16, 16, 100, nullptr, VANTARO_ERROR_BAD_QUALITY},
      {VANTARO_FOURCC_VTQ2, 16, 16, 0, nullptr, VANTARO_ERROR_BAD_QUALITY},
      {VANTARO_FOURCC_VTQ2, 16, 16, 90, &bad, VANTARO_ERROR_BAD_OPTIONS},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(vantaro_encoder_create(c.fourcc, c.w, c.h, c.quality, c.options, &e), c.expected);
    EXPECT_EQ(e, nullptr);
  }
  EXPECT_EQ(vantaro_decoder_create(VTC_FOURCC('X', 'X', 'X', 'X'), 16, 16, nullptr, &d),
            VANTARO_ERROR_UNKNOWN_FOURCC);
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ0, 16, 16, 90, nullptr, &e), VANTARO_OK);
  Picture wrong = Make(VANTARO_FORMAT_YUV420P, 16, 18);
  uint8_t out[4096];
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &wrong.pic, out, sizeof out, &written), VANTARO_ERROR_BAD_SIZE);
  Picture missing = Make(VANTARO_FORMAT_YUV420P, 16, 16);
  missing.pic.planes[2] = nullptr;
  EXPECT_EQ(vantaro_encode(e, &missing.pic, out, sizeof out, &written), VANTARO_ERROR_INVALID_ARGUMENT);
  vantaro_encoder_destroy(e);
  EXPECT_STRNE(vantaro_status_string(VANTARO_ERROR_DAMAGED), vantaro_status_string(VANTARO_OK));
  EXPECT_EQ(vantaro_version(), static_cast<uint32_t>(VANTARO_VERSION));
}

TEST(NativeApi, TruncatedAndLyingFramesAnswerTheirStatuses) {
  const Picture in = Make(VANTARO_FORMAT_YUVA444P, 64, 128, true);
  for (uint32_t fourcc : kVariants) {
    const std::vector<uint8_t> frame = Encoded(fourcc, in, 80);
    Picture out(VANTARO_FORMAT_YUVA444P, 64, 128);
    std::vector<uint8_t> cut(frame.begin(), frame.end() - 1);
    EXPECT_EQ(Decode(fourcc, cut, out.pic), VANTARO_ERROR_TRUNCATED);
    std::vector<uint8_t> lying = frame;
    lying[1] ^= 0x01;  // the second-field offset no longer matches the first field
    EXPECT_EQ(Decode(fourcc, lying, out.pic), VANTARO_ERROR_BAD_HEADER);
  }
}

// 4K noise as 4:4:4 at quality 99 outgrows the header's 24-bit field offset.
TEST(NativeApi, AFieldPastTheHeaderLimitIsFrameTooLarge) {
  const Picture in = Make(VANTARO_FORMAT_YUV444P, 3840, 2160, true);
  vantaro_encoder* e = nullptr;
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ4, 3840, 2160, 99, nullptr, &e), VANTARO_OK);
  std::vector<uint8_t> out(vantaro_frame_bound(VANTARO_FOURCC_VTQ4, 3840, 2160));
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), out.size(), &written), VANTARO_ERROR_FRAME_TOO_LARGE);
  vantaro_encoder_destroy(e);
}

TEST(NativeApi, CppWrapperOwnsHandlesAndPassesStatuses) {
  const Picture in = Make(VANTARO_FORMAT_YUVA422P, 40, 20);
  Picture out(VANTARO_FORMAT_YUVA422P, 40, 20);
  vantaro::Encoder encoder;
  ASSERT_EQ(vantaro::Encoder::Create(VANTARO_FOURCC_VTQ7, 40, 20, 95, nullptr, encoder), VANTARO_OK);
  std::vector<uint8_t> frame(vantaro::FrameBound(VANTARO_FOURCC_VTQ7, 40, 20));
  size_t written = 0;
  EXPECT_EQ(encoder.Encode(in.pic, std::span(frame).first(4), written), VANTARO_ERROR_BUFFER_TOO_SMALL);
  ASSERT_EQ(encoder.Encode(in.pic, frame, written), VANTARO_OK);
  vantaro::Decoder decoder;
  EXPECT_EQ(vantaro::Decoder::Create(VANTARO_FOURCC_VTQ7, 0, 20, nullptr, decoder), VANTARO_ERROR_BAD_SIZE);
  EXPECT_FALSE(decoder);
  ASSERT_EQ(vantaro::Decoder::Create(VANTARO_FOURCC_VTQ7, 40, 20, nullptr, decoder), VANTARO_OK);
  EXPECT_EQ(decoder.Decode(std::span(frame).first(written), out.pic), VANTARO_OK);
  EXPECT_GT(Psnr(in, out, 3), 38.0);
}

}  // namespace
}  // namespace api_test
