// The twelve output layouts: where a slice's planes start and how they move
// (the decoder's steps), and the store of one macroblock. Each store writes
// only the first `lines` lines of the macroblock (16, or the partial row's
// count), and only its own 16 pixels of each line.
#pragma once

#include <cstdint>
#include <cstring>

#include "decoder/output_stores.h"

namespace vantaro {

// Stores whose planes need nothing beyond `picture`.
struct NoSecondPlane {
  static constexpr bool kPlanar = false;
  static constexpr int32_t kSecondStep = 0;
  static uint8_t* SecondStart(const CodecInstance&, uint8_t*, uint8_t*, int64_t, uint32_t) {
    return nullptr;
  }
  static int64_t SecondStride(int64_t) { return 0; }
  static int64_t SecondRowMove(int64_t) { return 0; }
};

// The second plane's geometry by chroma rate of the planar output, with t the
// field stride of the main plane: lines t apart for NV12, NV16 and YA44, 2t for
// NV24, 2 * (t >> 2) for YA20 and t >> 1 for YA22.
enum class PlanarKind : uint8_t { kNV12, kNV16, kNV24, kYA20, kYA22, kYA44 };

template <PlanarKind K>
struct PlanarLayout {
  static constexpr bool kPlanar = true;
  static constexpr bool kYa = K == PlanarKind::kYA20 || K == PlanarKind::kYA22 || K == PlanarKind::kYA44;
  static constexpr bool kHalfLines = K == PlanarKind::kNV12 || K == PlanarKind::kYA20;
  static constexpr bool kFullRate = K == PlanarKind::kNV24 || K == PlanarKind::kYA44;
  static constexpr int32_t kMainStep = kYa ? 32 : 16;
  static constexpr int32_t kSecondStep = kFullRate ? 32 : 16;

  // A unit of the second plane: the chroma lines of one slice's first row
  // start 16 units in per slice and move 64 units per row.
  static int64_t Unit(int64_t t) {
    switch (K) {
      case PlanarKind::kNV12: case PlanarKind::kYA22: return t >> 1;
      case PlanarKind::kNV16: case PlanarKind::kYA44: return t;
      case PlanarKind::kNV24: return 2 * t;
      case PlanarKind::kYA20: return t >> 2;
    }
    return 0;
  }
  static uint8_t* SecondStart(const CodecInstance&, uint8_t*, uint8_t* chroma, int64_t t,
                              uint32_t slice) {
    return chroma + 16 * Unit(t) * slice;
  }
  static int64_t SecondStride(int64_t t) {
    switch (K) {
      case PlanarKind::kNV12: case PlanarKind::kNV16: case PlanarKind::kYA44: return t;
      case PlanarKind::kNV24: return 2 * t;
      case PlanarKind::kYA20: return 2 * (t >> 2);
      case PlanarKind::kYA22: return t >> 1;
    }
    return 0;
  }
  static int64_t SecondRowMove(int64_t t) { return 64 * Unit(t); }

  template <class F, class A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    for (int32_t r = 0; r < lines; ++r) StoreMain<A>(k, s, r, p.main + r * p.mainStride);
    // A 4:2:0 plane serves two luma lines per chroma line; a partial row gets
    // the chroma of every luma line written.
    const int32_t chromaLines = kHalfLines ? (lines + 1) / 2 : lines;
    for (int32_t line = 0; line < chromaLines; ++line) {
      uint8_t* out = p.second + line * p.secondStride;
      if constexpr (kHalfLines) {
        F::Nv12Pairs(k, s, line, out);
      } else if constexpr (kFullRate) {
        F::FullPairs(k, s, line, out);
      } else {
        F::HalfPairs(k, s, line, out);
      }
    }
  }

