// One benchmark per kernel family and level (Kernels/<family>/<level>): the
// same inputs through every level the build and processor have, so a new
// vector level shows its gain family by family.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "codec/kernels.h"
#include "decoder/inverse_transform.h"
#include "decoder/store_kernels.h"
#include "encoder/encoder_kernels.h"
#include "kernel_bench.h"

namespace vantaro::bench {
namespace {

alignas(16) int16_t g_block[64];
alignas(16) uint8_t g_bytes[128];
alignas(16) float g_reciprocals[64];
alignas(16) uint16_t g_multipliers[64];

void Fill() {
  uint32_t state = 12345u;
  for (int i = 0; i < 64; ++i) {
    state = state * 1664525u + 1013904223u;
    g_block[i] = static_cast<int16_t>((state >> 20) % 511) - 255;
    g_reciprocals[i] = 1.0f / static_cast<float>(8 + i);
    g_multipliers[i] = static_cast<uint16_t>(16 + i);
  }
  for (int i = 0; i < 128; ++i) g_bytes[i] = static_cast<uint8_t>(i * 37);
}

void Forward(benchmark::State& state, const Kernels* k) {
  // The eight blocks of a 4:2:2 macroblock, one call as the encoder makes it.
  alignas(16) int16_t blocks[8][64];
  uint64_t nonZero[8];
  for (auto _ : state) {
    for (auto& block : blocks) std::memcpy(block, g_block, sizeof block);
    k->forward->forwardBlocks(blocks[0], 8, g_reciprocals, nonZero);
    benchmark::DoNotOptimize(blocks);
    benchmark::DoNotOptimize(nonZero);
  }
}

void Loaders(benchmark::State& state, const Kernels* k) {
  encoder::LineSamples line;
  for (auto _ : state) {
    k->loaders->yuy2(g_bytes, line);
    k->loaders->rgb32(g_bytes, line);
    k->loaders->chromaFull(g_bytes, line);
    benchmark::DoNotOptimize(&line);
  }
}

void Blocks(benchmark::State& state, const Kernels* k) {
  alignas(16) int16_t block[64];
  for (auto _ : state) {
    std::memcpy(block, g_block, sizeof block);
    k->blocks->inverseTransform(block, g_multipliers);
    benchmark::DoNotOptimize(block);
  }
}

// Two blocks a call, as the macroblock decoder transforms them.
void BlockPairs(benchmark::State& state, const Kernels* k) {
  alignas(16) int16_t blocks[2][64];
  for (auto _ : state) {
    std::memcpy(blocks[0], g_block, sizeof blocks[0]);
    std::memcpy(blocks[1], g_block, sizeof blocks[1]);
    k->blocks->inverseTransformPair(blocks[0], blocks[1], g_multipliers);
    benchmark::DoNotOptimize(blocks);
  }
}

void Stores(benchmark::State& state, const Kernels* k) {
  alignas(16) uint8_t out[64];
  for (auto _ : state) {
    k->stores->packLine(g_block, g_block + 8, out);
    k->stores->rawPairs(g_block, g_block + 16, out + 16);
    k->stores->interleave(g_bytes, g_bytes + 16, out + 32);
    benchmark::DoNotOptimize(out);
  }
}

}  // namespace

void RegisterKernelBenchmarks() {
  Fill();
  for (int level = 0; level < kKernelLevelCount; ++level) {
    const Kernels* k = KernelsAt(static_cast<KernelLevel>(level));
    if (k == nullptr) continue;
    const std::string suffix = std::string("/") + KernelLevelName(static_cast<KernelLevel>(level));
    benchmark::RegisterBenchmark(("Kernels/forward" + suffix).c_str(), Forward, k);
    benchmark::RegisterBenchmark(("Kernels/loaders" + suffix).c_str(), Loaders, k);
    benchmark::RegisterBenchmark(("Kernels/blocks" + suffix).c_str(), Blocks, k);
    benchmark::RegisterBenchmark(("Kernels/blockPairs" + suffix).c_str(), BlockPairs, k);
    benchmark::RegisterBenchmark(("Kernels/stores" + suffix).c_str(), Stores, k);
  }
}

}  // namespace vantaro::bench
