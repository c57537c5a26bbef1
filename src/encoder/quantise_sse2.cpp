// The quantiser in SSE2: a float multiply per lane, conversion under the
// default rounding (to nearest, ties to even) and a saturating pack to 16 bits.
#include "encoder/quantise.h"

#if defined(VANTARO_KERNELS_SSE2)
#include <emmintrin.h>

namespace vantaro::encoder {

void QuantiseBlockSse2(int16_t* block, const float* reciprocals) {
  block[0] = static_cast<int16_t>(static_cast<uint16_t>(block[0]) - 1024u);
  for (int i = 0; i < 64; i += 8) {
    const __m128i v = _mm_load_si128(reinterpret_cast<const __m128i*>(block + i));
    const __m128i lo = _mm_srai_epi32(_mm_unpacklo_epi16(v, v), 16);
    const __m128i hi = _mm_srai_epi32(_mm_unpackhi_epi16(v, v), 16);
    const __m128 flo = _mm_mul_ps(_mm_cvtepi32_ps(lo), _mm_loadu_ps(reciprocals + i));
    const __m128 fhi = _mm_mul_ps(_mm_cvtepi32_ps(hi), _mm_loadu_ps(reciprocals + i + 4));
    const __m128i q = _mm_packs_epi32(_mm_cvtps_epi32(flo), _mm_cvtps_epi32(fhi));
    _mm_store_si128(reinterpret_cast<__m128i*>(block + i), q);
  }
}

// Sixteen compares against zero packed to bytes per movemask; the mask
// answers the zeros, so it is inverted once at the end.
uint64_t NonZeroMaskSse2(const int16_t* block) {
  const __m128i zero = _mm_setzero_si128();
  uint64_t zeros = 0;
  for (int i = 0; i < 64; i += 16) {
    const __m128i a = _mm_cmpeq_epi16(_mm_load_si128(reinterpret_cast<const __m128i*>(block + i)), zero);
    const __m128i b = _mm_cmpeq_epi16(_mm_load_si128(reinterpret_cast<const __m128i*>(block + i + 8)), zero);
    zeros |= static_cast<uint64_t>(static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(a, b)))) << i;
  }
  return ~zeros;
}

}  // namespace vantaro::encoder
#endif
