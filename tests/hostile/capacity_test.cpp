// No picture makes an encoder write past the room it was given: the driver
// fills at most the width * height * 6 bytes it advertises and refuses a
// frame that needs more; the native encoder answers BUFFER_TOO_SMALL for any
// shorter capacity and never needs more than vantaro_frame_bound(). Guard
// bytes behind every buffer must survive.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "vantaro/driver.h"
#include "vantaro/vantaro.h"

namespace {

constexpr uint8_t kGuard = 0xa5;
constexpr size_t kGuardBytes = 64;

bool GuardIntact(const std::vector<uint8_t>& buffer, size_t used) {
  return std::all_of(buffer.begin() + static_cast<ptrdiff_t>(used), buffer.end(),
                     [](uint8_t b) { return b == kGuard; });
}

// Every byte 0 or 255 at random: the largest frames the search found.
std::vector<uint8_t> BinaryNoise(size_t bytes, uint32_t seed) {
  std::vector<uint8_t> out(bytes);
  for (uint8_t& b : out) {
    seed = seed * 1664525u + 1013904223u;
    b = (seed >> 31) != 0 ? 255 : 0;
  }
  return out;
}

struct DriverCase {
  uint32_t fourcc;
  bool fitsInSix;  // binary noise at quality 99 as AYUV or RGB24 stays within 6 bytes a pixel
};

class DriverCompressRoom : public testing::TestWithParam<DriverCase> {};

TEST_P(DriverCompressRoom, FillsAtMostSixBytesAPixelOrRefuses) {
  const DriverCase c = GetParam();
  constexpr int32_t kSize = 64;
  const bool alpha = c.fourcc != VANTARO_FOURCC_VTQ0 && c.fourcc != VANTARO_FOURCC_VTQ2 &&
                     c.fourcc != VANTARO_FOURCC_VTQ4;
  ICOPEN open{};
  open.dwSize = sizeof open;
  open.fccType = ICTYPE_VIDEO;
  open.fccHandler = c.fourcc;
  const auto id = static_cast<uint64_t>(DriverProc(0, nullptr, DRV_OPEN, 0, reinterpret_cast<intptr_t>(&open)));
  ASSERT_NE(id, 0u);
  const int32_t quality = 9800;  // quality 99
  DriverProc(id, nullptr, ICM_SETQUALITY, reinterpret_cast<intptr_t>(&quality), 0);
  BITMAPINFOHEADER input{};
  input.biSize = sizeof input;
  input.biWidth = kSize;
  input.biHeight = kSize;
  input.biPlanes = 1;
  input.biBitCount = alpha ? 32 : 24;
  input.biCompression = alpha ? VTC_FOURCC('A', 'Y', 'U', 'V') : 0;
  input.biSizeImage = static_cast<uint32_t>(kSize * kSize * (alpha ? 4 : 3));
  const std::vector<uint8_t> picture = BinaryNoise(input.biSizeImage, c.fourcc);
  BITMAPINFOHEADER output{};
  ASSERT_EQ(DriverProc(id, nullptr, ICM_COMPRESS_GET_FORMAT, reinterpret_cast<intptr_t>(&input),
                       reinterpret_cast<intptr_t>(&output)), ICERR_OK);
  ASSERT_EQ(DriverProc(id, nullptr, ICM_COMPRESS_BEGIN, reinterpret_cast<intptr_t>(&input),
                       reinterpret_cast<intptr_t>(&output)), ICERR_OK);
  const size_t advertised = output.biSizeImage;
  ASSERT_EQ(advertised, size_t{6} * kSize * kSize);
  std::vector<uint8_t> room(advertised + kGuardBytes, kGuard);
  uint32_t flags = 0;
  ICCOMPRESS frame{};
  frame.lpbiOutput = &output;
  frame.lpOutput = room.data();
  frame.lpbiInput = &input;
  frame.lpInput = const_cast<uint8_t*>(picture.data());
  frame.lpdwFlags = &flags;
  const int64_t result = DriverProc(id, nullptr, ICM_COMPRESS, reinterpret_cast<intptr_t>(&frame), 0);
  DriverProc(id, nullptr, ICM_COMPRESS_END, 0, 0);
  DriverProc(id, nullptr, DRV_CLOSE, 0, 0);
  EXPECT_EQ(result, c.fitsInSix ? ICERR_OK : ICERR_BADFORMAT);
  if (result == ICERR_OK) {
    EXPECT_LE(output.biSizeImage, advertised);
  }
  EXPECT_TRUE(GuardIntact(room, advertised));
}

INSTANTIATE_TEST_SUITE_P(Variants, DriverCompressRoom,
                         testing::Values(DriverCase{VANTARO_FOURCC_VTQ0, true},
                                         DriverCase{VANTARO_FOURCC_VTQ2, true},
                                         DriverCase{VANTARO_FOURCC_VTQ4, true},
                                         DriverCase{VANTARO_FOURCC_VTQ5, false},
                                         DriverCase{VANTARO_FOURCC_VTQ7, false},
                                         DriverCase{VANTARO_FOURCC_VTQ9, false}));

class NativeEncodeRoom : public testing::TestWithParam<uint32_t> {};

TEST_P(NativeEncodeRoom, FrameBoundSufficesAndShorterRoomsAreRefused) {
  const uint32_t fourcc = GetParam();
  // Odd sizes too: there the frame header and padding weigh the most.
  for (const auto& [width, height] : {std::pair{1, 1}, {17, 3}, {64, 64}}) {
    const size_t bytes = vantaro_picture_size(VANTARO_FORMAT_YUVA444P, width, height);
    std::vector<uint8_t> pixels = BinaryNoise(bytes, static_cast<uint32_t>(width * 131 + height));
    vantaro_picture picture;
    ASSERT_EQ(vantaro_picture_fill(&picture, VANTARO_FORMAT_YUVA444P, width, height, pixels.data(), bytes),
              VANTARO_OK);
    vantaro_encoder* encoder = nullptr;
    ASSERT_EQ(vantaro_encoder_create(fourcc, width, height, 99, nullptr, &encoder), VANTARO_OK);
    const size_t bound = vantaro_frame_bound(fourcc, width, height);
    std::vector<uint8_t> room(bound + kGuardBytes, kGuard);
    size_t written = 0;
    ASSERT_EQ(vantaro_encode(encoder, &picture, room.data(), bound, &written), VANTARO_OK);
    EXPECT_LE(written, bound);
    EXPECT_TRUE(GuardIntact(room, bound));
    for (const size_t capacity : {written - 1, written / 2, size_t{0}}) {
      std::vector<uint8_t> small(capacity + kGuardBytes, kGuard);
      size_t reported = 0;
      EXPECT_EQ(vantaro_encode(encoder, &picture, small.data(), capacity, &reported),
                VANTARO_ERROR_BUFFER_TOO_SMALL);
      EXPECT_EQ(reported, written);
      EXPECT_TRUE(GuardIntact(small, capacity)) << width << "x" << height << " capacity " << capacity;
    }
    vantaro_encoder_destroy(encoder);
  }
}

INSTANTIATE_TEST_SUITE_P(Variants, NativeEncodeRoom,
                         testing::Values(VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                                         VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                                         VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9));

}  // namespace
