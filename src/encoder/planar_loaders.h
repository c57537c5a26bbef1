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

#include "codec/codec_instance.h"
#include "encoder/loader_place.h"

namespace vantaro::encoder {

template <ColorSpace CS>
struct PlanarLayout {
  static_assert(IsPlanar(CS));
  static constexpr bool kLumaAlpha = CS == kCsYA20 || CS == kCsYA22 || CS == kCsYA44;
  static constexpr bool kFullWidthChroma = CS == kCsNV24 || CS == kCsYA44;
  // Half-height chroma (csNV12, csYA20) gives one chroma line per pass.
  static constexpr bool kChromaPair = !(CS == kCsNV12 || CS == kCsYA20);
  static constexpr bool kHasSecond = true;
  // Twice what a loader reads per macroblock: every second group of 16
  // columns is skipped. Kept for stream compatibility.
  static constexpr int32_t kMainStep = kLumaAlpha ? 64 : 32;
  static constexpr int32_t kSecondStep = kFullWidthChroma ? 32 : 16;

  // The second plane's distance per line of the field, for slice starts and
  // row moves.
  static int32_t SecondLineStride(int32_t t) {
    switch (CS) {
      case kCsNV12: return t >> 1;
      case kCsNV16: return t;
      case kCsNV24: return t * 2;
      case kCsYA20: return t >> 2;
      case kCsYA22: return t >> 1;
      default: return t;  // csYA44
    }
  }

  static const uint8_t* SecondStart(const CodecInstance&, const uint8_t*, const uint8_t* chroma,
                                    int32_t t, uint32_t slice) {
    return chroma + static_cast<ptrdiff_t>(SecondLineStride(t)) * 16 * slice;
  }

  // Distance of the second chroma line of a pair, from the loaders' line
  // distance in units of 16 bytes.
  static ptrdiff_t PairDistance(int32_t pu) {
    switch (CS) {
      case kCsNV24: return ptrdiff_t{32} * pu;
      case kCsYA22: return ptrdiff_t{16} * (pu / 2);
      default: return ptrdiff_t{16} * pu;  // csNV16, csYA44
    }
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

  template <Family F, AlphaCoding A>
  static void Load(const LoaderKernels& k, MacroblockScratch& s, const uint8_t* source,
                   const uint8_t* second, int32_t pu) {
    LoadRows<F, A>(k, s, source, second, pu, 16);
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
