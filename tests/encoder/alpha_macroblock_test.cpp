// Whole macroblocks bit by bit: the cost of flat ones in each family and
// alpha coding, and DC prediction across blocks and macroblocks.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "codec/global_tables.h"
#include "codec/macroblock_scratch.h"
#include "encoder/loader_place.h"
#include "encoder/macroblock_encoder.h"
#include "support/pictures.h"

namespace vantaro::encoder {
namespace {

struct Writer {
  alignas(16) uint8_t buffer[8192] = {};
  BitWriter w{buffer, 0, 0, sizeof buffer};
  std::string Bits(uint64_t from, int n) { return test::BitPeek(buffer, from).Bits(n); }
};

template <Family F, AlphaCoding A>
uint32_t FlatMacroblockBits(MacroblockScratch& s, int16_t luma, int16_t chroma, Writer& out) {
  LineSamples l;
  for (int c = 0; c < 16; ++c) {
    l.y[c] = luma;
    l.u[c] = l.v[c] = chroma;
    l.a[c] = 255;
  }
  for (int r = 0; r < 16; ++r) {
    place::PutLuma(s, r, l.y);
    if (F != Family::k420 || r < 8) place::PutChroma<F, true>(s, r, l.u, l.v);
    place::PutAlpha<A>(s, r, l.a);
  }
  test::TestInstance instance(test::FourCC("VTQ0"), kCsNV12, 16, 32);
  const uint32_t before = out.w.bitPos;
  EncodeMacroblock<F, A>(*instance.get(), kForwardKernelsScalar, s, out.w);
  return out.w.bitPos - before;
}

TEST(MacroblockEncoder, FlatGreyCostsTheLeastBitsOfEachMember) {
  const struct {
    uint32_t (*code)(MacroblockScratch&, int16_t, int16_t, Writer&);
    uint32_t bits;
  } cases[] = {
      {FlatMacroblockBits<Family::k420, AlphaCoding::kNone>, 4 * 7 + 2 * 6},
      {FlatMacroblockBits<Family::k420, AlphaCoding::kRunValue>, 4 * 7 + 2 * 6 + 6},
      {FlatMacroblockBits<Family::k422, AlphaCoding::kNone>, 4 * 7 + 4 * 6},
      {FlatMacroblockBits<Family::k444, AlphaCoding::kRunValue>, 4 * 7 + 8 * 6 + 6},
      // Opaque DCT alpha is a white luma-like plane: its first block codes -1016.
      {FlatMacroblockBits<Family::k444, AlphaCoding::kDct>, 4 * 7 + 8 * 6 + (9 + 10 + 4) + 3 * 7},
  };
  for (const auto& c : cases) {
    MacroblockScratch s{};
    s.ResetPredictors();
    Writer out;
    EXPECT_EQ(c.code(s, 128, 128, out), c.bits);
  }
}

TEST(MacroblockEncoder, DcIsPredictedAcrossBlocksAndMacroblocksPerPlane) {
  MacroblockScratch s{};
  s.ResetPredictors();
  Writer out;
  // White luma, black chroma: the first Y block codes 0 - 1016 = -1016, the
  // other three 0; U and V code 0 - (-1024) = 1024, size 11.
  FlatMacroblockBits<Family::k420, AlphaCoding::kNone>(s, 255, 0, out);
  const std::string lumaDc = "111111110" "1110000000";  // size 10, extra 1023 - 1016 = 7
  EXPECT_EQ(out.Bits(0, 30), lumaDc + "0110" + "100" "0110");
  EXPECT_EQ(out.Bits(23 + 3 * 7, 10 + 11 + 4), "1111111111" "00000000001" "0110");
  EXPECT_EQ(s.dcPredictor[0], 1016);
  EXPECT_EQ(static_cast<int16_t>(s.dcPredictor[1]), -1024);
  EXPECT_EQ(static_cast<int16_t>(s.dcPredictor[2]), -1024);
  // The same macroblock again: every difference 0.
  const uint32_t before = out.w.bitPos;
  EXPECT_EQ((FlatMacroblockBits<Family::k420, AlphaCoding::kNone>(s, 255, 0, out)), 40u);
  EXPECT_EQ(out.Bits(before, 7), "1000110");
}

}  // namespace
}  // namespace vantaro::encoder
