// Whole frames through the walks: slice layout, partial rows, the loaders'
// deliberate readings, bottom-up pictures, determinism and buffer limits.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "codec/field_flow.h"
#include "codec/slice_walks.h"
#include "support/pictures.h"

namespace vantaro::encoder {
namespace {

using test::FourCC;
using test::Frame;
using test::TestInstance;

uint32_t Read24(const uint8_t* p) { return p[0] | (p[1] << 8) | (p[2] << 16); }

// The eight slice lengths of a frame.
std::vector<uint32_t> SliceLengths(const std::vector<uint8_t>& stream) {
  std::vector<uint32_t> lengths;
  size_t pos = 4;
  for (int s = 0; s < 8; ++s) {
    if (s == 4) pos = Read24(stream.data() + 1);
    lengths.push_back(Read24(stream.data() + pos));
    pos += lengths.back();
  }
  EXPECT_EQ(pos, stream.size());
  return lengths;
}

std::vector<uint8_t> Encode(uint32_t fourcc, uint32_t cs, int32_t w, int32_t h, const Frame& f) {
  TestInstance instance(fourcc, cs, w, h);
  return test::CompressFrameBytes(instance.get(), f);
}

TEST(EncoderStream, SlicesTakeTheirRowsAndThePartialRow) {
  const uint32_t vtq2 = FourCC('V', 'T', 'Q', '2');
  Frame f = test::MakeFrame(kCsYUY2, 32, 48, 1);
  std::vector<uint32_t> l = SliceLengths(Encode(vtq2, kCsYUY2, 32, 48, f));
  EXPECT_GT(l[0], 3u);  // row 0
  EXPECT_GT(l[1], 3u);  // the partial row of 8 field lines
  EXPECT_EQ(l[2], 3u);
  EXPECT_EQ(l[3], 3u);
  EXPECT_EQ(l[6], 3u);

  f = test::MakeFrame(kCsYUY2, 16, 486, 2);
  l = SliceLengths(Encode(vtq2, kCsYUY2, 16, 486, f));
  for (int s = 0; s < 8; ++s) EXPECT_GT(l[s], 3u) << s;

  for (int32_t width : {0, 8, 15}) {  // no whole macroblock across: empty slices
    f = test::MakeFrame(kCsRGB32, 16, 64, 3);
    const std::vector<uint8_t> empty = Encode(FourCC('V', 'T', 'Q', '5'), kCsRGB32, width, 64, f);
    EXPECT_EQ(empty.size(), 28u);
    for (uint32_t len : SliceLengths(empty)) EXPECT_EQ(len, 3u);
  }
}

// A partial row of `lines` field lines codes exactly as a whole row whose
// lines from `lines` on repeat the last real one.
TEST(EncoderStream, PartialRowsRepeatTheirLastLine) {
  const uint32_t packed[] = {kCsYUY2, kCsUYVY, kCsAYUV, kCsRGB24, kCsRGB32};
  const uint32_t fourccs[] = {FourCC('V', 'T', 'Q', '0'), FourCC('V', 'T', 'Q', '3'),
                              FourCC('V', 'T', 'Q', '5'), FourCC('V', 'T', 'Q', '9')};
  for (uint32_t cs : packed) {
    for (uint32_t fourcc : fourccs) {
      for (int lines = 1; lines < 16; ++lines) {
        // In 4:2:0 the rows below the last loaded chroma row repeat it; a
        // whole row would read line lines - 1 for them. The two agree when
        // that row came from line lines - 1 (packed 4:2:2: lines 1, 2, 3, 5,
        // 6, 7...; per pixel: odd lines).
        const bool packed422 = cs == kCsYUY2 || cs == kCsUYVY;
        const int m = (lines - 1) / 2;
        const int pick = packed422 ? ((m & 1) ? 2 * m : 2 * m + 1) : 2 * m;
        const int source = pick >= lines ? lines - 1 : pick;
        if (fourcc == FourCC('V', 'T', 'Q', '0') && source != lines - 1) continue;
        Frame whole = test::MakeFrame(cs, 16, 64, 40 + lines);
        // Field line i of macroblock row 1 is frame line 32 + 2 i (+1 for field 1).
        for (int field = 0; field < 2; ++field) {
          const uint8_t* last = whole.main.data() + (32 + 2 * (lines - 1) + field) * whole.stride;
          for (int i = lines; i < 16; ++i) {
            std::memcpy(whole.main.data() + (32 + 2 * i + field) * whole.stride, last, whole.stride);
          }
        }
        const std::vector<uint8_t> a = Encode(fourcc, cs, 16, 64, whole);
        const std::vector<uint8_t> b = Encode(fourcc, cs, 16, 32 + 2 * lines, whole);
        const std::vector<uint32_t> la = SliceLengths(a), lb = SliceLengths(b);
        ASSERT_EQ(la, lb) << "space " << cs << " lines " << lines << " fourcc " << std::hex << fourcc;
        ASSERT_EQ(a, b) << "space " << cs << " lines " << lines;
      }
    }
  }
}

// Frames that differ only where a loader must not look code the same, and
// frames that differ where it must look do not.
class LoaderReadings : public ::testing::Test {
 protected:
  template <class Change>
  void Expect(uint32_t fourcc, uint32_t cs, bool same, Change change, const char* what) {
    Frame f = test::MakeFrame(cs, 64, 64, 9);
    const std::vector<uint8_t> before = Encode(fourcc, cs, 64, 64, f);
    change(f);
    const std::vector<uint8_t> after = Encode(fourcc, cs, 64, 64, f);
    EXPECT_EQ(before == after, same) << what;
  }
};

TEST_F(LoaderReadings, PlanarLoadersRepeatLinesZeroAndOne) {
  // NV12 frame of 64 x 64: field 0 lines are frame lines 0, 2, 4...; the
  // loaders read only field lines 0 and 1 of each macroblock row.
  const uint32_t vtq2 = FourCC('V', 'T', 'Q', '2');
  // (The doubled column step makes the last macroblocks of a field read on
  // into the next lines, so frame lines 4 and 5 are left alone.)
  Expect(vtq2, kCsNV12, true, [](Frame& f) { std::memset(&f.main[6 * f.stride], 0, 10 * f.stride); },
         "field lines 3..7 of row 0");
  Expect(vtq2, kCsNV12, false, [](Frame& f) { f.main[2 * f.stride + 3] ^= 0x80; },
         "field line 1 of row 0");
  // The doubled column step: columns 16..31 of line 0 belong to no macroblock.
  Expect(vtq2, kCsNV12, true, [](Frame& f) { std::memset(&f.main[16], 0, 16); }, "columns 16..31");
  Expect(vtq2, kCsYA22, true, [](Frame& f) { std::memset(&f.main[32], 0, 32); }, "YA columns 16..31");
}

TEST_F(LoaderReadings, AyuvByteOneIsNeverRead) {
  for (uint32_t fourcc : {FourCC('V', 'T', 'Q', '1'), FourCC('V', 'T', 'Q', '9')}) {
    Expect(fourcc, kCsAYUV, true,
           [](Frame& f) { for (size_t i = 1; i < f.main.size(); i += 4) f.main[i] = 0; }, "byte 1");
    Expect(fourcc, kCsAYUV, false, [](Frame& f) { f.main[0] ^= 0x40; }, "byte 0");
  }
}

TEST_F(LoaderReadings, PackedSourcesInto420TakeChromaFromLinesOneTwoFiveSix) {
  const uint32_t vtq0 = FourCC('V', 'T', 'Q', '0');
  // YUY2: U of pixel 0 is byte 1. Field 0 line i is frame line 2 i.
  Expect(vtq0, kCsYUY2, true, [](Frame& f) { f.main[1] ^= 0x80; }, "chroma of line 0");
  Expect(vtq0, kCsYUY2, false, [](Frame& f) { f.main[2 * f.stride + 1] ^= 0x80; }, "line 1");
  Expect(vtq0, kCsYUY2, false, [](Frame& f) { f.main[4 * f.stride + 3] ^= 0x80; }, "line 2");
  Expect(vtq0, kCsYUY2, true, [](Frame& f) { f.main[6 * f.stride + 3] ^= 0x80; }, "line 3");
  // Per-pixel sources take even lines and even columns.
  Expect(vtq0, kCsAYUV, true, [](Frame& f) { f.main[6] ^= 0x80; }, "U of pixel 1");
  Expect(vtq0, kCsAYUV, true, [](Frame& f) { f.main[2 * f.stride + 2] ^= 0x80; }, "U of line 1");
}

TEST_F(LoaderReadings, UyvaAlphaComesFromThePlaneBehindEachField) {
  const uint32_t vtq3 = FourCC('V', 'T', 'Q', '3');
  // 64 x 64 UYVA, frame stride 128: the alpha plane starts after 64 lines,
  // field 0 at frameBase + 32 * 256, field 1 one alpha line (width) further.
  Frame f = test::MakeFrame(kCsUYVA, 64, 64, 5);
  const std::vector<uint8_t> base = Encode(vtq3, kCsUYVA, 64, 64, f);
  const size_t field0 = 32 * 256;
  f.main[field0 + 64] ^= 0x55;  // field 1, alpha line 0
  std::vector<uint8_t> changed = Encode(vtq3, kCsUYVA, 64, 64, f);
  const size_t second = Read24(base.data() + 1);
  EXPECT_TRUE(std::equal(base.begin(), base.begin() + second, changed.begin()));
  EXPECT_NE(base, changed);
  f.main[field0 + 64] ^= 0x55;
  f.main[field0 + 128 * 15 + 3] ^= 0x55;  // field 0, alpha line 15 of row 0
  changed = Encode(vtq3, kCsUYVA, 64, 64, f);
  EXPECT_FALSE(std::equal(base.begin(), base.begin() + second, changed.begin()));
}

TEST(EncoderStream, Rgb24IntoAnAlphaStreamCodesOpaqueAlphaAndTwoMoreEndMarkers) {
  Frame f = test::MakeFrame(kCsRGB24, 16, 32, 4);
  const std::vector<uint8_t> plain = Encode(FourCC('V', 'T', 'Q', '0'), kCsRGB24, 16, 32, f);
  const std::vector<uint8_t> alpha = Encode(FourCC('V', 'T', 'Q', '1'), kCsRGB24, 16, 32, f);
  // One macroblock per field: 12 more bits, all markers "110".
  for (int field = 0; field < 2; ++field) {
    const size_t pa = field == 0 ? 4 : Read24(plain.data() + 1);
    const size_t pb = field == 0 ? 4 : Read24(alpha.data() + 1);
    const uint32_t la = Read24(plain.data() + pa), lb = Read24(alpha.data() + pb);
    EXPECT_GE(lb, la + 1);
    EXPECT_LE(lb, la + 2);
  }
  EXPECT_NE(plain, alpha);
}

// One frame line below the whole rows leaves the second field's partial row
// without a line: nothing is read for it, and its macroblocks code flat
// mid-grey (4 x 7 + 8 x 6 bits each in 4:4:4, predictors reset).
TEST(EncoderStream, APartialRowWithoutLinesCodesFlatGrey) {
  const int32_t w = 32, h = 33, stride = 4 * w;
  std::vector<uint8_t> picture(static_cast<size_t>(stride) * h, 200);  // exactly the frame
  TestInstance instance(FourCC('V', 'T', 'Q', '4'), kCsRGB32, w, h);
  std::vector<uint8_t> stream(1 << 16);
  const int64_t n = test::CompressFrameSize(instance.get(), stream.data(), stream.size(), picture.data(),
                                  nullptr, stride);
  stream.resize(static_cast<size_t>(n - 4));
  const std::vector<uint32_t> l = SliceLengths(stream);
  EXPECT_EQ(l[1], 3u + (2 * 76 + 7) / 8);
  EXPECT_EQ(l[5], 3u + (2 * 76 + 7) / 8);
}

// Packed layouts read only their own lines, including the partial row's,
// from buffers that hold exactly the frame (the sanitizer build checks it).
TEST(EncoderStream, PackedLayoutsReadOnlyInsideTheirFrame) {
  const uint32_t packed[] = {kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32};
  const int32_t bytesPerPixel[] = {2, 2, 2, 4, 3, 4};
  for (size_t k = 0; k < std::size(packed); ++k) {
    for (int32_t h = 32; h < 64; h += 3) {
      const int32_t w = 32, stride = w * bytesPerPixel[k];
      size_t bytes = static_cast<size_t>(stride) * h;
      if (packed[k] == kCsUYVA) bytes += static_cast<size_t>(w) * h;  // the alpha plane
      std::vector<uint8_t> picture = test::PatternBytes(bytes, static_cast<uint32_t>(h), stride);
      for (uint32_t fourcc : {FourCC('V', 'T', 'Q', '0'), FourCC('V', 'T', 'Q', '9')}) {
        TestInstance instance(fourcc, packed[k], w, h);
        std::vector<uint8_t> stream(1 << 16);
        EXPECT_GT(test::CompressFrameSize(instance.get(), stream.data(), stream.size(), picture.data(),
                                nullptr, stride),
                  28);
      }
    }
  }
}

TEST(EncoderStream, BottomUpPicturesCodeAsTheirTopDownMirror) {
  for (uint32_t cs : {kCsRGB24, kCsRGB32, kCsYUY2}) {
    const int32_t w = 48, h = 70;
    Frame top = test::MakeFrame(cs, w, h, 6, 8);
    Frame bottom = top;
    for (int32_t y = 0; y < h; ++y) {
      std::memcpy(&bottom.main[(h - 1 - y) * top.stride], &top.main[y * top.stride], top.stride);
    }
    TestInstance a(FourCC('V', 'T', 'Q', '4'), cs, w, h), b(FourCC('V', 'T', 'Q', '4'), cs, w, h);
    std::vector<uint8_t> sa(1 << 18), sb(1 << 18);
    const int64_t na = test::CompressFrameSize(a.get(), sa.data(), sa.size(), top.main.data(), nullptr, top.stride);
    const int64_t nb = test::CompressFrameSize(b.get(), sb.data(), sb.size(),
                                     bottom.main.data() + (h - 1) * top.stride, nullptr, -top.stride);
    ASSERT_EQ(na, nb);
    EXPECT_TRUE(std::equal(sa.begin(), sa.begin() + na - 4, sb.begin())) << cs;
  }
}

TEST(EncoderStream, ATooSmallBufferDoesNotFitAndNothingIsWrittenPastItsEnd) {
  const Frame f = test::MakeFrame(kCsRGB32, 64, 96, 11);
  TestInstance instance(FourCC('V', 'T', 'Q', '5'), kCsRGB32, 64, 96);
  std::vector<uint8_t> reference(1 << 18);
  const int64_t size = test::CompressFrameSize(instance.get(), reference.data(), reference.size(),
                                               f.main.data(), nullptr, f.stride);
  int fits = 0, misses = 0;
  for (int64_t capacity = 0; capacity <= size + 8; capacity += capacity < size - 80 ? 61 : 1) {
    std::vector<uint8_t> buffer(static_cast<size_t>(size) + 64, 0xA5);
    int64_t n = 0;
    const Status status = CompressFrame(instance.get(), buffer.data(), static_cast<size_t>(capacity),
                                        f.main.data(), nullptr, f.stride, &n);
    if (status == Status::kOk) {
      ASSERT_EQ(n, size);
      EXPECT_TRUE(std::equal(buffer.begin(), buffer.begin() + size - 4, reference.begin()));
      ++fits;
    } else {
      EXPECT_EQ(status, Status::kDoesNotFit);
      EXPECT_LT(capacity, size) << "an exact fit must work";
      ++misses;
    }
    for (size_t i = static_cast<size_t>(capacity); i < buffer.size(); ++i) {
      ASSERT_EQ(buffer[i], 0xA5) << "capacity " << capacity << " byte " << i;
    }
  }
  EXPECT_GT(fits, 0);
  EXPECT_GT(misses, 0);
}

}  // namespace
}  // namespace vantaro::encoder
