// Where a loader puts unpacked samples in MacroblockScratch, per chroma
// family and alpha coding, and how a partial macroblock is completed.
#pragma once

#include <cstdint>
#include <cstring>

#include "codec/macroblock_scratch.h"
#include "encoder/encoder_kernels.h"
#include "encoder/macroblock_encoder.h"

namespace vantaro::encoder::place {

// Row `row` (0..15) of the strip of two blocks that starts at `block`.
inline int16_t* StripRow(MacroblockScratch& s, int block, int row) {
  return &s.blocks[block + (row >> 3)][(row & 7) * 8];
}

// The two halves of a 16-sample row, left strip and right strip.
inline void PutWideRow(MacroblockScratch& s, int left, int right, int row, const int16_t* v) {
  std::memcpy(StripRow(s, left, row), v, 8 * sizeof(int16_t));
  std::memcpy(StripRow(s, right, row), v + 8, 8 * sizeof(int16_t));
}

inline void PutLuma(MacroblockScratch& s, int row, const int16_t* y) {
  PutWideRow(s, kBlockYLeftTop, kBlockYRightTop, row, y);
}

template <AlphaCoding A>
inline void PutAlpha(MacroblockScratch& s, int row, const uint8_t* a) {
  if constexpr (A == AlphaCoding::kRunValue) {
    std::memcpy(s.Alpha() + 16 * row, a, 16);
  } else if constexpr (A == AlphaCoding::kDct) {
    int16_t wide[16];
    for (int c = 0; c < 16; ++c) wide[c] = a[c];
    PutWideRow(s, kBlockAlpha, kBlockAlpha + 2, row, wide);
  }
}

// Sources without alpha feeding an alpha encoder: opaque.
template <AlphaCoding A>
inline void PutOpaqueAlpha(MacroblockScratch& s, int row) {
  static constexpr uint8_t kOpaque[16] = {255, 255, 255, 255, 255, 255, 255, 255,
                                          255, 255, 255, 255, 255, 255, 255, 255};
  PutAlpha<A>(s, row, kOpaque);
}

// A chroma row of the family from half-width (8 samples a line) or
// full-width (16) source chroma. 4:2:0 and 4:2:2 keep 8 samples, the even
// columns of a full-width source; 4:4:4 keeps 16, each half-width sample
// twice. `row` is 0..7 in 4:2:0, 0..15 otherwise.
template <Family F, bool kFullWidth>
inline void PutChroma(MacroblockScratch& s, int row, const int16_t* u, const int16_t* v) {
  if constexpr (F == Family::k444) {
    int16_t wu[16], wv[16];
    for (int c = 0; c < 16; ++c) {
      const int from = kFullWidth ? c : c >> 1;
      wu[c] = u[from];
      wv[c] = v[from];
    }
    PutWideRow(s, kBlockU0, kBlockU1, row, wu);
    PutWideRow(s, kBlockV0, kBlockV1, row, wv);
  } else {
    int16_t* du = StripRow(s, kBlockU0, row);
    int16_t* dv = StripRow(s, kBlockV0, row);
    for (int c = 0; c < 8; ++c) {
      const int from = kFullWidth ? 2 * c : c;
      du[c] = u[from];
      dv[c] = v[from];
    }
  }
}

inline void RepeatStripRow(MacroblockScratch& s, int block, int from, int to) {
  std::memcpy(StripRow(s, block, to), StripRow(s, block, from), 8 * sizeof(int16_t));
}

// Completes a macroblock of which rows 0..lines-1 were loaded (1 <= lines <=
// 15): every later row copies the last loaded one; no grey or zero fill.
template <Family F, AlphaCoding A>
void FillPartial(MacroblockScratch& s, int lines) {
  const int last = lines - 1;
  for (int row = lines; row < 16; ++row) {
    RepeatStripRow(s, kBlockYLeftTop, last, row);
    RepeatStripRow(s, kBlockYRightTop, last, row);
    if constexpr (F != Family::k420) {
      RepeatStripRow(s, kBlockU0, last, row);
      RepeatStripRow(s, kBlockV0, last, row);
    }
    if constexpr (F == Family::k444) {
      RepeatStripRow(s, kBlockU1, last, row);
      RepeatStripRow(s, kBlockV1, last, row);
    }
    if constexpr (A == AlphaCoding::kRunValue) {
      std::memcpy(s.Alpha() + 16 * row, s.Alpha() + 16 * last, 16);
    } else if constexpr (A == AlphaCoding::kDct) {
      RepeatStripRow(s, kBlockAlpha, last, row);
      RepeatStripRow(s, kBlockAlpha + 2, last, row);
    }
  }
  if constexpr (F == Family::k420) {
    const int lastChroma = last / 2;
    for (int row = lastChroma + 1; row < 8; ++row) {
      RepeatStripRow(s, kBlockU0, lastChroma, row);
      RepeatStripRow(s, kBlockV0, lastChroma, row);
    }
  }
}

// A partial row with no field line in it (one frame line left below the
// whole rows): nothing of the source is read, the macroblock is flat
// mid-grey and opaque, which also costs the fewest bits.
template <Family F, AlphaCoding A>
void FillFlat(MacroblockScratch& s) {
  LineSamples flat;
  for (int c = 0; c < 16; ++c) {
    flat.y[c] = flat.u[c] = flat.v[c] = 128;
    flat.a[c] = 255;
  }
  for (int row = 0; row < 16; ++row) {
    PutLuma(s, row, flat.y);
    if (F != Family::k420 || row < 8) PutChroma<F, true>(s, row, flat.u, flat.v);
    PutAlpha<A>(s, row, flat.a);
  }
}

}  // namespace vantaro::encoder::place
