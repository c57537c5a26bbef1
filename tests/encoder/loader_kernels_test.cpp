// The SSE2 line unpacking against its scalar twin: random lines and the
// all-maximum, all-minimum and alternating patterns, whole records compared
// so that a kernel writing a field its twin leaves alone shows too.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

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

}  // namespace
}  // namespace vantaro::encoder
