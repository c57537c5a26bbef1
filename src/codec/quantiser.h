// The quality scale: a quality number snaps to the quantiser-scale ladder,
// and the scale folds into the default intra matrix as two per-instance
// tables, reciprocals for the encoder and multipliers for the decoder.
#pragma once

#include <cstdint>

#include "codec/codec_instance.h"

namespace vantaro {

extern const int32_t QuantiserScaleLadder[32];
extern const int16_t DefaultIntraMatrix[64];

// The scale that quality `q` snaps to (never above 100 - q for q <= 99).
int32_t QuantiserScaleFor(int32_t q);
// Snaps `q` to the ladder; rebuilds the tables only if the quality changes.
void SetQuality(CodecInstance* instance, int32_t q);
// `v` on the 0..10000 scale of the driver interface; 10000..10199 is ignored.
void SetQualityFromIcm(CodecInstance* instance, int32_t v);
// The instance's quality on the 0..10000 scale: (quality - 50) * 200.
int32_t QualityToIcm(const CodecInstance* instance);

}  // namespace vantaro
