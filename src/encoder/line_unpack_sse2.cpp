// The loaders' line unpacking in SSE2: byte lanes widened to 16 bits with
// masks and shifts, and the RGB tables' lanes computed eight pixels to a
// vector. Each kernel writes exactly the fields its scalar twin writes.
#include "encoder/encoder_kernels.h"

#if defined(VANTARO_KERNELS_SSE2)
#include <emmintrin.h>

#include <cstring>

#include "codec/color_lanes_sse2.h"
#include "codec/global_tables.h"

namespace vantaro::encoder {
namespace {

inline __m128i LoadU(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void Store(int16_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
inline __m128i LowBytes(__m128i v) { return _mm_and_si128(v, _mm_set1_epi16(0x00FF)); }
inline __m128i HighBytes(__m128i v) { return _mm_srli_epi16(v, 8); }
// A macroblock's loads cross every plane's lines side by side, more streams
// than the processor's own prefetcher follows: the row kernels ask for each
// line's next cache line a few macroblocks ahead of its loads.
inline void Prefetch(const uint8_t* p) { _mm_prefetch(reinterpret_cast<const char*>(p), _MM_HINT_T0); }

void Luma8(const uint8_t* s, LineSamples& out) {
  const __m128i v = LoadU(s);
  const __m128i zero = _mm_setzero_si128();
  Store(out.y, _mm_unpacklo_epi8(v, zero));
  Store(out.y + 8, _mm_unpackhi_epi8(v, zero));
}

void LumaAlpha(const uint8_t* s, LineSamples& out) {
  const __m128i a = LoadU(s), b = LoadU(s + 16);
  Store(out.y, LowBytes(a));
  Store(out.y + 8, LowBytes(b));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out.a), _mm_packus_epi16(HighBytes(a), HighBytes(b)));
}

void ChromaHalf(const uint8_t* s, LineSamples& out) {
  const __m128i v = LoadU(s);
  Store(out.u, LowBytes(v));
  Store(out.v, HighBytes(v));
}

void ChromaFull(const uint8_t* s, LineSamples& out) {
  const __m128i a = LoadU(s), b = LoadU(s + 16);
  Store(out.u, LowBytes(a));
  Store(out.u + 8, LowBytes(b));
  Store(out.v, HighBytes(a));
  Store(out.v + 8, HighBytes(b));
}

// Chroma bytes U V U V ... of 16 pixels, one 16-bit lane each, to u and v.
inline void SplitChroma(__m128i c0, __m128i c1, LineSamples& out) {
  const __m128i pairs = _mm_packus_epi16(c0, c1);
  Store(out.u, LowBytes(pairs));
  Store(out.v, HighBytes(pairs));
}

void Yuy2(const uint8_t* s, LineSamples& out) {
  const __m128i a = LoadU(s), b = LoadU(s + 16);
  Store(out.y, LowBytes(a));
  Store(out.y + 8, LowBytes(b));
  SplitChroma(HighBytes(a), HighBytes(b), out);
}

void Uyvy(const uint8_t* s, LineSamples& out) {
  const __m128i a = LoadU(s), b = LoadU(s + 16);
  Store(out.y, HighBytes(a));
  Store(out.y + 8, HighBytes(b));
  SplitChroma(LowBytes(a), LowBytes(b), out);
}

// Byte k of each 32-bit pixel of two vectors, as eight 16-bit lanes.
template <int kByte>
inline __m128i PixelByte(__m128i a, __m128i b) {
  const __m128i mask = _mm_set1_epi32(0xFF);
  return _mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(a, 8 * kByte), mask),
                         _mm_and_si128(_mm_srli_epi32(b, 8 * kByte), mask));
}

void Ayuv(const uint8_t* s, LineSamples& out) {
  const __m128i p0 = LoadU(s), p1 = LoadU(s + 16), p2 = LoadU(s + 32), p3 = LoadU(s + 48);
  const __m128i y0 = PixelByte<0>(p0, p1), y1 = PixelByte<0>(p2, p3);
  Store(out.y, y0);
  Store(out.y + 8, y1);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out.a), _mm_packus_epi16(y0, y1));
  Store(out.u, PixelByte<2>(p0, p1));
  Store(out.u + 8, PixelByte<2>(p2, p3));
  Store(out.v, PixelByte<3>(p0, p1));
  Store(out.v + 8, PixelByte<3>(p2, p3));
}

// One lane (U, V or Y) of eight pixels from their blue, green and red:
// the three tables' entries computed, added in 16-bit wrap, shifted by 5.
inline __m128i RgbLane(__m128i b, __m128i g, __m128i r, int lane) {
  const RgbToYuvCoefficients& c = kRgbToYuv;
  const __m128i sum = _mm_add_epi16(_mm_add_epi16(MulShift8(b, c.blue[lane]), MulShift8(g, c.green[lane])),
                                    _mm_add_epi16(MulShift8(r, c.red[lane]), _mm_set1_epi16(c.offset[lane])));
  return _mm_srai_epi16(sum, 5);
}

