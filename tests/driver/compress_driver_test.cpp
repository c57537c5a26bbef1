// The compress side as a host drives it, held to the direct functions.
#include <gtest/gtest.h>

#include "driver_layouts.h"

namespace vantaro::test {
namespace {

constexpr int32_t kWidth = 64;
constexpr int32_t kHeight = 136;  // five macroblock rows a field, the last one partial

struct DriverFrame {
  int64_t result;
  uint32_t flags;
  BITMAPINFOHEADER format;  // the compressed header after the call
  std::vector<uint8_t> output;
};

// One open instance taken through query, format, size and begin, then fed frames.
class CompressSession {
 public:
  CompressSession(uint32_t fourcc, const BITMAPINFOHEADER& source)
      : instance_(fourcc), source_(source) {}

  int64_t Negotiate() {
    if (const int64_t r = instance_.Send(ICM_COMPRESS_QUERY, &source_); r != ICERR_OK) return r;
    EXPECT_EQ(instance_.Send(ICM_COMPRESS_GET_FORMAT, &source_, nullptr), 40);
    EXPECT_EQ(instance_.Send(ICM_COMPRESS_GET_FORMAT, &source_, &format_), ICERR_OK);
    worstCase_ = instance_.Send(ICM_COMPRESS_GET_SIZE, nullptr, &format_);
    EXPECT_EQ(worstCase_, int64_t{6} * kWidth * kHeight);
    return instance_.Send(ICM_COMPRESS_BEGIN, &source_, &format_);
  }

  // Compresses into a buffer of exactly the size the host was told, unless
  // `capacity` says otherwise; the bytes behind it are watched.
  DriverFrame Compress(const std::vector<uint8_t>& picture, BITMAPINFOHEADER* source = nullptr,
                       size_t capacity = 0, BITMAPINFOHEADER* format = nullptr) {
    BITMAPINFOHEADER input = source != nullptr ? *source : source_;
    input.biSizeImage = source != nullptr ? source->biSizeImage : static_cast<uint32_t>(picture.size());
    DriverFrame frame{0, 0xDEADu, format != nullptr ? *format : format_, {}};
    frame.output.assign((capacity != 0 ? capacity : static_cast<size_t>(worstCase_)) + kGuard, 0xC3);
    ICCOMPRESS ic{};
    ic.lpbiOutput = &frame.format;
    ic.lpOutput = frame.output.data();
    ic.lpbiInput = &input;
    ic.lpInput = const_cast<uint8_t*>(picture.data());
    ic.lpdwFlags = &frame.flags;
    ic.dwQuality = 1234;  // never read
    frame.result = instance_.Send(ICM_COMPRESS, &ic, reinterpret_cast<void*>(sizeof ic));
    return frame;
  }

  const DriverInstance& instance() const { return instance_; }
  BITMAPINFOHEADER& format() { return format_; }
  static constexpr size_t kGuard = 64;

