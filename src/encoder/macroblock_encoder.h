// The macroblock encoders: one per chroma family and alpha coding, each a
// fixed sequence of blocks through transform, quantiser, scan, DC
// prediction and block coder, then the alpha plane where the variant has one.
#pragma once

#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/block_orders.h"
#include "codec/codec_instance.h"
#include "codec/macroblock_scratch.h"
#include "encoder/alpha_coder.h"
#include "encoder/block_coder.h"
#include "encoder/block_codes.h"
#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {

// Worst case of one macroblock, 16 blocks of escapes and two alpha halves of
// 20-bit pairs (about 3.7 KiB), rounded up.
constexpr size_t kWorstCaseMacroblockBytes = 4096;

namespace mb {

// Transformed and quantised blocks first, `count` from `first` in one
// kernel call, their masks by block number; the DC prediction and codes
// follow in the stream's order.
inline void ForwardBlocks(const CodecInstance& instance, const ForwardKernels& kernels,
                          MacroblockScratch& scratch, int first, int count, uint64_t* nonZero) {
  kernels.forwardBlocks(scratch.blocks[first], count, instance.reciprocalTable, nonZero + first);
}

// The blocks in `order`: each DC difference against its plane's predictor
// (predictor minus current, 16-bit wrap), then the codes in scan order
// straight from the raster block, the writer's state in locals throughout.
template <size_t N>
inline void CodeBlocks(MacroblockScratch& scratch, const uint64_t* nonZero, const BlockStep (&order)[N],
                       BitWriter& writer) {
  const GlobalTables& tables = Tables();
  CodeWriter w = CodeWriter::From(writer);
  for (const BlockStep& step : order) {
    const int16_t* block = scratch.blocks[step.block];
    const uint16_t current = static_cast<uint16_t>(block[0]);
    uint16_t& predictor = scratch.dcPredictor[step.plane];
    const auto difference = static_cast<int16_t>(static_cast<uint16_t>(predictor - current));
    predictor = current;
    CodeBlock(tables, IsChromaPlane(step.plane) ? tables.dcChroma : tables.dcLuma, difference, block, ZigzagScan,
              ScanOrderMask(tables, nonZero[step.block]) & ~uint64_t{1}, w);
  }
  w.To(writer);
}

}  // namespace mb

// Writes one macroblock from the samples a loader left in `scratch`: its
// blocks, then the alpha part. Updates the predictors; the blocks are spent.
template <Family F, AlphaCoding A>
void EncodeMacroblock(const CodecInstance& instance, const ForwardKernels& kernels,
                      MacroblockScratch& scratch, BitWriter& writer) {
  uint64_t nonZero[16];
  if constexpr (F == Family::k420) {  // blocks 0..4 and 6
    mb::ForwardBlocks(instance, kernels, scratch, 0, 5, nonZero);
    mb::ForwardBlocks(instance, kernels, scratch, kBlockV0, 1, nonZero);
  } else {
    mb::ForwardBlocks(instance, kernels, scratch, 0, F == Family::k422 ? 8 : 12, nonZero);
  }
  if constexpr (A == AlphaCoding::kDct) mb::ForwardBlocks(instance, kernels, scratch, kBlockAlpha, 4, nonZero);
  if constexpr (F == Family::k420) {
    mb::CodeBlocks(scratch, nonZero, kOrder420, writer);
  } else if constexpr (F == Family::k422) {
    mb::CodeBlocks(scratch, nonZero, kOrder422, writer);
  } else {
    mb::CodeBlocks(scratch, nonZero, kOrder444, writer);
  }
  if constexpr (A == AlphaCoding::kRunValue) {
    EncodeAlphaPlane(scratch, writer);
  } else if constexpr (A == AlphaCoding::kDct) {
    mb::CodeBlocks(scratch, nonZero, kOrderDctAlpha, writer);
  }
}

}  // namespace vantaro::encoder
