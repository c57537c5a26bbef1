// Pictures of any public format for the native API's tests: allocation with
// guard bytes, smooth or noisy content, plane views and comparisons.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "vantaro/vantaro.h"

namespace api_test {

constexpr uint8_t kGuard = 0xA5;

// Bytes a line holds and lines of plane p, as the header describes them.
struct Extent {
  int32_t bytes;
  int32_t lines;
};
inline Extent PlaneExtent(vantaro_format f, int32_t w, int32_t h, int p) {
  const int32_t even = (w + 1) & ~1, halfH = (h + 1) / 2;
  if (f <= VANTARO_FORMAT_YUVA444P) {
    const bool alpha = f % 2 == 0;
    const int32_t sx = f <= VANTARO_FORMAT_YUVA422P ? 1 : 0, sy = f <= VANTARO_FORMAT_YUVA420P ? 1 : 0;
    if (p == 0 || (p == 3 && alpha)) return {w, h};
    if (p == 3) return {0, 0};
    return {(w + sx) >> sx, (h + sy) >> sy};
  }
  struct Row {
    vantaro_format f;
    int32_t mainBytes, secondBytes, secondLines;  // second: planes[1], or planes[3] for UYVA
  };
  const Row rows[] = {
      {VANTARO_FORMAT_NV12, w, even, halfH},     {VANTARO_FORMAT_NV16, w, even, h},
      {VANTARO_FORMAT_NV24, w, 2 * w, h},        {VANTARO_FORMAT_YA20, 2 * w, even, halfH},
      {VANTARO_FORMAT_YA22, 2 * w, even, h},     {VANTARO_FORMAT_YA44, 2 * w, 2 * w, h},
      {VANTARO_FORMAT_YUY2, 2 * even, 0, 0},     {VANTARO_FORMAT_UYVY, 2 * even, 0, 0},
      {VANTARO_FORMAT_UYVA, 2 * even, w, h},     {VANTARO_FORMAT_AYUV, 4 * w, 0, 0},
      {VANTARO_FORMAT_RGB24, 3 * w, 0, 0},       {VANTARO_FORMAT_RGB32, 4 * w, 0, 0},
  };
  for (const Row& r : rows) {
    if (r.f != f) continue;
    if (p == 0) return {r.mainBytes, h};
    const int second = f == VANTARO_FORMAT_UYVA ? 3 : 1;
    return p == second ? Extent{r.secondBytes, r.secondLines} : Extent{0, 0};
  }
  return {0, 0};
}

// A picture in one buffer: planes as vantaro_picture_fill lays them out,
// surrounded by guard bytes.
struct Picture {
  std::vector<uint8_t> bytes;
  vantaro_picture pic{};
  static constexpr size_t kGuardBytes = 64;

  Picture(vantaro_format format, int32_t w, int32_t h) {
    const size_t size = vantaro_picture_size(format, w, h);
    bytes.assign(size + 2 * kGuardBytes, kGuard);
    vantaro_picture_fill(&pic, format, w, h, bytes.data() + kGuardBytes, size);
  }
  Extent Of(int p) const { return PlaneExtent(pic.format, pic.width, pic.height, p); }
  uint8_t& At(int p, int32_t x, int32_t y) const {
    return pic.planes[p][static_cast<ptrdiff_t>(y) * pic.strides[p] + x];
  }
  bool GuardsIntact() const {
    for (size_t i = 0; i < kGuardBytes; ++i) {
      if (bytes[i] != kGuard || bytes[bytes.size() - 1 - i] != kGuard) return false;
    }
    return true;
  }
};

// Smooth gradients per plane, or noise.
inline void Fill(Picture& p, bool noise = false, uint32_t seed = 7) {
  std::mt19937 rng(seed);
  for (int plane = 0; plane < 4; ++plane) {
    const Extent e = p.Of(plane);
    for (int32_t y = 0; y < e.lines; ++y) {
      for (int32_t x = 0; x < e.bytes; ++x) {
        p.At(plane, x, y) = noise ? static_cast<uint8_t>(rng())
                                  : static_cast<uint8_t>(60 + (x * 2 + y * 3 + plane * 40) % 130);
      }
    }
  }
}

// Ramps without a wrap up to 140 samples a side: resampling loses little.
inline void Ramp(Picture& p) {
  for (int plane = 0; plane < 4; ++plane) {
    const Extent e = p.Of(plane);
    for (int32_t y = 0; y < e.lines; ++y) {
      for (int32_t x = 0; x < e.bytes; ++x) p.At(plane, x, y) = static_cast<uint8_t>(30 + (x + y + 20 * plane) % 220);
    }
  }
}

// PSNR of plane `plane` over bytes x % step == phase of each line.
inline double Psnr(const Picture& a, const Picture& b, int plane, int32_t step = 1, int32_t phase = 0) {
  const Extent e = a.Of(plane);
  double err = 0, n = 0;
  for (int32_t y = 0; y < e.lines; ++y) {
    for (int32_t x = phase; x < e.bytes; x += step) {
      const double d = a.At(plane, x, y) - b.At(plane, x, y);
      err += d * d;
      n += 1;
    }
  }
  return err == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * n / err);
}

inline std::string Name(uint32_t fourcc) { return std::string(reinterpret_cast<const char*>(&fourcc), 4); }

// Encodes with a fresh encoder; the status, and the frame on success.
inline vantaro_status Encode(uint32_t fourcc, const vantaro_picture& p, int32_t quality,
                             std::vector<uint8_t>& frame, const vantaro_options* options = nullptr) {
  vantaro_encoder* e = nullptr;
  vantaro_status s = vantaro_encoder_create(fourcc, p.width, p.height, quality, options, &e);
  if (s != VANTARO_OK) return s;
  frame.assign(vantaro_frame_bound(fourcc, p.width, p.height), 0);
  size_t written = 0;
  s = vantaro_encode(e, &p, frame.data(), frame.size(), &written);
  frame.resize(written);
  vantaro_encoder_destroy(e);
  return s;
}

inline vantaro_status Decode(uint32_t fourcc, const std::vector<uint8_t>& frame, const vantaro_picture& p,
                             vantaro_decode_report* report = nullptr,
                             const vantaro_options* options = nullptr) {
  vantaro_decoder* d = nullptr;
  vantaro_status s = vantaro_decoder_create(fourcc, p.width, p.height, options, &d);
  if (s != VANTARO_OK) return s;
  s = vantaro_decode(d, frame.data(), frame.size(), &p, report);
  vantaro_decoder_destroy(d);
  return s;
}

}  // namespace api_test
