// SSE2 twins of the line primitives in store_kernels.cpp.
#include "decoder/store_kernels.h"

#if defined(VANTARO_KERNELS_SSE2)
#include <emmintrin.h>

namespace vantaro::decoder {
namespace {

__m128i Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
void Store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

void PackLineSse2(const int16_t* left, const int16_t* right, uint8_t* out) {
  Store(out, _mm_packus_epi16(Load(left), Load(right)));
}

// A shift and an OR instead of a pack: the raw pair.
void RawPairsSse2(const int16_t* u, const int16_t* v, uint8_t* out) {
  Store(out, _mm_or_si128(_mm_slli_epi16(Load(v), 8), Load(u)));
}

void EvenPairsSse2(const int16_t* uLeft, const int16_t* uRight, const int16_t* vLeft,
                   const int16_t* vRight, uint8_t* out) {
  const __m128i lowBytes = _mm_set1_epi16(0x00FF);
  const __m128i u = _mm_and_si128(_mm_packus_epi16(Load(uLeft), Load(uRight)), lowBytes);
  const __m128i v = _mm_and_si128(_mm_packus_epi16(Load(vLeft), Load(vRight)), lowBytes);
  Store(out, _mm_or_si128(u, _mm_slli_epi16(v, 8)));
}

void AverageSse2(const uint8_t* a, const uint8_t* b, uint8_t* out) {
  Store(out, _mm_avg_epu8(Load(a), Load(b)));
}

void InterleaveSse2(const uint8_t* first, const uint8_t* second, uint8_t* out) {
  const __m128i f = Load(first);
  const __m128i s = Load(second);
  Store(out, _mm_unpacklo_epi8(f, s));
  Store(out + 16, _mm_unpackhi_epi8(f, s));
}

template <bool kChromaFirst>
void Packed422Sse2(const int16_t* yLeft, const int16_t* yRight, const int16_t* u, const int16_t* v,
                   int32_t chromaShift, uint8_t* out, int64_t stride, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    const __m128i luma = _mm_packus_epi16(Load(yLeft + 8 * r), Load(yRight + 8 * r));
    const int32_t c = 8 * (r >> chromaShift);
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(Load(v + c), 8), Load(u + c));
    const __m128i first = kChromaFirst ? pairs : luma;
    const __m128i second = kChromaFirst ? luma : pairs;
    Store(out + r * stride, _mm_unpacklo_epi8(first, second));
    Store(out + r * stride + 16, _mm_unpackhi_epi8(first, second));
  }
}

void PackStripSse2(const int16_t* left, const int16_t* right, uint8_t* out, int64_t stride, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    Store(out + r * stride, _mm_packus_epi16(Load(left + 8 * r), Load(right + 8 * r)));
  }
}

// U and V packed together, then split: the low half to U, the high to V.
void PackChromaStripSse2(const int16_t* u, const int16_t* v, int32_t chromaShift, uint8_t* outU,
                         int64_t strideU, uint8_t* outV, int64_t strideV, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    const int32_t c = 8 * (r >> chromaShift);
    const __m128i both = _mm_packus_epi16(Load(u + c), Load(v + c));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(outU + r * strideU), both);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(outV + r * strideV), _mm_srli_si128(both, 8));
  }
}

const StoreKernels kStoreKernelsSse2 = {PackLineSse2,   RawPairsSse2,
                                        EvenPairsSse2,  AverageSse2,
                                        InterleaveSse2, {Packed422Sse2<false>, Packed422Sse2<true>},
                                        PackStripSse2,  PackChromaStripSse2};

}  // namespace

const StoreKernels* StoreKernelsSse2() { return &kStoreKernelsSse2; }

}  // namespace vantaro::decoder

#else

namespace vantaro::decoder {
const StoreKernels* StoreKernelsSse2() { return nullptr; }
}  // namespace vantaro::decoder

#endif
