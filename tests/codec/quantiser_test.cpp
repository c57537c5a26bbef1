#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "codec/codec_instance.h"
#include "codec/quantiser.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro {
namespace {

using Instance = test::TestInstance;

TEST(Quantiser, LadderSnapsEvenDistancesAsTheyStandAndOddOnesDownward) {
  const struct {
    int32_t q, quality;
  } cases[] = {{100, 99}, {99, 99}, {96, 96}, {93, 93}, {92, 92}, {91, 92}, {90, 90},
               {89, 90},  {77, 78}, {76, 76}, {75, 76}, {74, 74}, {51, 52}, {50, 50},
               {38, 38},  {37, 44}, {36, 36}, {1, 4}};
  for (const auto& c : cases) {
    Instance instance;
    SetQuality(instance.get(), c.q);
    EXPECT_EQ(instance->quality, static_cast<uint32_t>(c.quality)) << "q " << c.q;
  }
}

TEST(Quantiser, SnappingIsIdempotentOnEveryEncoderQuality) {
  for (int32_t q = 1; q <= 100; ++q) {
    const int32_t once = 100 - QuantiserScaleFor(q);
    EXPECT_EQ(100 - QuantiserScaleFor(once), once) << "q " << q;
    EXPECT_GE(once, q > 99 ? 99 : q);
  }
}

// The vector kernels load the tables aligned.
TEST(Quantiser, FreshInstanceHasQuality96AndAlignedTables) {
  Instance instance;
  EXPECT_EQ(instance->quality, 96u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(instance->reciprocalTable) % 16, 0u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(instance->multiplierTable) % 16, 0u);
}

TEST(Quantiser, IcmScaleMapping) {
  Instance instance;
  SetQualityFromIcm(instance.get(), 10000);  // the top of the scale is ignored
  EXPECT_EQ(instance->quality, 96u);
  SetQualityFromIcm(instance.get(), 9999);
  EXPECT_EQ(instance->quality, 99u);
  SetQualityFromIcm(instance.get(), 0);
  EXPECT_EQ(instance->quality, 50u);
  SetQualityFromIcm(instance.get(), 9200);
  EXPECT_EQ(instance->quality, 96u);
  SetQualityFromIcm(instance.get(), -200);
  EXPECT_EQ(instance->quality, 50u);
  SetQuality(instance.get(), 93);
  EXPECT_EQ(QualityToIcm(instance.get()), 8600);
  SetQualityFromIcm(instance.get(), 8600);
  EXPECT_EQ(instance->quality, 93u);
  SetQuality(instance.get(), 1);  // a decoded frame can take it below 50
  EXPECT_EQ(QualityToIcm(instance.get()), (4 - 50) * 200);
}

TEST(Quantiser, BeginQualityWritesTheSnappedQualityAsFirstStreamByte) {
  BITMAPINFOHEADER header{};
  header.biSize = 40;
  header.biWidth = 16;
  header.biHeight = 32;
  header.biBitCount = 16;
  header.biCompression = VTC_FOURCC('Y', 'U', 'Y', '2');
  const struct {
    int32_t argument, firstByte;
  } cases[] = {{100, 96}, {99, 99}, {89, 90}, {50, 50}, {49, 50}, {150, 99},
               {INT32_MIN, 50}, {INT32_MAX, 50}};  // the extremes wrap, defined
  for (const auto& c : cases) {
    void* encoder = VTC_CompressFieldBeginQuality(&header, VTC_FOURCC('V', 'T', 'Q', '2'), c.argument);
    std::vector<uint8_t> stream(16 * 32 * 6 + 64);
    const uint8_t picture[16 * 32 * 2] = {};
    ASSERT_GT(VTC_CompressFrame(encoder, stream.data(), picture, 32), 0);
    EXPECT_EQ(stream[0], c.firstByte) << "argument " << c.argument;
    VTC_CompressFieldEnd(encoder);
  }
}

}  // namespace
}  // namespace vantaro
