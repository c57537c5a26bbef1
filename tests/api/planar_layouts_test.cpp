// The plane-set loaders and stores: exact where a direct layout is exact,
// odd sizes as their edge-replicated coded picture, bottom-up strides,
// nothing written outside the picture, and the family conversions.
#include <gtest/gtest.h>

#include <algorithm>

#include "api/api_pictures.h"

namespace api_test {
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
    Fill(in, true);
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
    Fill(in, false);
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

// The picture at the coded size with its right columns and bottom line
// repeated, plane by plane.
Picture Replicated(const Picture& in, int32_t cw, int32_t ch) {
  Picture out(in.pic.format, cw, ch);
  for (int p = 0; p < 4; ++p) {
    const Extent small = in.Of(p), big = out.Of(p);
    for (int32_t y = 0; y < big.lines; ++y) {
      for (int32_t x = 0; x < big.bytes; ++x) {
        out.At(p, x, y) = in.At(p, std::min(x, small.bytes - 1), std::min(y, small.lines - 1));
      }
    }
  }
  return out;
}

const vantaro_format kPlaneSets[] = {VANTARO_FORMAT_YUV420P, VANTARO_FORMAT_YUVA420P,
                                     VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_YUVA422P,
                                     VANTARO_FORMAT_YUV444P, VANTARO_FORMAT_YUVA444P};

TEST(PlaneSets, OddSizesCodeTheEdgeReplicatedPictureAndDecodeItsCrop) {
  const int32_t sizes[][2] = {{1, 1}, {17, 3}, {33, 35}, {50, 6}};
  for (const vantaro_format format : kPlaneSets) {
    for (const uint32_t fourcc : {VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ9}) {
      for (const auto& s : sizes) {
        SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(format) + " " +
                     std::to_string(s[0]) + "x" + std::to_string(s[1]));
        int32_t cw = 0, ch = 0;
        ASSERT_EQ(vantaro_coded_size(s[0], s[1], &cw, &ch), VANTARO_OK);
        Picture in(format, s[0], s[1]);
        Fill(in, true, static_cast<uint32_t>(s[0] * 100 + s[1]));
        std::vector<uint8_t> frame, codedFrame;
        ASSERT_EQ(Encode(fourcc, in.pic, 95, frame), VANTARO_OK);
        ASSERT_EQ(Encode(fourcc, Replicated(in, cw, ch).pic, 95, codedFrame), VANTARO_OK);
        EXPECT_EQ(frame, codedFrame);
        Picture out(format, s[0], s[1]), coded(format, cw, ch);
        ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
        ASSERT_EQ(Decode(fourcc, frame, coded.pic), VANTARO_OK);
        EXPECT_TRUE(out.GuardsIntact());
        for (int p = 0; p < 4; ++p) {
          for (int32_t y = 0; y < out.Of(p).lines; ++y) {
            for (int32_t x = 0; x < out.Of(p).bytes; ++x) ASSERT_EQ(out.At(p, x, y), coded.At(p, x, y));
          }
        }
      }
    }
  }
}

// A picture whose lines run bottom-up through padded strides.
struct BottomUp {
  std::vector<uint8_t> bytes[4];
  vantaro_picture pic{};
  static constexpr int32_t kPad = 11;
  explicit BottomUp(const Picture& top) {
    pic = top.pic;
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
  uint8_t At(int p, int32_t x, int32_t y) const { return pic.planes[p][static_cast<ptrdiff_t>(y) * pic.strides[p] + x]; }
  bool PaddingIntact(const Picture& top) const {
    for (int p = 0; p < 4; ++p) {
      const Extent e = top.Of(p);
      for (int32_t y = 0; y < e.lines; ++y) {
        for (int32_t x = e.bytes; x < e.bytes + kPad; ++x) {
          if (bytes[p][static_cast<size_t>(y) * (e.bytes + kPad) + x] != kGuard) return false;
        }
      }
    }
    return true;
  }
};

TEST(PlaneSets, BottomUpPaddedPicturesMatchTopDownAndKeepTheirPadding) {
  for (const vantaro_format format : kPlaneSets) {
    SCOPED_TRACE(format);
    Picture in(format, 37, 29);
    Fill(in, true);
    const BottomUp flipped(in);
    std::vector<uint8_t> frame, flippedFrame;
    ASSERT_EQ(Encode(VANTARO_FOURCC_VTQ5, in.pic, 93, frame), VANTARO_OK);
    ASSERT_EQ(Encode(VANTARO_FOURCC_VTQ5, flipped.pic, 93, flippedFrame), VANTARO_OK);
    EXPECT_EQ(frame, flippedFrame);
    Picture out(format, 37, 29);
    Fill(out, true, 99);
    BottomUp outFlipped(out);
    ASSERT_EQ(Decode(VANTARO_FOURCC_VTQ5, frame, out.pic), VANTARO_OK);
    ASSERT_EQ(Decode(VANTARO_FOURCC_VTQ5, frame, outFlipped.pic), VANTARO_OK);
    EXPECT_TRUE(outFlipped.PaddingIntact(out));
    for (int p = 0; p < 4; ++p) {
      for (int32_t y = 0; y < out.Of(p).lines; ++y) {
        for (int32_t x = 0; x < out.Of(p).bytes; ++x) ASSERT_EQ(out.At(p, x, y), outFlipped.At(p, x, y));
      }
    }
  }
}

// Every planar format through every variant and back into the same format:
// chroma of the stream's family as sharp as luma, converted chroma close.
TEST(PlaneSets, ChromaSurvivesEveryFamilyConversion) {
  const uint32_t variants[] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ2, VANTARO_FOURCC_VTQ4};
  for (const uint32_t fourcc : variants) {
    for (const vantaro_format format : kPlaneSets) {
      SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(format));
      Picture in(format, 48, 64);
      Ramp(in);
      std::vector<uint8_t> frame;
      ASSERT_EQ(Encode(fourcc, in.pic, 96, frame), VANTARO_OK);
      Picture out(format, 48, 64);
      ASSERT_EQ(Decode(fourcc, frame, out.pic), VANTARO_OK);
      const int formatFamily = (format - 1) / 2, streamFamily = (fourcc >> 24) - '0';
      const double floor = formatFamily * 2 == streamFamily ? 44.0 : 40.0;
      EXPECT_GT(Psnr(in, out, 0), 38.0);
      EXPECT_GT(Psnr(in, out, 1), floor);
      EXPECT_GT(Psnr(in, out, 2), floor);
      if (format % 2 == 0) {
        EXPECT_EQ(out.At(3, 5, 5), 255) << "a stream without alpha is opaque";
      }
    }
  }
}

}  // namespace
}  // namespace api_test
