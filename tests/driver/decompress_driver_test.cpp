// The decompress side as a host drives it, held to the direct functions.
#include <gtest/gtest.h>

#include "driver_layouts.h"

namespace vantaro::test {
namespace {

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 136;
constexpr uint8_t kFill = 0x3C;
constexpr size_t kGuard = 64;

// A real frame of the variant, from a source with alpha where the stream has it.
std::vector<uint8_t> StreamOf(uint32_t fourcc, uint32_t seed, int32_t quality = 96) {
  const bool alpha = fourcc != Fcc("VTQ0") && fourcc != Fcc("VTQ2") && fourcc != Fcc("VTQ4");
  const BITMAPINFOHEADER source = Header(kWidth, -kHeight, 0, alpha ? 32 : 24);
  return DirectCompress(fourcc, source, true, quality,
                        Picture(GeometryOf(source).bytes, seed));
}

BITMAPINFOHEADER StreamHeader(uint32_t fourcc, const std::vector<uint8_t>& stream) {
  return Header(kWidth, kHeight, fourcc, 24, static_cast<uint32_t>(stream.size()));
}

int64_t Decompress(const DriverInstance& instance, BITMAPINFOHEADER* streamHeader,
                   const uint8_t* stream, BITMAPINFOHEADER* output, std::vector<uint8_t>& picture) {
  ICDECOMPRESS ic{};
  ic.lpbiInput = streamHeader;
  ic.lpInput = const_cast<uint8_t*>(stream);
  ic.lpbiOutput = output;
  ic.lpOutput = picture.data();
  return instance.Send(ICM_DECOMPRESS, &ic, reinterpret_cast<void*>(sizeof ic));
}

// What the direct functions store for the same frame and output.
std::vector<uint8_t> DirectDecompress(uint32_t fourcc, const BITMAPINFOHEADER& output,
                                      bool topDown, const std::vector<uint8_t>& stream) {
  const FrameGeometry g = GeometryOf(output);
  std::vector<uint8_t> picture(g.bytes + kGuard, kFill);
  void* handle = VTC_DecompressFieldBegin(&output, fourcc);
  if (g.planeStart != 0) {
    uint8_t* chroma = picture.data() + g.planeStart;
    VTC_DecompressFieldEx(handle, picture.data(), chroma, stream.data(), 2 * g.line, 0);
    VTC_DecompressFieldEx(handle, picture.data() + g.line, chroma + g.line, stream.data(),
                          2 * g.line, 1);
  } else if (IsBottomUpRgb(output, topDown)) {
    VTC_DecompressFrame(handle, picture.data() + static_cast<size_t>(g.height - 1) * g.line,
                        stream.data(), -g.line);
  } else {
    VTC_DecompressFrame(handle, picture.data(), stream.data(), g.line);
  }
  VTC_DecompressFieldEnd(handle);
  return picture;
}

TEST(DecompressDriver, EveryVariantAndAcceptedOutputMatchesTheDirectFunctions) {
  for (const uint32_t fourcc : AllVariants()) {
    std::vector<uint8_t> stream = StreamOf(fourcc, 11);
    BITMAPINFOHEADER streamHeader = StreamHeader(fourcc, stream);
    int accepted = 0;
    for (const Layout& layout : AllLayouts()) {
      for (const bool topDown : {true, false}) {
        SCOPED_TRACE(VariantName(fourcc) + " " + layout.name + (topDown ? " top-down" : " bottom-up"));
        BITMAPINFOHEADER output = Header(kWidth, topDown ? -kHeight : kHeight, layout.compression,
                                         layout.bits);
        const FrameGeometry g = GeometryOf(output);
        output.biSizeImage = static_cast<uint32_t>(g.bytes);
        DriverInstance instance(fourcc);
        const int64_t query = instance.Send(ICM_DECOMPRESS_QUERY, &streamHeader, &output);
        if (query == ICERR_BADFORMAT) continue;
        ASSERT_EQ(query, ICERR_OK);
        accepted += topDown ? 1 : 0;
        EXPECT_EQ(instance.Send(ICM_DECOMPRESS_GET_FORMAT, &streamHeader, nullptr), 40);
        ASSERT_EQ(instance.Send(ICM_DECOMPRESS_BEGIN, &streamHeader, &output), ICERR_OK);
        std::vector<uint8_t> picture(g.bytes + kGuard, kFill);
        ASSERT_EQ(Decompress(instance, &streamHeader, stream.data(), &output, picture), ICERR_OK);
        const std::vector<uint8_t> direct = DirectDecompress(fourcc, output, topDown, stream);
        EXPECT_EQ(picture, direct);
        EXPECT_NE(picture, std::vector<uint8_t>(picture.size(), kFill));
        EXPECT_EQ(instance.Send(ICM_DECOMPRESS_END), ICERR_OK);
      }
    }
    // Seven outputs for every family: its own six and RGB32.
    EXPECT_EQ(accepted, 7) << VariantName(fourcc);
  }
}

TEST(DecompressDriver, FramesOfChangingQualityFollowTheStream) {
  DriverInstance instance(Fcc("VTQ2"));
  BITMAPINFOHEADER output = Header(kWidth, -kHeight, Fcc("YUY2"), 16);
  for (const int32_t quality : {60, 99, 96}) {
    std::vector<uint8_t> stream = StreamOf(Fcc("VTQ2"), 12, quality);
    BITMAPINFOHEADER streamHeader = StreamHeader(Fcc("VTQ2"), stream);
    std::vector<uint8_t> picture(GeometryOf(output).bytes + kGuard, kFill);
    ASSERT_EQ(Decompress(instance, &streamHeader, stream.data(), &output, picture), ICERR_OK);
    EXPECT_EQ(picture, DirectDecompress(Fcc("VTQ2"), output, true, stream)) << quality;
    EXPECT_EQ(instance.codec().quality, stream[0]);
  }
}

TEST(DecompressDriver, BottomUpRgbIsTheTopDownPictureTurnedOver) {
  const std::vector<uint8_t> stream = StreamOf(Fcc("VTQ4"), 13);
  BITMAPINFOHEADER streamHeader = StreamHeader(Fcc("VTQ4"), stream);
  const int32_t line = kWidth * 3;
  std::vector<uint8_t> pictures[2];
  for (const bool topDown : {true, false}) {
    DriverInstance instance(Fcc("VTQ4"));
    BITMAPINFOHEADER output =
        Header(kWidth, topDown ? -kHeight : kHeight, 0, 24, static_cast<uint32_t>(line * kHeight));
    ASSERT_EQ(instance.Send(ICM_DECOMPRESS_QUERY, &streamHeader, &output), ICERR_OK);
    std::vector<uint8_t>& picture = pictures[topDown ? 0 : 1];
    picture.assign(static_cast<size_t>(line) * kHeight, kFill);
    ASSERT_EQ(Decompress(instance, &streamHeader, stream.data(), &output, picture), ICERR_OK);
    EXPECT_EQ(instance.codec().frameBase, topDown ? picture.data() : nullptr);
  }
  for (int32_t y = 0; y < kHeight; ++y) {
    ASSERT_TRUE(std::equal(pictures[0].begin() + y * line, pictures[0].begin() + (y + 1) * line,
                           pictures[1].begin() + (kHeight - 1 - y) * line))
        << "line " << y;
  }
}

TEST(DecompressDriver, QueryWithoutOutputJudgesTheStreamFourCCAlone) {
  DriverInstance lower(Fcc("vtq3"));
  BITMAPINFOHEADER stream = Header(720, 480, Fcc("VTQ3"), 24);
  EXPECT_EQ(lower.Send(ICM_DECOMPRESS_QUERY, &stream, nullptr), ICERR_OK);
  stream.biCompression = Fcc("vtq3");
  EXPECT_EQ(lower.Send(ICM_DECOMPRESS_QUERY, &stream, nullptr), ICERR_BADFORMAT);
  stream.biCompression = Fcc("VTQ6");
  EXPECT_EQ(lower.Send(ICM_DECOMPRESS_QUERY, &stream, nullptr), ICERR_BADFORMAT);
  // The instance's family judges the output, not the stream's FourCC.
  stream.biCompression = Fcc("VTQ0");
  BITMAPINFOHEADER uyva = Header(720, 480, Fcc("UYVA"), 24, 720 * 480 * 3);
  EXPECT_EQ(lower.Send(ICM_DECOMPRESS_QUERY, &stream, &uyva), ICERR_OK);
}

TEST(DecompressDriver, OutputsByFamily) {
  BITMAPINFOHEADER stream = Header(720, 480, Fcc("VTQ0"), 24);
  const uint32_t size = 720 * 480 * 4;
  BITMAPINFOHEADER uyva = Header(720, 480, Fcc("UYVA"), 24, size);
  BITMAPINFOHEADER rgb24 = Header(720, 480, 0, 24, size);
  BITMAPINFOHEADER rgb32 = Header(720, 480, 0, 32, size);
  DriverInstance vtq0(Fcc("VTQ0")), vtq1(Fcc("VTQ1"));
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_QUERY, &stream, &uyva), ICERR_BADFORMAT);
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_QUERY, &stream, &rgb32), ICERR_OK);
  EXPECT_EQ(vtq0.Send(ICM_DECOMPRESS_QUERY, &stream, &rgb24), ICERR_OK);
  stream.biCompression = Fcc("VTQ1");
  EXPECT_EQ(vtq1.Send(ICM_DECOMPRESS_QUERY, &stream, &rgb24), ICERR_BADFORMAT);
  EXPECT_EQ(vtq1.Send(ICM_DECOMPRESS_QUERY, &stream, &rgb32), ICERR_OK);
}