 private:
  DriverInstance instance_;
  BITMAPINFOHEADER source_;
  BITMAPINFOHEADER format_{};
  int64_t worstCase_ = 0;
};

bool GuardIntact(const DriverFrame& frame) {
  for (size_t i = frame.output.size() - CompressSession::kGuard; i < frame.output.size(); ++i) {
    if (frame.output[i] != 0xC3) return false;
  }
  return true;
}

void ExpectSameFrame(const DriverFrame& frame, const std::vector<uint8_t>& direct) {
  ASSERT_EQ(frame.result, ICERR_OK);
  EXPECT_EQ(frame.flags, AVIIF_KEYFRAME);
  ASSERT_EQ(frame.format.biSizeImage, direct.size());
  ASSERT_GE(direct.size(), 4u);
  // The last four bytes of the reported size are no part of the frame.
  const size_t bytes = direct.size() - 4;
  EXPECT_TRUE(std::equal(direct.begin(), direct.begin() + bytes, frame.output.begin()));
  EXPECT_TRUE(GuardIntact(frame));
}

TEST(CompressDriver, EveryVariantAndAcceptedLayoutMatchesTheDirectFunctions) {
  for (const uint32_t fourcc : AllVariants()) {
    const bool alphaFamily = fourcc != Fcc("VTQ0") && fourcc != Fcc("VTQ2") && fourcc != Fcc("VTQ4");
    int accepted = 0;
    for (const Layout& layout : AllLayouts()) {
      for (const bool topDown : {true, false}) {
        SCOPED_TRACE(VariantName(fourcc) + " " + layout.name + (topDown ? " top-down" : " bottom-up"));
        BITMAPINFOHEADER source =
            Header(kWidth, topDown ? -kHeight : kHeight, layout.compression, layout.bits);
        CompressSession session(fourcc, source);
        const int64_t negotiated = session.Negotiate();
        if (negotiated == ICERR_BADFORMAT) continue;
        ASSERT_EQ(negotiated, ICERR_OK);
        accepted += topDown ? 1 : 0;
        // Bottom-up sessions also run at a quality the host set.
        int32_t quality = 96;
        if (!topDown) {
          quality = 85;
          const int32_t icm = (quality - 50) * 200;
          ASSERT_EQ(session.instance().Send(ICM_SETQUALITY, &icm), ICERR_OK);
        }
        const size_t bytes = GeometryOf(source).bytes;
        for (uint32_t seed : {1u, 2u}) {
          const std::vector<uint8_t> picture = Picture(bytes, seed);
          const std::vector<uint8_t> direct = DirectCompress(fourcc, source, topDown, quality, picture);
          // More than the header and eight empty slices: real macroblocks.
          EXPECT_GT(direct.size(), 32u);
          ExpectSameFrame(session.Compress(picture), direct);
        }
        EXPECT_EQ(session.instance().Send(ICM_COMPRESS_END), ICERR_OK);
      }
    }
    // Six layouts without alpha suit the plain families; the alpha families
    // take the seven with alpha (UYVY at 24 bits among them) and RGB24 as well.
    EXPECT_EQ(accepted, alphaFamily ? 8 : 6) << VariantName(fourcc);
  }
}

TEST(CompressDriver, BottomUpRgbIsTheTopDownPictureTurnedOver) {
  const int32_t line = kWidth * 3;
  const std::vector<uint8_t> picture = Picture(static_cast<size_t>(line) * kHeight, 7);
  std::vector<uint8_t> turned(picture.size());
  for (int32_t y = 0; y < kHeight; ++y) {
    std::copy_n(picture.begin() + y * line, line, turned.begin() + (kHeight - 1 - y) * line);
  }
  CompressSession topDown(Fcc("VTQ2"), Header(kWidth, -kHeight, 0, 24));
  CompressSession bottomUp(Fcc("VTQ2"), Header(kWidth, kHeight, 0, 24));
  ASSERT_EQ(topDown.Negotiate(), ICERR_OK);
  ASSERT_EQ(bottomUp.Negotiate(), ICERR_OK);
  const DriverFrame a = topDown.Compress(picture);
  const DriverFrame b = bottomUp.Compress(turned);
  ASSERT_EQ(a.result, ICERR_OK);
  ASSERT_EQ(b.result, ICERR_OK);
  ASSERT_EQ(a.format.biSizeImage, b.format.biSizeImage);
  EXPECT_TRUE(std::equal(a.output.begin(), a.output.begin() + a.format.biSizeImage - 4, b.output.begin()));
}

TEST(CompressDriver, OnlyRgbRunsBottomUpAndOnlyTopDownSetsTheFrameBase) {
  const std::vector<uint8_t> rgb = Picture(static_cast<size_t>(kWidth) * kHeight * 4, 3);
  CompressSession bottomUp(Fcc("VTQ1"), Header(kWidth, kHeight, 0, 32));
  ASSERT_EQ(bottomUp.Negotiate(), ICERR_OK);
  EXPECT_EQ(bottomUp.Compress(rgb).result, ICERR_OK);
  EXPECT_EQ(bottomUp.instance().codec().frameBase, nullptr);

  CompressSession topDown(Fcc("VTQ1"), Header(kWidth, -kHeight, 0, 32));
  ASSERT_EQ(topDown.Negotiate(), ICERR_OK);
  EXPECT_EQ(topDown.Compress(rgb).result, ICERR_OK);
  EXPECT_EQ(topDown.instance().codec().frameBase, rgb.data());

  // A packed YUV source claimed bottom-up still runs downward.
  const std::vector<uint8_t> yuy2 = Picture(static_cast<size_t>(kWidth) * kHeight * 2, 4);
  CompressSession packed(Fcc("VTQ2"), Header(kWidth, kHeight, Fcc("YUY2"), 16));
  ASSERT_EQ(packed.Negotiate(), ICERR_OK);
  EXPECT_EQ(packed.instance().codec().topDown, 0);
  EXPECT_EQ(packed.Compress(yuy2).result, ICERR_OK);
  EXPECT_EQ(packed.instance().codec().frameBase, yuy2.data());
}

TEST(CompressDriver, QueryTestsLayoutWidthAndAlpha) {
  DriverInstance vtq2(Fcc("VTQ2"));
  BITMAPINFOHEADER h = Header(1920, 1080, Fcc("UYVY"), 16);
  EXPECT_EQ(vtq2.Send(ICM_COMPRESS_QUERY, &h), ICERR_OK);
  h.biWidth = 1922;
  EXPECT_EQ(vtq2.Send(ICM_COMPRESS_QUERY, &h), ICERR_BADFORMAT);
  // The width test is on the signed value, and height is not tested at all.
  for (const int32_t width : {0, -16}) {
    h.biWidth = width;
    EXPECT_EQ(vtq2.Send(ICM_COMPRESS_QUERY, &h), ICERR_OK) << width;
  }
  h = Header(1920, 1081, 0, 16);
  EXPECT_EQ(vtq2.Send(ICM_COMPRESS_QUERY, &h), ICERR_BADFORMAT);

  DriverInstance vtq1(Fcc("VTQ1")), vtq0(Fcc("VTQ0"));
  BITMAPINFOHEADER rgb24 = Header(64, 64, 0, 24), rgb32 = Header(64, 64, 0, 32);
  EXPECT_EQ(vtq1.Send(ICM_COMPRESS_QUERY, &rgb24), ICERR_OK);
  EXPECT_EQ(vtq0.Send(ICM_COMPRESS_QUERY, &rgb24), ICERR_OK);
  EXPECT_EQ(vtq1.Send(ICM_COMPRESS_QUERY, &rgb32), ICERR_OK);
  EXPECT_EQ(vtq0.Send(ICM_COMPRESS_QUERY, &rgb32), ICERR_BADFORMAT);
  // The output header plays no part.
  BITMAPINFOHEADER nonsense = Header(1, 1, Fcc("ABCD"), 1);
  EXPECT_EQ(vtq0.Send(ICM_COMPRESS_QUERY, &rgb24, &nonsense), ICERR_OK);
}

TEST(CompressDriver, RefusedQueryStillSetsOrientation) {
  DriverInstance instance(Fcc("VTQ2"));
  BITMAPINFOHEADER h = Header(1922, -1080, Fcc("UYVY"), 16);
  EXPECT_EQ(instance.Send(ICM_COMPRESS_QUERY, &h), ICERR_BADFORMAT);
  EXPECT_EQ(instance.codec().topDown, 1);
  h.biHeight = 1080;
  EXPECT_EQ(instance.Send(ICM_COMPRESS_QUERY, &h), ICERR_BADFORMAT);
  EXPECT_EQ(instance.codec().topDown, 0);
  h.biHeight = -1080;
  instance.Send(ICM_COMPRESS_QUERY, &h);
  // Only a negative height is top-down on this side.
  h = Header(1920, 0, Fcc("UYVY"), 16);
  EXPECT_EQ(instance.Send(ICM_COMPRESS_QUERY, &h), ICERR_OK);
  EXPECT_EQ(instance.codec().topDown, 0);
}

TEST(CompressDriver, FormatAndSizeDescribeSixBytesAPixel) {
  DriverInstance instance(Fcc("vtq5"));
  BITMAPINFOHEADER source = Header(720, -486, 0, 32);
  source.biXPelsPerMeter = 2835;
  source.biClrUsed = 9;
  EXPECT_EQ(instance.Send(ICM_COMPRESS_GET_FORMAT, &source, nullptr), 40);
  EXPECT_EQ(instance.codec().topDown, 0);
  BITMAPINFOHEADER format;
  std::memset(&format, 0x77, sizeof format);
  EXPECT_EQ(instance.Send(ICM_COMPRESS_GET_FORMAT, &source, &format), ICERR_OK);
  EXPECT_EQ(format.biSize, 40u);
  EXPECT_EQ(format.biWidth, 720);
  EXPECT_EQ(format.biHeight, 486);
  EXPECT_EQ(format.biBitCount, 32);
  EXPECT_EQ(format.biPlanes, 1);
  EXPECT_EQ(format.biCompression, Fcc("VTQ5"));
  EXPECT_EQ(format.biSizeImage, 2099520u);
  EXPECT_EQ(format.biXPelsPerMeter, 2835);
  EXPECT_EQ(format.biClrUsed, 0u);
  EXPECT_EQ(format.biClrImportant, 0u);
  EXPECT_EQ(instance.codec().topDown, 1);

  BITMAPINFOHEADER compressed = Header(-720, -480, Fcc("VTQ5"), 32);
  EXPECT_EQ(instance.Send(ICM_COMPRESS_GET_SIZE, nullptr, &compressed), 2073600);
}

TEST(CompressDriver, SourceMustHoldTheWholeFrame) {
  for (const Layout& layout : {AllLayouts()[0], AllLayouts()[6], AllLayouts()[9], AllLayouts()[12]}) {
    SCOPED_TRACE(layout.name);
    const uint32_t fourcc = layout.name == std::string("UYVA") || layout.bits == 32 ? Fcc("VTQ3") : Fcc("VTQ2");
    BITMAPINFOHEADER source = Header(kWidth, -kHeight, layout.compression, layout.bits);
    CompressSession session(fourcc, source);
    ASSERT_EQ(session.Negotiate(), ICERR_OK);
    const size_t bytes = GeometryOf(source).bytes;
    const std::vector<uint8_t> picture = Picture(bytes, 5);
    source.biSizeImage = static_cast<uint32_t>(bytes - 1);
    session.format().biSizeImage = 4321;
    const DriverFrame shortFrame = session.Compress(picture, &source);
    EXPECT_EQ(shortFrame.result, ICERR_BADFORMAT);
    EXPECT_EQ(shortFrame.flags, 0xDEADu);
    EXPECT_EQ(shortFrame.format.biSizeImage, 4321u);
    source.biSizeImage = static_cast<uint32_t>(bytes);
    EXPECT_EQ(session.Compress(picture, &source).result, ICERR_OK);
  }
}

TEST(CompressDriver, RefusalsAndTheKeyFrameFlag) {
  BITMAPINFOHEADER source = Header(kWidth, -kHeight, Fcc("YUY2"), 16);
  CompressSession session(Fcc("VTQ2"), source);
  ASSERT_EQ(session.Negotiate(), ICERR_OK);
  const std::vector<uint8_t> picture = Picture(GeometryOf(source).bytes * 2, 6);

  BITMAPINFOHEADER other = source;
  other.biWidth = kWidth + 16;
  other.biSizeImage = static_cast<uint32_t>(picture.size());
  const DriverFrame resized = session.Compress(picture, &other);
  EXPECT_EQ(resized.result, ICERR_BADFORMAT);
  EXPECT_EQ(resized.flags, 0xDEADu);

  // An unusable layout is refused, yet the frame is still flagged a key frame.
  BITMAPINFOHEADER unusable = Header(kWidth, kHeight, 0, 16, static_cast<uint32_t>(picture.size()));
  const DriverFrame invalid = session.Compress(picture, &unusable);
  EXPECT_EQ(invalid.result, ICERR_BADFORMAT);
  EXPECT_EQ(invalid.flags, AVIIF_KEYFRAME);
}

TEST(CompressDriver, NeverWritesPastTheOutputTheHostWasToldOf) {
  BITMAPINFOHEADER source = Header(kWidth, -kHeight, Fcc("YUY2"), 16);
  CompressSession session(Fcc("VTQ2"), source);
  ASSERT_EQ(session.Negotiate(), ICERR_OK);
  const std::vector<uint8_t> picture = Picture(GeometryOf(source).bytes, 8);
  const std::vector<uint8_t> direct = DirectCompress(Fcc("VTQ2"), source, true, 96, picture);

  // The output header promises a one-pixel frame: six bytes.
  BITMAPINFOHEADER tiny = Header(1, 1, Fcc("VTQ2"), 16);
  const DriverFrame refused = session.Compress(picture, nullptr, 6, &tiny);
  EXPECT_EQ(refused.result, ICERR_BADFORMAT);
  EXPECT_EQ(refused.flags, 0xDEADu);
  EXPECT_EQ(refused.format.biSizeImage, 0u);
  EXPECT_TRUE(GuardIntact(refused));

  // A larger biSizeImage counts as room, and the instance carries on as if
  // nothing had happened.
  tiny.biSizeImage = static_cast<uint32_t>(direct.size() + 8);
  ExpectSameFrame(session.Compress(picture, nullptr, direct.size() + 8, &tiny), direct);
  ExpectSameFrame(session.Compress(picture), direct);
}

TEST(CompressDriver, LayoutChangedSinceBeginIsTakenFromTheFrame) {
  BITMAPINFOHEADER begun = Header(kWidth, -kHeight, Fcc("YUY2"), 16);
  CompressSession session(Fcc("VTQ2"), begun);
  ASSERT_EQ(session.Negotiate(), ICERR_OK);
  BITMAPINFOHEADER uyvy = Header(kWidth, -kHeight, Fcc("UYVY"), 16);
  const std::vector<uint8_t> picture = Picture(GeometryOf(uyvy).bytes, 9);
  uyvy.biSizeImage = static_cast<uint32_t>(picture.size());
  ExpectSameFrame(session.Compress(picture, &uyvy),
                  DirectCompress(Fcc("VTQ2"), uyvy, true, 96, picture));
  EXPECT_EQ(session.instance().codec().colorSpace, kCsYUY2);
}

}  // namespace
}  // namespace vantaro::test
