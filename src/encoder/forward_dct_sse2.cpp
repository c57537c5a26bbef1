// The forward transform in SSE2: each row of the block is one vector, so
// the column pass runs on eight columns at once and the row pass forms its
// dot products with a multiply-and-add of adjacent pairs.
#include "encoder/forward_dct.h"

#if defined(VANTARO_KERNELS_SSE2)
#include <emmintrin.h>

namespace vantaro::encoder {
namespace {

inline __m128i Load(const int16_t* p) { return _mm_load_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m128i Splat(int16_t v) { return _mm_set1_epi16(v); }

void ColumnPass(__m128i (&x)[8]) {
  using namespace dct;
  const __m128i one = Splat(1);
  const __m128i s07 = _mm_adds_epi16(x[0], x[7]), s16 = _mm_adds_epi16(x[1], x[6]);
  const __m128i s25 = _mm_adds_epi16(x[2], x[5]), s34 = _mm_adds_epi16(x[3], x[4]);
  const __m128i d07 = _mm_slli_epi16(_mm_subs_epi16(x[0], x[7]), 3);
  const __m128i d34 = _mm_slli_epi16(_mm_subs_epi16(x[3], x[4]), 3);
  const __m128i d16 = _mm_slli_epi16(_mm_subs_epi16(x[1], x[6]), 4);
  const __m128i d25 = _mm_slli_epi16(_mm_subs_epi16(x[2], x[5]), 4);
  const __m128i e = _mm_subs_epi16(s16, s25), f = _mm_subs_epi16(s07, s34);
  const __m128i b = _mm_slli_epi16(_mm_adds_epi16(_mm_adds_epi16(s25, s25), e), 3);
  const __m128i a = _mm_slli_epi16(_mm_adds_epi16(_mm_adds_epi16(s34, s34), f), 3);
  const __m128i e3 = _mm_slli_epi16(e, 3), f3 = _mm_slli_epi16(f, 3);
  const __m128i y4 = _mm_subs_epi16(a, b);
  x[0] = _mm_adds_epi16(_mm_adds_epi16(b, b), y4);
  x[4] = y4;
  x[2] = _mm_or_si128(_mm_adds_epi16(_mm_mulhi_epi16(e3, Splat(kTan2)), f3), one);
  x[6] = _mm_or_si128(_mm_subs_epi16(_mm_mulhi_epi16(f3, Splat(kTan2)), e3), one);
  const __m128i g = _mm_subs_epi16(d16, d25);
  const __m128i h = _mm_adds_epi16(_mm_adds_epi16(d25, d25), g);
  const __m128i p = _mm_mulhi_epi16(g, Splat(kCos4));
  const __m128i q = _mm_or_si128(_mm_mulhi_epi16(h, Splat(kCos4)), one);
  const __m128i u = _mm_subs_epi16(d34, p), v = _mm_subs_epi16(d07, q);
  const __m128i pp = _mm_adds_epi16(p, d34), qq = _mm_adds_epi16(q, d07);
  x[1] = _mm_adds_epi16(_mm_mulhi_epi16(pp, Splat(kTan1)), qq);
  x[7] = _mm_subs_epi16(_mm_mulhi_epi16(qq, Splat(kTan1)), pp);
  const __m128i r = _mm_adds_epi16(_mm_mulhi_epi16(u, Splat(kTan3)), u);
  const __m128i t = _mm_adds_epi16(_mm_mulhi_epi16(v, Splat(kTan3)), v);
  x[3] = _mm_subs_epi16(v, r);
  x[5] = _mm_adds_epi16(u, t);
}

__m128i RowPass(__m128i x, int row) {
  const int16_t(*m)[8] = dct::kRowMatrix[dct::kRowSet[row]];
  // Lanes reversed: x7..x0, so lane i pairs xi with x(7-i).
  const __m128i reversed = _mm_shufflehi_epi16(
      _mm_shufflelo_epi16(_mm_shuffle_epi32(x, _MM_SHUFFLE(1, 0, 3, 2)), _MM_SHUFFLE(0, 1, 2, 3)),
      _MM_SHUFFLE(0, 1, 2, 3));
  const __m128i s = _mm_adds_epi16(x, reversed);
  const __m128i d = _mm_subs_epi16(x, reversed);
  const __m128i a = _mm_unpacklo_epi32(s, d);  // s0 s1 d0 d1 s2 s3 d2 d3
  const __m128i b = _mm_shuffle_epi32(a, _MM_SHUFFLE(1, 0, 3, 2));  // s2 s3 d2 d3 s0 s1 d0 d1
  const __m128i lo = _mm_add_epi32(_mm_madd_epi16(a, Load(m[0])), _mm_madd_epi16(b, Load(m[1])));
  const __m128i hi = _mm_add_epi32(_mm_madd_epi16(b, Load(m[3])), _mm_madd_epi16(a, Load(m[2])));
  const __m128i o = _mm_packs_epi32(_mm_srai_epi32(lo, 16), _mm_srai_epi32(hi, 16));
  return _mm_srai_epi16(_mm_adds_epi16(o, Load(dct::kRowRounding[row])), 4);
}

}  // namespace

void ForwardDctSse2(int16_t* block) {
  __m128i x[8];
  for (int r = 0; r < 8; ++r) x[r] = Load(block + 8 * r);
  ColumnPass(x);
  for (int r = 0; r < 8; ++r) {
    _mm_store_si128(reinterpret_cast<__m128i*>(block + 8 * r), RowPass(x[r], r));
  }
}

}  // namespace vantaro::encoder
#endif
