// Whole frames through the driver, held byte for byte to the direct functions,
// and the answers of the format messages around them.
#include <gtest/gtest.h>

#include <algorithm>

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
  ICCOMPRESS ic{};
  ic.lpbiOutput = &c.format;
  ic.lpOutput = c.out.data();
  ic.lpbiInput = &source;
  ic.lpInput = const_cast<uint8_t*>(pic.data());
  ic.lpdwFlags = &c.flags;
  ic.dwQuality = 1234;  // never read
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

std::vector<uint8_t> StreamOf(const char* variant, uint32_t seed, int32_t quality = 96) {
  const BITMAPINFOHEADER source = Header(kW, -kH, 0, AlphaVariant(variant) ? 32 : 24);
  return DirectCompress(variant, source, true, quality, PatternBytes(GeometryOf(source, true).bytes, seed, 64));
}

TEST(DriverFrames, CompressEveryVariantAndAcceptedLayout) {
  for (const char* variant : kVariants) {
    int accepted = 0;
    for (const Layout& layout : kLayouts) {
      for (const bool topDown : {true, false}) {
        SCOPED_TRACE(std::string(variant) + " " + layout.name + (topDown ? " top-down" : " bottom-up"));
        BITMAPINFOHEADER source = Header(kW, topDown ? -kH : kH, layout.compression, layout.bits);
        DriverInstance d(variant);
        if (d.Send(ICM_COMPRESS_QUERY, &source) != ICERR_OK) continue;
        accepted += topDown;
        BITMAPINFOHEADER format;
        ASSERT_EQ(d.Send(ICM_COMPRESS_GET_FORMAT, &source, &format), ICERR_OK);
        const int64_t room = d.Send(ICM_COMPRESS_GET_SIZE, nullptr, &format);
        ASSERT_EQ(d.Send(ICM_COMPRESS_BEGIN, &source, &format), ICERR_OK);
        const int32_t quality = topDown ? 96 : 85, icm = (quality - 50) * 200;
        if (!topDown) {
          ASSERT_EQ(d.Send(ICM_SETQUALITY, &icm), ICERR_OK);
        }
        source.biSizeImage = static_cast<uint32_t>(GeometryOf(source, topDown).bytes);
        for (uint32_t seed : {1u, 2u}) {
          const std::vector<uint8_t> pic = PatternBytes(source.biSizeImage, seed, 64);
          const std::vector<uint8_t> direct = DirectCompress(variant, source, topDown, quality, pic);
          EXPECT_GT(direct.size(), 32u);  // more than eight empty slices
          ExpectFrame(Compress(d, source, pic, format, static_cast<size_t>(room)), direct);
        }
      }
    }
    EXPECT_EQ(accepted, AlphaVariant(variant) ? 8 : 6) << variant;  // RGB24 suits every family
  }
}

TEST(DriverFrames, DecompressEveryVariantIntoAcceptedOutputs) {
  for (const char* variant : kVariants) {
    const std::vector<uint8_t> stream = StreamOf(variant, 11);
    const BITMAPINFOHEADER streamHeader = Header(kW, kH, FourCC(variant), 24, uint32_t(stream.size()));
    int accepted = 0;
    for (const Layout& layout : kLayouts) {
      for (const bool topDown : {true, false}) {
        SCOPED_TRACE(std::string(variant) + " " + layout.name + (topDown ? " top-down" : " bottom-up"));
        BITMAPINFOHEADER output = Header(kW, topDown ? -kH : kH, layout.compression, layout.bits);
        const Geometry g = GeometryOf(output, topDown);
        output.biSizeImage = static_cast<uint32_t>(g.bytes);
        DriverInstance d(variant);
        if (d.Send(ICM_DECOMPRESS_QUERY, &streamHeader, &output) != ICERR_OK) continue;
        accepted += topDown;
        ASSERT_EQ(d.Send(ICM_DECOMPRESS_BEGIN, &streamHeader, &output), ICERR_OK);
        std::vector<uint8_t> pic(g.bytes + kGuard, 0x3C), direct = pic;
        ASSERT_EQ(Decompress(d, streamHeader, stream.data(), output, pic), ICERR_OK);
        DirectDecompress(variant, output, topDown, stream, direct);
        EXPECT_EQ(pic, direct);
        EXPECT_NE(pic, std::vector<uint8_t>(pic.size(), 0x3C));
      }
    }
    EXPECT_EQ(accepted, 7) << variant;  // RGB32 suits every family
  }
}

