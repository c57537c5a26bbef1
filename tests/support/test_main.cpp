// The suites' main. VANTARO_SCALAR=1 sets the kernel override to scalar,
// so that the vector and scalar paths are both held to the same results.
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "codec/kernels.h"

int main(int argc, char** argv) {
  const char* scalar = std::getenv("VANTARO_SCALAR");
  if (scalar != nullptr && std::strcmp(scalar, "0") != 0) {
    vantaro::SetKernelOverride(vantaro::KernelOverride::kScalar);
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
