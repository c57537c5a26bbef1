// The encoder's second level of dispatch: arm, colour space and hasAlpha to
// a slice walk, once per slice.
#include "encoder/encode_walks.h"

namespace vantaro {

EncodeSliceWalkFn FindEncodeSliceWalk(ChromaArm arm, uint32_t colorSpace, bool hasAlpha) {
  using namespace encoder;
  switch (arm) {
    case ChromaArm::k420: return FindEncodeSliceWalk420(colorSpace, hasAlpha);
    case ChromaArm::k422: return FindEncodeSliceWalk422(colorSpace, hasAlpha, false);
    case ChromaArm::k422Dct: return FindEncodeSliceWalk422(colorSpace, hasAlpha, true);
    case ChromaArm::k444: return FindEncodeSliceWalk444(colorSpace, hasAlpha, false);
    case ChromaArm::k444Dct: return FindEncodeSliceWalk444(colorSpace, hasAlpha, true);
    default: return nullptr;  // 4:2:0 with DCT alpha: unreachable from any FourCC
  }
}

}  // namespace vantaro
