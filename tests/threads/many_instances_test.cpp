// Many handles on many threads at once give the bytes each gives alone: the
// eight variants side by side, each thread encoding and decoding its own
// pictures, released together so that they also race to build the shared
// tables (each case runs in a process of its own).
#include <gtest/gtest.h>

#include <latch>
#include <thread>
#include <vector>

#include "vantaro/vantaro.h"

namespace {

constexpr uint32_t kVariants[] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                                  VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                                  VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9};

// Streams and decoded pictures of three frames of one variant, joined.
std::vector<uint8_t> Work(uint32_t fourcc, int32_t sliceThreads, uint32_t seed) {
  constexpr int32_t kWidth = 52, kHeight = 38;  // partial macroblocks both ways
  vantaro_options options;
  vantaro_options_default(&options);
  options.threads = sliceThreads;
  vantaro_encoder* encoder = nullptr;
  vantaro_decoder* decoder = nullptr;
  EXPECT_EQ(vantaro_encoder_create(fourcc, kWidth, kHeight, 95, &options, &encoder), VANTARO_OK);
  EXPECT_EQ(vantaro_decoder_create(fourcc, kWidth, kHeight, &options, &decoder), VANTARO_OK);
  const size_t pictureBytes = vantaro_picture_size(VANTARO_FORMAT_YUVA444P, kWidth, kHeight);
  std::vector<uint8_t> in(pictureBytes), out(pictureBytes);
  std::vector<uint8_t> stream(vantaro_frame_bound(fourcc, kWidth, kHeight));
  vantaro_picture source, decoded;
  vantaro_picture_fill(&source, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, in.data(), in.size());
  vantaro_picture_fill(&decoded, VANTARO_FORMAT_YUVA444P, kWidth, kHeight, out.data(), out.size());
  std::vector<uint8_t> all;
  uint32_t state = seed * 2654435761u + 1;
  for (int frame = 0; frame < 3; ++frame) {
    for (size_t i = 0; i < in.size(); ++i) {
      state = state * 1664525u + 1013904223u;
      // A gradient with noise: every code length gets used.
      in[i] = static_cast<uint8_t>(i % kWidth * 4 + (state >> 27));
    }
    size_t written = 0;
    EXPECT_EQ(vantaro_encode(encoder, &source, stream.data(), stream.size(), &written), VANTARO_OK);
    EXPECT_EQ(vantaro_decode(decoder, stream.data(), written, &decoded, nullptr), VANTARO_OK);
    all.insert(all.end(), stream.begin(), stream.begin() + static_cast<ptrdiff_t>(written));
    all.insert(all.end(), out.begin(), out.end());
  }
  vantaro_encoder_destroy(encoder);
  vantaro_decoder_destroy(decoder);
  return all;
}

class ManyInstances : public testing::TestWithParam<int32_t> {};

TEST_P(ManyInstances, SideBySideGiveTheBytesOfOneAtATime) {
  const int32_t sliceThreads = GetParam();
  constexpr size_t kPerVariant = 2;
  constexpr size_t kCount = std::size(kVariants) * kPerVariant;
  std::vector<std::vector<uint8_t>> together(kCount);
  {
    std::latch start(kCount);
    std::vector<std::jthread> threads;
    for (size_t i = 0; i < kCount; ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        together[i] = Work(kVariants[i % std::size(kVariants)], sliceThreads, static_cast<uint32_t>(i));
      });
    }
  }
  for (size_t i = 0; i < kCount; ++i) {
    EXPECT_EQ(together[i], Work(kVariants[i % std::size(kVariants)], sliceThreads, static_cast<uint32_t>(i)))
        << "handle " << i;
  }
}

// One slice thread per handle, and handles that code slices side by side.
INSTANTIATE_TEST_SUITE_P(SliceThreads, ManyInstances, testing::Values(1, 4));

}  // namespace
