// The table of encoder walk instantiations, one part per chroma family.
#pragma once

#include <cstdint>

#include "codec/slice_walks.h"
#include "encoder/encode_walk.h"
#include "encoder/packed_loaders.h"
#include "encoder/planar_loaders.h"

namespace vantaro::encoder {

// The walk of one family for a colour space: `dctArm` is the dispatcher with
// DCT alpha, where every walk codes the four alpha blocks.
EncodeSliceWalkFn FindEncodeSliceWalk420(uint32_t colorSpace, bool hasAlpha);
EncodeSliceWalkFn FindEncodeSliceWalk422(uint32_t colorSpace, bool hasAlpha, bool dctArm);
EncodeSliceWalkFn FindEncodeSliceWalk444(uint32_t colorSpace, bool hasAlpha, bool dctArm);

namespace walks {

template <class Layout, Family F, bool kDctArm, bool kExtraEndMarkers = false>
EncodeSliceWalkFn ByAlpha(bool hasAlpha) {
  if constexpr (kDctArm) {
    return &EncodeWalk<Layout, F, AlphaCoding::kDct, false>;
  } else {
    return hasAlpha ? &EncodeWalk<Layout, F, AlphaCoding::kRunValue, kExtraEndMarkers>
                    : &EncodeWalk<Layout, F, AlphaCoding::kNone, false>;
  }
}

// The rows of one dispatcher. csYUY2 and csUYVY never code alpha (but a DCT
// arm always does); csUYVA and csAYUV always do; the rest follow hasAlpha.
// In a DCT arm the alpha those sources lack is supplied opaque by the loader.
template <Family F, bool kDctArm>
EncodeSliceWalkFn Find(uint32_t colorSpace, bool hasAlpha) {
  switch (colorSpace) {
    case kCsNV12: return ByAlpha<PlanarLoader<kCsNV12>, F, kDctArm>(hasAlpha);
    case kCsNV16: return ByAlpha<PlanarLoader<kCsNV16>, F, kDctArm>(hasAlpha);
    case kCsNV24: return ByAlpha<PlanarLoader<kCsNV24>, F, kDctArm>(hasAlpha);
    case kCsYA20: return ByAlpha<PlanarLoader<kCsYA20>, F, kDctArm>(hasAlpha);
    case kCsYA22: return ByAlpha<PlanarLoader<kCsYA22>, F, kDctArm>(hasAlpha);
    case kCsYA44: return ByAlpha<PlanarLoader<kCsYA44>, F, kDctArm>(hasAlpha);
    case kCsYUY2: return ByAlpha<PackedLoader<kCsYUY2>, F, kDctArm>(false);
    case kCsUYVY: return ByAlpha<PackedLoader<kCsUYVY>, F, kDctArm>(false);
    case kCsUYVA: return ByAlpha<PackedLoader<kCsUYVA>, F, kDctArm>(true);
    case kCsAYUV: return ByAlpha<PackedLoader<kCsAYUV>, F, kDctArm>(true);
    case kCsRGB24: return ByAlpha<PackedLoader<kCsRGB24>, F, kDctArm, true>(hasAlpha);
    case kCsRGB32: return ByAlpha<PackedLoader<kCsRGB32>, F, kDctArm>(hasAlpha);
    default: return nullptr;  // Invalid, csYV12: the slice stays empty
  }
}

}  // namespace walks
}  // namespace vantaro::encoder
