// The packed and semi-planar layouts through the native door: which can feed
// which variant, round trips through their own walks, decoding into every
// one of them, and the geometry checks that keep the walks inside the planes.
#include <gtest/gtest.h>

#include "api/api_pictures.h"

namespace api_test {
namespace {

const uint32_t kVariants[] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                              VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                              VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9};

struct Layout {
  vantaro_format format;
  bool semiPlanar, alpha;
  int32_t lumaStep, lumaPhase;  // where luma sits in the main plane; 0: not stored as a byte (RGB)
};
const Layout kLayouts[] = {
    {VANTARO_FORMAT_NV12, true, false, 1, 0},  {VANTARO_FORMAT_NV16, true, false, 1, 0},
    {VANTARO_FORMAT_NV24, true, false, 1, 0},  {VANTARO_FORMAT_YA20, true, true, 2, 0},
    {VANTARO_FORMAT_YA22, true, true, 2, 0},   {VANTARO_FORMAT_YA44, true, true, 2, 0},
    {VANTARO_FORMAT_YUY2, false, false, 2, 0}, {VANTARO_FORMAT_UYVY, false, false, 2, 1},
    {VANTARO_FORMAT_UYVA, false, true, 2, 1},  {VANTARO_FORMAT_AYUV, false, true, 4, 1},
    {VANTARO_FORMAT_RGB24, false, false, 0, 0}, {VANTARO_FORMAT_RGB32, false, true, 0, 0},
};

bool StreamHasAlpha(uint32_t fourcc) {
  return fourcc != VANTARO_FOURCC_VTQ0 && fourcc != VANTARO_FOURCC_VTQ2 && fourcc != VANTARO_FOURCC_VTQ4;
}

TEST(DirectLayouts, FeedTheVariantsTheyCanAndRoundTripThroughTheirWalks) {
  for (const Layout& l : kLayouts) {
    for (const uint32_t fourcc : kVariants) {
      SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(l.format));
      Picture in(l.format, 48, 32);
      Ramp(in);
      const vantaro_status expected = l.semiPlanar                          ? VANTARO_ERROR_CANNOT_FEED
                                      : l.alpha != StreamHasAlpha(fourcc) ? VANTARO_ERROR_ALPHA_MISMATCH
                                                                            : VANTARO_OK;
      std::vector<uint8_t> frame;
      ASSERT_EQ(Encode(fourcc, in.pic, 96, frame), expected);
      if (expected != VANTARO_OK) continue;
      Picture out(l.format, 48, 32);
      ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
      EXPECT_TRUE(out.GuardsIntact());
      EXPECT_GT(Psnr(in, out, 0), 30.0);
    }
  }
}

TEST(DirectLayouts, ReceiveEveryVariantWithLumaIntact) {
  Picture in(VANTARO_FORMAT_YUVA444P, 32, 64);
  Ramp(in);
  for (const uint32_t fourcc : kVariants) {
    std::vector<uint8_t> frame;
    ASSERT_EQ(Encode(fourcc, in.pic, 96, frame), VANTARO_OK);
    for (const Layout& l : kLayouts) {
      SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(l.format));
      Picture out(l.format, 32, 64);
      ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
      EXPECT_TRUE(out.GuardsIntact());
      if (l.lumaStep == 0) continue;
      double err = 0;
      for (int32_t y = 0; y < 64; ++y) {
        for (int32_t x = 0; x < 32; ++x) {
          const double d = in.At(0, x, y) - out.At(0, l.lumaStep * x + l.lumaPhase, y);
          err += d * d;
        }
      }
      EXPECT_LT(err / (32 * 64), 4.0);
    }
  }
}

// Tight pictures: lines rounded to whole pixel pairs where chroma pairs
// need it, second planes at the stride their walks derive from the main one.
TEST(DirectLayouts, PictureSizesCoverEveryLayout) {
  const struct {
    vantaro_format format;
    int32_t w, h;
    size_t size;
  } cases[] = {
      {VANTARO_FORMAT_NV12, 6, 3, 18 + 12}, {VANTARO_FORMAT_NV12, 5, 2, 12 + 6},
      {VANTARO_FORMAT_NV16, 6, 3, 18 + 18}, {VANTARO_FORMAT_NV24, 6, 3, 18 + 36},
      {VANTARO_FORMAT_YA20, 6, 3, 36 + 12}, {VANTARO_FORMAT_YA22, 6, 3, 36 + 18},
      {VANTARO_FORMAT_YA44, 6, 3, 36 + 36}, {VANTARO_FORMAT_YUY2, 5, 3, 36},
      {VANTARO_FORMAT_UYVY, 6, 3, 36},      {VANTARO_FORMAT_UYVA, 6, 3, 36 + 18},
      {VANTARO_FORMAT_AYUV, 6, 3, 72},      {VANTARO_FORMAT_RGB24, 6, 3, 54},
      {VANTARO_FORMAT_RGB32, 6, 3, 72},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(vantaro_picture_size(c.format, c.w, c.h), c.size) << c.format;
    Picture p(c.format, c.w, c.h);
    EXPECT_NE(p.pic.planes[0], nullptr) << c.format;
  }
}

