// The run/value alpha plane of a macroblock: two halves of 8 lines, each a
// list of byte differences against the line above, the first line against
// the last line of the macroblock to the left (alphaRowPredictor).
#pragma once

#include <cstdint>

#include "codec/macroblock_scratch.h"
#include "decoder/block_decoder.h"

namespace vantaro::decoder {

// Reads both halves at `bitPos` into scratch.Alpha() and moves `bitPos` past
// them; alphaRowPredictor ends as line 15. False when a run or a value would
// land outside its half of 128 bytes. Both index steps read alike.
template <IndexStep S>
bool ReadAlphaPlane(MacroblockScratch& scratch, const StreamView& stream, uint64_t& bitPos);
using ReadAlphaPlaneFn = bool (*)(MacroblockScratch& scratch, const StreamView& stream, uint64_t& bitPos);
constexpr ReadAlphaPlaneFn ReadAlphaPlaneFor(bool extractIndex) {
  return extractIndex ? &ReadAlphaPlane<IndexStep::kExtract> : &ReadAlphaPlane<IndexStep::kShiftMask>;
}

}  // namespace vantaro::decoder
