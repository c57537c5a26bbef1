// One macroblock's work area, shared by the encoder and decoder walks.
#pragma once

#include <cstdint>

namespace vantaro {

// Block numbers: 0,1 Y left half top/bottom; 2,3 Y right half top/bottom;
// 4,5 U (4:4:4: left half); 6,7 V (left half); 8,9 U right half; 10,11 V
// right half (4:4:4 only); 12..15 DCT alpha in the same pattern as luma.
// A 4:2:0 macroblock uses only 4 and 6 for chroma. Two consecutive blocks
// form a strip 8 wide and 16 high whose lines follow one another.
// The run/value alpha plane, 16 rows of 16 bytes, lies over blocks 12 and 13.
enum BlockIndex : int {
  kBlockYLeftTop = 0,
  kBlockYLeftBottom = 1,
  kBlockYRightTop = 2,
  kBlockYRightBottom = 3,
  kBlockU0 = 4,
  kBlockV0 = 6,
  kBlockU1 = 8,
  kBlockV1 = 10,
  kBlockAlpha = 12,
};

struct alignas(16) MacroblockScratch {
  int16_t blocks[16][64];
  uint8_t alphaRowPredictor[16];
  uint16_t dcPredictor[4];  // Y, U, V, DCT alpha

  uint8_t* Alpha() { return reinterpret_cast<uint8_t*>(blocks[kBlockAlpha]); }
  const uint8_t* Alpha() const { return reinterpret_cast<const uint8_t*>(blocks[kBlockAlpha]); }

  // Start of a macroblock row: DC predictors to mid-grey, alpha predictor opaque.
  void ResetPredictors() {
    for (uint16_t& p : dcPredictor) p = 0;
    for (uint8_t& a : alphaRowPredictor) a = 255;
  }
};

}  // namespace vantaro
