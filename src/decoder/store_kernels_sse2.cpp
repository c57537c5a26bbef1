// SSE2 twins of the line primitives in store_kernels.cpp.
#include "decoder/store_kernels.h"

#if defined(VANTARO_KERNELS_SSE2)
#include <emmintrin.h>

#include <cstring>

#include "codec/color_lanes_sse2.h"
#include "codec/global_tables.h"

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

// Blue, green and red of eight pixels as 16-bit sums >> 5, from their
// luma, U and V bytes widened to 16 bits.
void RgbChannels(__m128i y, __m128i u, __m128i v, __m128i (&bgr)[3]) {
  const YuvToRgbCoefficients& k = kYuvToRgb;
  const __m128i luma =
      _mm_add_epi16(MulShift8(_mm_sub_epi16(y, _mm_set1_epi16(16)), k.luma), _mm_set1_epi16(16));
  u = _mm_sub_epi16(u, _mm_set1_epi16(128));
  v = _mm_sub_epi16(v, _mm_set1_epi16(128));
  bgr[0] = _mm_srai_epi16(_mm_add_epi16(luma, MulShift8(u, k.cbBlue)), 5);
  bgr[1] = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(luma, MulShift8(u, k.cbGreen)), MulShift8(v, k.crGreen)), 5);
  bgr[2] = _mm_srai_epi16(_mm_add_epi16(luma, MulShift8(v, k.crRed)), 5);
}

// The pixels as blue, green, red, alpha words; csRGB24 then drops every
// fourth byte, each pixel's store overwritten by the next but the last.
template <int kPixelBytes>
void RgbLineSse2(const uint8_t* y, const uint8_t* u, const uint8_t* v, const uint8_t* alpha, uint8_t* out) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i yb = Load(y), ub = Load(u), vb = Load(v);
  __m128i lo[3], hi[3];
  RgbChannels(_mm_unpacklo_epi8(yb, zero), _mm_unpacklo_epi8(ub, zero), _mm_unpacklo_epi8(vb, zero), lo);
  RgbChannels(_mm_unpackhi_epi8(yb, zero), _mm_unpackhi_epi8(ub, zero), _mm_unpackhi_epi8(vb, zero), hi);
  const __m128i b = _mm_packus_epi16(lo[0], hi[0]);
  const __m128i g = _mm_packus_epi16(lo[1], hi[1]);
  const __m128i r = _mm_packus_epi16(lo[2], hi[2]);
  const __m128i a = kPixelBytes == 4 ? Load(alpha) : zero;
  const __m128i bg[2] = {_mm_unpacklo_epi8(b, g), _mm_unpackhi_epi8(b, g)};
  const __m128i ra[2] = {_mm_unpacklo_epi8(r, a), _mm_unpackhi_epi8(r, a)};
  alignas(16) uint8_t pixels[64];
  uint8_t* words = kPixelBytes == 4 ? out : pixels;
  for (int i = 0; i < 2; ++i) {
    Store(words + 32 * i, _mm_unpacklo_epi16(bg[i], ra[i]));
    Store(words + 32 * i + 16, _mm_unpackhi_epi16(bg[i], ra[i]));
  }
  if constexpr (kPixelBytes == 3) {
    for (int c = 0; c < 15; ++c) std::memcpy(out + 3 * c, pixels + 4 * c, 4);
    std::memcpy(out + 45, pixels + 60, 3);
  }
}

const StoreKernels kStoreKernelsSse2 = {PackLineSse2,   RawPairsSse2,
                                        EvenPairsSse2,  AverageSse2,
                                        InterleaveSse2, {Packed422Sse2<false>, Packed422Sse2<true>},
                                        PackStripSse2,  PackChromaStripSse2,
                                        {RgbLineSse2<3>, RgbLineSse2<4>}};

}  // namespace

const StoreKernels* StoreKernelsSse2() { return &kStoreKernelsSse2; }

}  // namespace vantaro::decoder

#else

namespace vantaro::decoder {
const StoreKernels* StoreKernelsSse2() { return nullptr; }
}  // namespace vantaro::decoder

#endif
