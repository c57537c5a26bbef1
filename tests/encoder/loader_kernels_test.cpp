// The SSE2 line unpacking against its scalar twin: random lines and the
// all-maximum, all-minimum and alternating patterns, whole records compared
// so that a kernel writing a field its twin leaves alone shows too.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>
#include <algorithm>
#include <iterator>

#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {
namespace {

TEST(VectorLoaderKernels, AgreeWithScalarOnEveryLineKind) {
  const LoaderKernels* vector = LoaderKernelsSse2();
  if (vector == nullptr) GTEST_SKIP() << "no SSE2 kernels in this build";
  const LoaderKernels& scalar = kLoaderKernelsScalar;
  using Kernel = void (*)(const uint8_t*, LineSamples&);
  const struct {
    Kernel LoaderKernels::*kernel;
    const char* name;
  } kinds[] = {{&LoaderKernels::luma8, "luma8"},       {&LoaderKernels::lumaAlpha, "lumaAlpha"},
               {&LoaderKernels::chromaHalf, "chromaHalf"}, {&LoaderKernels::chromaFull, "chromaFull"},
               {&LoaderKernels::yuy2, "yuy2"},         {&LoaderKernels::uyvy, "uyvy"},
               {&LoaderKernels::ayuv, "ayuv"},         {&LoaderKernels::rgb24, "rgb24"},
               {&LoaderKernels::rgb32, "rgb32"}};
  std::mt19937 rng(99);
  uint8_t line[64 + 16];
  for (const auto& kind : kinds) {
    for (int n = 0; n < 40000; ++n) {
      if (n < 4) {
        const uint8_t patterns[4][2] = {{255, 255}, {0, 0}, {255, 0}, {0, 255}};
        for (int i = 0; i < 80; ++i) line[i] = patterns[n][i & 1];
      } else {
        for (uint8_t& b : line) b = static_cast<uint8_t>(rng());
      }
      LineSamples a, b;
      std::memset(&a, 0xC3, sizeof a);
      std::memset(&b, 0xC3, sizeof b);
      (scalar.*kind.kernel)(line, a);
      (vector->*kind.kernel)(line, b);
      ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0) << kind.name << " case " << n;
    }
  }
}

// The whole-macroblock packed 4:2:2 loaders: each level against the line
// kernel of its order placed by hand, bottom-up (negative distance) and
// partial counts included, strips with guard values around them.
TEST(LoaderKernels, Packed422RowsPlaceWhatTheLineKernelsRead) {
  std::mt19937 rng(7);
  std::vector<uint8_t> picture(16 * 48);
  for (uint8_t& b : picture) b = static_cast<uint8_t>(rng());
  const LoaderKernels* levels[] = {&kLoaderKernelsScalar, LoaderKernelsSse2()};
  for (const LoaderKernels* k : levels) {
    if (k == nullptr) continue;
    for (int order = 0; order < 2; ++order) {
      for (const ptrdiff_t distance : {ptrdiff_t{48}, ptrdiff_t{-48}}) {
        for (const int32_t lines : {16, 7}) {
          const uint8_t* source = distance > 0 ? picture.data() : picture.data() + 15 * 48;
          int16_t strips[4][8 + 128 + 8];
          for (auto& strip : strips) std::fill(std::begin(strip), std::end(strip), int16_t{0x5A5A});
          k->packed422Rows[order](source, distance, strips[0] + 8, strips[1] + 8, strips[2] + 8, strips[3] + 8, lines);
          for (int32_t r = 0; r < 16; ++r) {
            LineSamples l;
            (order == 0 ? kLoaderKernelsScalar.yuy2 : kLoaderKernelsScalar.uyvy)(source + distance * r, l);
            for (int c = 0; c < 8; ++c) {
              const bool loaded = r < lines;
              ASSERT_EQ(strips[0][8 + 8 * r + c], loaded ? l.y[c] : 0x5A5A) << order << " " << r;
              ASSERT_EQ(strips[1][8 + 8 * r + c], loaded ? l.y[c + 8] : 0x5A5A) << order << " " << r;
              ASSERT_EQ(strips[2][8 + 8 * r + c], loaded ? l.u[c] : 0x5A5A) << order << " " << r;
              ASSERT_EQ(strips[3][8 + 8 * r + c], loaded ? l.v[c] : 0x5A5A) << order << " " << r;
            }
          }
          for (auto& strip : strips) {
            for (int g = 0; g < 8; ++g) ASSERT_EQ(strip[g], 0x5A5A);
            for (int g = 136; g < 144; ++g) ASSERT_EQ(strip[g], 0x5A5A);
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace vantaro::encoder
