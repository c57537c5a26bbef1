// The plane-set loaders and stores: exact where a packed layout is exact,
// odd sizes as their edge-replicated coded picture, bottom-up strides, and
// nothing written outside the picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/pictures.h"

namespace vantaro::test {
namespace {

// The same samples in a packed layout: 4:2:2 planes as YUY2, UYVY or UYVA;
// 4:4:4 planes as AYUV (whose loader takes luma and alpha from byte 0).
Picture Pack(const Picture& planes, vantaro_format format) {
  const int32_t w = planes.pic.width, h = planes.pic.height;
  Picture out(format, w, h);
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      const uint8_t luma = planes.At(0, x, y);
      if (format == VANTARO_FORMAT_AYUV) {
        uint8_t* px = &out.At(0, 4 * x, y);
        px[0] = px[1] = luma;
        px[2] = planes.At(1, x, y);
        px[3] = planes.At(2, x, y);
        continue;
      }
      uint8_t* pair = &out.At(0, 4 * (x / 2), y);
      const bool yuy2 = format == VANTARO_FORMAT_YUY2;
      pair[(yuy2 ? 0 : 1) + 2 * (x & 1)] = luma;
      pair[yuy2 ? 1 : 0] = planes.At(1, x / 2, y);
      pair[yuy2 ? 3 : 2] = planes.At(2, x / 2, y);
      if (format == VANTARO_FORMAT_UYVA) out.At(3, x, y) = planes.At(3, x, y);
    }
  }
  return out;
}

TEST(PlaneSets, EncodeAndDecodeLikeTheExactPackedLayouts) {
  // 4:2:2 into 4:4:4 repeats each chroma sample in both loaders; decoding
  // 4:4:4 into packed 4:2:2 drops odd columns where planes average them.
  const struct {
    vantaro_format planes, packed;
    uint32_t fourcc;
    bool decodesAlike;
  } cases[] = {
      {VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_UYVY, VANTARO_FOURCC_VTQ2, true},
      {VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_YUY2, VANTARO_FOURCC_VTQ2, true},
      {VANTARO_FORMAT_YUVA422P, VANTARO_FORMAT_UYVA, VANTARO_FOURCC_VTQ3, true},
      {VANTARO_FORMAT_YUVA422P, VANTARO_FORMAT_UYVA, VANTARO_FOURCC_VTQ7, true},
      {VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_UYVY, VANTARO_FOURCC_VTQ4, false},
      {VANTARO_FORMAT_YUVA422P, VANTARO_FORMAT_UYVA, VANTARO_FOURCC_VTQ9, false},
      {VANTARO_FORMAT_YUVA444P, VANTARO_FORMAT_AYUV, VANTARO_FOURCC_VTQ5, true},
      {VANTARO_FORMAT_YUVA444P, VANTARO_FORMAT_AYUV, VANTARO_FOURCC_VTQ9, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Name(c.fourcc) + " format " + std::to_string(c.packed));
    Picture in(c.planes, 64, 96);
    Fill(in, Content::kNoise);
    if (c.packed == VANTARO_FORMAT_AYUV) {  // AYUV's alpha is its luma byte
      for (int32_t y = 0; y < 96; ++y) std::memcpy(&in.At(3, 0, y), &in.At(0, 0, y), 64);
    }
    std::vector<uint8_t> fromPlanes, fromPacked;
    ASSERT_EQ(Encode(c.fourcc, in.pic, 90, fromPlanes), VANTARO_OK);
    ASSERT_EQ(Encode(c.fourcc, Pack(in, c.packed).pic, 90, fromPacked), VANTARO_OK);
    EXPECT_EQ(fromPlanes, fromPacked);
    if (!c.decodesAlike) continue;
    // Smooth content keeps every decoded sample in range, where the packed
    // stores' unclamped chroma pairs agree with clamped planes.
    Fill(in, Content::kSmooth);
    ASSERT_EQ(Encode(c.fourcc, in.pic, 90, fromPlanes), VANTARO_OK);
    Picture outPlanes(c.planes, 64, 96), outPacked(c.packed, 64, 96);
    ASSERT_EQ(Decode(c.fourcc, fromPlanes, outPlanes.pic), VANTARO_OK);
    ASSERT_EQ(Decode(c.fourcc, fromPlanes, outPacked.pic), VANTARO_OK);
    if (c.packed != VANTARO_FORMAT_AYUV) {
      EXPECT_EQ(Pack(outPlanes, c.packed).bytes, outPacked.bytes);
    } else {
      for (int32_t y = 0; y < 96; ++y) {
        for (int32_t x = 0; x < 64; ++x) {
          const uint8_t* px = &outPacked.At(0, 4 * x, y);
          ASSERT_EQ(px[0], outPlanes.At(3, x, y));
          ASSERT_EQ(px[1], outPlanes.At(0, x, y));
          ASSERT_EQ(px[2], outPlanes.At(1, x, y));
          ASSERT_EQ(px[3], outPlanes.At(2, x, y));
        }
      }
    }
  }
}

