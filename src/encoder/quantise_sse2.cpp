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

}  // namespace vantaro::encoder
#endif
