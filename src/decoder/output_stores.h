// The stores: a decoded macroblock's 16-bit samples into the caller's layout.
// One store per layout, over a chroma family (where its chroma comes from)
// and an alpha source. The clamps are uneven by design: luma is packed,
// chroma mostly travels as the raw pair (v << 8) | u, and the YA layouts
// leave luma unclamped unless alpha is DCT-coded.
#pragma once

#include <cstdint>
#include <cstring>

#include "codec/codec_instance.h"
#include "codec/global_tables.h"
#include "codec/macroblock_scratch.h"
#include "decoder/store_kernels.h"

namespace vantaro::decoder {

// Line `r` (0..15) of the strip of blocks n, n + 1 (8 wide, 16 high).
inline const int16_t* StripLine(const MacroblockScratch& s, int n, int32_t r) {
  return s.blocks[n + (r >> 3)] + 8 * (r & 7);
}

// The luma line r as 16 bytes.
inline void LumaBytes(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
  k.packLine(StripLine(s, 0, r), StripLine(s, 2, r), out);
}

// Doubles each of eight 2-byte pairs: 16 bytes into 32.
inline void RepeatPairs(const uint8_t* pairs, uint8_t* out) {
  for (int j = 0; j < 8; ++j) {
    out[4 * j] = out[4 * j + 2] = pairs[2 * j];
    out[4 * j + 1] = out[4 * j + 3] = pairs[2 * j + 1];
  }
}

// Where a chroma family's samples come from, ChromaOf<Family>. HalfPairs: the eight pairs serving output line r at half
// horizontal rate; FullPairs: sixteen at full rate; Nv12Pairs: chroma line k
// of a 4:2:0 plane; RgbChroma: packed U then packed V for each of 16 pixels.

// Eight U and eight V samples packed, each byte twice: 16 of U, 16 of V.
inline void RepeatedChroma(const StoreKernels& k, const int16_t* u, const int16_t* v, uint8_t* uv) {
  uint8_t packed[16];
  k.packLine(u, v, packed);
  k.interleave(packed, packed, uv);
}

// Full rate from half rate: each pair twice.
template <class F>
struct RepeatedFullPairs {
  static void FullPairs(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    uint8_t half[16];
    F::HalfPairs(k, s, r, half);
    RepeatPairs(half, out);
  }
};

// Chroma line k of a 4:2:0 plane from a stream with a chroma line per luma
// line: the bytes of lines 2k and 2k + 1 averaged, the one place lines mix.
template <class F>
struct AveragedNv12Pairs {
  static void Nv12Pairs(const StoreKernels& k, const MacroblockScratch& s, int32_t line, uint8_t* out) {
    uint8_t a[16], b[16];
    F::HalfPairs(k, s, 2 * line, a);
    F::HalfPairs(k, s, 2 * line + 1, b);
    k.average(a, b, out);
  }
};

template <Family F>
struct ChromaOf;

template <>
struct ChromaOf<Family::k420> : RepeatedFullPairs<ChromaOf<Family::k420>> {
  static void HalfPairs(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    k.rawPairs(s.blocks[4] + 8 * (r >> 1), s.blocks[6] + 8 * (r >> 1), out);
  }
  static void Nv12Pairs(const StoreKernels& k, const MacroblockScratch& s, int32_t line, uint8_t* out) {
    k.rawPairs(s.blocks[4] + 8 * line, s.blocks[6] + 8 * line, out);
  }
  static void RgbChroma(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* uv) {
    RepeatedChroma(k, s.blocks[4] + 8 * (r >> 1), s.blocks[6] + 8 * (r >> 1), uv);
  }
};

// The raw pairs of two lines are averaged as bytes for a 4:2:0 plane.
template <>
struct ChromaOf<Family::k422> : RepeatedFullPairs<ChromaOf<Family::k422>>,
                                AveragedNv12Pairs<ChromaOf<Family::k422>> {
  static void HalfPairs(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    k.rawPairs(StripLine(s, 4, r), StripLine(s, 6, r), out);
  }
  static void RgbChroma(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* uv) {
    RepeatedChroma(k, StripLine(s, 4, r), StripLine(s, 6, r), uv);
  }
};

template <>
struct ChromaOf<Family::k444> : AveragedNv12Pairs<ChromaOf<Family::k444>> {
  // Even columns, packed; the odd columns are dropped, not averaged.
  static void HalfPairs(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    k.evenPairs(StripLine(s, 4, r), StripLine(s, 8, r), StripLine(s, 6, r), StripLine(s, 10, r), out);
  }
  static void FullPairs(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    k.rawPairs(StripLine(s, 4, r), StripLine(s, 6, r), out);
    k.rawPairs(StripLine(s, 8, r), StripLine(s, 10, r), out + 16);
  }
  static void RgbChroma(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* uv) {
    k.packLine(StripLine(s, 4, r), StripLine(s, 8, r), uv);
    k.packLine(StripLine(s, 6, r), StripLine(s, 10, r), uv + 16);
  }
};

// Alpha sources by coding, AlphaOf<AlphaCoding>: Bytes gives line r's 16 alpha bytes; kClampLumaInYa says
// whether the YA layouts pack luma (only beside DCT alpha).
template <AlphaCoding A>
struct AlphaOf;

template <>
struct AlphaOf<AlphaCoding::kNone> {
  static constexpr bool kClampLumaInYa = false;
  static void Bytes(const StoreKernels&, const MacroblockScratch&, int32_t, uint8_t* out) {
    std::memset(out, 255, 16);
  }
};
template <>
struct AlphaOf<AlphaCoding::kRunValue> {
  static constexpr bool kClampLumaInYa = false;
  static void Bytes(const StoreKernels&, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    std::memcpy(out, s.Alpha() + 16 * r, 16);
  }
};
template <>
struct AlphaOf<AlphaCoding::kDct> {
  static constexpr bool kClampLumaInYa = true;
  static void Bytes(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* out) {
    k.packLine(StripLine(s, 12, r), StripLine(s, 14, r), out);
  }
};

// The planes a walk writes. `second` is the chroma plane of the planar
// layouts and the alpha plane of csUYVA; strides are signed.
struct Planes {
  uint8_t* main;
  uint8_t* second;
  int64_t mainStride;
  int64_t secondStride;
};

}  // namespace vantaro::decoder
