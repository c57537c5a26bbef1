#include "bench_pictures.h"

#include <png.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "platform/platform_types.h"

namespace vantaro::bench {

RgbPicture LoadPng(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    throw std::runtime_error("cannot read " + path);
  }
  image.format = PNG_FORMAT_RGB;
  RgbPicture picture;
  picture.width = static_cast<int32_t>(image.width);
  picture.height = static_cast<int32_t>(image.height);
  picture.rgb.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr)) {
    png_image_free(&image);
    throw std::runtime_error("cannot decode " + path);
  }
  return picture;
}

namespace {

struct Yuv {
  uint8_t y, u, v;
};

uint8_t Clamp(int32_t v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); }

Yuv ToYuv(const uint8_t* p) {
  const int32_t r = p[0], g = p[1], b = p[2];
  return {Clamp((66 * r + 129 * g + 25 * b + 128 + 4096) >> 8),
          Clamp((-38 * r - 74 * g + 112 * b + 128 + 32768) >> 8),
          Clamp((112 * r - 94 * g - 18 * b + 128 + 32768) >> 8)};
}

}  // namespace

LayoutPicture ToLayout(const RgbPicture& picture, const std::string& layout) {
  const int32_t w = picture.width, h = picture.height;
  auto yuv = [&](int32_t x, int32_t y) { return ToYuv(&picture.rgb[(size_t(y) * w + x) * 3]); };
  auto alpha = [&](int32_t x, int32_t y) { return static_cast<uint8_t>((x * 255 / w + y) & 255); };
  LayoutPicture out{};
  if (layout == "YUY2" || layout == "UYVY" || layout == "UYVA") {
    const bool uyvy = layout != "YUY2";
    out.compression = uyvy ? MakeFourCC('U', 'Y', 'V', 'Y') : MakeFourCC('Y', 'U', 'Y', '2');
    out.bitCount = layout == "UYVA" ? 24 : 16;
    out.stride = w * 2;
    out.bytes.resize(size_t(out.stride) * h + (layout == "UYVA" ? size_t(w) * h : 0));
    for (int32_t y = 0; y < h; ++y) {
      for (int32_t x = 0; x + 1 < w; x += 2) {
        const Yuv a = yuv(x, y), b = yuv(x + 1, y);
        uint8_t* p = &out.bytes[size_t(y) * out.stride + x * 2];
        const uint8_t quad[4] = {a.y, a.u, b.y, a.v};
        const uint8_t quadUyvy[4] = {a.u, a.y, a.v, b.y};
        std::copy_n(uyvy ? quadUyvy : quad, 4, p);
      }
      if (layout == "UYVA") {
        for (int32_t x = 0; x < w; ++x) out.bytes[size_t(out.stride) * h + size_t(y) * w + x] = alpha(x, y);
      }
    }
  } else if (layout == "AYUV" || layout == "RGB32" || layout == "RGB24") {
    const int32_t bpp = layout == "RGB24" ? 3 : 4;
    out.compression = layout == "AYUV" ? MakeFourCC('A', 'Y', 'U', 'V') : kBiRgb;
    out.bitCount = static_cast<uint16_t>(bpp * 8);
    out.stride = w * bpp;
    out.bytes.resize(size_t(out.stride) * h);
    for (int32_t y = 0; y < h; ++y) {
      for (int32_t x = 0; x < w; ++x) {
        uint8_t* p = &out.bytes[size_t(y) * out.stride + size_t(x) * bpp];
        const uint8_t* s = &picture.rgb[(size_t(y) * w + x) * 3];
        if (layout == "AYUV") {
          const Yuv c = yuv(x, y);
          p[0] = alpha(x, y), p[1] = c.y, p[2] = c.u, p[3] = c.v;
        } else {
          p[0] = s[2], p[1] = s[1], p[2] = s[0];
          if (bpp == 4) p[3] = alpha(x, y);
        }
      }
    }
  } else if (layout == "NV12" || layout == "NV16" || layout == "NV24") {
    const int32_t xs = layout == "NV24" ? 1 : 2, ys = layout == "NV12" ? 2 : 1;
    out.compression = MakeFourCC('N', 'V', layout[2], layout[3]);
    out.bitCount = layout == "NV12" ? 12 : layout == "NV16" ? 16 : 24;
    out.stride = w;
    out.chromaOffset = size_t(w) * h;
    const int32_t chromaStride = 2 * w / xs;
    out.bytes.resize(out.chromaOffset + size_t(chromaStride) * (h / ys));
    for (int32_t y = 0; y < h; ++y) {
      for (int32_t x = 0; x < w; ++x) out.bytes[size_t(y) * w + x] = yuv(x, y).y;
    }
    for (int32_t y = 0; y < h / ys; ++y) {
      for (int32_t x = 0; x < w / xs; ++x) {
        const Yuv c = yuv(x * xs, y * ys);
        uint8_t* p = &out.bytes[out.chromaOffset + size_t(y) * chromaStride + size_t(x) * 2];
        p[0] = c.u, p[1] = c.v;
      }
    }
  } else {
    throw std::runtime_error("unknown layout " + layout);
  }
  return out;
}

}  // namespace vantaro::bench
