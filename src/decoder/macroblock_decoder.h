// The macroblock decoders, one per arm and alpha coding: read the blocks,
// the run/value alpha where the variant has it, rebuild the DCs along their
// chains, and transform every block the macroblock holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "codec/macroblock_scratch.h"
#include "decoder/alpha_decoder.h"
#include "decoder/block_decoder.h"
#include "decoder/inverse_transform.h"

namespace vantaro::decoder {

// What a walk hands each macroblock: the tables, kernels and block walk
// picked at its start, the instance's multipliers and the readable stream.
struct MacroblockContext {
  const BlockDecodeTables& tables;
  const BlockKernels& kernels;
  DecodeBlocksFn decodeBlocks;
  ReadAlphaPlaneFn readAlpha;
  const uint16_t* multipliers;
  StreamView stream;
};

// The highest block number an order names.
constexpr int32_t HighestBlock(const BlockStep* order, size_t count) {
  int32_t highest = 0;
  for (size_t i = 0; i < count; ++i) highest = order[i].block > highest ? order[i].block : highest;
  return highest;
}

// A macroblock shape is its block order in the stream; the rest follows from
// it: the blocks to clear (all up to the highest one named), the DC chains
// (each plane's blocks in stream order) and the blocks to transform (all the
// order names).
template <const auto& Order>
struct BlockShape {
  static constexpr const BlockStep* kOrder = Order;
  static constexpr size_t kCount = std::size(Order);
  static constexpr int32_t kClear = HighestBlock(Order, kCount) + 1;
  static constexpr DecodeBlocksFn Walk(bool extractIndex) {
    return extractIndex ? &DecodeBlocks<Order, kCount, IndexStep::kExtract>
                        : &DecodeBlocks<Order, kCount, IndexStep::kShiftMask>;
  }
};
using Shape420 = BlockShape<kOrder420>;
using Shape422 = BlockShape<kOrder422>;
using Shape444 = BlockShape<kOrder444>;
using Shape422Dct = BlockShape<kOrder422Alpha>;
using Shape444Dct = BlockShape<kOrder444Alpha>;
// The shape of a family and alpha coding; 4:2:0 has no DCT-alpha shape.
template <Family F, AlphaCoding A>
using ShapeOf = std::conditional_t<
    F == Family::k420, Shape420,
    std::conditional_t<F == Family::k422, std::conditional_t<A == AlphaCoding::kDct, Shape422Dct, Shape422>,
                       std::conditional_t<A == AlphaCoding::kDct, Shape444Dct, Shape444>>>;
static_assert(Shape420::kClear == 7 && Shape422::kClear == 8 && Shape444::kClear == 12 &&
              Shape422Dct::kClear == 16);

// Decodes one macroblock at `bitPos` into `s`, samples ready for a store.
// False when the stream would lead outside a block or an alpha half.
template <class Shape, bool kRunLengthAlpha>
bool DecodeMacroblock(const MacroblockContext& ctx, MacroblockScratch& s, uint64_t& bitPos) {
  ctx.kernels.clearBlocks(s.blocks[0], Shape::kClear);
  if (!ctx.decodeBlocks(ctx.tables, ctx.stream, bitPos, s.blocks)) return false;
  if constexpr (kRunLengthAlpha) {
    if (!ctx.readAlpha(s, ctx.stream, bitPos)) return false;
  }
  ReconstructDc(s.blocks, s.dcPredictor, Shape::kOrder, Shape::kCount);
  static_assert(Shape::kCount % 2 == 0, "blocks are transformed in pairs");
  for (size_t i = 0; i < Shape::kCount; i += 2) {
    ctx.kernels.inverseTransformPair(s.blocks[Shape::kOrder[i].block], s.blocks[Shape::kOrder[i + 1].block],
                                     ctx.multipliers);
  }
  return true;
}

}  // namespace vantaro::decoder
