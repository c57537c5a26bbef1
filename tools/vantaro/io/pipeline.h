// Frames worked on side by side and written in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace vantaro::tool {

// Frames through `threads` workers, each with its own buffers (its slot):
// read(slot, i) fetches frame i (false after the last), work(slot, i)
// transforms it, write(slot, i) puts it out. Reads happen one at a time in
// order, writes one at a time in order, work side by side, so the output is
// the same at every thread count and at most `threads` frames are held. The
// first exception any step throws stops the rest and is rethrown here.
void run_pipeline(size_t threads, const std::function<bool(size_t, uint64_t)>& read,
                  const std::function<void(size_t, uint64_t)>& work,
                  const std::function<void(size_t, uint64_t)>& write);

}  // namespace vantaro::tool
