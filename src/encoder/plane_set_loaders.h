// Loaders for the plane-set layouts: 8-bit Y, U, V planes at 4:2:0, 4:2:2 or
// 4:4:4 and, for the YUVA ones, a full-resolution alpha plane. Chroma of the
// stream's own family is taken as it stands; another family is converted
// inside the macroblock, so no filter reaches past its 16 columns:
//   4:4:4 -> 4:2:2: column pairs averaged, (a + b + 1) >> 1 (a box filter);
//   4:2:2 -> 4:2:0: field line pairs averaged, (a + b + 1) >> 1;
//   4:4:4 -> 4:2:0: the 2x2 box, (a + b + c + d + 2) >> 2;
//   upward (4:2:0 -> 4:2:2 -> 4:4:4): each sample repeated.
// The right macroblock column and the bottom line may reach past the
// picture (the coded size rounds it up): lines are clamped into it, and a
// line that ends early is copied into a 16-byte edge line with its last
// sample repeated. Only the edge column takes that copy.
#pragma once

#include <algorithm>
#include <cstdint>

#include "codec/layout_traits.h"
#include "encoder/loader_place.h"

namespace vantaro::encoder {

template <uint32_t Id>
struct PlaneSetLoader : LayoutTraits<Id> {
  using Traits = LayoutTraits<Id>;
  static_assert(Traits::kPlaneSet);
  using Traits::kChromaSamples;
  using Traits::kChromaShiftX;
  using Traits::kHalfHeightChroma;
  using Traits::kHasAlpha;

  using Field = PlaneField<const uint8_t>;
  // A macroblock's place: its field, field macroblock row and column.
  struct Cursor {
    const Field* field;
    int32_t row;
    int32_t column;
  };

  // `picture` is the PlaneField the door built for this field.
  static Cursor RowStart(const CodecInstance&, const uint8_t* picture, const uint8_t*, int32_t,
                         uint32_t, int32_t row) {
    return {reinterpret_cast<const Field*>(picture), row, 0};
  }
  static void Next(Cursor& c) { ++c.column; }

  // `count` samples of line y of `plane` from column x, or the edge line.
  static const uint8_t* Samples(const Field& f, int plane, int32_t y, int32_t x, int32_t count,
                                int32_t planeWidth, uint8_t* edge) {
    const uint8_t* line = f.Line(plane, y);
    if (x + count <= planeWidth) return line + x;
    for (int32_t i = 0; i < count; ++i) edge[i] = line[std::min(x + i, planeWidth - 1)];
    return edge;
  }

  // The layout's own chroma for field line L: kChromaSamples of U and V.
  static void SourceChroma(const Field& f, int32_t L, int32_t x, int16_t* u, int16_t* v) {
    const int32_t y = kHalfHeightChroma ? f.ChromaLine420(L >> 1) : f.FrameLine(L);
    uint8_t edge[16];
    const uint8_t* su = Samples(f, 1, y, x, kChromaSamples, f.chromaWidth, edge);
    for (int i = 0; i < kChromaSamples; ++i) u[i] = su[i];
    const uint8_t* sv = Samples(f, 2, y, x, kChromaSamples, f.chromaWidth, edge);
    for (int i = 0; i < kChromaSamples; ++i) v[i] = sv[i];
  }

  // Eight samples from sixteen: the column-pair box.
  static void HalveColumns(int16_t* s) {
    for (int i = 0; i < 8; ++i) s[i] = static_cast<int16_t>((s[2 * i] + s[2 * i + 1] + 1) >> 1);
  }

  // Chroma row i of a 4:2:2 or 4:4:4 macroblock from field line L.
  template <Family F>
  static void PutLineChroma(MacroblockScratch& s, const Field& f, int32_t L, int32_t x, int i) {
    int16_t u[16], v[16];
    SourceChroma(f, L, x, u, v);
    if constexpr (F == Family::k422 && kChromaShiftX == 0) {
      HalveColumns(u);
      HalveColumns(v);
    }
    place::PutChroma<F, F == Family::k444 && kChromaShiftX == 0>(s, i, u, v);
  }

  // 4:2:0 chroma row m from field lines L and L2 (L2 == L at a partial
  // row's last line): as it stands from 4:2:0, averaged from the others.
  static void PutRowChroma420(MacroblockScratch& s, const Field& f, int32_t L, int32_t L2,
                              int32_t x, int m) {
    int16_t u[16], v[16];
    SourceChroma(f, L, x, u, v);
    if constexpr (!kHalfHeightChroma) {
      int16_t u2[16], v2[16];
      SourceChroma(f, L2, x, u2, v2);
      if constexpr (kChromaShiftX == 0) {
        for (int i = 0; i < 8; ++i) {
          u[i] = static_cast<int16_t>((u[2 * i] + u[2 * i + 1] + u2[2 * i] + u2[2 * i + 1] + 2) >> 2);
          v[i] = static_cast<int16_t>((v[2 * i] + v[2 * i + 1] + v2[2 * i] + v2[2 * i + 1] + 2) >> 2);
        }
      } else {
        for (int i = 0; i < 8; ++i) {
          u[i] = static_cast<int16_t>((u[i] + u2[i] + 1) >> 1);
          v[i] = static_cast<int16_t>((v[i] + v2[i] + 1) >> 1);
        }
      }
    }
    place::PutChroma<Family::k420, false>(s, m, u, v);
  }

