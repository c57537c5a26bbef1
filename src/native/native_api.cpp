// The native door's shared checks, the staging layout of each variant and
// the frame bound.
#include <algorithm>

#include "codec/code_rows.h"
#include "codec/global_tables.h"
#include "codec/slice_layout.h"
#include "native/native_common.h"

namespace vantaro::native {

FormatFacts FactsOf(vantaro_format format) {
  switch (format) {
    case VANTARO_FORMAT_YUV420P: return {true, true, 1, 1, false};
    case VANTARO_FORMAT_YUVA420P: return {true, true, 1, 1, true};
    case VANTARO_FORMAT_YUV422P: return {true, true, 1, 0, false};
    case VANTARO_FORMAT_YUVA422P: return {true, true, 1, 0, true};
    case VANTARO_FORMAT_YUV444P: return {true, true, 0, 0, false};
    case VANTARO_FORMAT_YUVA444P: return {true, true, 0, 0, true};
    default: return {false, false, 0, 0, false};
  }
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
  // UYVY lines feed 4:2:2 exactly and 4:2:0 as the packed doors do; the
  // alpha plane behind UYVA lines carries alpha exactly. 4:4:4 goes through
  // the same 4:2:2 lines for now: its chroma is halved horizontally.
  facts->staging = facts->alpha ? kCsUYVA : kCsUYVY;
  return true;
}

int32_t StagingStride(uint32_t colorSpace, int32_t codedWidth) {
  return codedWidth * (colorSpace == kCsAYUV ? 4 : 2);
}

size_t StagingBytes(uint32_t colorSpace, int32_t codedWidth, int32_t codedHeight) {
  const size_t lines = static_cast<size_t>(StagingStride(colorSpace, codedWidth)) *
                       static_cast<size_t>(codedHeight);
  const size_t alpha = colorSpace == kCsUYVA ? static_cast<size_t>(codedWidth) * codedHeight : 0;
  return lines + alpha;
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
  if (options->kernels != VANTARO_KERNELS_AUTO && options->kernels != VANTARO_KERNELS_SCALAR) {
    return VANTARO_ERROR_BAD_OPTIONS;
  }
  *out = *options;
  return VANTARO_OK;
}

vantaro_status CheckPicture(const vantaro_picture* picture, int32_t width, int32_t height) {
  if (picture == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  const FormatFacts f = FactsOf(picture->format);
  if (!f.planar) return VANTARO_ERROR_UNSUPPORTED_FORMAT;
  if (picture->width != width || picture->height != height) return VANTARO_ERROR_BAD_SIZE;
  for (int plane = 0; plane < (f.alpha ? 4 : 3); ++plane) {
    if (picture->planes[plane] == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  }
  return VANTARO_OK;
}

KernelScope::KernelScope(vantaro_kernels kernels)
    : saved_(CurrentKernelOverride()), changed_(kernels == VANTARO_KERNELS_SCALAR) {
  if (changed_) SetKernelOverride(KernelOverride::kScalar);
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
  for (const auto& run : t.acCode) {
    for (uint32_t entry : run) c.ac = std::max(c.ac, entry & 255u);
  }
  for (const auto& value : t.alphaPairLength) {
    for (uint8_t length : value) c.alphaPair = std::max<uint32_t>(c.alphaPair, length);
  }
  return c;
}

}  // namespace

}  // namespace vantaro::native

using namespace vantaro;
using namespace vantaro::native;

extern "C" {

VTC_API size_t vantaro_frame_bound(uint32_t fourcc, int32_t width, int32_t height) {
  VariantFacts v{};
  int32_t cw = 0, ch = 0;
  if (!VariantOf(fourcc, &v) || vantaro_coded_size(width, height, &cw, &ch) != VANTARO_OK) return 0;
  static const LongestCodes codes = FindLongestCodes();
  CodecInstance probe{};
  SetStreamFormat(&probe, v.fourcc);
  // A block: its DC code, 63 coefficients each with the longest run/level
  // or escape code, and the end of block.
  const uint64_t blockBits = codes.dc + 63ull * codes.ac + ParseCode(kEndOfBlockCode).length;
  const uint64_t chromaBlocks = v.sx == 0 ? 8 : (v.sy == 0 ? 4 : 2);
  uint64_t macroblockBits = (4 + chromaBlocks + (probe.dctAlpha ? 4 : 0)) * blockBits;
  // Run/value alpha: at worst a pair for each of the 256 samples, and the
  // end marker of each of the two halves.
  if (v.alpha && !probe.dctAlpha) macroblockBits += 256ull * codes.alphaPair + 2ull * kAlphaEndMarkerLength;
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
