// No picture makes an encoder write past the room it was given: the driver
// fills at most the width * height * 6 bytes it advertises and refuses a
// frame that needs more; the native encoder answers BUFFER_TOO_SMALL for any
// shorter capacity and never needs more than vantaro_frame_bound(). Guard
// bytes behind every buffer must survive. Pictures are binary noise (every
// byte 0 or 255), the largest frames the worst-case search found. A field
// the frame header cannot address is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "driver/driver_host_session.h"

namespace vantaro::test {
namespace {

bool GuardIntact(const std::vector<uint8_t>& buffer, size_t used) {
  return std::all_of(buffer.begin() + static_cast<ptrdiff_t>(used), buffer.end(),
                     [](uint8_t b) { return b == kGuard; });
}

void BinaryNoise(uint8_t* first, uint8_t* last, uint32_t seed) {
  for (uint8_t* b = first; b != last; ++b) {
    seed = seed * 1664525u + 1013904223u;
    *b = (seed >> 31) != 0 ? 255 : 0;
  }
}

TEST(Capacity, DriverFillsAtMostSixBytesAPixelOrRefuses) {
  // Binary noise at quality 99 as AYUV or RGB24 fits 6 bytes a pixel in the
  // variants without alpha and outgrows it in those with.
  for (const char* variant : {"VTQ0", "VTQ2", "VTQ4", "VTQ5", "VTQ7", "VTQ9"}) {
    SCOPED_TRACE(variant);
    const bool alpha = StreamHasAlpha(FourCC(variant));
    const DriverInstance driver(variant);
    const int32_t quality = 9800;  // quality 99
    driver.Send(ICM_SETQUALITY, &quality);
    const uint16_t bits = alpha ? 32 : 24;
    BITMAPINFOHEADER input{40, 64, 64, 1, bits, alpha ? FourCC("AYUV") : 0, 64u * 64 * bits / 8, 0, 0, 0, 0};
    std::vector<uint8_t> picture(input.biSizeImage);
    BinaryNoise(picture.data(), picture.data() + picture.size(), FourCC(variant));
    BITMAPINFOHEADER output{};
    ASSERT_EQ(driver.Send(ICM_COMPRESS_GET_FORMAT, &input, &output), ICERR_OK);
    ASSERT_EQ(driver.Send(ICM_COMPRESS_BEGIN, &input, &output), ICERR_OK);
    const size_t advertised = output.biSizeImage;
    ASSERT_EQ(advertised, size_t{6} * 64 * 64);
    std::vector<uint8_t> room(advertised + 64, kGuard);
    uint32_t flags = 0;
    ICCOMPRESS frame{0, &output, room.data(), &input, picture.data(), nullptr, &flags, 0, 0, 0, nullptr, nullptr};
    EXPECT_EQ(driver.Send(ICM_COMPRESS, &frame), alpha ? ICERR_BADFORMAT : ICERR_OK);
    EXPECT_LE(output.biSizeImage, advertised);
    EXPECT_TRUE(GuardIntact(room, advertised));
    driver.Send(ICM_COMPRESS_END);
  }
}

TEST(Capacity, FrameBoundSufficesAndShorterRoomsAreRefused) {
  for (const uint32_t fourcc : kVariantFourCCs) {
    // Odd sizes too: there the frame header and padding weigh the most.
    for (const auto& [width, height] : {std::pair{1, 1}, {17, 3}, {64, 64}}) {
      SCOPED_TRACE(Name(fourcc) + " " + std::to_string(width) + "x" + std::to_string(height));
      Picture picture(VANTARO_FORMAT_YUVA444P, width, height);
      uint8_t* const first = picture.bytes.data() + Picture::kGuardBytes;
      BinaryNoise(first, first + picture.bytes.size() - 2 * Picture::kGuardBytes, static_cast<uint32_t>(width * 131 + height));
      vantaro_encoder* encoder = nullptr;
      ASSERT_EQ(vantaro_encoder_create(fourcc, width, height, 99, nullptr, &encoder), VANTARO_OK);
      const size_t bound = vantaro_frame_bound(fourcc, width, height);
      std::vector<uint8_t> room(bound + 64, kGuard);
      size_t written = 0;
      ASSERT_EQ(vantaro_encode(encoder, &picture.pic, room.data(), bound, &written), VANTARO_OK);
      EXPECT_LE(written, bound);
      EXPECT_TRUE(GuardIntact(room, bound));
      for (const size_t capacity : {written - 1, written / 2, size_t{0}}) {
        std::vector<uint8_t> small(capacity + 64, kGuard);
        size_t reported = 0;
        EXPECT_EQ(vantaro_encode(encoder, &picture.pic, small.data(), capacity, &reported),
                  VANTARO_ERROR_BUFFER_TOO_SMALL);
        EXPECT_EQ(reported, written);
        EXPECT_TRUE(GuardIntact(small, capacity)) << "capacity " << capacity;
      }
      vantaro_encoder_destroy(encoder);
    }
  }
}

// 4K noise as 4:4:4 at quality 99 outgrows the header's 24-bit field offset.
TEST(Capacity, AFieldPastTheHeaderLimitIsFrameTooLarge) {
  Picture in(VANTARO_FORMAT_YUV444P, 3840, 2160);
  Fill(in, Content::kNoise);
  std::vector<uint8_t> frame;
  EXPECT_EQ(Encode(VANTARO_FOURCC_VTQ4, in.pic, 99, frame), VANTARO_ERROR_FRAME_TOO_LARGE);
}

}  // namespace
}  // namespace vantaro::test
