#include "codec/allocation.h"

#include <atomic>
#include <new>

namespace vantaro {
namespace {

constexpr std::align_val_t kAlignment{16};
std::atomic<AllocationFailureHook> g_hook{nullptr};
std::atomic<int64_t> g_sequence{0};
std::atomic<int64_t> g_live{0};

}  // namespace

void* AllocateAligned(size_t bytes) {
  const AllocationFailureHook hook = g_hook.load(std::memory_order_acquire);
  if (hook != nullptr && hook(g_sequence.fetch_add(1) + 1, bytes)) return nullptr;
  void* block = ::operator new(bytes, kAlignment, std::nothrow);
  if (block != nullptr) g_live.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void FreeAligned(void* block) {
  if (block == nullptr) return;
  g_live.fetch_sub(1, std::memory_order_relaxed);
  ::operator delete(block, kAlignment);
}

void SetAllocationFailureHook(AllocationFailureHook hook) {
  g_sequence.store(0);
  g_hook.store(hook, std::memory_order_release);
}

int64_t LiveAllocations() { return g_live.load(std::memory_order_relaxed); }

}  // namespace vantaro
