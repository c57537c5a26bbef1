// Pictures through the native door: its refusals of arguments and pictures,
// which packed and semi-planar layouts can feed which variant, picture sizes,
// the staging that takes any size, stride and placement, and the plane sets
// at odd sizes and bottom-up. The bytes the walks produce are pinned by the
// golden suite; here the door's own checks and geometry.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

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

struct Layout {
  vantaro_format format;
  bool semiPlanar, alpha;
};
const Layout kLayouts[] = {
    {VANTARO_FORMAT_NV12, true, false}, {VANTARO_FORMAT_NV16, true, false},  {VANTARO_FORMAT_NV24, true, false},
    {VANTARO_FORMAT_YA20, true, true},  {VANTARO_FORMAT_YA22, true, true},   {VANTARO_FORMAT_YA44, true, true},
    {VANTARO_FORMAT_YUY2, false, false}, {VANTARO_FORMAT_UYVY, false, false}, {VANTARO_FORMAT_UYVA, false, true},
    {VANTARO_FORMAT_AYUV, false, true}, {VANTARO_FORMAT_RGB24, false, false}, {VANTARO_FORMAT_RGB32, false, true},
};

// Every variant decodes into every layout with nothing written past the
// picture (the golden suite pins where the samples land); the decoded picture
// then codes back through the layout's own walk where the layout and the
// variant agree on alpha (any semi-planar layout does: a YA layout's alpha is
// dropped, or comes back opaque).
TEST(DirectLayouts, ReceiveEveryVariantAndFeedThoseThatAgreeOnAlpha) {
  Picture in(VANTARO_FORMAT_YUVA444P, 48, 32);
  Fill(in, Content::kRamp);
  // AYUV's loader takes luma and alpha both from byte 0: alpha equal to luma.
  for (int32_t y = 0; y < 32; ++y) std::memcpy(&in.At(3, 0, y), &in.At(0, 0, y), 48);
  for (const uint32_t fourcc : kVariantFourCCs) {
    std::vector<uint8_t> frame, again;
    ASSERT_EQ(Encode(fourcc, in.pic, 96, frame), VANTARO_OK);
    for (const Layout& l : kLayouts) {
      SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(l.format));
      Picture out(l.format, 48, 32), back(l.format, 48, 32);
      ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
      EXPECT_TRUE(out.GuardsIntact());
      const bool agree = l.semiPlanar || l.alpha == StreamHasAlpha(fourcc);
      ASSERT_EQ(Encode(fourcc, out.pic, 96, again), agree ? VANTARO_OK : VANTARO_ERROR_ALPHA_MISMATCH);
      if (!agree) continue;
      ASSERT_EQ(Decode(fourcc, again, back.pic), VANTARO_OK);
      EXPECT_GT(Psnr(out, back, 0, l.alpha && !StreamHasAlpha(fourcc) ? 2 : 1), 30.0);
    }
  }
}

// Tight pictures: planes back to back, lines rounded to whole pixel pairs
// where chroma pairs need it, second planes at the stride their walks derive
// (the plane sets' sizes are pinned with their bytes by the golden suite).
TEST(DirectLayouts, PictureSizesCoverEveryLayout) {
  const struct { vantaro_format format; int32_t w, h; size_t size; } cases[] = {
      {VANTARO_FORMAT_NV12, 6, 3, 18 + 12}, {VANTARO_FORMAT_NV12, 5, 2, 12 + 6},
      {VANTARO_FORMAT_NV16, 6, 3, 18 + 18}, {VANTARO_FORMAT_NV24, 6, 3, 18 + 36},
      {VANTARO_FORMAT_YA20, 6, 3, 36 + 12}, {VANTARO_FORMAT_YA22, 6, 3, 36 + 18},
      {VANTARO_FORMAT_YA44, 6, 3, 36 + 36}, {VANTARO_FORMAT_YUY2, 5, 3, 36},
      {VANTARO_FORMAT_UYVY, 6, 3, 36},      {VANTARO_FORMAT_UYVA, 6, 3, 36 + 18},
      {VANTARO_FORMAT_AYUV, 6, 3, 72},      {VANTARO_FORMAT_RGB24, 6, 3, 54},
      {VANTARO_FORMAT_RGB32, 6, 3, 72},
  };
  for (const auto& c : cases) EXPECT_EQ(vantaro_picture_size(c.format, c.w, c.h), c.size) << c.format;
  // Filling takes the size or more (every Picture of the suites is filled tightly).
  std::vector<uint8_t> buffer(71);
  vantaro_picture p{};
  EXPECT_EQ(vantaro_picture_fill(&p, VANTARO_FORMAT_AYUV, 6, 3, buffer.data(), 71), VANTARO_ERROR_BUFFER_TOO_SMALL);
  EXPECT_EQ(vantaro_picture_size(VANTARO_FORMAT_YUV420P, 0, 4), 0u);
  EXPECT_EQ(vantaro_picture_size(static_cast<vantaro_format>(99), 4, 4), 0u);
}

