// The forward transform and quantiser in AVX2: the SSE2 kernel's arithmetic
// on two blocks at once, block a in the low 128 bits of every vector and
// block b in the high ones. Every step used works within 128-bit lanes, so
// each half computes exactly what the SSE2 kernel computes for its block.
#include "encoder/forward_dct.h"

#if defined(VANTARO_KERNELS_AVX2)
#include <immintrin.h>

namespace vantaro::encoder {
namespace {

using V = __m256i;

inline V Splat(int16_t v) { return _mm256_set1_epi16(v); }
// Eight values, the same in both halves.
inline V Both(const int16_t* p) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}
inline V LoadPair(const int16_t* a, const int16_t* b) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(a))),
                                 _mm_load_si128(reinterpret_cast<const __m128i*>(b)), 1);
}

void ColumnPass(V (&x)[8]) {
  using namespace dct;
  const V one = Splat(1);
  const V s07 = _mm256_adds_epi16(x[0], x[7]), s16 = _mm256_adds_epi16(x[1], x[6]);
  const V s25 = _mm256_adds_epi16(x[2], x[5]), s34 = _mm256_adds_epi16(x[3], x[4]);
  const V d07 = _mm256_slli_epi16(_mm256_subs_epi16(x[0], x[7]), 3);
  const V d34 = _mm256_slli_epi16(_mm256_subs_epi16(x[3], x[4]), 3);
  const V d16 = _mm256_slli_epi16(_mm256_subs_epi16(x[1], x[6]), 4);
  const V d25 = _mm256_slli_epi16(_mm256_subs_epi16(x[2], x[5]), 4);
  const V e = _mm256_subs_epi16(s16, s25), f = _mm256_subs_epi16(s07, s34);
  const V b = _mm256_slli_epi16(_mm256_adds_epi16(_mm256_adds_epi16(s25, s25), e), 3);
  const V a = _mm256_slli_epi16(_mm256_adds_epi16(_mm256_adds_epi16(s34, s34), f), 3);
  const V e3 = _mm256_slli_epi16(e, 3), f3 = _mm256_slli_epi16(f, 3);
  const V y4 = _mm256_subs_epi16(a, b);
  x[0] = _mm256_adds_epi16(_mm256_adds_epi16(b, b), y4);
  x[4] = y4;
  x[2] = _mm256_or_si256(_mm256_adds_epi16(_mm256_mulhi_epi16(e3, Splat(kTan2)), f3), one);
  x[6] = _mm256_or_si256(_mm256_subs_epi16(_mm256_mulhi_epi16(f3, Splat(kTan2)), e3), one);
  const V g = _mm256_subs_epi16(d16, d25);
  const V h = _mm256_adds_epi16(_mm256_adds_epi16(d25, d25), g);
  const V p = _mm256_mulhi_epi16(g, Splat(kCos4));
  const V q = _mm256_or_si256(_mm256_mulhi_epi16(h, Splat(kCos4)), one);
  const V u = _mm256_subs_epi16(d34, p), v = _mm256_subs_epi16(d07, q);
  const V pp = _mm256_adds_epi16(p, d34), qq = _mm256_adds_epi16(q, d07);
  x[1] = _mm256_adds_epi16(_mm256_mulhi_epi16(pp, Splat(kTan1)), qq);
  x[7] = _mm256_subs_epi16(_mm256_mulhi_epi16(qq, Splat(kTan1)), pp);
  const V r = _mm256_adds_epi16(_mm256_mulhi_epi16(u, Splat(kTan3)), u);
  const V t = _mm256_adds_epi16(_mm256_mulhi_epi16(v, Splat(kTan3)), v);
  x[3] = _mm256_subs_epi16(v, r);
  x[5] = _mm256_adds_epi16(u, t);
}

