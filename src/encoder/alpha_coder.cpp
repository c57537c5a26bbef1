#include "encoder/alpha_coder.h"

#include <bit>
#include <cstring>

#include "codec/global_tables.h"
#include "encoder/block_codes.h"

namespace vantaro::encoder {
namespace {

// One past the last non-zero byte of the 128: whole 8-byte words from the
// top first, then the bytes of the first word that is not all zero.
uint32_t LastNonZero(const uint8_t* rows) {
  for (uint32_t w = 16; w > 0; --w) {
    uint64_t word;
    std::memcpy(&word, rows + 8 * (w - 1), 8);
    if (word != 0) return 8 * w - static_cast<uint32_t>(std::countl_zero(word)) / 8;
  }
  return 0;
}

// Rows 0..7 of `rows` become previous minus current, in 8-bit wrap;
// `previous` ends as the last row as it was loaded. Line by line through
// local copies, so that the byte loops need not fear overlap and vectorise.
void DifferenceHalf(uint8_t* rows, uint8_t* previous) {
  uint8_t above[16];
  std::memcpy(above, previous, 16);
  for (int r = 0; r < 8; ++r) {
    uint8_t loaded[16], difference[16];
    std::memcpy(loaded, rows + 16 * r, 16);
    for (int c = 0; c < 16; ++c) difference[c] = static_cast<uint8_t>(above[c] - loaded[c]);
    std::memcpy(rows + 16 * r, difference, 16);
    std::memcpy(above, loaded, 16);
  }
  std::memcpy(previous, above, 16);
}

}  // namespace

void EncodeAlphaHalf(const uint8_t* rows, BitWriter& writer) {
  const uint32_t last = LastNonZero(rows);
  const GlobalTables& tables = Tables();
  // The block coder's writer: codes gather in a 64-bit accumulator, stored
  // after every second one (a pair is 20 bits at most).
  CodeWriter w = CodeWriter::From(writer);
  uint32_t run = 0;
  bool second = false;
  for (uint32_t i = 0; i < last; ++i) {
    const uint8_t v = rows[i];
    if (v == 0) {
      ++run;
      continue;
    }
    w.Add(tables.alphaPairCode[v][run], tables.alphaPairLength[v][run]);
    if (second) w.Flush();
    second = !second;
    run = 0;
  }
  w.Add(kAlphaEndMarkerCode, kAlphaEndMarkerLength);
  w.Flush();
  w.To(writer);
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