TEST(DriverFrames, BottomUpRgbIsTheTopDownPictureTurnedOver) {
  const int32_t line = kW * 3;
  const std::vector<uint8_t> pic = PatternBytes(size_t(line) * kH, 7, 64);
  std::vector<uint8_t> turned(pic.size()), decoded[2];
  for (int32_t y = 0; y < kH; ++y) std::copy_n(&pic[y * line], line, &turned[(kH - 1 - y) * line]);
  const std::vector<uint8_t> stream = StreamOf("VTQ4", 8);
  const BITMAPINFOHEADER streamHeader = Header(kW, kH, FourCC("VTQ4"), 24);
  std::vector<uint8_t> frames[2];
  for (const bool topDown : {true, false}) {
    const BITMAPINFOHEADER h = Header(kW, topDown ? -kH : kH, 0, 24, uint32_t(pic.size()));
    DriverInstance d("VTQ4");
    ASSERT_EQ(d.Send(ICM_COMPRESS_QUERY, &h), ICERR_OK);
    ASSERT_EQ(d.Send(ICM_COMPRESS_BEGIN, &h), ICERR_OK);
    const Compressed c = Compress(d, h, topDown ? pic : turned, Header(kW, kH, 0, 24), pic.size() * 2);
    ASSERT_EQ(c.result, ICERR_OK);
    frames[topDown].assign(c.out.begin(), c.out.begin() + c.format.biSizeImage - 4);
    // Only top-down frames are remembered as the frame being coded.
    EXPECT_EQ(d.codec().frameBase, topDown ? (topDown ? pic : turned).data() : nullptr);
    ASSERT_EQ(d.Send(ICM_DECOMPRESS_QUERY, &streamHeader, &h), ICERR_OK);
    decoded[topDown].assign(pic.size(), 0);
    ASSERT_EQ(Decompress(d, streamHeader, stream.data(), h, decoded[topDown]), ICERR_OK);
  }
  EXPECT_EQ(frames[0], frames[1]);
  for (int32_t y = 0; y < kH; ++y)
    ASSERT_TRUE(std::equal(&decoded[1][y * line], &decoded[1][(y + 1) * line], &decoded[0][(kH - 1 - y) * line]));
}

TEST(DriverFrames, CompressFormatMessages) {
  DriverInstance d("vtq5");
  BITMAPINFOHEADER h = Header(720, -486, 0, 32);
  h.biXPelsPerMeter = 2835;
  EXPECT_EQ(d.Send(ICM_COMPRESS_GET_FORMAT, &h, nullptr), 40);
  EXPECT_EQ(d.codec().topDown, 0);
  BITMAPINFOHEADER f;
  std::memset(&f, 0x77, sizeof f);
  EXPECT_EQ(d.Send(ICM_COMPRESS_GET_FORMAT, &h, &f), ICERR_OK);
  const BITMAPINFOHEADER expected{40, 720, 486, 1, 32, FourCC("VTQ5"), 2099520, 2835, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&f, &expected, 40), 0);
  EXPECT_EQ(d.codec().topDown, 1);
  f = Header(-720, -480, 0, 0);
  EXPECT_EQ(d.Send(ICM_COMPRESS_GET_SIZE, nullptr, &f), 2073600);

  // Query: the signed width test, the alpha rule, and orientation set even on refusal.
  DriverInstance vtq2("VTQ2"), vtq0("VTQ0");
  const std::pair<BITMAPINFOHEADER, int64_t> cases[] = {
      {Header(1920, 1080, FourCC("UYVY"), 16), 0}, {Header(1922, -1080, FourCC("UYVY"), 16), -2},
      {Header(-16, 7, FourCC("UYVY"), 16), 0},     {Header(0, -1, FourCC("UYVY"), 16), 0},
      {Header(1920, 1080, 0, 16), -2},          {Header(1920, -1080, 0, 32), -2}};
  for (const auto& [header, result] : cases) {
    EXPECT_EQ(vtq2.Send(ICM_COMPRESS_QUERY, &header), result) << header.biWidth;
    EXPECT_EQ(vtq2.codec().topDown, header.biHeight < 0);
  }
  h = Header(64, 64, 0, 32);
  EXPECT_EQ(vtq0.Send(ICM_COMPRESS_QUERY, &h), -2);
  EXPECT_EQ(d.Send(ICM_COMPRESS_QUERY, &h), 0);
  h.biBitCount = 24;
  EXPECT_EQ(vtq0.Send(ICM_COMPRESS_QUERY, &h), 0);
}

TEST(DriverFrames, CompressRefusalsAndTheOutputBound) {
  DriverInstance d("VTQ2");
  BITMAPINFOHEADER source = Header(kW, -kH, FourCC("YUY2"), 16, kW * kH * 2);
  ASSERT_EQ(d.Send(ICM_COMPRESS_QUERY, &source), ICERR_OK);
  ASSERT_EQ(d.Send(ICM_COMPRESS_BEGIN, &source), ICERR_OK);
  const std::vector<uint8_t> pic = PatternBytes(source.biSizeImage * 2, 9, 64);
  const BITMAPINFOHEADER format = Header(kW, kH, FourCC("VTQ2"), 16, 4321);
  const std::vector<uint8_t> direct = DirectCompress("VTQ2", source, true, 96, pic);
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
  ExpectFrame(Compress(d, uyvy, pic, format, size_t(6) * kW * kH), DirectCompress("VTQ2", uyvy, true, 96, pic));
  EXPECT_EQ(d.codec().colorSpace, kCsYUY2);
}