TEST(DecompressDriver, QueryChecksSizesInOrder) {
  DriverInstance instance(Fcc("VTQ0"));
  BITMAPINFOHEADER stream = Header(720, 480, Fcc("VTQ0"), 24);
  BITMAPINFOHEADER output = Header(720, 480, 0, 32, 1382399);
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_BADSIZE);
  output.biSizeImage = 1382400;
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_OK);
  // Twelve bits a pixel count as one byte.
  BITMAPINFOHEADER nv12 = Header(720, 480, Fcc("NV12"), 12, 345600);
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_QUERY, &stream, &nv12), ICERR_OK);
  // Size mismatch and unusable layouts come before the buffer size.
  output = Header(720, 482, 0, 32, 0);
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_BADFORMAT);
  output = Header(720, 480, 0, 16, 0);
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_BADFORMAT);
}

TEST(DecompressDriver, QuerySetsOrientationEvenWhenRefusing) {
  DriverInstance vtq1(Fcc("VTQ1"));
  BITMAPINFOHEADER stream = Header(720, 480, Fcc("VTQ1"), 24);
  BITMAPINFOHEADER output = Header(720, -480, 0, 24, 720 * 480 * 3);
  EXPECT_EQ(vtq1.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_BADFORMAT);
  EXPECT_EQ(vtq1.codec().topDown, 1);
  output.biHeight = 480;
  output.biBitCount = 32;
  output.biSizeImage = 720 * 480 * 4;
  EXPECT_EQ(vtq1.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_OK);
  EXPECT_EQ(vtq1.codec().topDown, 0);
  // A zero height is top-down on this side only.
  stream.biHeight = 0;
  output.biHeight = 0;
  EXPECT_EQ(vtq1.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_OK);
  EXPECT_EQ(vtq1.codec().topDown, 1);
  // A size mismatch is refused before the flag is touched.
  output.biHeight = 478;
  EXPECT_EQ(vtq1.Send(ICM_DECOMPRESS_QUERY, &stream, &output), ICERR_BADFORMAT);
  EXPECT_EQ(vtq1.codec().topDown, 1);
}

