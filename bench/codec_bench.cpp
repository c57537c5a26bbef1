// Whole-frame encode and decode speed on the 1920x1080 photographs, one
// benchmark per stream variant and a natural layout for it, plus VTQ2
// through the native API from and to planar 4:2:2 (Native.../<photo>), also on
// two slice threads (.../threads:2). Counters:
// Mpixel/s, Mblock/s (8x8 transform blocks) and bits/pixel. Run with
// --benchmark_repetitions=5 --benchmark_report_aggregates_only=true and quote
// medians; VANTARO_KERNELS=scalar (sse2, avx2) measures one kernel level. Kernels/<family>/
// <level> times each kernel family on each level present.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench_pictures.h"
#include "kernel_bench.h"
#include "codec/kernels.h"
#include "vantaro/vantaro.h"

namespace {

using vantaro::bench::LayoutPicture;

const vantaro::bench::RgbPicture& Photo(const std::string& name) {
  static std::map<std::string, vantaro::bench::RgbPicture> cache;
  auto it = cache.find(name);
  if (it == cache.end()) {
    it = cache.emplace(name, vantaro::bench::LoadPng(std::string(VANTARO_MEDIA_DIR) + "/" + name +
                                                     "-1920x1080.png")).first;
  }
  return it->second;
}

BITMAPINFOHEADER HeaderFor(const LayoutPicture& p, int32_t width, int32_t height) {
  BITMAPINFOHEADER h{};
  h.biSize = sizeof h;
  h.biWidth = width;
  h.biHeight = height;
  h.biPlanes = 1;
  h.biBitCount = p.bitCount;
  h.biCompression = p.compression;
  return h;
}

struct Case {
  const char* variant;
  const char* layout;
};

// Transform blocks in one 16x16 macroblock: 4 luma, the variant's chroma, and
// 4 more where alpha is transform-coded (VTQ7, VTQ9).
double BlocksPerMacroblock(const char* variant) {
  switch (variant[3]) {
    case '0': case '1': return 6;
    case '2': case '3': return 8;
    case '4': case '5': case '7': return 12;
    default: return 16;
  }
}

void SetCounters(benchmark::State& state, const char* variant, int32_t width, int32_t height, int64_t bytes) {
  const double pixels = double(width) * height;
  state.counters["Mpixel/s"] = benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
  state.counters["Mblock/s"] = benchmark::Counter(pixels / 256.0 * BlocksPerMacroblock(variant) / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
  state.counters["bits/pixel"] = double(bytes) * 8.0 / pixels;
}

void Encode(benchmark::State& state, Case c, std::string photo) {
  const auto& rgb = Photo(photo);
  const LayoutPicture picture = vantaro::bench::ToLayout(rgb, c.layout);
  const BITMAPINFOHEADER header = HeaderFor(picture, rgb.width, rgb.height);
  void* encoder = VTC_CompressFieldBeginQuality(
      &header, VTC_FOURCC(c.variant[0], c.variant[1], c.variant[2], c.variant[3]), 96);
  std::vector<uint8_t> stream(size_t(rgb.width) * rgb.height * 12);
  const uint8_t* chroma = picture.chromaOffset ? picture.bytes.data() + picture.chromaOffset : nullptr;
  int64_t size = 0;
  for (auto _ : state) {
    size = VTC_CompressFrameEx(encoder, stream.data(), picture.bytes.data(), chroma, picture.stride);
    benchmark::DoNotOptimize(stream.data());
  }
  VTC_CompressFieldEnd(encoder);
  SetCounters(state, c.variant, rgb.width, rgb.height, size - 4);
}

void Decode(benchmark::State& state, Case c, std::string photo) {
  const auto& rgb = Photo(photo);
  const LayoutPicture picture = vantaro::bench::ToLayout(rgb, c.layout);
  const BITMAPINFOHEADER header = HeaderFor(picture, rgb.width, rgb.height);
  const uint32_t fourcc = VTC_FOURCC(c.variant[0], c.variant[1], c.variant[2], c.variant[3]);
  void* encoder = VTC_CompressFieldBeginQuality(&header, fourcc, 96);
  std::vector<uint8_t> stream(size_t(rgb.width) * rgb.height * 12);
  const uint8_t* chroma = picture.chromaOffset ? picture.bytes.data() + picture.chromaOffset : nullptr;
  const int64_t size = VTC_CompressFrameEx(encoder, stream.data(), picture.bytes.data(), chroma, picture.stride);
  VTC_CompressFieldEnd(encoder);

  void* decoder = VTC_DecompressFieldBegin(&header, fourcc);
  std::vector<uint8_t> out(picture.bytes.size());
  uint8_t* outChroma = picture.chromaOffset ? out.data() + picture.chromaOffset : nullptr;
  for (auto _ : state) {
    VTC_DecompressFrameEx(decoder, out.data(), outChroma, stream.data(), picture.stride);
    benchmark::DoNotOptimize(out.data());
  }
  VTC_DecompressFieldEnd(decoder);
  SetCounters(state, c.variant, rgb.width, rgb.height, size - 4);
}

// Planar 4:2:2 made from the UYVY conversion, so both doors see the same samples.
struct Planar422 {
  std::vector<uint8_t> bytes;
  vantaro_picture picture{};
};

Planar422 ToPlanar422(const vantaro::bench::RgbPicture& rgb) {
  const LayoutPicture uyvy = vantaro::bench::ToLayout(rgb, "UYVY");
  Planar422 p;
  const int32_t w = rgb.width, h = rgb.height;
  p.bytes.resize(vantaro_picture_size(VANTARO_FORMAT_YUV422P, w, h));
  if (vantaro_picture_fill(&p.picture, VANTARO_FORMAT_YUV422P, w, h, p.bytes.data(), p.bytes.size()) !=
      VANTARO_OK) {
    throw std::runtime_error("planar 4:2:2 picture");
  }
  for (int32_t y = 0; y < h; ++y) {
    const uint8_t* line = &uyvy.bytes[size_t(y) * uyvy.stride];
    for (int32_t x = 0; x + 1 < w; x += 2) {
      p.picture.planes[1][size_t(y) * p.picture.strides[1] + x / 2] = line[2 * x];
      p.picture.planes[0][size_t(y) * p.picture.strides[0] + x] = line[2 * x + 1];
      p.picture.planes[2][size_t(y) * p.picture.strides[2] + x / 2] = line[2 * x + 2];
      p.picture.planes[0][size_t(y) * p.picture.strides[0] + x + 1] = line[2 * x + 3];
    }
  }
  return p;
}

constexpr uint32_t kVtq2 = VTC_FOURCC('V', 'T', 'Q', '2');

vantaro_options WithThreads(int32_t threads) {
  vantaro_options options;
  vantaro_options_default(&options);
  options.threads = threads;
  return options;
}

void NativeEncode(benchmark::State& state, std::string photo, int32_t threads) {
  const auto& rgb = Photo(photo);
  const Planar422 source = ToPlanar422(rgb);
  const vantaro_options options = WithThreads(threads);
  vantaro_encoder* encoder = nullptr;
  if (vantaro_encoder_create(kVtq2, rgb.width, rgb.height, 96, &options, &encoder) != VANTARO_OK) {
    state.SkipWithError("encoder_create");
    return;
  }
  std::vector<uint8_t> stream(vantaro_frame_bound(kVtq2, rgb.width, rgb.height));
  size_t written = 0;
  for (auto _ : state) {
    if (vantaro_encode(encoder, &source.picture, stream.data(), stream.size(), &written) != VANTARO_OK) {
      state.SkipWithError("encode");
      break;
    }
    benchmark::DoNotOptimize(stream.data());
  }
  vantaro_encoder_destroy(encoder);
  SetCounters(state, "VTQ2", rgb.width, rgb.height, static_cast<int64_t>(written));
}

void NativeDecode(benchmark::State& state, std::string photo, int32_t threads) {
  const auto& rgb = Photo(photo);
  const Planar422 source = ToPlanar422(rgb);
  const vantaro_options options = WithThreads(threads);
  vantaro_encoder* encoder = nullptr;
  vantaro_decoder* decoder = nullptr;
  std::vector<uint8_t> stream(vantaro_frame_bound(kVtq2, rgb.width, rgb.height));
  size_t written = 0;
  if (vantaro_encoder_create(kVtq2, rgb.width, rgb.height, 96, nullptr, &encoder) != VANTARO_OK ||
      vantaro_encode(encoder, &source.picture, stream.data(), stream.size(), &written) != VANTARO_OK ||
      vantaro_decoder_create(kVtq2, rgb.width, rgb.height, &options, &decoder) != VANTARO_OK) {
    vantaro_encoder_destroy(encoder);
    state.SkipWithError("setup");
    return;
  }
  vantaro_encoder_destroy(encoder);
  Planar422 out = ToPlanar422(rgb);
  for (auto _ : state) {
    if (vantaro_decode(decoder, stream.data(), written, &out.picture, nullptr) != VANTARO_OK) {
      state.SkipWithError("decode");
      break;
    }
    benchmark::DoNotOptimize(out.bytes.data());
  }
  vantaro_decoder_destroy(decoder);
  SetCounters(state, "VTQ2", rgb.width, rgb.height, static_cast<int64_t>(written));
}

const Case kCases[] = {
    {"VTQ0", "YUY2"}, {"VTQ1", "UYVA"}, {"VTQ2", "YUY2"}, {"VTQ2", "UYVY"}, {"VTQ2", "NV16"}, {"VTQ3", "UYVA"},
    {"VTQ4", "NV24"}, {"VTQ5", "AYUV"}, {"VTQ5", "RGB32"}, {"VTQ7", "UYVA"}, {"VTQ9", "AYUV"},
};

}  // namespace

int main(int argc, char** argv) {
  vantaro::KernelOverride level;
  if (vantaro::KernelOverrideNamed(std::getenv("VANTARO_KERNELS"), &level)) {
    vantaro::SetKernelOverride(level);
  }
  for (const char* photo : {"forest-path", "fallen-leaf"}) {
    for (const Case& c : kCases) {
      const std::string suffix = std::string(c.variant) + "/" + c.layout + "/" + photo;
      benchmark::RegisterBenchmark(("Encode/" + suffix).c_str(), Encode, c, photo)
          ->Unit(benchmark::kMillisecond);
      benchmark::RegisterBenchmark(("Decode/" + suffix).c_str(), Decode, c, photo)
          ->Unit(benchmark::kMillisecond);
    }
    // The native door on one thread, then its slices on two (wall clock: the
    // second thread's work is not the caller's processor time).
    for (int32_t threads : {1, 2}) {
      const std::string native =
          std::string("VTQ2/YUV422P/") + photo + (threads > 1 ? "/threads:" + std::to_string(threads) : "");
      benchmark::RegisterBenchmark(("NativeEncode/" + native).c_str(), NativeEncode, photo, threads)
          ->Unit(benchmark::kMillisecond)->UseRealTime();
      benchmark::RegisterBenchmark(("NativeDecode/" + native).c_str(), NativeDecode, photo, threads)
          ->Unit(benchmark::kMillisecond)->UseRealTime();
    }
  }
  vantaro::bench::RegisterKernelBenchmarks();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
