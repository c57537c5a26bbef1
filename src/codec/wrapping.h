// 32-bit arithmetic that wraps as the hosts' own size and line arithmetic
// does, without the undefined overflow of signed operations. The doors'
// header sums (line sizes, frame sizes, |height|) go through these.
#pragma once

#include <cstdint>

namespace vantaro {

constexpr int32_t WrapMul(int64_t a, int64_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b)));
}
constexpr int32_t WrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
// |v|; the most negative value stays as it is.
constexpr int32_t WrapAbs(int32_t v) { return v < 0 ? WrapMul(v, -1) : v; }

}  // namespace vantaro
