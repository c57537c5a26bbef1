// The table of encoder walk instantiations, one part per chroma family.
#pragma once

#include <cstdint>

#include "codec/slice_walks.h"
#include "encoder/encode_walk.h"
#include "encoder/packed_loaders.h"
#include "encoder/plane_set_loaders.h"
#include "encoder/planar_loaders.h"
#include "encoder/pointer_cursor.h"

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

template <ColorSpace CS>
using Planar = PointerCursor<PlanarLoader<CS>>;
template <ColorSpace CS>
using Packed = PointerCursor<PackedLoader<CS>>;

// The rows of one dispatcher. csYUY2 and csUYVY never code alpha (but a DCT
// arm always does); csUYVA and csAYUV always do; the rest follow hasAlpha.
// In a DCT arm the alpha those sources lack is supplied opaque by the loader.
// The plane sets follow hasAlpha, opaque where they have no alpha plane.
template <Family F, bool kDctArm>
EncodeSliceWalkFn Find(uint32_t colorSpace, bool hasAlpha) {
  switch (colorSpace) {
    case kCsNV12: return ByAlpha<Planar<kCsNV12>, F, kDctArm>(hasAlpha);
    case kCsNV16: return ByAlpha<Planar<kCsNV16>, F, kDctArm>(hasAlpha);
    case kCsNV24: return ByAlpha<Planar<kCsNV24>, F, kDctArm>(hasAlpha);
    case kCsYA20: return ByAlpha<Planar<kCsYA20>, F, kDctArm>(hasAlpha);
    case kCsYA22: return ByAlpha<Planar<kCsYA22>, F, kDctArm>(hasAlpha);
    case kCsYA44: return ByAlpha<Planar<kCsYA44>, F, kDctArm>(hasAlpha);
    case kCsYUY2: return ByAlpha<Packed<kCsYUY2>, F, kDctArm>(false);
    case kCsUYVY: return ByAlpha<Packed<kCsUYVY>, F, kDctArm>(false);
    case kCsUYVA: return ByAlpha<Packed<kCsUYVA>, F, kDctArm>(true);
    case kCsAYUV: return ByAlpha<Packed<kCsAYUV>, F, kDctArm>(true);
    case kCsRGB24: return ByAlpha<Packed<kCsRGB24>, F, kDctArm, true>(hasAlpha);
    case kCsRGB32: return ByAlpha<Packed<kCsRGB32>, F, kDctArm>(hasAlpha);
    case kPlanesYUV420: return ByAlpha<PlaneSetLoader<kPlanesYUV420>, F, kDctArm>(hasAlpha);
    case kPlanesYUVA420: return ByAlpha<PlaneSetLoader<kPlanesYUVA420>, F, kDctArm>(hasAlpha);
    case kPlanesYUV422: return ByAlpha<PlaneSetLoader<kPlanesYUV422>, F, kDctArm>(hasAlpha);
    case kPlanesYUVA422: return ByAlpha<PlaneSetLoader<kPlanesYUVA422>, F, kDctArm>(hasAlpha);
    case kPlanesYUV444: return ByAlpha<PlaneSetLoader<kPlanesYUV444>, F, kDctArm>(hasAlpha);
    case kPlanesYUVA444: return ByAlpha<PlaneSetLoader<kPlanesYUVA444>, F, kDctArm>(hasAlpha);
    default: return nullptr;  // Invalid, csYV12: the slice stays empty
  }
}

}  // namespace walks
}  // namespace vantaro::encoder
