// The native door: round trips per variant and planar format, exact feeding
// of 4:2:2, capacity, the frame bound, damaged input and odd sizes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "vantaro/vantaro.hpp"

namespace {

const uint32_t kVariants[] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                              VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                              VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9};
const vantaro_format kPlanar[] = {VANTARO_FORMAT_YUV420P, VANTARO_FORMAT_YUVA420P,
                                  VANTARO_FORMAT_YUV422P, VANTARO_FORMAT_YUVA422P,
                                  VANTARO_FORMAT_YUV444P, VANTARO_FORMAT_YUVA444P};

struct Picture {
  std::vector<uint8_t> bytes;
  vantaro_picture pic{};
  Picture(vantaro_format format, int32_t w, int32_t h) {
    bytes.resize(vantaro_picture_size(format, w, h));
    EXPECT_EQ(vantaro_picture_fill(&pic, format, w, h, bytes.data(), bytes.size()), VANTARO_OK);
  }
};

// Smooth content (noise when `noise`): gradients per plane.
Picture Make(vantaro_format format, int32_t w, int32_t h, bool noise = false) {
  Picture p(format, w, h);
  std::mt19937 rng(7);
  const int32_t sx = (format <= VANTARO_FORMAT_YUVA422P) ? 1 : 0;
  const int32_t sy = (format <= VANTARO_FORMAT_YUVA420P) ? 1 : 0;
  for (int plane = 0; plane < 4; ++plane) {
    if (p.pic.planes[plane] == nullptr) continue;
    const bool chroma = plane == 1 || plane == 2;
    const int32_t pw = chroma ? (w + sx) >> sx : w, ph = chroma ? (h + sy) >> sy : h;
    for (int32_t y = 0; y < ph; ++y) {
      for (int32_t x = 0; x < pw; ++x) {
        p.pic.planes[plane][y * p.pic.strides[plane] + x] =
            noise ? static_cast<uint8_t>(rng()) : static_cast<uint8_t>(40 + (x * 3 + y * 2 + plane * 30) % 170);
      }
    }
  }
  return p;
}

double Psnr(const Picture& a, const Picture& b, int plane, int32_t pw, int32_t ph) {
  double err = 0;
  for (int32_t y = 0; y < ph; ++y) {
    for (int32_t x = 0; x < pw; ++x) {
      const double d = a.pic.planes[plane][y * a.pic.strides[plane] + x] -
                       b.pic.planes[plane][y * b.pic.strides[plane] + x];
      err += d * d;
    }
  }
  const double mse = err / (static_cast<double>(pw) * ph);
  return mse == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 / mse);
}

std::vector<uint8_t> Encode(uint32_t fourcc, const Picture& p, int32_t quality) {
  vantaro_encoder* e = nullptr;
  EXPECT_EQ(vantaro_encoder_create(fourcc, p.pic.width, p.pic.height, quality, nullptr, &e), VANTARO_OK);
  std::vector<uint8_t> out(vantaro_frame_bound(fourcc, p.pic.width, p.pic.height));
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &p.pic, out.data(), out.size(), &written), VANTARO_OK);
  out.resize(written);
  vantaro_encoder_destroy(e);
  return out;
}

vantaro_status Decode(uint32_t fourcc, const std::vector<uint8_t>& frame, Picture& p,
                      vantaro_decode_report* report = nullptr) {
  vantaro_decoder* d = nullptr;
  EXPECT_EQ(vantaro_decoder_create(fourcc, p.pic.width, p.pic.height, nullptr, &d), VANTARO_OK);
  const vantaro_status s = vantaro_decode(d, frame.data(), frame.size(), &p.pic, report);
  vantaro_decoder_destroy(d);
  return s;
}

