// The block syntax, writer side: a DC difference, run/level codes for the
// non-zero coefficients in scan order, and end of block.
#pragma once

#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/codec_instance.h"

namespace vantaro::encoder {

// destination[s] = source[ZigzagScan[s]]; the source stays as it was.
void ZigzagBlock(int16_t* destination, const int16_t* source);

// `block` holds 64 values in scan order, position 0 already the DC
// difference. Writes the block's codes; neither reads `instance` nor changes
// `block`. Levels must lie in -2048..2047 and the difference in -2047..2047,
// which 8-bit samples guarantee.
void EncodeLumaBlock(const CodecInstance& instance, const int16_t* block, BitWriter& writer);
void EncodeChromaBlock(const CodecInstance& instance, const int16_t* block, BitWriter& writer);

// Bit s set where scan position s holds zero (exact on all 16 bits).
uint64_t ZeroMask(const int16_t* block);

}  // namespace vantaro::encoder