  // Whether the stream's family is the layout's own: chroma taken as it stands.
  template <Family F>
  static constexpr bool kOwnChroma = (F == Family::k444 && kChromaShiftX == 0) ||
                                     (F == Family::k422 && kChromaShiftX == 1 && !kHalfHeightChroma) ||
                                     (F == Family::k420 && kChromaShiftX == 1 && kHalfHeightChroma);

  // Rows 0..rows-1 of a macroblock of the layout's own family lying wholly
  // inside the picture: every plane's lines straight into the strips, with
  // nothing to clamp. False, with nothing loaded, anywhere else.
  template <Family F, AlphaCoding A>
  static bool LoadInside(const LoaderKernels& k, MacroblockScratch& s, const Field& f, int32_t row,
                         int32_t x, int rows) {
    const int32_t xc = x >> kChromaShiftX;
    const int32_t y = 2 * 16 * row + f.field;  // frame line of field line 16 * row
    const int chromaRows = F == Family::k420 ? (rows + 1) / 2 : rows;
    const int32_t yc = F == Family::k420 ? 2 * 8 * row + f.field : y;
    if (x + 16 > f.width || xc + kChromaSamples > f.chromaWidth || y + 2 * (rows - 1) >= f.height ||
        yc + 2 * (chromaRows - 1) >= f.chromaHeight) {
      return false;
    }
    k.planeRows16(f.Line(0, y) + x, 2 * f.strides[0], s.blocks[kBlockYLeftTop], s.blocks[kBlockYRightTop], rows);
    const uint8_t* u = f.Line(1, yc) + xc;
    const uint8_t* v = f.Line(2, yc) + xc;
    if constexpr (F == Family::k444) {
      k.planeRows16(u, 2 * f.strides[1], s.blocks[kBlockU0], s.blocks[kBlockU1], rows);
      k.planeRows16(v, 2 * f.strides[2], s.blocks[kBlockV0], s.blocks[kBlockV1], rows);
    } else {
      k.planeRows8(u, 2 * f.strides[1], s.blocks[kBlockU0], chromaRows);
      k.planeRows8(v, 2 * f.strides[2], s.blocks[kBlockV0], chromaRows);
    }
    for (int i = 0; i < rows && A != AlphaCoding::kNone; ++i) {
      if constexpr (kHasAlpha) {
        place::PutAlpha<A>(s, i, f.Line(3, y + 2 * i) + x);
      } else {
        place::PutOpaqueAlpha<A>(s, i);
      }
    }
    return true;
  }

  // Rows 0..rows-1 of the macroblock at `c`.
  template <Family F, AlphaCoding A>
  static void LoadRows(const LoaderKernels& k, MacroblockScratch& s, const Cursor& c, int32_t,
                       int rows) {
    const Field& f = *c.field;
    const int32_t x = 16 * c.column;
    if constexpr (kOwnChroma<F>) {
      if (LoadInside<F, A>(k, s, f, c.row, x, rows)) return;
    }
    const int32_t xc = x >> kChromaShiftX;
    uint8_t edge[16];
    for (int i = 0; i < rows; ++i) {
      const int32_t L = 16 * c.row + i;
      const int32_t y = f.FrameLine(L);
      const uint8_t* luma = Samples(f, 0, y, x, 16, f.width, edge);
      int16_t wide[16];
      for (int j = 0; j < 16; ++j) wide[j] = luma[j];
      place::PutLuma(s, i, wide);
      if constexpr (kHasAlpha) {
        place::PutAlpha<A>(s, i, Samples(f, 3, y, x, 16, f.width, edge));
      } else {
        place::PutOpaqueAlpha<A>(s, i);
      }
      if constexpr (F == Family::k420) {
        if ((i & 1) == 0) PutRowChroma420(s, f, L, i + 1 < rows ? L + 1 : L, xc, i >> 1);
      } else {
        PutLineChroma<F>(s, f, L, xc, i);
      }
    }
  }

  template <Family F, AlphaCoding A>
  static void LoadPartial(const LoaderKernels& k, MacroblockScratch& s, const Cursor& c,
                          int32_t pu, int lines) {
    LoadRows<F, A>(k, s, c, pu, lines);
    place::FillPartial<F, A>(s, lines);
  }
};

}  // namespace vantaro::encoder
