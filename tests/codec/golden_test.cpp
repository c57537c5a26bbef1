// Golden streams and pictures: every variant coded from and decoded into every
// direct layout and every plane set of the native door, the stream and all planes and channels of the picture hashed (the
// bytes around the picture too, so a stray store shows). A top-down frame
// with a partial row and a column beyond the last whole macroblock, a padded
// stride at a coarse quality, and a bottom-up frame with a negative stride.
// Recorded once the codec had been checked piece by piece (the other suites),
// so that no later change alters a stream bit or a sample unnoticed; the
// scalar rerun holds the scalar kernels to the same hashes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "codec/field_flow.h"
#include "codec/layout_facts.h"
#include "codec/quantiser.h"
#include "support/pictures.h"

namespace vantaro {
namespace {

constexpr uint32_t kLayoutIds[] = {kCsNV12, kCsNV16, kCsNV24, kCsYA20, kCsYA22, kCsYA44,
                                   kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32};

struct Case { int32_t width, height, padding, quality; bool bottomUp; };
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
  const int32_t stride = c.width * LayoutOf(kLayoutIds[layout]).pixelBytes + c.padding;
  const size_t bytes = static_cast<size_t>(stride) * 8 * (c.height + 40);
  Planes p;
  p.stride = c.bottomUp ? -stride : stride;
  p.main = pattern ? test::PatternBytes(bytes, seed, stride) : std::vector<uint8_t>(bytes, 0xA5);
  if (layout < 6) {  // the semi-planar layouts' second plane
    p.chroma = pattern ? test::PatternBytes(bytes, seed + 101, stride) : std::vector<uint8_t>(bytes, 0x5A);
  }
  return p;
}

// The hash of the eight variants' hashes, as little-endian bytes in variant
// order; `each` gets the single hashes for a failure message.
template <class HashOf>
uint64_t HashOverVariants(HashOf hashOf, std::string* each) {
  std::vector<uint8_t> bytes;
  for (const char variant : {'0', '1', '2', '3', '4', '5', '7', '9'}) {
    const uint64_t hash = hashOf(variant);
    for (int i = 0; i < 8; ++i) bytes.push_back(static_cast<uint8_t>(hash >> (8 * i)));
    *each += std::string(" VTQ") + variant + " " + std::to_string(hash);
  }
  return test::Fnv1a64(bytes.data(), bytes.size());
}

struct Hashes { uint64_t stream, picture; };

Hashes HashesOf(char variant, size_t layout, const Case& c) {
  const uint32_t cs = kLayoutIds[layout];
  test::TestInstance instance(test::FourCC('V', 'T', 'Q', variant), cs, c.width, c.height);
  SetQuality(instance.get(), c.quality);
  Planes source = MakePlanes(layout, c, 31 + cs, true);
  std::vector<uint8_t> stream(source.main.size() * 2 + 4096);
  const int64_t size = test::CompressFrameSize(instance.get(), stream.data(), stream.size(),
                                               source.Main(), source.Chroma(), source.stride);
  const uint64_t streamHash = test::Fnv1a64(stream.data(), static_cast<size_t>(size) - 4);
  Planes out = MakePlanes(layout, c, 0, false);
  DecompressFrame(instance.get(), out.Main(), out.Chroma(), stream.data(), out.stride,
                  static_cast<size_t>(size));
  std::vector<uint8_t> all = out.main;
  all.insert(all.end(), out.chroma.begin(), out.chroma.end());
  return {streamHash, test::Fnv1a64(all.data(), all.size())};
}

// [case][layout]: the eight variants' hashes, in variant order, hashed again.
constexpr uint64_t kStreams[3][12] = {
    {0x5f840afd0bc360f4ull, 0x24aaae821c1da141ull, 0xc05b05e03e4cfe95ull, 0x6b346b293516ef62ull,
     0x54f98c47a2ab7ca0ull, 0x47186d47136db3a5ull, 0x5b527a9c07cd4087ull, 0x21b2eb88c29c542dull,
     0xdc51d2493a3d2494ull, 0x19c37233e4dc4129ull, 0xbd32c4b24f01ecacull, 0xfa484c1e0a155fbaull},
    {0x1e1a62bd0a3ca497ull, 0x398ac75ee003f15dull, 0xbbcacb5a0269c49eull, 0x9cf82e66a536c298ull,
     0x12d7527613f05982ull, 0x4943bc47db1e1899ull, 0xda5f451f9a2fb4cdull, 0x0eb2abf06824cecbull,
     0x31c2cde20e5f619aull, 0xc8486eb51b539726ull, 0x08723225e9e28148ull, 0x531146f03ba87ac0ull},
    {0x552e95f6851ad97dull, 0x67d9456ec9c03f60ull, 0x65786c3eccf05a64ull, 0xf186eb6dc0de4bf5ull,
     0x7e17d4459d754cd5ull, 0xf96bc56e427bc5b5ull, 0x66bd8d55edd8f649ull, 0x4fa4f64da0331b7eull,
     0xd55fbcc3afc9edb8ull, 0x23a8dba4a158befbull, 0x0e3aee9d7de9b754ull, 0xdd063236bd930fe9ull},
};
constexpr uint64_t kPictures[3][12] = {
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

TEST(Golden, EveryVariantCodesAndDecodesEveryLayoutAsRecorded) {
  for (size_t c = 0; c < std::size(kCases); ++c) {
    for (size_t l = 0; l < std::size(kLayoutIds); ++l) {
      std::string streams, pictures;
      const auto streamOf = [&](char v) { return HashesOf(v, l, kCases[c]).stream; };
      const auto pictureOf = [&](char v) { return HashesOf(v, l, kCases[c]).picture; };
      EXPECT_EQ(HashOverVariants(streamOf, &streams), kStreams[c][l])
          << "case " << c << " layout " << kLayoutIds[l] << " streams:" << streams;
      EXPECT_EQ(HashOverVariants(pictureOf, &pictures), kPictures[c][l])
          << "case " << c << " layout " << kLayoutIds[l] << " pictures:" << pictures;
    }
  }
}

// The native door's plane sets, which no direct layout reaches: every variant
// from and into each at a size with a partial macroblock both ways, the
// pictures hashed with the guard bytes around them. Recorded when the plane
// sets matched the packed and semi-planar layouts sample for sample.
constexpr uint64_t kPlaneSetStreams[6] = {0xf9b5517a949f334aull, 0xbc15d36dac66d42cull, 0x25ee81bd8bd8b0ceull,
                                          0x5f429e039473df46ull, 0xc9994f357ed8ebffull, 0xc2f975414af6b8c8ull};
constexpr uint64_t kPlaneSetPictures[6] = {0x7837b7c7d7beee25ull, 0x932a6a30544c9e71ull, 0xcc90b8c678f15555ull,
                                           0xa6d71fff040ba475ull, 0x53a194cf4fd3ad0full, 0x9410a4f1f97ebae3ull};

TEST(Golden, EveryVariantCodesAndDecodesEveryPlaneSetAsRecorded) {
  for (size_t f = 0; f < std::size(test::kPlaneSets); ++f) {
    const vantaro_format format = test::kPlaneSets[f];
    const auto hashes = [&](char v) {
      test::Picture in(format, 37, 45), out(format, 37, 45);
      test::Fill(in, test::Content::kSmooth);
      std::vector<uint8_t> frame;
      EXPECT_EQ(test::Encode(test::FourCC('V', 'T', 'Q', v), in.pic, 90, frame), VANTARO_OK);
      EXPECT_EQ(test::Decode(test::FourCC('V', 'T', 'Q', v), frame, out.pic), VANTARO_OK);
      return Hashes{test::Fnv1a64(frame.data(), frame.size()), test::Fnv1a64(out.bytes.data(), out.bytes.size())};
    };
    std::string streams, pictures;
    EXPECT_EQ(HashOverVariants([&](char v) { return hashes(v).stream; }, &streams), kPlaneSetStreams[f])
        << "format " << format << " streams:" << streams;
    EXPECT_EQ(HashOverVariants([&](char v) { return hashes(v).picture; }, &pictures), kPlaneSetPictures[f])
        << "format " << format << " pictures:" << pictures;
  }
}

}  // namespace
}  // namespace vantaro
