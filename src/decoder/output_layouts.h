// The twelve output layouts' stores of one macroblock; where a slice's planes
// start and how they move comes from LayoutTraits. Each store writes
// only the first `lines` lines of the macroblock (16, or the partial row's
// count), and only its own 16 pixels of each line.
#pragma once

#include <cstdint>
#include <cstring>

#include "codec/layout_traits.h"
#include "decoder/output_stores.h"

namespace vantaro::decoder {

// The NV and YA layouts: a main plane of luma (or luma, alpha pairs) and a
// second plane of interleaved U, V at the layout's chroma rate.
template <ColorSpace CS>
struct PlanarStore : LayoutTraits<CS> {
  using Traits = LayoutTraits<CS>;
  static constexpr int32_t kMainStep = Traits::kColumnBytes;

  template <Family F, AlphaCoding A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    using Chroma = ChromaOf<F>;
    for (int32_t r = 0; r < lines; ++r) StoreMain<A>(k, s, r, p.main + r * p.mainStride);
    // A 4:2:0 plane serves two luma lines per chroma line; a partial row gets
    // the chroma of every luma line written.
    const int32_t chromaLines = Traits::kHalfHeightChroma ? (lines + 1) / 2 : lines;
    for (int32_t line = 0; line < chromaLines; ++line) {
      uint8_t* out = p.second + line * p.secondStride;
      if constexpr (Traits::kHalfHeightChroma) {
        Chroma::Nv12Pairs(k, s, line, out);
      } else if constexpr (Traits::kFullWidthChroma) {
        Chroma::FullPairs(k, s, line, out);
      } else {
        Chroma::HalfPairs(k, s, line, out);
      }
    }
  }

  // NV: packed luma bytes. YA: 16-bit words (alpha << 8) | luma, luma as the
  // 16-bit sample stands unless alpha is DCT-coded, so a sample outside 0..255
  // corrupts the alpha byte: kept.
  template <AlphaCoding A>
  static void StoreMain(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    if constexpr (!Traits::kLumaAlpha) {
      LumaBytes(k, s, r, out);
    } else {
      uint8_t alpha[16];
      AlphaOf<A>::Bytes(k, s, r, alpha);
      const int16_t* left = StripLine(s, 0, r);
      const int16_t* right = StripLine(s, 2, r);
      for (int c = 0; c < 16; ++c) {
        const int16_t y = c < 8 ? left[c] : right[c - 8];
        const uint16_t luma = AlphaOf<A>::kClampLumaInYa ? Pack(y) : static_cast<uint16_t>(y);
        const uint16_t word = static_cast<uint16_t>(luma | (alpha[c] << 8));
        out[2 * c] = static_cast<uint8_t>(word);
        out[2 * c + 1] = static_cast<uint8_t>(word >> 8);
      }
    }
  }
};

// csYUY2, csUYVY and csUYVA: eight pairs a line interleaved with luma;
// csUYVA's alpha plane lies behind the main plane, a byte a pixel.
template <ColorSpace CS>
struct Packed422Store : LayoutTraits<CS> {
  static_assert(CS == kCsYUY2 || CS == kCsUYVY || CS == kCsUYVA);
  static constexpr int32_t kMainStep = LayoutTraits<CS>::kColumnBytes;

  template <Family F, AlphaCoding A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    if constexpr (F != Family::k444) {
      // Luma strips and the one chroma strip per plane, lines in order: one kernel call.
      k.packed422[CS == kCsYUY2 ? 0 : 1](s.blocks[0], s.blocks[2], s.blocks[4], s.blocks[6],
                                         F == Family::k420 ? 1 : 0, p.main, p.mainStride, lines);
      if constexpr (CS == kCsUYVA) {
        for (int32_t r = 0; r < lines; ++r) AlphaOf<A>::Bytes(k, s, r, p.second + r * p.secondStride);
      }
      return;
    }
    for (int32_t r = 0; r < lines; ++r) {
      uint8_t luma[16], pairs[16];
      LumaBytes(k, s, r, luma);
      ChromaOf<F>::HalfPairs(k, s, r, pairs);
      uint8_t* out = p.main + r * p.mainStride;
      if constexpr (CS == kCsYUY2) {
        k.interleave(luma, pairs, out);
      } else {
        k.interleave(pairs, luma, out);
      }
      if constexpr (CS == kCsUYVA) AlphaOf<A>::Bytes(k, s, r, p.second + r * p.secondStride);
    }
  }
};

// csAYUV: A Y U V a pixel, the raw pair at full rate.
struct AyuvStore : LayoutTraits<kCsAYUV> {
  static constexpr int32_t kMainStep = kColumnBytes;

  template <Family F, AlphaCoding A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    for (int32_t r = 0; r < lines; ++r) {
      uint8_t luma[16], alpha[16], pairs[32];
      LumaBytes(k, s, r, luma);
      AlphaOf<A>::Bytes(k, s, r, alpha);
      ChromaOf<F>::FullPairs(k, s, r, pairs);
      uint8_t* out = p.main + r * p.mainStride;
      for (int c = 0; c < 16; ++c) {
        out[4 * c] = alpha[c];
        out[4 * c + 1] = luma[c];
        out[4 * c + 2] = pairs[2 * c];
        out[4 * c + 3] = pairs[2 * c + 1];
      }
    }
  }
};

// csRGB24 and csRGB32: all three samples packed first, then three table
// lanes added in 16-bit wrap-around, shifted by 5 and packed. Blue, green, red.
template <ColorSpace CS>
struct RgbStore : LayoutTraits<CS> {
  static_assert(CS == kCsRGB24 || CS == kCsRGB32);
  static constexpr int32_t kPixelBytes = LayoutTraits<CS>::kFacts.pixelBytes;
  static constexpr int32_t kMainStep = LayoutTraits<CS>::kColumnBytes;

  template <Family F, AlphaCoding A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    for (int32_t r = 0; r < lines; ++r) {
      uint8_t luma[16], uv[32], alpha[16];
      LumaBytes(k, s, r, luma);
      ChromaOf<F>::RgbChroma(k, s, r, uv);
      if constexpr (kPixelBytes == 4) AlphaOf<A>::Bytes(k, s, r, alpha);
      k.rgbLine[kPixelBytes - 3](luma, uv, uv + 16, alpha, p.main + r * p.mainStride);
    }
  }
};

}  // namespace vantaro::decoder
