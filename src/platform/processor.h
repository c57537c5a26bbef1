// The processor features the codec's vector paths ask for: SSE2, which every
// x86-64 processor has and the driver and filter require, and AVX2, which
// selects the wider kernels when present, with BMI1 for the block walk.
#pragma once

namespace vantaro {

// True when the processor runs SSE2 (always on x86-64). Tests may force an
// answer to drive the refusal paths; null restores the real test.
bool ProcessorHasSse2();
using ProcessorFeatureOverride = bool (*)();
void SetProcessorFeatureOverride(ProcessorFeatureOverride override);

// True when the processor runs AVX2 and the system saves its registers.
bool ProcessorHasAvx2();

// True when the processor has BMI1's bit-field extract.
bool ProcessorHasBmi1();

}  // namespace vantaro
