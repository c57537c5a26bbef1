// The encoder's slice walk: one skeleton over a layout (a loader with its
// cursor: RowStart, Next, LoadRows, LoadPartial), a chroma family and an
// alpha coding. It visits the slice's macroblock rows (rows slice,
// slice + 4, ...), resets the predictors at the start of each, and per
// macroblock runs the layout's loader and the family's macroblock encoder.
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/bit_stream.h"
#include "codec/codec_instance.h"
#include "codec/macroblock_scratch.h"
#include "codec/slice_layout.h"
#include "encoder/encoder_kernels.h"
#include "encoder/loader_place.h"
#include "encoder/macroblock_encoder.h"
#include "encoder/staged_writer.h"

namespace vantaro::encoder {

// kExtraEndMarkers: the csRGB24 walks with run/value alpha write two more
// alpha end markers after every macroblock. Readers take those 6 bits as
// the next macroblock's start; kept as the format has it.
template <class Layout, Family F, AlphaCoding A, bool kExtraEndMarkers>
Status EncodeWalk(const CodecInstance& instance, const Kernels& kernels, BitWriter& writer, const uint8_t* picture,
                const uint8_t* chroma, int32_t stride, uint32_t slice) {
  const int32_t columns = instance.width / 16;
  const SliceRows rows = SliceRowsFor(instance.height, slice);
  if (columns <= 0 || (rows.fullRows == 0 && !rows.hasPartialRow)) return Status::kOk;
  const ForwardKernels& blocks = *kernels.forward;
  const LoaderKernels& loaders = *kernels.loaders;
  const int32_t pu = stride / 16;  // loaders' line distance: the pitch rounded toward zero
  MacroblockScratch scratch{};

  const auto encode = [&](BitWriter& w) {
    EncodeMacroblock<F, A>(instance, blocks, scratch, w);
    if constexpr (kExtraEndMarkers) {
      PutAlphaEndMarker(w);
      PutAlphaEndMarker(w);
    }
  };
  // Where row r's macroblocks lie: the layout's cursor, one column a step.
  const auto rowStart = [&](int32_t r) {
    return Layout::RowStart(instance, picture, chroma, stride, slice, r);
  };

  int32_t row = static_cast<int32_t>(slice);
  for (int32_t n = 0; n < rows.fullRows; ++n, row += kSlicesPerField) {
    scratch.ResetPredictors();
    auto at = rowStart(row);
    for (int32_t c = 0; c < columns; ++c) {
      Layout::template LoadRows<F, A>(loaders, scratch, at, pu, 16);
      VANTARO_RETURN_IF_ERROR(EncodeWithinCapacity(writer, encode));
      Layout::Next(at);
    }
  }
  if (!rows.hasPartialRow) return Status::kOk;
  scratch.ResetPredictors();
  const int lines = rows.partialLines;
  if (lines == 0) {
    for (int32_t c = 0; c < columns; ++c) {
      place::FillFlat<F, A>(scratch);
      VANTARO_RETURN_IF_ERROR(EncodeWithinCapacity(writer, encode));
    }
    return Status::kOk;
  }
  auto at = rowStart(row);
  for (int32_t c = 0; c < columns; ++c) {
    Layout::template LoadPartial<F, A>(loaders, scratch, at, pu, lines);
    VANTARO_RETURN_IF_ERROR(EncodeWithinCapacity(writer, encode));
    Layout::Next(at);
  }
  return Status::kOk;
}

}  // namespace vantaro::encoder
