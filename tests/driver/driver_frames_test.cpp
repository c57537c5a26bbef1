// Frames through the driver: its own geometry (driver lines, the planar
// second plane behind the picture's lines, bottom-up RGB) held to the direct
// functions, and the answers of the format messages around them. The codec's
// bytes themselves are pinned by the golden suite.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "driver_host_session.h"

namespace vantaro::test {
namespace {

constexpr int32_t kW = 64, kH = 136;  // five macroblock rows a field, the last partial
constexpr size_t kGuard = 64;

struct Compressed {
  int64_t result;
  uint32_t flags = 0xDEAD;
  BITMAPINFOHEADER format;
  std::vector<uint8_t> out;
};

// ICM_COMPRESS into `room` bytes (plus a watched guard) under the compressed header `format`.
Compressed Compress(const DriverInstance& d, BITMAPINFOHEADER source, const std::vector<uint8_t>& pic,
                    BITMAPINFOHEADER format, size_t room) {
  Compressed c{0, 0xDEAD, format, std::vector<uint8_t>(room + kGuard, 0xC3)};
  ICCOMPRESS ic{0, &c.format, c.out.data(), &source, const_cast<uint8_t*>(pic.data()), nullptr, &c.flags, 0, 0,
                1234 /* never read */, nullptr, nullptr};
  c.result = d.Send(ICM_COMPRESS, &ic, reinterpret_cast<void*>(sizeof ic));
  EXPECT_TRUE(std::all_of(c.out.end() - kGuard, c.out.end(), [](uint8_t b) { return b == 0xC3; }));
  return c;
}

void ExpectFrame(const Compressed& c, const std::vector<uint8_t>& direct) {
  ASSERT_EQ(c.result, ICERR_OK);
  EXPECT_EQ(c.flags, AVIIF_KEYFRAME);
  ASSERT_EQ(c.format.biSizeImage, direct.size());  // four more than the frame, as reported
  EXPECT_TRUE(std::equal(direct.begin(), direct.end() - 4, c.out.begin()));
}

int64_t Decompress(const DriverInstance& d, BITMAPINFOHEADER stream, const uint8_t* bytes,
                   BITMAPINFOHEADER output, std::vector<uint8_t>& pic) {
  ICDECOMPRESS ic{0, &stream, const_cast<uint8_t*>(bytes), &output, pic.data(), 0};
  return d.Send(ICM_DECOMPRESS, &ic, reinterpret_cast<void*>(sizeof ic));
}

// The direct functions field by field from the line at `top`, lines `line`
// apart, the second plane (if any) `plane` bytes in and one line further for
// the second field.
std::vector<uint8_t> DirectCompress(const char* variant, const BITMAPINFOHEADER& source, const std::vector<uint8_t>& pic,
                                    size_t top, int32_t line, size_t plane = 0, int32_t quality = 96) {
  void* h = VTC_CompressFieldBeginQuality(&source, FourCC(variant), quality);
  std::vector<uint8_t> stream(pic.size() * 4 + 4096);
  int64_t length = 0;
  for (int32_t f = 0; f < 2; ++f) {
    length = VTC_CompressFieldEx(h, stream.data(), pic.data() + top + f * line,
                                 plane != 0 ? pic.data() + plane + f * line : nullptr, 2 * line, f);
  }
  VTC_CompressFieldEnd(h);
  stream.resize(static_cast<size_t>(length));
  return stream;
}

std::vector<uint8_t> StreamOf(const char* variant, uint32_t seed, int32_t quality = 96) {
  const BITMAPINFOHEADER rgb = Header(kW, -kH, 0, 24);
  return DirectCompress(variant, rgb, PatternBytes(size_t(kW) * kH * 3, seed, 64), 0, kW * 3, 0, quality);
}

TEST(DriverFrames, EachVariantTakesTheLayoutsOfItsAlpha) {
  const std::pair<const char*, uint16_t> layouts[] = {
      {"NV12", 12}, {"NV16", 16}, {"NV24", 24}, {"YA20", 24}, {"YA22", 32}, {"YA44", 48}, {"YUY2", 16},
      {"UYVY", 16}, {"UYVY", 24}, {"UYVA", 24}, {"AYUV", 32}, {"\0\0\0\0", 24}, {"\0\0\0\0", 32}};
  for (const char* variant : {"VTQ0", "VTQ1", "VTQ2", "VTQ3", "VTQ4", "VTQ5", "VTQ7", "VTQ9"}) {
    const bool alpha = variant[3] != '0' && variant[3] != '2' && variant[3] != '4';
    const BITMAPINFOHEADER stream = Header(kW, kH, FourCC(variant), 24);
    DriverInstance d(variant);
    int compress = 0, decompress = 0;
    for (const auto& [compression, bits] : layouts) {
      const BITMAPINFOHEADER h = Header(kW, -kH, FourCC(compression), bits, 1u << 20);
      compress += d.Send(ICM_COMPRESS_QUERY, &h) == ICERR_OK;
      decompress += d.Send(ICM_DECOMPRESS_QUERY, &stream, &h) == ICERR_OK;
    }
    // RGB24 feeds every family, RGB32 is written by every family.
    EXPECT_EQ(compress, alpha ? 8 : 6) << variant;
    EXPECT_EQ(decompress, 7) << variant;
  }
}

TEST(DriverFrames, PlanarPackedAndBottomUpFramesMatchTheDirectFunctions) {
  // Driver lines of the planar layouts are two bytes a pixel, their second
  // plane follows the picture's kH lines; bottom-up RGB is walked from its
  // last line upward.
  const struct {
    const char* variant;
    const char* layout;
    uint16_t bits;
    int32_t line;
    size_t plane;
  } cases[] = {{"VTQ0", "NV12", 12, 2 * kW, size_t(kH) * 2 * kW},
               {"VTQ3", "YA22", 32, 2 * kW, size_t(kH) * 2 * kW},
               {"VTQ2", "YUY2", 16, 2 * kW, 0},
               {"VTQ4", "\0\0\0\0", 24, -3 * kW, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.variant);
    const uint32_t room = kW * kH * 8;
    const size_t top = c.line < 0 ? size_t(kH - 1) * size_t(-c.line) : 0;
    const BITMAPINFOHEADER source = Header(kW, c.line < 0 ? kH : -kH, FourCC(c.layout), c.bits, room);
    const std::vector<uint8_t> pic = PatternBytes(room, 3, 64);
    DriverInstance d(c.variant);
    BITMAPINFOHEADER format;
    ASSERT_EQ(d.Send(ICM_COMPRESS_QUERY, &source), ICERR_OK);
    ASSERT_EQ(d.Send(ICM_COMPRESS_GET_FORMAT, &source, &format), ICERR_OK);
    ASSERT_EQ(d.Send(ICM_COMPRESS_BEGIN, &source, &format), ICERR_OK);
    const std::vector<uint8_t> direct = DirectCompress(c.variant, source, pic, top, c.line, c.plane);
    ExpectFrame(Compress(d, source, pic, format, size_t(d.Send(ICM_COMPRESS_GET_SIZE, nullptr, &format))), direct);

    const BITMAPINFOHEADER stream = Header(kW, kH, FourCC(c.variant), 24, uint32_t(direct.size()));
    ASSERT_EQ(d.Send(ICM_DECOMPRESS_QUERY, &stream, &source), ICERR_OK);
    ASSERT_EQ(d.Send(ICM_DECOMPRESS_BEGIN, &stream, &source), ICERR_OK);
    std::vector<uint8_t> decoded(room + kGuard, 0x3C), expected = decoded;
    ASSERT_EQ(Decompress(d, stream, direct.data(), source, decoded), ICERR_OK);
    void* h = VTC_DecompressFieldBegin(&source, FourCC(c.variant));
    for (int32_t f = 0; f < 2; ++f) {
      VTC_DecompressFieldEx(h, expected.data() + top + f * c.line,
                            c.plane != 0 ? expected.data() + c.plane + f * c.line : nullptr, direct.data(),
                            2 * c.line, f);
    }
    VTC_DecompressFieldEnd(h);
    EXPECT_EQ(decoded, expected);
    EXPECT_NE(decoded, std::vector<uint8_t>(decoded.size(), 0x3C));
  }
}

// The format records both directions write, and the queries' answers with
// the orientation each leaves behind (also when it refuses).
TEST(DriverFrames, FormatMessagesAndQueries) {
  DriverInstance vtq5("vtq5"), vtq2("VTQ2"), vtq0("VTQ0"), vtq1("VTQ1"), lower("vtq3");
  BITMAPINFOHEADER h = Header(720, -486, 0, 32), f;
  h.biXPelsPerMeter = 2835;
  EXPECT_EQ(vtq5.Send(ICM_COMPRESS_GET_FORMAT, &h, nullptr), 40);
  EXPECT_EQ(vtq5.Send(ICM_COMPRESS_GET_FORMAT, &h, &f), ICERR_OK);
  const BITMAPINFOHEADER compressed{40, 720, 486, 1, 32, FourCC("VTQ5"), 2099520, 2835, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&f, &compressed, 40), 0);
  EXPECT_EQ(vtq5.codec().topDown, 1);
  BITMAPINFOHEADER source = Header(1920, -1080, FourCC("VTQ5"), 24, 12345);
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_GET_FORMAT, &source, &f), 0);
  const BITMAPINFOHEADER picture{40, 1920, 1080, 1, 32, 0, 8294400, 0, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&f, &picture, 40), 0);
  source.biCompression = FourCC("vtq5");
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_GET_FORMAT, &source, &f), -2);

  const uint32_t rgb32 = 720 * 480 * 4;
  const BITMAPINFOHEADER stream0 = Header(720, 480, FourCC("VTQ0"), 24);
  const struct {
    const DriverInstance* d;
    uint32_t message;
    BITMAPINFOHEADER stream, picture;
    int64_t result;
    int topDown;  // -1: left as it was
  } cases[] = {
      // Compressing: the signed width test.
      {&vtq2, ICM_COMPRESS_QUERY, {}, Header(1920, 1080, FourCC("UYVY"), 16), 0, 0},
      {&vtq2, ICM_COMPRESS_QUERY, {}, Header(1922, -1080, FourCC("UYVY"), 16), -2, 1},
      {&vtq2, ICM_COMPRESS_QUERY, {}, Header(-16, 7, FourCC("UYVY"), 16), 0, 0},
      {&vtq2, ICM_COMPRESS_QUERY, {}, Header(0, -1, FourCC("UYVY"), 16), 0, 1},
      {&vtq2, ICM_COMPRESS_QUERY, {}, Header(1920, 1080, 0, 16), -2, 0},
      // Decompressing: whole bytes a pixel, the size compared unsigned, a
      // zero height top-down here only.
      {&lower, ICM_DECOMPRESS_QUERY, Header(720, 480, FourCC("VTQ3"), 24), {}, 0, -1},
      {&lower, ICM_DECOMPRESS_QUERY, Header(720, 480, FourCC("vtq3"), 24), {}, -2, -1},  // though the open took it
      {&vtq0, ICM_DECOMPRESS_QUERY, stream0, Header(720, 480, 0, 24, rgb32), 0, 0},
      {&vtq0, ICM_DECOMPRESS_QUERY, stream0, Header(720, 480, 0, 32, rgb32 - 1), -7, -1},
      {&vtq0, ICM_DECOMPRESS_QUERY, stream0, Header(720, 480, FourCC("NV12"), 12, 345600), 0, 0},
      {&vtq0, ICM_DECOMPRESS_QUERY, stream0, Header(720, -482, 0, 32, rgb32), -2, -1},
      {&vtq0, ICM_DECOMPRESS_QUERY, stream0, Header(720, 480, 0, 16, rgb32), -2, -1},
      {&vtq1, ICM_DECOMPRESS_QUERY, stream0, Header(720, -480, 0, 24, rgb32), -2, 1},  // refused after setting it
      {&vtq0, ICM_DECOMPRESS_QUERY, Header(-16, 16, FourCC("VTQ0"), 24), Header(-16, 16, 0, 32, 0xFFFFF000u), -7, -1},
      {&vtq0, ICM_DECOMPRESS_QUERY, Header(720, 0, FourCC("VTQ0"), 24), Header(720, 0, 0, 32), 0, 1},
  };
  for (const auto& c : cases) {
    c.d->codec().topDown = 7;
    const bool compress = c.message == ICM_COMPRESS_QUERY;
    const BITMAPINFOHEADER* output = compress || c.picture.biSize == 0 ? nullptr : &c.picture;  // {}: none
    EXPECT_EQ(c.d->Send(c.message, compress ? &c.picture : &c.stream, output), c.result)
        << c.picture.biWidth << "x" << c.picture.biHeight << " " << c.picture.biCompression;
    EXPECT_EQ(c.d->codec().topDown, c.topDown < 0 ? 7 : c.topDown) << c.picture.biWidth << "x" << c.picture.biHeight;
  }
}

