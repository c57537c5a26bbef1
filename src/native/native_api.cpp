// The native door's shared checks: formats, variants, options and pictures;
// and the frame bound.
#include <algorithm>

#include "codec/code_rows.h"
#include "codec/global_tables.h"
#include "codec/slice_layout.h"
#include "native/native_common.h"

namespace vantaro::native {

FormatFacts FactsOf(vantaro_format format) {
  switch (format) {
    case VANTARO_FORMAT_YUV420P: return {true, true, kPlanesYUV420};
    case VANTARO_FORMAT_YUVA420P: return {true, true, kPlanesYUVA420};
    case VANTARO_FORMAT_YUV422P: return {true, true, kPlanesYUV422};
    case VANTARO_FORMAT_YUVA422P: return {true, true, kPlanesYUVA422};
    case VANTARO_FORMAT_YUV444P: return {true, true, kPlanesYUV444};
    case VANTARO_FORMAT_YUVA444P: return {true, true, kPlanesYUVA444};
    case VANTARO_FORMAT_NV12: return {true, false, kCsNV12};
    case VANTARO_FORMAT_NV16: return {true, false, kCsNV16};
    case VANTARO_FORMAT_NV24: return {true, false, kCsNV24};
    case VANTARO_FORMAT_YA20: return {true, false, kCsYA20};
    case VANTARO_FORMAT_YA22: return {true, false, kCsYA22};
    case VANTARO_FORMAT_YA44: return {true, false, kCsYA44};
    case VANTARO_FORMAT_YUY2: return {true, false, kCsYUY2};
    case VANTARO_FORMAT_UYVY: return {true, false, kCsUYVY};
    case VANTARO_FORMAT_UYVA: return {true, false, kCsUYVA};
    case VANTARO_FORMAT_AYUV: return {true, false, kCsAYUV};
    case VANTARO_FORMAT_RGB24: return {true, false, kCsRGB24};
    case VANTARO_FORMAT_RGB32: return {true, false, kCsRGB32};
  }
  return {false, false, kCsInvalid};
}

bool VariantOf(uint32_t fourcc, VariantFacts* facts) {
  uint32_t upper = 0;
  if (!IsStreamFourCC(fourcc, &upper)) return false;
  CodecInstance probe{};
  SetStreamFormat(&probe, upper);
  const uint32_t family = probe.chromaFamily / 2;  // 0: 4:2:0, 1: 4:2:2, 2: 4:4:4
  facts->fourcc = upper;
  facts->sx = family == 2 ? 0 : 1;
  facts->sy = family == 0 ? 1 : 0;
  facts->alpha = probe.hasAlpha != 0;
  return true;
}

vantaro_status CheckSize(int32_t width, int32_t height) {
  if (width < 1 || height < 1 || width > VANTARO_MAX_DIMENSION || height > VANTARO_MAX_DIMENSION) {
    return VANTARO_ERROR_BAD_SIZE;
  }
  return VANTARO_OK;
}

vantaro_status ReadOptions(const vantaro_options* options, vantaro_options* out) {
  vantaro_options_default(out);
  if (options == nullptr) return VANTARO_OK;
  if (options->size != sizeof(vantaro_options)) return VANTARO_ERROR_BAD_OPTIONS;
  if (options->threads < 0 || options->threads > 8) return VANTARO_ERROR_BAD_OPTIONS;
  if (options->kernels < VANTARO_KERNELS_AUTO || options->kernels > VANTARO_KERNELS_X86_AVX2) {
    return VANTARO_ERROR_BAD_OPTIONS;
  }
  *out = *options;
  return VANTARO_OK;
}

vantaro_status CheckPicture(const vantaro_picture* picture, int32_t width, int32_t height) {
  if (picture == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  const FormatFacts f = FactsOf(picture->format);
  if (!f.known) return VANTARO_ERROR_UNSUPPORTED_FORMAT;
  if (picture->width != width || picture->height != height) return VANTARO_ERROR_BAD_SIZE;
  for (int plane = 0; plane < 4; ++plane) {
    const PlaneGeometry g = GeometryOf(picture->format, width, height, plane);
    if (g.lines == 0) continue;
    if (picture->planes[plane] == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
    const int64_t stride = picture->strides[plane];
    if ((stride < 0 ? -stride : stride) < g.lineBytes) return VANTARO_ERROR_BAD_STRIDE;
  }
  return VANTARO_OK;
}

vantaro_status CheckFeeds(const vantaro_picture& picture, const VariantFacts& variant) {
  const FormatFacts f = FactsOf(picture.format);
  // Plane sets and the semi-planar layouts (deinterleaved into one) take
  // or leave alpha as the variant needs.
  if (f.planeSet || IsPlanar(f.layout)) return VANTARO_OK;
  return LayoutOf(f.layout).hasAlpha == variant.alpha ? VANTARO_OK : VANTARO_ERROR_ALPHA_MISMATCH;
}

// The public choices number the overrides one for one.
static_assert(static_cast<int>(KernelOverride::kScalar) == VANTARO_KERNELS_SCALAR &&
              static_cast<int>(KernelOverride::kAvx2) == VANTARO_KERNELS_X86_AVX2);

KernelScope::KernelScope(vantaro_kernels kernels)
    : saved_(CurrentKernelOverride()), changed_(kernels != VANTARO_KERNELS_AUTO) {
  if (changed_) SetKernelOverride(static_cast<KernelOverride>(kernels));
}

KernelScope::~KernelScope() {
  if (changed_) SetKernelOverride(saved_);
}

namespace {

// The longest code of each kind the encoder can write, in bits.
struct LongestCodes {
  uint32_t dc = 0, ac = 0, alphaPair = 0;
};

LongestCodes FindLongestCodes() {
  const GlobalTables& t = Tables();
  LongestCodes c;
  for (int i = 0; i < 4096; ++i) c.dc = std::max<uint32_t>({c.dc, t.dcLuma.length[i], t.dcChroma.length[i]});
  for (const auto& level : t.acCode) {
    for (uint32_t entry : level) c.ac = std::max(c.ac, entry & 255u);
  }
  for (const auto& value : t.alphaPairLength) {
    for (uint8_t length : value) c.alphaPair = std::max<uint32_t>(c.alphaPair, length);
  }
  return c;
}

}  // namespace

uint64_t MacroblockBoundBits(const VariantFacts& v) {
  static const LongestCodes codes = FindLongestCodes();
  CodecInstance probe{};
  SetStreamFormat(&probe, v.fourcc);
  // A block: its DC code, 63 coefficients each with the longest run/level
  // or escape code, and the end of block.
  const uint64_t blockBits = codes.dc + 63ull * codes.ac + ParseCode(kEndOfBlockCode).length;
  const uint64_t chromaBlocks = v.sx == 0 ? 8 : (v.sy == 0 ? 4 : 2);
  uint64_t bits = (4 + chromaBlocks + (probe.dctAlpha ? 4 : 0)) * blockBits;
  // Run/value alpha: at worst a pair for each of the 256 samples, and the
  // end marker of each of the two halves.
  if (v.alpha && !probe.dctAlpha) bits += 256ull * codes.alphaPair + 2ull * kAlphaEndMarkerLength;
  return bits;
}

}  // namespace vantaro::native

using namespace vantaro;
using namespace vantaro::native;

extern "C" {

VTC_API size_t vantaro_frame_bound(uint32_t fourcc, int32_t width, int32_t height) {
  VariantFacts v{};
  int32_t cw = 0, ch = 0;
  if (!VariantOf(fourcc, &v) || vantaro_coded_size(width, height, &cw, &ch) != VANTARO_OK) return 0;
  const uint64_t macroblockBits = MacroblockBoundBits(v);
  const uint64_t columns = static_cast<uint64_t>(cw) / 16;
  uint64_t bytes = 4;  // quality and second-field offset
  for (uint32_t field = 0; field < 2; ++field) {
    const uint64_t lines = field == 0 ? static_cast<uint64_t>(ch + 1) / 2 : static_cast<uint64_t>(ch) / 2;
    const uint64_t rows = (lines + 15) / 16;
    // Each slice: its 24-bit length and up to a byte of alignment; the rows'
    // bits rounded up once per slice.
    bytes += kSlicesPerField * 4ull + (rows * columns * macroblockBits + 7) / 8 + kSlicesPerField;
  }
  return static_cast<size_t>(bytes);
}

}  // extern "C"
