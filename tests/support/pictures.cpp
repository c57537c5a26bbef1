#include "support/pictures.h"

#include <cstdlib>

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

TestInstance::~TestInstance() { ReleaseInstance(&value_); }

std::vector<uint8_t> PatternBytes(size_t count, uint32_t seed, int32_t lineBytes) {
  std::vector<uint8_t> bytes(count);
  uint32_t state = seed * 2654435761u + 12345u;
  const size_t line = lineBytes > 0 ? static_cast<size_t>(lineBytes) : 64;
  for (size_t i = 0; i < count; ++i) {
    state = state * 1664525u + 1013904223u;
    const uint32_t x = static_cast<uint32_t>(i % line);
    const uint32_t y = static_cast<uint32_t>(i / line);
    uint32_t v = (x * 3 + y * 2 + seed * 17) & 255u;           // gradients
    if (((x / 24) + (y / 20)) % 3 == 0) v = 255 - v;           // edges
    v = (v + ((state >> 24) & 15u)) & 255u;                     // noise
    bytes[i] = static_cast<uint8_t>(v);
  }
  return bytes;
}

Frame MakeFrame(uint32_t colorSpace, int32_t width, int32_t height, uint32_t seed,
                int32_t padding) {
  Frame frame;
  const int32_t pixelBytes = LayoutOf(colorSpace).pixelBytes;
  frame.stride = width * (pixelBytes > 0 ? pixelBytes : 1) + padding;
  const size_t lines = static_cast<size_t>(height) + 40;
  size_t mainBytes = static_cast<size_t>(frame.stride) * lines;
  if (colorSpace == kCsUYVA) mainBytes *= 2;  // the alpha plane behind the lines
  // The planar walks step twice as far as they read: room for the overrun.
  if (IsPlanar(colorSpace)) mainBytes *= 2;
  frame.main = PatternBytes(mainBytes, seed, frame.stride);
  if (IsPlanar(colorSpace)) {
    frame.chroma = PatternBytes(static_cast<size_t>(frame.stride) * 4 * lines, seed + 101,
                                frame.stride);
  }
  return frame;
}

uint64_t Fnv1a64(const uint8_t* data, size_t size) {
  uint64_t h = 14695981039346656037ull;
  for (size_t i = 0; i < size; ++i) {
    h ^= data[i];
    h *= 1099511628211ull;
  }
  return h;
}

int64_t CompressFrameSize(CodecInstance* instance, uint8_t* stream, size_t capacity,
                          const uint8_t* picture, const uint8_t* chroma, int32_t stride) {
  int64_t size = 0;
  return CompressFrame(instance, stream, capacity, picture, chroma, stride, &size) == Status::kOk
             ? size
             : 0;
}

std::vector<uint8_t> CompressFrameBytes(CodecInstance* instance, const Frame& frame) {
  std::vector<uint8_t> stream(frame.main.size() * 4 + 4096);
  const int64_t size =
      CompressFrameSize(instance, stream.data(), stream.size(), frame.main.data(),
                        frame.chroma.empty() ? nullptr : frame.chroma.data(), frame.stride);
  stream.resize(static_cast<size_t>(size - 4));
  return stream;
}

std::string BitPeek::Bits(int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out.push_back(static_cast<char>('0' + Bit()));
  return out;
}

}  // namespace vantaro::test
