// What the forward and inverse transforms share: the cosine basis of their
// row passes, the constants of their column passes, and the 16-bit lane
// arithmetic both are defined in (the vector twins do the same lane for lane).
#pragma once

#include <cstdint>

namespace vantaro::transform {

// Column pass: tan(pi/16), tan(2pi/16) and tan(3pi/16) - 1 in 16 fractional
// bits (the last is 43790, stored as its 16-bit pattern: a multiply-high by
// it gives x * tan - x, and the pass adds x back), cos(pi/4) in 15 bits, so
// that a multiply-high halves it.
constexpr int16_t kTan1 = 13036;
constexpr int16_t kTan2 = 27146;
constexpr int16_t kTan3 = -21746;
constexpr int16_t kCos4 = 23170;

// Row pass: kBasis[s][j] = round(2^14 * C(s) * C(j)) with C(k) = sqrt(2) *
// cos(k * pi / 16) and C(0) = C(4) = 1. Set s serves rows s and 8 - s (set 0
// rows 0 and 4), so the column scaling of those rows is folded into the rows.
inline constexpr int16_t kBasis[4][8] = {
    {16384, 22725, 21407, 19266, 16384, 12873, 8867, 4520},
    {22725, 31521, 29692, 26722, 22725, 17855, 12299, 6270},
    {21407, 29692, 27969, 25172, 21407, 16819, 11585, 5906},
    {19266, 26722, 25172, 22654, 19266, 15137, 10426, 5315},
};
// The basis set of each row.
constexpr int kRowSet[8] = {0, 1, 2, 3, 0, 3, 2, 1};

// A basis entry named by a signed index: +-(j + 1) for +-kBasis[set][j].
constexpr int16_t Basis(int set, int signedIndex) {
  const int16_t v = kBasis[set][(signedIndex < 0 ? -signedIndex : signedIndex) - 1];
  return static_cast<int16_t>(signedIndex < 0 ? -v : v);
}

constexpr int16_t Sat16(int32_t v) {
  return static_cast<int16_t>(v > 32767 ? 32767 : (v < -32768 ? -32768 : v));
}
constexpr int16_t AddS(int16_t a, int16_t b) { return Sat16(int32_t{a} + b); }
constexpr int16_t SubS(int16_t a, int16_t b) { return Sat16(int32_t{a} - b); }
constexpr int16_t MulHi(int16_t a, int16_t b) { return static_cast<int16_t>((int32_t{a} * b) >> 16); }
// u * a + w * b in wrapping 32-bit arithmetic, as a multiply-and-add of pairs.
constexpr uint32_t PairSum(int16_t u, int16_t a, int16_t w, int16_t b) {
  return static_cast<uint32_t>(int32_t{u} * a) + static_cast<uint32_t>(int32_t{w} * b);
}

}  // namespace vantaro::transform
