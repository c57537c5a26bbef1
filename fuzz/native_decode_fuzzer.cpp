// The native decoder on any bytes: choice bytes pick the variant, the size,
// the plane set, the stride signs, threads and kernels; the rest is the
// frame, in a heap block of exactly its length. Every plane is its own heap
// block of exactly its size, so AddressSanitizer sees any stray read or
// write. A frame that decodes (whole or damaged) must decode to the same
// picture a second time over a picture filled differently: every sample is
// written and nothing depends on what the picture held.
#include <vector>

#include "fuzz_support.h"

using namespace vantaro::fuzz;

namespace {

struct Planes {
  std::vector<std::unique_ptr<uint8_t[]>> blocks;
  std::vector<size_t> sizes;
  vantaro_picture picture{};

  Planes(vantaro_format format, int32_t width, int32_t height, bool bottomUp, uint8_t fill) {
    // Plane geometry as vantaro_picture_fill lays it out tightly.
    std::vector<uint8_t> probe(vantaro_picture_size(format, width, height));
    FUZZ_CHECK(vantaro_picture_fill(&picture, format, width, height, probe.data(), probe.size()) == VANTARO_OK);
    for (int p = 0; p < 4 && picture.planes[p] != nullptr; ++p) {
      const int32_t lines = p == 0 || p == 3 || format >= VANTARO_FORMAT_YUV422P ? height : (height + 1) / 2;
      const int32_t stride = picture.strides[p];
      sizes.push_back(static_cast<size_t>(stride) * lines);
      blocks.emplace_back(new uint8_t[sizes.back()]);
      std::memset(blocks.back().get(), fill, sizes.back());
      picture.planes[p] = blocks.back().get() + (bottomUp ? sizes.back() - stride : 0);
      picture.strides[p] = bottomUp ? -stride : stride;
    }
  }
  bool SameAs(const Planes& other) const {
    for (size_t p = 0; p < blocks.size(); ++p) {
      if (std::memcmp(blocks[p].get(), other.blocks[p].get(), sizes[p]) != 0) return false;
    }
    return true;
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Choices in(data, size);
  const uint32_t fourcc = kVariants[in.Byte() & 7];
  const int32_t width = 1 + in.Byte() % 80, height = 1 + in.Byte() % 80;
  const uint8_t flags = in.Byte();
  const vantaro_format format = PlaneSet(flags & 7);
  const bool bottomUp = (flags & 8) != 0;
  vantaro_options options = vantaro::test::WithThreads((flags & 16) != 0 ? 2 : 1);
  options.kernels = (flags & 32) != 0 ? VANTARO_KERNELS_SCALAR : VANTARO_KERNELS_AUTO;
  const size_t length = in.RestSize();
  const auto frame = Exact(in.Rest(), length);

  vantaro_decoder* decoder = nullptr;
  FUZZ_CHECK(vantaro_decoder_create(fourcc, width, height, &options, &decoder) == VANTARO_OK);
  Planes first(format, width, height, bottomUp, 0x00), second(format, width, height, bottomUp, 0xff);
  vantaro_decode_report report;
  const vantaro_status a = vantaro_decode(decoder, frame.get(), length, &first.picture, &report);
  FUZZ_CHECK(a == VANTARO_OK || a == VANTARO_ERROR_DAMAGED || a == VANTARO_ERROR_TRUNCATED ||
             a == VANTARO_ERROR_BAD_HEADER);
  if (a == VANTARO_OK || a == VANTARO_ERROR_DAMAGED) {
    FUZZ_CHECK(report.frame_bytes <= length);
    FUZZ_CHECK((a == VANTARO_OK) == (report.damaged_slices == 0));
    FUZZ_CHECK(vantaro_decode(decoder, frame.get(), length, &second.picture, nullptr) == a);
    FUZZ_CHECK(first.SameAs(second));
  }
  vantaro_decoder_destroy(decoder);
  return 0;
}