TEST(NativeApi, RoundTripsEveryVariantAndPlanarFormatAtOddAndEvenSizes) {
  const int32_t sizes[][2] = {{64, 48}, {1, 1}, {17, 3}, {33, 35}};
  for (uint32_t fourcc : kVariants) {
    for (vantaro_format format : kPlanar) {
      for (const auto& s : sizes) {
        SCOPED_TRACE(testing::Message() << std::string(reinterpret_cast<const char*>(&fourcc), 4)
                                        << " format " << format << " " << s[0] << "x" << s[1]);
        const Picture in = Make(format, s[0], s[1]);
        Picture out(format, s[0], s[1]);
        ASSERT_EQ(Decode(fourcc, Encode(fourcc, in, 96), out), VANTARO_OK);
        EXPECT_GT(Psnr(in, out, 0, s[0], s[1]), 38.0);
        // 4:2:2 chroma into a 4:2:2 variant comes back as sharp as luma.
        const int family = (format - 1) / 2;  // 0: 4:2:0, 1: 4:2:2, 2: 4:4:4
        const uint32_t digit = fourcc >> 24;
        const int variantFamily = digit <= '1' ? 0 : (digit <= '3' || digit == '7' ? 1 : 2);
        if (family == 1 && variantFamily == 1) {
          const int32_t cw = family == 2 ? s[0] : (s[0] + 1) / 2;
          const int32_t ch = family == 0 ? (s[1] + 1) / 2 : s[1];
          EXPECT_GT(Psnr(in, out, 1, cw, ch), 38.0);
          EXPECT_GT(Psnr(in, out, 2, cw, ch), 38.0);
        }
        const bool alphaPlane = format == VANTARO_FORMAT_YUVA420P ||
                                format == VANTARO_FORMAT_YUVA422P || format == VANTARO_FORMAT_YUVA444P;
        const bool alphaStream = fourcc != VANTARO_FOURCC_VTQ0 && fourcc != VANTARO_FOURCC_VTQ2 &&
                                 fourcc != VANTARO_FOURCC_VTQ4;
        if (alphaPlane && alphaStream) {
          EXPECT_GT(Psnr(in, out, 3, s[0], s[1]), 38.0);
        } else if (alphaPlane) {
          EXPECT_EQ(out.pic.planes[3][0], 255);
        }
      }
    }
  }
}

TEST(NativeApi, FrameBoundHoldsNoiseAtQuality99) {
  for (uint32_t fourcc : kVariants) {
    for (vantaro_format format : {VANTARO_FORMAT_YUVA444P, VANTARO_FORMAT_YUV420P}) {
      const Picture in = Make(format, 80, 70, true);
      vantaro_encoder* e = nullptr;
      ASSERT_EQ(vantaro_encoder_create(fourcc, 80, 70, 99, nullptr, &e), VANTARO_OK);
      const size_t bound = vantaro_frame_bound(fourcc, 80, 70);
      std::vector<uint8_t> out(bound);
      size_t written = 0;
      EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), out.size(), &written), VANTARO_OK);
      EXPECT_LE(written, bound);
      EXPECT_GT(written, bound / 8) << "a bound far above noise frames";
      vantaro_encoder_destroy(e);
    }
  }
}

TEST(NativeApi, OneByteShortAnswersBufferTooSmallAndLeavesTheRestAlone) {
  const Picture in = Make(VANTARO_FORMAT_YUV422P, 48, 32, true);
  const std::vector<uint8_t> frame = Encode(VANTARO_FOURCC_VTQ2, in, 90);
  vantaro_encoder* e = nullptr;
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ2, 48, 32, 90, nullptr, &e), VANTARO_OK);
  std::vector<uint8_t> out(frame.size() + 8, 0xA5);
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), frame.size() - 1, &written),
            VANTARO_ERROR_BUFFER_TOO_SMALL);
  EXPECT_EQ(out[frame.size() - 1], 0xA5);
  EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), frame.size(), &written), VANTARO_OK);
  EXPECT_EQ(written, frame.size());
  EXPECT_EQ(0, std::memcmp(out.data(), frame.data(), frame.size()));
  EXPECT_EQ(out[frame.size()], 0xA5);
  vantaro_encoder_destroy(e);
}

