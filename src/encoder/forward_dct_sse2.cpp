// The forward transform and quantiser in SSE2: each row of the block is one
// vector, so the column pass runs on eight columns at once and the row pass
// forms its dot products with a multiply-and-add of adjacent pairs. The
// quantiser and the non-zero mask take the rows from registers: a float
// multiply per lane, conversion under the default rounding (to nearest, ties
// to even), a saturating pack to 16 bits, then compares against zero.
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

// Row r of a transformed block times its reciprocals, the DC level shift
// already applied.
inline __m128i QuantiseRow(__m128i v, const float* reciprocals) {
  const __m128i lo = _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16);
  const __m128i hi = _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16);
  const __m128 flo = _mm_mul_ps(_mm_cvtepi32_ps(lo), _mm_loadu_ps(reciprocals));
  const __m128 fhi = _mm_mul_ps(_mm_cvtepi32_ps(hi), _mm_loadu_ps(reciprocals + 4));
  return _mm_packs_epi32(_mm_cvtps_epi32(flo), _mm_cvtps_epi32(fhi));
}

// Sixteen compares against zero packed to bytes per movemask; the mask
// answers the zeros, so it is inverted once at the end.
inline uint64_t NonZeroMask(const __m128i (&q)[8]) {
  const __m128i zero = _mm_setzero_si128();
  uint64_t zeros = 0;
  for (int r = 0; r < 8; r += 2) {
    const __m128i pair = _mm_packs_epi16(_mm_cmpeq_epi16(q[r], zero), _mm_cmpeq_epi16(q[r + 1], zero));
    zeros |= static_cast<uint64_t>(static_cast<uint32_t>(_mm_movemask_epi8(pair))) << (8 * r);
  }
  return ~zeros;
}

}  // namespace

void ForwardBlocksSse2(int16_t* blocks, int32_t count, const float* reciprocals, uint64_t* nonZero) {
  // The level shift: 1024 off the DC in 16-bit wrap.
  const __m128i levelShift = _mm_setr_epi16(1024, 0, 0, 0, 0, 0, 0, 0);
  for (int32_t i = 0; i < count; ++i) {
    int16_t* block = blocks + 64 * i;
    __m128i x[8];
    for (int r = 0; r < 8; ++r) x[r] = Load(block + 8 * r);
    ColumnPass(x);
    // Unrolled, so that each row's matrices and rounding are constant addresses.
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) {
      __m128i row = RowPass(x[r], r);
      if (r == 0) row = _mm_sub_epi16(row, levelShift);
      x[r] = QuantiseRow(row, reciprocals + 8 * r);
      _mm_store_si128(reinterpret_cast<__m128i*>(block + 8 * r), x[r]);
    }
    nonZero[i] = NonZeroMask(x);
  }
}

}  // namespace vantaro::encoder
#endif
