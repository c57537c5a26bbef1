#include "native/slice_pool.h"

#include <system_error>

namespace vantaro::native {

SlicePool::~SlicePool() { Stop(); }

bool SlicePool::Start(uint32_t threads) {
  try {
    workers_.reserve(threads > 0 ? threads - 1 : 0);
    for (uint32_t w = 1; w < threads; ++w) workers_.emplace_back(&SlicePool::WorkerLoop, this, w);
  } catch (const std::exception&) {  // std::system_error or std::bad_alloc
    Stop();
    return false;
  }
  return true;
}

void SlicePool::Stop() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  for (std::thread& t : workers_) t.join();
  workers_.clear();
}

void SlicePool::Drain(uint32_t worker) {
  for (uint32_t i = next_.fetch_add(1); i < count_; i = next_.fetch_add(1)) task_(context_, i, worker);
}

void SlicePool::WorkerLoop(uint32_t worker) {
  uint64_t seen = 0;
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(mutex_);
      wake_.wait(lock, [&] { return stopping_ || generation_ != seen; });
      if (stopping_) return;
      seen = generation_;
    }
    Drain(worker);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (--busy_ == 0) done_.notify_one();
    }
  }
}

void SlicePool::Run(Task task, void* context, uint32_t count) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    task_ = task;
    context_ = context;
    count_ = count;
    next_.store(0);
    busy_ = static_cast<uint32_t>(workers_.size());
    ++generation_;
  }
  wake_.notify_all();
  Drain(0);
  std::unique_lock<std::mutex> lock(mutex_);
  done_.wait(lock, [&] { return busy_ == 0; });
}

}  // namespace vantaro::native
