// The stores' vector line kernels held to the scalar ones. What each store
// writes (clamping, raw pairs, averaging, opaque alpha, partial rows) is
// pinned by the golden pictures of every variant in every layout, which fail
// on a slip in any of them (tests/codec).
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
  Planes Get() { return Planes{plane[0].data() + kOrigin, plane[1].data() + kOrigin, kStride, kStride}; }
  // The odd field of a 40 x 30 picture: its 16 lines hold 15 picture lines.
  PlaneField<uint8_t> Field(bool fullChroma, bool halfHeight) {
    PlaneField<uint8_t> f{{}, {kStride, kStride, kStride, kStride}, 40, 30, fullChroma ? 40 : 20,
                          halfHeight ? 15 : 30, 1};
    for (int p = 0; p < 4; ++p) f.planes[p] = plane[p].data() + kOrigin;
    return f;
  }
  bool operator==(const Target&) const = default;
};

struct Scratch {
  alignas(16) MacroblockScratch s;
  Scratch() { std::memset(&s, 0, sizeof s); }
  void Random(int kind, std::mt19937& rng) {
    for (auto& block : s.blocks) {
      for (int k = 0; k < 64; ++k) block[k] = test::Sample(kind, k, rng);
    }
  }
};

constexpr auto& kScalar = kStoreKernelsScalar;

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

// The vector colour conversion computes the tables' lanes instead of
// loading them: every (y, u, v) byte triple, both pixel sizes.
TEST(StoreKernels, RgbLinesMatchTheTablesForEveryTriple) {
  for (const Kernels* k : test::VectorKernels()) {
    uint8_t y[16], u[16], v[16], alpha[16];
    for (int i = 0; i < 16; ++i) alpha[i] = static_cast<uint8_t>(17 * i);
    for (int uv = 0; uv < 65536; ++uv) {
      for (int i = 0; i < 16; ++i) {
        u[i] = static_cast<uint8_t>(uv);
        v[i] = static_cast<uint8_t>(uv >> 8);
      }
      for (int y0 = 0; y0 < 256; y0 += 16) {
        for (int i = 0; i < 16; ++i) y[i] = static_cast<uint8_t>(y0 + i);
        for (const int size : {0, 1}) {
          uint8_t expected[64], got[64];
          kStoreKernelsScalar.rgbLine[size](y, u, v, alpha, expected);
          k->stores->rgbLine[size](y, u, v, alpha, got);
          ASSERT_EQ(0, std::memcmp(expected, got, size == 0 ? 48 : 64)) << "u " << (uv & 255) << " v " << (uv >> 8);
        }
      }
    }
  }
}

}  // namespace
}  // namespace vantaro::decoder
