// How a field's macroblock rows are dealt to its four slices. `height`
// counts frame lines (both fields): a field's macroblock row is 16 field
// lines, 32 frame lines. Row r belongs to slice r % 4.
#pragma once

#include <cstdint>

namespace vantaro {

constexpr int kSlicesPerField = 4;

struct SliceRows {
  int32_t fullRows;      // whole macroblock rows in this slice
  bool hasPartialRow;    // this slice takes the partial last row
  int32_t partialLines;  // its field lines; 0 when a single frame line is left over
};

inline SliceRows SliceRowsFor(int32_t height, uint32_t slice) {
  const int32_t fullHeight = height & -32;
  const int32_t first = static_cast<int32_t>(32 * slice);
  SliceRows rows{0, false, 0};
  int32_t y = first;
  if (y < fullHeight) {
    rows.fullRows = ((fullHeight - first - 1) >> 7) + 1;
    y = first + 128 * rows.fullRows;
  }
  if (y < height) {
    rows.hasPartialRow = true;
    rows.partialLines = (height - fullHeight) >> 1;
  }
  return rows;
}

}  // namespace vantaro
