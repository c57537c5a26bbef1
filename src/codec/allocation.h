// The codec's own heap blocks: 16-byte aligned, null on failure (never an
// exception), and a hook through which a test makes any allocation fail.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantaro {

void* AllocateAligned(size_t bytes);
void FreeAligned(void* block);  // null is allowed

// Called before every AllocateAligned with its 1-based sequence number since
// the hook was set; a true answer makes that allocation fail. Null removes
// the hook. For tests; not synchronised with allocations running elsewhere.
using AllocationFailureHook = bool (*)(int64_t sequence, size_t bytes);
void SetAllocationFailureHook(AllocationFailureHook hook);

// Blocks handed out and not yet freed.
int64_t LiveAllocations();

}  // namespace vantaro