TEST(DirectLayouts, GeometryTheWalksCannotServeAnswersItsStatus) {
  Picture uyvy(VANTARO_FORMAT_UYVY, 24, 32);
  std::vector<uint8_t> frame;
  EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ2, uyvy.pic, 90, frame), VANTARO_ERROR_NOT_WHOLE_MACROBLOCKS);
  Picture planes(VANTARO_FORMAT_YUV422P, 24, 32);
  ASSERT_EQ(Encode(VANTARO_FOURCC_VTQ2, planes.pic, 90, frame), VANTARO_OK);
  EXPECT_EQ(Decode(VANTARO_FOURCC_VTQ2, frame, uyvy.pic), VANTARO_ERROR_NOT_WHOLE_MACROBLOCKS);
  Picture odd(VANTARO_FORMAT_RGB32, 32, 31);
  EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ5, odd.pic, 90, frame), VANTARO_ERROR_NOT_WHOLE_MACROBLOCKS);
  Picture rgb(VANTARO_FORMAT_RGB24, 32, 32);
  rgb.pic.strides[0] = 100;  // holds the line, but not in whole 8-byte units
  EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ4, rgb.pic, 90, frame), VANTARO_ERROR_BAD_STRIDE);

  const auto decodeStatus = [](vantaro_format format, auto&& spoil) {
    Picture p(format, 32, 32);
    spoil(p.pic);
    std::vector<uint8_t> f;
    Picture source(VANTARO_FORMAT_YUV420P, 32, 32);
    EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ1, source.pic, 90, f), VANTARO_OK);
    return Decode(VANTARO_FOURCC_VTQ1, f, p.pic);
  };
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_NV12, [](vantaro_picture& p) { p.strides[1] += 2; }),
            VANTARO_ERROR_BAD_STRIDE);
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_YA20, [](vantaro_picture& p) { p.strides[1] = p.strides[0]; }),
            VANTARO_ERROR_BAD_STRIDE);
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_UYVA, [](vantaro_picture& p) { p.planes[3] += 1; }),
            VANTARO_ERROR_BAD_STRIDE);
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_YUV420P, [](vantaro_picture& p) { p.strides[1] = -15; }),
            VANTARO_ERROR_BAD_STRIDE);
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_RGB24, [](vantaro_picture& p) { p.strides[0] = 95; }),
            VANTARO_ERROR_BAD_STRIDE);
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_NV16, [](vantaro_picture& p) { p.planes[1] = nullptr; }),
            VANTARO_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(decodeStatus(VANTARO_FORMAT_NV24, [](vantaro_picture&) {}), VANTARO_OK);
}


// Decoding into planes puts every sample where the semi-planar stores of
// the stream's own family put it: 4:2:0 chroma line k of field k & 1.
TEST(DirectLayouts, SemiPlanarStoresAndPlaneSetsAgreeOnEverySample) {
  const struct {
    uint32_t fourcc;
    vantaro_format planes, semi;
    int32_t chromaLines;  // of 64
  } cases[] = {
      {VANTARO_FOURCC_VTQ0, VANTARO_FORMAT_YUV420P, VANTARO_FORMAT_NV12, 32},
      {VANTARO_FOURCC_VTQ1, VANTARO_FORMAT_YUVA420P, VANTARO_FORMAT_YA20, 32},
      {VANTARO_FOURCC_VTQ2, VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_NV16, 64},
      {VANTARO_FOURCC_VTQ3, VANTARO_FORMAT_YUVA422P, VANTARO_FORMAT_YA22, 64},
      {VANTARO_FOURCC_VTQ4, VANTARO_FORMAT_YUVA444P, VANTARO_FORMAT_YA44, 64},
      {VANTARO_FOURCC_VTQ9, VANTARO_FORMAT_YUVA444P, VANTARO_FORMAT_YA44, 64},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Name(c.fourcc));
    Picture in(c.planes, 32, 64);
    Fill(in);
    std::vector<uint8_t> frame;
    ASSERT_EQ(Encode(c.fourcc, in.pic, 96, frame), VANTARO_OK);
    Picture planes(c.planes, 32, 64), semi(c.semi, 32, 64);
    ASSERT_EQ(Decode(c.fourcc, frame, planes.pic), VANTARO_OK);
    ASSERT_EQ(Decode(c.fourcc, frame, semi.pic), VANTARO_OK);
    const bool ya = c.semi >= VANTARO_FORMAT_YA20;
    for (int32_t y = 0; y < 64; ++y) {
      for (int32_t x = 0; x < 32; ++x) {
        ASSERT_EQ(planes.At(0, x, y), semi.At(0, ya ? 2 * x : x, y)) << x << "," << y;
        if (ya) {
          ASSERT_EQ(planes.At(3, x, y), semi.At(0, 2 * x + 1, y)) << x << "," << y;
        }
      }
    }
    const int32_t chromaWidth = planes.Of(1).bytes;
    for (int32_t y = 0; y < c.chromaLines; ++y) {
      for (int32_t x = 0; x < chromaWidth; ++x) {
        ASSERT_EQ(planes.At(1, x, y), semi.At(1, 2 * x, y)) << x << "," << y;
        ASSERT_EQ(planes.At(2, x, y), semi.At(1, 2 * x + 1, y)) << x << "," << y;
      }
    }
  }
}

}  // namespace
}  // namespace api_test
