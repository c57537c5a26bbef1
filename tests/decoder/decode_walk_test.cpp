// Hand-built frames through the decode walks, for the behaviour that is
// deliberately odd and must stay so. The decoded bytes of every variant in
// every layout are pinned by the golden pictures (tests/codec).
#include <gtest/gtest.h>

#include <vector>

#include "codec/field_flow.h"
#include "stream_writer.h"
#include "support/pictures.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;

constexpr uint8_t kUntouched = 0xCD;

// A frame from hand-written slices: `payload[field][slice]` after each
// 3-byte length.
std::vector<uint8_t> HandFrame(const std::vector<uint8_t> (&payload)[2][4]) {
  std::vector<uint8_t> frame = {96, 0, 0, 0};
  for (int field = 0; field < 2; ++field) {
    if (field == 1) frame[1] = static_cast<uint8_t>(frame.size());
    for (const std::vector<uint8_t>& p : payload[field]) {
      const uint32_t length = static_cast<uint32_t>(p.size() + 3);
      for (int i = 0; i < 3; ++i) frame.push_back(static_cast<uint8_t>(length >> (8 * i)));
      frame.insert(frame.end(), p.begin(), p.end());
    }
  }
  return frame;
}

// One 4:2:2 macroblock of DC-only blocks: the first U and V blocks carry the
// given DC differences and the second ones repeat them through the chain;
// then run-length alpha of one value, if any.
std::vector<uint8_t> FlatMacroblock(int32_t uDiff, int32_t vDiff, int alpha = -1) {
  StreamWriter w;
  for (int b = 0; b < 4; ++b) w.Block(0, true);
  w.Block(uDiff, false).Block(vDiff, false).Block(0, false).Block(0, false);
  if (alpha < 0) return w.Bytes();
  for (int c = 0; c < 16; ++c) w.AlphaPair(static_cast<uint8_t>(255 - alpha), 0);
  w.AlphaEnd().AlphaEnd();
  return w.Bytes();
}

// U of -3 (DC -1056) and of 256 (DC 1016, the shortcut's highest value)
// through the whole walk into csYUY2, 16 x 32 with 16 bytes of slack a line:
// the raw pair, unclamped.
TEST(DecodeWalks, PackedPairsStoreTheRawUnclampedChroma) {
  const std::vector<uint8_t> frame =
      HandFrame({{FlatMacroblock(1056, 0), {}, {}, {}}, {FlatMacroblock(-1016, 8), {}, {}, {}}});
  constexpr int32_t kStride = 48;
  std::vector<uint8_t> out(kStride * 32, kUntouched);
  test::TestInstance inst(test::FourCC("VTQ2"), kCsYUY2, 16, 32);
  EXPECT_EQ(DecompressFrame(inst.get(), out.data(), nullptr, frame.data(), kStride, frame.size()), 0);
  for (int32_t y : {0, 30}) {  // field 0: U -3, V 129
    EXPECT_EQ(out[y * kStride + 1], 253);
    EXPECT_EQ(out[y * kStride + 3], 255);
  }
  for (int32_t y : {1, 31}) {  // field 1: U 256, V 128
    EXPECT_EQ(out[y * kStride + 1], 0);
    EXPECT_EQ(out[y * kStride + 3], 129);
  }
  EXPECT_EQ(out[kStride - 1], kUntouched);
}

// csUYVA, 16 x 64, frame stride 32: each field's two macroblock rows carry
// run-length alpha of one value (10, 20 in field 0; 30, 40 in field 1). The
// alpha plane lies behind the main plane, the field stride's t / 16 / 2 * 16
// (32) bytes a line, and the second field's lines start one alpha line
// (width bytes) in from frameBase: together the frame's plane, 16 a line.
TEST(DecodeWalks, UyvaAlphaPlaneOfBothFields) {
  const std::vector<uint8_t> frame = HandFrame({{FlatMacroblock(0, 0, 10), FlatMacroblock(0, 0, 20), {}, {}},
                                                {FlatMacroblock(0, 0, 30), FlatMacroblock(0, 0, 40), {}, {}}});
  std::vector<uint8_t> out(32 * 64 + 16 * 64 + 64, kUntouched);
  test::TestInstance inst(test::FourCC("VTQ3"), kCsUYVA, 16, 64);
  EXPECT_EQ(DecompressFrame(inst.get(), out.data(), nullptr, frame.data(), 32, frame.size()), 0);
  const size_t plane = 32 * 64;
  for (int32_t y = 0; y < 64; ++y) {
    const uint8_t expected = static_cast<uint8_t>(10 * (1 + (y / 32) + 2 * (y % 2)));
    for (int32_t x = 0; x < 16; ++x) ASSERT_EQ(out[plane + 16 * y + x], expected) << y << "," << x;
  }
  for (size_t i = plane + 16 * 64; i < out.size(); ++i) ASSERT_EQ(out[i], kUntouched) << i;
}

}  // namespace
}  // namespace vantaro::decoder