TEST(DriverFrames, DecompressFormatMessages) {
  DriverInstance vtq0("VTQ0"), vtq1("VTQ1"), lower("vtq3");
  BITMAPINFOHEADER stream = Header(720, 480, FourCC("VTQ3"), 24);
  EXPECT_EQ(lower.Send(ICM_DECOMPRESS_QUERY, &stream), 0);
  stream.biCompression = FourCC("vtq3");  // refused, though the open took it
  EXPECT_EQ(lower.Send(ICM_DECOMPRESS_QUERY, &stream), -2);
  stream.biCompression = FourCC("VTQ0");
  const uint32_t rgb32Size = 720 * 480 * 4;
  const std::tuple<const DriverInstance*, BITMAPINFOHEADER, int64_t, int> cases[] = {
      {&vtq0, Header(720, 480, FourCC("UYVA"), 24, rgb32Size), -2, 0},
      {&vtq0, Header(720, 480, 0, 24, rgb32Size), 0, 0},
      {&vtq0, Header(720, 480, 0, 32, rgb32Size - 1), -7, -1},
      {&vtq0, Header(720, 480, 0, 32, rgb32Size), 0, 0},
      {&vtq0, Header(720, 480, FourCC("NV12"), 12, 345600), 0, 0},  // twelve bits count as one byte
      {&vtq0, Header(720, -482, 0, 32, rgb32Size), -2, -1},
      {&vtq0, Header(720, 480, 0, 16, rgb32Size), -2, -1},
      {&vtq1, Header(720, 480, 0, 32, rgb32Size), 0, 0},
      {&vtq1, Header(720, -480, 0, 24, rgb32Size), -2, 1},  // refused after setting the flag
  };
  for (const auto& [d, output, result, topDown] : cases) {
    d->codec().topDown = 7;
    EXPECT_EQ(d->Send(ICM_DECOMPRESS_QUERY, &stream, &output), result) << output.biCompression;
    EXPECT_EQ(d->codec().topDown, topDown < 0 ? 7 : topDown);
  }
  // The need is compared unsigned: a negative width needs more than any buffer.
  BITMAPINFOHEADER mirrored = Header(-16, 16, FourCC("VTQ0"), 24), mirroredOut = Header(-16, 16, 0, 32, 0xFFFFF000u);
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_QUERY, &mirrored, &mirroredOut), -7);
  // A zero height is top-down here only.
  BITMAPINFOHEADER flat = Header(720, 0, FourCC("VTQ0"), 24), flatOut = Header(720, 0, 0, 32);
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_QUERY, &flat, &flatOut), 0);
  EXPECT_EQ(vtq0.codec().topDown, 1);

  BITMAPINFOHEADER source = Header(1920, -1080, FourCC("VTQ5"), 24, 12345), f;
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_GET_FORMAT, &source), 40);
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_GET_FORMAT, &source, &f), 0);
  const BITMAPINFOHEADER expected{40, 1920, 1080, 1, 32, 0, 8294400, 0, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&f, &expected, 40), 0);
  source.biCompression = FourCC("vtq5");
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_GET_FORMAT, &source, &f), -2);
}

TEST(DriverFrames, DecompressJudgesQualityByteAndOutputFirst) {
  DriverInstance d("VTQ2");
  BITMAPINFOHEADER output = Header(kW, -kH, FourCC("UYVY"), 16);
  std::vector<uint8_t> pic(size_t(kW) * kH * 2, 0x3C);
  const std::vector<uint8_t> blank = pic;
  for (const int32_t quality : {60, 0, 99, 100}) {
    std::vector<uint8_t> stream = StreamOf("VTQ2", 12, quality == 0 || quality == 100 ? 96 : quality);
    stream[0] = static_cast<uint8_t>(quality == 0 || quality == 100 ? quality : stream[0]);
    const BITMAPINFOHEADER header = Header(kW, -kH, FourCC("VTQ2"), 24, uint32_t(stream.size()));
    pic = blank;
    const bool valid = stream[0] >= 1 && stream[0] <= 99;
    EXPECT_EQ(Decompress(d, header, stream.data(), output, pic), valid ? 0 : -2) << quality;
    if (valid) {
      EXPECT_EQ(d.codec().quality, stream[0]);  // each frame brings its own
    } else {
      EXPECT_EQ(pic, blank);
    }
    EXPECT_EQ(d.codec().width, kW);
    EXPECT_EQ(d.codec().height, kH);
    EXPECT_EQ(d.codec().colorSpace, kCsUYVY);
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
