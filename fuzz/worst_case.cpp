// Searches for the largest frame each variant can produce per pixel: 256x256
// pictures at quality 99 made to maximise escape codes (noise, checkerboards
// of every period, a single extreme basis pattern per block, block-wise
// extreme DC, and random mixtures of these), fed through the full-chroma
// layouts (NV24 without alpha, YA44 with it) so that 4:4:4 variants see
// full-resolution chroma. Alpha variants run with opaque and with hostile
// alpha. Each frame is written into a capacity of vantaro_frame_bound() and
// must fit; the maximum per variant is printed beside the bound and the
// driver's advertised 6 bytes a pixel. Then the largest picture of each
// variant goes through DriverProc's ICM_COMPRESS with an output of exactly
// width * height * 6 bytes: the driver must answer a frame or refuse, never
// write past it (run under AddressSanitizer in the fuzz build).
// Usage: worst_case [random mixtures per variant, default 40]
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numbers>
#include <vector>

#include "codec/codec_instance.h"
#include "codec/field_flow.h"
#include "codec/quantiser.h"
#include "fuzz_support.h"
#include "vantaro/driver.h"

using namespace vantaro;
using namespace vantaro::fuzz;

namespace {

constexpr int32_t kSize = 256;

struct Rng {
  uint32_t s;
  uint32_t Next() {
    s ^= s << 13;
    s ^= s >> 17;
    s ^= s << 5;
    return s;
  }
};

enum class Kind { kNoise, kChecker, kBasis, kBlockDc, kMixture, kBinaryNoise };
enum Channel { kLuma, kChroma, kAlpha };

// One sample generator: a pattern kind and its parameters.
struct Pattern {
  Kind kind;
  uint32_t period = 1;  // checkerboard cell
  uint32_t seed = 1;

