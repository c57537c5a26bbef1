#include "encoder/forward_dct.h"

namespace vantaro::encoder {
namespace dct {

alignas(16) const int16_t kRowMatrix[4][4][8] = {
    {{16384, 16384, 22725, 19266, -8867, -21407, -22725, -12873},
     {16384, 16384, 12873, 4520, 21407, 8867, 19266, -4520},
     {16384, -16384, 12873, -22725, 21407, -8867, 19266, -22725},
     {-16384, 16384, 4520, 19266, 8867, -21407, 4520, -12873}},
    {{22725, 22725, 31521, 26722, -12299, -29692, -31521, -17855},
     {22725, 22725, 17855, 6270, 29692, 12299, 26722, -6270},
     {22725, -22725, 17855, -31521, 29692, -12299, 26722, -31521},
     {-22725, 22725, 6270, 26722, 12299, -29692, 6270, -17855}},
    {{21407, 21407, 29692, 25172, -11585, -27969, -29692, -16819},
     {21407, 21407, 16819, 5906, 27969, 11585, 25172, -5906},
     {21407, -21407, 16819, -29692, 27969, -11585, 25172, -29692},
     {-21407, 21407, 5906, 25172, 11585, -27969, 5906, -16819}},
    {{19266, 19266, 26722, 22654, -10426, -25172, -26722, -15137},
     {19266, 19266, 15137, 5315, 25172, 10426, 22654, -5315},
     {19266, -19266, 15137, -26722, 25172, -10426, 22654, -26722},
     {-19266, 19266, 5315, 22654, 10426, -25172, 5315, -15137}},
};

alignas(16) const int16_t kRowRounding[8][8] = {
    {6, 8, 8, 8, 6, 8, 8, 8}, {10, 8, 8, 8, 8, 8, 8, 8}, {8, 8, 8, 8, 8, 8, 8, 8},
    {8, 8, 8, 8, 8, 8, 8, 8}, {6, 8, 8, 8, 6, 8, 8, 8}, {8, 8, 8, 8, 8, 8, 8, 8},
    {8, 8, 8, 8, 8, 8, 8, 8}, {8, 8, 8, 8, 8, 8, 8, 8},
};

}  // namespace dct

namespace {

int16_t Sat16(int32_t v) {
  return static_cast<int16_t>(v > 32767 ? 32767 : (v < -32768 ? -32768 : v));
}
int16_t Adds(int16_t a, int16_t b) { return Sat16(int32_t{a} + b); }
int16_t Subs(int16_t a, int16_t b) { return Sat16(int32_t{a} - b); }
// Keeps the low 16 bits, as a vector shift does.
int16_t Shl(int16_t a, int n) {
  return static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint16_t>(a) << n));
}
int16_t Mulhi(int16_t a, int16_t c) { return static_cast<int16_t>((int32_t{a} * c) >> 16); }
int16_t Or1(int16_t a) { return static_cast<int16_t>(a | 1); }

void ColumnPass(int16_t* b, int col) {
  using namespace dct;
  const int16_t x0 = b[col], x1 = b[8 + col], x2 = b[16 + col], x3 = b[24 + col];
  const int16_t x4 = b[32 + col], x5 = b[40 + col], x6 = b[48 + col], x7 = b[56 + col];
  const int16_t s07 = Adds(x0, x7), s16 = Adds(x1, x6), s25 = Adds(x2, x5), s34 = Adds(x3, x4);
  const int16_t d07 = Shl(Subs(x0, x7), 3), d34 = Shl(Subs(x3, x4), 3);
  const int16_t d16 = Shl(Subs(x1, x6), 4), d25 = Shl(Subs(x2, x5), 4);
  const int16_t e = Subs(s16, s25), f = Subs(s07, s34);
  // Twice one term plus the difference, so that saturation acts on these two steps.
  const int16_t bb = Shl(Adds(Adds(s25, s25), e), 3);
  const int16_t a = Shl(Adds(Adds(s34, s34), f), 3);
  const int16_t e3 = Shl(e, 3), f3 = Shl(f, 3);
  const int16_t y4 = Subs(a, bb);
  const int16_t y0 = Adds(Adds(bb, bb), y4);
  // The set lowest bit is a rounding correction the streams carry.
  const int16_t y2 = Or1(Adds(Mulhi(e3, kTan2), f3));
  const int16_t y6 = Or1(Subs(Mulhi(f3, kTan2), e3));
  const int16_t g = Subs(d16, d25);
  const int16_t h = Adds(Adds(d25, d25), g);
  const int16_t p = Mulhi(g, kCos4);
  const int16_t q = Or1(Mulhi(h, kCos4));
  const int16_t u = Subs(d34, p), v = Subs(d07, q);
  const int16_t pp = Adds(p, d34), qq = Adds(q, d07);
  const int16_t y1 = Adds(Mulhi(pp, kTan1), qq);
  const int16_t y7 = Subs(Mulhi(qq, kTan1), pp);
  const int16_t r = Adds(Mulhi(u, kTan3), u);
  const int16_t t = Adds(Mulhi(v, kTan3), v);
  const int16_t y3 = Subs(v, r);
  const int16_t y5 = Adds(u, t);
  b[col] = y0; b[8 + col] = y1; b[16 + col] = y2; b[24 + col] = y3;
  b[32 + col] = y4; b[40 + col] = y5; b[48 + col] = y6; b[56 + col] = y7;
}

// Sum of two adjacent 16-bit products in wrapping 32-bit arithmetic, as a
// multiply-and-add of pairs gives it.
uint32_t PairProduct(const int16_t* x, const int16_t* m, int k) {
  return static_cast<uint32_t>(int32_t{x[2 * k]} * m[2 * k]) +
         static_cast<uint32_t>(int32_t{x[2 * k + 1]} * m[2 * k + 1]);
}

void RowPass(int16_t* x, int row) {
  const int16_t(*m)[8] = dct::kRowMatrix[dct::kRowSet[row]];
  const int16_t* rounding = dct::kRowRounding[row];
  int16_t s[4], d[4];
  for (int i = 0; i < 4; ++i) {
    s[i] = Adds(x[i], x[7 - i]);
    d[i] = Subs(x[i], x[7 - i]);
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
  for (int j = 0; j < 8; ++j) x[j] = static_cast<int16_t>(Adds(o[j], rounding[j]) >> 4);
}

}  // namespace

void ForwardDctScalar(int16_t* block) {
  for (int col = 0; col < 8; ++col) ColumnPass(block, col);
  for (int row = 0; row < 8; ++row) RowPass(block + 8 * row, row);
}

}  // namespace vantaro::encoder
