// The processor feature the codec's vector paths assume: SSE2.
#pragma once

namespace vantaro {

// True when the processor runs SSE2 (always on x86-64). Tests may force an
// answer to drive the refusal paths; null restores the real test.
bool ProcessorHasSse2();
using ProcessorFeatureOverride = bool (*)();
void SetProcessorFeatureOverride(ProcessorFeatureOverride override);

}  // namespace vantaro
