// One switch for all vector kernels, so that the whole codec can be run on
// its plain scalar kernels (tests, the command-line tool). Kernel tables read
// it when a walk starts; flipping it mid-call has no effect on that call.
#pragma once

namespace vantaro {

bool VectorKernelsEnabled();
void SetVectorKernelsEnabled(bool enabled);

}  // namespace vantaro