// Samples of `from` in plane-set layout `to` (same size): 4:2:2 pairs or
// semi-planar planes taken apart.
void Unpack(const Picture& from, Picture& to, int32_t lumaStep, int32_t lumaPhase) {
  const bool pairs = from.pic.format == VANTARO_FORMAT_UYVY;
  for (int32_t y = 0; y < to.pic.height; ++y) {
    for (int32_t x = 0; x < to.pic.width; ++x) {
      to.At(0, x, y) = from.At(0, lumaStep * x + lumaPhase, y);
      if (to.Of(3).lines != 0) to.At(3, x, y) = from.At(0, 2 * x + 1, y);
    }
    for (int32_t x = 0; y < to.Of(1).lines && x < to.Of(1).bytes; ++x) {
      to.At(1, x, y) = pairs ? from.At(0, 4 * x, y) : from.At(1, 2 * x, y);
      to.At(2, x, y) = pairs ? from.At(0, 4 * x + 2, y) : from.At(1, 2 * x + 1, y);
    }
  }
}

// Sizes and placements the walks cannot take go through the handle's
// staging: a packed picture of any size codes as the plane set of its
// samples, edges repeated the same way; semi-planar input is its planes.
TEST(DirectLayouts, AnySizeAndPlacementCodesAsItsPlanes) {
  const struct { vantaro_format packed, planes; uint32_t fourcc; int32_t w, h, lumaStep, lumaPhase; } cases[] = {
      {VANTARO_FORMAT_UYVY, VANTARO_FORMAT_YUV422P, VANTARO_FOURCC_VTQ2, 24, 30, 2, 1},
      {VANTARO_FORMAT_UYVY, VANTARO_FORMAT_YUV422P, VANTARO_FOURCC_VTQ2, 37, 21, 2, 1},
      {VANTARO_FORMAT_NV12, VANTARO_FORMAT_YUV420P, VANTARO_FOURCC_VTQ0, 37, 21, 1, 0},
      // Whole macroblocks, but a partial row the 4:2:0 stores would overrun.
      {VANTARO_FORMAT_NV12, VANTARO_FORMAT_YUV420P, VANTARO_FOURCC_VTQ0, 32, 34, 1, 0},
      {VANTARO_FORMAT_NV24, VANTARO_FORMAT_YUV444P, VANTARO_FOURCC_VTQ4, 48, 32, 1, 0},
      {VANTARO_FORMAT_YA22, VANTARO_FORMAT_YUVA422P, VANTARO_FOURCC_VTQ3, 33, 17, 2, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.packed) + " " + std::to_string(c.w) + "x" + std::to_string(c.h));
    Picture packed(c.packed, c.w, c.h), planes(c.planes, c.w, c.h);
    Fill(packed, Content::kSmooth);  // the packed stores do not clamp, the planar ones do
    Unpack(packed, planes, c.lumaStep, c.lumaPhase);
    std::vector<uint8_t> a, b;
    ASSERT_EQ(Encode(c.fourcc, packed.pic, 90, a), VANTARO_OK);
    ASSERT_EQ(Encode(c.fourcc, planes.pic, 90, b), VANTARO_OK);
    EXPECT_EQ(a, b);
    // Back out into the packed layout at its own size: luma as the planes get it.
    Picture out(c.packed, c.w, c.h), reference(c.planes, c.w, c.h);
    ASSERT_EQ(Decode(c.fourcc, a, out.pic), VANTARO_OK);
    ASSERT_EQ(Decode(c.fourcc, a, reference.pic), VANTARO_OK);
    EXPECT_TRUE(out.GuardsIntact());
    for (int32_t y = 0; y < c.h; ++y) {
      for (int32_t x = 0; x < c.w; ++x) {
        ASSERT_EQ(out.At(0, c.lumaStep * x + c.lumaPhase, y), reference.At(0, x, y)) << x << "," << y;
      }
    }
  }
}

// A copy of a tight picture in buffers of its own: each plane's lines
// `pad[p]` bytes further apart, the gaps holding guard bytes, and bottom-up
// through negative strides when asked.
struct Relaid {
  std::vector<uint8_t> bytes[4];
  vantaro_picture pic{};
  std::array<int32_t, 4> pad;
  Relaid(const Picture& tight, std::array<int32_t, 4> padding, bool bottomUp) : pic(tight.pic), pad(padding) {
    for (int p = 0; p < 4; ++p) {
      const Extent e = tight.Of(p);
      if (e.lines == 0) continue;
      const int32_t stride = e.bytes + pad[p];
      bytes[p].assign(static_cast<size_t>(stride) * e.lines, kGuard);
      pic.planes[p] = bottomUp ? &bytes[p][static_cast<size_t>(e.lines - 1) * stride] : bytes[p].data();
      pic.strides[p] = bottomUp ? -stride : stride;
      for (int32_t y = 0; y < e.lines; ++y) std::memcpy(Line(p, y), &tight.At(p, 0, y), e.bytes);
    }
  }
  uint8_t* Line(int p, int32_t y) const { return pic.planes[p] + static_cast<ptrdiff_t>(y) * pic.strides[p]; }
  // The samples back into `tight`; false if a padding byte changed.
  bool CopyTo(Picture& tight) const {
    for (int p = 0; p < 4; ++p) {
      const Extent e = tight.Of(p);
      for (int32_t y = 0; y < e.lines; ++y) {
        std::memcpy(&tight.At(p, 0, y), Line(p, y), e.bytes);
        if (std::count(Line(p, y) + e.bytes, Line(p, y) + e.bytes + pad[p], kGuard) != pad[p]) return false;
      }
    }
    return true;
  }
};

