// The integer forward transform. The scalar form here and the SSE2 form
// (forward_dct_sse2.cpp) do the same arithmetic lane for lane.
#pragma once

#include <cstdint>

#include "codec/kernels.h"

#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {

// Column pass then row pass, in place on 64 raster-order samples. Exact
// integer arithmetic: every saturating step, shift and rounding term below
// is part of the stream, not an approximation to be improved.
void ForwardDctScalar(int16_t* block);

#if defined(VANTARO_KERNELS_SSE2)
void ForwardDctSse2(int16_t* block);
#endif

namespace dct {

constexpr int16_t kTan1 = 13036;   // tan(pi/16), 16 fractional bits
constexpr int16_t kTan2 = 27146;   // tan(2pi/16), 16 fractional bits
constexpr int16_t kTan3 = -21746;  // tan(3pi/16) - 1: the 16-bit pattern of 43790
constexpr int16_t kCos4 = 23170;   // cos(pi/4), 15 fractional bits: halves through mulhi

// Row matrices M0..M3 by row set: rows 0/4, 1/7, 2/6, 3/5.
alignas(16) extern const int16_t kRowMatrix[4][4][8];
// Rounding terms of the row pass by row: deliberately uneven, kept as streams have them.
alignas(16) extern const int16_t kRowRounding[8][8];
// The matrix set of each row.
constexpr int kRowSet[8] = {0, 1, 2, 3, 0, 3, 2, 1};

}  // namespace dct
}  // namespace vantaro::encoder
