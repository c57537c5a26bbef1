// Deterministic synthetic pictures and small stream helpers for the suites.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "codec/codec_instance.h"

namespace vantaro::test {

// The one codec instance wrapper of the suites, for direct use of the
// internal drivers: format fields set by hand, released on destruction.
class TestInstance {
 public:
  explicit TestInstance(uint32_t fourcc = 0, uint32_t colorSpace = kCsInvalid, int32_t width = 0,
                        int32_t height = 0);
  ~TestInstance();
  TestInstance(const TestInstance&) = delete;
  TestInstance& operator=(const TestInstance&) = delete;
  CodecInstance* get() { return &value_; }
  const CodecInstance* get() const { return &value_; }
  CodecInstance* operator->() { return &value_; }

 private:
  CodecInstance value_;
};

// The suites' one FourCC helper: from four characters or a four-letter string.
constexpr uint32_t FourCC(char a, char b, char c, char d) {
  return static_cast<uint32_t>(static_cast<uint8_t>(a)) | (static_cast<uint32_t>(static_cast<uint8_t>(b)) << 8) |
         (static_cast<uint32_t>(static_cast<uint8_t>(c)) << 16) |
         (static_cast<uint32_t>(static_cast<uint8_t>(d)) << 24);
}
constexpr uint32_t FourCC(const char* s) { return FourCC(s[0], s[1], s[2], s[3]); }

// Bytes of a picture with smooth gradients, edges and a little noise, so
// that blocks carry DC, low and high frequencies; same seed, same bytes.
std::vector<uint8_t> PatternBytes(size_t count, uint32_t seed, int32_t lineBytes);

// A frame buffer of any layout: main plane (with the csUYVA alpha plane
// behind it) and, for the planar layouts, a second plane. Both carry slack
// after the picture for the planar walks, which read past their lines.
struct Frame {
  std::vector<uint8_t> main;
  std::vector<uint8_t> chroma;
  int32_t stride = 0;  // frame line distance of the main plane
};
Frame MakeFrame(uint32_t colorSpace, int32_t width, int32_t height, uint32_t seed,
                int32_t padding = 0);

uint64_t Fnv1a64(const uint8_t* data, size_t size);

// The golden tests' hash of one case and layout: the hash of every stream
// variant's hash (as little-endian bytes, VTQ0..VTQ9 in order); `each` gets
// the single hashes for a failure message.
constexpr char kGoldenVariants[] = {'0', '1', '2', '3', '4', '5', '7', '9'};
template <class HashOf>
uint64_t HashOverVariants(HashOf hashOf, std::string* each) {
  std::vector<uint8_t> bytes;
  for (const char variant : kGoldenVariants) {
    const uint64_t hash = hashOf(variant);
    for (int i = 0; i < 8; ++i) bytes.push_back(static_cast<uint8_t>(hash >> (8 * i)));
    *each += std::string(" VTQ") + variant + " " + std::to_string(hash);
  }
  return Fnv1a64(bytes.data(), bytes.size());
}

// Compresses a frame as the direct functions do: the size CompressFrame
// reports, or 0 when it fails.
int64_t CompressFrameSize(CodecInstance* instance, uint8_t* stream, size_t capacity,
                          const uint8_t* picture, const uint8_t* chroma, int32_t stride);

// Compresses a frame; returns the stream cut to the reported size minus 4.
std::vector<uint8_t> CompressFrameBytes(CodecInstance* instance, const Frame& frame);

// Reads the stream's bits, first transmitted bit first.
class BitPeek {
 public:
  BitPeek(const uint8_t* data, uint64_t bitPos) : data_(data), pos_(bitPos) {}
  uint32_t Bit() {
    const uint32_t b = (data_[pos_ >> 3] >> (pos_ & 7)) & 1u;
    ++pos_;
    return b;
  }
  // `n` bits in transmission order, first on the left, as a string of 0/1.
  std::string Bits(int n);
  uint64_t position() const { return pos_; }

 private:
  const uint8_t* data_;
  uint64_t pos_;
};

}  // namespace vantaro::test
