#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "decoder/output_layouts.h"

namespace vantaro::decoder {
namespace {

constexpr int64_t kStride = 160;  // room for the widest line (64 bytes) and a margin
constexpr size_t kPlaneBytes = kStride * 40;
constexpr size_t kOrigin = kStride * 4 + 16;  // first byte of the macroblock
constexpr uint8_t kUntouched = 0xCD;

// Two guarded planes, and a scratch to fill sample by sample.
struct Target {
  std::vector<uint8_t> main = std::vector<uint8_t>(kPlaneBytes, kUntouched);
  std::vector<uint8_t> second = std::vector<uint8_t>(kPlaneBytes, kUntouched);
  Planes Get(int64_t secondStride = kStride) {
    return Planes{main.data() + kOrigin, second.data() + kOrigin, kStride, secondStride};
  }
  uint8_t Main(int32_t line, int32_t byte) const { return main[kOrigin + line * kStride + byte]; }
  uint8_t Second(int32_t line, int32_t byte) const { return second[kOrigin + line * kStride + byte]; }
};

struct Scratch {
  alignas(16) MacroblockScratch s;
  Scratch() { std::memset(&s, 0, sizeof s); }
  void Fill(int block, int16_t v) {
    for (int16_t& x : s.blocks[block]) x = v;
  }
  // Sample (line r, column c) of the strip of blocks n, n + 1.
  void Set(int n, int r, int c, int16_t v) { s.blocks[n + r / 8][8 * (r % 8) + c] = v; }
};

TEST(OutputStores, FourFourFourToNv12AveragesPackedEvenColumns) {
  Scratch sc;
  for (int c = 0; c < 8; ++c) {
    sc.Set(4, 2, c, (c % 2 == 0) ? 10 : 99);  // odd columns never count
    sc.Set(4, 3, c, (c % 2 == 0) ? 13 : -99);
    sc.Set(6, 2, c, 300);  // V is packed before the average: 255 with 255
    sc.Set(6, 3, c, 255);
  }
  Target t;
  PlanarStore<kCsNV12>::Store<Family::k444, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, t.Get(), 16);
  EXPECT_EQ(t.Second(1, 0), 12);
  EXPECT_EQ(t.Second(1, 1), 255);
  EXPECT_EQ(t.Second(1, 6), 12);
  EXPECT_EQ(t.Second(8, 0), kUntouched);  // eight chroma lines a macroblock
}

TEST(OutputStores, RawPairSpillsUnclampedChroma) {
  Scratch sc;
  sc.Fill(4, -3);
  sc.Fill(6, 0x40);
  Target t;
  Packed422Store<kCsYUY2>::Store<Family::k420, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, t.Get(), 16);
  EXPECT_EQ(t.Main(0, 1), 253);  // U's low byte
  EXPECT_EQ(t.Main(0, 3), 255);  // V's byte under U's sign bits
  sc.Fill(4, 256);
  Packed422Store<kCsYUY2>::Store<Family::k420, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, t.Get(), 16);
  EXPECT_EQ(t.Main(5, 1), 0);
  EXPECT_EQ(t.Main(5, 3), 0x41);
  // RGB packs chroma first: 256 reads as 255.
  Target a, b;
  RgbStore<kCsRGB24>::Store<Family::k420, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, a.Get(), 16);
  sc.Fill(4, 255);
  RgbStore<kCsRGB24>::Store<Family::k420, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, b.Get(), 16);
  EXPECT_EQ(a.main, b.main);
}

TEST(OutputStores, PartialRowsWriteOnlyTheirLines) {
  Scratch sc;
  Target t;
  PlanarStore<kCsNV12>::Store<Family::k420, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, t.Get(), 3);
  EXPECT_NE(t.Main(2, 0), kUntouched);
  EXPECT_EQ(t.Main(3, 0), kUntouched);
  EXPECT_NE(t.Second(1, 15), kUntouched);  // (3 + 1) / 2 chroma lines
  EXPECT_EQ(t.Second(2, 0), kUntouched);

  Target u;  // a two-line source stops at `lines` too
  PlanarStore<kCsNV24>::Store<Family::k420, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, u.Get(), 3);
  EXPECT_NE(u.Second(2, 31), kUntouched);
  EXPECT_EQ(u.Second(3, 0), kUntouched);
  EXPECT_EQ(u.Second(0, 32), kUntouched);
}

