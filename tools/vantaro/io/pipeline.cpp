#include "io/pipeline.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace vantaro::tool {

namespace {

struct PipelineState {
    std::mutex read_lock, write_lock;
    std::condition_variable turn;
    uint64_t next_read = 0, next_write = 0;
    bool ended = false;               // guarded by read_lock
    std::atomic<bool> failed{false};  // read under either lock
    std::exception_ptr error;

    void fail() {
        std::lock_guard<std::mutex> hold(write_lock);
        if (!failed) error = std::current_exception();
        failed = true;
        turn.notify_all();
    }
};

void pipeline_worker(PipelineState& st, size_t slot, const std::function<bool(size_t, uint64_t)>& read,
                     const std::function<void(size_t, uint64_t)>& work,
                     const std::function<void(size_t, uint64_t)>& write) {
    try {
        for (;;) {
            uint64_t index;
            {
                std::lock_guard<std::mutex> hold(st.read_lock);
                if (st.ended || st.failed) return;
                index = st.next_read;
                if (!read(slot, index)) {
                    st.ended = true;
                    return;
                }
                ++st.next_read;
            }
            work(slot, index);
            std::unique_lock<std::mutex> hold(st.write_lock);
            st.turn.wait(hold, [&] { return st.failed || st.next_write == index; });
            if (st.failed) return;
            write(slot, index);
            ++st.next_write;
            st.turn.notify_all();
        }
    } catch (...) {
        st.fail();
    }
}

}  // namespace

void run_pipeline(size_t threads, const std::function<bool(size_t, uint64_t)>& read,
                  const std::function<void(size_t, uint64_t)>& work,
                  const std::function<void(size_t, uint64_t)>& write) {
    PipelineState st;
    if (threads <= 1) {
        pipeline_worker(st, 0, read, work, write);
    } else {
        std::vector<std::thread> pool;
        for (size_t slot = 0; slot < threads; ++slot)
            pool.emplace_back([&, slot] { pipeline_worker(st, slot, read, work, write); });
        for (auto& t : pool) t.join();
    }
    if (st.error) std::rethrow_exception(st.error);
}

}  // namespace vantaro::tool