TEST(NativeApi, Planar422EqualsUyvyThroughTheDirectFunctions) {
  const int32_t w = 64, h = 32;
  const Picture in = Make(VANTARO_FORMAT_YUV422P, w, h, true);
  std::vector<uint8_t> uyvy(static_cast<size_t>(w) * h * 2);
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; x += 2) {
      uint8_t* p = &uyvy[(y * w + x) * 2];
      p[0] = in.pic.planes[1][y * in.pic.strides[1] + x / 2];
      p[1] = in.pic.planes[0][y * in.pic.strides[0] + x];
      p[2] = in.pic.planes[2][y * in.pic.strides[2] + x / 2];
      p[3] = in.pic.planes[0][y * in.pic.strides[0] + x + 1];
    }
  }
  BITMAPINFOHEADER header{};
  header.biSize = sizeof header;
  header.biWidth = w;
  header.biHeight = h;
  header.biBitCount = 16;
  header.biCompression = VTC_FOURCC('U', 'Y', 'V', 'Y');
  void* direct = VTC_CompressFieldBeginQuality(&header, VANTARO_FOURCC_VTQ2, 90);
  std::vector<uint8_t> stream(vantaro_frame_bound(VANTARO_FOURCC_VTQ2, w, h) + 8);
  const int64_t size = VTC_CompressFrame(direct, stream.data(), uyvy.data(), w * 2);
  VTC_CompressFieldEnd(direct);
  ASSERT_GT(size, 4);
  stream.resize(static_cast<size_t>(size - 4));
  EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ2, in, 90), stream);
}

TEST(NativeApi, ArgumentChecksAnswerTheirStatus) {
  vantaro_encoder* e = nullptr;
  vantaro_decoder* d = nullptr;
  vantaro_options bad;
  vantaro_options_default(&bad);
  bad.threads = 9;
  const struct {
    uint32_t fourcc;
    int32_t w, h, quality;
    const vantaro_options* options;
    vantaro_status expected;
  } cases[] = {
      {VTC_FOURCC('V', 'T', 'Q', '6'), 16, 16, 90, nullptr, VANTARO_ERROR_UNKNOWN_FOURCC},
      {VANTARO_FOURCC_VTQ2, 0, 16, 90, nullptr, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FOURCC_VTQ2, 16, -4, 90, nullptr, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FOURCC_VTQ2, VANTARO_MAX_DIMENSION + 1, 16, 90, nullptr, VANTARO_ERROR_BAD_SIZE},
      {VANTARO_FOURCC_VTQ2, 16, 16, 100, nullptr, VANTARO_ERROR_BAD_QUALITY},
      {VANTARO_FOURCC_VTQ2, 16, 16, 0, nullptr, VANTARO_ERROR_BAD_QUALITY},
      {VANTARO_FOURCC_VTQ2, 16, 16, 90, &bad, VANTARO_ERROR_BAD_OPTIONS},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(vantaro_encoder_create(c.fourcc, c.w, c.h, c.quality, c.options, &e), c.expected);
    EXPECT_EQ(e, nullptr);
  }
  EXPECT_EQ(vantaro_decoder_create(VTC_FOURCC('X', 'X', 'X', 'X'), 16, 16, nullptr, &d),
            VANTARO_ERROR_UNKNOWN_FOURCC);
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ0, 16, 16, 90, nullptr, &e), VANTARO_OK);
  Picture wrong = Make(VANTARO_FORMAT_YUV420P, 16, 18);
  uint8_t out[4096];
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &wrong.pic, out, sizeof out, &written), VANTARO_ERROR_BAD_SIZE);
  Picture missing = Make(VANTARO_FORMAT_YUV420P, 16, 16);
  missing.pic.planes[2] = nullptr;
  EXPECT_EQ(vantaro_encode(e, &missing.pic, out, sizeof out, &written), VANTARO_ERROR_INVALID_ARGUMENT);
  vantaro_encoder_destroy(e);
  EXPECT_STRNE(vantaro_status_string(VANTARO_ERROR_DAMAGED), vantaro_status_string(VANTARO_OK));
  EXPECT_EQ(vantaro_version(), static_cast<uint32_t>(VANTARO_VERSION));
}

