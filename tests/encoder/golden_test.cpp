// Golden streams: small fixed pictures through every variant and layout,
// hashed. Recorded once the encoder had been checked against the format
// piece by piece (the other suites here), so that no later change can
// alter a single stream bit unnoticed; the scalar rerun of the suite holds
// the scalar kernels to the same hashes.
#include <gtest/gtest.h>

#include <vector>

#include "codec/codec_instance.h"
#include "codec/quantiser.h"
#include "support/pictures.h"

namespace vantaro::encoder {
namespace {

using test::FourCC;

constexpr uint32_t kLayouts[] = {kCsNV12, kCsNV16, kCsNV24, kCsYA20, kCsYA22, kCsYA44,
                                 kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32};

struct Case {
  int32_t width, height, padding, quality;
};
// Whole rows, a partial row of 3 field lines and a column beyond the last
// whole macroblock; then a padded stride at a coarse quality.
constexpr Case kCases[] = {{48, 70, 0, 96}, {40, 64, 24, 50}};

uint64_t StreamHash(uint32_t fourcc, uint32_t cs, const Case& c) {
  const test::Frame frame = test::MakeFrame(cs, c.width, c.height, 77 + cs, c.padding);
  test::TestInstance instance(fourcc, cs, c.width, c.height);
  SetQuality(instance.get(), c.quality);
  const std::vector<uint8_t> stream = test::CompressFrameBytes(instance.get(), frame);
  return test::Fnv1a64(stream.data(), stream.size());
}

// [case][layout]: the eight variants' hashes, in variant order, hashed again.
constexpr uint64_t kGolden[2][12] = {
    {0x72efe361635d1364ull, 0x2d69f78dc6d09ca5ull, 0xbdcd5a1f9be5811aull, 0x6efe66a163821bf9ull,
     0x313f3dc1819b0c03ull, 0xcfccb160333191a0ull, 0xba9d2e8294821994ull, 0xfa048a9648d95d94ull,
     0x2029bce73f970c75ull, 0xa334a421cc58cac4ull, 0xa49bed27d0d2d192ull, 0x74d6c7f07f858d07ull},
    {0x8c14d39113f86928ull, 0xfe3cc18b0c076d2eull, 0x35838b2573292c99ull, 0xeedb01e4bba9ef2bull,
     0x75874a044e0d5400ull, 0xfffed7c282d3c5f5ull, 0x178fe790fc36ed1aull, 0x5f1438cda1ba3806ull,
     0x47279f1461ef0a88ull, 0x85c0f96994b95e25ull, 0x83ee957085500427ull, 0xc5d69fd8902a5c57ull},
};

TEST(GoldenStreams, EveryVariantAndLayoutCodesAsRecorded) {
  for (size_t c = 0; c < std::size(kCases); ++c) {
    for (size_t l = 0; l < std::size(kLayouts); ++l) {
      std::string each;
      const auto hashOf = [&](char v) { return StreamHash(FourCC('V', 'T', 'Q', v), kLayouts[l], kCases[c]); };
      EXPECT_EQ(test::HashOverVariants(hashOf, &each), kGolden[c][l])
          << "case " << c << " layout " << kLayouts[l] << ":" << each;
    }
  }
}

}  // namespace
}  // namespace vantaro::encoder
