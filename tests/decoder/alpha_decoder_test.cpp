#include "decoder/alpha_decoder.h"

#include <gtest/gtest.h>

#include <cstring>

#include "stream_writer.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;

struct AlphaResult {
  bool ok;
  uint64_t bits;
  uint8_t plane[256];
  uint8_t predictor[16];
};

AlphaResult Read(const std::vector<uint8_t>& bytes, uint8_t predictor = 255) {
  alignas(16) MacroblockScratch s;
  std::memset(&s, 0xA5, sizeof s);
  std::memset(s.alphaRowPredictor, predictor, 16);
  uint64_t pos = 0;
  AlphaResult r{};
  r.ok = ReadAlphaPlane(s, StreamView{bytes.data(), bytes.size()}, pos);
  r.bits = pos;
  std::memcpy(r.plane, s.Alpha(), 256);
  std::memcpy(r.predictor, s.alphaRowPredictor, 16);
  return r;
}

TEST(AlphaDecoder, EmptyHalvesRepeatThePredictor) {
  AlphaResult r = Read(StreamWriter().AlphaEnd().AlphaEnd().Bytes());
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.bits, 6u);
  for (uint8_t a : r.plane) ASSERT_EQ(a, 255);

  r = Read(StreamWriter().AlphaEnd().AlphaEnd().Bytes(), 17);
  for (uint8_t a : r.plane) ASSERT_EQ(a, 17);
}

TEST(AlphaDecoder, OneDifferenceRunsDownItsColumnAcrossBothHalves) {
  // "0" "10" then the end "110": six bits; the second half repeats line 7.
  const AlphaResult r = Read(StreamWriter().Bits("0 10 110").AlphaEnd().Bytes(), 200);
  ASSERT_TRUE(r.ok);
  EXPECT_EQ(r.bits, 9u);
  for (int line = 0; line < 16; ++line) {
    EXPECT_EQ(r.plane[16 * line], 199) << line;
    for (int c = 1; c < 16; ++c) ASSERT_EQ(r.plane[16 * line + c], 200);
  }
  EXPECT_EQ(r.predictor[0], 199);
  EXPECT_EQ(r.predictor[1], 200);
}

TEST(AlphaDecoder, DifferencesWrapAndRunsReachTheLastByte) {
  // Predictor 0, difference +1: 255. Then run 127 in the second half lands on
  // its last byte, a difference of 128 in the 10-bit value form.
  StreamWriter w;
  w.AlphaPair(1, 0).AlphaEnd().AlphaPair(128, 127).AlphaEnd();
  const AlphaResult r = Read(w.Bytes(), 0);
  ASSERT_TRUE(r.ok);
  EXPECT_EQ(r.bits, w.BitPos());
  EXPECT_EQ(r.plane[0], 255);
  EXPECT_EQ(r.plane[16 * 7], 255);
  // Line 15 column 15 is line 14's byte (0, from line 7) minus 128.
  EXPECT_EQ(r.plane[255], 128);
  EXPECT_EQ(r.plane[16 * 15], 255);
}

TEST(AlphaDecoder, RunsThatLeaveTheirHalfAreFaults) {
  StreamWriter w;
  w.AlphaPair(5, 127).AlphaPair(5, 0).AlphaEnd().AlphaEnd();  // byte 128 of a half
  EXPECT_FALSE(Read(w.Bytes()).ok);
  // Zeros past the stream read as run 0, value 0, ever on: that too ends.
  EXPECT_FALSE(Read(std::vector<uint8_t>(4, 0)).ok);
}

}  // namespace
}  // namespace vantaro::decoder
