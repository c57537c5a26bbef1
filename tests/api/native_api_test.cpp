// The native door: every variant through every plane set, argument checks,
// and a field past the header's reach.
#include <gtest/gtest.h>

#include <vector>

#include "support/pictures.h"

namespace vantaro::test {
namespace {

// Luma close, chroma of the stream's own family as sharp as luma and
// converted chroma close, alpha kept where the stream carries it and opaque
// where it does not. Odd sizes are held to the edge-replicated picture in
// planar_layouts_test.cpp.
TEST(NativeApi, EveryVariantRoundTripsEveryPlaneSet) {
  for (const uint32_t fourcc : kVariantFourCCs) {
    for (const vantaro_format format : kPlaneSets) {
      SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(format));
      Picture in(format, 48, 64), out(format, 48, 64);
      Fill(in, Content::kRamp);
      std::vector<uint8_t> frame;
      ASSERT_EQ(Encode(fourcc, in.pic, 96, frame), VANTARO_OK);
      ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
      const double chromaFloor = (format - 1) / 2 == StreamFamily(fourcc) ? 44.0 : 40.0;
      EXPECT_GT(Psnr(in, out, 0), 38.0);
      EXPECT_GT(Psnr(in, out, 1), chromaFloor);
      EXPECT_GT(Psnr(in, out, 2), chromaFloor);
      if (format % 2 != 0) continue;
      if (StreamHasAlpha(fourcc)) {
        EXPECT_GT(Psnr(in, out, 3), 38.0);
      } else {
        EXPECT_EQ(out.At(3, 5, 5), 255);
      }
    }
  }
}

TEST(NativeApi, ArgumentChecksAnswerTheirStatus) {
  vantaro_encoder* e = nullptr;
  vantaro_options bad = WithThreads(9);
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
  vantaro_decoder* d = nullptr;
  EXPECT_EQ(vantaro_decoder_create(VTC_FOURCC('X', 'X', 'X', 'X'), 16, 16, nullptr, &d),
            VANTARO_ERROR_UNKNOWN_FOURCC);
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ0, 16, 16, 90, nullptr, &e), VANTARO_OK);
  Picture wrong(VANTARO_FORMAT_YUV420P, 16, 18), missing(VANTARO_FORMAT_YUV420P, 16, 16);
  missing.pic.planes[2] = nullptr;
  uint8_t out[4096];
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &wrong.pic, out, sizeof out, &written), VANTARO_ERROR_BAD_SIZE);
  EXPECT_EQ(vantaro_encode(e, &missing.pic, out, sizeof out, &written), VANTARO_ERROR_INVALID_ARGUMENT);
  vantaro_encoder_destroy(e);
}

// 4K noise as 4:4:4 at quality 99 outgrows the header's 24-bit field offset.
TEST(NativeApi, AFieldPastTheHeaderLimitIsFrameTooLarge) {
  Picture in(VANTARO_FORMAT_YUV444P, 3840, 2160);
  Fill(in, Content::kNoise);
  std::vector<uint8_t> frame;
  EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ4, in.pic, 99, frame), VANTARO_ERROR_FRAME_TOO_LARGE);
}

}  // namespace
}  // namespace vantaro::test
