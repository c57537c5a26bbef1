// The forward block kernel tables: scalar, and SSE2 where the build has it.
#include "encoder/encoder_kernels.h"
#include "encoder/forward_dct.h"
#include "encoder/quantise.h"

namespace vantaro::encoder {

const ForwardKernels kForwardKernelsScalar = {ForwardDctScalar, QuantiseBlockScalar, NonZeroMaskScalar};

const ForwardKernels* ForwardKernelsSse2() {
#if defined(VANTARO_KERNELS_SSE2)
  static constexpr ForwardKernels kSse2 = {ForwardDctSse2, QuantiseBlockSse2, NonZeroMaskSse2};
  return &kSse2;
#else
  return nullptr;
#endif
}

}  // namespace vantaro::encoder
