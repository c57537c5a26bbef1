// The suites' main. VANTARO_KERNELS=scalar (or sse2, avx2) runs the suite on
// that kernel level, so that every level is held to the same results.
#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include "codec/kernels.h"

int main(int argc, char** argv) {
  if (const char* name = std::getenv("VANTARO_KERNELS")) {
    vantaro::KernelOverride level;
    if (!vantaro::KernelOverrideNamed(name, &level)) {
      std::fprintf(stderr, "VANTARO_KERNELS must be auto, scalar, sse2 or avx2\n");
      return 2;
    }
    vantaro::SetKernelOverride(level);
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
