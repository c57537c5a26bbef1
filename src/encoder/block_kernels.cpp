// The block kernel tables: scalar, and SSE2 over it where the build has it.
#include "codec/vector_kernels.h"
#include "encoder/encoder_kernels.h"
#include "encoder/forward_dct.h"
#include "encoder/quantise.h"

namespace vantaro {
namespace {
constexpr BlockKernels kScalarBlocks = {ForwardDctScalar, QuantiseBlockScalar};
#if defined(VANTARO_HAVE_SSE2_KERNELS) && defined(VANTARO_SSE2_BLOCKS_READY)
constexpr BlockKernels kSse2Blocks = {ForwardDctSse2, QuantiseBlockSse2};
#endif
}  // namespace

const BlockKernels& ScalarBlockKernels() { return kScalarBlocks; }

const BlockKernels* Sse2BlockKernels() {
#if defined(VANTARO_HAVE_SSE2_KERNELS) && defined(VANTARO_SSE2_BLOCKS_READY)
  return &kSse2Blocks;
#else
  return nullptr;
#endif
}

const BlockKernels& SelectBlockKernels() {
  const BlockKernels* vector = Sse2BlockKernels();
  return vector != nullptr && VectorKernelsEnabled() ? *vector : kScalarBlocks;
}

}  // namespace vantaro
