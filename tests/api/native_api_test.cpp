// The native door's refusals: arguments, and a field past the header's
// reach. Every variant through every plane set is pinned by the golden suite.
#include <gtest/gtest.h>

#include <vector>

#include "support/pictures.h"

namespace vantaro::test {
namespace {

TEST(NativeApi, ArgumentChecksAnswerTheirStatus) {
  vantaro_encoder* e = nullptr;
  vantaro_options bad = WithThreads(9);
  const struct { uint32_t fourcc; int32_t w, h, quality; const vantaro_options* options; vantaro_status expected; }
      cases[] = {
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
  // Pictures refused before any coding (decoding checks them the same way):
  // another size, a plane missing, a stride shorter than its line either way.
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ0, 16, 16, 90, nullptr, &e), VANTARO_OK);
  const struct { vantaro_format format; int32_t h; void (*spoil)(vantaro_picture&); vantaro_status expected; }
      pictures[] = {
      {VANTARO_FORMAT_YUV420P, 18, [](vantaro_picture&) {}, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FORMAT_YUV420P, 16, [](vantaro_picture& p) { p.planes[2] = nullptr; }, VANTARO_ERROR_INVALID_ARGUMENT},
      {VANTARO_FORMAT_YUV420P, 16, [](vantaro_picture& p) { p.strides[1] = -7; }, VANTARO_ERROR_BAD_STRIDE},
      {VANTARO_FORMAT_RGB24, 16, [](vantaro_picture& p) { p.strides[0] = 47; }, VANTARO_ERROR_BAD_STRIDE},
  };
  uint8_t out[4096];
  size_t written = 0;
  for (const auto& c : pictures) {
    Picture p(c.format, 16, c.h);
    c.spoil(p.pic);
    EXPECT_EQ(vantaro_encode(e, &p.pic, out, sizeof out, &written), c.expected) << vantaro_status_string(c.expected);
  }
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
