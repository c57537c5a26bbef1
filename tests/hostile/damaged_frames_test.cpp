// A damaged frame costs only itself: a slice of garbage is reported as that
// slice alone, a cut frame or a lying header is refused before any decoding,
// and the next frame through the same handle decodes exactly as if the
// damage had never passed.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "support/pictures.h"

namespace vantaro::test {
namespace {

constexpr int32_t kWidth = 48, kHeight = 40;

class DamagedFrames : public testing::TestWithParam<uint32_t> {
 protected:
  void SetUp() override {
    Picture in(VANTARO_FORMAT_YUVA444P, kWidth, kHeight);
    Fill(in, Content::kNoise);
    ASSERT_EQ(Encode(GetParam(), in.pic, 90, frame), VANTARO_OK);
    ASSERT_EQ(vantaro_frame_inspect(frame.data(), frame.size(), &info), VANTARO_OK);
    ASSERT_EQ(vantaro_decoder_create(GetParam(), kWidth, kHeight, nullptr, &decoder), VANTARO_OK);
    ASSERT_EQ(DecodeInto(frame, frame.size(), clean), VANTARO_OK);
  }
  void TearDown() override { vantaro_decoder_destroy(decoder); }
  // `length` bytes of `bytes`, copied to a block of exactly that size so that
  // the sanitizer sees any read beyond it.
  vantaro_status DecodeInto(const std::vector<uint8_t>& bytes, size_t length, Picture& out, vantaro_decode_report* report = nullptr) {
    const std::vector<uint8_t> exact(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(length));
    return vantaro_decode(decoder, length != 0 ? exact.data() : bytes.data(), length, &out.pic, report);
  }
  std::vector<uint8_t> frame;
  vantaro_frame_info info{};
  vantaro_decoder* decoder = nullptr;
  Picture clean{VANTARO_FORMAT_YUVA444P, kWidth, kHeight};
};

TEST_P(DamagedFrames, GarbageInOneSliceStaysInThatSlice) {
  size_t at = 4;  // slices follow the frame header, field by field
  uint32_t reported = 0;
  for (uint32_t slice = 0; slice < 8; ++slice) {
    std::vector<uint8_t> damaged = frame;
    std::fill(damaged.begin() + at + 3, damaged.begin() + at + info.slice_lengths[slice], 0xff);  // all-ones codes
    Picture out(VANTARO_FORMAT_YUVA444P, kWidth, kHeight);
    vantaro_decode_report report;
    const vantaro_status s = DecodeInto(damaged, damaged.size(), out, &report);
    EXPECT_TRUE(s == VANTARO_OK || s == VANTARO_ERROR_DAMAGED) << vantaro_status_string(s);
    EXPECT_EQ(report.damaged_slices & ~(1u << slice), 0u) << "slice " << slice;
    reported |= report.damaged_slices;
    EXPECT_EQ(DecodeInto(frame, frame.size(), out), VANTARO_OK);
    EXPECT_EQ(out.bytes, clean.bytes) << "the frame after slice " << slice << " was damaged";
    at += info.slice_lengths[slice];
  }
  EXPECT_NE(reported, 0u);  // all-ones codes run past some slice's end at least
}

TEST_P(DamagedFrames, CutFramesAndLyingHeadersAreRefusedWhole) {
  // The header reads back as written: quality, the second field starting
  // where the first field's slices end, and every byte accounted for.
  const uint32_t* len = info.slice_lengths;
  EXPECT_EQ(info.quality, 90u);
  EXPECT_EQ(info.second_field_offset, 4 + len[0] + len[1] + len[2] + len[3]);
  EXPECT_EQ(info.frame_bytes, info.second_field_offset + len[4] + len[5] + len[6] + len[7]);
  EXPECT_EQ(info.frame_bytes, frame.size());
  Picture out(VANTARO_FORMAT_YUVA444P, kWidth, kHeight);
  for (size_t length = 0; length < frame.size(); length += 1 + length / 8) {
    // The header accounts for every byte, so any cut shows before decoding.
    EXPECT_EQ(DecodeInto(frame, length, out), VANTARO_ERROR_TRUNCATED) << length;
  }
  // A 24-bit header field rewritten: the second-field offset off by one, a
  // slice shorter than its own length bytes, a slice running past the end.
  const struct { size_t at; uint32_t value; vantaro_status status; } lies[] = {
      {1, info.second_field_offset + 1, VANTARO_ERROR_BAD_HEADER},
      {4, 2, VANTARO_ERROR_BAD_HEADER},
      {4 + len[0], 0xFFFFFF, VANTARO_ERROR_TRUNCATED}};
  for (const auto& lie : lies) {
    std::vector<uint8_t> lying = frame;
    for (size_t i = 0; i < 3; ++i) lying[lie.at + i] = static_cast<uint8_t>(lie.value >> (8 * i));
    EXPECT_EQ(DecodeInto(lying, lying.size(), out), lie.status) << "field at " << lie.at;
  }
  EXPECT_EQ(DecodeInto(frame, frame.size(), out), VANTARO_OK);
  EXPECT_EQ(out.bytes, clean.bytes);
}

// The block walks of the kernel levels read damage alike: the same samples
// stored before each fault, the same slices reported. The picture is large
// enough that most macroblocks lie far from their slice's end, where the
// walks load without testing for it.
TEST_P(DamagedFrames, DamageReadsAlikeAtEveryKernelLevel) {
  constexpr int32_t kBigWidth = 256, kBigHeight = 128;
  Picture in(VANTARO_FORMAT_YUVA444P, kBigWidth, kBigHeight);
  Fill(in, Content::kNoise);
  std::vector<uint8_t> big;
  ASSERT_EQ(Encode(GetParam(), in.pic, 96, big), VANTARO_OK);
  std::mt19937 rng(GetParam());
  for (int trial = 0; trial < 24; ++trial) {
    std::vector<uint8_t> damaged = big;
    for (int k = 0; k <= trial % 4; ++k) damaged[4 + rng() % (damaged.size() - 4)] ^= static_cast<uint8_t>(1u << (rng() % 8));
    std::vector<uint8_t> bytes[2];
    uint32_t slices[2];
    vantaro_status status[2];
    for (const int level : {0, 1}) {
      vantaro_options options;
      vantaro_options_default(&options);
      options.kernels = level == 0 ? VANTARO_KERNELS_SCALAR : VANTARO_KERNELS_AUTO;
      Picture out(VANTARO_FORMAT_YUVA444P, kBigWidth, kBigHeight);
      vantaro_decode_report report{};
      status[level] = Decode(GetParam(), damaged, out.pic, &report, &options);
      bytes[level] = out.bytes;
      slices[level] = report.damaged_slices;
    }
    EXPECT_EQ(status[0], status[1]) << "trial " << trial;
    EXPECT_EQ(slices[0], slices[1]) << "trial " << trial;
    EXPECT_EQ(bytes[0], bytes[1]) << "trial " << trial;
  }
}

INSTANTIATE_TEST_SUITE_P(Variants, DamagedFrames, testing::ValuesIn(kVariantFourCCs));

}  // namespace
}  // namespace vantaro::test
