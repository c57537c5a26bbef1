// Pictures the direct layouts' walks cannot take where they lie: a size that
// is not whole macroblocks, strides or plane placements other than the walks
// derive, and the semi-planar layouts as encoder input (their loaders repeat
// lines and skip column groups). Such pictures pass through one staging
// buffer per handle, grown on first need and kept, so steady state
// allocates nothing.
#include <algorithm>
#include <cstring>

#include "codec/allocation.h"
#include "native/native_handles.h"

namespace vantaro::native {
namespace {

// The direct layouts find their second plane from the main plane's stride:
// the stride of the U, V plane those walks imply, or 0 where none can serve.
int64_t ImpliedChromaStride(uint32_t layout, int64_t s) {
  switch (layout) {
    case kCsNV12: case kCsNV16: case kCsYA44: return s;
    case kCsNV24: return 2 * s;
    case kCsYA20: case kCsYA22: return s % 2 == 0 ? s / 2 : 0;
    default: return 0;
  }
}

// csUYVA's alpha plane lies right behind the lines, a byte a pixel, with
// lines of exactly two bytes a pixel: the walks find it there.
bool UyvaPlanesAgree(const vantaro_picture& p) {
  const int64_t s = p.strides[0];
  return s == 2 * static_cast<int64_t>(p.width) && p.strides[3] == p.width &&
         p.planes[3] == p.planes[0] + s * p.height;
}

// The bytes repeated past a line's end: one pixel, or the pixel pair that
// shares a chroma sample, or one U, V pair.
int64_t EdgeUnit(vantaro_format format, int plane) {
  if (plane == 3) return 1;
  switch (format) {
    case VANTARO_FORMAT_NV12: case VANTARO_FORMAT_NV16: case VANTARO_FORMAT_NV24:
      return plane == 0 ? 1 : 2;
    case VANTARO_FORMAT_YUY2: case VANTARO_FORMAT_UYVY: case VANTARO_FORMAT_UYVA:
    case VANTARO_FORMAT_AYUV: case VANTARO_FORMAT_RGB32:
      return 4;
    case VANTARO_FORMAT_RGB24: return 3;
    default: return 2;  // YA*: (luma, alpha) pairs and U, V pairs
  }
}

const uint8_t* LineOf(const vantaro_picture& p, int plane, int64_t y) {
  return p.planes[plane] + y * p.strides[plane];
}

uint8_t* LineOf(uint8_t* const* planes, const int32_t* strides, int plane, int64_t y) {
  return planes[plane] + y * strides[plane];
}

// The 4:2:0 semi-planar stores write a partial macroblock row's chroma
// whole, eight lines a field: their pictures need whole rows of both fields.
bool WholeRowsNeeded(uint32_t layout) {
  return IsPlanar(layout) && HalfHeightChroma(LayoutOf(layout));
}

}  // namespace

int32_t StagingHeight(vantaro_format format, int32_t codedHeight) {
  return WholeRowsNeeded(FactsOf(format).layout) ? (codedHeight + 31) & ~31 : codedHeight;
}

bool TakesDirect(const vantaro_picture& p, bool encode) {
  const uint32_t layout = FactsOf(p.format).layout;
  if (p.width % 16 != 0 || p.height % 2 != 0) return false;
  if (WholeRowsNeeded(layout) && p.height % 32 != 0) return false;
  if (IsPlanar(layout)) return !encode && p.strides[1] == ImpliedChromaStride(layout, p.strides[0]);
  if (layout == kCsUYVA && !UyvaPlanesAgree(p)) return false;
  // The packed loaders step a field's lines by its stride rounded down to
  // 16 bytes: only strides of whole 8-byte units reach the right lines.
  return !encode || p.strides[0] % 8 == 0;
}

vantaro_format PlaneSetOf(vantaro_format semiPlanar) {
  switch (semiPlanar) {
    case VANTARO_FORMAT_NV12: return VANTARO_FORMAT_YUV420P;
    case VANTARO_FORMAT_NV16: return VANTARO_FORMAT_YUV422P;
    case VANTARO_FORMAT_NV24: return VANTARO_FORMAT_YUV444P;
    case VANTARO_FORMAT_YA20: return VANTARO_FORMAT_YUVA420P;
    case VANTARO_FORMAT_YA22: return VANTARO_FORMAT_YUVA422P;
    default: return VANTARO_FORMAT_YUVA444P;
  }
}

vantaro_status StagingPicture(HandleState* h, vantaro_format format, int32_t width, int32_t height,
                              vantaro_picture* out) {
  const size_t bytes = vantaro_picture_size(format, width, height);
  if (bytes > h->stagingBytes) {
    FreeAligned(h->staging);
    h->stagingBytes = 0;
    h->staging = static_cast<uint8_t*>(AllocateAligned(bytes));
    if (h->staging == nullptr) return VANTARO_ERROR_OUT_OF_MEMORY;
    h->stagingBytes = bytes;
  }
  return vantaro_picture_fill(out, format, width, height, h->staging, h->stagingBytes);
}

// Where the first luma of a pixel pair sits in YUY2-like lines, or -1.
int64_t PairLumaOffset(vantaro_format format, int plane) {
  if (plane != 0) return -1;
  if (format == VANTARO_FORMAT_YUY2) return 0;
  return format == VANTARO_FORMAT_UYVY || format == VANTARO_FORMAT_UYVA ? 1 : -1;
}

void CopyReplicating(const vantaro_picture& from, const vantaro_picture& to) {
  for (int plane = 0; plane < 4; ++plane) {
    const PlaneGeometry f = GeometryOf(from.format, from.width, from.height, plane);
    const PlaneGeometry t = GeometryOf(to.format, to.width, to.height, plane);
    if (f.lines == 0) continue;
    const int64_t unit = EdgeUnit(from.format, plane);
    const int64_t luma = PairLumaOffset(from.format, plane);
    for (int64_t y = 0; y < t.lines; ++y) {
      uint8_t* line = LineOf(to.planes, to.strides, plane, y);
      std::memcpy(line, LineOf(from, plane, std::min(y, f.lines - 1)), static_cast<size_t>(f.lineBytes));
      const int64_t last = f.lineBytes - unit;
      // A pair's second luma repeats the last pixel's: the picture's own
      // pixel when the width is even, the one before the edge when odd.
      if (luma >= 0) line[last + luma + 2] = line[last + luma + 2 * ((from.width - 1) & 1)];
      uint8_t fill[4];
      std::memcpy(fill, line + last, static_cast<size_t>(unit));
      if (luma >= 0) fill[luma] = fill[luma + 2];
      for (int64_t x = f.lineBytes; x + unit <= t.lineBytes; x += unit) {
        std::memcpy(line + x, fill, static_cast<size_t>(unit));
      }
    }
  }
}

void CopyCropping(const vantaro_picture& from, const vantaro_picture& to) {
  for (int plane = 0; plane < 4; ++plane) {
    const PlaneGeometry t = GeometryOf(to.format, to.width, to.height, plane);
    for (int64_t y = 0; y < t.lines; ++y) {
      std::memcpy(LineOf(to.planes, to.strides, plane, y), LineOf(from, plane, y),
                  static_cast<size_t>(t.lineBytes));
    }
  }
}

void Deinterleave(const vantaro_picture& from, const vantaro_picture& to) {
  const bool ya = from.format >= VANTARO_FORMAT_YA20;
  for (int64_t y = 0; y < to.height; ++y) {
    const uint8_t* in = LineOf(from, 0, y);
    uint8_t* luma = LineOf(to.planes, to.strides, 0, y);
    if (!ya) {
      std::memcpy(luma, in, static_cast<size_t>(to.width));
      continue;
    }
    uint8_t* alpha = LineOf(to.planes, to.strides, 3, y);
    for (int64_t x = 0; x < to.width; ++x) {
      luma[x] = in[2 * x];
      alpha[x] = in[2 * x + 1];
    }
  }
  const PlaneGeometry chroma = GeometryOf(to.format, to.width, to.height, 1);
  for (int64_t y = 0; y < chroma.lines; ++y) {
    const uint8_t* in = LineOf(from, 1, y);
    uint8_t* u = LineOf(to.planes, to.strides, 1, y);
    uint8_t* v = LineOf(to.planes, to.strides, 2, y);
    for (int64_t x = 0; x < chroma.lineBytes; ++x) {
      u[x] = in[2 * x];
      v[x] = in[2 * x + 1];
    }
  }
}

}  // namespace vantaro::native
