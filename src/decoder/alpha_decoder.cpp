#include "decoder/alpha_decoder.h"

#include <cstring>

#include "codec/global_tables.h"

namespace vantaro::decoder {
namespace {

constexpr uint32_t kHalfBytes = 128;

// No window here: 25 good bits from any position, enough for one run code
// and one value code (20 bits at most).
uint32_t Fetch(const StreamView& stream, uint64_t p) {
  return stream.Load32(p >> 3) >> (p & 7);
}

// Reads one half's differences into `half`. A half that opens with the end
// code has no differences: every line repeats the predictor.
bool ReadHalf(uint8_t* half, const uint8_t* pred, const StreamView& stream, uint64_t& p) {
  const GlobalTables& tables = Tables();
  uint32_t w = Fetch(stream, p);
  uint16_t e = tables.alphaRunDecode[w & 0x3FF];
  p += e >> 8;
  if (static_cast<int8_t>(e & 0xFF) < 0) {
    for (int line = 0; line < 8; ++line) std::memcpy(half + 16 * line, pred, 16);
    return true;
  }
  std::memset(half, 0, kHalfBytes);
  uint32_t dest = 0;
  do {
    const uint32_t len = e >> 8;
    dest += e & 0xFF;
    if (dest >= kHalfBytes) return false;
    const uint16_t v = tables.alphaValueDecode[(w >> len) & 0x3FF];
    half[dest++] = static_cast<uint8_t>(v & 0xFF);
    p += v >> 8;
    w = Fetch(stream, p);
    e = tables.alphaRunDecode[w & 0x3FF];
    p += e >> 8;
  } while (static_cast<int8_t>(e & 0xFF) >= 0);
  // Undo the differencing, line after line: previous minus current. Through
  // a local line, so that the byte loop need not fear overlap and vectorises.
  uint8_t above[16];
  std::memcpy(above, pred, 16);
  for (int line = 0; line < 8; ++line) {
    uint8_t difference[16];
    std::memcpy(difference, half + 16 * line, 16);
    for (int c = 0; c < 16; ++c) above[c] = static_cast<uint8_t>(above[c] - difference[c]);
    std::memcpy(half + 16 * line, above, 16);
  }
  return true;
}

}  // namespace

bool ReadAlphaPlane(MacroblockScratch& scratch, const StreamView& stream, uint64_t& bitPos) {
  uint8_t* plane = scratch.Alpha();
  uint64_t p = bitPos;
  if (!ReadHalf(plane, scratch.alphaRowPredictor, stream, p)) return false;
  if (!ReadHalf(plane + kHalfBytes, plane + kHalfBytes - 16, stream, p)) return false;
  std::memcpy(scratch.alphaRowPredictor, plane + 240, 16);
  bitPos = p;
  return true;
}

}  // namespace vantaro::decoder
