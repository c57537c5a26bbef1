// The kernel-family benchmarks, registered beside the whole-frame ones.
#pragma once

namespace vantaro::bench {
void RegisterKernelBenchmarks();
}  // namespace vantaro::bench
