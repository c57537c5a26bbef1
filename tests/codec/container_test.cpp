// The frame container at the direct door: the bounded loads behind the
// reader, the empty frame of an unusable layout, field results, the writer's
// capacity and the quality byte a decoder follows.
#include <gtest/gtest.h>

#include <vector>

#include "codec/bit_stream.h"
#include "codec/field_flow.h"
#include "support/headers.h"
#include "support/pictures.h"

namespace vantaro {
namespace {

TEST(BitStream, BoundedLoadsReadNothingPastTheEnd) {
  const uint8_t bytes[5] = {1, 2, 3, 4, 5};
  EXPECT_EQ(LoadLeBounded(bytes, bytes + 5, 8), 0x0504030201ull);
  EXPECT_EQ(LoadLeBounded(bytes + 3, bytes + 5, 8), 0x0504ull);
  EXPECT_EQ(LoadLeBounded(bytes + 5, bytes + 5, 8), 0ull);
  EXPECT_EQ(LoadLeBounded(bytes, bytes + 5, 3), 0x030201ull);
}

using test::PictureHeader;

uint32_t Le24(const uint8_t* p) { return p[0] | (p[1] << 8) | (p[2] << 16); }

// 16-bit RGB is layout 0: frames and fields of empty slices, and field
// results that count the bytes so far plus four.
TEST(Container, UnusableLayoutGivesEmptyFramesAndFields) {
  const BITMAPINFOHEADER h = PictureHeader(kBiRgb, 16, 64, 64);
  void* encoder = VTC_CompressFieldBegin(&h, VTC_FOURCC('V', 'T', 'Q', '2'));
  std::vector<uint8_t> stream(64, 0xEE), picture(64 * 64 * 2, 0x80);
  EXPECT_EQ(VTC_CompressFrame(encoder, stream.data(), picture.data(), 128), 32);
  EXPECT_EQ(stream[0], 96);
  EXPECT_EQ(Le24(&stream[1]), 16u);  // 4 + four empty slices
  for (int s = 0; s < 8; ++s) EXPECT_EQ(Le24(&stream[4 + 3 * s]), 3u) << "slice " << s;
  VTC_CompressFieldEnd(encoder);
  encoder = VTC_CompressFieldBegin(&h, VTC_FOURCC('v', 't', 'q', '0'));
  EXPECT_EQ(VTC_CompressField(encoder, stream.data(), picture.data(), 256, 0), 20);
  EXPECT_EQ(VTC_CompressField(encoder, stream.data(), picture.data() + 128, 256, 1), 32);
  VTC_CompressFieldEnd(encoder);
  EXPECT_EQ(VTC_CompressFieldEnd(nullptr), 0);
  EXPECT_EQ(VTC_DecompressFieldEnd(nullptr), 0);
}

TEST(Container, WriterNeverPassesItsCapacity) {
  test::TestInstance instance;
  std::vector<uint8_t> stream(40, 0xAB);
  const uint8_t picture[4] = {};
  int64_t size = 0;
  const auto field = [&](size_t capacity) {
    return CompressField(instance.get(), stream.data(), capacity, picture, nullptr, 0, 0, &size);
  };
  EXPECT_EQ(field(7), Status::kDoesNotFit);
  EXPECT_EQ(field(12), Status::kDoesNotFit);
  for (size_t i = 12; i < stream.size(); ++i) ASSERT_EQ(stream[i], 0xAB) << i;
  // 4 header bytes + 4 * 3 slice bytes + the 4-byte reach of the last store.
  EXPECT_EQ(field(20), Status::kOk);
  EXPECT_EQ(size, 20);
}

TEST(Container, DecoderFollowsTheQualityByteOnlyInOneToNinetyNine) {
  test::TestInstance owner(MakeFourCC('V', 'T', 'Q', '0'));
  CodecInstance& instance = *owner.get();
  uint8_t frame[32] = {89, 16, 0, 0, 3, 0, 0, 3, 0, 0, 3, 0, 0, 3, 0, 0,
                       3,  0,  0, 3, 0, 0, 3, 0, 0, 3, 0, 0, 0, 0, 0, 0};
  uint8_t picture[4] = {};
  // Read on either field and snapped to the ladder; 0 and 100 leave it as it was.
  const struct { uint8_t byte; int32_t field; uint32_t quality; } steps[] = {{89, 1, 90}, {0, 0, 90}, {100, 0, 90}, {1, 0, 4}};
  for (const auto& step : steps) {
    frame[0] = step.byte;
    DecompressField(&instance, picture, nullptr, frame, 0, step.field);
    EXPECT_EQ(instance.quality, step.quality) << int(step.byte);
  }
}

}  // namespace
}  // namespace vantaro
