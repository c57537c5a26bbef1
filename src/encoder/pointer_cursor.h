// The one-plane and two-plane loaders seen through the walk's cursor: a
// macroblock's place is a main-plane pointer and a second-plane pointer,
// each moved by the loader's column step. The arithmetic is the walk's own
// from before plane sets existed; the streams depend on every term of it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/layout_traits.h"
#include "codec/slice_layout.h"
#include "encoder/encoder_kernels.h"

namespace vantaro::encoder {

template <class Loader>
struct PointerCursor : Loader {
  struct Cursor {
    const uint8_t* main;
    const uint8_t* second;
  };

  // Row r of the field's macroblock rows starts 16 * r field lines down.
  // Its second-plane lines move with it, SecondRowMove per slice row.
  static Cursor RowStart(const CodecInstance& instance, const uint8_t* picture,
                         const uint8_t* chroma, int32_t stride, uint32_t slice, int32_t r) {
    Cursor c{picture + static_cast<ptrdiff_t>(stride) * 16 * r, nullptr};
    if constexpr (Loader::kHasSecond) {
      c.second = Loader::SecondStart(instance, picture, chroma, stride, slice) +
                 Loader::SecondRowMove(stride) * ((r - static_cast<int32_t>(slice)) / kSlicesPerField);
    }
    return c;
  }
  static void Next(Cursor& c) {
    c.main += Loader::kMainStep;
    if constexpr (Loader::kHasSecond) c.second += Loader::kSecondStep;
  }

  template <Family F, AlphaCoding A>
  static void LoadRows(const LoaderKernels& k, MacroblockScratch& s, const Cursor& c, int32_t pu,
                       int rows) {
    Loader::template LoadRows<F, A>(k, s, c.main, c.second, pu, rows);
  }
  template <Family F, AlphaCoding A>
  static void LoadPartial(const LoaderKernels& k, MacroblockScratch& s, const Cursor& c,
                          int32_t pu, int lines) {
    Loader::template LoadPartial<F, A>(k, s, c.main, c.second, pu, lines);
  }
};

}  // namespace vantaro::encoder
