// A damaged frame costs only itself: a slice of garbage is reported as that
// slice alone, a cut frame is refused before any decoding, and the next
// frame through the same handle decodes exactly as if the damage had never
// passed.
#include <gtest/gtest.h>

#include <vector>

#include "vantaro/vantaro.h"

namespace {

constexpr int32_t kWidth = 48, kHeight = 40;

struct Coded {
  std::vector<uint8_t> frame;
  std::vector<uint8_t> picture;  // the clean decode
};

uint32_t ReadU24(const uint8_t* p) { return p[0] | p[1] << 8 | p[2] << 16; }

Coded Encode(uint32_t fourcc) {
  const size_t bytes = vantaro_picture_size(VANTARO_FORMAT_YUVA444P, kWidth, kHeight);
  std::vector<uint8_t> pixels(bytes);
  for (size_t i = 0; i < bytes; ++i) pixels[i] = static_cast<uint8_t>((i * 7) ^ (i / kWidth * 5));
  vantaro_picture picture;
  vantaro_picture_fill(&picture, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, pixels.data(), bytes);
  vantaro_encoder* encoder = nullptr;
  EXPECT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 90, nullptr, &encoder), VANTARO_OK);
  Coded c;
  c.frame.resize(vantaro_frame_bound(fourcc, kWidth, kHeight));
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(encoder, &picture, c.frame.data(), c.frame.size(), &written), VANTARO_OK);
  vantaro_encoder_destroy(encoder);
  c.frame.resize(written);
  return c;
}

vantaro_status Decode(vantaro_decoder* decoder, const std::vector<uint8_t>& frame, size_t length,
                      std::vector<uint8_t>& out, vantaro_decode_report* report) {
  out.assign(vantaro_picture_size(VANTARO_FORMAT_YUVA444P, kWidth, kHeight), 0);
  vantaro_picture picture;
  vantaro_picture_fill(&picture, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, out.data(), out.size());
  return vantaro_decode(decoder, frame.data(), length, &picture, report);
}

class DamagedFrames : public testing::TestWithParam<uint32_t> {};

TEST_P(DamagedFrames, GarbageInOneSliceStaysInThatSlice) {
  Coded c = Encode(GetParam());
  vantaro_decoder* decoder = nullptr;
  ASSERT_EQ(vantaro_decoder_create(GetParam(), kWidth, kHeight, nullptr, &decoder), VANTARO_OK);
  ASSERT_EQ(Decode(decoder, c.frame, c.frame.size(), c.picture, nullptr), VANTARO_OK);
  // Slices follow the 4-byte frame header, field by field; each begins with
  // its own 24-bit length.
  size_t at = 4;
  uint32_t reported = 0;
  for (uint32_t slice = 0; slice < 8; ++slice) {
    const uint32_t length = ReadU24(c.frame.data() + at);
    std::vector<uint8_t> damaged = c.frame;
    for (size_t i = at + 3; i < at + length; ++i) damaged[i] = 0xff;  // all-ones codes
    std::vector<uint8_t> out;
    vantaro_decode_report report;
    const vantaro_status s = Decode(decoder, damaged, damaged.size(), out, &report);
    EXPECT_TRUE(s == VANTARO_OK || s == VANTARO_ERROR_DAMAGED) << vantaro_status_string(s);
    EXPECT_EQ(report.damaged_slices & ~(1u << slice), 0u) << "slice " << slice;
    reported |= report.damaged_slices;
    EXPECT_EQ(Decode(decoder, c.frame, c.frame.size(), out, nullptr), VANTARO_OK);
    EXPECT_EQ(out, c.picture) << "the frame after slice " << slice << " was damaged";
    at += length;
  }
  // All-ones codes run past some slice's end at least: the damage is seen.
  EXPECT_NE(reported, 0u);
  vantaro_decoder_destroy(decoder);
}

TEST_P(DamagedFrames, CutFramesAreRefusedWhole) {
  const Coded c = Encode(GetParam());
  vantaro_decoder* decoder = nullptr;
  ASSERT_EQ(vantaro_decoder_create(GetParam(), kWidth, kHeight, nullptr, &decoder), VANTARO_OK);
  std::vector<uint8_t> out;
  for (size_t length = 0; length < c.frame.size(); length += 1 + length / 8) {
    // The header accounts for every byte, so any cut shows before decoding.
    EXPECT_EQ(Decode(decoder, c.frame, length, out, nullptr), VANTARO_ERROR_TRUNCATED) << length;
  }
  std::vector<uint8_t> clean;
  EXPECT_EQ(Decode(decoder, c.frame, c.frame.size(), clean, nullptr), VANTARO_OK);
  vantaro_decoder_destroy(decoder);
}

INSTANTIATE_TEST_SUITE_P(Variants, DamagedFrames,
                         testing::Values(VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                                         VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                                         VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9));

}  // namespace
