// Whole-frame encode and decode speed on the 1920x1080 photographs, one
// benchmark per stream variant and a natural layout for it. Run with
// --benchmark_repetitions=5 --benchmark_report_aggregates_only=true and quote
// medians; VANTARO_SCALAR=1 measures the scalar kernels. Kernels/<family>/
// <level> times each kernel family on each level present.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <map>
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
  state.counters["bytes"] = static_cast<double>(size);
  state.counters["Mpixel/s"] = benchmark::Counter(double(rgb.width) * rgb.height / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

void Decode(benchmark::State& state, Case c, std::string photo) {
  const auto& rgb = Photo(photo);
  const LayoutPicture picture = vantaro::bench::ToLayout(rgb, c.layout);
  const BITMAPINFOHEADER header = HeaderFor(picture, rgb.width, rgb.height);
  const uint32_t fourcc = VTC_FOURCC(c.variant[0], c.variant[1], c.variant[2], c.variant[3]);
  void* encoder = VTC_CompressFieldBeginQuality(&header, fourcc, 96);
  std::vector<uint8_t> stream(size_t(rgb.width) * rgb.height * 12);
  const uint8_t* chroma = picture.chromaOffset ? picture.bytes.data() + picture.chromaOffset : nullptr;
  VTC_CompressFrameEx(encoder, stream.data(), picture.bytes.data(), chroma, picture.stride);
  VTC_CompressFieldEnd(encoder);

  void* decoder = VTC_DecompressFieldBegin(&header, fourcc);
  std::vector<uint8_t> out(picture.bytes.size());
  uint8_t* outChroma = picture.chromaOffset ? out.data() + picture.chromaOffset : nullptr;
  for (auto _ : state) {
    VTC_DecompressFrameEx(decoder, out.data(), outChroma, stream.data(), picture.stride);
    benchmark::DoNotOptimize(out.data());
  }
  VTC_DecompressFieldEnd(decoder);
  state.counters["Mpixel/s"] = benchmark::Counter(double(rgb.width) * rgb.height / 1e6,
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

const Case kCases[] = {
    {"VTQ0", "YUY2"}, {"VTQ1", "UYVA"}, {"VTQ2", "YUY2"}, {"VTQ2", "NV16"}, {"VTQ3", "UYVA"},
    {"VTQ4", "NV24"}, {"VTQ5", "AYUV"}, {"VTQ5", "RGB32"}, {"VTQ7", "UYVA"}, {"VTQ9", "AYUV"},
};

}  // namespace

int main(int argc, char** argv) {
  const char* scalar = std::getenv("VANTARO_SCALAR");
  if (scalar != nullptr && std::strcmp(scalar, "0") != 0) {
    vantaro::SetKernelOverride(vantaro::KernelOverride::kScalar);
  }
  for (const char* photo : {"forest-path", "fallen-leaf"}) {
    for (const Case& c : kCases) {
      const std::string suffix = std::string(c.variant) + "/" + c.layout + "/" + photo;
      benchmark::RegisterBenchmark(("Encode/" + suffix).c_str(), Encode, c, photo)
          ->Unit(benchmark::kMillisecond);
      benchmark::RegisterBenchmark(("Decode/" + suffix).c_str(), Decode, c, photo)
          ->Unit(benchmark::kMillisecond);
    }
  }
  vantaro::bench::RegisterKernelBenchmarks();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
