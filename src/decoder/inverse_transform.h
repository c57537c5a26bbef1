// The inverse transform of one block, in place: coefficient levels in,
// unclamped samples out. Every value is defined to the bit, including the
// 16-bit wrap of dequantisation and the saturation of both passes.
#pragma once

#include <cstdint>

#include "codec/kernels.h"
#include "codec/transform_basis.h"

namespace vantaro::decoder {

// Row tables: for each pair of rows, four input-pair lines (x0,x2), (x4,x6),
// (x1,x3), (x5,x7), each four lanes of (u, w) coefficients.
struct RowTableSet {
  int16_t pairs[4][4][2];
};
// Where each (u, w) takes its basis entry (signed index, see
// transform::Basis); the same for every set.
constexpr int kRowTableIndex[4][4][2] = {{{1, 3}, {1, 7}, {1, -7}, {1, -3}},
                                         {{1, 7}, {-1, -3}, {-1, 3}, {1, -7}},
                                         {{2, 4}, {4, -8}, {6, -2}, {8, -6}},
                                         {{6, 8}, {-2, -6}, {8, 4}, {4, -2}}};
constexpr RowTableSet MakeRowTableSet(int set) {
  RowTableSet t{};
  for (int line = 0; line < 4; ++line) {
    for (int lane = 0; lane < 4; ++lane) {
      for (int i = 0; i < 2; ++i) t.pairs[line][lane][i] = transform::Basis(set, kRowTableIndex[line][lane][i]);
    }
  }
  return t;
}
// By basis set: rows 0/4, 1/7, 2/6, 3/5.
alignas(16) inline constexpr RowTableSet kRowTables[4] = {MakeRowTableSet(0), MakeRowTableSet(1),
                                                          MakeRowTableSet(2), MakeRowTableSet(3)};
// The rounding constant of each row. The constants differ by row and are not
// a formula; row 0 carries 65536 and row 4 none, on purpose.
extern const int32_t kRowRounding[8];
constexpr int16_t kDcOnlyBias = 1032;    // level shift and rounding of the shortcut

// The transform's kernels: scalar first, vector over it where available.
struct BlockKernels {
  // Sets `count` consecutive blocks of 64 values to 0.
  void (*clearBlocks)(int16_t* blocks, int32_t count);
  // `block` 16-byte aligned; `multipliers` the instance's 64 multipliers.
  void (*inverseTransform)(int16_t* block, const uint16_t* multipliers);
  // Both blocks, as two calls of inverseTransform would leave them; a wide
  // level transforms them side by side.
  void (*inverseTransformPair)(int16_t* a, int16_t* b, const uint16_t* multipliers);
};

void ClearBlocksScalar(int16_t* blocks, int32_t count);
void InverseTransformBlockScalar(int16_t* block, const uint16_t* multipliers);
extern const BlockKernels kBlockKernelsScalar;
// Null on builds without SSE2, or AVX2.
const BlockKernels* BlockKernelsSse2();
const BlockKernels* BlockKernelsAvx2();

}  // namespace vantaro::decoder
