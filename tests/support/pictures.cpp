#include "support/pictures.h"

#include <cmath>
#include <cstdlib>
#include <random>

#include "codec/field_flow.h"
#include "codec/layout_facts.h"
#include "codec/quantiser.h"

namespace vantaro::test {

TestInstance::TestInstance(uint32_t fourcc, uint32_t colorSpace, int32_t width, int32_t height) {
  if (InitInstance(&value_) != Status::kOk) std::abort();
  SetStreamFormat(&value_, fourcc);
  value_.colorSpace = colorSpace;
  value_.width = width;
  value_.height = height;
}

std::vector<uint8_t> PatternBytes(size_t count, uint32_t seed, int32_t lineBytes) {
  std::vector<uint8_t> bytes(count);
  uint32_t state = seed * 2654435761u + 12345u;
  const size_t line = lineBytes > 0 ? static_cast<size_t>(lineBytes) : 64;
  for (size_t i = 0; i < count; ++i) {
    state = state * 1664525u + 1013904223u;
    const uint32_t x = static_cast<uint32_t>(i % line);
    const uint32_t y = static_cast<uint32_t>(i / line);
    uint32_t v = (x * 3 + y * 2 + seed * 17) & 255u;  // gradients
    if (((x / 24) + (y / 20)) % 3 == 0) v = 255 - v;  // edges
    bytes[i] = static_cast<uint8_t>(v + ((state >> 24) & 15u));  // noise
  }
  return bytes;
}

Frame MakeFrame(uint32_t colorSpace, int32_t width, int32_t height, uint32_t seed) {
  const int32_t stride = width * LayoutOf(colorSpace).pixelBytes;
  return {PatternBytes(static_cast<size_t>(stride) * (height + 40), seed, stride), stride};
}

uint64_t Fnv1a64(const uint8_t* data, size_t size) {
  uint64_t h = 14695981039346656037ull;
  for (size_t i = 0; i < size; ++i) h = (h ^ data[i]) * 1099511628211ull;
  return h;
}

int64_t CompressFrameSize(CodecInstance* instance, uint8_t* stream, size_t capacity,
                          const uint8_t* picture, const uint8_t* chroma, int32_t stride) {
  int64_t size = 0;
  return CompressFrame(instance, stream, capacity, picture, chroma, stride, &size) == Status::kOk ? size : 0;
}

std::vector<uint8_t> CompressFrameBytes(CodecInstance* instance, const Frame& frame) {
  std::vector<uint8_t> stream(frame.main.size() * 4 + 4096);
  const int64_t size =
      CompressFrameSize(instance, stream.data(), stream.size(), frame.main.data(), nullptr, frame.stride);
  stream.resize(static_cast<size_t>(size - 4));
  return stream;
}

Picture::Picture(vantaro_format format, int32_t w, int32_t h) {
  const size_t size = vantaro_picture_size(format, w, h);
  bytes.assign(size + 2 * kGuardBytes, kGuard);
  vantaro_picture_fill(&pic, format, w, h, bytes.data() + kGuardBytes, size);
}

// Planes lie back to back: each ends where the next one starts.
Extent Picture::Of(int p) const {
  if (pic.planes[p] == nullptr) return {0, 0};
  const uint8_t* end = bytes.data() + bytes.size() - kGuardBytes;
  for (const uint8_t* q : pic.planes) end = q > pic.planes[p] && q < end ? q : end;
  return {pic.strides[p], static_cast<int32_t>((end - pic.planes[p]) / pic.strides[p])};
}

bool Picture::GuardsIntact() const {
  for (size_t i = 0; i < kGuardBytes; ++i) {
    if (bytes[i] != kGuard || bytes[bytes.size() - 1 - i] != kGuard) return false;
  }
  return true;
}

void Fill(Picture& p, Content content, uint32_t seed) {
  std::mt19937 rng(seed);
  for (int plane = 0; plane < 4; ++plane) {
    const Extent e = p.Of(plane);
    for (int32_t y = 0; y < e.lines; ++y) {
      for (int32_t x = 0; x < e.bytes; ++x) {
        p.At(plane, x, y) = static_cast<uint8_t>(content == Content::kNoise  ? rng()
                                                 : content == Content::kRamp ? 30 + (x + y + 20 * plane) % 220
                                                                             : 60 + (x * 2 + y * 3 + plane * 40) % 130);
      }
    }
  }
}

double Psnr(const Picture& a, const Picture& b, int plane, int32_t step, int32_t phase) {
  const Extent e = a.Of(plane);
  double err = 0, n = 0;
  for (int32_t y = 0; y < e.lines; ++y) {
    for (int32_t x = phase; x < e.bytes; x += step, n += 1) {
      const double d = a.At(plane, x, y) - b.At(plane, x, y);
      err += d * d;
    }
  }
  return err == 0 ? 99.0 : 10 * std::log10(255.0 * 255.0 * n / err);
}

vantaro_status Encode(uint32_t fourcc, const vantaro_picture& p, int32_t quality, std::vector<uint8_t>& frame,
                      const vantaro_options* options) {
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

vantaro_status Decode(uint32_t fourcc, const std::vector<uint8_t>& frame, const vantaro_picture& p,
                      vantaro_decode_report* report, const vantaro_options* options) {
  vantaro_decoder* d = nullptr;
  vantaro_status s = vantaro_decoder_create(fourcc, p.width, p.height, options, &d);
  if (s != VANTARO_OK) return s;
  s = vantaro_decode(d, frame.data(), frame.size(), &p, report);
  vantaro_decoder_destroy(d);
  return s;
}

vantaro_options WithThreads(int32_t threads) {
  vantaro_options options;
  vantaro_options_default(&options);
  options.threads = threads;
  return options;
}

}  // namespace vantaro::test
