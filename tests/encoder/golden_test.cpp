// Golden streams: small fixed pictures through every variant and layout,
// hashed. Recorded once the encoder had been checked against the format
// piece by piece (the other suites here), so that no later change can
// alter a single stream bit unnoticed. Also the whole chain on vector and
// scalar kernels, which must give the same bytes.
#include <gtest/gtest.h>

#include <vector>

#include "codec/codec_instance.h"
#include "codec/quantiser.h"
#include "codec/kernels.h"
#include "support/pictures.h"

namespace vantaro::encoder {
namespace {

using test::FourCC;

constexpr uint32_t kLayouts[] = {kCsNV12, kCsNV16, kCsNV24, kCsYA20, kCsYA22, kCsYA44,
                                 kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32};
constexpr char kVariants[] = {'0', '1', '2', '3', '4', '5', '7', '9'};

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

// [case][variant][layout]
constexpr uint64_t kGolden[2][8][12] = {
    {
        {0xc9baf425fb95f6b7ull, 0xe812f7599898f556ull, 0x0c3f9d1a4e16a8dcull, 0x38543e65a941917full,
         0x57d9a67e0cb737eaull, 0xdb581f3e727a9f56ull, 0xba52f3b7e02bc6ccull, 0x9b11a55e33e88cdbull,
         0xef8b15730934fb3dull, 0xfd9fe809c7f9cbadull, 0x75feae00818b7a47ull, 0xaeecd0e81ae226c4ull},  // VTQ0
        {0x33cd07f200159cc6ull, 0x08baaca6e2bbc3c6ull, 0x1801752286a30abeull, 0x6865688b06fa00a0ull,
         0xd497fa40c65e5a4eull, 0xef3a0db8643c35a3ull, 0xba52f3b7e02bc6ccull, 0x9b11a55e33e88cdbull,
         0xef8b15730934fb3dull, 0xfd9fe809c7f9cbadull, 0xc9f0149f256c7272ull, 0x4fdd4234b67f4d32ull},  // VTQ1
        {0x99ee04c2b20854ecull, 0x76f399bb9ad5a59dull, 0x435024fbed9cb98full, 0xb8e387e7541da4f7ull,
         0x2d654ed4a20ae9b0ull, 0xebaedb7337de92f1ull, 0x5b1921fbbf85a6e0ull, 0xfb8a3e437c8e115dull,
         0xf1849e4f1f7f4d8eull, 0x683194f32bffbc9aull, 0xa33f885a1bbaba6bull, 0x01ed303e6b18cc35ull},  // VTQ2
        {0x569cc6b7bdd99049ull, 0x07eed47fbb7d62d4ull, 0x3ab3232d0aaa46ebull, 0x391a90de6eb064ceull,
         0x6e5014a587ba8dd3ull, 0x2b9b5f8c2560da8dull, 0x5b1921fbbf85a6e0ull, 0xfb8a3e437c8e115dull,
         0xf1849e4f1f7f4d8eull, 0x683194f32bffbc9aull, 0xf69738836ddb7fd5ull, 0xd071eb0a945a2dd2ull},  // VTQ3
        {0xd600e340e264fc42ull, 0xb15285d649956ab6ull, 0x3f8f5d761a298b0cull, 0x57556f289f77c779ull,
         0x8e0d2b01570be63cull, 0x4b1e0875e55a2f66ull, 0xba67ee2121d0b64full, 0xd0664432c97f5e27ull,
         0xe45e565bf8ef2759ull, 0x48c60d947c85f57full, 0x8b22a7ee3d433fabull, 0xc5063460494502b0ull},  // VTQ4
        {0x0ce50f1612bd23aaull, 0x16186521b63f6f06ull, 0x9863830d5375b490ull, 0xf63b201b4fba84a9ull,
         0x27287e815c5ea5d2ull, 0x23177c9c3e4b26e1ull, 0xba67ee2121d0b64full, 0xd0664432c97f5e27ull,
         0xe45e565bf8ef2759ull, 0x48c60d947c85f57full, 0x6e608b08e0483f00ull, 0x47b142be44a8384dull},  // VTQ5
        {0xc3fa259bb9bc27d0ull, 0x18057028db835eebull, 0x54e41ef4dea152aeull, 0x731e9eb1ea3c4962ull,
         0xd23e18aeccd642a1ull, 0x99cbac4456d8881dull, 0x35049fb2fad3561cull, 0x4b08ce1a609a2dcfull,
         0x68ebaa789b64c0ecull, 0xb3906b8ddcc8e1f3ull, 0xc68a2f396e79f1fbull, 0x948680da783a2c45ull},  // VTQ7
        {0x658acf4a3c9351b3ull, 0xea50521b3352cb34ull, 0xa5201cbe2fd9f1ecull, 0x7748aef0b592a8edull,
         0x0342ececb4c7f13aull, 0xda05a8a3b34516dbull, 0x5cd3b1cea0dd3fc0ull, 0x4e35a8e5e9cc8900ull,
         0x8a721114cac09e4full, 0x031436b0a55c0814ull, 0x0d35d0cf6701d28aull, 0x22e7295c00ddaf14ull},  // VTQ9
    },
    {
        {0xa724ef4920f951c3ull, 0x80d5d7a46f924415ull, 0xe541edc661bddb3full, 0x7822ddfa5836e8edull,
         0xffc8ee9472258314ull, 0xdf590f2b947c8100ull, 0xbcb63e458eb89d0eull, 0x40db3ae0fb8c9cf6ull,
         0x817c9976fde9058cull, 0xfba60b4c2d607b92ull, 0xf74d47be6d59d491ull, 0xa8cb5e4bfc39cb13ull},  // VTQ0
        {0x4a8c9f49e9d52b10ull, 0x3989591dc9a9194cull, 0xa90979310a4cec43ull, 0xe60f34dafdd39272ull,
         0x4460375ee67a9fadull, 0x9a00cc4280965d36ull, 0xbcb63e458eb89d0eull, 0x40db3ae0fb8c9cf6ull,
         0x817c9976fde9058cull, 0xfba60b4c2d607b92ull, 0x26d79d99076ba010ull, 0x781c555907ce3adeull},  // VTQ1
        {0x330f4d77c1918006ull, 0xe6b667d2bf9661a3ull, 0xe963d2e1b4c8137aull, 0xf8ba9d4b7d121da4ull,
         0x642a2811ba8ed8b6ull, 0x93c625586b8a690full, 0x93221d149b6c582eull, 0x13c77c8d89caed1aull,
         0xac1dc8636b285a34ull, 0x71be181aa372d008ull, 0xecad976d67e483e1ull, 0x2e514b9e82faf6beull},  // VTQ2
        {0x74cd3a89db4e4bd0ull, 0x606d29ca532198cfull, 0x9a07378d491d0e89ull, 0xe62bf57b6f319d9cull,
         0x3339bd6ac7797fd5ull, 0xcac43b17b9c0922dull, 0x93221d149b6c582eull, 0x13c77c8d89caed1aull,
         0xac1dc8636b285a34ull, 0x71be181aa372d008ull, 0xe8be17ccd1eaaf99ull, 0x0c66a467bf9fe408ull},  // VTQ3
        {0x88e7ffe2b23052d8ull, 0x90a741bd8149abe2ull, 0xb0362cc565543324ull, 0x5e98011c3c9bea23ull,
         0x6cde4fa8671351ecull, 0xee907fed88252bb9ull, 0x858023792963fe08ull, 0xd50c1d351c49207eull,
         0xc23de1443dbdf265ull, 0x18af090910f5dda5ull, 0xcb34d5b7bf362518ull, 0x7beeae0ed500bfe8ull},  // VTQ4
        {0x9fbcee14d47573a9ull, 0x85e73d8886440fdfull, 0xb5f506888d1bef20ull, 0x58d77f7b5bdb59d0ull,
         0xef8ba53541c34a91ull, 0xc75978507c3c65bcull, 0x858023792963fe08ull, 0xd50c1d351c49207eull,
         0xc23de1443dbdf265ull, 0x18af090910f5dda5ull, 0xa56ade466a6a62a9ull, 0xb9229eb5ec884de8ull},  // VTQ5
        {0xc6a7aafaa54ef390ull, 0xe3bd7bf4a59c0e1dull, 0x99bca4b96d5cf561ull, 0x16e5e058c36b479cull,
         0x78e1361568a4ccb8ull, 0x952c620e893c0025ull, 0xd3dc4b629263d8c5ull, 0x5d2baba96d53a842ull,
         0x5799b1df213e2018ull, 0xa1bbf71f0b709929ull, 0x3ae86b0e0304dc64ull, 0x42eba3aff14fd732ull},  // VTQ7
        {0x35793f7866a95704ull, 0xd7ea7958a5439b4cull, 0x5443af99e14713bbull, 0x8e5f0b6414ef9e9dull,
         0x0f194875e239f525ull, 0xdf8f00817eb679bcull, 0xdaf5496851eed9d3ull, 0xde1171e62621fe22ull,
         0x56ce9438a4bc7ce8ull, 0x746a440d599253e2ull, 0x10302745764db5beull, 0x1d7dc05f397e3d26ull},  // VTQ9
    },
};

TEST(GoldenStreams, EveryVariantAndLayoutCodesAsRecorded) {
  for (size_t c = 0; c < std::size(kCases); ++c) {
    for (size_t v = 0; v < std::size(kVariants); ++v) {
      for (size_t l = 0; l < std::size(kLayouts); ++l) {
        const uint64_t hash = StreamHash(FourCC('V', 'T', 'Q', kVariants[v]), kLayouts[l], kCases[c]);
        EXPECT_EQ(hash, kGolden[c][v][l])
            << "case " << c << " VTQ" << kVariants[v] << " layout " << kLayouts[l] << " got 0x"
            << std::hex << hash;
      }
    }
  }
}

TEST(GoldenStreams, VectorAndScalarKernelsGiveTheSameStreams) {
  const KernelOverride was = CurrentKernelOverride();
  for (const char variant : kVariants) {
    for (const uint32_t cs : kLayouts) {
      SetKernelOverride(KernelOverride::kAutomatic);
      const uint64_t vector = StreamHash(FourCC('V', 'T', 'Q', variant), cs, kCases[0]);
      SetKernelOverride(KernelOverride::kScalar);
      const uint64_t scalar = StreamHash(FourCC('V', 'T', 'Q', variant), cs, kCases[0]);
      EXPECT_EQ(vector, scalar) << "VTQ" << variant << " layout " << cs;
    }
  }
  SetKernelOverride(was);
}

}  // namespace
}  // namespace vantaro::encoder
