// The tables derived from the code rows: every code word round-trips and the
// AC code is prefix-free with end of block and the escape.
#include <gtest/gtest.h>

#include "codec/code_rows.h"
#include "codec/global_tables.h"

namespace vantaro {
namespace {

// Reads a stream-order code back as the transmitted bit string.
std::string Transmitted(uint32_t code, uint32_t length) {
  std::string bits;
  for (uint32_t i = 0; i < length; ++i) bits += ((code >> i) & 1) ? '1' : '0';
  return bits;
}

TEST(GlobalTables, AcRowsFormAPrefixFreeCodeWithEobAndEscape) {
  std::vector<std::string> codes = {kEndOfBlockCode, kEscapePrefix};
  for (const AcRow& row : AcBaseTable) {
    codes.push_back(std::string(row.code) + "0");
    codes.push_back(std::string(row.code) + "1");
    const uint32_t e = Tables().acCode[row.level + 2048][row.run];
    EXPECT_EQ(Transmitted(e >> 8, e & 0xFF), std::string(row.code) + "0");
  }
  for (size_t i = 0; i < codes.size(); ++i) {
    for (size_t j = 0; j < codes.size(); ++j) {
      if (i == j) continue;
      EXPECT_NE(codes[j].rfind(codes[i], 0), 0u) << codes[i] << " prefixes " << codes[j];
    }
  }
}

TEST(GlobalTables, AlphaPairsDecodeBackThroughTheReaderTables) {
  for (int value = 1; value < 256; ++value) {
    for (int run = 0; run < 128; ++run) {
      const uint32_t code = Tables().alphaPairCode[value][run];
      const uint16_t r = Tables().alphaRunDecode[code & 0x3FF];
      const uint16_t v = Tables().alphaValueDecode[(code >> (r >> 8)) & 0x3FF];
      ASSERT_EQ(r & 0xFF, run);
      ASSERT_EQ(v & 0xFF, value);
      ASSERT_EQ((r >> 8) + (v >> 8), Tables().alphaPairLength[value][run]) << value << " " << run;
    }
  }
  EXPECT_EQ(Tables().alphaRunDecode[kAlphaEndMarkerCode], (3 << 8) | 255);
}

}  // namespace
}  // namespace vantaro
