// The transform constants regenerated from their definitions in double
// precision: a mistyped digit in the basis or a tangent fails here.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "codec/transform_basis.h"

namespace vantaro::transform {
namespace {

double C(int k) { return std::sqrt(2.0) * std::cos((k == 0 ? 4 : k) * std::numbers::pi / 16); }

TEST(TransformBasis, RowBasisIsTheScaledCosineProducts) {
  for (int set = 0; set < 4; ++set) {
    for (int j = 0; j < 8; ++j) {
      EXPECT_EQ(kBasis[set][j], std::lround(16384 * C(set) * C(j))) << set << "," << j;
    }
  }
  for (int row = 0; row < 8; ++row) EXPECT_EQ(kRowSet[row], row <= 4 ? row % 4 : 8 - row);
}

TEST(TransformBasis, ColumnConstantsAreTheTangentsAndTheCosine) {
  const double pi = std::numbers::pi;
  EXPECT_EQ(kTan1, std::lround(65536 * std::tan(pi / 16)));
  EXPECT_EQ(kTan2, std::lround(65536 * std::tan(2 * pi / 16)));
  // Stored as its 16-bit pattern: tan(3pi/16) * 2^16 is above the int16 range.
  EXPECT_EQ(static_cast<uint16_t>(kTan3), std::lround(65536 * std::tan(3 * pi / 16)));
  EXPECT_EQ(kCos4, std::lround(32768 * std::cos(pi / 4)));
}

}  // namespace
}  // namespace vantaro::transform
