// The 4:2:2 walks, with and without DCT alpha.
#include "encoder/encode_walks.h"

namespace vantaro::encoder {

EncodeSliceWalkFn FindEncodeSliceWalk422(uint32_t colorSpace, bool hasAlpha, bool dctArm) {
  return dctArm ? walks::Find<Family::k422, true>(colorSpace, hasAlpha)
                : walks::Find<Family::k422, false>(colorSpace, hasAlpha);
}

}  // namespace vantaro::encoder
