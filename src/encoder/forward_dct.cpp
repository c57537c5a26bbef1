#include "encoder/forward_dct.h"

namespace vantaro::encoder {
namespace dct {

alignas(16) const int16_t kRowRounding[8][8] = {
    {6, 8, 8, 8, 6, 8, 8, 8}, {10, 8, 8, 8, 8, 8, 8, 8}, {8, 8, 8, 8, 8, 8, 8, 8},
    {8, 8, 8, 8, 8, 8, 8, 8}, {6, 8, 8, 8, 6, 8, 8, 8}, {8, 8, 8, 8, 8, 8, 8, 8},
    {8, 8, 8, 8, 8, 8, 8, 8}, {8, 8, 8, 8, 8, 8, 8, 8},
};

}  // namespace dct

namespace {

using transform::AddS;
using transform::MulHi;
using transform::Sat16;
using transform::SubS;

// Keeps the low 16 bits, as a vector shift does.
int16_t Shl(int16_t a, int n) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint16_t>(a) << n));
}
int16_t Or1(int16_t a) { return static_cast<int16_t>(a | 1); }

void ColumnPass(int16_t* b, int col) {
  using namespace dct;
  const int16_t x0 = b[col], x1 = b[8 + col], x2 = b[16 + col], x3 = b[24 + col];
  const int16_t x4 = b[32 + col], x5 = b[40 + col], x6 = b[48 + col], x7 = b[56 + col];
  const int16_t s07 = AddS(x0, x7), s16 = AddS(x1, x6), s25 = AddS(x2, x5), s34 = AddS(x3, x4);
  const int16_t d07 = Shl(SubS(x0, x7), 3), d34 = Shl(SubS(x3, x4), 3);
  const int16_t d16 = Shl(SubS(x1, x6), 4), d25 = Shl(SubS(x2, x5), 4);
  const int16_t e = SubS(s16, s25), f = SubS(s07, s34);
  // Twice one term plus the difference, so that saturation acts on these two steps.
  const int16_t bb = Shl(AddS(AddS(s25, s25), e), 3);
  const int16_t a = Shl(AddS(AddS(s34, s34), f), 3);
  const int16_t e3 = Shl(e, 3), f3 = Shl(f, 3);
  const int16_t y4 = SubS(a, bb);
  const int16_t y0 = AddS(AddS(bb, bb), y4);
  // The set lowest bit is a rounding correction the streams carry.
  const int16_t y2 = Or1(AddS(MulHi(e3, kTan2), f3));
  const int16_t y6 = Or1(SubS(MulHi(f3, kTan2), e3));
  const int16_t g = SubS(d16, d25);
  const int16_t h = AddS(AddS(d25, d25), g);
  const int16_t p = MulHi(g, kCos4);
  const int16_t q = Or1(MulHi(h, kCos4));
  const int16_t u = SubS(d34, p), v = SubS(d07, q);
  const int16_t pp = AddS(p, d34), qq = AddS(q, d07);
  const int16_t y1 = AddS(MulHi(pp, kTan1), qq);
  const int16_t y7 = SubS(MulHi(qq, kTan1), pp);
  const int16_t r = AddS(MulHi(u, kTan3), u);
  const int16_t t = AddS(MulHi(v, kTan3), v);
  const int16_t y3 = SubS(v, r);
  const int16_t y5 = AddS(u, t);
  b[col] = y0; b[8 + col] = y1; b[16 + col] = y2; b[24 + col] = y3;
  b[32 + col] = y4; b[40 + col] = y5; b[48 + col] = y6; b[56 + col] = y7;
}

// Lanes 2k and 2k + 1 of x against those of m.
uint32_t PairProduct(const int16_t* x, const int16_t* m, int k) {
  return transform::PairSum(x[2 * k], m[2 * k], x[2 * k + 1], m[2 * k + 1]);
}

void RowPass(int16_t* x, int row) {
  const int16_t(*m)[8] = dct::kRowMatrix[dct::kRowSet[row]];
  const int16_t* rounding = dct::kRowRounding[row];
  int16_t s[4], d[4];
  for (int i = 0; i < 4; ++i) {
    s[i] = AddS(x[i], x[7 - i]);
    d[i] = SubS(x[i], x[7 - i]);
  }
  const int16_t a[8] = {s[0], s[1], d[0], d[1], s[2], s[3], d[2], d[3]};
  const int16_t b[8] = {s[2], s[3], d[2], d[3], s[0], s[1], d[0], d[1]};
  int16_t o[8];
  for (int k = 0; k < 4; ++k) {
    const uint32_t lo = PairProduct(a, m[0], k) + PairProduct(b, m[1], k);
    const uint32_t hi = PairProduct(b, m[3], k) + PairProduct(a, m[2], k);
    o[k] = Sat16(static_cast<int32_t>(lo) >> 16);
    o[4 + k] = Sat16(static_cast<int32_t>(hi) >> 16);
  }
  for (int j = 0; j < 8; ++j) x[j] = static_cast<int16_t>(AddS(o[j], rounding[j]) >> 4);
}

}  // namespace

void ForwardDctScalar(int16_t* block) {
  for (int col = 0; col < 8; ++col) ColumnPass(block, col);
  for (int row = 0; row < 8; ++row) RowPass(block + 8 * row, row);
}

}  // namespace vantaro::encoder
