// Line primitives of the output stores: each works on one line of a
// macroblock, 16 bytes (or 32) at a time, and writes exactly its output.
#pragma once

#include <cstdint>

#include "codec/kernels.h"

namespace vantaro::decoder {

struct StoreKernels {
  // out[c] = pack(left[c]) for c < 8, pack(right[c - 8]) after: 16 bytes.
  void (*packLine)(const int16_t* left, const int16_t* right, uint8_t* out);
  // Eight raw pairs: the word (v << 8) | u on the unclamped samples, low
  // byte first. A u below 0 or above 255 spills into v's byte: 16 bytes.
  void (*rawPairs)(const int16_t* u, const int16_t* v, uint8_t* out);
  // Eight packed pairs of the even columns of 16-sample U and V lines, each
  // given as a left and a right half: pack(u[2j]), pack(v[2j]). 16 bytes.
  void (*evenPairs)(const int16_t* uLeft, const int16_t* uRight, const int16_t* vLeft,
                    const int16_t* vRight, uint8_t* out);
  // Byte-wise (a + b + 1) >> 1 over 16 bytes.
  void (*average)(const uint8_t* a, const uint8_t* b, uint8_t* out);
  // out[2i] = first[i], out[2i + 1] = second[i] for 16 bytes each: 32 bytes.
  void (*interleave)(const uint8_t* first, const uint8_t* second, uint8_t* out);
  // `lines` lines of a packed 4:2:2 macroblock, 32 bytes each at out + r *
  // stride: luma line r is yLeft + 8r and yRight + 8r packed, chroma the raw
  // pairs of u + 8 (r >> chromaShift) and v likewise. Y U Y V order for
  // packed422[0], U Y V Y for packed422[1]; the line primitives composed.
  void (*packed422[2])(const int16_t* yLeft, const int16_t* yRight, const int16_t* u, const int16_t* v,
                       int32_t chromaShift, uint8_t* out, int64_t stride, int32_t lines);
  // `lines` lines of 16 packed samples into one plane, line r from left + 8r
  // and right + 8r (two block strips) to out + r * stride.
  void (*packStrip)(const int16_t* left, const int16_t* right, uint8_t* out, int64_t stride,
                    int32_t lines);
  // `lines` lines of 8 packed U and 8 packed V samples into their planes,
  // line r from u + 8 (r >> chromaShift) and v likewise.
  void (*packChromaStrip)(const int16_t* u, const int16_t* v, int32_t chromaShift, uint8_t* outU,
                          int64_t strideU, uint8_t* outV, int64_t strideV, int32_t lines);
  // 16 pixels from their luma, U and V bytes, blue, green, red each
  // pack((LutLuma[y] + LutCb[u] + LutCr[v]) >> 5), summed in 16-bit
  // wrap-around: 48 bytes for rgbLine[0] (csRGB24), 64 for rgbLine[1]
  // (csRGB32, the fourth byte from `alpha`).
  void (*rgbLine[2])(const uint8_t* y, const uint8_t* u, const uint8_t* v, const uint8_t* alpha, uint8_t* out);
};

extern const StoreKernels kStoreKernelsScalar;
// Null on builds without SSE2.
const StoreKernels* StoreKernelsSse2();

inline uint8_t Pack(int16_t x) {
  return static_cast<uint8_t>(x < 0 ? 0 : x > 255 ? 255 : x);
}

}  // namespace vantaro::decoder
