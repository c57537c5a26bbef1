// The suites' main. VANTARO_SCALAR=1 runs everything on the scalar kernels,
// so that the vector and scalar paths are both held to the same results.
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "codec/vector_kernels.h"

int main(int argc, char** argv) {
  const char* scalar = std::getenv("VANTARO_SCALAR");
  if (scalar != nullptr && std::strcmp(scalar, "0") != 0) vantaro::SetVectorKernelsEnabled(false);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
