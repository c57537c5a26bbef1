// The block kernel tables: scalar, and SSE2 over it where the build has it.
#include "codec/vector_kernels.h"
#include "encoder/encoder_kernels.h"
#include "encoder/forward_dct.h"
#include "encoder/quantise.h"

namespace vantaro::encoder {
namespace {
constexpr ForwardKernels kScalarBlocks = {ForwardDctScalar, QuantiseBlockScalar};
#if defined(VANTARO_HAVE_SSE2_KERNELS)
constexpr ForwardKernels kSse2Blocks = {ForwardDctSse2, QuantiseBlockSse2};
#endif
}  // namespace

const ForwardKernels& ScalarForwardKernels() { return kScalarBlocks; }

const ForwardKernels* Sse2ForwardKernels() {
#if defined(VANTARO_HAVE_SSE2_KERNELS)
  return &kSse2Blocks;
#else
  return nullptr;
#endif
}

const ForwardKernels& SelectForwardKernels() {
  const ForwardKernels* vector = Sse2ForwardKernels();
  return vector != nullptr && VectorKernelsEnabled() ? *vector : kScalarBlocks;
}

}  // namespace vantaro::encoder
