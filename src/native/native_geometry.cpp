// Plane geometry of every public format, and tightly packed pictures: how
// many bytes one takes and where its planes start, for callers who allocate
// one buffer per picture.
#include "native/native_common.h"

namespace vantaro::native {

namespace {

bool DimensionInRange(int32_t value) { return value >= 1 && value <= VANTARO_MAX_DIMENSION; }

}  // namespace

// Tight strides are line lengths, except where a direct layout's walks
// derive the second plane's stride from the main one's (NV*, YA*) or expect
// the alpha plane right behind the lines (UYVA): those strides follow the
// walks' rule, so a filled picture passes the door's checks.
PlaneGeometry GeometryOf(vantaro_format format, int32_t width, int32_t height, int plane) {
  const int64_t w = width, h = height;
  const int64_t half = (w + 1) / 2, even = 2 * half, halfLines = (h + 1) / 2;
  const auto main = [&](int64_t bytes, int64_t stride) {
    return plane == 0 ? PlaneGeometry{bytes, stride, h} : PlaneGeometry{0, 0, 0};
  };
  // Main plane, then a second plane (planes[1]) of `lines` lines.
  const auto two = [&](int64_t bytes, int64_t stride, int64_t bytes1, int64_t stride1, int64_t lines1) {
    if (plane == 0) return PlaneGeometry{bytes, stride, h};
    return plane == 1 ? PlaneGeometry{bytes1, stride1, lines1} : PlaneGeometry{0, 0, 0};
  };
  const FormatFacts f = FactsOf(format);
  if (f.planeSet) {
    const LayoutFacts& l = LayoutOf(f.layout);
    if (plane == 0 || (plane == 3 && l.hasAlpha)) return {w, w, h};
    if (plane == 3) return {0, 0, 0};
    const int64_t cw = (w + l.chromaShiftX) >> l.chromaShiftX;
    return {cw, cw, (h + l.chromaShiftY) >> l.chromaShiftY};
  }
  switch (format) {
    case VANTARO_FORMAT_NV12: return two(w, even, even, even, halfLines);
    case VANTARO_FORMAT_NV16: return two(w, even, even, even, h);
    case VANTARO_FORMAT_NV24: return two(w, w, 2 * w, 2 * w, h);
    case VANTARO_FORMAT_YA20: return two(2 * w, 2 * even, even, even, halfLines);
    case VANTARO_FORMAT_YA22: return two(2 * w, 2 * even, even, even, h);
    case VANTARO_FORMAT_YA44: return two(2 * w, 2 * w, 2 * w, 2 * w, h);
    case VANTARO_FORMAT_YUY2: case VANTARO_FORMAT_UYVY: return main(2 * even, 2 * even);
    case VANTARO_FORMAT_UYVA:
      if (plane == 3) return {w, w, h};
      return main(2 * even, 2 * even);  // odd widths fail the door's UYVA rule
    case VANTARO_FORMAT_AYUV: case VANTARO_FORMAT_RGB32: return main(4 * w, 4 * w);
    case VANTARO_FORMAT_RGB24: return main(3 * w, 3 * w);
    default: return {0, 0, 0};
  }
}

}  // namespace vantaro::native

using vantaro::native::GeometryOf;
using vantaro::native::PlaneGeometry;

extern "C" {

VTC_API size_t vantaro_picture_size(vantaro_format format, int32_t width, int32_t height) {
  if (!vantaro::native::FactsOf(format).known || !vantaro::native::DimensionInRange(width) ||
      !vantaro::native::DimensionInRange(height)) {
    return 0;
  }
  size_t bytes = 0;
  for (int plane = 0; plane < 4; ++plane) {
    const PlaneGeometry g = GeometryOf(format, width, height, plane);
    bytes += static_cast<size_t>(g.stride * g.lines);
  }
  return bytes;
}

VTC_API vantaro_status vantaro_picture_fill(vantaro_picture* picture, vantaro_format format,
                                            int32_t width, int32_t height, void* buffer,
                                            size_t size) {
  if (picture == nullptr || buffer == nullptr) return VANTARO_ERROR_INVALID_ARGUMENT;
  if (!vantaro::native::FactsOf(format).known) return VANTARO_ERROR_UNSUPPORTED_FORMAT;
  const size_t needed = vantaro_picture_size(format, width, height);
  if (needed == 0) return VANTARO_ERROR_BAD_SIZE;
  if (size < needed) return VANTARO_ERROR_BUFFER_TOO_SMALL;
  uint8_t* at = static_cast<uint8_t*>(buffer);
  *picture = vantaro_picture{};
  picture->format = format;
  picture->width = width;
  picture->height = height;
  for (int plane = 0; plane < 4; ++plane) {
    const PlaneGeometry g = GeometryOf(format, width, height, plane);
    if (g.lines == 0) continue;
    picture->planes[plane] = at;
    picture->strides[plane] = static_cast<int32_t>(g.stride);
    at += g.stride * g.lines;
  }
  return VANTARO_OK;
}

}  // extern "C"
