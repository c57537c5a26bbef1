// Worker threads for a handle's slices: started once at create, woken per
// frame to run numbered tasks side by side with the calling thread. Nothing
// is allocated per frame.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace vantaro::native {

class SlicePool {
 public:
  // Task `task` of a run, on worker `worker` (0 is the calling thread).
  using Task = void (*)(void* context, uint32_t task, uint32_t worker);

  SlicePool() = default;
  ~SlicePool();
  SlicePool(const SlicePool&) = delete;
  SlicePool& operator=(const SlicePool&) = delete;

  // Starts threads - 1 workers; false (none left running) if one cannot start.
  bool Start(uint32_t threads);
  // Threads that run tasks: the workers and the caller.
  uint32_t Threads() const { return static_cast<uint32_t>(workers_.size()) + 1; }
  // Runs tasks 0..count-1 and returns when every one has finished.
  void Run(Task task, void* context, uint32_t count);

 private:
  void Drain(uint32_t worker);
  void WorkerLoop(uint32_t worker);
  void Stop();

  std::vector<std::thread> workers_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable done_;
  Task task_ = nullptr;
  void* context_ = nullptr;
  uint32_t count_ = 0;
  std::atomic<uint32_t> next_{0};
  uint32_t busy_ = 0;         // workers still draining this run
  uint64_t generation_ = 0;   // runs started
  bool stopping_ = false;
};

}  // namespace vantaro::native
