// Encode-then-decode of pictures made from the input. Choice bytes pick the
// variant, the size, the quality, the planar format, threads, kernels and
// how the samples are made (the payload's bytes as they come, noise seeded
// by them, or a checkerboard of a chosen period). Promises checked: a
// capacity of vantaro_frame_bound() always suffices; encoding is
// deterministic; the frame decodes whole, twice to the same picture; a
// capacity one byte short answers VANTARO_ERROR_BUFFER_TOO_SMALL without
// writing past it (the buffers are heap blocks of exactly their size).
#include <vector>

#include "fuzz_support.h"

using namespace vantaro::fuzz;

namespace {

struct Picture {
  std::vector<uint8_t> bytes;
  vantaro_picture picture{};
  Picture(vantaro_format format, int32_t width, int32_t height) {
    bytes.resize(vantaro_picture_size(format, width, height));
    FUZZ_CHECK(vantaro_picture_fill(&picture, format, width, height, bytes.data(), bytes.size()) == VANTARO_OK);
  }
};

void MakeSamples(std::vector<uint8_t>& out, uint8_t mode, const uint8_t* payload, size_t n, int32_t width) {
  uint32_t state = 0x9e3779b9u;
  for (size_t i = 0; i < n && i < 16; ++i) state = state * 31 + payload[i];
  for (size_t i = 0; i < out.size(); ++i) {
    switch (mode % 3) {
      case 0: out[i] = n != 0 ? payload[i % n] : 0; break;
      case 1:
        state ^= state << 13, state ^= state >> 17, state ^= state << 5;
        out[i] = static_cast<uint8_t>(state >> 24);
        break;
      default: {
        // Samples index rows of `width` loosely across planes: enough to
        // give every plane edges at the chosen period.
        const uint32_t shift = (mode >> 2) & 3;
        const size_t x = i % static_cast<size_t>(width), y = i / static_cast<size_t>(width);
        out[i] = ((x >> shift) ^ (y >> shift)) & 1 ? 255 : 0;
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Choices in(data, size);
  const uint32_t fourcc = kVariants[in.Byte() & 7];
  // Small pictures keep a run near a thousand inputs a second.
  const int32_t width = 1 + in.Byte() % 40, height = 1 + in.Byte() % 34, quality = 1 + in.Byte() % 99;
  const uint8_t flags = in.Byte(), mode = in.Byte();
  const vantaro_format format = PlaneSet(flags & 7);
  vantaro_options options = vantaro::test::WithThreads((flags & 0x88) == 0x88 ? 2 : 1);
  options.kernels = (flags & 16) != 0 ? VANTARO_KERNELS_SCALAR : VANTARO_KERNELS_AUTO;

  Picture source(format, width, height);
  MakeSamples(source.bytes, mode, in.Rest(), in.RestSize(), width);

  vantaro_encoder* encoder = nullptr;
  FUZZ_CHECK(vantaro_encoder_create(fourcc, width, height, quality, &options, &encoder) == VANTARO_OK);
  const size_t bound = vantaro_frame_bound(fourcc, width, height);
  FUZZ_CHECK(bound > 0);
  std::unique_ptr<uint8_t[]> first(new uint8_t[bound]), second(new uint8_t[bound]);
  size_t written = 0, again = 0;
  FUZZ_CHECK(vantaro_encode(encoder, &source.picture, first.get(), bound, &written) == VANTARO_OK);
  FUZZ_CHECK(written > 0 && written <= bound);
  FUZZ_CHECK(vantaro_encode(encoder, &source.picture, second.get(), bound, &again) == VANTARO_OK);
  FUZZ_CHECK(again == written && std::memcmp(first.get(), second.get(), written) == 0);
  if ((flags & 0x60) == 0) {
    const auto shortBuffer = Exact(first.get(), written - 1);
    size_t reported = 0;
    FUZZ_CHECK(vantaro_encode(encoder, &source.picture, shortBuffer.get(), written - 1, &reported) ==
               VANTARO_ERROR_BUFFER_TOO_SMALL);
    FUZZ_CHECK(reported == written);
  }
  vantaro_encoder_destroy(encoder);

  const auto frame = Exact(first.get(), written);  // in a block of exactly its length
  vantaro_decoder* decoder = nullptr;
  FUZZ_CHECK(vantaro_decoder_create(fourcc, width, height, &options, &decoder) == VANTARO_OK);
  Picture a(format, width, height), b(format, width, height);
  std::memset(b.bytes.data(), 0xa5, b.bytes.size());
  vantaro_decode_report report;
  FUZZ_CHECK(vantaro_decode(decoder, frame.get(), written, &a.picture, &report) == VANTARO_OK);
  FUZZ_CHECK(report.frame_bytes == written && report.damaged_slices == 0);
  FUZZ_CHECK(vantaro_decode(decoder, frame.get(), written, &b.picture, nullptr) == VANTARO_OK);
  FUZZ_CHECK(a.bytes == b.bytes);
  vantaro_decoder_destroy(decoder);
  return 0;
}
