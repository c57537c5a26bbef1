// The macroblock decoders, one per arm and alpha coding: read the blocks,
// the run/value alpha where the variant has it, rebuild the DCs along their
// chains, and transform every block the macroblock holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "codec/macroblock_scratch.h"
#include "decoder/alpha_decoder.h"
#include "decoder/block_decoder.h"
#include "decoder/inverse_transform.h"

namespace vantaro {

// What a walk hands each macroblock: the tables and kernels picked at its
// start, the instance's multipliers and the readable stream.
struct MacroblockContext {
  const BlockDecodeTables& tables;
  const BlockKernels& kernels;
  const uint16_t* multipliers;
  StreamView stream;
};

// Shapes: the block order, how many leading blocks to clear, the chains of
// the U and V predictors and the blocks to transform.
struct Shape420 {
  static constexpr const BlockSlot* kOrder = kOrder420;
  static constexpr size_t kCount = std::size(kOrder420);
  static constexpr int32_t kClear = 7;
  static constexpr uint8_t kU[] = {4};
  static constexpr uint8_t kV[] = {6};
  static constexpr uint8_t kTransform[] = {0, 1, 2, 3, 4, 6};
  static constexpr bool kDctAlpha = false;
};
struct Shape422 {
  static constexpr const BlockSlot* kOrder = kOrder422;
  static constexpr size_t kCount = std::size(kOrder422);
  static constexpr int32_t kClear = 8;
  static constexpr uint8_t kU[] = {4, 5};
  static constexpr uint8_t kV[] = {6, 7};
  static constexpr uint8_t kTransform[] = {0, 1, 2, 3, 4, 5, 6, 7};
  static constexpr bool kDctAlpha = false;
};
struct Shape444 {
  static constexpr const BlockSlot* kOrder = kOrder444;
  static constexpr size_t kCount = std::size(kOrder444);
  static constexpr int32_t kClear = 12;
  static constexpr uint8_t kU[] = {4, 5, 8, 9};
  static constexpr uint8_t kV[] = {6, 7, 10, 11};
  static constexpr uint8_t kTransform[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  static constexpr bool kDctAlpha = false;
};
struct Shape422Dct {
  static constexpr const BlockSlot* kOrder = kOrder422Alpha;
  static constexpr size_t kCount = std::size(kOrder422Alpha);
  static constexpr int32_t kClear = 16;
  static constexpr uint8_t kU[] = {4, 5};
  static constexpr uint8_t kV[] = {6, 7};
  static constexpr uint8_t kTransform[] = {0, 1, 2, 3, 4, 5, 6, 7, 12, 13, 14, 15};
  static constexpr bool kDctAlpha = true;
};
struct Shape444Dct {
  static constexpr const BlockSlot* kOrder = kOrder444Alpha;
  static constexpr size_t kCount = std::size(kOrder444Alpha);
  static constexpr int32_t kClear = 16;
  static constexpr uint8_t kU[] = {4, 5, 8, 9};
  static constexpr uint8_t kV[] = {6, 7, 10, 11};
  static constexpr uint8_t kTransform[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  static constexpr bool kDctAlpha = true;
};

inline constexpr uint8_t kLumaChain[] = {0, 2, 1, 3};
inline constexpr uint8_t kAlphaChain[] = {12, 14, 13, 15};

// Decodes one macroblock at `bitPos` into `s`, samples ready for a store.
// False when the stream would lead outside a block or an alpha half.
template <class Shape, bool kRunLengthAlpha>
bool DecodeMacroblock(const MacroblockContext& ctx, MacroblockScratch& s, uint64_t& bitPos) {
  ctx.kernels.clearBlocks(s.blocks[0], Shape::kClear);
  if (!DecodeBlocks<Shape::kOrder, Shape::kCount>(ctx.tables, ctx.stream, bitPos, s.blocks)) {
    return false;
  }
  if constexpr (kRunLengthAlpha) {
    if (!ReadAlphaPlane(s, ctx.stream, bitPos)) return false;
  }
  ReconstructDcChain(s.blocks, s.dcPredictor[0], kLumaChain, std::size(kLumaChain));
  ReconstructDcChain(s.blocks, s.dcPredictor[1], Shape::kU, std::size(Shape::kU));
  ReconstructDcChain(s.blocks, s.dcPredictor[2], Shape::kV, std::size(Shape::kV));
  if constexpr (Shape::kDctAlpha) {
    ReconstructDcChain(s.blocks, s.dcPredictor[3], kAlphaChain, std::size(kAlphaChain));
  }
  for (uint8_t b : Shape::kTransform) ctx.kernels.inverseTransform(s.blocks[b], ctx.multipliers);
  return true;
}

}  // namespace vantaro
