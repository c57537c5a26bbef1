// Run/value alpha planes through the writer and back through the reader:
// planes whose last non-zero difference sits at every byte of a half, and
// random planes from flat to noisy, over a chain of macroblocks; and runs the
// reader must refuse.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "decoder/alpha_decoder.h"
#include "decoder/stream_writer.h"
#include "encoder/alpha_coder.h"
#include "platform/processor.h"

namespace vantaro {
namespace {

TEST(AlphaRoundTrip, EveryLastPositionAndDensityReadsBack) {
  std::mt19937 rng(3);
  std::vector<std::vector<uint8_t>> planes;
  for (int last = 0; last < 256; ++last) {  // one odd byte in a flat plane, then nothing
    planes.emplace_back(256, 200)[static_cast<size_t>(last)] = static_cast<uint8_t>(rng());
  }
  for (int n = 0; n < 200; ++n) {
    std::vector<uint8_t> p(256);
    const uint32_t keep = 1 + static_cast<uint32_t>(n) % 8;
    uint8_t level = 255;
    for (uint8_t& v : p) {
      if (rng() % keep == 0) level = static_cast<uint8_t>(rng());
      v = level;
    }
    planes.push_back(p);
  }
  std::vector<uint8_t> stream(planes.size() * 700 + 8);
  BitWriter w{stream.data(), 0, 0, stream.size()};
  MacroblockScratch enc{}, dec{};
  enc.ResetPredictors();
  dec.ResetPredictors();
  for (const auto& p : planes) {
    std::memcpy(enc.Alpha(), p.data(), 256);
    encoder::EncodeAlphaPlane(enc, w);
  }
  const decoder::StreamView view{stream.data(), stream.size()};
  for (const bool extract : {false, ProcessorHasBmi1()}) {
    dec.ResetPredictors();
    uint64_t bitPos = 0;
    for (size_t n = 0; n < planes.size(); ++n) {
      ASSERT_TRUE(decoder::ReadAlphaPlaneFor(extract)(dec, view, bitPos)) << n;
      ASSERT_EQ(std::memcmp(dec.Alpha(), planes[n].data(), 256), 0) << n;
    }
    EXPECT_EQ(bitPos, w.bitPos);
  }
}

TEST(AlphaRoundTrip, RunsThatLeaveTheirHalfAreRefused) {
  const auto reads = [](const std::vector<uint8_t>& bytes) {
    bool read[2];
    for (const bool extract : {false, true}) {
      MacroblockScratch s{};
      s.ResetPredictors();
      uint64_t bitPos = 0;
      read[extract] = decoder::ReadAlphaPlaneFor(extract && ProcessorHasBmi1())(
          s, decoder::StreamView{bytes.data(), bytes.size()}, bitPos);
    }
    EXPECT_EQ(read[0], read[1]);
    return read[0];
  };
  EXPECT_TRUE(reads(test::StreamWriter().AlphaPair(5, 127).AlphaEnd().AlphaEnd().Bytes()));
  // A second pair after run 127 reaches byte 128 of a half.
  EXPECT_FALSE(reads(test::StreamWriter().AlphaPair(5, 127).AlphaPair(5, 0).AlphaEnd().AlphaEnd().Bytes()));
  // Zeros past the stream read as run 0, value 0, ever on: that too ends.
  EXPECT_FALSE(reads(std::vector<uint8_t>(4, 0)));
}

}  // namespace
}  // namespace vantaro