TEST(DriverFrames, CompressRefusalsAndTheOutputBound) {
  DriverInstance d("VTQ2");
  BITMAPINFOHEADER source = Header(kW, -kH, FourCC("YUY2"), 16, kW * kH * 2);
  ASSERT_EQ(d.Send(ICM_COMPRESS_QUERY, &source), ICERR_OK);
  ASSERT_EQ(d.Send(ICM_COMPRESS_BEGIN, &source), ICERR_OK);
  const std::vector<uint8_t> pic = PatternBytes(source.biSizeImage * 2, 9, 64);
  const BITMAPINFOHEADER format = Header(kW, kH, FourCC("VTQ2"), 16, 4321);
  const std::vector<uint8_t> direct = DirectCompress("VTQ2", source, pic, 0, kW * 2);
  // One byte short, another size than Begin's, too little output: -2, nothing written.
  BITMAPINFOHEADER shortSource = source, wider = Header(kW + 16, -kH, FourCC("YUY2"), 16, uint32_t(pic.size()));
  shortSource.biSizeImage -= 1;
  for (const auto& [input, tellsOf] : {std::pair{shortSource, format}, {wider, format},
                                       {source, Header(1, 1, FourCC("VTQ2"), 16)}}) {
    const Compressed c = Compress(d, input, pic, tellsOf, 6);
    EXPECT_EQ(c.result, ICERR_BADFORMAT);
    EXPECT_EQ(c.flags, 0xDEADu);
    EXPECT_EQ(c.format.biSizeImage, tellsOf.biSizeImage);
  }
  // An unusable layout is refused yet still flagged a key frame; no size is told.
  const Compressed unusable = Compress(d, Header(kW, kH, 0, 16, 1u << 20), pic, format, 6);
  EXPECT_EQ(unusable.result, ICERR_BADFORMAT);
  EXPECT_EQ(unusable.flags, AVIIF_KEYFRAME);
  EXPECT_EQ(unusable.format.biSizeImage, format.biSizeImage);
  // A larger biSizeImage is room; after the failures the instance carries on.
  ExpectFrame(Compress(d, source, pic, Header(1, 1, 0, 0, uint32_t(direct.size())), direct.size()), direct);
  // A layout changed since Begin is taken from the frame, Begin's kept.
  BITMAPINFOHEADER uyvy = source;
  uyvy.biCompression = FourCC("UYVY");
  ExpectFrame(Compress(d, uyvy, pic, format, size_t(6) * kW * kH), DirectCompress("VTQ2", uyvy, pic, 0, kW * 2));
  EXPECT_EQ(d.codec().colorSpace, kCsYUY2);
}

