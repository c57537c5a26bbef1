// The run/value alpha plane, writer side: vertical byte differences coded as
// pairs of zero run and value, two halves of 128 bytes per macroblock.
#pragma once

#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/global_tables.h"
#include "codec/macroblock_scratch.h"

namespace vantaro::encoder {

// Codes one half of 128 differenced bytes, then its end marker. The zeros
// after the last non-zero byte are not coded.
void EncodeAlphaHalf(const uint8_t* rows, BitWriter& writer);

// Differences the 16 alpha rows of `scratch` in place against the row above
// (the first row against `alphaRowPredictor`), codes both halves and leaves
// the last row as loaded in `alphaRowPredictor`.
void EncodeAlphaPlane(MacroblockScratch& scratch, BitWriter& writer);

// The end marker alone: 110 in stream order.
inline void PutAlphaEndMarker(BitWriter& writer) {
  PutCode(writer, kAlphaEndMarkerCode, kAlphaEndMarkerLength);
}

}  // namespace vantaro::encoder
