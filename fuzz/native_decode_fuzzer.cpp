// The native decoder on any bytes: choice bytes pick the variant, the size,
// the planar format, the stride signs, threads and kernels; the rest is the
// frame, in a heap block of exactly its length. Every plane is its own heap
// block of exactly its size, so AddressSanitizer sees any stray read or
// write. A frame that decodes (whole or damaged) must decode to the same
// picture a second time over a picture filled differently: every sample is
// written and nothing depends on what the picture held.
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz_support.h"

using namespace vantaro::fuzz;

namespace {

struct Planes {
  std::vector<std::unique_ptr<uint8_t[]>> blocks;
  vantaro_picture picture{};

  Planes(vantaro_format format, int32_t width, int32_t height, bool bottomUp) {
    picture.format = format;
    picture.width = width;
    picture.height = height;
    const bool alpha = format == VANTARO_FORMAT_YUVA420P || format == VANTARO_FORMAT_YUVA422P ||
                       format == VANTARO_FORMAT_YUVA444P;
    const bool halfWidth = format <= VANTARO_FORMAT_YUVA422P;
    const bool halfHeight = format <= VANTARO_FORMAT_YUVA420P;
    for (int p = 0; p < (alpha ? 4 : 3); ++p) {
      const bool chroma = p == 1 || p == 2;
      const int32_t w = chroma && halfWidth ? (width + 1) / 2 : width;
      const int32_t h = chroma && halfHeight ? (height + 1) / 2 : height;
      blocks.emplace_back(new uint8_t[static_cast<size_t>(w) * h]);
      uint8_t* base = blocks.back().get();
      picture.planes[p] = bottomUp ? base + static_cast<size_t>(w) * (h - 1) : base;
      picture.strides[p] = bottomUp ? -w : w;
      sizes.push_back(static_cast<size_t>(w) * h);
    }
  }
  void Fill(uint8_t value) {
    for (size_t p = 0; p < blocks.size(); ++p) std::memset(blocks[p].get(), value, sizes[p]);
  }
  bool SameAs(const Planes& other) const {
    for (size_t p = 0; p < blocks.size(); ++p) {
      if (std::memcmp(blocks[p].get(), other.blocks[p].get(), sizes[p]) != 0) return false;
    }
    return true;
  }
  std::vector<size_t> sizes;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Choices in(data, size);
  const uint32_t fourcc = kVariants[in.Byte() & 7];
  const int32_t width = NativeWidth(in.Byte());
  const int32_t height = NativeHeight(in.Byte());
  const uint8_t flags = in.Byte();
  const vantaro_format format = kPlanarFormats[(flags & 7) % 6];
  const bool bottomUp = (flags & 8) != 0;
  vantaro_options options;
  vantaro_options_default(&options);
  options.threads = (flags & 16) != 0 ? 2 : 1;
  options.kernels = (flags & 32) != 0 ? VANTARO_KERNELS_SCALAR : VANTARO_KERNELS_AUTO;

  const size_t length = in.RestSize();
  std::unique_ptr<uint8_t[]> frame(new uint8_t[length == 0 ? 1 : length]);
  if (length != 0) std::memcpy(frame.get(), in.Rest(), length);

  vantaro_decoder* decoder = nullptr;
  FUZZ_CHECK(vantaro_decoder_create(fourcc, width, height, &options, &decoder) == VANTARO_OK);
  Planes first(format, width, height, bottomUp), second(format, width, height, bottomUp);
  first.Fill(0x00);
  second.Fill(0xff);
  vantaro_decode_report report;
  const vantaro_status a = vantaro_decode(decoder, frame.get(), length, &first.picture, &report);
  FUZZ_CHECK(a == VANTARO_OK || a == VANTARO_ERROR_DAMAGED || a == VANTARO_ERROR_TRUNCATED ||
             a == VANTARO_ERROR_BAD_HEADER);
  if (a == VANTARO_OK || a == VANTARO_ERROR_DAMAGED) {
    FUZZ_CHECK(report.frame_bytes <= length);
    FUZZ_CHECK((a == VANTARO_OK) == (report.damaged_slices == 0));
    const vantaro_status b = vantaro_decode(decoder, frame.get(), length, &second.picture, nullptr);
    FUZZ_CHECK(b == a);
    FUZZ_CHECK(first.SameAs(second));
  }
  vantaro_decoder_destroy(decoder);
  return 0;
}
