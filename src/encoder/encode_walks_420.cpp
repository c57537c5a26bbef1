// The 4:2:0 walks. The 4:2:0 arm with DCT alpha is reached by no stream
// format and has no walks.
#include "encoder/encode_walks.h"

namespace vantaro::encoder {

EncodeSliceWalkFn FindEncodeSliceWalk420(uint32_t colorSpace, bool hasAlpha) {
  return walks::Find<Family::k420, false>(colorSpace, hasAlpha);
}

}  // namespace vantaro::encoder
