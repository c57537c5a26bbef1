// What the fuzz targets and the seed writer share: a reader of choice bytes
// from the front of an input, the variants and layouts the targets pick
// from, and the one way a target reports a broken promise.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/layout_facts.h"
#include "support/pictures.h"
#include "vantaro/vantaro.h"

namespace vantaro::fuzz {

// A broken promise: say which and abort, so libFuzzer keeps the input.
inline void Check(bool ok, const char* file, int line, const char* what) {
  if (!ok) std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what), std::abort();
}
#define FUZZ_CHECK(cond) ::vantaro::fuzz::Check(static_cast<bool>(cond), __FILE__, __LINE__, #cond)

// Choice bytes are taken from the front; the rest is payload. Past the end
// every choice reads 0, so short inputs still pick something.
class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }
  const uint8_t* Rest() const { return data_ + pos_; }
  size_t RestSize() const { return size_ - pos_; }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

// A heap block of exactly `size` bytes (one when empty) holding a copy, so
// that AddressSanitizer sees any read past them.
inline std::unique_ptr<uint8_t[]> Exact(const uint8_t* data, size_t size) {
  std::unique_ptr<uint8_t[]> block(new uint8_t[size == 0 ? 1 : size]);
  if (size != 0) std::memcpy(block.get(), data, size);
  return block;
}

inline constexpr const auto& kVariants = test::kVariantFourCCs;
// Choice index 0..5 to a plane set, YUV420P first.
constexpr vantaro_format PlaneSet(uint32_t index) { return static_cast<vantaro_format>(1 + index % 6); }

// Choice index 0..11 to the layouts of the direct functions and the driver:
// NV12, NV16, NV24, YA20, YA22, YA44, YUY2, UYVY, UYVA, AYUV, RGB24, RGB32.
constexpr uint32_t DirectLayout(uint32_t index) { return index % 12 < 6 ? 1 + index % 12 : 2 + index % 12; }
// A bitmap header naming layout `cs` as the doors read it.
inline BITMAPINFOHEADER LayoutHeader(uint32_t cs, int32_t width, int32_t height) {
  const char* name = LayoutOf(cs).name + 2;  // "csNV12" -> "NV12"
  return {sizeof(BITMAPINFOHEADER), width, height, 1, static_cast<uint16_t>(LayoutOf(cs).bitCount),
          cs >= kCsRGB24 ? 0 : test::FourCC(name), 0, 0, 0, 0, 0};
}
// Sizes for the direct functions and the driver, which take the width in
// whole pixels of the layout: mostly macroblock multiples, some not.
constexpr int32_t DirectWidth(uint8_t b) { return 16 * (1 + (b & 3)) + ((b >> 2) & 7); }
constexpr int32_t DirectHeight(uint8_t b) { return 1 + b % 80; }

// The decoder captures faulting frames to files: send them to a folder of
// the temporary directory rather than the working one. Once per process.
void CaptureFaultsAside(const char* folder);

// Rewrites a frame's second-field offset and slice lengths so that the
// extent they declare lies inside `size` bytes; lengths that already fit are
// kept, so real frames pass unchanged. False when `size` cannot hold the
// header of eight slices.
bool FitFrameHeader(uint8_t* frame, size_t size);

}  // namespace vantaro::fuzz
