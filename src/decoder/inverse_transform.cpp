#include "decoder/inverse_transform.h"

#include <cstring>

#include "codec/kernels.h"
#include "decoder/block_decode_tables.h"

namespace vantaro::decoder {

const int32_t kRowRounding[8] = {65536, 3597, 2260, 1203, 0, 120, 512, 512};

namespace {

using transform::AddS;
using transform::MulHi;
using transform::Sat16;
using transform::SubS;

// (u, w) against the lane's pair of coefficients, in 32-bit wrap-around.
uint32_t Pair(const int16_t (&p)[2], int16_t u, int16_t w) { return transform::PairSum(u, p[0], w, p[1]); }

void RowPass(int16_t* x, const RowTableSet& t, int32_t rounding) {
  int16_t r[8];
  for (int i = 0; i < 4; ++i) {
    const uint32_t a = Pair(t.pairs[0][i], x[0], x[2]) + Pair(t.pairs[1][i], x[4], x[6]) +
                       static_cast<uint32_t>(rounding);
    const uint32_t b = Pair(t.pairs[2][i], x[1], x[3]) + Pair(t.pairs[3][i], x[5], x[7]);
    r[i] = Sat16(static_cast<int32_t>(a + b) >> 11);
    r[7 - i] = Sat16(static_cast<int32_t>(a - b) >> 11);
  }
  std::memcpy(x, r, sizeof r);
}

// One column in saturating 16-bit steps, in the order that fixes where
// saturation bites.
void ColumnPass(int16_t* block, int c) {
  int16_t R[8];
  for (int y = 0; y < 8; ++y) R[y] = block[y * 8 + c];
  const int16_t s04 = AddS(R[0], R[4]);
  const int16_t d04 = SubS(R[0], R[4]);
  const int16_t t = SubS(MulHi(transform::kTan2, R[2]), R[6]);
  const int16_t e1 = AddS(d04, t);
  const int16_t e2 = SubS(d04, t);
  const int16_t u = AddS(MulHi(transform::kTan2, R[6]), R[2]);
  const int16_t e0 = AddS(s04, u);
  const int16_t e3 = SubS(s04, u);
  const int16_t p = SubS(MulHi(transform::kTan1, R[1]), R[7]);
  const int16_t q = AddS(MulHi(transform::kTan1, R[7]), R[1]);
  const int16_t m = AddS(AddS(MulHi(transform::kTan3, R[5]), R[5]), R[3]);
  const int16_t n = SubS(AddS(MulHi(transform::kTan3, R[3]), R[3]), R[5]);
  const int16_t f = SubS(p, n);
  const int16_t g = AddS(p, n);
  const int16_t h = AddS(q, m);
  const int16_t k = SubS(q, m);
  int16_t oddA = MulHi(SubS(k, g), transform::kCos4);
  oddA = AddS(oddA, oddA);
  int16_t oddB = MulHi(AddS(k, g), transform::kCos4);
  oddB = AddS(oddB, oddB);
  const int16_t out[8] = {AddS(e0, h),    AddS(e1, oddB), AddS(e2, oddA), AddS(e3, f),
                          SubS(e3, f),    SubS(e2, oddA), SubS(e1, oddB), SubS(e0, h)};
  for (int y = 0; y < 8; ++y) block[y * 8 + c] = static_cast<int16_t>(out[y] >> 6);
}

}  // namespace

void ClearBlocksScalar(int16_t* blocks, int32_t count) {
  std::memset(blocks, 0, static_cast<size_t>(count) * 64 * sizeof(int16_t));
}

void InverseTransformBlockScalar(int16_t* block, const uint16_t* multipliers) {
  if (block[1] == kNoAcMark) {
    // No AC: one sample level above the full path's result, kept (0 gives 129).
    const int16_t s = static_cast<int16_t>(static_cast<int16_t>(block[0] + kDcOnlyBias) >> 3);
    for (int k = 0; k < 64; ++k) block[k] = s;
    return;
  }
  for (int k = 0; k < 64; ++k) {
    const int16_t p = static_cast<int16_t>(
        static_cast<uint32_t>(static_cast<uint16_t>(block[k])) * multipliers[k]);
    block[k] = static_cast<int16_t>(p >> 4);
  }
  block[0] = static_cast<int16_t>(block[0] + 1024);
  for (int r = 0; r < 8; ++r) RowPass(block + r * 8, kRowTables[transform::kRowSet[r]], kRowRounding[r]);
  for (int c = 0; c < 8; ++c) ColumnPass(block, c);
}

namespace {
void InverseTransformPairScalar(int16_t* a, int16_t* b, const uint16_t* multipliers) {
  InverseTransformBlockScalar(a, multipliers);
  InverseTransformBlockScalar(b, multipliers);
}
}  // namespace

const BlockKernels kBlockKernelsScalar = {ClearBlocksScalar, InverseTransformBlockScalar,
                                          InverseTransformPairScalar};

}  // namespace vantaro::decoder
