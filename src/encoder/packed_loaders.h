// Loaders for the one-plane layouts: packed 4:2:2 (csYUY2, csUYVY, and
// csUYVA with its separate alpha plane) and per-pixel layouts (csAYUV,
// csRGB24, csRGB32). They advance one line per pass.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/layout_traits.h"
#include "encoder/loader_place.h"

namespace vantaro::encoder {

template <ColorSpace CS>
struct PackedLoader : LayoutTraits<CS> {
  static_assert(CS >= kCsYUY2 && CS <= kCsRGB32);
  using Traits = LayoutTraits<CS>;
  static constexpr bool kPacked422 = !Traits::kFullWidthChroma;
  static constexpr bool kFullWidthChroma = Traits::kFullWidthChroma;
  static constexpr int32_t kMainStep = Traits::kColumnBytes;

  static void Unpack(const LoaderKernels& k, const uint8_t* line, LineSamples& out) {
    switch (CS) {
      case kCsYUY2: k.yuy2(line, out); break;
      case kCsUYVY: case kCsUYVA: k.uyvy(line, out); break;
      case kCsAYUV: k.ayuv(line, out); break;
      case kCsRGB24: k.rgb24(line, out); break;
      default: k.rgb32(line, out); break;
    }
  }

  // The source line whose chroma becomes 4:2:0 chroma row m. From packed
  // 4:2:2 that is lines 1, 2, 5, 6, 9, 10, 13, 14: the line where i and
  // i >> 1 differ in their lowest bit, unaveraged. Streams depend on it.
  static constexpr int ChromaLine420(int m) {
    if constexpr (kPacked422) return (m & 1) ? 2 * m : 2 * m + 1;
    return 2 * m;
  }
  static constexpr bool IsChromaLine420(int row) {
    if constexpr (kPacked422) return ((row ^ (row >> 1)) & 1) != 0;
    return (row & 1) == 0;
  }

  template <Family F, AlphaCoding A>
  static void PutLine(MacroblockScratch& s, const LineSamples& l, const uint8_t* alphaLine,
                      int row) {
    place::PutLuma(s, row, l.y);
    if constexpr (CS == kCsUYVA) {
      place::PutAlpha<A>(s, row, alphaLine);
    } else if constexpr (CS == kCsAYUV || CS == kCsRGB32) {
      place::PutAlpha<A>(s, row, l.a);
    } else {
      place::PutOpaqueAlpha<A>(s, row);
    }
    if constexpr (F == Family::k420) {
      if (IsChromaLine420(row)) place::PutChroma<F, kFullWidthChroma>(s, row >> 1, l.u, l.v);
    } else {
      place::PutChroma<F, kFullWidthChroma>(s, row, l.u, l.v);
    }
  }

  template <Family F, AlphaCoding A>
  static void LoadRows(const LoaderKernels& k, MacroblockScratch& s, const uint8_t* source,
                       const uint8_t* second, int32_t pu, int rows) {
    const ptrdiff_t lineDistance = ptrdiff_t{16} * pu;
    // csUYVA alpha lines inside a macroblock: (t / 16 / 2) * 16 apart.
    const ptrdiff_t alphaDistance = Traits::SecondLineStride(ptrdiff_t{16} * pu);
    if constexpr (kPacked422 && F == Family::k422) {
      // Every line feeds every strip in order: one kernel call for the samples.
      k.packed422Rows[CS == kCsYUY2 ? 0 : 1](source, lineDistance, s.blocks[kBlockYLeftTop],
                                             s.blocks[kBlockYRightTop], s.blocks[kBlockU0], s.blocks[kBlockV0],
                                             rows);
      if constexpr (A != AlphaCoding::kNone) {
        for (int row = 0; row < rows; ++row) {
          if constexpr (CS == kCsUYVA) {
            place::PutAlpha<A>(s, row, second + alphaDistance * row);
          } else {
            place::PutOpaqueAlpha<A>(s, row);
          }
        }
      }
      return;
    }
    for (int row = 0; row < rows; ++row) {
      LineSamples l;
      Unpack(k, source + lineDistance * row, l);
      const uint8_t* alphaLine = nullptr;
      if constexpr (Traits::kHasSecond) alphaLine = second + alphaDistance * row;
      PutLine<F, A>(s, l, alphaLine, row);
    }
  }

  template <Family F, AlphaCoding A>
  static void LoadPartial(const LoaderKernels& k, MacroblockScratch& s, const uint8_t* source,
                          const uint8_t* second, int32_t pu, int lines) {
    LoadRows<F, A>(k, s, source, second, pu, lines);
    if constexpr (F == Family::k420) {
      // From packed 4:2:2 the last chroma row may come from a line below
      // the loaded ones (lines 1, 5, 9, 13): it takes line lines - 1.
      const int m = (lines - 1) / 2;
      if (ChromaLine420(m) >= lines) {
        LineSamples l;
        Unpack(k, source + ptrdiff_t{16} * pu * (lines - 1), l);
        place::PutChroma<F, kFullWidthChroma>(s, m, l.u, l.v);
      }
    }
    place::FillPartial<F, A>(s, lines);
  }
};

}  // namespace vantaro::encoder
