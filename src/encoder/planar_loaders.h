// Loaders for the two-plane layouts: csNV12, csNV16, csNV24 (8-bit luma)
// and csYA20, csYA22, csYA44 (luma, alpha pairs), each with a second plane
// of interleaved U, V.
//
// These loaders take two lines per pass and never move their pointers
// between passes: every pass reads lines 0 and 1 of the macroblock's place
// and the matching chroma line or pair, so those two lines repeat down the
// whole macroblock. With the walks' doubled column step this is what the
// streams hold, and it stays so.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/layout_traits.h"
#include "encoder/loader_place.h"

namespace vantaro::encoder {

template <ColorSpace CS>
struct PlanarLoader : LayoutTraits<CS> {
  static_assert(IsPlanar(CS));
  using Traits = LayoutTraits<CS>;
  static constexpr bool kLumaAlpha = Traits::kLumaAlpha;
  static constexpr bool kFullWidthChroma = Traits::kFullWidthChroma;
  // Half-height chroma (csNV12, csYA20) gives one chroma line per pass.
  static constexpr bool kChromaPair = !Traits::kHalfHeightChroma;
  // Twice what a loader reads per macroblock: every second group of 16
  // columns is skipped. Kept for stream compatibility.
  static constexpr int32_t kMainStep = 2 * Traits::kColumnBytes;

  // Distance of the second chroma line of a pair: the stores' line distance
  // taken on the loaders' line distance in units of 16 bytes, halved by
  // division.
  static ptrdiff_t PairDistance(int32_t pu) {
    return ptrdiff_t{16} * (pu / (1 << Traits::kFacts.lineShift)) * Traits::kFacts.lineMul;
  }

  // Rows 0..rows-1 (rows even), each from line 0 or 1 by its parity.
  template <Family F, AlphaCoding A>
  static void LoadRows(const LoaderKernels& k, MacroblockScratch& s, const uint8_t* source,
                       const uint8_t* second, int32_t pu, int rows) {
    LineSamples line[2], chroma[2];
    const auto unpackLuma = kLumaAlpha ? k.lumaAlpha : k.luma8;
    unpackLuma(source, line[0]);
    unpackLuma(source + ptrdiff_t{16} * pu, line[1]);
    const auto unpackChroma = kFullWidthChroma ? k.chromaFull : k.chromaHalf;
    unpackChroma(second, chroma[0]);
    if constexpr (kChromaPair) {
      unpackChroma(second + PairDistance(pu), chroma[1]);
      if constexpr (F == Family::k420) {
        for (int c = 0; c < (kFullWidthChroma ? 16 : 8); ++c) {
          chroma[0].u[c] = static_cast<int16_t>((chroma[0].u[c] + chroma[1].u[c] + 1) >> 1);
          chroma[0].v[c] = static_cast<int16_t>((chroma[0].v[c] + chroma[1].v[c] + 1) >> 1);
        }
      }
    }
    for (int row = 0; row < rows; ++row) {
      const LineSamples& l = line[row & 1];
      place::PutLuma(s, row, l.y);
      if constexpr (kLumaAlpha) {
        place::PutAlpha<A>(s, row, l.a);
      } else {
        place::PutOpaqueAlpha<A>(s, row);
      }
      if constexpr (F == Family::k420) {
        if ((row & 1) == 0) place::PutChroma<F, kFullWidthChroma>(s, row >> 1, chroma[0].u, chroma[0].v);
      } else {
        const LineSamples& c = chroma[kChromaPair ? (row & 1) : 0];
        place::PutChroma<F, kFullWidthChroma>(s, row, c.u, c.v);
      }
    }
  }

  // A pass always writes two rows, so an odd `lines` loads one more; the
  // fill then overwrites it.
  template <Family F, AlphaCoding A>
  static void LoadPartial(const LoaderKernels& k, MacroblockScratch& s, const uint8_t* source,
                          const uint8_t* second, int32_t pu, int lines) {
    LoadRows<F, A>(k, s, source, second, pu, (lines + 1) & ~1);
    place::FillPartial<F, A>(s, lines);
  }
};

}  // namespace vantaro::encoder
