#include "encoder/alpha_coder.h"

#include <bit>
#include <cstring>

#include "codec/global_tables.h"

namespace vantaro::encoder {
namespace {

// One past the last non-zero byte: whole 32-bit words of the zero mask from
// the top first, then the bits of the first word that has a non-zero byte.
uint32_t LastNonZero(const uint32_t (&zeroWords)[4]) {
  for (int w = 3; w >= 0; --w) {
    const uint32_t nonZero = ~zeroWords[w];
    if (nonZero != 0) return 32u * static_cast<uint32_t>(w) + 32u - std::countl_zero(nonZero);
  }
  return 0;
}

// Rows 0..7 of `rows` become previous minus current, in 8-bit wrap;
// `previous` ends as the last row as it was loaded.
void DifferenceHalf(uint8_t* rows, uint8_t* previous) {
  for (int r = 0; r < 8; ++r) {
    uint8_t* row = rows + 16 * r;
    for (int c = 0; c < 16; ++c) {
      const uint8_t loaded = row[c];
      row[c] = static_cast<uint8_t>(previous[c] - loaded);
      previous[c] = loaded;
    }
  }
}

}  // namespace

void EncodeAlphaHalf(const uint8_t* rows, BitWriter& writer) {
  uint32_t zeroWords[4] = {0, 0, 0, 0};
  for (uint32_t i = 0; i < 128; ++i) zeroWords[i >> 5] |= static_cast<uint32_t>(rows[i] == 0) << (i & 31);
  const uint32_t last = LastNonZero(zeroWords);
  const GlobalTables& tables = Tables();
  uint32_t run = 0;
  for (uint32_t i = 0; i < last; ++i) {
    const uint8_t v = rows[i];
    if (v == 0) {
      ++run;
      continue;
    }
    PutCode(writer, tables.alphaPairCode[v][run], tables.alphaPairLength[v][run]);
    run = 0;
  }
  PutAlphaEndMarker(writer);
}

void EncodeAlphaPlane(MacroblockScratch& scratch, BitWriter& writer) {
  uint8_t* alpha = scratch.Alpha();
  // The predictor runs across the halves (row 8 from row 7) and on into the
  // next macroblock of the row, where row 0 is predicted from this row 15.
  uint8_t previous[16];
  std::memcpy(previous, scratch.alphaRowPredictor, 16);
  DifferenceHalf(alpha, previous);
  EncodeAlphaHalf(alpha, writer);
  DifferenceHalf(alpha + 128, previous);
  EncodeAlphaHalf(alpha + 128, writer);
  std::memcpy(scratch.alphaRowPredictor, previous, 16);
}

}  // namespace vantaro::encoder