  // NV: packed luma bytes. YA: 16-bit words (alpha << 8) | luma, luma as the
  // 16-bit sample stands unless alpha is DCT-coded, so a sample outside 0..255
  // corrupts the alpha byte: kept.
  template <class A>
  static void StoreMain(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    if constexpr (!kYa) {
      LumaBytes(k, s, r, out);
    } else {
      uint8_t alpha[16];
      A::Bytes(k, s, r, alpha);
      const int16_t* left = StripLine(s, 0, r);
      const int16_t* right = StripLine(s, 2, r);
      for (int c = 0; c < 16; ++c) {
        const int16_t y = c < 8 ? left[c] : right[c - 8];
        const uint16_t luma = A::kClampLumaInYa ? Pack(y) : static_cast<uint16_t>(y);
        const uint16_t word = static_cast<uint16_t>(luma | (alpha[c] << 8));
        out[2 * c] = static_cast<uint8_t>(word);
        out[2 * c + 1] = static_cast<uint8_t>(word >> 8);
      }
    }
  }
};

// csYUY2, csUYVY and csUYVA: eight pairs a line interleaved with luma.
enum class PackedKind : uint8_t { kYUY2, kUYVY, kUYVA };

template <PackedKind K>
struct Packed422Layout : NoSecondPlane {
  static constexpr int32_t kMainStep = 32;
  static constexpr int32_t kSecondStep = K == PackedKind::kUYVA ? 16 : 0;

  // The csUYVA alpha plane lies behind the main plane, a byte a pixel. The
  // second field of a whole-frame call finds it from frameBase, one alpha
  // line (width bytes) further in: kept as both directions have always done.
  static uint8_t* SecondStart(const CodecInstance& inst, uint8_t* picture, uint8_t*, int64_t t,
                              uint32_t slice) {
    if constexpr (K != PackedKind::kUYVA) {
      return nullptr;
    } else {
      const int64_t half = static_cast<int64_t>(inst.height / 2) * t;
      const int64_t start = half + 16 * (t / 2) * slice;
      if (inst.frameBase == nullptr || inst.frameBase == picture) return picture + start;
      return const_cast<uint8_t*>(inst.frameBase) + start + inst.width;
    }
  }
  static int64_t SecondStride(int64_t t) { return K == PackedKind::kUYVA ? t / 16 / 2 * 16 : 0; }
  static int64_t SecondRowMove(int64_t t) { return K == PackedKind::kUYVA ? 64 * (t / 2) : 0; }

  template <class F, class A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    for (int32_t r = 0; r < lines; ++r) {
      uint8_t luma[16], pairs[16];
      LumaBytes(k, s, r, luma);
      F::HalfPairs(k, s, r, pairs);
      uint8_t* out = p.main + r * p.mainStride;
      if constexpr (K == PackedKind::kYUY2) {
        k.interleave(luma, pairs, out);
      } else {
        k.interleave(pairs, luma, out);
      }
      if constexpr (K == PackedKind::kUYVA) A::Bytes(k, s, r, p.second + r * p.secondStride);
    }
  }
};

// csAYUV: A Y U V a pixel, the raw pair at full rate.
struct AyuvLayout : NoSecondPlane {
  static constexpr int32_t kMainStep = 64;

  template <class F, class A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    for (int32_t r = 0; r < lines; ++r) {
      uint8_t luma[16], alpha[16], pairs[32];
      LumaBytes(k, s, r, luma);
      A::Bytes(k, s, r, alpha);
      F::FullPairs(k, s, r, pairs);
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
template <int32_t kPixelBytes>
struct RgbLayout : NoSecondPlane {
  static constexpr int32_t kMainStep = 16 * kPixelBytes;

  template <class F, class A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Planes& p, int32_t lines) {
    for (int32_t r = 0; r < lines; ++r) {
      uint8_t luma[16], u[16], v[16], alpha[16];
      LumaBytes(k, s, r, luma);
      F::RgbChroma(s, r, u, v);
      if constexpr (kPixelBytes == 4) A::Bytes(k, s, r, alpha);
      uint8_t* out = p.main + r * p.mainStride;
      for (int c = 0; c < 16; ++c) {
        for (int lane = 0; lane < 3; ++lane) {
          const int16_t sum = static_cast<int16_t>(LutLuma[luma[c]].lane[lane] +
                                                   LutCb[u[c]].lane[lane] + LutCr[v[c]].lane[lane]);
          out[kPixelBytes * c + lane] = Pack(static_cast<int16_t>(sum >> 5));
        }
        if constexpr (kPixelBytes == 4) out[4 * c + 3] = alpha[c];
      }
    }
  }
};

}  // namespace vantaro
