#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/headers.h"
#include "support/pictures.h"

#include "codec/codec_instance.h"
#include "codec/kernels.h"
#include "codec/slice_layout.h"

namespace vantaro {
namespace {

using test::PictureHeader;

using Instance = test::TestInstance;

TEST(Instance, ColorSpaceFromHeader) {
  using test::FourCC;
  const struct { uint32_t compression; uint16_t bits; int32_t expected; } cases[] = {
      {FourCC("YUY2"), 0, kCsYUY2}, {FourCC("NV12"), 12, kCsNV12}, {FourCC("NV24"), 0, kCsNV24},
      {FourCC("YA22"), 0, kCsYA22}, {FourCC("UYVY"), 16, kCsUYVY}, {FourCC("UYVY"), 24, kCsUYVA},
      {FourCC("UYVY"), 32, kCsUYVA}, {FourCC("UYVA"), 0, kCsUYVA}, {FourCC("AYUV"), 0, kCsAYUV},
      {kBiRgb, 24, kCsRGB24}, {kBiBitfields, 32, kCsRGB32}, {FourCC("DIB "), 24, kCsRGB24},
      {kBiRgb, 16, kCsInvalid}, {FourCC("YV12"), 12, kCsInvalid}, {FourCC("yuy2"), 16, kCsInvalid},
      {FourCC("VYUY"), 16, kCsYUY2},  // no byte swap of any kind
  };
  for (const auto& c : cases) {
    const BITMAPINFOHEADER h = PictureHeader(c.compression, c.bits);
    EXPECT_EQ(ColorSpaceFromHeader(&h), c.expected) << std::hex << c.compression << " " << c.bits;
  }
}

TEST(Instance, BeginCompressRefusesAlphaMismatchesButLetsRgb24FeedAlpha) {
  using test::FourCC;
  const struct { char variant; uint32_t compression; uint16_t bits; int64_t expected; } cases[] = {
      {'1', kBiRgb, 24, 0}, {'1', FourCC("YUY2"), 16, -2}, {'0', kBiRgb, 32, -2}, {'0', kBiRgb, 16, -2},
      {'1', FourCC("AYUV"), 32, 0}, {'2', FourCC("UYVY"), 16, 0}, {'9', FourCC("NV24"), 24, -2},
  };
  for (const auto& c : cases) {
    Instance instance(MakeFourCC('V', 'T', 'Q', c.variant));
    const BITMAPINFOHEADER h = PictureHeader(c.compression, c.bits, 720, -480);
    EXPECT_EQ(BeginCompress(instance.get(), &h), c.expected) << c.variant;
    EXPECT_EQ(instance->height, 480);  // written whatever the verdict
    EXPECT_EQ(instance->width, 720);
  }
}

TEST(Instance, BeginDecompressComparesMagnitudesOnly) {
  Instance instance(MakeFourCC('V', 'T', 'Q', '2'));
  const BITMAPINFOHEADER stream = PictureHeader(MakeFourCC('V', 'T', 'Q', '2'), 16, 720, 480);
  BITMAPINFOHEADER out = PictureHeader(kBiRgb, 32, 720, -480);
  EXPECT_EQ(BeginDecompress(instance.get(), &stream, &out), 0);
  EXPECT_EQ(instance->colorSpace, kCsRGB32);
  out.biWidth = 704;
  out.biCompression = MakeFourCC('Y', 'U', 'Y', '2');
  EXPECT_EQ(BeginDecompress(instance.get(), &stream, &out), -2);
  EXPECT_EQ(instance->colorSpace, kCsRGB32);  // unchanged on refusal
}

TEST(Instance, ReleaseIsIdempotent) {
  CodecInstance instance;
  ASSERT_EQ(InitInstance(&instance), Status::kOk);
  ReleaseInstance(&instance);
  EXPECT_EQ(instance.reciprocalTable, nullptr);
  EXPECT_EQ(instance.multiplierTable, nullptr);
  ReleaseInstance(&instance);
}

// Each slice as full rows, then "+N" for a partial row of N field lines.
TEST(SliceLayout, RowsAreDealtRoundRobin) {
  const struct { int32_t height; const char* rows; } cases[] = {
      {32, "1 0 0 0"}, {48, "1 0+8 0 0"}, {160, "2 1 1 1"}, {480, "4 4 4 3"}, {486, "4 4 4 3+3"},
      {1080, "9 8+12 8 8"}, {31, "0+15 0 0 0"}, {33, "1 0+0 0 0"},
  };
  for (const auto& c : cases) {
    std::string rows;
    for (uint32_t s = 0; s < 4; ++s) {
      const SliceRows r = SliceRowsFor(c.height, s);
      char text[24];
      std::snprintf(text, sizeof text, r.hasPartialRow ? "%s%d+%d" : "%s%d", s ? " " : "", r.fullRows,
                    r.partialLines);
      rows += text;
      EXPECT_TRUE(r.hasPartialRow || r.partialLines == 0) << c.height;
    }
    EXPECT_EQ(rows, c.rows) << c.height;
  }
}

// The override picks the record the walks get: automatic takes the best level
// present, and a level the processor lacks falls back to the best one below.
TEST(Kernels, TheOverrideChoosesTheRecordTheWalksGet) {
  const KernelOverride was = CurrentKernelOverride();
  const Kernels* best = nullptr;
  for (KernelOverride o : {KernelOverride::kScalar, KernelOverride::kSse2, KernelOverride::kAvx2}) {
    const Kernels* own = KernelsAt(static_cast<KernelLevel>(static_cast<int>(o) - 1));
    if (own != nullptr) best = own;
    SetKernelOverride(o);
    EXPECT_EQ(&ActiveKernels(), best) << static_cast<int>(o);
  }
  SetKernelOverride(KernelOverride::kAutomatic);
  EXPECT_EQ(&ActiveKernels(), best);
  KernelOverride named;
  EXPECT_TRUE(KernelOverrideNamed("avx2", &named) && named == KernelOverride::kAvx2);
  EXPECT_FALSE(KernelOverrideNamed("AVX2", &named) || KernelOverrideNamed(nullptr, &named));
  SetKernelOverride(was);
}

}  // namespace
}  // namespace vantaro
