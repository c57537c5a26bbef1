// The worst-case search of README.md ("Worst cases"): the largest frame each
// variant makes of 256x256 pictures at quality 99, each frame written into
// vantaro_frame_bound() (it must fit), then the largest picture through the
// driver's ICM_COMPRESS into exactly width * height * 6 bytes, where the
// driver must answer a frame or refuse, never write past (AddressSanitizer).
// Usage: worst_case [random mixtures per variant, default 40]
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "codec/field_flow.h"
#include "codec/quantiser.h"
#include "driver/driver_host_session.h"
#include "fuzz_support.h"

using namespace vantaro;
using namespace vantaro::fuzz;

namespace {

constexpr int32_t kSize = 256;
enum class Kind { kNoise, kChecker, kBasis, kBlockDc, kMixture, kBinaryNoise };
const char* const kKindNames[] = {"noise", "checkerboard", "basis signs", "block DC", "mixture", "binary noise"};
enum Channel { kLuma, kChroma, kAlpha };

uint32_t Hash(uint32_t v) { return v = (v ^ (v >> 16)) * 0x7feb352du, v = (v ^ (v >> 15)) * 0x846ca68bu, v ^ (v >> 16); }

// The sign of one 8x8 cosine basis function at full swing: all energy in a
// single coefficient of the block's choice.
uint8_t Basis(uint32_t h, int32_t x, int32_t y) {
  const uint32_t u = (h >> 8) & 7, v = (h >> 11) & 7;
  const double c = std::cos((2 * (x % 8) + 1) * u * std::numbers::pi / 16) *
                   std::cos((2 * (y % 8) + 1) * v * std::numbers::pi / 16);
  return (c >= 0) != ((h >> 14) & 1) ? 255 : 0;
}

// One sample generator: a pattern kind and its parameters.
struct Pattern {
  Kind kind;
  uint32_t period = 1;  // checkerboard cell
  uint32_t seed = 1;
  uint8_t At(int32_t x, int32_t y, int channel) const {
    const uint32_t block = Hash((x / 8) * 73856093u ^ (y / 8) * 19349663u ^ channel * 83492791u ^ seed);
    const uint32_t pixel = Hash(x * 2654435761u ^ y * 40503u ^ channel * 977u ^ seed);
    switch (kind) {
      case Kind::kNoise: return static_cast<uint8_t>(pixel >> 24);
      case Kind::kChecker: return ((x / period) ^ (y / period)) & 1 ? 255 : 0;
      case Kind::kBinaryNoise: return pixel & 1 ? 255 : 0;
      case Kind::kBasis: return Basis(block, x, y);
      case Kind::kBlockDc: return block & 1 ? 255 : 0;
      case Kind::kMixture:
        switch (block % 4) {
          case 0: return static_cast<uint8_t>(Hash(x * 2654435761u ^ y * 40503u ^ seed) >> 24);
          case 1: return (x ^ y) & 1 ? 255 : 0;
          case 2: return Basis(block, x, y);
          default: return block & 2 ? 255 : 0;
        }
    }
    return 0;
  }
};

// The size of one frame from layout `cs` into the frame bound (plus the
// writer's four bytes of spill), or 0 when it does not fit. Every packed byte
// is its own sample, YA44's alpha from `alpha`; chroma is drawn at the
// stream's resolution (`family` 0: 4:2:0, 1: 4:2:2, 2: 4:4:4) and repeated
// over the subsampled pixels, so that averaging down keeps its full swing.
size_t Encode(uint32_t fourcc, int family, uint32_t cs, const Pattern& p, const Pattern& alpha) {
  const int32_t sx = family < 2 ? 1 : 0, sy = family < 1 ? 1 : 0;
  const int32_t pixelBytes = LayoutOf(cs).pixelBytes, stride = kSize * pixelBytes, chromaLine = 2 * kSize;
  std::vector<uint8_t> main(static_cast<size_t>(stride) * kSize);
  std::vector<uint8_t> chroma(IsPlanar(cs) ? static_cast<size_t>(chromaLine) * (kSize + 32) * 2 : 0);
  for (size_t o = 0; o < main.size(); ++o) {
    const int32_t x = static_cast<int32_t>(o % stride) / pixelBytes, y = static_cast<int32_t>(o / stride);
    const int channel = static_cast<int>(o % pixelBytes);
    main[o] = cs == kCsYA44 && channel == 1 ? alpha.At(x, y, kAlpha) : p.At(x, y, channel);
  }
  for (size_t o = 0; o < chroma.size(); ++o) {
    chroma[o] = p.At((static_cast<int32_t>(o % chromaLine) / 2) >> sx, static_cast<int32_t>(o / chromaLine) >> sy,
                     kChroma + static_cast<int>(o & 1) * 3);
  }
  test::TestInstance instance(fourcc, cs, kSize, kSize);
  SetQuality(instance.get(), 99);
  const size_t capacity = vantaro_frame_bound(fourcc, kSize, kSize) + 4;
  const auto stream = std::make_unique<uint8_t[]>(capacity);
  int64_t size = 0;
  const Status s = CompressFrame(instance.get(), stream.get(), capacity, main.data(),
                                 chroma.empty() ? nullptr : chroma.data(), stride, &size);
  return s == Status::kOk ? static_cast<size_t>(size - 4) : 0;
}

// ICM_COMPRESS of the pattern as AYUV (hostile alpha) or RGB24 into exactly
// width * height * 6 bytes: the frame's length, or 0 for a refusal.
int64_t DriverCompress(uint32_t fourcc, bool ayuv, const Pattern& p) {
  const test::DriverInstance driver(test::Name(fourcc).c_str());
  FUZZ_CHECK(driver.id() != 0);
  const int32_t quality = 9800;  // 9800 / 200 + 50: quality 99
  (void)driver.Send(ICM_SETQUALITY, &quality);
  const uint32_t cs = ayuv ? kCsAYUV : kCsRGB24;
  const int32_t pixelBytes = LayoutOf(cs).pixelBytes;
  BITMAPINFOHEADER input = LayoutHeader(cs, kSize, -kSize);
  input.biSizeImage = static_cast<uint32_t>(pixelBytes * kSize * kSize);
  std::vector<uint8_t> picture(input.biSizeImage);
  for (size_t o = 0; o < picture.size(); ++o) {
    const int32_t pixel = static_cast<int32_t>(o / pixelBytes);
    picture[o] = p.At(pixel % kSize, pixel / kSize, static_cast<int>(o % pixelBytes));
  }
  BITMAPINFOHEADER output{};
  FUZZ_CHECK(driver.Send(ICM_COMPRESS_GET_FORMAT, &input, &output) == ICERR_OK);
  FUZZ_CHECK(driver.Send(ICM_COMPRESS_BEGIN, &input, &output) == ICERR_OK);
  FUZZ_CHECK(output.biSizeImage == 6u * kSize * kSize);
  const auto out = std::make_unique<uint8_t[]>(output.biSizeImage);
  uint32_t flags = 0;
  ICCOMPRESS frame{0, &output, out.get(), &input, picture.data(), nullptr, &flags, 0, 0, 0, nullptr, nullptr};
  const int64_t result = driver.Send(ICM_COMPRESS, &frame);
  FUZZ_CHECK((result == ICERR_OK || result == ICERR_BADFORMAT) && driver.Send(ICM_COMPRESS_END) == ICERR_OK);
  return result == ICERR_OK ? output.biSizeImage : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int mixtures = argc > 1 ? std::atoi(argv[1]) : 40;
  const double pixels = double(kSize) * kSize;
  std::vector<Pattern> fixed = {{Kind::kNoise, 1, 1}, {Kind::kNoise, 1, 2}, {Kind::kBasis, 1, 3},
                                {Kind::kBlockDc, 1, 4}, {Kind::kBinaryNoise, 1, 6}};
  for (uint32_t period = 1; period <= 64; period *= 2) fixed.push_back({Kind::kChecker, period, 5});
  std::printf("| variant | alpha | largest frame (bytes) | bytes/pixel | bound/pixel | picture, layout | driver into 6 bytes/pixel |\n"
              "|---|---|---|---|---|---|---|\n");
  bool allFit = true;
  for (uint32_t v = 0; v < 8; ++v) {
    const uint32_t fourcc = kVariants[v];
    const std::string variant = test::Name(fourcc);
    const bool alphaVariant = test::StreamHasAlpha(fourcc);
    const int family = variant[3] <= '1' ? 0 : variant[3] <= '3' || variant[3] == '7' ? 1 : 2;
    for (int hostile = 0; hostile < (alphaVariant ? 2 : 1); ++hostile) {
      uint32_t rng = 0x1234567u + v * 31 + static_cast<uint32_t>(hostile);
      size_t best = 0;
      Pattern bestPattern = fixed[0];
      const char* bestLayout = "";
      for (int i = 0; i < static_cast<int>(fixed.size()) + mixtures; ++i) {
        if (i >= static_cast<int>(fixed.size())) rng ^= rng << 13, rng ^= rng >> 17, rng ^= rng << 5;
        const Pattern p = i < static_cast<int>(fixed.size()) ? fixed[i] : Pattern{Kind::kMixture, 1, rng};
        // Hostile alpha is the picture's own pattern on another channel;
        // opaque alpha a checkerboard coarser than the picture.
        const Pattern alpha = hostile != 0 ? p : Pattern{Kind::kChecker, 1u << 20, 0};
        for (const uint32_t cs : {alphaVariant ? kCsYA44 : kCsNV24, hostile != 0 ? kCsAYUV : kCsRGB24}) {
          const size_t bytes = Encode(fourcc, family, cs, p, alpha);
          if (bytes == 0) std::printf("%s: a frame did not fit vantaro_frame_bound()\n", variant.c_str());
          allFit = allFit && bytes != 0;
          if (bytes > best) best = bytes, bestPattern = p, bestLayout = LayoutOf(cs).name + 2;
        }
      }
      const int64_t driver = DriverCompress(fourcc, alphaVariant && hostile != 0, bestPattern);
      char driverText[48] = "refused (does not fit)";
      if (driver > 0) std::snprintf(driverText, sizeof driverText, "%.2f bytes/pixel", driver / pixels);
      const std::string period = bestPattern.kind == Kind::kChecker ? " " + std::to_string(bestPattern.period) : "";
      std::printf("| %s | %s | %zu | %.2f | %.2f | %s%s, %s | %s |\n", variant.c_str(),
                  alphaVariant ? (hostile ? "hostile" : "opaque") : "none", best, best / pixels,
                  vantaro_frame_bound(fourcc, kSize, kSize) / pixels, kKindNames[static_cast<int>(bestPattern.kind)],
                  period.c_str(), bestLayout, driverText);
    }
  }
  return allFit ? 0 : 1;
}
