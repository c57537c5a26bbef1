// Stores for the plane-set layouts: a decoded macroblock into 8-bit Y, U, V
// planes (and alpha) of the caller's picture, every sample clamped to
// 0..255. The stream's chroma family is delivered as it stands; another
// family asked for is converted inside the macroblock:
//   4:4:4 -> 4:2:2: column pairs averaged, (a + b + 1) >> 1;
//   4:2:2 -> 4:2:0: field line pairs averaged, (a + b + 1) >> 1;
//   4:4:4 -> 4:2:0: the 2x2 box, (a + b + c + d + 2) >> 2;
//   upward (4:2:0 -> 4:2:2 -> 4:4:4): each sample repeated.
// Alpha is the stream's, or 255 where it has none. Nothing is written
// outside the picture: the coded size's extra columns and line are cropped.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "codec/layout_traits.h"
#include "decoder/output_stores.h"

namespace vantaro::decoder {

// The stream's own chroma of macroblock line r as clamped bytes: 8 samples
// of U and V for 4:2:0 (line r of the field's chroma rows, 0..7) and 4:2:2,
// 16 for 4:4:4.
template <Family F>
inline void StreamChroma(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* u,
                         uint8_t* v) {
  if constexpr (F == Family::k444) {
    k.packLine(StripLine(s, 4, r), StripLine(s, 8, r), u);
    k.packLine(StripLine(s, 6, r), StripLine(s, 10, r), v);
  } else {
    const int16_t* su = F == Family::k420 ? s.blocks[4] + 8 * r : StripLine(s, 4, r);
    const int16_t* sv = F == Family::k420 ? s.blocks[6] + 8 * r : StripLine(s, 6, r);
    for (int c = 0; c < 8; ++c) {
      u[c] = Pack(su[c]);
      v[c] = Pack(sv[c]);
    }
  }
}

template <uint32_t Id>
struct PlaneSetStore : LayoutTraits<Id> {
  using Traits = LayoutTraits<Id>;
  static_assert(Traits::kPlaneSet);
  using Traits::kChromaSamples;
  using Traits::kChromaShiftX;
  using Traits::kHalfHeightChroma;
  using Traits::kHasAlpha;

  using Field = PlaneField<uint8_t>;
  struct Cursor {
    const Field* field;
    int32_t row;  // field macroblock row
    int32_t column;
  };

  // `picture` is the PlaneField the door built for this field.
  static Cursor RowStart(const CodecInstance&, uint8_t* picture, uint8_t*, int64_t, uint32_t slice,
                         int32_t n) {
    return {reinterpret_cast<const Field*>(picture), static_cast<int32_t>(slice) + 4 * n, 0};
  }
  static void Next(Cursor& c) { ++c.column; }

  // Line y of `plane` from column x: `count` bytes, cropped to the plane.
  static void Put(const Field& f, int plane, int32_t y, int32_t x, const uint8_t* bytes,
                  int32_t count, int32_t planeWidth) {
    std::memcpy(f.Line(plane, y) + x, bytes, static_cast<size_t>(std::min(count, planeWidth - x)));
  }

  // The stream's chroma of line r in the layout's width (8 or 16 samples).
  template <Family F>
  static void LineChroma(const StoreKernels& k, const MacroblockScratch& s, int32_t r, uint8_t* u,
                         uint8_t* v) {
    uint8_t su[16], sv[16];
    StreamChroma<F>(k, s, F == Family::k420 ? r >> 1 : r, su, sv);
    constexpr int kStreamSamples = F == Family::k444 ? 16 : 8;
    for (int c = 0; c < kChromaSamples; ++c) {
      if constexpr (kStreamSamples == kChromaSamples) {
        u[c] = su[c];
        v[c] = sv[c];
      } else if constexpr (kStreamSamples > kChromaSamples) {
        u[c] = static_cast<uint8_t>((su[2 * c] + su[2 * c + 1] + 1) >> 1);
        v[c] = static_cast<uint8_t>((sv[2 * c] + sv[2 * c + 1] + 1) >> 1);
      } else {
        u[c] = su[c >> 1];
        v[c] = sv[c >> 1];
      }
    }
  }

  // 4:2:0 chroma row m from macroblock lines 2m and 2m + 1 (2m alone where
  // the partial row ends on it).
  template <Family F>
  static void RowChroma420(const StoreKernels& k, const MacroblockScratch& s, int32_t m,
                           int32_t lines, uint8_t* u, uint8_t* v) {
    if constexpr (F == Family::k420) {
      StreamChroma<F>(k, s, m, u, v);
    } else {
      uint8_t u0[16], v0[16], u1[16], v1[16];
      const int32_t partner = 2 * m + 1 < lines ? 2 * m + 1 : 2 * m;
      StreamChroma<F>(k, s, 2 * m, u0, v0);
      StreamChroma<F>(k, s, partner, u1, v1);
      for (int c = 0; c < 8; ++c) {
        if constexpr (F == Family::k444) {
          u[c] = static_cast<uint8_t>((u0[2 * c] + u0[2 * c + 1] + u1[2 * c] + u1[2 * c + 1] + 2) >> 2);
          v[c] = static_cast<uint8_t>((v0[2 * c] + v0[2 * c + 1] + v1[2 * c] + v1[2 * c + 1] + 2) >> 2);
        } else {
          u[c] = static_cast<uint8_t>((u0[c] + u1[c] + 1) >> 1);
          v[c] = static_cast<uint8_t>((v0[c] + v1[c] + 1) >> 1);
        }
      }
    }
  }

