// Whole frames through the decoder: round trips through the direct functions
// for every variant and layout, and hand-built frames for exact samples.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "capture_sandbox.h"
#include "codec/field_flow.h"
#include "codec/kernels.h"
#include "stream_writer.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro::decoder {
namespace {

using test::StreamWriter;
using DecodeWalks = test::CaptureSandbox;

constexpr uint32_t kVariants[] = {test::FourCC('V', 'T', 'Q', '0'), test::FourCC('V', 'T', 'Q', '1'),
                                  test::FourCC('V', 'T', 'Q', '2'), test::FourCC('V', 'T', 'Q', '3'),
                                  test::FourCC('V', 'T', 'Q', '4'), test::FourCC('V', 'T', 'Q', '5'),
                                  test::FourCC('V', 'T', 'Q', '7'), test::FourCC('V', 'T', 'Q', '9')};
constexpr uint32_t kLayouts[] = {kCsNV12, kCsNV16, kCsNV24, kCsYA20, kCsYA22, kCsYA44,
                                 kCsYUY2, kCsUYVY, kCsUYVA, kCsAYUV, kCsRGB24, kCsRGB32};
constexpr uint8_t kUntouched = 0xCD;

BITMAPINFOHEADER HeaderFor(uint32_t colorSpace, int32_t width, int32_t height) {
  static const struct {
    uint32_t fourcc;
    uint16_t bits;
  } kFormats[kColorSpaceCount] = {
      {0, 0},    {test::FourCC('N', 'V', '1', '2'), 12}, {test::FourCC('N', 'V', '1', '6'), 16},
      {test::FourCC('N', 'V', '2', '4'), 24}, {test::FourCC('Y', 'A', '2', '0'), 20},
      {test::FourCC('Y', 'A', '2', '2'), 24}, {test::FourCC('Y', 'A', '4', '4'), 32},
      {0, 0},    {test::FourCC('Y', 'U', 'Y', '2'), 16}, {test::FourCC('U', 'Y', 'V', 'Y'), 16},
      {test::FourCC('U', 'Y', 'V', 'A'), 24}, {test::FourCC('A', 'Y', 'U', 'V'), 32},
      {0, 24},   {0, 32}};
  BITMAPINFOHEADER h{};
  h.biSize = sizeof h;
  h.biWidth = width;
  h.biHeight = -height;
  h.biPlanes = 1;
  h.biBitCount = kFormats[colorSpace].bits;
  h.biCompression = kFormats[colorSpace].fourcc;
  return h;
}

// A picture buffer of a layout with its second plane, filled with one byte.
struct Picture {
  uint32_t colorSpace;
  int32_t width, height, stride;
  std::vector<uint8_t> main, chroma;
  Picture(uint32_t cs, int32_t w, int32_t h, uint8_t fill) : colorSpace(cs), width(w), height(h) {
    stride = w * LayoutOf(cs).pixelBytes + 16;
    main.assign(static_cast<size_t>(stride) * h * (cs == kCsUYVA ? 2 : 1), fill);
    if (IsPlanar(cs)) chroma.assign(static_cast<size_t>(stride) * 2 * (h + 2), fill);
  }
  uint8_t* Chroma() { return chroma.empty() ? nullptr : chroma.data(); }
  // The luma byte of pixel (x, y), or for RGB the green byte.
  uint8_t Luma(int32_t x, int32_t y) const {
    const uint8_t* line = main.data() + static_cast<size_t>(y) * stride;
    switch (colorSpace) {
      case kCsNV12: case kCsNV16: case kCsNV24: return line[x];
      case kCsYA20: case kCsYA22: case kCsYA44: case kCsYUY2: return line[2 * x];
      case kCsUYVY: case kCsUYVA: return line[2 * x + 1];
      case kCsAYUV: return line[4 * x + 1];
      case kCsRGB24: return line[3 * x + 1];
      default: return line[4 * x + 1];
    }
  }
};

// Smooth content: every byte a slow function of its place.
void FillSmooth(Picture& p) {
  for (size_t i = 0; i < p.main.size(); ++i) {
    const double x = static_cast<double>(i % p.stride), y = static_cast<double>(i / p.stride);
    p.main[i] = static_cast<uint8_t>(128 + 50 * std::sin(x / 23) + 40 * std::cos(y / 17));
  }
  for (size_t i = 0; i < p.chroma.size(); ++i) {
    p.chroma[i] = static_cast<uint8_t>(128 + 30 * std::sin(static_cast<double>(i % p.stride) / 19));
  }
}

std::vector<uint8_t> Compress(uint32_t fourcc, Picture& source) {
  const BITMAPINFOHEADER h = HeaderFor(source.colorSpace, source.width, source.height);
  void* enc = VTC_CompressFieldBegin(&h, fourcc);
  std::vector<uint8_t> stream(1 << 20);
  const int64_t size =
      VTC_CompressFrameEx(enc, stream.data(), source.main.data(), source.Chroma(), source.stride);
  VTC_CompressFieldEnd(enc);
  stream.resize(static_cast<size_t>(size > 4 ? size - 4 : 0));
  return stream;
}

void Decompress(uint32_t fourcc, const std::vector<uint8_t>& stream, Picture& out) {
  const BITMAPINFOHEADER h = HeaderFor(out.colorSpace, out.width, out.height);
  void* dec = VTC_DecompressFieldBegin(&h, fourcc);
  EXPECT_EQ(VTC_DecompressFrameEx(dec, out.main.data(), out.Chroma(), stream.data(), out.stride), 0);
  VTC_DecompressFieldEnd(dec);
}

// The encoder's planar loaders step two macroblocks at a time and read field
// lines 0 and 1 of a macroblock for all of its lines (both kept): only those
// pixels of the first macroblock column are the source's.
bool Compared(uint32_t cs, int32_t x, int32_t y, int32_t covered) {
  if (!IsPlanar(cs)) return x < covered;
  return x < 16 && (y / 2) % 16 < 2;
}

double LumaPsnr(const Picture& a, const Picture& b, int32_t covered) {
  double se = 0;
  int64_t count = 0;
  for (int32_t y = 0; y < a.height; ++y) {
    for (int32_t x = 0; x < covered; ++x) {
      if (!Compared(a.colorSpace, x, y, covered)) continue;
      se += std::pow(a.Luma(x, y) - b.Luma(x, y), 2);
      ++count;
    }
  }
  return se == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * static_cast<double>(count) / se);
}

