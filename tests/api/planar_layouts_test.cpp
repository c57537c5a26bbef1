// The plane-set loaders and stores at any size and line order: odd sizes as
// their edge-replicated coded picture, bottom-up strides as top-down, and
// nothing written outside the picture. Their bytes are pinned by the golden
// suite.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/pictures.h"

namespace vantaro::test {
namespace {

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
        SCOPED_TRACE(Name(fourcc) + " format " + std::to_string(format) + " " + std::to_string(s[0]) + "x" +
                     std::to_string(s[1]));
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
            ASSERT_EQ(std::memcmp(&out.At(p, 0, y), &coded.At(p, 0, y), out.Of(p).bytes), 0) << p << "," << y;
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace vantaro::test
