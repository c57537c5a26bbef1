// The order in which a macroblock's blocks travel, for both directions.
// Block numbers are those of MacroblockScratch; `plane` names the DC
// predictor a block's DC runs on and the code tables it uses (U and V take
// the chroma DC codes, Y and DCT alpha the luma ones).
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantaro {

enum BlockPlane : uint8_t { kPlaneY = 0, kPlaneU = 1, kPlaneV = 2, kPlaneA = 3 };

struct BlockStep {
  uint8_t block;
  uint8_t plane;
};

constexpr bool IsChromaPlane(uint8_t plane) { return plane == kPlaneU || plane == kPlaneV; }

// Luma left, right on the top row, then on the bottom row; chroma U, V
// alternating, top half before bottom, left column before right; DCT alpha
// last, in the luma pattern. The order inside a plane differs between luma
// and chroma on purpose: streams have it.
inline constexpr BlockStep kOrder420[] = {{0, kPlaneY}, {2, kPlaneY}, {1, kPlaneY},
                                          {3, kPlaneY}, {4, kPlaneU}, {6, kPlaneV}};
inline constexpr BlockStep kOrder422[] = {{0, kPlaneY}, {2, kPlaneY}, {1, kPlaneY}, {3, kPlaneY},
                                          {4, kPlaneU}, {6, kPlaneV}, {5, kPlaneU}, {7, kPlaneV}};
inline constexpr BlockStep kOrder444[] = {
    {0, kPlaneY}, {2, kPlaneY}, {1, kPlaneY}, {3, kPlaneY},  {4, kPlaneU}, {6, kPlaneV},
    {5, kPlaneU}, {7, kPlaneV}, {8, kPlaneU}, {10, kPlaneV}, {9, kPlaneU}, {11, kPlaneV}};
inline constexpr BlockStep kOrderDctAlpha[] = {{12, kPlaneA}, {14, kPlaneA}, {13, kPlaneA}, {15, kPlaneA}};
// The DCT-alpha variants: the family's order, then kOrderDctAlpha.
inline constexpr BlockStep kOrder422Alpha[] = {
    {0, kPlaneY}, {2, kPlaneY}, {1, kPlaneY}, {3, kPlaneY},   {4, kPlaneU},  {6, kPlaneV},
    {5, kPlaneU}, {7, kPlaneV}, {12, kPlaneA}, {14, kPlaneA}, {13, kPlaneA}, {15, kPlaneA}};
inline constexpr BlockStep kOrder444Alpha[] = {
    {0, kPlaneY},  {2, kPlaneY},  {1, kPlaneY},  {3, kPlaneY},  {4, kPlaneU},  {6, kPlaneV},
    {5, kPlaneU},  {7, kPlaneV},  {8, kPlaneU},  {10, kPlaneV}, {9, kPlaneU},  {11, kPlaneV},
    {12, kPlaneA}, {14, kPlaneA}, {13, kPlaneA}, {15, kPlaneA}};

namespace orders {
template <size_t N, size_t M, size_t K>
constexpr bool IsConcatenation(const BlockStep (&whole)[N], const BlockStep (&head)[M],
                               const BlockStep (&tail)[K]) {
  if (N != M + K) return false;
  for (size_t i = 0; i < N; ++i) {
    const BlockStep& s = i < M ? head[i] : tail[i - M];
    if (whole[i].block != s.block || whole[i].plane != s.plane) return false;
  }
  return true;
}
static_assert(IsConcatenation(kOrder422Alpha, kOrder422, kOrderDctAlpha));
static_assert(IsConcatenation(kOrder444Alpha, kOrder444, kOrderDctAlpha));
}  // namespace orders

}  // namespace vantaro