TEST(OutputStores, LumaAlphaWordsClampOnlyBesideDctAlpha) {
  Scratch sc;
  sc.Fill(0, 256);
  sc.Fill(1, -1);
  std::memset(sc.s.Alpha(), 0x10, 256);  // run-length alpha bytes over blocks 12, 13
  Target rle;
  PlanarStore<kCsYA22>::Store<Family::k422, AlphaCoding::kRunValue>(kStoreKernelsScalar, sc.s, rle.Get(kStride / 2), 16);
  EXPECT_EQ(rle.Main(0, 0), 0);     // 256 as it stands: luma 0 ...
  EXPECT_EQ(rle.Main(0, 1), 0x11);  // ... and alpha's bit 0 set
  EXPECT_EQ(rle.Main(8, 1), 0xFF);  // -1 swamps alpha
  Target none;
  PlanarStore<kCsYA44>::Store<Family::k444, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, none.Get(), 16);
  EXPECT_EQ(none.Main(0, 0), 0);
  EXPECT_EQ(none.Main(0, 1), 0xFF);
  sc.Fill(12, 300);
  sc.Fill(13, 300);
  sc.Fill(14, -5);
  sc.Fill(15, -5);
  Target dct;
  PlanarStore<kCsYA20>::Store<Family::k422, AlphaCoding::kDct>(kStoreKernelsScalar, sc.s, dct.Get(), 16);
  EXPECT_EQ(dct.Main(0, 0), 255);
  EXPECT_EQ(dct.Main(0, 1), 255);
  EXPECT_EQ(dct.Main(8, 0), 0);
  EXPECT_EQ(dct.Main(0, 31), 0);  // right half's alpha -5 packs to 0
}

TEST(OutputStores, AbsentAlphaIsOpaque) {
  Scratch sc;
  Target rgb, ayuv;
  RgbStore<kCsRGB32>::Store<Family::k444, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, rgb.Get(), 16);
  AyuvStore::Store<Family::k444, AlphaCoding::kNone>(kStoreKernelsScalar, sc.s, ayuv.Get(), 16);
  for (int r = 0; r < 16; ++r) {
    for (int c = 0; c < 16; ++c) {
      ASSERT_EQ(rgb.Main(r, 4 * c + 3), 255);
      ASSERT_EQ(ayuv.Main(r, 4 * c), 255);
    }
  }
}

// Every store with the vector line kernels against the same store with the
// scalar ones, on random and saturating samples, guard bytes included.
template <class Layout, Family F, AlphaCoding A>
void CompareKernels(const StoreKernels& vector, std::mt19937& rng, int32_t lines) {
  for (int kind = 0; kind < 4; ++kind) {
    Scratch sc;
    for (auto& block : sc.s.blocks) {
      for (int k = 0; k < 64; ++k) {
        block[k] = kind == 0 ? static_cast<int16_t>(rng())
                   : kind == 1 ? static_cast<int16_t>(static_cast<int32_t>(rng() % 320) - 32)
                   : kind == 2 ? int16_t{32767}
                               : static_cast<int16_t>((k & 1) ? 32767 : -32768);
      }
    }
    Target a, b;
    Layout::template Store<F, A>(kStoreKernelsScalar, sc.s, a.Get(), lines);
    Layout::template Store<F, A>(vector, sc.s, b.Get(), lines);
    ASSERT_EQ(a.main, b.main) << "kind " << kind;
    ASSERT_EQ(a.second, b.second) << "kind " << kind;
  }
}

template <Family F, AlphaCoding A>
void CompareAllLayouts(const StoreKernels& vector, std::mt19937& rng) {
  for (int32_t lines : {16, 5}) {
    CompareKernels<PlanarStore<kCsNV12>, F, A>(vector, rng, lines);
    CompareKernels<PlanarStore<kCsNV16>, F, A>(vector, rng, lines);
    CompareKernels<PlanarStore<kCsNV24>, F, A>(vector, rng, lines);
    CompareKernels<PlanarStore<kCsYA20>, F, A>(vector, rng, lines);
    CompareKernels<PlanarStore<kCsYA22>, F, A>(vector, rng, lines);
    CompareKernels<PlanarStore<kCsYA44>, F, A>(vector, rng, lines);
    CompareKernels<Packed422Store<kCsYUY2>, F, A>(vector, rng, lines);
    CompareKernels<Packed422Store<kCsUYVY>, F, A>(vector, rng, lines);
    CompareKernels<Packed422Store<kCsUYVA>, F, A>(vector, rng, lines);
    CompareKernels<AyuvStore, F, A>(vector, rng, lines);
    CompareKernels<RgbStore<kCsRGB24>, F, A>(vector, rng, lines);
    CompareKernels<RgbStore<kCsRGB32>, F, A>(vector, rng, lines);
  }
}

TEST(StoreKernels, VectorMatchesScalarInEveryStore) {
  const StoreKernels* vector = StoreKernelsSse2();
  if (vector == nullptr) GTEST_SKIP() << "no vector kernels on this build";
  std::mt19937 rng(5);
  CompareAllLayouts<Family::k420, AlphaCoding::kNone>(*vector, rng);
  CompareAllLayouts<Family::k420, AlphaCoding::kRunValue>(*vector, rng);
  CompareAllLayouts<Family::k422, AlphaCoding::kNone>(*vector, rng);
  CompareAllLayouts<Family::k422, AlphaCoding::kDct>(*vector, rng);
  CompareAllLayouts<Family::k444, AlphaCoding::kRunValue>(*vector, rng);
  CompareAllLayouts<Family::k444, AlphaCoding::kDct>(*vector, rng);
}

}  // namespace
}  // namespace vantaro::decoder
