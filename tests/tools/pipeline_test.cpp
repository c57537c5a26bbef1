// The frame pipeline: in-order writes whatever order the work finishes in,
// each frame kept in its worker's slot, and the first failure stopping all.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "io/pipeline.h"

namespace vantaro::tool {
namespace {

TEST(Pipeline, WritesInOrderAndStopsAtTheFirstFailure) {
    // {step that throws, frame it throws at}; "" runs all 60 frames.
    const std::pair<std::string, uint64_t> cases[] = {{"", 60}, {"read", 5}, {"work", 9}, {"write", 0}, {"write", 13}};
    for (const auto& [step, at] : cases) {
        for (size_t threads : {1u, 2u, 5u}) {
            SCOPED_TRACE(step + " " + std::to_string(at) + ", threads " + std::to_string(threads));
            std::vector<uint64_t> slots(threads), written;
            std::atomic<uint64_t> reads{0};
            auto fail = [&, step = step, at = at](const char* here, uint64_t i) {
                if (step == here && i == at) throw std::runtime_error("stop");
            };
            auto run = [&] {
                run_pipeline(
                    threads,
                    [&](size_t slot, uint64_t i) {
                        fail("read", i);
                        slots[slot] = i;
                        return ++reads, i < 60;
                    },
                    [&](size_t slot, uint64_t i) {
                        fail("work", i);
                        // Uneven work, so later frames often finish first.
                        for (uint64_t k = 0; k < (i * 7919) % 5; ++k) std::this_thread::yield();
                        slots[slot] = slots[slot] * 3 + 1;
                    },
                    [&](size_t slot, uint64_t i) {
                        fail("write", i);
                        EXPECT_EQ(slots[slot], i * 3 + 1);  // the slot still holds its own frame
                        written.push_back(i);
                    });
            };
            if (step.empty()) {
                run();
                ASSERT_EQ(written.size(), at);
            } else {
                // Nothing at or past the failing frame is written, and
                // reading stops within a batch of it.
                EXPECT_THROW(run(), std::runtime_error);
                ASSERT_LE(written.size(), at);
                EXPECT_LE(reads.load(), at + threads + 1);
            }
            for (size_t i = 0; i < written.size(); ++i) EXPECT_EQ(written[i], i);
        }
    }
}

}  // namespace
}  // namespace vantaro::tool