  uint8_t At(int32_t x, int32_t y, int channel) const {
    const uint32_t bx = x / 8, by = y / 8;
    const uint32_t h = Hash(bx * 73856093u ^ by * 19349663u ^ static_cast<uint32_t>(channel) * 83492791u ^ seed);
    switch (kind) {
      case Kind::kNoise: return static_cast<uint8_t>(Hash(x * 2654435761u ^ y * 40503u ^ channel * 977u ^ seed) >> 24);
      case Kind::kChecker: return ((x / period) ^ (y / period)) & 1 ? 255 : 0;
      case Kind::kBinaryNoise: return Hash(x * 2654435761u ^ y * 40503u ^ channel * 977u ^ seed) & 1 ? 255 : 0;
      case Kind::kBasis: return Basis(h, x, y);
      case Kind::kBlockDc: return h & 1 ? 255 : 0;
      case Kind::kMixture:
        switch (h % 4) {
          case 0: return static_cast<uint8_t>(Hash(x * 2654435761u ^ y * 40503u ^ seed) >> 24);
          case 1: return (x ^ y) & 1 ? 255 : 0;
          case 2: return Basis(h, x, y);
          default: return h & 2 ? 255 : 0;
        }
    }
    return 0;
  }
  static uint32_t Hash(uint32_t v) {
    v ^= v >> 16;
    v *= 0x7feb352du;
    v ^= v >> 15;
    v *= 0x846ca68bu;
    return v ^ (v >> 16);
  }
  // The sign of one 8x8 cosine basis function at full swing: all energy in a
  // single coefficient of the block's choice.
  static uint8_t Basis(uint32_t h, int32_t x, int32_t y) {
    const uint32_t u = (h >> 8) & 7, v = (h >> 11) & 7;
    const double c = std::cos((2 * (x % 8) + 1) * u * std::numbers::pi / 16) *
                     std::cos((2 * (y % 8) + 1) * v * std::numbers::pi / 16);
    return (c >= 0) != ((h >> 14) & 1) ? 255 : 0;
  }
};

// The variant's chroma family: 0, 1 are 4:2:0, 2, 3 are 4:2:2, 4, 5 4:4:4.
uint32_t ChromaFamilyOf(uint32_t v) {
  constexpr uint32_t kFamilies[8] = {0, 1, 2, 3, 4, 5, 3, 5};
  return kFamilies[v];
}

struct Result {
  size_t bytes = 0;
  bool fits = false;
};

// One frame through the field drivers at quality 99 into a capacity of the
// frame bound (plus the writer's four bytes of spill).
// One frame through the field drivers at quality 99 into a capacity of the
// frame bound (plus the writer's four bytes of spill), from layout `cs`:
// NV24 or YA44 (full-resolution chroma, alpha beside luma) or a packed one.
// Chroma is drawn at the stream's resolution and repeated over the
// subsampled pixels, so that averaging down keeps its full swing.
Result Encode(uint32_t fourcc, uint32_t family, uint32_t cs, const Pattern& p, const Pattern& alpha) {
  const int32_t sx = family < 4 ? 1 : 0, sy = family < 2 ? 1 : 0;
  const int32_t pixelBytes = LayoutOf(cs).pixelBytes;
  const int32_t stride = kSize * pixelBytes;
  const bool planar = IsPlanar(cs);
  const int32_t chromaLine = 2 * kSize;
  std::vector<uint8_t> main(static_cast<size_t>(stride) * kSize);
  std::vector<uint8_t> chroma(planar ? static_cast<size_t>(chromaLine) * (kSize + 32) * 2 : 0);
  for (size_t o = 0; o < main.size(); ++o) {
    const int32_t x = static_cast<int32_t>(o % stride) / pixelBytes;
    const int32_t y = static_cast<int32_t>(o / stride);
    const int channel = static_cast<int>(o % pixelBytes);
    // Packed pixels are colour (RGB) or carry alpha in luma (AYUV): every
    // byte its own sample, exactly as the driver check below feeds them.
    main[o] = cs == kCsYA44 && channel == 1 ? alpha.At(x, y, kAlpha) : p.At(x, y, channel);
  }
  for (size_t o = 0; o < chroma.size(); ++o) {
    chroma[o] = p.At((static_cast<int32_t>(o % chromaLine) / 2) >> sx,
                     static_cast<int32_t>(o / chromaLine) >> sy, kChroma + static_cast<int>(o & 1) * 3);
  }
  CodecInstance* instance = CreateInstance();
  FUZZ_CHECK(instance != nullptr);
  SetStreamFormat(instance, fourcc);
  SetQuality(instance, 99);
  instance->width = kSize;
  instance->height = kSize;
  instance->colorSpace = cs;
  const size_t capacity = vantaro_frame_bound(fourcc, kSize, kSize) + 4;
  std::unique_ptr<uint8_t[]> stream(new uint8_t[capacity]);
  int64_t size = 0;
  const Status s = CompressFrame(instance, stream.get(), capacity, main.data(),
                                 planar ? chroma.data() : nullptr, stride, &size);
  DestroyInstance(instance);
  return {s == Status::kOk ? static_cast<size_t>(size - 4) : capacity, s == Status::kOk};
}

// ICM_COMPRESS of the pattern as AYUV (hostile alpha) or RGB24 into exactly
// width * height * 6 bytes: the frame's length, or 0 for a refusal.
int64_t DriverCompress(uint32_t fourcc, bool ayuv, const Pattern& p) {
  ICOPEN open{};
  open.dwSize = sizeof open;
  open.fccType = ICTYPE_VIDEO;
  open.fccHandler = fourcc;
  const uint64_t id = static_cast<uint64_t>(DriverProc(0, nullptr, DRV_OPEN, 0, reinterpret_cast<intptr_t>(&open)));
  FUZZ_CHECK(id != 0);
  const int32_t quality = 9800;  // 9800 / 200 + 50: quality 99
  (void)DriverProc(id, nullptr, ICM_SETQUALITY, reinterpret_cast<intptr_t>(&quality), 0);
  BITMAPINFOHEADER input{};
  input.biSize = sizeof input;
  input.biWidth = kSize;
  input.biHeight = -kSize;
  input.biPlanes = 1;
  input.biBitCount = ayuv ? 32 : 24;
  input.biCompression = ayuv ? VTC_FOURCC('A', 'Y', 'U', 'V') : 0;
  const size_t pixelBytes = ayuv ? 4 : 3;
  input.biSizeImage = static_cast<uint32_t>(pixelBytes * kSize * kSize);
  std::vector<uint8_t> picture(input.biSizeImage);
  for (size_t o = 0; o < picture.size(); ++o) {
    const int32_t x = static_cast<int32_t>((o / pixelBytes) % kSize), y = static_cast<int32_t>(o / pixelBytes / kSize);
    picture[o] = p.At(x, y, static_cast<int>(o % pixelBytes));
  }
  BITMAPINFOHEADER output{};
  FUZZ_CHECK(DriverProc(id, nullptr, ICM_COMPRESS_GET_FORMAT, reinterpret_cast<intptr_t>(&input),
                        reinterpret_cast<intptr_t>(&output)) == ICERR_OK);
  FUZZ_CHECK(DriverProc(id, nullptr, ICM_COMPRESS_BEGIN, reinterpret_cast<intptr_t>(&input),
                        reinterpret_cast<intptr_t>(&output)) == ICERR_OK);
  const size_t advertised = output.biSizeImage;
  FUZZ_CHECK(advertised == size_t{6} * kSize * kSize);
  std::unique_ptr<uint8_t[]> out(new uint8_t[advertised]);
  uint32_t flags = 0;
  ICCOMPRESS frame{};
  frame.lpbiOutput = &output;
  frame.lpOutput = out.get();
  frame.lpbiInput = &input;
  frame.lpInput = picture.data();
  frame.lpdwFlags = &flags;
  const int64_t result = DriverProc(id, nullptr, ICM_COMPRESS, reinterpret_cast<intptr_t>(&frame), 0);
  (void)DriverProc(id, nullptr, ICM_COMPRESS_END, 0, 0);
  (void)DriverProc(id, nullptr, DRV_CLOSE, 0, 0);
  FUZZ_CHECK(result == ICERR_OK || result == ICERR_BADFORMAT);
  return result == ICERR_OK ? output.biSizeImage : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const int mixtures = argc > 1 ? std::atoi(argv[1]) : 40;
  const double pixels = double(kSize) * kSize;
  std::vector<Pattern> fixed = {{Kind::kNoise, 1, 1}, {Kind::kNoise, 1, 2}, {Kind::kBasis, 1, 3},
                                {Kind::kBlockDc, 1, 4}, {Kind::kBinaryNoise, 1, 6}};
  for (uint32_t period = 1; period <= 64; period *= 2) fixed.push_back({Kind::kChecker, period, 5});
  const Pattern opaque{Kind::kBlockDc, 1, 0};  // replaced below by a constant
  std::printf("| variant | alpha | largest frame (bytes) | bytes/pixel | bound/pixel | picture, layout | driver into 6 bytes/pixel |\n");
  std::printf("|---|---|---|---|---|---|---|\n");
  bool allFit = true;
  for (uint32_t v = 0; v < 8; ++v) {
    const bool alphaVariant = VariantHasAlpha(v);
    for (int hostile = 0; hostile < (alphaVariant ? 2 : 1); ++hostile) {
      Rng rng{0x1234567u + v * 31 + static_cast<uint32_t>(hostile)};
      Result best;
      Pattern bestPattern = fixed[0];
      const char* bestLayout = "";
      auto tryPattern = [&](const Pattern& p) {
        // Hostile alpha is the picture's own pattern on another channel;
        // opaque alpha is a checkerboard coarser than the picture.
        const Pattern alpha = hostile != 0 ? p : Pattern{Kind::kChecker, 1u << 20, 0};
        // Alpha variants: YA44 with the chosen alpha, then RGB24 (no
        // alpha) for opaque and AYUV (whose alpha is its luma) for hostile.
        const uint32_t planar = alphaVariant ? kCsYA44 : kCsNV24;
        const uint32_t packed = alphaVariant && hostile != 0 ? kCsAYUV : kCsRGB24;
        for (const uint32_t cs : {planar, packed}) {
          const Result r = Encode(kVariants[v], ChromaFamilyOf(v), cs, p, alpha);
          allFit = allFit && r.fits;
          if (!r.fits) std::printf("VARIANT %u: a frame did not fit vantaro_frame_bound()\n", v);
          if (r.bytes > best.bytes) {
            best = r;
            bestPattern = p;
            bestLayout = LayoutOf(cs).name + 2;
          }
        }
      };
      for (const Pattern& p : fixed) tryPattern(p);
      for (int i = 0; i < mixtures; ++i) tryPattern({Kind::kMixture, 1, rng.Next()});
      static const char* const kNames[] = {"noise", "checkerboard", "basis signs", "block DC", "mixture", "binary noise"};
      const int64_t driver = DriverCompress(kVariants[v], alphaVariant && hostile != 0, bestPattern);
      char driverText[64];
      if (driver > 0) std::snprintf(driverText, sizeof driverText, "%.2f bytes/pixel", driver / pixels);
      else std::snprintf(driverText, sizeof driverText, "refused (does not fit)");
      const char digit = static_cast<char>(kVariants[v] >> 24);
      std::printf("| VTQ%c | %s | %zu | %.2f | %.2f | %s%s, %s | %s |\n", digit,
                  alphaVariant ? (hostile ? "hostile" : "opaque") : "none", best.bytes,
                  best.bytes / pixels, vantaro_frame_bound(kVariants[v], kSize, kSize) / pixels,
                  kNames[static_cast<int>(bestPattern.kind)],
                  bestPattern.kind == Kind::kChecker ? (" " + std::to_string(bestPattern.period)).c_str() : "",
                  bestLayout, driverText);
    }
  }
  (void)opaque;
  return allFit ? 0 : 1;
}