// A picture whose lines run bottom-up through padded strides.
struct BottomUp {
  static constexpr int32_t kPad = 11;
  std::vector<uint8_t> bytes[4];
  vantaro_picture pic{};
  explicit BottomUp(const Picture& top) : pic(top.pic) {
    for (int p = 0; p < 4; ++p) {
      const Extent e = top.Of(p);
      if (e.lines == 0) continue;
      const int32_t stride = e.bytes + kPad;
      bytes[p].assign(static_cast<size_t>(stride) * e.lines, kGuard);
      for (int32_t y = 0; y < e.lines; ++y) {
        std::memcpy(&bytes[p][static_cast<size_t>(e.lines - 1 - y) * stride], &top.At(p, 0, y), e.bytes);
      }
      pic.planes[p] = &bytes[p][static_cast<size_t>(e.lines - 1) * stride];
      pic.strides[p] = -stride;
    }
  }
  // The samples back top-down into `top`; false if a padding byte changed.
  bool CopyTo(Picture& top) const {
    for (int p = 0; p < 4; ++p) {
      const Extent e = top.Of(p);
      for (int32_t y = 0; y < e.lines; ++y) {
        const uint8_t* line = pic.planes[p] + static_cast<ptrdiff_t>(y) * pic.strides[p];
        std::memcpy(&top.At(p, 0, y), line, e.bytes);
        if (std::count(line + e.bytes, line + e.bytes + kPad, kGuard) != kPad) return false;
      }
    }
    return true;
  }
};

// Odd sizes code as the picture at the coded size with its right columns and
// bottom line repeated, and decode into its crop; bottom-up padded pictures
// code and decode as top-down ones, padding untouched.
TEST(PlaneSets, OddSizesAndBottomUpPicturesCodeAsTheCodedTopDownPicture) {
  const int32_t sizes[][2] = {{1, 1}, {17, 3}, {33, 35}, {50, 6}, {37, 29}};
  for (const vantaro_format format : kPlaneSets) {
    for (const uint32_t fourcc : {VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ9}) {
      for (const auto& s : sizes) {
        SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(format) + " " +
                     std::to_string(s[0]) + "x" + std::to_string(s[1]));
        int32_t cw = 0, ch = 0;
        ASSERT_EQ(vantaro_coded_size(s[0], s[1], &cw, &ch), VANTARO_OK);
        Picture in(format, s[0], s[1]), coded(format, cw, ch);
        Fill(in, Content::kNoise, static_cast<uint32_t>(s[0] * 100 + s[1]));
        for (int p = 0; p < 4; ++p) {
          for (int32_t y = 0; y < coded.Of(p).lines; ++y) {
            for (int32_t x = 0; x < coded.Of(p).bytes; ++x) {
              coded.At(p, x, y) = in.At(p, std::min(x, in.Of(p).bytes - 1), std::min(y, in.Of(p).lines - 1));
            }
          }
        }
        std::vector<uint8_t> frame, codedFrame, flippedFrame;
        ASSERT_EQ(Encode(fourcc, in.pic, 95, frame), VANTARO_OK);
        ASSERT_EQ(Encode(fourcc, coded.pic, 95, codedFrame), VANTARO_OK);
        ASSERT_EQ(Encode(fourcc, BottomUp(in).pic, 95, flippedFrame), VANTARO_OK);
        EXPECT_EQ(frame, codedFrame);
        EXPECT_EQ(frame, flippedFrame);
        Picture out(format, s[0], s[1]), outFlipped(format, s[0], s[1]);
        BottomUp flipped(outFlipped);
        ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
        ASSERT_EQ(Decode(fourcc, frame, coded.pic), VANTARO_OK);
        ASSERT_EQ(Decode(fourcc, frame, flipped.pic), VANTARO_OK);
        EXPECT_TRUE(out.GuardsIntact());
        EXPECT_TRUE(flipped.CopyTo(outFlipped));
        EXPECT_EQ(out.bytes, outFlipped.bytes);
        for (int p = 0; p < 4; ++p) {
          for (int32_t y = 0; y < out.Of(p).lines; ++y) {
            for (int32_t x = 0; x < out.Of(p).bytes; ++x) ASSERT_EQ(out.At(p, x, y), coded.At(p, x, y));
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace vantaro::test
