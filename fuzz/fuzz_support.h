// What the fuzz targets and the seed writer share: a reader of choice bytes
// from the front of an input, the variants and layouts the targets pick
// from, and the one way a target reports a broken promise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "vantaro/vantaro.h"

namespace vantaro::fuzz {

// A broken promise: say which and abort, so libFuzzer keeps the input.
#define FUZZ_CHECK(cond)                                                       \
  do {                                                                         \
    if (!(cond)) {                                                             \
      std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      std::abort();                                                            \
    }                                                                          \
  } while (0)

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

constexpr uint32_t kVariants[8] = {VANTARO_FOURCC_VTQ0, VANTARO_FOURCC_VTQ1, VANTARO_FOURCC_VTQ2,
                                   VANTARO_FOURCC_VTQ3, VANTARO_FOURCC_VTQ4, VANTARO_FOURCC_VTQ5,
                                   VANTARO_FOURCC_VTQ7, VANTARO_FOURCC_VTQ9};
// VTQ1, VTQ3, VTQ5, VTQ7 and VTQ9 carry alpha.
constexpr bool VariantHasAlpha(uint32_t index) { return index % 2 == 1 || index == 6; }

constexpr vantaro_format kPlanarFormats[6] = {
    VANTARO_FORMAT_YUV420P, VANTARO_FORMAT_YUVA420P, VANTARO_FORMAT_YUV422P,
    VANTARO_FORMAT_YUVA422P, VANTARO_FORMAT_YUV444P, VANTARO_FORMAT_YUVA444P};

// The uncompressed layouts of the direct functions and the driver, as a
// bitmap header names them: compression FourCC (0 for RGB) and bit count.
struct HeaderLayout {
  uint32_t compression;
  uint16_t bitCount;
};
constexpr HeaderLayout kHeaderLayouts[12] = {
    {VTC_FOURCC('N', 'V', '1', '2'), 12}, {VTC_FOURCC('N', 'V', '1', '6'), 16},
    {VTC_FOURCC('N', 'V', '2', '4'), 24}, {VTC_FOURCC('Y', 'A', '2', '0'), 20},
    {VTC_FOURCC('Y', 'A', '2', '2'), 24}, {VTC_FOURCC('Y', 'A', '4', '4'), 32},
    {VTC_FOURCC('Y', 'U', 'Y', '2'), 16}, {VTC_FOURCC('U', 'Y', 'V', 'Y'), 16},
    {VTC_FOURCC('U', 'Y', 'V', 'A'), 24}, {VTC_FOURCC('A', 'Y', 'U', 'V'), 32},
    {0, 24},                              {0, 32}};

// Picture sizes as the decode targets draw them from one byte each: small,
// so that a run reaches millions of inputs, and covering partial
// macroblocks and odd heights.
constexpr int32_t NativeWidth(uint8_t b) { return 1 + b % 80; }
constexpr int32_t NativeHeight(uint8_t b) { return 1 + b % 80; }
// The direct functions and the driver take the width in whole pixels of
// the layout; most widths are macroblock multiples, some are not.
constexpr int32_t DirectWidth(uint8_t b) { return 16 * (1 + (b & 3)) + ((b >> 2) & 7); }
constexpr int32_t DirectHeight(uint8_t b) { return 1 + b % 80; }

// The decoder captures faulting frames to files: send them to a folder of
// the temporary directory rather than the working one. Once per process.
void CaptureFaultsAside(const char* folder);

uint32_t ReadU24(const uint8_t* p);
void WriteU24(uint8_t* p, uint32_t v);

// Rewrites a frame's second-field offset and slice lengths so that the
// extent they declare lies inside `size` bytes; lengths that already fit are
// kept, so real frames pass unchanged. False when `size` cannot hold the
// header of eight slices.
bool FitFrameHeader(uint8_t* frame, size_t size);

}  // namespace vantaro::fuzz
