// Whole frames through the decoder: lossless run/value alpha, and hand-built
// frames for exact samples. The decoded bytes of every variant in every
// layout are pinned by the golden pictures (tests/codec).
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "capture_sandbox.h"
#include "codec/field_flow.h"
#include "stream_writer.h"
#include "support/pictures.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;
using DecodeWalks = test::CaptureSandbox;

constexpr uint8_t kUntouched = 0xCD;
constexpr uint32_t kVtq2 = test::FourCC('V', 'T', 'Q', '2');
constexpr uint32_t kVtq3 = test::FourCC('V', 'T', 'Q', '3');

// A csYUY2 frame of 16 x 32 with 16 bytes of slack a line, untouched.
struct Yuy2Frame {
  static constexpr int32_t kStride = 48;
  std::vector<uint8_t> main = std::vector<uint8_t>(kStride * 32, kUntouched);
};

// Run/value alpha is lossless: the decoded alpha bytes are the source's.
TEST_F(DecodeWalks, RunLengthAlphaIsLossless) {
  for (const char variant : {'1', '3', '5'}) {
    const test::Frame source = test::MakeFrame(kCsAYUV, 48, 64, 9);
    test::TestInstance inst(test::FourCC('V', 'T', 'Q', variant), kCsAYUV, 48, 64);
    const std::vector<uint8_t> stream = test::CompressFrameBytes(inst.get(), source);
    std::vector<uint8_t> out(source.main.size(), kUntouched);
    EXPECT_EQ(DecompressFrame(inst.get(), out.data(), nullptr, stream.data(), source.stride,
                              stream.size()),
              0);
    for (int32_t y = 0; y < 64; ++y) {
      for (int32_t x = 0; x < 48; ++x) {
        const size_t i = static_cast<size_t>(y) * source.stride + 4 * x;
        ASSERT_EQ(out[i], source.main[i]) << variant << " " << x << "," << y;
      }
    }
  }
}

// A frame from hand-written slices: `payload[field][slice]` after each
// 3-byte length.
std::vector<uint8_t> HandFrame(const std::vector<uint8_t> (&payload)[2][4]) {
  std::vector<uint8_t> frame = {96, 0, 0, 0};
  for (int field = 0; field < 2; ++field) {
    if (field == 1) {
      const uint32_t offset = static_cast<uint32_t>(frame.size());
      for (int i = 0; i < 3; ++i) frame[1 + i] = static_cast<uint8_t>(offset >> (8 * i));
    }
    for (const std::vector<uint8_t>& p : payload[field]) {
      const uint32_t length = static_cast<uint32_t>(p.size() + 3);
      for (int i = 0; i < 3; ++i) frame.push_back(static_cast<uint8_t>(length >> (8 * i)));
      frame.insert(frame.end(), p.begin(), p.end());
    }
  }
  return frame;
}

// One 4:2:2 macroblock of DC-only blocks; the first U and V blocks carry the
// given DC differences and the second ones repeat them through the chain.
std::vector<uint8_t> FlatMacroblock422(int32_t uDiff = 0, int32_t vDiff = 0) {
  StreamWriter w;
  for (int b = 0; b < 4; ++b) w.Block(0, true);
  w.Block(uDiff, false).Block(vDiff, false).Block(0, false).Block(0, false);
  return w.Bytes();
}

TEST_F(DecodeWalks, FlatGreyMacroblockGivesTheShortcutValue) {
  const std::vector<uint8_t> frame =
      HandFrame({{FlatMacroblock422(), {}, {}, {}}, {FlatMacroblock422(), {}, {}, {}}});
  Yuy2Frame out;
  test::TestInstance inst(kVtq2, kCsYUY2, 16, 32);
  EXPECT_EQ(DecompressFrame(inst.get(), out.main.data(), nullptr, frame.data(), out.kStride, frame.size()), 0);
  for (int32_t y = 0; y < 32; ++y) {
    for (int32_t b = 0; b < 32; ++b) ASSERT_EQ(out.main[y * out.kStride + b], 129) << y << "," << b;
  }
}

// csUYVA, 16 x 64, frame stride 32: each field's two macroblock rows carry
// run-length alpha of one value (10, 20 in field 0; 30, 40 in field 1). The
// alpha plane lies behind the main plane, the field stride's t / 16 / 2 * 16
// (32) bytes a line, and the second field's lines start one alpha line
// (width bytes) in from frameBase: together the frame's plane, 16 a line.
TEST_F(DecodeWalks, UyvaAlphaPlaneOfBothFields) {
  auto macroblock = [](uint8_t alpha) {
    StreamWriter w;
    for (int b = 0; b < 4; ++b) w.Block(0, true);
    for (int b = 0; b < 4; ++b) w.Block(0, false);
    for (int c = 0; c < 16; ++c) w.AlphaPair(static_cast<uint8_t>(255 - alpha), 0);
    w.AlphaEnd().AlphaEnd();
    return w.Bytes();
  };
  const std::vector<uint8_t> frame = HandFrame(
      {{macroblock(10), macroblock(20), {}, {}}, {macroblock(30), macroblock(40), {}, {}}});
  std::vector<uint8_t> out(32 * 64 + 16 * 64 + 64, kUntouched);
  test::TestInstance inst(kVtq3, kCsUYVA, 16, 64);
  EXPECT_EQ(DecompressFrame(inst.get(), out.data(), nullptr, frame.data(), 32, frame.size()), 0);
  const size_t plane = 32 * 64;
  for (int32_t y = 0; y < 64; ++y) {
    const uint8_t expected = static_cast<uint8_t>(10 * (1 + (y / 32) + 2 * (y % 2)));
    for (int32_t x = 0; x < 16; ++x) ASSERT_EQ(out[plane + 16 * y + x], expected) << y << "," << x;
  }
  for (size_t i = plane + 16 * 64; i < out.size(); ++i) ASSERT_EQ(out[i], kUntouched) << i;
}

// U of -3 (DC -1056) and of 256 (DC 1016, the shortcut's highest value)
// through the whole walk into csYUY2: the raw pair, unclamped.
TEST_F(DecodeWalks, RawPairThroughTheWalk) {
  const std::vector<uint8_t> frame =
      HandFrame({{FlatMacroblock422(1056, 0), {}, {}, {}}, {FlatMacroblock422(-1016, 8), {}, {}, {}}});
  Yuy2Frame out;
  test::TestInstance inst(kVtq2, kCsYUY2, 16, 32);
  (void)DecompressFrame(inst.get(), out.main.data(), nullptr, frame.data(), out.kStride, frame.size());
  for (int32_t y : {0, 30}) {  // field 0: U -3, V 129
    EXPECT_EQ(out.main[y * out.kStride + 1], 253);
    EXPECT_EQ(out.main[y * out.kStride + 3], 255);
  }
  for (int32_t y : {1, 31}) {  // field 1: U 256, V 128
    EXPECT_EQ(out.main[y * out.kStride + 1], 0);
    EXPECT_EQ(out.main[y * out.kStride + 3], 129);
  }
}

}  // namespace
}  // namespace vantaro::decoder
