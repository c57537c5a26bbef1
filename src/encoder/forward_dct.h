// The integer forward transform. The scalar form here and the SSE2 form
// (forward_dct_sse2.cpp, fused there with the quantiser) do the same
// arithmetic lane for lane.
#pragma once

#include <cstdint>

#include "codec/kernels.h"
#include "codec/transform_basis.h"
#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {

// Column pass then row pass, in place on 64 raster-order samples. Exact
// integer arithmetic: every saturating step, shift and rounding term below
// is part of the stream, not an approximation to be improved.
void ForwardDctScalar(int16_t* block);

#if defined(VANTARO_KERNELS_SSE2)
// ForwardKernels::forwardBlocks.
void ForwardBlocksSse2(int16_t* blocks, int32_t count, const float* reciprocals, uint64_t* nonZero);
#endif

namespace dct {

using transform::kCos4;
using transform::kRowSet;
using transform::kTan1;
using transform::kTan2;
using transform::kTan3;

// Where each lane of the row matrices M0..M3 takes its basis entry (signed
// index, see transform::Basis): the sums s0 s1 d0 d1 s2 s3 d2 d3 of a row
// against the cosines that make its outputs 0..3 (M0, M1) and 4..7 (M2, M3).
constexpr int kRowMatrixIndex[4][8] = {{1, 1, 2, 4, -7, -3, -2, -6},
                                       {1, 1, 6, 8, 3, 7, 4, -8},
                                       {1, -1, 6, -2, 3, -7, 4, -2},
                                       {-1, 1, 8, 4, 7, -3, 8, -6}};

struct RowMatrices {
  int16_t m[4][4][8];
};
constexpr RowMatrices MakeRowMatrices() {
  RowMatrices r{};
  for (int set = 0; set < 4; ++set) {
    for (int k = 0; k < 4; ++k) {
      for (int lane = 0; lane < 8; ++lane) r.m[set][k][lane] = transform::Basis(set, kRowMatrixIndex[k][lane]);
    }
  }
  return r;
}
// Row matrices M0..M3 by row set: rows 0/4, 1/7, 2/6, 3/5.
alignas(16) inline constexpr RowMatrices kRowMatrices = MakeRowMatrices();
inline constexpr const int16_t (&kRowMatrix)[4][4][8] = kRowMatrices.m;
// Rounding terms of the row pass by row: deliberately uneven, kept as streams have them.
alignas(16) extern const int16_t kRowRounding[8][8];

}  // namespace dct
}  // namespace vantaro::encoder
