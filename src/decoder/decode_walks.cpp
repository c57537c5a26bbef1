// Placeholder until the decoder's walks land: every slice decodes to nothing.
#include "codec/slice_walks.h"

namespace vantaro {

DecodeSliceWalkFn FindDecodeSliceWalk(ChromaArm, uint32_t, bool) { return nullptr; }

}  // namespace vantaro