TEST(DriverFrames, DecompressJudgesQualityByteAndOutputFirst) {
  DriverInstance d("VTQ2");
  BITMAPINFOHEADER output = Header(kW, -kH, FourCC("UYVY"), 16);
  const std::vector<uint8_t> blank(size_t(kW) * kH * 2, 0x3C);
  std::vector<uint8_t> pic;
  // Each frame brings its own quality; 0 and 100 are refused, the output untouched.
  for (const int32_t quality : {60, 99, 0, 100}) {
    std::vector<uint8_t> stream = StreamOf("VTQ2", 12, quality % 100 == 0 ? 96 : quality);
    stream[0] = static_cast<uint8_t>(quality);
    const BITMAPINFOHEADER header = Header(kW, -kH, FourCC("VTQ2"), 24, uint32_t(stream.size()));
    pic = blank;
    EXPECT_EQ(Decompress(d, header, stream.data(), output, pic), quality % 100 != 0 ? 0 : -2) << quality;
    EXPECT_TRUE(quality % 100 != 0 ? d.codec().quality == uint32_t(quality) : pic == blank) << quality;
    EXPECT_EQ(std::tie(d.codec().width, d.codec().height, d.codec().colorSpace), std::make_tuple(kW, kH, uint32_t(kCsUYVY)));
  }
  const std::vector<uint8_t> stream = StreamOf("VTQ2", 13);
  const BITMAPINFOHEADER header = Header(kW, kH, FourCC("VTQ2"), 24);
  EXPECT_EQ(Decompress(d, header, nullptr, output, pic), -2);
  EXPECT_EQ(Decompress(d, header, stream.data(), Header(kW, kH, 0, 16), pic), -2);
  // An output declared smaller than the frame is refused rather than overrun.
  output.biSizeImage = static_cast<uint32_t>(pic.size() - 1);
  EXPECT_EQ(Decompress(d, header, stream.data(), output, pic), -2);
}

}  // namespace
}  // namespace vantaro::test
