#include "codec/quantiser.h"

namespace vantaro {

// The non-linear quantiser_scale table of MPEG-2 (entry 0 is unused there).
const int32_t QuantiserScaleLadder[32] = {
    0,  1,  2,  3,  4,  5,  6,  7,  8,  10, 12, 14, 16, 18,  20,  22,
    24, 28, 32, 36, 40, 44, 48, 52, 56, 64, 72, 80, 88, 96, 104, 112,
};

// The default intra matrix of MPEG-2, raster order (row = vertical frequency).
// Entry 0 is never read: the DC has its own fixed reciprocal and multiplier.
const int16_t DefaultIntraMatrix[64] = {
    8,  16, 19, 22, 26, 27, 29, 34,  //
    16, 16, 22, 24, 27, 29, 34, 37,  //
    19, 22, 26, 27, 29, 34, 34, 38,  //
    22, 22, 26, 27, 29, 34, 37, 40,  //
    22, 26, 27, 29, 32, 35, 40, 48,  //
    26, 27, 29, 32, 35, 40, 48, 58,  //
    26, 27, 29, 34, 38, 46, 56, 69,  //
    27, 29, 35, 38, 46, 56, 69, 83,
};

// Even distances up to 62 are taken as they stand, also where the ladder has
// no such step; odd distances and everything from 63 up snap down the ladder.
// So the scale never exceeds 100 - q, and the rule is idempotent on its output.
int32_t QuantiserScaleFor(int32_t q) {
  const int32_t d = 100 - q;
  if (d < 1) return 1;
  if (d % 2 == 0 && d <= 62) return d;
  for (int i = 1; i < 32; ++i) {
    if (d <= QuantiserScaleLadder[i]) {
      return d == QuantiserScaleLadder[i] ? d : QuantiserScaleLadder[i - 1];
    }
  }
  return d;
}

void SetQuality(CodecInstance* instance, int32_t q) {
  const int32_t scale = QuantiserScaleFor(q);
  const uint32_t quality = static_cast<uint32_t>(100 - scale);
  if (instance->quality == quality) return;
  instance->quality = quality;
  instance->multiplierTable[0] = 16;
  instance->reciprocalTable[0] = 1.0f;
  for (int k = 1; k < 64; ++k) {
    // M[k] * scale / 16, exact in a float (at most 14 significant bits).
    const float f = static_cast<float>((DefaultIntraMatrix[k] * (scale * 2.0)) * 0.03125);
    instance->multiplierTable[k] = static_cast<uint16_t>(DefaultIntraMatrix[k] * scale);
    instance->reciprocalTable[k] = 1.0f / f;
  }
}

void SetQualityFromIcm(CodecInstance* instance, int32_t v) {
  int32_t q = v / 200 + 50;
  // The top of the driver's scale maps to 100, which is ignored: kept as the
  // interface has always behaved.
  if (q == 100) return;
  if (q > 99) q = 99;
  if (q < 50) q = 50;
  SetQuality(instance, q);
}

int32_t QualityToIcm(const CodecInstance* instance) {
  return static_cast<int32_t>((instance->quality - 50u) * 200u);
}

}  // namespace vantaro
