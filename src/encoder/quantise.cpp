#include "encoder/quantise.h"

#include <cmath>

namespace vantaro::encoder {

void QuantiseBlockScalar(int16_t* block, const float* reciprocals) {
  block[0] = static_cast<int16_t>(static_cast<uint16_t>(block[0]) - 1024u);
  for (int i = 0; i < 64; ++i) {
    // Single-precision product; nearbyint rounds half to even in the default mode.
    float r = std::nearbyint(static_cast<float>(block[i]) * reciprocals[i]);
    if (r > 32767.0f) r = 32767.0f;
    if (r < -32768.0f) r = -32768.0f;
    block[i] = static_cast<int16_t>(r);
  }
}

uint64_t NonZeroMaskScalar(const int16_t* block) {
  uint64_t mask = 0;
  for (int k = 0; k < 64; ++k) mask |= static_cast<uint64_t>(block[k] != 0) << k;
  return mask;
}

}  // namespace vantaro::encoder
