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
#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {

// Worst case of one macroblock, 16 blocks of escapes and two alpha halves of
// 20-bit pairs (about 3.7 KiB), rounded up.
constexpr size_t kWorstCaseMacroblockBytes = 4096;

namespace mb {

// One block: transform, quantise, DC difference against its plane's
// predictor (predictor minus current, 16-bit wrap), code in scan order
// straight from the raster block.
inline void EncodeOneBlock(const CodecInstance& instance, const ForwardKernels& kernels,
                           MacroblockScratch& scratch, BlockStep step, BitWriter& writer) {
  int16_t* block = scratch.blocks[step.block];
  kernels.forwardDct(block);
  kernels.quantise(block, instance.reciprocalTable);
  const uint64_t nonZero = kernels.nonZeroMask(block);
  const uint16_t current = static_cast<uint16_t>(block[0]);
  uint16_t& predictor = scratch.dcPredictor[step.plane];
  const auto difference = static_cast<int16_t>(static_cast<uint16_t>(predictor - current));
  predictor = current;
  EncodeRasterBlock(IsChromaPlane(step.plane), difference, block, nonZero, writer);
}

template <size_t N>
inline void EncodeBlocks(const CodecInstance& instance, const ForwardKernels& kernels,
                         MacroblockScratch& scratch, const BlockStep (&order)[N],
                         BitWriter& writer) {
  for (const BlockStep& step : order) EncodeOneBlock(instance, kernels, scratch, step, writer);
}

}  // namespace mb

// Writes one macroblock from the samples a loader left in `scratch`: its
// blocks, then the alpha part. Updates the predictors; the blocks are spent.
template <Family F, AlphaCoding A>
void EncodeMacroblock(const CodecInstance& instance, const ForwardKernels& kernels,
                      MacroblockScratch& scratch, BitWriter& writer) {
  if constexpr (F == Family::k420) {
    mb::EncodeBlocks(instance, kernels, scratch, kOrder420, writer);
  } else if constexpr (F == Family::k422) {
    mb::EncodeBlocks(instance, kernels, scratch, kOrder422, writer);
  } else {
    mb::EncodeBlocks(instance, kernels, scratch, kOrder444, writer);
  }
  if constexpr (A == AlphaCoding::kRunValue) {
    EncodeAlphaPlane(scratch, writer);
  } else if constexpr (A == AlphaCoding::kDct) {
    mb::EncodeBlocks(instance, kernels, scratch, kOrderDctAlpha, writer);
  }
}

}  // namespace vantaro::encoder
