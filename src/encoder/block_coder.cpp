#include "encoder/block_coder.h"

#include "codec/code_rows.h"
#include "codec/global_tables.h"

namespace vantaro::encoder {
namespace {

constexpr uint32_t kEndOfBlock = StreamOrder(ParseCode(kEndOfBlockCode));
constexpr uint32_t kEndOfBlockLength = ParseCode(kEndOfBlockCode).length;

// One past the last non-zero scan position, found from the top byte of the
// inverted mask that is not zero; 0 for an all-zero block.
uint32_t LastPosition(uint64_t nonZero) {
  for (int i = 7; i >= 0; --i) {
    const uint32_t byte = static_cast<uint32_t>(nonZero >> (8 * i)) & 255u;
    if (byte != 0) return Tables().topBit[byte] + 8u * static_cast<uint32_t>(i);
  }
  return 0;
}

void EncodeBlock(const DcCodeTable& dc, const int16_t* block, BitWriter& writer) {
  const GlobalTables& tables = Tables();
  const uint64_t zeros = ZeroMask(block);
  const uint32_t last = LastPosition(~zeros);
  if (last == 0) {
    PutCode(writer, dc.code[2048], dc.length[2048]);
  } else {
    const uint32_t dcIndex = static_cast<uint32_t>(block[0] + 2048);
    PutCode(writer, dc.code[dcIndex], dc.length[dcIndex]);
    uint64_t w = zeros >> 1;
    uint32_t position = 1;
    while (position < last) {
      uint32_t run = 0;
      uint32_t t;
      do {
        t = tables.trailingOnes[w & 255u];
        w >>= t;
        run += t;
      } while (t == 8);
      position += run;
      const uint32_t entry = tables.acCode[run][block[position] + 2048];
      PutCode(writer, entry >> 8, entry & 255u);
      w >>= 1;
      ++position;
    }
  }
  PutCode(writer, kEndOfBlock, kEndOfBlockLength);
}

}  // namespace

void ZigzagBlock(int16_t* destination, const int16_t* source) {
  for (int s = 0; s < 64; ++s) destination[s] = source[ZigzagScan[s]];
}

uint64_t ZeroMask(const int16_t* block) {
  uint64_t mask = 0;
  for (int s = 0; s < 64; ++s) mask |= static_cast<uint64_t>(block[s] == 0) << s;
  return mask;
}

void EncodeLumaBlock(const CodecInstance&, const int16_t* block, BitWriter& writer) {
  EncodeBlock(Tables().dcLuma, block, writer);
}

void EncodeChromaBlock(const CodecInstance&, const int16_t* block, BitWriter& writer) {
  EncodeBlock(Tables().dcChroma, block, writer);
}

}  // namespace vantaro::encoder
