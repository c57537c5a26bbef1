// The quantiser. The scalar form here and the SSE2 form (quantise_sse2.cpp)
// give the same values for every input.
#pragma once

#include <cstdint>

#include "codec/kernels.h"

#include "encoder/forward_dct.h"

namespace vantaro::encoder {

// Subtracts 1024 from the DC (16-bit wrap: the level shift, the only one),
// then each of the 64 values times `reciprocals` at the same raster position
// in single precision, rounded to nearest with ties to even and clamped to
// -32768..32767. No dead zone.
void QuantiseBlockScalar(int16_t* block, const float* reciprocals);

// Bit k set where block[k] is not zero: which quantised values get a code.
uint64_t NonZeroMaskScalar(const int16_t* block);

#if defined(VANTARO_KERNELS_SSE2)
void QuantiseBlockSse2(int16_t* block, const float* reciprocals);
uint64_t NonZeroMaskSse2(const int16_t* block);
#endif

}  // namespace vantaro::encoder