// U and V saturate to 0..255 through a pack to bytes, widened back. A
// 3-byte pixel is widened to four first: 4-byte loads, each overwritten by
// the next but the last, which would reach past the line.
template <int kBytes>
void Rgb(const uint8_t* s, LineSamples& out) {
  alignas(16) uint8_t wide[64];
  const uint8_t* pixels = s;
  if constexpr (kBytes == 3) {
    for (int c = 0; c < 15; ++c) std::memcpy(wide + 4 * c, s + 3 * c, 4);
    std::memcpy(wide + 60, s + 45, 3);
    pixels = wide;
  }
  const __m128i p0 = LoadU(pixels), p1 = LoadU(pixels + 16), p2 = LoadU(pixels + 32), p3 = LoadU(pixels + 48);
  const __m128i b[2] = {PixelByte<0>(p0, p1), PixelByte<0>(p2, p3)};
  const __m128i g[2] = {PixelByte<1>(p0, p1), PixelByte<1>(p2, p3)};
  const __m128i r[2] = {PixelByte<2>(p0, p1), PixelByte<2>(p2, p3)};
  const __m128i zero = _mm_setzero_si128();
  const __m128i u8 = _mm_packus_epi16(RgbLane(b[0], g[0], r[0], 0), RgbLane(b[1], g[1], r[1], 0));
  const __m128i v8 = _mm_packus_epi16(RgbLane(b[0], g[0], r[0], 1), RgbLane(b[1], g[1], r[1], 1));
  Store(out.y, RgbLane(b[0], g[0], r[0], 2));
  Store(out.y + 8, RgbLane(b[1], g[1], r[1], 2));
  Store(out.u, _mm_unpacklo_epi8(u8, zero));
  Store(out.u + 8, _mm_unpackhi_epi8(u8, zero));
  Store(out.v, _mm_unpacklo_epi8(v8, zero));
  Store(out.v + 8, _mm_unpackhi_epi8(v8, zero));
  if constexpr (kBytes == 4) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out.a),
                     _mm_packus_epi16(PixelByte<3>(p0, p1), PixelByte<3>(p2, p3)));
  }
}

// Luma in the high bytes (U Y V Y) or the low ones (Y U Y V).
template <bool kLumaHigh>
void Packed422Rows(const uint8_t* source, ptrdiff_t lineDistance, int16_t* yLeft, int16_t* yRight, int16_t* u,
                   int16_t* v, int32_t lines) {
  for (int32_t r = 0; r < lines; ++r) {
    const uint8_t* s = source + lineDistance * r;
    Prefetch(s + 128);
    const __m128i a = LoadU(s), b = LoadU(s + 16);
    Store(yLeft + 8 * r, kLumaHigh ? HighBytes(a) : LowBytes(a));
    Store(yRight + 8 * r, kLumaHigh ? HighBytes(b) : LowBytes(b));
    const __m128i pairs = kLumaHigh ? _mm_packus_epi16(LowBytes(a), LowBytes(b))
                                    : _mm_packus_epi16(HighBytes(a), HighBytes(b));
    Store(u + 8 * r, LowBytes(pairs));
    Store(v + 8 * r, HighBytes(pairs));
  }
}

void PlaneRows16(const uint8_t* source, ptrdiff_t lineDistance, int16_t* left, int16_t* right, int32_t lines) {
  const __m128i zero = _mm_setzero_si128();
  for (int32_t r = 0; r < lines; ++r) {
    const uint8_t* line = source + lineDistance * r;
    Prefetch(line + 64);
    const __m128i v = LoadU(line);
    Store(left + 8 * r, _mm_unpacklo_epi8(v, zero));
    Store(right + 8 * r, _mm_unpackhi_epi8(v, zero));
  }
}

void PlaneRows8(const uint8_t* source, ptrdiff_t lineDistance, int16_t* out, int32_t lines) {
  const __m128i zero = _mm_setzero_si128();
  for (int32_t r = 0; r < lines; ++r) {
    const uint8_t* line = source + lineDistance * r;
    Prefetch(line + 64);
    const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(line));
    Store(out + 8 * r, _mm_unpacklo_epi8(v, zero));
  }
}

constexpr LoaderKernels kSse2Loaders = {Luma8, LumaAlpha, ChromaHalf, ChromaFull, Yuy2,
                                        Uyvy,  Ayuv,      Rgb<3>, Rgb<4>,
                                        {Packed422Rows<false>, Packed422Rows<true>}, PlaneRows16, PlaneRows8};

}  // namespace

const LoaderKernels* LoaderKernelsSse2() { return &kSse2Loaders; }

}  // namespace vantaro::encoder

#else

namespace vantaro::encoder {
const LoaderKernels* LoaderKernelsSse2() { return nullptr; }
}  // namespace vantaro::encoder

#endif
