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
constexpr char kVariants[] = {'0', '1', '2', '3', '4', '5', '7', '9'};

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

// [case][variant][layout]
constexpr uint64_t kGolden[3][8][12] = {
    {
        {0xfc2c5d3c37183a39ull, 0xafaefd6e53f8a475ull, 0x73ff0567188a23e8ull, 0x848a83cb50af6a05ull,
         0x3cdfc6cadae3d8b8ull, 0x53bdac9993780f83ull, 0x4b1a534af701ed70ull, 0xd6251ed7f053b40dull,
         0x4572726374704437ull, 0x4302f299e77312e2ull, 0xeb69e7b852f30767ull, 0xd566d42883d37e17ull},  // VTQ0
        {0xfc2c5d3c37183a39ull, 0xafaefd6e53f8a475ull, 0x73ff0567188a23e8ull, 0x9a0bfc1bc4871fd4ull,
         0xe9750179cd00c01bull, 0xf93deb6446b340d5ull, 0x06415dd598042eb1ull, 0xe93632ed5338dd4dull,
         0x616dd66ea80748a7ull, 0x8efc700ec567a979ull, 0xb54bd93638ee0e5aull, 0xc20b02201cd282a9ull},  // VTQ1
        {0x20cd7e5d482cf4f3ull, 0x89101541fd9a445bull, 0x669c047786891c8cull, 0x490bd17c531ae7a1ull,
         0x72428c470de033bbull, 0xcd1d73de6c8f4c2full, 0x17c094054090f678ull, 0xb23e6c4fd4c597eeull,
         0x53d62fafd236e919ull, 0xa495250e29365ee6ull, 0xb0091172258b05a7ull, 0x8979e057d7abf28bull},  // VTQ2
        {0x20cd7e5d482cf4f3ull, 0x89101541fd9a445bull, 0x669c047786891c8cull, 0x1475c549dd00c2d8ull,
         0xfd23c58128752ea8ull, 0x96d45ec193147e69ull, 0x4161ee975f6a4d6full, 0x29519aa940ff76abull,
         0xc685d977725aca1eull, 0x6f383933d1c88341ull, 0x9ef4b2a045817e8cull, 0x020b55effa465e6dull},  // VTQ3
        {0x8caff27c28778ec1ull, 0x6eb455ca61c1a1a0ull, 0x44e9fd81b05c4dd8ull, 0xbc984f5175763cccull,
         0x100d96597e01ee14ull, 0x0231874e544dda6eull, 0x4e2ba1e271ab40dcull, 0x1c39d621f4ec8ad7ull,
         0xd123d929dc882980ull, 0xf2b823e9a7b56d14ull, 0xf49345a82cc3986aull, 0x616ebee0a72d6835ull},  // VTQ4
        {0x8caff27c28778ec1ull, 0x6eb455ca61c1a1a0ull, 0x44e9fd81b05c4dd8ull, 0xd60dab79a8d17881ull,
         0xeec96d3483ba8ffbull, 0x8605765dea870b18ull, 0x31bda76e363c7b55ull, 0xbd7d5e98a18032deull,
         0xb28fdc3fa4b88a7eull, 0xcff747443feb4863ull, 0xa2ba1e5f164bae26ull, 0x85cfa1bf16636d53ull},  // VTQ5
        {0x20cd7e5d482cf4f3ull, 0x89101541fd9a445bull, 0x669c047786891c8cull, 0xa04771302db19cedull,
         0x72cda37432a81b8bull, 0xb2697a46343eeddbull, 0x17c094054090f678ull, 0xb23e6c4fd4c597eeull,
         0x3e5edbd7f8d5e3caull, 0x0036b6410fc03e25ull, 0xb0091172258b05a7ull, 0xf63b87b60bddf5adull},  // VTQ7
        {0x8caff27c28778ec1ull, 0x6eb455ca61c1a1a0ull, 0x44e9fd81b05c4dd8ull, 0xdb60f32d91e1c7b0ull,
         0xa0b580552fa82d04ull, 0x05cc21c7690e5e22ull, 0x4e2ba1e271ab40dcull, 0x1c39d621f4ec8ad7ull,
         0xb4984bf960370eaaull, 0x82a49bfc17019983ull, 0xf49345a82cc3986aull, 0x7bafdf96008f8f47ull},  // VTQ9
    },
    {
        {0x42bad369d94a8aa2ull, 0x339bae0cf6f4a999ull, 0x82ba416a33aa5771ull, 0xf91f27e9bdcec020ull,
         0x7f35ed574c4d0895ull, 0x5b8e6d67c7b4e7c5ull, 0xe0ad80bf0cb5e108ull, 0xa1a5795dc2250422ull,
         0x2cd381b8566f2ab1ull, 0x42b2b35d52d11c3aull, 0x3f84b9e6e1ed3bedull, 0x96f5ced5da20e869ull},  // VTQ0
        {0x42bad369d94a8aa2ull, 0x339bae0cf6f4a999ull, 0x82ba416a33aa5771ull, 0xccd7af00eeb681b8ull,
         0xf2de1e3abf565931ull, 0x6a8d1be0b482bb9dull, 0xf79b6c66b4db16acull, 0x294b9005d6afaf0full,
         0xd09a7a340f6d91efull, 0xad43531a3ed3b973ull, 0x55fe646c1ba3c272ull, 0xcb185a099190919cull},  // VTQ1
        {0x19f71a7b747cac85ull, 0x38d102335de24f79ull, 0xcd43fffca20244d1ull, 0x8524ffc37b3dbf85ull,
         0xa16382af1d933a21ull, 0x9cdf9eac34c89565ull, 0x5bd03d3d40f6ed4bull, 0x1678ae3d54fc0baaull,
         0x837cee106c364151ull, 0x479bf64c25730d8eull, 0x6eda7ff1fda6e2cfull, 0xf534453a722bb776ull},  // VTQ2
        {0x19f71a7b747cac85ull, 0x38d102335de24f79ull, 0xcd43fffca20244d1ull, 0x4f44d8519bfd28bdull,
         0x8638f4d8a0a6cb6dull, 0xaf64dfa727540f7dull, 0xe3fa41584157e316ull, 0x9a56298a5c573554ull,
         0xebe7b2fc68a8ae23ull, 0x37b2c26636e3cb3full, 0xe112f826f92ef320ull, 0xd21e5ea2448e581bull},  // VTQ3
        {0x81b58d7d66d7e005ull, 0x53e239769b38cc41ull, 0x35a99ba1922f12c1ull, 0xa961e4253e76fcf5ull,
         0xdf5ae8cac47def65ull, 0xacc533b56d71f061ull, 0xd5ead51d89332edeull, 0xee5cf92176b8a745ull,
         0x4028a5b5e78c6547ull, 0x692bd1e374b78f87ull, 0x6c0ea131212db655ull, 0x1654cc7fab0fe023ull},  // VTQ4
        {0x81b58d7d66d7e005ull, 0x53e239769b38cc41ull, 0x35a99ba1922f12c1ull, 0x1a2a4bfe674132adull,
         0x6c9a51a27e15ec11ull, 0xb58612afaef1a999ull, 0xdac6710c100fa739ull, 0x7c6716d87fd8a5e8ull,
         0x46e584eead272ff9ull, 0xf10bf976772a8fafull, 0xb27226b7f53f60e8ull, 0xac3c5599fbf59602ull},  // VTQ5
        {0x19f71a7b747cac85ull, 0x38d102335de24f79ull, 0xcd43fffca20244d1ull, 0xa099967f998116ddull,
         0x8966ac653ce9233dull, 0x99a8f03035b18d3dull, 0x5bd03d3d40f6ed4bull, 0x1678ae3d54fc0baaull,
         0x4033e0b698d8988bull, 0x96fc28287594fe49ull, 0x6eda7ff1fda6e2cfull, 0x57ec1df3ce7d58a6ull},  // VTQ7
        {0x81b58d7d66d7e005ull, 0x53e239769b38cc41ull, 0x35a99ba1922f12c1ull, 0x4a4cbd2d57852c4dull,
         0xaa5b5a68232d2ba1ull, 0x5385bc4d9056a959ull, 0xd5ead51d89332edeull, 0xee5cf92176b8a745ull,
         0x2c9c091b915ab245ull, 0x5342cd8493609e25ull, 0x6c0ea131212db655ull, 0xb4fa1c43fc116d1bull},  // VTQ9
    },
    {
        {0x14ae3c6ffe85f338ull, 0x08b6eb6820dc20cbull, 0xe4931379a55a9f09ull, 0xc55a44cca101e507ull,
         0xfa24cb0585cec25cull, 0xbaf1a6aab0d42a55ull, 0x70ef27f2c7fcc8a2ull, 0x0b8efa8eb82648faull,
         0x8ae3e0f92bb53eaeull, 0xa4f5187896612501ull, 0xb5ce052671a6898bull, 0x3ae135d9bf137746ull},  // VTQ0
        {0x14ae3c6ffe85f338ull, 0x08b6eb6820dc20cbull, 0xe4931379a55a9f09ull, 0xbd130ef79e540fdbull,
         0x78dc64bcfd3fdb48ull, 0x93a0016ce9618ef7ull, 0x927d9495b9f80fa5ull, 0xe5a80072da584a8eull,
         0x8ce9a47deb205c89ull, 0xd2e2706671c8d8d2ull, 0xd703bfd98f17fa58ull, 0x83f8c89453b15d23ull},  // VTQ1
        {0xc2a927be2d0f91b0ull, 0x11c0fa40182dee44ull, 0xce70d7e45e5ae069ull, 0x964ea891a6cde910ull,
         0xb17e5dd7c7f33939ull, 0xfeb4f149a2187a3dull, 0x54208e497bc29e14ull, 0x98999eb9f8d424b3ull,
         0x082c5c9745fe5a74ull, 0x4d24cb87f00b17a9ull, 0xe095a67c0e8aeb29ull, 0x031f8eb19f262570ull},  // VTQ2
        {0xc2a927be2d0f91b0ull, 0x11c0fa40182dee44ull, 0xce70d7e45e5ae069ull, 0x556a7cbda2fad1b4ull,
         0xaea982c81cb086f5ull, 0x39514d3bc9f86787ull, 0x927d9495b9f80fa5ull, 0xb1d00742ee78000cull,
         0xe022a0bdcc347880ull, 0x42dd80b87a64365eull, 0x3d26f775918e4616ull, 0xbc01bea471e5d9f9ull},  // VTQ3
        {0xdddbe2e34757dd4aull, 0x09e552aa7c30821dull, 0x7c6013b7b4dab3f2ull, 0x5c804e601458d6c3ull,
         0xb5011bc362f43b85ull, 0x7ad4386e602bfc71ull, 0xaaf5283e3f52145dull, 0xef07835e7d70ca38ull,
         0x4e00abcf1c508b28ull, 0x839fcd025db90bbeull, 0x6e2d742c5eac1450ull, 0xd50224951ad08095ull},  // VTQ4
        {0xdddbe2e34757dd4aull, 0x09e552aa7c30821dull, 0x7c6013b7b4dab3f2ull, 0xf606836a61fcbd07ull,
         0x98ae35039aaa5041ull, 0xc17140f20b558d87ull, 0x927d9495b9f80fa5ull, 0x27fe2ec7bc271adfull,
         0xd5b2f0c0025e1421ull, 0x13a41b2abada8f3full, 0x9ca48745dc96e843ull, 0x6844621b93002f50ull},  // VTQ5
        {0xc2a927be2d0f91b0ull, 0x11c0fa40182dee44ull, 0xce70d7e45e5ae069ull, 0x21bf01a167689e2eull,
         0x38492e5235ce7142ull, 0xb5ccc986113cefcaull, 0x54208e497bc29e14ull, 0x98999eb9f8d424b3ull,
         0x5839c425ef1baf34ull, 0xdb914b50e4c45337ull, 0xe095a67c0e8aeb29ull, 0xa1e8b5b2c8ba3044ull},  // VTQ7
        {0xdddbe2e34757dd4aull, 0x09e552aa7c30821dull, 0x7c6013b7b4dab3f2ull, 0x8a7e0cd712984f89ull,
         0xef5992555d7a1292ull, 0xc9d70addf46ab592ull, 0xaaf5283e3f52145dull, 0xef07835e7d70ca38ull,
         0x56ed6dab65e6050dull, 0xd84f0d4843d3efcaull, 0x6e2d742c5eac1450ull, 0x9e39234802e21939ull},  // VTQ9
    },
};

TEST(GoldenPictures, EveryVariantDecodesIntoEveryLayoutAsRecorded) {
  for (size_t c = 0; c < std::size(kCases); ++c) {
    for (size_t v = 0; v < std::size(kVariants); ++v) {
      for (size_t l = 0; l < std::size(kLayoutIds); ++l) {
        const uint64_t hash = PictureHash(kVariants[v], l, kCases[c]);
        EXPECT_EQ(hash, kGolden[c][v][l]) << "case " << c << " VTQ" << kVariants[v] << " layout "
                                          << kLayoutIds[l] << " got 0x" << std::hex << hash;
      }
    }
  }
}

}  // namespace
}  // namespace vantaro
