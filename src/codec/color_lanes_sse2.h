// The colour tables' lanes computed in SSE2 instead of loaded: a lane is
// (k * x) >> 8 in 32 bits, kept to 16, plus an offset. Included only by the
// files compiled for SSE2.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace vantaro {

// Bits 8..23 of each 32-bit product k * x: the low byte of its high half
// over the high byte of its low half, exactly a table lane.
inline __m128i MulShift8(__m128i x, int16_t k) {
  const __m128i kk = _mm_set1_epi16(k);
  return _mm_or_si128(_mm_srli_epi16(_mm_mullo_epi16(x, kk), 8), _mm_slli_epi16(_mm_mulhi_epi16(x, kk), 8));
}

}  // namespace vantaro
