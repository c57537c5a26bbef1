// Golden pictures: every variant decoded into every output layout, all
// planes and channels hashed (the bytes around the picture too, so a stray
// store shows). A top-down frame with a partial row, a padded stride at a
// coarse quality, and a bottom-up frame with a negative stride.
#include <gtest/gtest.h>

#include <vector>

#include "codec/field_flow.h"
#include "codec/quantiser.h"
#include "support/pictures.h"

namespace vantaro {
namespace {

constexpr uint32_t kLayoutIds[] = {kCsNV12, kCsNV16, kCsNV24, kCsYA20, kCsYA22, kCsYA44,
                                   kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32};
constexpr int32_t kPixelBytes[] = {1, 1, 1, 2, 2, 2, 2, 2, 2, 4, 3, 4};

struct Case {
  int32_t width, height, padding, quality;
  bool bottomUp;
};
constexpr Case kCases[] = {{48, 70, 0, 96, false}, {40, 64, 24, 50, false}, {32, 38, 8, 80, true}};

// Buffers four times the frame's extent on each side of the first line, so
// that a bottom-up frame and the planar walks' overreach stay inside.
struct Planes {
  std::vector<uint8_t> main, chroma;
  int32_t stride;
  uint8_t* Main() { return main.data() + main.size() / 2; }
  uint8_t* Chroma() { return chroma.empty() ? nullptr : chroma.data() + chroma.size() / 2; }
};

Planes MakePlanes(size_t layout, const Case& c, uint32_t seed, bool pattern) {
  const int32_t stride = c.width * kPixelBytes[layout] + c.padding;
  const size_t bytes = static_cast<size_t>(stride) * 8 * (c.height + 40);
  const bool planar = layout < 6;
  Planes p;
  p.stride = c.bottomUp ? -stride : stride;
  p.main = pattern ? test::PatternBytes(bytes, seed, stride) : std::vector<uint8_t>(bytes, 0xA5);
  if (planar) {
    p.chroma = pattern ? test::PatternBytes(bytes, seed + 101, stride)
                       : std::vector<uint8_t>(bytes, 0x5A);
  }
  return p;
}

uint64_t PictureHash(char variant, size_t layout, const Case& c) {
  const uint32_t cs = kLayoutIds[layout];
  test::TestInstance instance(test::FourCC('V', 'T', 'Q', variant), cs, c.width, c.height);
  SetQuality(instance.get(), c.quality);
  Planes source = MakePlanes(layout, c, 31 + cs, true);
  std::vector<uint8_t> stream(source.main.size() * 2 + 4096);
  const int64_t size = test::CompressFrameSize(instance.get(), stream.data(), stream.size(),
                                               source.Main(), source.Chroma(), source.stride);
  Planes out = MakePlanes(layout, c, 0, false);
  DecompressFrame(instance.get(), out.Main(), out.Chroma(), stream.data(), out.stride,
                  static_cast<size_t>(size));
  std::vector<uint8_t> all = out.main;
  all.insert(all.end(), out.chroma.begin(), out.chroma.end());
  return test::Fnv1a64(all.data(), all.size());
}

// [case][layout]: the eight variants' hashes, in variant order, hashed again.
constexpr uint64_t kGolden[3][12] = {
    {0x022f67470e8c7f3dull, 0x7b5c19476f6704f0ull, 0x17c32c010368b0afull, 0x5610885e7b96ab38ull,
     0x7590bea86da27c22ull, 0x2f929f5374999f68ull, 0xdf48fe53184fe2fbull, 0xa6d2eab684274f10ull,
     0x8af636c2bc364dc0ull, 0x6bc87e6ff119e3c1ull, 0x1557452f15a44770ull, 0xb21f55387b793176ull},
    {0xecb32f6a2b5cd19dull, 0x8e0a01af42cce14aull, 0x1a4f98c3a3584e2dull, 0xc9c9827dc72bcb8full,
     0x312bd4d883316055ull, 0xa21300515407ab1full, 0xa29a7dc575ec2debull, 0x67684d665285449cull,
     0xf4ce50fc5eea2603ull, 0x74b3a9e56c1cda72ull, 0x45edf314ec8ec082ull, 0xacabe4c715a35a2bull},
    {0x42dfaf2a27a85ce0ull, 0xa45db4b44193c34eull, 0x4fe0006d2c38195cull, 0xd7984955b322f318ull,
     0x61c5c76229b66b34ull, 0x3006f773b8fe8d36ull, 0xe659bf9edd8a6b77ull, 0x3674aa65a67e127bull,
     0xc7ef1cd82bed22fcull, 0xfbd2481505e7f9b9ull, 0xab2e267c4adec817ull, 0x4d1e0db5d280b3bcull},
};

TEST(GoldenPictures, EveryVariantDecodesIntoEveryLayoutAsRecorded) {
  for (size_t c = 0; c < std::size(kCases); ++c) {
    for (size_t l = 0; l < std::size(kLayoutIds); ++l) {
      std::string each;
      const auto hashOf = [&](char variant) { return PictureHash(variant, l, kCases[c]); };
      EXPECT_EQ(test::HashOverVariants(hashOf, &each), kGolden[c][l])
          << "case " << c << " layout " << kLayoutIds[l] << ":" << each;
    }
  }
}

}  // namespace
}  // namespace vantaro
