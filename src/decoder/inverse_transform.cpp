#include "decoder/inverse_transform.h"

#include <cstring>

#include "codec/kernels.h"
#include "decoder/block_decode_tables.h"

namespace vantaro::decoder {

// The cosine basis scaled by 2^14 and a per-row-pair factor.
const RowTableSet kRowTable04 = {{
    {{16384, 21407}, {16384, 8867}, {16384, -8867}, {16384, -21407}},
    {{16384, 8867}, {-16384, -21407}, {-16384, 21407}, {16384, -8867}},
    {{22725, 19266}, {19266, -4520}, {12873, -22725}, {4520, -12873}},
    {{12873, 4520}, {-22725, -12873}, {4520, 19266}, {19266, -22725}},
}};
const RowTableSet kRowTable17 = {{
    {{22725, 29692}, {22725, 12299}, {22725, -12299}, {22725, -29692}},
    {{22725, 12299}, {-22725, -29692}, {-22725, 29692}, {22725, -12299}},
    {{31521, 26722}, {26722, -6270}, {17855, -31521}, {6270, -17855}},
    {{17855, 6270}, {-31521, -17855}, {6270, 26722}, {26722, -31521}},
}};
const RowTableSet kRowTable26 = {{
    {{21407, 27969}, {21407, 11585}, {21407, -11585}, {21407, -27969}},
    {{21407, 11585}, {-21407, -27969}, {-21407, 27969}, {21407, -11585}},
    {{29692, 25172}, {25172, -5906}, {16819, -29692}, {5906, -16819}},
    {{16819, 5906}, {-29692, -16819}, {5906, 25172}, {25172, -29692}},
}};
const RowTableSet kRowTable35 = {{
    {{19266, 25172}, {19266, 10426}, {19266, -10426}, {19266, -25172}},
    {{19266, 10426}, {-19266, -25172}, {-19266, 25172}, {19266, -10426}},
    {{26722, 22654}, {22654, -5315}, {15137, -26722}, {5315, -15137}},
    {{15137, 5315}, {-26722, -15137}, {5315, 22654}, {22654, -26722}},
}};
const RowTableSet* const kRowSets[8] = {&kRowTable04, &kRowTable17, &kRowTable26, &kRowTable35,
                                        &kRowTable04, &kRowTable35, &kRowTable26, &kRowTable17};
const int32_t kRowRounding[8] = {65536, 3597, 2260, 1203, 0, 120, 512, 512};

namespace {

int16_t Sat16(int32_t x) {
  return static_cast<int16_t>(x > 32767 ? 32767 : x < -32768 ? -32768 : x);
}
int16_t AddS(int16_t a, int16_t b) { return Sat16(int32_t{a} + b); }
int16_t SubS(int16_t a, int16_t b) { return Sat16(int32_t{a} - b); }
int16_t MulHi(int16_t a, int16_t b) { return static_cast<int16_t>((int32_t{a} * b) >> 16); }

// u * a + w * b in 32-bit wrap-around.
uint32_t Pair(const int16_t (&p)[2], int16_t a, int16_t b) {
  return static_cast<uint32_t>(int32_t{p[0]} * a) + static_cast<uint32_t>(int32_t{p[1]} * b);
}

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
  const int16_t t = SubS(MulHi(kColumnTan2, R[2]), R[6]);
  const int16_t e1 = AddS(d04, t);
  const int16_t e2 = SubS(d04, t);
  const int16_t u = AddS(MulHi(kColumnTan2, R[6]), R[2]);
  const int16_t e0 = AddS(s04, u);
  const int16_t e3 = SubS(s04, u);
  const int16_t p = SubS(MulHi(kColumnTan1, R[1]), R[7]);
  const int16_t q = AddS(MulHi(kColumnTan1, R[7]), R[1]);
  const int16_t m = AddS(AddS(MulHi(kColumnTan3, R[5]), R[5]), R[3]);
  const int16_t n = SubS(AddS(MulHi(kColumnTan3, R[3]), R[3]), R[5]);
  const int16_t f = SubS(p, n);
  const int16_t g = AddS(p, n);
  const int16_t h = AddS(q, m);
  const int16_t k = SubS(q, m);
  int16_t oddA = MulHi(SubS(k, g), kColumnCos4);
  oddA = AddS(oddA, oddA);
  int16_t oddB = MulHi(AddS(k, g), kColumnCos4);
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
  for (int r = 0; r < 8; ++r) RowPass(block + r * 8, *kRowSets[r], kRowRounding[r]);
  for (int c = 0; c < 8; ++c) ColumnPass(block, c);
}

const BlockKernels kBlockKernelsScalar = {ClearBlocksScalar, InverseTransformBlockScalar};

}  // namespace vantaro::decoder
