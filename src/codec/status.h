// The one error model inside the library: every codec path answers a Status
// that must be looked at; nothing on those paths throws.
#pragma once

#include <cstdint>

namespace vantaro {

enum class [[nodiscard]] Status : uint8_t {
  kOk,
  kDoesNotFit,      // the stream would not fit the caller's capacity; nothing past it written
  kNoSecondPlane,   // a planar layout was given no second plane
  kStreamFault,     // decoding would lead outside the stream, the picture or the block memory
  kOutOfMemory,
};

}  // namespace vantaro

// Returns the status of `expr` from the enclosing function unless it is kOk.
#define VANTARO_RETURN_IF_ERROR(expr)                          \
  do {                                                         \
    if (const ::vantaro::Status status_ = (expr);              \
        status_ != ::vantaro::Status::kOk) {                   \
      return status_;                                          \
    }                                                          \
  } while (0)
