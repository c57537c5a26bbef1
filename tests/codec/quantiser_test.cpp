#include <gtest/gtest.h>

#include <vector>

#include "codec/codec_instance.h"
#include "codec/quantiser.h"
#include "support/headers.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro {
namespace {

using Instance = test::TestInstance;

// Even distances from 100 stand as they are, odd ones snap down the ladder;
// snapping its own output changes nothing.
TEST(Quantiser, LadderSnapsEvenDistancesAsTheyStandAndOddOnesDownward) {
  const int32_t cases[][2] = {{100, 99}, {99, 99}, {96, 96}, {93, 93}, {92, 92}, {91, 92}, {90, 90},
                              {89, 90},  {77, 78}, {76, 76}, {75, 76}, {74, 74}, {51, 52}, {50, 50},
                              {38, 38},  {37, 44}, {36, 36}, {1, 4}};
  for (const auto& [q, quality] : cases) {
    Instance instance;
    SetQuality(instance.get(), q);
    EXPECT_EQ(instance->quality, static_cast<uint32_t>(quality)) << "q " << q;
  }
  for (int32_t q = 1; q <= 100; ++q) {
    const int32_t once = 100 - QuantiserScaleFor(q);
    EXPECT_EQ(100 - QuantiserScaleFor(once), once) << "q " << q;
    EXPECT_GE(once, q > 99 ? 99 : q);
  }
}

// A fresh instance is at 96 with tables the vector kernels may load aligned;
// then the driver's 0..10000 scale in steps, each after the one before.
TEST(Quantiser, IcmScaleMapping) {
  Instance instance;
  EXPECT_EQ(instance->quality, 96u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(instance->reciprocalTable) % 16, 0u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(instance->multiplierTable) % 16, 0u);
  const int32_t steps[][2] = {{10000, 96},  // the top of the scale is ignored
                              {9999, 99}, {0, 50}, {9200, 96}, {-200, 50}, {8600, 93}};
  for (const auto& [icm, quality] : steps) {
    SetQualityFromIcm(instance.get(), icm);
    EXPECT_EQ(instance->quality, static_cast<uint32_t>(quality)) << icm;
  }
  EXPECT_EQ(QualityToIcm(instance.get()), 8600);
  SetQuality(instance.get(), 1);  // a decoded frame can take it below 50
  EXPECT_EQ(QualityToIcm(instance.get()), (4 - 50) * 200);
}

TEST(Quantiser, BeginQualityWritesTheSnappedQualityAsFirstStreamByte) {
  const BITMAPINFOHEADER header = test::PictureHeader(test::FourCC("YUY2"), 16, 16, 32);
  const int32_t cases[][2] = {{100, 96}, {99, 99}, {89, 90}, {50, 50}, {49, 50}, {150, 99},
                              {INT32_MIN, 50}, {INT32_MAX, 50}};  // the extremes wrap, defined
  for (const auto& [argument, firstByte] : cases) {
    void* encoder = VTC_CompressFieldBeginQuality(&header, VTC_FOURCC('V', 'T', 'Q', '2'), argument);
    std::vector<uint8_t> stream(16 * 32 * 6 + 64);
    const uint8_t picture[16 * 32 * 2] = {};
    ASSERT_GT(VTC_CompressFrame(encoder, stream.data(), picture, 32), 0);
    EXPECT_EQ(stream[0], firstByte) << "argument " << argument;
    VTC_CompressFieldEnd(encoder);
  }
}

}  // namespace
}  // namespace vantaro
