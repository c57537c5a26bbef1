// The forward block kernel tables: scalar, and SSE2 where the build has it.
#include "encoder/encoder_kernels.h"
#include "encoder/forward_dct.h"
#include "encoder/quantise.h"

namespace vantaro::encoder {
namespace {

void ForwardBlocksScalar(int16_t* blocks, int32_t count, const float* reciprocals, uint64_t* nonZero) {
  for (int32_t i = 0; i < count; ++i) {
    int16_t* block = blocks + 64 * i;
    ForwardDctScalar(block);
    QuantiseBlockScalar(block, reciprocals);
    nonZero[i] = NonZeroMaskScalar(block);
  }
}

}  // namespace

const ForwardKernels kForwardKernelsScalar = {ForwardBlocksScalar};

const ForwardKernels* ForwardKernelsSse2() {
#if defined(VANTARO_KERNELS_SSE2)
  static constexpr ForwardKernels kSse2 = {ForwardBlocksSse2};
  return &kSse2;
#else
  return nullptr;
#endif
}

}  // namespace vantaro::encoder
