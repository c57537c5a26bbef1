// The inverse transform of one block, in place: coefficient levels in,
// unclamped samples out. Every value is defined to the bit, including the
// 16-bit wrap of dequantisation and the saturation of both passes.
#pragma once

#include <cstdint>

#include "codec/kernels.h"

namespace vantaro::decoder {

// Row tables: for each pair of rows, four input-pair lines (x0,x2), (x4,x6),
// (x1,x3), (x5,x7), each four lanes of (u, w) coefficients.
struct RowTableSet {
  int16_t pairs[4][4][2];
};
extern const RowTableSet kRowTable04;
extern const RowTableSet kRowTable17;
extern const RowTableSet kRowTable26;
extern const RowTableSet kRowTable35;
// Per row: the set and the rounding constant. The constants differ by row and
// are not a formula; row 0 carries 65536 and row 4 none, on purpose.
extern const RowTableSet* const kRowSets[8];
extern const int32_t kRowRounding[8];

constexpr int16_t kColumnTan1 = 13036;   // tan(pi/16) in 16 fractional bits
constexpr int16_t kColumnTan2 = 27146;   // tan(pi/8)
constexpr int16_t kColumnTan3 = -21746;  // tan(3pi/16) - 1, as 43790 in 16 bits
constexpr int16_t kColumnCos4 = 23170;   // cos(pi/4)
constexpr int16_t kDcOnlyBias = 1032;    // level shift and rounding of the shortcut

// The transform's kernels: scalar first, vector over it where available.
struct BlockKernels {
  // Sets `count` consecutive blocks of 64 values to 0.
  void (*clearBlocks)(int16_t* blocks, int32_t count);
  // `block` 16-byte aligned; `multipliers` the instance's 64 multipliers.
  void (*inverseTransform)(int16_t* block, const uint16_t* multipliers);
};

void ClearBlocksScalar(int16_t* blocks, int32_t count);
void InverseTransformBlockScalar(int16_t* block, const uint16_t* multipliers);
extern const BlockKernels kBlockKernelsScalar;
// Null on builds without SSE2.
const BlockKernels* BlockKernelsSse2();

}  // namespace vantaro::decoder
