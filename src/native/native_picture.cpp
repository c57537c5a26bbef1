// Planar pictures into and out of the staging layouts. The public side is
// read with its right column and bottom line repeated out to the coded size;
// chroma of another resolution is averaged over the pixels a sample covers
// (averaging down, repeating up), which takes chroma as it stands when the
// two resolutions agree.
#include <algorithm>

#include "native/native_common.h"

namespace vantaro::native {
namespace {

struct PlanarView {
  const vantaro_picture* p;
  FormatFacts f;
  int32_t Cx(int32_t x) const { return std::min(x, p->width - 1); }
  int32_t Cy(int32_t y) const { return std::min(y, p->height - 1); }
  uint8_t At(int plane, int32_t x, int32_t y) const {
    return p->planes[plane][static_cast<ptrdiff_t>(y) * p->strides[plane] + x];
  }
  uint8_t Luma(int32_t x, int32_t y) const { return At(0, Cx(x), Cy(y)); }
  uint8_t Alpha(int32_t x, int32_t y) const { return f.alpha ? At(3, Cx(x), Cy(y)) : 255; }
  // Mean of chroma plane `plane` over the pixels [x, x + w) x [y, y + h).
  uint8_t Chroma(int plane, int32_t x, int32_t y, int32_t w, int32_t h) const {
    uint32_t sum = 0;
    for (int32_t j = 0; j < h; ++j) {
      for (int32_t i = 0; i < w; ++i) sum += At(plane, Cx(x + i) >> f.sx, Cy(y + j) >> f.sy);
    }
    const uint32_t n = static_cast<uint32_t>(w * h);
    return static_cast<uint8_t>((sum + n / 2) / n);
  }
};

}  // namespace

void PlanarToStaging(const vantaro_picture& picture, uint32_t colorSpace, uint8_t* staging,
                     int32_t codedWidth, int32_t codedHeight) {
  const PlanarView v{&picture, FactsOf(picture.format)};
  const ptrdiff_t stride = StagingStride(colorSpace, codedWidth);
  for (int32_t y = 0; y < codedHeight; ++y) {
    uint8_t* line = staging + stride * y;
    if (colorSpace == kCsAYUV) {
      for (int32_t x = 0; x < codedWidth; ++x) {
        uint8_t* px = line + 4 * x;
        px[0] = v.Luma(x, y);
        px[1] = 255;
        px[2] = v.Chroma(1, x, y, 1, 1);
        px[3] = v.Chroma(2, x, y, 1, 1);
      }
      continue;
    }
    for (int32_t x = 0; x < codedWidth; x += 2) {  // UYVY and UYVA lines
      uint8_t* px = line + 2 * x;
      px[0] = v.Chroma(1, x, y, 2, 1);
      px[1] = v.Luma(x, y);
      px[2] = v.Chroma(2, x, y, 2, 1);
      px[3] = v.Luma(x + 1, y);
    }
  }
  if (colorSpace == kCsUYVA) {
    uint8_t* alpha = staging + stride * codedHeight;
    for (int32_t y = 0; y < codedHeight; ++y) {
      for (int32_t x = 0; x < codedWidth; ++x) {
        alpha[static_cast<ptrdiff_t>(y) * codedWidth + x] = v.Alpha(x, y);
      }
    }
  }
}

namespace {

struct StagingView {
  const uint8_t* s;
  uint32_t cs;
  ptrdiff_t stride;
  int32_t codedWidth, codedHeight;
  const uint8_t* Pixel(int32_t x, int32_t y) const {
    return cs == kCsAYUV ? s + stride * y + 4 * x : s + stride * y + 4 * (x >> 1);
  }
  uint8_t Luma(int32_t x, int32_t y) const {
    return cs == kCsAYUV ? Pixel(x, y)[0] : Pixel(x, y)[1 + 2 * (x & 1)];
  }
  uint8_t ChromaAt(int plane, int32_t x, int32_t y) const {
    return cs == kCsAYUV ? Pixel(x, y)[plane + 1] : Pixel(x, y)[2 * (plane - 1)];
  }
  uint8_t Alpha(int32_t x, int32_t y) const {
    if (cs != kCsUYVA) return 255;
    return s[stride * codedHeight + static_cast<ptrdiff_t>(y) * codedWidth + x];
  }
};

}  // namespace

void StagingToPlanar(const uint8_t* staging, uint32_t colorSpace, int32_t codedWidth,
                     int32_t codedHeight, const vantaro_picture& picture) {
  const StagingView v{staging, colorSpace, StagingStride(colorSpace, codedWidth), codedWidth,
                      codedHeight};
  const FormatFacts f = FactsOf(picture.format);
  const int32_t w = picture.width, h = picture.height;
  for (int32_t y = 0; y < h; ++y) {
    uint8_t* luma = picture.planes[0] + static_cast<ptrdiff_t>(y) * picture.strides[0];
    uint8_t* alpha =
        f.alpha ? picture.planes[3] + static_cast<ptrdiff_t>(y) * picture.strides[3] : nullptr;
    for (int32_t x = 0; x < w; ++x) {
      luma[x] = v.Luma(x, y);
      if (alpha != nullptr) alpha[x] = v.Alpha(x, y);
    }
  }
  const int32_t cw = (w + f.sx) >> f.sx, ch = (h + f.sy) >> f.sy;
  for (int plane = 1; plane <= 2; ++plane) {
    for (int32_t cy = 0; cy < ch; ++cy) {
      uint8_t* line = picture.planes[plane] + static_cast<ptrdiff_t>(cy) * picture.strides[plane];
      for (int32_t cx = 0; cx < cw; ++cx) {
        uint32_t sum = 0, n = 0;
        for (int32_t y = cy << f.sy; y < std::min(h, (cy + 1) << f.sy); ++y) {
          for (int32_t x = cx << f.sx; x < std::min(w, (cx + 1) << f.sx); ++x, ++n) {
            sum += v.ChromaAt(plane, x, y);
          }
        }
        line[cx] = static_cast<uint8_t>((sum + n / 2) / n);
      }
    }
  }
}

}  // namespace vantaro::native

