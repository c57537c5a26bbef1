// A layout's facts as compile-time traits for the walks, and where a slice's
// second plane starts. The encoder's loaders and the decoder's stores derive
// from LayoutTraits<Id>, so both directions move through a picture alike.
#pragma once

#include <cstdint>

#include "codec/codec_instance.h"
#include "codec/layout_facts.h"

namespace vantaro {

template <uint32_t Id>
struct LayoutTraits {
  static constexpr const LayoutFacts& kFacts = kLayouts[Id];
  static constexpr bool kHasSecond = kFacts.second != SecondPlane::kNone;
  static constexpr bool kPlanar = kFacts.second == SecondPlane::kChroma;
  static constexpr bool kPlaneSet = kFacts.second == SecondPlane::kPlanes;
  static constexpr bool kLumaAlpha = kFacts.lumaAlpha;
  static constexpr bool kFullWidthChroma = FullWidthChroma(kFacts);
  static constexpr bool kHalfHeightChroma = HalfHeightChroma(kFacts);
  static constexpr bool kHasAlpha = kFacts.hasAlpha;
  static constexpr int kChromaShiftX = kFacts.chromaShiftX;
  // Chroma samples of one macroblock line of the layout.
  static constexpr int kChromaSamples = 16 >> kChromaShiftX;
  // Main-plane bytes of one macroblock column (16 pixels).
  static constexpr int32_t kColumnBytes = 16 * kFacts.pixelBytes;
  static constexpr int32_t kSecondStep = SecondStep(kFacts);

  // The second plane's first line for `slice` of a field with stride t:
  // `chroma` moved 16 units a slice for the planar layouts. The csUYVA alpha
  // plane lies behind the field's image lines; a field of a whole-frame call
  // other than the first finds it from frameBase, one alpha line (width
  // bytes) further on, as both directions have always done.
  template <class Byte>
  static Byte* SecondStart(const CodecInstance& instance, Byte* picture, Byte* chroma, int64_t t,
                           uint32_t slice) {
    const int64_t sliceMove = 16 * SecondUnit(kFacts, t) * slice;
    if constexpr (kPlanar) {
      return chroma + sliceMove;
    } else if constexpr (kHasSecond) {
      const int64_t half = static_cast<int64_t>(instance.height / 2) * t;
      if (instance.frameBase == nullptr || instance.frameBase == picture) {
        return picture + half + sliceMove;
      }
      return const_cast<Byte*>(instance.frameBase) + half + instance.width + sliceMove;
    } else {
      return nullptr;
    }
  }
  // A slice's next macroblock row is four rows, 64 field lines, further.
  static constexpr int64_t SecondRowMove(int64_t t) { return 64 * SecondUnit(kFacts, t); }
  static constexpr int64_t SecondLineStride(int64_t t) { return SecondLineDistance(kFacts, t); }
};

// One field of a plane-set picture, as the walks over the plane-set layouts
// take it in place of `picture`. Plane pointers are the frame's top lines and
// strides frame line distances (signed), so field line L is frame line
// 2L + field. 4:2:0 chroma is read with interlaced siting: chroma line k
// belongs to field k & 1. Loaders clamp every line and column into the
// picture (the coded size is the picture edge-replicated); stores write
// nothing outside it.
template <class Byte>
struct PlaneField {
  Byte* planes[4];     // Y, U, V, alpha (alpha null where the layout has none)
  int64_t strides[4];
  int32_t width;       // the picture's size in pixels, frame lines
  int32_t height;
  int32_t chromaWidth;  // the chroma planes' size
  int32_t chromaHeight;
  int32_t field;        // 0: even frame lines, 1: odd

  // Frame line of field line L, clamped into the picture.
  int32_t FrameLine(int32_t L) const {
    const int32_t y = 2 * L + field;
    return y < height ? y : height - 1;
  }
  // Frame chroma line of 4:2:0 field chroma row M, clamped into the plane.
  int32_t ChromaLine420(int32_t M) const {
    const int32_t y = 2 * M + field;
    return y < chromaHeight ? y : chromaHeight - 1;
  }
  Byte* Line(int plane, int32_t y) const { return planes[plane] + strides[plane] * y; }
};

}  // namespace vantaro
