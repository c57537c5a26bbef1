#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "decoder/output_layouts.h"
#include "decoder/plane_set_stores.h"
#include "support/twins.h"

namespace vantaro::decoder {
namespace {

constexpr int64_t kStride = 160;  // room for the widest line (64 bytes) and a margin
constexpr size_t kPlaneBytes = kStride * 40;
constexpr size_t kOrigin = kStride * 4 + 16;  // first byte of the macroblock
constexpr uint8_t kUntouched = 0xCD;

// Four guarded planes: main and second for the one- and two-plane stores,
// Y, U, V and alpha for the plane sets.
struct Target {
  std::vector<uint8_t> plane[4];
  Target() {
    for (auto& p : plane) p.assign(kPlaneBytes, kUntouched);
  }
  Planes Get(int64_t secondStride = kStride) {
    return Planes{plane[0].data() + kOrigin, plane[1].data() + kOrigin, kStride, secondStride};
  }
  // The odd field of a 40 x 30 picture: its 16 lines hold 15 picture lines.
  PlaneField<uint8_t> Field(bool fullChroma, bool halfHeight) {
    PlaneField<uint8_t> f{{}, {kStride, kStride, kStride, kStride}, 40, 30, fullChroma ? 40 : 20,
                          halfHeight ? 15 : 30, 1};
    for (int p = 0; p < 4; ++p) f.planes[p] = plane[p].data() + kOrigin;
    return f;
  }
  uint8_t Main(int32_t line, int32_t byte) const { return plane[0][kOrigin + line * kStride + byte]; }
  uint8_t Second(int32_t line, int32_t byte) const { return plane[1][kOrigin + line * kStride + byte]; }
  bool operator==(const Target&) const = default;
};

struct Scratch {
  alignas(16) MacroblockScratch s;
  Scratch() { std::memset(&s, 0, sizeof s); }
  void Fill(int block, int16_t v) {
    for (int16_t& x : s.blocks[block]) x = v;
  }
  // Sample (line r, column c) of the strip of blocks n, n + 1.
  void Set(int n, int r, int c, int16_t v) { s.blocks[n + r / 8][8 * (r % 8) + c] = v; }
  void Random(int kind, std::mt19937& rng) {
    for (auto& block : s.blocks) {
      for (int k = 0; k < 64; ++k) block[k] = test::Sample(kind, k, rng);
    }
  }
};

constexpr auto& kScalar = kStoreKernelsScalar;

TEST(OutputStores, FourFourFourToNv12AveragesPackedEvenColumns) {
  Scratch sc;
  for (int c = 0; c < 8; ++c) {
    sc.Set(4, 2, c, (c % 2 == 0) ? 10 : 99);  // odd columns never count
    sc.Set(4, 3, c, (c % 2 == 0) ? 13 : -99);
    sc.Set(6, 2, c, 300);  // V is packed before the average: 255 with 255
    sc.Set(6, 3, c, 255);
  }
  Target t;
  PlanarStore<kCsNV12>::Store<Family::k444, AlphaCoding::kNone>(kScalar, sc.s, t.Get(), 16);
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
  Packed422Store<kCsYUY2>::Store<Family::k420, AlphaCoding::kNone>(kScalar, sc.s, t.Get(), 16);
  EXPECT_EQ(t.Main(0, 1), 253);  // U's low byte
  EXPECT_EQ(t.Main(0, 3), 255);  // V's byte under U's sign bits
  sc.Fill(4, 256);
  Packed422Store<kCsYUY2>::Store<Family::k420, AlphaCoding::kNone>(kScalar, sc.s, t.Get(), 16);
  EXPECT_EQ(t.Main(5, 1), 0);
  EXPECT_EQ(t.Main(5, 3), 0x41);
  // RGB packs chroma first: 256 reads as 255.
  Target a, b;
  RgbStore<kCsRGB24>::Store<Family::k420, AlphaCoding::kNone>(kScalar, sc.s, a.Get(), 16);
  sc.Fill(4, 255);
  RgbStore<kCsRGB24>::Store<Family::k420, AlphaCoding::kNone>(kScalar, sc.s, b.Get(), 16);
  EXPECT_TRUE(a == b);
}

TEST(OutputStores, PartialRowsWriteOnlyTheirLines) {
  Scratch sc;
  Target t, u;
  PlanarStore<kCsNV12>::Store<Family::k420, AlphaCoding::kNone>(kScalar, sc.s, t.Get(), 3);
  PlanarStore<kCsNV24>::Store<Family::k420, AlphaCoding::kNone>(kScalar, sc.s, u.Get(), 3);
  // NV12: (3 + 1) / 2 chroma lines; NV24 from a two-line source stops at 3 too.
  const struct {
    uint8_t got;
    bool written;
  } cells[] = {
      {t.Main(2, 0), true}, {t.Main(3, 0), false}, {t.Second(1, 15), true}, {t.Second(2, 0), false},
      {u.Second(2, 31), true}, {u.Second(3, 0), false}, {u.Second(0, 32), false}};
  for (const auto& c : cells) EXPECT_EQ(c.got != kUntouched, c.written);
}

TEST(OutputStores, LumaAlphaWordsClampOnlyBesideDctAlpha) {
  Scratch sc;
  sc.Fill(0, 256);
  sc.Fill(1, -1);
  std::memset(sc.s.Alpha(), 0x10, 256);  // run-length alpha bytes over blocks 12, 13
  Target rle, none, dct;
  PlanarStore<kCsYA22>::Store<Family::k422, AlphaCoding::kRunValue>(kScalar, sc.s, rle.Get(kStride / 2), 16);
  PlanarStore<kCsYA44>::Store<Family::k444, AlphaCoding::kNone>(kScalar, sc.s, none.Get(), 16);
  sc.Fill(12, 300);
  sc.Fill(13, 300);
  sc.Fill(14, -5);
  sc.Fill(15, -5);
  PlanarStore<kCsYA20>::Store<Family::k422, AlphaCoding::kDct>(kScalar, sc.s, dct.Get(), 16);
  const struct {
    uint8_t got, want;
  } cells[] = {
      {rle.Main(0, 0), 0}, {rle.Main(0, 1), 0x11},  // 256 as it stands: luma 0, alpha's bit 0 set
      {rle.Main(8, 1), 0xFF},                       // -1 swamps alpha
      {none.Main(0, 0), 0}, {none.Main(0, 1), 0xFF},
      {dct.Main(0, 0), 255}, {dct.Main(0, 1), 255}, {dct.Main(8, 0), 0},
      {dct.Main(0, 31), 0}};  // right half's alpha -5 packs to 0
  for (const auto& c : cells) EXPECT_EQ(c.got, c.want);
}

TEST(OutputStores, AbsentAlphaIsOpaque) {
  Scratch sc;
  Target rgb, ayuv;
  RgbStore<kCsRGB32>::Store<Family::k444, AlphaCoding::kNone>(kScalar, sc.s, rgb.Get(), 16);
  AyuvStore::Store<Family::k444, AlphaCoding::kNone>(kScalar, sc.s, ayuv.Get(), 16);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(rgb.Main(i / 16, 4 * (i % 16) + 3) & ayuv.Main(i / 16, 4 * (i % 16)), 255);
}

// Every store with the vector line kernels against the same store with the
// scalar ones, on random and saturating samples, guard bytes included. A
// plane set's macroblock sits in column 1 of the odd field, inside the
// picture but for its last line, and both go by the whole-line path, held
// to the line-by-line reference.
template <Family F, AlphaCoding A, class... Layouts>
void Compare(const StoreKernels& vector, std::mt19937& rng) {
  const auto one = [&]<class Layout>(Layout*, int32_t lines, int kind) {
    Scratch sc;
    sc.Random(kind, rng);
    Target reference, scalar, vectored;
    if constexpr (Layout::kPlaneSet) {
      const bool full = Layout::kChromaSamples == 16, half = Layout::kHalfHeightChroma;
      const std::array f{reference.Field(full, half), scalar.Field(full, half), vectored.Field(full, half)};
      Layout::template StoreLines<F, A>(kScalar, sc.s, {&f[0], 0, 1}, lines);
      Layout::template Store<F, A>(kScalar, sc.s, {&f[1], 0, 1}, lines);
      Layout::template Store<F, A>(vector, sc.s, {&f[2], 0, 1}, lines);
    } else {
      Layout::template Store<F, A>(kScalar, sc.s, reference.Get(), lines);
      Layout::template Store<F, A>(kScalar, sc.s, scalar.Get(), lines);
      Layout::template Store<F, A>(vector, sc.s, vectored.Get(), lines);
    }
    EXPECT_TRUE(reference == scalar && reference == vectored) << "lines " << lines << " kind " << kind;
  };
  for (int32_t lines : {16, 5}) {
    for (int kind : {5, 6, 0, 2}) (one(static_cast<Layouts*>(nullptr), lines, kind), ...);
  }
}

template <Family F, AlphaCoding A>
void CompareAllLayouts(const StoreKernels& v, std::mt19937& rng) {
  Compare<F, A, PlanarStore<kCsNV12>, PlanarStore<kCsNV16>, PlanarStore<kCsNV24>, PlanarStore<kCsYA20>,
          PlanarStore<kCsYA22>, PlanarStore<kCsYA44>, Packed422Store<kCsYUY2>, Packed422Store<kCsUYVY>,
          Packed422Store<kCsUYVA>, AyuvStore, RgbStore<kCsRGB24>, RgbStore<kCsRGB32>,
          PlaneSetStore<kPlanesYUV420>, PlaneSetStore<kPlanesYUVA420>, PlaneSetStore<kPlanesYUV422>,
          PlaneSetStore<kPlanesYUVA422>, PlaneSetStore<kPlanesYUV444>, PlaneSetStore<kPlanesYUVA444>>(v, rng);
}

TEST(StoreKernels, VectorMatchesScalarInEveryStore) {
  // Without vector kernels the scalar ones stand in: the plane sets' two
  // paths are still held to each other.
  std::vector<const Kernels*> levels = test::VectorKernels();
  if (levels.empty()) levels.push_back(KernelsAt(KernelLevel::kScalar));
  std::mt19937 rng(5);
  for (const Kernels* k : levels) {
    const StoreKernels& v = *k->stores;
    CompareAllLayouts<Family::k420, AlphaCoding::kNone>(v, rng);
    CompareAllLayouts<Family::k420, AlphaCoding::kRunValue>(v, rng);
    CompareAllLayouts<Family::k422, AlphaCoding::kNone>(v, rng);
    CompareAllLayouts<Family::k422, AlphaCoding::kDct>(v, rng);
    CompareAllLayouts<Family::k444, AlphaCoding::kRunValue>(v, rng);
    CompareAllLayouts<Family::k444, AlphaCoding::kDct>(v, rng);
  }
}

}  // namespace
}  // namespace vantaro::decoder
