// The one kernel record: every kernel family of both directions, filled once
// per level from the processor's features and an override, and handed to the
// walks by the field drivers. A walk reads no global to find its kernels.
//
// Naming: each family has `k<Family>KernelsScalar`, always present, and
// `<Family>KernelsSse2()`, null on builds without it. Vector kernels sit in
// files named *_sse2.cpp or *_avx2.cpp, the only files compiled with that
// level's instructions, under VANTARO_KERNELS_SSE2 or VANTARO_KERNELS_AVX2.
// A family with an AVX2 twin adds `<Family>KernelsAvx2()`; the AVX2 record
// takes the SSE2 twin of every family that has none.
#pragma once

#include <cstdint>

#if defined(__x86_64__) || defined(_M_X64) || defined(__i386__) || defined(_M_IX86)
#define VANTARO_KERNELS_SSE2 1
#if defined(__GNUC__)
#define VANTARO_KERNELS_AVX2 1
#endif
#endif

namespace vantaro {
namespace encoder {
struct ForwardKernels;
struct LoaderKernels;
}  // namespace encoder
namespace decoder {
struct BlockKernels;
struct StoreKernels;
}  // namespace decoder

enum class KernelLevel : uint8_t { kScalar, kSse2, kAvx2 };
constexpr int kKernelLevelCount = 3;

// Which kernels to run: the best the build and the processor have, or one
// level (a level not available falls back to the best one below it).
enum class KernelOverride : uint8_t { kAutomatic, kScalar, kSse2, kAvx2 };

// "scalar", "sse2" or "avx2".
const char* KernelLevelName(KernelLevel level);

// "auto" or a level's name (the VANTARO_KERNELS environment
// variable of the tests and benchmarks); false for any other name.
bool KernelOverrideNamed(const char* name, KernelOverride* override);

struct Kernels {
  KernelLevel level;
  const encoder::ForwardKernels* forward;  // forward transform, quantiser
  const encoder::LoaderKernels* loaders;   // the loaders' line unpacking
  const decoder::BlockKernels* blocks;     // block clear, inverse transform
  const decoder::StoreKernels* stores;     // the output stores' line primitives
  bool extractIndex;  // the block walk takes its next index by BMI1's bit-field extract
};

// The record of one level, or null where this build or processor lacks it.
const Kernels* KernelsAt(KernelLevel level);

// The record the next walks take; the override is process-wide (tests, the
// command-line tool), read when a field starts.
const Kernels& ActiveKernels();
void SetKernelOverride(KernelOverride override);
KernelOverride CurrentKernelOverride();

}  // namespace vantaro
