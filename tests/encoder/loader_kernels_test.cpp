// The loaders' vector kernels against their scalar twins: random lines and the
// all-maximum, all-minimum and alternating patterns, whole records compared
// so that a kernel writing a field its twin leaves alone shows too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

#include "encoder/encoder_kernels.h"
#include "support/twins.h"

namespace vantaro::encoder {
namespace {

TEST(LoaderKernels, VectorLinesAgreeWithScalarOnEveryLineKind) {
  using Kernel = void (*)(const uint8_t*, LineSamples&);
  const Kernel LoaderKernels::*kinds[] = {&LoaderKernels::luma8, &LoaderKernels::lumaAlpha, &LoaderKernels::chromaHalf,
                                          &LoaderKernels::chromaFull, &LoaderKernels::yuy2, &LoaderKernels::uyvy,
                                          &LoaderKernels::ayuv, &LoaderKernels::rgb24, &LoaderKernels::rgb32};
  std::mt19937 rng(99);
  uint8_t line[64 + 16];
  for (const Kernels* level : test::VectorKernels()) {
    const LoaderKernels* vector = level->loaders;
    for (size_t kind = 0; kind < std::size(kinds); ++kind) {
      for (int n = 0; n < 20000; ++n) {
        const uint8_t patterns[4][2] = {{255, 255}, {0, 0}, {255, 0}, {0, 255}};
        for (int i = 0; i < 80; ++i) line[i] = n < 4 ? patterns[n][i & 1] : static_cast<uint8_t>(rng());
        LineSamples a, b;
        std::memset(&a, 0xC3, sizeof a);
        std::memset(&b, 0xC3, sizeof b);
        (kLoaderKernelsScalar.*kinds[kind])(line, a);
        (vector->*kinds[kind])(line, b);
        ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0) << "kind " << kind << " case " << n;
      }
    }
  }
}

// The whole-macroblock kernels on every level against the samples each line
// holds (the scalar line kernels for packed 4:2:2, the bytes themselves for
// a plane), bottom-up (negative distance) and partial counts included,
// strips with guard values around them.
TEST(LoaderKernels, RowKernelsPlaceWhatEachLineHolds) {
  std::mt19937 rng(7);
  std::vector<uint8_t> picture(16 * 48);
  for (uint8_t& b : picture) b = static_cast<uint8_t>(rng());
  std::vector<const Kernels*> levels = test::VectorKernels();
  levels.push_back(KernelsAt(KernelLevel::kScalar));
  for (const Kernels* level : levels) {
    const LoaderKernels* k = level->loaders;
    for (int kind = 0; kind < 4; ++kind) {  // YUY2, UYVY, a 16-byte plane, an 8-byte plane
      for (const ptrdiff_t distance : {ptrdiff_t{48}, ptrdiff_t{-48}}) {
        for (const int32_t lines : {16, 7}) {
          const uint8_t* source = distance > 0 ? picture.data() : picture.data() + 15 * 48;
          int16_t strips[4][8 + 128 + 8];
          for (auto& strip : strips) std::fill(std::begin(strip), std::end(strip), int16_t{0x5A5A});
          int16_t* at[4] = {strips[0] + 8, strips[1] + 8, strips[2] + 8, strips[3] + 8};
          if (kind < 2) k->packed422Rows[kind](source, distance, at[0], at[1], at[2], at[3], lines);
          if (kind == 2) k->planeRows16(source, distance, at[0], at[1], lines);
          if (kind == 3) k->planeRows8(source, distance, at[0], lines);
          for (int32_t r = 0; r < 16; ++r) {
            const uint8_t* line = source + distance * r;
            LineSamples l;
            std::fill(std::begin(l.u), std::end(l.u), int16_t{0x5A5A});
            std::fill(std::begin(l.v), std::end(l.v), int16_t{0x5A5A});
            if (kind < 2) (kind == 0 ? kLoaderKernelsScalar.yuy2 : kLoaderKernelsScalar.uyvy)(line, l);
            for (int c = 0; c < 16 && kind >= 2; ++c) l.y[c] = c < 8 || kind == 2 ? line[c] : int16_t{0x5A5A};
            const int16_t* expected[4] = {l.y, l.y + 8, l.u, l.v};
            for (int strip = 0; strip < 4; ++strip) {
              for (int c = 0; c < 8; ++c) {
                ASSERT_EQ(strips[strip][8 + 8 * r + c], r < lines ? expected[strip][c] : 0x5A5A)
                    << "kind " << kind << " strip " << strip << " line " << r;
              }
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