// Whether the encoder's walk for this pair writes what the decoder's reads:
// the packed layouts without alpha never code it, csUYVA and csAYUV always
// do, and csRGB24 with alpha adds marks no reader takes. Such pairs are
// refused by BeginCompress; the direct functions still make their streams.
bool PairRoundTrips(uint32_t fourcc, uint32_t cs) {
  const bool alpha = ((fourcc >> 24) - '0') % 2 == 1;
  if (cs == kCsYUY2 || cs == kCsUYVY) return !alpha;
  if (cs == kCsUYVA || cs == kCsAYUV) return alpha;
  return !(cs == kCsRGB24 && alpha);
}

// Every variant into every layout: close to the source where the pair round
// trips, identical on the scalar and vector kernels, and nothing written
// right of the last whole macroblock. 40 x 70 has a partial row of 3 lines
// and 8 unwritten columns.
TEST_F(DecodeWalks, EveryVariantAndLayoutRoundTrips) {
  constexpr int32_t kWidth = 40, kHeight = 70, kCovered = 32;
  for (uint32_t fourcc : kVariants) {
    for (uint32_t cs : kLayouts) {
      SCOPED_TRACE(testing::Message() << "fourcc " << std::string(reinterpret_cast<const char*>(&fourcc), 4)
                                      << " layout " << cs);
      Picture source(cs, kWidth, kHeight, 0);
      FillSmooth(source);
      const std::vector<uint8_t> stream = Compress(fourcc, source);
      ASSERT_GT(stream.size(), 28u);
      Picture vec(cs, kWidth, kHeight, kUntouched), scalar(cs, kWidth, kHeight, kUntouched);
      const KernelOverride was = CurrentKernelOverride();
      SetKernelOverride(KernelOverride::kAutomatic);
      Decompress(fourcc, stream, vec);
      SetKernelOverride(KernelOverride::kScalar);
      Decompress(fourcc, stream, scalar);
      SetKernelOverride(was);
      ASSERT_EQ(vec.main, scalar.main);
      ASSERT_EQ(vec.chroma, scalar.chroma);
      if (PairRoundTrips(fourcc, cs)) {
        EXPECT_GT(LumaPsnr(source, vec, kCovered), cs >= kCsRGB24 ? 30.0 : 40.0);
      }
      const int32_t bpp = LayoutOf(cs).pixelBytes;
      for (int32_t y = 0; y < kHeight; ++y) {
        for (int32_t b = kCovered * bpp; b < vec.stride; ++b) {
          ASSERT_EQ(vec.main[static_cast<size_t>(y) * vec.stride + b], kUntouched) << y << "," << b;
        }
      }
    }
  }
}

TEST_F(DecodeWalks, RunLengthAlphaIsLossless) {
  for (uint32_t fourcc : {kVariants[1], kVariants[3], kVariants[5]}) {
    Picture source(kCsAYUV, 48, 64, 0);
    FillSmooth(source);
    for (size_t i = 0; i < source.main.size(); i += 4) source.main[i] = static_cast<uint8_t>(i * 7 / 5);
    Picture out(kCsAYUV, 48, 64, kUntouched);
    Decompress(fourcc, Compress(fourcc, source), out);
    for (int32_t y = 0; y < 64; ++y) {
      for (int32_t x = 0; x < 48; ++x) {
        ASSERT_EQ(out.main[y * out.stride + 4 * x], source.main[y * source.stride + 4 * x]) << x << "," << y;
      }
    }
  }
}