TEST(DecompressDriver, DefaultFormatIsBottomUpRgb32) {
  DriverInstance instance(Fcc("VTQ5"));
  BITMAPINFOHEADER stream = Header(1920, -1080, Fcc("VTQ5"), 24, 12345);
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_GET_FORMAT, &stream, nullptr), 40);
  BITMAPINFOHEADER output;
  std::memset(&output, 0x77, sizeof output);
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_GET_FORMAT, &stream, &output), ICERR_OK);
  EXPECT_EQ(output.biSize, 40u);
  EXPECT_EQ(output.biWidth, 1920);
  EXPECT_EQ(output.biHeight, 1080);
  EXPECT_EQ(output.biPlanes, 1);
  EXPECT_EQ(output.biBitCount, 32);
  EXPECT_EQ(output.biCompression, 0u);
  EXPECT_EQ(output.biSizeImage, 8294400u);
  EXPECT_EQ(output.biClrUsed, 0u);
  stream.biCompression = Fcc("vtq5");
  EXPECT_EQ(instance.Send(ICM_DECOMPRESS_GET_FORMAT, &stream, &output), ICERR_BADFORMAT);
}

TEST(DecompressDriver, QualityByteAndOutputAreJudgedBeforeDecoding) {
  std::vector<uint8_t> stream = StreamOf(Fcc("VTQ2"), 14);
  DriverInstance instance(Fcc("VTQ2"));
  BITMAPINFOHEADER output = Header(kWidth, -kHeight, Fcc("UYVY"), 16);
  for (const uint8_t quality : {uint8_t{0}, uint8_t{100}}) {
    stream[0] = quality;
    BITMAPINFOHEADER streamHeader = Header(kWidth, -kHeight, Fcc("VTQ2"), 24);
    std::vector<uint8_t> picture(GeometryOf(output).bytes, kFill);
    EXPECT_EQ(Decompress(instance, &streamHeader, stream.data(), &output, picture), ICERR_BADFORMAT);
    EXPECT_EQ(picture, std::vector<uint8_t>(picture.size(), kFill));
    // Size and layout are taken from the frame's headers all the same.
    EXPECT_EQ(instance.codec().width, kWidth);
    EXPECT_EQ(instance.codec().height, kHeight);
    EXPECT_EQ(instance.codec().colorSpace, kCsUYVY);
  }
  stream[0] = 96;
  BITMAPINFOHEADER streamHeader = StreamHeader(Fcc("VTQ2"), stream);
  std::vector<uint8_t> picture(GeometryOf(output).bytes, kFill);
  EXPECT_EQ(Decompress(instance, &streamHeader, nullptr, &output, picture), ICERR_BADFORMAT);
  BITMAPINFOHEADER unusable = Header(kWidth, kHeight, 0, 16);
  EXPECT_EQ(Decompress(instance, &streamHeader, stream.data(), &unusable, picture), ICERR_BADFORMAT);
  // An output declared smaller than the frame is refused rather than overrun.
  output.biSizeImage = static_cast<uint32_t>(picture.size() - 1);
  EXPECT_EQ(Decompress(instance, &streamHeader, stream.data(), &output, picture), ICERR_BADFORMAT);
  output.biSizeImage = static_cast<uint32_t>(picture.size());
  EXPECT_EQ(Decompress(instance, &streamHeader, stream.data(), &output, picture), ICERR_OK);
  EXPECT_NE(picture, std::vector<uint8_t>(picture.size(), kFill));
}

}  // namespace
}  // namespace vantaro::test