V RowPass(V x, int row) {
  const int16_t(*m)[8] = dct::kRowMatrix[dct::kRowSet[row]];
  const V reversed = _mm256_shufflehi_epi16(
      _mm256_shufflelo_epi16(_mm256_shuffle_epi32(x, _MM_SHUFFLE(1, 0, 3, 2)), _MM_SHUFFLE(0, 1, 2, 3)),
      _MM_SHUFFLE(0, 1, 2, 3));
  const V s = _mm256_adds_epi16(x, reversed);
  const V d = _mm256_subs_epi16(x, reversed);
  const V a = _mm256_unpacklo_epi32(s, d);
  const V b = _mm256_shuffle_epi32(a, _MM_SHUFFLE(1, 0, 3, 2));
  const V lo = _mm256_add_epi32(_mm256_madd_epi16(a, Both(m[0])), _mm256_madd_epi16(b, Both(m[1])));
  const V hi = _mm256_add_epi32(_mm256_madd_epi16(b, Both(m[3])), _mm256_madd_epi16(a, Both(m[2])));
  const V o = _mm256_packs_epi32(_mm256_srai_epi32(lo, 16), _mm256_srai_epi32(hi, 16));
  return _mm256_srai_epi16(_mm256_adds_epi16(o, Both(dct::kRowRounding[row])), 4);
}

inline V QuantiseRow(V v, const float* reciprocals) {
  const V lo = _mm256_srai_epi32(_mm256_unpacklo_epi16(v, v), 16);
  const V hi = _mm256_srai_epi32(_mm256_unpackhi_epi16(v, v), 16);
  const __m256 rlo = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(reciprocals));
  const __m256 rhi = _mm256_broadcast_ps(reinterpret_cast<const __m128*>(reciprocals + 4));
  const __m256 flo = _mm256_mul_ps(_mm256_cvtepi32_ps(lo), rlo);
  const __m256 fhi = _mm256_mul_ps(_mm256_cvtepi32_ps(hi), rhi);
  return _mm256_packs_epi32(_mm256_cvtps_epi32(flo), _mm256_cvtps_epi32(fhi));
}

// Two rows of both blocks per movemask: bits 0..15 are block a's, 16..31 block b's.
inline void NonZeroMasks(const V (&q)[8], uint64_t& a, uint64_t& b) {
  const V zero = _mm256_setzero_si256();
  uint64_t zerosA = 0, zerosB = 0;
  for (int r = 0; r < 8; r += 2) {
    const V pair = _mm256_packs_epi16(_mm256_cmpeq_epi16(q[r], zero), _mm256_cmpeq_epi16(q[r + 1], zero));
    const auto bits = static_cast<uint32_t>(_mm256_movemask_epi8(pair));
    zerosA |= static_cast<uint64_t>(bits & 0xFFFFu) << (8 * r);
    zerosB |= static_cast<uint64_t>(bits >> 16) << (8 * r);
  }
  a = ~zerosA;
  b = ~zerosB;
}

// Blocks a and b; a == b is one block done twice.
void ForwardPair(int16_t* a, int16_t* b, const float* reciprocals, uint64_t& maskA, uint64_t& maskB) {
  const V levelShift = _mm256_setr_epi16(1024, 0, 0, 0, 0, 0, 0, 0, 1024, 0, 0, 0, 0, 0, 0, 0);
  V x[8];
  for (int r = 0; r < 8; ++r) x[r] = LoadPair(a + 8 * r, b + 8 * r);
  ColumnPass(x);
#pragma GCC unroll 8
  for (int r = 0; r < 8; ++r) {
    V row = RowPass(x[r], r);
    if (r == 0) row = _mm256_sub_epi16(row, levelShift);
    x[r] = QuantiseRow(row, reciprocals + 8 * r);
    _mm_store_si128(reinterpret_cast<__m128i*>(a + 8 * r), _mm256_castsi256_si128(x[r]));
    _mm_store_si128(reinterpret_cast<__m128i*>(b + 8 * r), _mm256_extracti128_si256(x[r], 1));
  }
  NonZeroMasks(x, maskA, maskB);
}

void ForwardBlocksAvx2(int16_t* blocks, int32_t count, const float* reciprocals, uint64_t* nonZero) {
  int32_t i = 0;
  for (; i + 2 <= count; i += 2) {
    ForwardPair(blocks + 64 * i, blocks + 64 * (i + 1), reciprocals, nonZero[i], nonZero[i + 1]);
  }
  uint64_t again;
  if (i < count) ForwardPair(blocks + 64 * i, blocks + 64 * i, reciprocals, nonZero[i], again);
}

}  // namespace

const ForwardKernels* ForwardKernelsAvx2() {
  static constexpr ForwardKernels kAvx2 = {ForwardBlocksAvx2};
  return &kAvx2;
}

}  // namespace vantaro::encoder

#else

namespace vantaro::encoder {
const ForwardKernels* ForwardKernelsAvx2() { return nullptr; }
}  // namespace vantaro::encoder

#endif
