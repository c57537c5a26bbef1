// What a damaged slice leaves in a plane-set picture: its lines mid-grey.
#include <cstring>

#include "codec/slice_layout.h"
#include "native/native_common.h"

namespace vantaro::native {

namespace {

void Grey(const PlaneField<uint8_t>& f, int plane, int32_t y, int32_t bytes) {
  std::memset(f.Line(plane, y), 128, static_cast<size_t>(bytes));
}

// Field macroblock row r of `f`: its 16 field lines and their chroma.
void GreyRow(const PlaneField<uint8_t>& f, bool halfHeightChroma, int32_t r) {
  for (int32_t i = 0; i < 16; ++i) {
    const int32_t y = 2 * (16 * r + i) + f.field;
    if (y >= f.height) break;
    Grey(f, 0, y, f.width);
    if (f.planes[3] != nullptr) Grey(f, 3, y, f.width);
    if (!halfHeightChroma) {
      Grey(f, 1, y, f.chromaWidth);
      Grey(f, 2, y, f.chromaWidth);
    }
  }
  for (int32_t m = 0; halfHeightChroma && m < 8; ++m) {
    const int32_t y = 2 * (8 * r + m) + f.field;
    if (y >= f.chromaHeight) break;
    Grey(f, 1, y, f.chromaWidth);
    Grey(f, 2, y, f.chromaWidth);
  }
}

}  // namespace

void GreyDamagedSlices(const vantaro_picture& picture, int32_t codedHeight, uint32_t damage) {
  const bool halfHeight = HalfHeightChroma(LayoutOf(FactsOf(picture.format).layout));
  const int32_t fieldRows = (codedHeight / 2 + 15) / 16;
  for (int32_t field = 0; field < 2; ++field) {
    const PlaneField<uint8_t> f = FieldOf<uint8_t>(picture, field);
    for (int32_t slice = 0; slice < kSlicesPerField; ++slice) {
      if ((damage >> (4 * field + slice) & 1u) == 0) continue;
      for (int32_t r = slice; r < fieldRows; r += kSlicesPerField) GreyRow(f, halfHeight, r);
    }
  }
}

}  // namespace vantaro::native
