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

// The scan-order form of a raster-order mask: bit s of the result is bit
// ZigzagScan[s] of `rasterMask`.
uint64_t ScanOrderMask(uint64_t rasterMask);

// The same codes as EncodeLumaBlock/EncodeChromaBlock, read straight from a
// raster-order block: `raster[0]` is ignored in favour of `dcDifference`,
// and `rasterNonZero` has bit k set where raster[k] is not zero (bit 0 may
// be anything). Saves the copy into scan order.
void EncodeRasterBlock(bool chroma, int16_t dcDifference, const int16_t* raster, uint64_t rasterNonZero,
                       BitWriter& writer);

}  // namespace vantaro::encoder
