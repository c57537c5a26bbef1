// The one-plane and two-plane stores seen through the walk's cursor: a
// macroblock's place is the Planes record, its pointers moved by the store's
// column step. The arithmetic is the walk's own from before plane sets
// existed; the decoded bytes depend on every term of it.
#pragma once

#include <cstdint>

#include "codec/layout_traits.h"
#include "decoder/output_stores.h"

namespace vantaro::decoder {

template <class Store>
struct PlanesCursor : Store {
  using Cursor = Planes;

  // Slice-local row n of `slice`: field macroblock row slice + 4n.
  static Cursor RowStart(const CodecInstance& inst, uint8_t* picture, uint8_t* chroma, int64_t t,
                         uint32_t slice, int32_t n) {
    uint8_t* second = nullptr;
    if constexpr (Store::kHasSecond) {
      if (!(Store::kPlanar && chroma == nullptr)) {
        second = Store::SecondStart(inst, picture, chroma, t, slice) + Store::SecondRowMove(t) * n;
      }
    }
    return {picture + t * (16 * static_cast<int64_t>(slice) + 64 * static_cast<int64_t>(n)), second, t,
            Store::SecondLineStride(t)};
  }
  static void Next(Cursor& p) {
    p.main += Store::kMainStep;
    if (p.second != nullptr) p.second += Store::kSecondStep;
  }
};

}  // namespace vantaro::decoder
