// Kernel tables of the encoder: the block transform and quantiser, and the
// loaders' line unpacking. The Kernels record (codec/kernels.h) holds the
// ones a walk runs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/kernels.h"

namespace vantaro::encoder {

struct ForwardKernels {
  // `count` consecutive blocks of 64 signed 16-bit samples in raster order,
  // 16-byte aligned, in place: the transform, the level shift of the DC,
  // then each value times its reciprocal, rounded to nearest even and
  // clamped to 16 bits. nonZero[i] gets bit k set where block i's value k is
  // not zero. The same as ForwardDctScalar, QuantiseBlockScalar and
  // NonZeroMaskScalar block by block; a vector form keeps a block in
  // registers from samples to mask.
  void (*forwardBlocks)(int16_t* blocks, int32_t count, const float* reciprocals, uint64_t* nonZero);
};

// One source line of a macroblock, 16 pixels wide, unpacked to samples.
// Half-width chroma (the 4:2:2 and 4:2:0 layouts) fills u and v [0..7] only.
struct alignas(16) LineSamples {
  int16_t y[16];
  int16_t u[16];
  int16_t v[16];
  uint8_t a[16];
};

struct LoaderKernels {
  void (*luma8)(const uint8_t* source, LineSamples& out);      // 16 bytes of Y
  void (*lumaAlpha)(const uint8_t* source, LineSamples& out);  // 32 bytes: Y, A pairs
  void (*chromaHalf)(const uint8_t* source, LineSamples& out);  // 16 bytes: 8 U, V pairs
  void (*chromaFull)(const uint8_t* source, LineSamples& out);  // 32 bytes: 16 U, V pairs
  void (*yuy2)(const uint8_t* source, LineSamples& out);   // 32 bytes: Y U Y V
  void (*uyvy)(const uint8_t* source, LineSamples& out);   // 32 bytes: U Y V Y
  void (*ayuv)(const uint8_t* source, LineSamples& out);   // 64 bytes; y and a from byte 0
  void (*rgb24)(const uint8_t* source, LineSamples& out);  // 48 bytes: B G R
  void (*rgb32)(const uint8_t* source, LineSamples& out);  // 64 bytes: B G R A
  // `lines` lines of packed 4:2:2 (32 bytes each, `lineDistance` apart)
  // straight into a 4:2:2 macroblock's strips: line r's luma to yLeft + 8r
  // and yRight + 8r, its U and V to u + 8r and v + 8r. [0] reads Y U Y V,
  // [1] U Y V Y; the same samples as yuy2 and uyvy.
  void (*packed422Rows[2])(const uint8_t* source, ptrdiff_t lineDistance, int16_t* yLeft, int16_t* yRight,
                           int16_t* u, int16_t* v, int32_t lines);
  // `lines` lines of one 8-bit plane (`lineDistance` apart) widened into
  // strips: 16 bytes a line, the first 8 to left + 8r and the rest to
  // right + 8r; or 8 bytes a line to out + 8r.
  void (*planeRows16)(const uint8_t* source, ptrdiff_t lineDistance, int16_t* left, int16_t* right, int32_t lines);
  void (*planeRows8)(const uint8_t* source, ptrdiff_t lineDistance, int16_t* out, int32_t lines);
};

extern const ForwardKernels kForwardKernelsScalar;
extern const LoaderKernels kLoaderKernelsScalar;
// Null on builds without SSE2 (AVX2).
const ForwardKernels* ForwardKernelsSse2();
const ForwardKernels* ForwardKernelsAvx2();
const LoaderKernels* LoaderKernelsSse2();

}  // namespace vantaro::encoder
