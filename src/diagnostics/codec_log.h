// The codec's log call. It does nothing: a host never sees a message. The
// call sites keep their labels and formats so that a build can route them.
#pragma once

namespace vantaro {

#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
inline void CodecLog(const char* /*label*/, const char* /*format*/, ...) {}

}  // namespace vantaro
