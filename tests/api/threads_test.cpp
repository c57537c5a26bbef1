// Slices side by side: every thread count, and the scalar kernels, give the
// same frame bytes, decoded samples and damage report as one thread.
#include <gtest/gtest.h>

#include "api/api_pictures.h"

namespace api_test {
namespace {

vantaro_options WithThreads(int32_t threads) {
  vantaro_options options;
  vantaro_options_default(&options);
  options.threads = threads;
  return options;
}

TEST(Threads, EveryCountGivesOneThreadsBytesSamplesAndDamage) {
  const struct {
    uint32_t fourcc;
    vantaro_format format;
  } cases[] = {{VANTARO_FOURCC_VTQ1, VANTARO_FORMAT_YUVA420P},
               {VANTARO_FOURCC_VTQ7, VANTARO_FORMAT_YUV444P},
               {VANTARO_FOURCC_VTQ9, VANTARO_FORMAT_YUVA422P},
               {VANTARO_FOURCC_VTQ2, VANTARO_FORMAT_UYVY}};
  for (const auto& c : cases) {
    Picture in(c.format, 80, 150);
    Fill(in, true);
    const vantaro_options one = WithThreads(1);
    std::vector<uint8_t> reference;
    ASSERT_EQ(Encode(c.fourcc, in.pic, 92, reference, &one), VANTARO_OK);
    // A damaged copy: garbage through field 0, slice 1.
    vantaro_frame_info info;
    ASSERT_EQ(vantaro_frame_inspect(reference.data(), reference.size(), &info), VANTARO_OK);
    std::vector<uint8_t> damaged = reference;
    for (size_t i = 4 + info.slice_lengths[0] + 3; i < 4 + info.slice_lengths[0] + info.slice_lengths[1]; ++i) {
      damaged[i] = 0xFF;
    }
    Picture decoded(c.format, 80, 150), decodedDamaged(c.format, 80, 150);
    vantaro_decode_report report{};
    ASSERT_EQ(Decode(c.fourcc, reference, decoded.pic, nullptr, &one), VANTARO_OK);
    ASSERT_EQ(Decode(c.fourcc, damaged, decodedDamaged.pic, &report, &one), VANTARO_ERROR_DAMAGED);
    EXPECT_EQ(report.damaged_slices, 2u);
    EXPECT_EQ(report.damaged_count, 1u);
    for (const int32_t threads : {2, 3, 8, 0, -1}) {
      SCOPED_TRACE(Name(c.fourcc) + " threads " + std::to_string(threads));
      // -1: one thread on the scalar kernels.
      vantaro_options options = WithThreads(threads < 0 ? 1 : threads);
      if (threads < 0) options.kernels = VANTARO_KERNELS_SCALAR;
      std::vector<uint8_t> frame;
      ASSERT_EQ(Encode(c.fourcc, in.pic, 92, frame, &options), VANTARO_OK);
      EXPECT_EQ(frame, reference);
      Picture out(c.format, 80, 150), outDamaged(c.format, 80, 150);
      vantaro_decode_report threadedReport{};
      ASSERT_EQ(Decode(c.fourcc, frame, out.pic, nullptr, &options), VANTARO_OK);
      ASSERT_EQ(Decode(c.fourcc, damaged, outDamaged.pic, &threadedReport, &options), VANTARO_ERROR_DAMAGED);
      EXPECT_EQ(out.bytes, decoded.bytes);
      EXPECT_EQ(outDamaged.bytes, decodedDamaged.bytes);
      EXPECT_EQ(threadedReport.damaged_slices, report.damaged_slices);
    }
  }
}

// One handle, many frames: the pool is reused, frames stay independent.
TEST(Threads, AHandleCodesFrameAfterFrame) {
  const vantaro_options options = WithThreads(4);
  vantaro_encoder* e = nullptr;
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ3, 64, 64, 90, &options, &e), VANTARO_OK);
  std::vector<uint8_t> frame(vantaro_frame_bound(VANTARO_FOURCC_VTQ3, 64, 64));
  for (uint32_t seed = 1; seed <= 6; ++seed) {
    Picture in(VANTARO_FORMAT_YUVA422P, 64, 64);
    Fill(in, true, seed);
    size_t written = 0;
    ASSERT_EQ(vantaro_encode(e, &in.pic, frame.data(), frame.size(), &written), VANTARO_OK);
    std::vector<uint8_t> alone;
    ASSERT_EQ(Encode(VANTARO_FOURCC_VTQ3, in.pic, 90, alone), VANTARO_OK);
    EXPECT_EQ(std::vector<uint8_t>(frame.begin(), frame.begin() + static_cast<ptrdiff_t>(written)), alone);
  }
  vantaro_encoder_destroy(e);
}

}  // namespace
}  // namespace api_test
