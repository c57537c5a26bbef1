// The quantiser and the non-zero mask, scalar: the reference the fused
// vector kernel (forward_dct_sse2.cpp) matches for every input.
#pragma once

#include <cstdint>

namespace vantaro::encoder {

// Subtracts 1024 from the DC (16-bit wrap: the level shift, the only one),
// then each of the 64 values times `reciprocals` at the same raster position
// in single precision, rounded to nearest with ties to even and clamped to
// -32768..32767. No dead zone.
void QuantiseBlockScalar(int16_t* block, const float* reciprocals);

// Bit k set where block[k] is not zero: which quantised values get a code.
uint64_t NonZeroMaskScalar(const int16_t* block);

}  // namespace vantaro::encoder
