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
  static constexpr bool kLumaAlpha = kFacts.lumaAlpha;
  static constexpr bool kFullWidthChroma = FullWidthChroma(kFacts);
  static constexpr bool kHalfHeightChroma = HalfHeightChroma(kFacts);
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

}  // namespace vantaro
