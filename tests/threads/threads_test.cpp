// Threads give the bytes of one: slices side by side in one handle (every
// count, and the scalar kernels, match one thread in frame bytes, decoded
// samples and damage report), and many handles on many threads at once,
// released together so that they also race to build the shared tables
// (each case runs in a process of its own).
#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <thread>
#include <tuple>
#include <vector>

#include "support/pictures.h"

namespace vantaro::test {
namespace {

TEST(Threads, EverySliceCountGivesOneThreadsBytesSamplesAndDamage) {
  const struct { uint32_t fourcc; vantaro_format format; } cases[] = {
      {VANTARO_FOURCC_VTQ1, VANTARO_FORMAT_YUVA420P}, {VANTARO_FOURCC_VTQ7, VANTARO_FORMAT_YUV444P},
      {VANTARO_FOURCC_VTQ9, VANTARO_FORMAT_YUVA422P}, {VANTARO_FOURCC_VTQ2, VANTARO_FORMAT_UYVY}};
  for (const auto& c : cases) {
    Picture in(c.format, 80, 150);
    Fill(in, Content::kNoise);
    std::vector<uint8_t> reference, damaged, decoded, decodedDamaged;  // one thread's, from the first run
    for (const int32_t threads : {1, 2, 3, 8, 0, -1}) {
      SCOPED_TRACE(Name(c.fourcc) + " threads " + std::to_string(threads));
      vantaro_options options = WithThreads(threads < 0 ? 1 : threads);
      if (threads < 0) options.kernels = VANTARO_KERNELS_SCALAR;  // -1: one thread, scalar kernels
      std::vector<uint8_t> frame;
      ASSERT_EQ(Encode(c.fourcc, in.pic, 92, frame, &options), VANTARO_OK);
      if (reference.empty()) {
        // A damaged copy: garbage through field 0, slice 1.
        vantaro_frame_info info;
        ASSERT_EQ(vantaro_frame_inspect(frame.data(), frame.size(), &info), VANTARO_OK);
        reference = damaged = frame;
        const auto slice1 = damaged.begin() + 4 + info.slice_lengths[0];
        std::fill(slice1 + 3, slice1 + info.slice_lengths[1], 0xFF);
      }
      EXPECT_EQ(frame, reference);
      Picture out(c.format, 80, 150), outDamaged(c.format, 80, 150);
      vantaro_decode_report report{};
      ASSERT_EQ(Decode(c.fourcc, frame, out.pic, nullptr, &options), VANTARO_OK);
      ASSERT_EQ(Decode(c.fourcc, damaged, outDamaged.pic, &report, &options), VANTARO_ERROR_DAMAGED);
      EXPECT_EQ(std::make_tuple(report.damaged_slices, report.damaged_count), std::make_tuple(2u, 1u));
      if (decoded.empty()) decoded = out.bytes, decodedDamaged = outDamaged.bytes;
      EXPECT_EQ(out.bytes, decoded);
      EXPECT_EQ(outDamaged.bytes, decodedDamaged);
    }
  }
}

// Streams and decoded pictures of three frames through one encoder and one
// decoder, joined; each frame's stream must also be what a fresh encoder
// gives, so nothing carries over from one frame to the next.
std::vector<uint8_t> Work(uint32_t fourcc, int32_t sliceThreads, uint32_t seed) {
  constexpr int32_t kWidth = 52, kHeight = 38;  // partial macroblocks both ways
  const vantaro_options options = WithThreads(sliceThreads);
  vantaro_encoder* encoder = nullptr;
  vantaro_decoder* decoder = nullptr;
  EXPECT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 95, &options, &encoder), VANTARO_OK);
  EXPECT_EQ(vantaro_decoder_create(fourcc, kWidth, kHeight, &options, &decoder), VANTARO_OK);
  Picture in(VANTARO_FORMAT_YUVA444P, kWidth, kHeight), out(VANTARO_FORMAT_YUVA444P, kWidth, kHeight);
  const size_t bound = vantaro_frame_bound(fourcc, kWidth, kHeight);
  std::vector<uint8_t> stream, all, alone;
  for (uint32_t frame = 0; frame < 3; ++frame) {
    Fill(in, Content::kNoise, seed * 3 + frame);
    stream.assign(bound, 0);
    size_t written = 0;
    EXPECT_EQ(vantaro_encode(encoder, &in.pic, stream.data(), bound, &written), VANTARO_OK);
    EXPECT_EQ(vantaro_decode(decoder, stream.data(), written, &out.pic, nullptr), VANTARO_OK);
    stream.resize(written);
    EXPECT_EQ(Encode(fourcc, in.pic, 95, alone), VANTARO_OK);
    EXPECT_EQ(stream, alone) << "frame " << frame;
    all.insert(all.end(), stream.begin(), stream.end());
    all.insert(all.end(), out.bytes.begin(), out.bytes.end());
  }
  vantaro_encoder_destroy(encoder);
  vantaro_decoder_destroy(decoder);
  return all;
}

class ManyHandles : public testing::TestWithParam<int32_t> {};

TEST_P(ManyHandles, SideBySideGiveTheBytesOfOneAtATime) {
  constexpr size_t kCount = 2 * std::size(kVariantFourCCs);
  std::vector<std::vector<uint8_t>> together(kCount);
  {
    std::latch start(kCount);
    std::vector<std::jthread> threads;
    for (size_t i = 0; i < kCount; ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        together[i] = Work(kVariantFourCCs[i % std::size(kVariantFourCCs)], GetParam(), static_cast<uint32_t>(i));
      });
    }
  }
  for (size_t i = 0; i < kCount; ++i) {
    EXPECT_EQ(together[i], Work(kVariantFourCCs[i % std::size(kVariantFourCCs)], GetParam(), static_cast<uint32_t>(i)))
        << "handle " << i;
  }
}

// One slice thread per handle, and handles that code slices side by side.
INSTANTIATE_TEST_SUITE_P(SliceThreads, ManyHandles, testing::Values(1, 4));

}  // namespace
}  // namespace vantaro::test