TEST(NativeApi, TruncatedAndLyingFramesAnswerStatusesOrDamage) {
  const Picture in = Make(VANTARO_FORMAT_YUVA444P, 64, 128, true);
  for (uint32_t fourcc : kVariants) {
    const std::vector<uint8_t> frame = Encode(fourcc, in, 80);
    Picture out(VANTARO_FORMAT_YUVA444P, 64, 128);
    std::vector<uint8_t> cut(frame.begin(), frame.end() - 1);
    EXPECT_EQ(Decode(fourcc, cut, out), VANTARO_ERROR_TRUNCATED);
    std::vector<uint8_t> lying = frame;
    lying[1] ^= 0x01;  // the second-field offset no longer matches the first field
    EXPECT_EQ(Decode(fourcc, lying, out), VANTARO_ERROR_BAD_HEADER);
    // Garbage inside field 1, slice 2: that slice is reported, the rest decoded.
    vantaro_frame_info info;
    ASSERT_EQ(vantaro_frame_inspect(frame.data(), frame.size(), &info), VANTARO_OK);
    size_t pos = info.second_field_offset + info.slice_lengths[4] + info.slice_lengths[5];
    std::vector<uint8_t> damaged = frame;
    for (size_t i = pos + 3; i < pos + info.slice_lengths[6]; ++i) damaged[i] = 0xFF;
    vantaro_decode_report report;
    const vantaro_status s = Decode(fourcc, damaged, out, &report);
    EXPECT_EQ(s, VANTARO_ERROR_DAMAGED);
    EXPECT_EQ(report.damaged_slices, 1u << 6);
    EXPECT_EQ(report.damaged_count, 1u);
  }
}

TEST(NativeApi, ScalarKernelsAndThreadCountsGiveTheSameBytes) {
  const Picture in = Make(VANTARO_FORMAT_YUVA422P, 48, 40, true);
  const std::vector<uint8_t> automatic = Encode(VANTARO_FOURCC_VTQ3, in, 95);
  for (const int32_t threads : {0, 1, 8}) {
    vantaro_options options;
    vantaro_options_default(&options);
    options.kernels = VANTARO_KERNELS_SCALAR;
    options.threads = threads;
    vantaro_encoder* e = nullptr;
    ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ3, 48, 40, 95, &options, &e), VANTARO_OK);
    std::vector<uint8_t> out(automatic.size());
    size_t written = 0;
    EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), out.size(), &written), VANTARO_OK);
    EXPECT_EQ(out, automatic);
    vantaro_encoder_destroy(e);
  }
}

// 4K noise as 4:4:4 at quality 99 outgrows the header's 24-bit field offset.
TEST(NativeApi, AFieldPastTheHeaderLimitIsFrameTooLarge) {
  const Picture in = Make(VANTARO_FORMAT_YUV444P, 3840, 2160, true);
  vantaro_encoder* e = nullptr;
  ASSERT_EQ(vantaro_encoder_create(VANTARO_FOURCC_VTQ4, 3840, 2160, 99, nullptr, &e), VANTARO_OK);
  std::vector<uint8_t> out(vantaro_frame_bound(VANTARO_FOURCC_VTQ4, 3840, 2160));
  size_t written = 0;
  EXPECT_EQ(vantaro_encode(e, &in.pic, out.data(), out.size(), &written), VANTARO_ERROR_FRAME_TOO_LARGE);
  vantaro_encoder_destroy(e);
}

TEST(NativeApi, CppWrapperOwnsHandlesAndPassesStatuses) {
  const Picture in = Make(VANTARO_FORMAT_YUVA422P, 40, 20);
  Picture out(VANTARO_FORMAT_YUVA422P, 40, 20);
  vantaro::Encoder encoder;
  ASSERT_EQ(vantaro::Encoder::Create(VANTARO_FOURCC_VTQ7, 40, 20, 95, nullptr, encoder), VANTARO_OK);
  std::vector<uint8_t> frame(vantaro::FrameBound(VANTARO_FOURCC_VTQ7, 40, 20));
  size_t written = 0;
  EXPECT_EQ(encoder.Encode(in.pic, std::span(frame).first(4), written), VANTARO_ERROR_BUFFER_TOO_SMALL);
  ASSERT_EQ(encoder.Encode(in.pic, frame, written), VANTARO_OK);
  vantaro::Decoder decoder;
  EXPECT_EQ(vantaro::Decoder::Create(VANTARO_FOURCC_VTQ7, 0, 20, nullptr, decoder), VANTARO_ERROR_BAD_SIZE);
  EXPECT_FALSE(decoder);
  ASSERT_EQ(vantaro::Decoder::Create(VANTARO_FOURCC_VTQ7, 40, 20, nullptr, decoder), VANTARO_OK);
  EXPECT_EQ(decoder.Decode(std::span(frame).first(written), out.pic), VANTARO_OK);
  EXPECT_GT(Psnr(in, out, 3, 40, 20), 38.0);
}

}  // namespace