// A relaid copy of `in` codes to the bytes `in` codes to, and that frame
// decodes into a relaid picture as into a tight one, padding untouched.
void ExpectRelaidCodesAsTight(uint32_t fourcc, const Picture& in, std::array<int32_t, 4> pad, bool bottomUp) {
  std::vector<uint8_t> frame, relaidFrame;
  ASSERT_EQ(Encode(fourcc, in.pic, 95, frame), VANTARO_OK);
  ASSERT_EQ(Encode(fourcc, Relaid(in, pad, bottomUp).pic, 95, relaidFrame), VANTARO_OK);
  EXPECT_EQ(relaidFrame, frame);
  Picture out(in.pic.format, in.pic.width, in.pic.height), relaidOut(in.pic.format, in.pic.width, in.pic.height);
  const Relaid target(relaidOut, pad, bottomUp);
  ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
  ASSERT_EQ(Decode(fourcc, frame, target.pic), VANTARO_OK);
  EXPECT_TRUE(target.CopyTo(relaidOut));
  EXPECT_EQ(relaidOut.bytes, out.bytes);
}

// Strides the walks cannot take go through the handle's staging as well.
TEST(DirectLayouts, StridesAnywhereGiveTheTightPicturesBytes) {
  Picture rgb(VANTARO_FORMAT_RGB24, 32, 32), nv(VANTARO_FORMAT_NV12, 32, 32);
  Fill(rgb, Content::kSmooth);
  Fill(nv, Content::kSmooth);
  ExpectRelaidCodesAsTight(VANTARO_FOURCC_VTQ4, rgb, {4}, false);    // lines apart by no whole 8-byte units
  ExpectRelaidCodesAsTight(VANTARO_FOURCC_VTQ1, nv, {0, 2}, false);  // chroma further apart than derived
}

// Odd sizes code as the picture at the coded size with its right columns and
// bottom line repeated, and decode into its crop; bottom-up padded pictures
// code and decode as top-down ones.
TEST(PlaneSets, OddSizesAndBottomUpPicturesCodeAsTheCodedTopDownPicture) {
  const int32_t sizes[][2] = {{1, 1}, {17, 3}, {33, 35}, {50, 6}, {37, 29}};
  for (const vantaro_format format : kPlaneSets) {
    for (const uint32_t fourcc : {VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ9}) {
      for (const auto& s : sizes) {
        SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(format) + " " + std::to_string(s[0]) + "x" +
                     std::to_string(s[1]));
        int32_t cw = 0, ch = 0;
        ASSERT_EQ(vantaro_coded_size(s[0], s[1], &cw, &ch), VANTARO_OK);
        Picture in(format, s[0], s[1]), coded(format, cw, ch), out(format, s[0], s[1]);
        Fill(in, Content::kNoise, static_cast<uint32_t>(s[0] * 100 + s[1]));
        for (int p = 0; p < 4; ++p) {
          for (int32_t y = 0; y < coded.Of(p).lines; ++y) {
            for (int32_t x = 0; x < coded.Of(p).bytes; ++x) {
              coded.At(p, x, y) = in.At(p, std::min(x, in.Of(p).bytes - 1), std::min(y, in.Of(p).lines - 1));
            }
          }
        }
        std::vector<uint8_t> frame, codedFrame;
        ASSERT_EQ(Encode(fourcc, in.pic, 95, frame), VANTARO_OK);
        ASSERT_EQ(Encode(fourcc, coded.pic, 95, codedFrame), VANTARO_OK);
        EXPECT_EQ(frame, codedFrame);
        ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
        ASSERT_EQ(Decode(fourcc, frame, coded.pic), VANTARO_OK);
        EXPECT_TRUE(out.GuardsIntact());
        for (int p = 0; p < 4; ++p) {
          for (int32_t y = 0; y < out.Of(p).lines; ++y) {
            ASSERT_EQ(std::memcmp(&out.At(p, 0, y), &coded.At(p, 0, y), out.Of(p).bytes), 0) << p << "," << y;
          }
        }
        ExpectRelaidCodesAsTight(fourcc, in, {11, 11, 11, 11}, true);
      }
    }
  }
}

}  // namespace
}  // namespace vantaro::test
