// The 4:4:4 walks, with and without DCT alpha.
#include "encoder/encode_walks.h"

namespace vantaro::encoder {

EncodeSliceWalkFn FindEncodeSliceWalk444(uint32_t colorSpace, bool hasAlpha, bool dctArm) {
  return dctArm ? walks::Find<Family::k444, true>(colorSpace, hasAlpha)
                : walks::Find<Family::k444, false>(colorSpace, hasAlpha);
}

}  // namespace vantaro::encoder
