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

TEST(GlobalTables, DcCodesCarrySizeCodeThenExtraBitsLowFirst) {
  auto dc = [](const DcCodeTable& t, int d) {
    return Transmitted(t.code[d + 2048], t.length[d + 2048]);
  };
  EXPECT_EQ(dc(Tables().dcLuma, 0), "100");
  EXPECT_EQ(dc(Tables().dcChroma, 0), "00");
  EXPECT_EQ(dc(Tables().dcLuma, -5), "101010");
  EXPECT_EQ(dc(Tables().dcLuma, 5), "101101");
  EXPECT_EQ(dc(Tables().dcLuma, 1), "001");
  EXPECT_EQ(dc(Tables().dcLuma, -1), "000");
  EXPECT_EQ(Tables().dcLuma.length[2048 + 2047], 20);
  EXPECT_EQ(Tables().dcChroma.length[2048 - 2047], 21);
  EXPECT_EQ(Tables().dcLuma.length[0], 0);  // -2048 deliberately has no code
  EXPECT_EQ(Tables().dcLuma.code[0], 0u);
}

TEST(GlobalTables, AcCodesAppendTheSignAndReverse) {
  auto ac = [](int run, int level) {
    const uint32_t e = Tables().acCode[run][level + 2048];
    return Transmitted(e >> 8, e & 0xFF);
  };
  EXPECT_EQ(ac(0, 1), "100");
  EXPECT_EQ(ac(0, -1), "101");
  EXPECT_EQ(Tables().acCode[0][2048 + 1], (1u << 8) | 3u);
  EXPECT_EQ(ac(1, -3), "11110011");
  EXPECT_EQ(ac(16, 1), "00000011010");
  // Run 40 level -300: prefix, run 40 low bit first, 1748 low bit first.
  EXPECT_EQ(ac(40, -300), "000001" "000101" "001010110110");
  // No row for these: escapes of 24 bits.
  for (auto [run, level] : {std::pair{40, 1}, {31, 2}, {1, 21}, {0, 41}, {0, -41}, {62, 5}}) {
    EXPECT_EQ(Tables().acCode[run][level + 2048] & 0xFF, 24u) << run << " " << level;
  }
  EXPECT_EQ(Tables().acCode[31][2048 + 1] & 0xFF, 17u);
}

TEST(GlobalTables, AcRowsFormAPrefixFreeCodeWithEobAndEscape) {
  std::vector<std::string> codes = {kEndOfBlockCode, kEscapePrefix};
  for (const AcRow& row : AcBaseTable) {
    codes.push_back(std::string(row.code) + "0");
    codes.push_back(std::string(row.code) + "1");
    const uint32_t e = Tables().acCode[row.run][row.level + 2048];
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
      const uint32_t length = Tables().alphaPairLength[value][run];
      const uint16_t r = Tables().alphaRunDecode[code & 0x3FF];
      ASSERT_EQ(r & 0xFF, run);
      const uint32_t runLength = r >> 8;
      const uint16_t v = Tables().alphaValueDecode[(code >> runLength) & 0x3FF];
      ASSERT_EQ(v & 0xFF, value);
      ASSERT_EQ(runLength + (v >> 8), length) << value << " " << run;
    }
  }
  EXPECT_EQ(Tables().alphaPairCode[1][0], 2u);
  EXPECT_EQ(Tables().alphaPairLength[1][0], 3);
  EXPECT_EQ(Tables().alphaRunDecode[kAlphaEndMarkerCode], (3 << 8) | 255);
}

TEST(GlobalTables, ColourLuts) {
  EXPECT_EQ(Tables().lutRed[255].lane[0], 2905);
  EXPECT_EQ(Tables().lutRed[255].lane[1], 7693);
  EXPECT_EQ(Tables().lutRed[255].lane[2], 2624);
  for (int lane = 0; lane < 3; ++lane) {
    EXPECT_EQ(Tables().lutLuma[16].lane[lane], 16);
    EXPECT_EQ(Tables().lutCb[128].lane[lane], 0);
    EXPECT_EQ(Tables().lutCr[128].lane[lane], 0);
  }
  // Black gives Y 16, U and V 128; white gives Y 235.
  auto sum = [](int b, int g, int r, int lane) {
    return (Tables().lutBlue[b].lane[lane] + Tables().lutGreen[g].lane[lane] + Tables().lutRed[r].lane[lane]) >> 5;
  };
  EXPECT_EQ(sum(0, 0, 0, 2), 16);
  EXPECT_EQ(sum(0, 0, 0, 0), 128);
  EXPECT_EQ(sum(0, 0, 0, 1), 128);
  EXPECT_EQ(sum(255, 255, 255, 2), 235);
  EXPECT_EQ(sum(255, 255, 255, 0), 128);
  for (int x = 0; x < 256; ++x) EXPECT_EQ(Tables().lutBlue[x].lane[3] | Tables().lutCr[x].lane[3], 0);
}

TEST(GlobalTables, ByteTables) {
  EXPECT_EQ(Tables().trailingOnes[0x7F], 7);
  EXPECT_EQ(Tables().trailingOnes[0xFF], 8);
  EXPECT_EQ(Tables().trailingOnes[0xFE], 0);
  EXPECT_EQ(Tables().topBit[0], 0);
  EXPECT_EQ(Tables().topBit[1], 1);
  EXPECT_EQ(Tables().topBit[0x80], 8);
  EXPECT_EQ(Tables().topBit[0x37], 6);
}

}  // namespace
}  // namespace vantaro