// A frame from hand-written slices: `payload[field][slice]` after each
// 3-byte length.
std::vector<uint8_t> HandFrame(const std::vector<uint8_t> (&payload)[2][4]) {
  std::vector<uint8_t> frame = {96, 0, 0, 0};
  for (int field = 0; field < 2; ++field) {
    if (field == 1) {
      const uint32_t offset = static_cast<uint32_t>(frame.size());
      for (int i = 0; i < 3; ++i) frame[1 + i] = static_cast<uint8_t>(offset >> (8 * i));
    }
    for (const std::vector<uint8_t>& p : payload[field]) {
      const uint32_t length = static_cast<uint32_t>(p.size() + 3);
      for (int i = 0; i < 3; ++i) frame.push_back(static_cast<uint8_t>(length >> (8 * i)));
      frame.insert(frame.end(), p.begin(), p.end());
    }
  }
  return frame;
}

// One 4:2:2 macroblock of DC-only blocks; the first U and V blocks carry the
// given DC differences and the second ones repeat them through the chain.
std::vector<uint8_t> FlatMacroblock422(int32_t uDiff = 0, int32_t vDiff = 0) {
  StreamWriter w;
  for (int b = 0; b < 4; ++b) w.Block(0, true);
  w.Block(uDiff, false).Block(vDiff, false).Block(0, false).Block(0, false);
  return w.Bytes();
}

TEST_F(DecodeWalks, FlatGreyMacroblockGivesTheShortcutValue) {
  const std::vector<uint8_t> frame =
      HandFrame({{FlatMacroblock422(), {}, {}, {}}, {FlatMacroblock422(), {}, {}, {}}});
  Picture out(kCsYUY2, 16, 32, kUntouched);
  test::TestInstance inst(kVariants[2], kCsYUY2, 16, 32);
  EXPECT_EQ(DecompressFrame(inst.get(), out.main.data(), nullptr, frame.data(), out.stride, frame.size()), 0);
  for (int32_t y = 0; y < 32; ++y) {
    for (int32_t b = 0; b < 32; ++b) ASSERT_EQ(out.main[y * out.stride + b], 129) << y << "," << b;
  }
}

// csUYVA, 16 x 64, frame stride 32: each field's two macroblock rows carry
// run-length alpha of one value (10, 20 in field 0; 30, 40 in field 1). The
// alpha plane lies behind the main plane, the field stride's t / 16 / 2 * 16
// (32) bytes a line, and the second field's lines start one alpha line
// (width bytes) in from frameBase: together the frame's plane, 16 a line.
TEST_F(DecodeWalks, UyvaAlphaPlaneOfBothFields) {
  auto macroblock = [](uint8_t alpha) {
    StreamWriter w;
    for (int b = 0; b < 4; ++b) w.Block(0, true);
    for (int b = 0; b < 4; ++b) w.Block(0, false);
    for (int c = 0; c < 16; ++c) w.AlphaPair(static_cast<uint8_t>(255 - alpha), 0);
    w.AlphaEnd().AlphaEnd();
    return w.Bytes();
  };
  const std::vector<uint8_t> frame = HandFrame(
      {{macroblock(10), macroblock(20), {}, {}}, {macroblock(30), macroblock(40), {}, {}}});
  std::vector<uint8_t> out(32 * 64 + 16 * 64 + 64, kUntouched);
  test::TestInstance inst(kVariants[3], kCsUYVA, 16, 64);
  EXPECT_EQ(DecompressFrame(inst.get(), out.data(), nullptr, frame.data(), 32, frame.size()), 0);
  const size_t plane = 32 * 64;
  for (int32_t y = 0; y < 64; ++y) {
    const uint8_t expected = static_cast<uint8_t>(10 * (1 + (y / 32) + 2 * (y % 2)));
    for (int32_t x = 0; x < 16; ++x) ASSERT_EQ(out[plane + 16 * y + x], expected) << y << "," << x;
  }
  for (size_t i = plane + 16 * 64; i < out.size(); ++i) ASSERT_EQ(out[i], kUntouched) << i;
}

// U of -3 (DC -1056) and of 256 (DC 1016, the shortcut's highest value)
// through the whole walk into csYUY2: the raw pair, unclamped.
TEST_F(DecodeWalks, RawPairThroughTheWalk) {
  const std::vector<uint8_t> frame =
      HandFrame({{FlatMacroblock422(1056, 0), {}, {}, {}}, {FlatMacroblock422(-1016, 8), {}, {}, {}}});
  Picture out(kCsYUY2, 16, 32, kUntouched);
  test::TestInstance inst(kVariants[2], kCsYUY2, 16, 32);
  (void)DecompressFrame(inst.get(), out.main.data(), nullptr, frame.data(), out.stride, frame.size());
  for (int32_t y : {0, 30}) {  // field 0: U -3, V 129
    EXPECT_EQ(out.main[y * out.stride + 1], 253);
    EXPECT_EQ(out.main[y * out.stride + 3], 255);
  }
  for (int32_t y : {1, 31}) {  // field 1: U 256, V 128
    EXPECT_EQ(out.main[y * out.stride + 1], 0);
    EXPECT_EQ(out.main[y * out.stride + 3], 129);
  }
}

}  // namespace
}  // namespace vantaro::decoder