  // The layout's own family, and whether the stream's family `F` reaches it
  // with whole lines (same family, or 4:2:0 lines repeated for 4:2:2).
  static constexpr Family kFamily = kHalfHeightChroma ? Family::k420
                                    : kChromaSamples == 16 ? Family::k444
                                                           : Family::k422;
  template <Family F>
  static constexpr bool kWholeLines = F == kFamily || (F == Family::k420 && kFamily == Family::k422);

  // How many of `count` field lines from field line `first` lie inside a
  // plane `height` frame lines high.
  static int32_t LinesInside(const Field& f, int32_t first, int32_t count, int32_t height) {
    const int32_t inside = (height - f.field + 1) / 2 - first;
    return inside < 0 ? 0 : inside < count ? inside : count;
  }

  // A macroblock whose 16 columns all lie inside the picture, for a stream
  // family that needs no averaging: whole lines through the strip kernels.
  template <Family F, AlphaCoding A>
  static void StoreWhole(const StoreKernels& k, const MacroblockScratch& s, const Cursor& c,
                         int32_t lines) {
    const Field& f = *c.field;
    const int32_t x = 16 * c.column;
    const int32_t xc = x >> kChromaShiftX;
    const int32_t first = 16 * c.row;
    const int32_t n = LinesInside(f, first, lines, f.height);
    const auto at = [&f, first](int plane, int32_t column) {
      return f.Line(plane, 2 * first + f.field) + column;
    };
    k.packStrip(s.blocks[0], s.blocks[2], at(0, x), 2 * f.strides[0], n);
    if constexpr (kHasAlpha && A == AlphaCoding::kDct) {
      k.packStrip(s.blocks[12], s.blocks[14], at(3, x), 2 * f.strides[3], n);
    } else if constexpr (kHasAlpha) {
      for (int32_t r = 0; r < n; ++r) AlphaOf<A>::Bytes(k, s, r, at(3, x) + 2 * r * f.strides[3]);
    }
    if constexpr (kFamily == Family::k444) {
      k.packStrip(s.blocks[4], s.blocks[8], at(1, xc), 2 * f.strides[1], n);
      k.packStrip(s.blocks[6], s.blocks[10], at(2, xc), 2 * f.strides[2], n);
    } else if constexpr (kFamily == Family::k422) {
      k.packChromaStrip(s.blocks[4], s.blocks[6], F == Family::k420 ? 1 : 0, at(1, xc), 2 * f.strides[1],
                        at(2, xc), 2 * f.strides[2], n);
    } else {
      const int32_t m = LinesInside(f, 8 * c.row, (lines + 1) / 2, f.chromaHeight);
      uint8_t* u = f.Line(1, 2 * 8 * c.row + f.field) + xc;
      uint8_t* v = f.Line(2, 2 * 8 * c.row + f.field) + xc;
      k.packChromaStrip(s.blocks[4], s.blocks[6], 0, u, 2 * f.strides[1], v, 2 * f.strides[2], m);
    }
  }

  template <Family F, AlphaCoding A>
  static void Store(const StoreKernels& k, const MacroblockScratch& s, const Cursor& c,
                    int32_t lines) {
    if constexpr (kWholeLines<F>) {
      if (16 * c.column + 16 <= c.field->width) return StoreWhole<F, A>(k, s, c, lines);
    }
    StoreLines<F, A>(k, s, c, lines);
  }

  // Any macroblock, line by line, cropped to the picture; the reference the
  // whole-line path must match.
  template <Family F, AlphaCoding A>
  static void StoreLines(const StoreKernels& k, const MacroblockScratch& s, const Cursor& c,
                         int32_t lines) {
    const Field& f = *c.field;
    const int32_t x = 16 * c.column;
    const int32_t xc = x >> kChromaShiftX;
    for (int32_t r = 0; r < lines; ++r) {
      const int32_t y = 2 * (16 * c.row + r) + f.field;
      if (y >= f.height) break;
      uint8_t bytes[16];
      LumaBytes(k, s, r, bytes);
      Put(f, 0, y, x, bytes, 16, f.width);
      if constexpr (kHasAlpha) {
        AlphaOf<A>::Bytes(k, s, r, bytes);
        Put(f, 3, y, x, bytes, 16, f.width);
      }
      if constexpr (!kHalfHeightChroma) {
        uint8_t u[16], v[16];
        LineChroma<F>(k, s, r, u, v);
        Put(f, 1, y, xc, u, kChromaSamples, f.chromaWidth);
        Put(f, 2, y, xc, v, kChromaSamples, f.chromaWidth);
      }
    }
    if constexpr (kHalfHeightChroma) {
      for (int32_t m = 0; 2 * m < lines; ++m) {
        const int32_t y = 2 * (8 * c.row + m) + f.field;
        if (y >= f.chromaHeight) break;
        uint8_t u[16], v[16];
        RowChroma420<F>(k, s, m, lines, u, v);
        Put(f, 1, y, xc, u, 8, f.chromaWidth);
        Put(f, 2, y, xc, v, 8, f.chromaWidth);
      }
    }
  }
};

}  // namespace vantaro::decoder
