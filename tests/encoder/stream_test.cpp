// Whole frames through the walks: slice layout, partial rows and reads that
// stay inside the frame. Which bytes each loader reads, line order included,
// is pinned by the golden streams (tests/codec); the writer's capacity by
// the container and capacity tests.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "codec/field_flow.h"
#include "codec/layout_facts.h"
#include "codec/slice_walks.h"
#include "support/pictures.h"

namespace vantaro::encoder {
namespace {

using test::FourCC;
using test::Frame;
using test::TestInstance;

// The eight slice lengths of a frame whose header accounts for every byte.
std::vector<uint32_t> SliceLengths(const std::vector<uint8_t>& stream) {
  vantaro_frame_info info{};
  EXPECT_EQ(vantaro_frame_inspect(stream.data(), stream.size(), &info), VANTARO_OK);
  EXPECT_EQ(info.frame_bytes, stream.size());
  return {info.slice_lengths, info.slice_lengths + 8};
}

std::vector<uint8_t> Encode(uint32_t fourcc, uint32_t cs, int32_t w, int32_t h, const Frame& f) {
  TestInstance instance(fourcc, cs, w, h);
  return test::CompressFrameBytes(instance.get(), f);
}

// Too narrow for a whole macroblock: eight empty slices. How rows are dealt
// to slices is SliceLayout's (tests/codec), and the golden frames' partial
// rows pin the walks that follow it.
TEST(EncoderStream, SlicesTakeTheirRowsAndThePartialRow) {
  for (int32_t width : {0, 8, 15}) {
    const Frame f = test::MakeFrame(kCsRGB32, 16, 64, 3);
    const std::vector<uint8_t> empty = Encode(FourCC("VTQ5"), kCsRGB32, width, 64, f);
    EXPECT_EQ(empty.size(), 28u);
    for (uint32_t len : SliceLengths(empty)) EXPECT_EQ(len, 3u);
  }
}

// A partial row of `lines` field lines codes exactly as a whole row whose
// lines from `lines` on repeat the last real one.
TEST(EncoderStream, PartialRowsRepeatTheirLastLine) {
  const uint32_t packed[] = {kCsYUY2, kCsUYVY, kCsAYUV, kCsRGB24, kCsRGB32};
  for (uint32_t cs : packed) {
    for (uint32_t fourcc : {FourCC("VTQ0"), FourCC("VTQ3"), FourCC("VTQ5"), FourCC("VTQ9")}) {
      for (int lines = 1; lines < 16; ++lines) {
        // In 4:2:0 the rows below the last loaded chroma row repeat it; a
        // whole row would read line lines - 1 for them. The two agree when
        // that row came from line lines - 1 (packed 4:2:2: lines 1, 2, 3, 5,
        // 6, 7...; per pixel: odd lines).
        const bool packed422 = cs == kCsYUY2 || cs == kCsUYVY;
        const int m = (lines - 1) / 2;
        const int pick = packed422 ? ((m & 1) ? 2 * m : 2 * m + 1) : 2 * m;
        const int source = pick >= lines ? lines - 1 : pick;
        if (fourcc == FourCC("VTQ0") && source != lines - 1) continue;
        Frame whole = test::MakeFrame(cs, 16, 64, 40 + lines);
        // Field line i of macroblock row 1 is frame line 32 + 2 i (+1 for field 1).
        for (int field = 0; field < 2; ++field) {
          const uint8_t* last = whole.main.data() + (32 + 2 * (lines - 1) + field) * whole.stride;
          for (int i = lines; i < 16; ++i) {
            std::memcpy(whole.main.data() + (32 + 2 * i + field) * whole.stride, last, whole.stride);
          }
        }
        ASSERT_EQ(Encode(fourcc, cs, 16, 64, whole), Encode(fourcc, cs, 16, 32 + 2 * lines, whole))
            << "space " << cs << " lines " << lines << " fourcc " << std::hex << fourcc;
      }
    }
  }
}

// One frame line below the whole rows leaves the second field's partial row
// without a line: nothing is read for it, and its macroblocks code flat
// mid-grey (4 x 7 + 8 x 6 bits each in 4:4:4, predictors reset).
TEST(EncoderStream, APartialRowWithoutLinesCodesFlatGrey) {
  const int32_t w = 32, h = 33, stride = 4 * w;
  std::vector<uint8_t> picture(static_cast<size_t>(stride) * h, 200);  // exactly the frame
  TestInstance instance(FourCC("VTQ4"), kCsRGB32, w, h);
  std::vector<uint8_t> stream(1 << 16);
  stream.resize(static_cast<size_t>(
      test::CompressFrameSize(instance.get(), stream.data(), stream.size(), picture.data(), nullptr, stride) - 4));
  const std::vector<uint32_t> l = SliceLengths(stream);
  for (int s : {1, 5}) EXPECT_EQ(l[s], 3u + (2 * 76 + 7) / 8) << s;
}

// Packed layouts read only their own lines, including the partial row's,
// from buffers that hold exactly the frame (the sanitizer build checks it).
TEST(EncoderStream, PackedLayoutsReadOnlyInsideTheirFrame) {
  for (uint32_t cs : {kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32}) {
    for (int32_t h = 32; h < 64; h += 3) {
      const int32_t w = 32, stride = w * LayoutOf(cs).pixelBytes;
      size_t bytes = static_cast<size_t>(stride) * h;
      if (cs == kCsUYVA) bytes += static_cast<size_t>(w) * h;  // the alpha plane
      std::vector<uint8_t> picture = test::PatternBytes(bytes, static_cast<uint32_t>(h), stride);
      for (uint32_t fourcc : {FourCC("VTQ0"), FourCC("VTQ9")}) {
        TestInstance instance(fourcc, cs, w, h);
        std::vector<uint8_t> stream(1 << 16);
        EXPECT_GT(test::CompressFrameSize(instance.get(), stream.data(), stream.size(), picture.data(), nullptr,
                                          stride),
                  28) << cs << " " << h;
      }
    }
  }
}

}  // namespace
}  // namespace vantaro::encoder
