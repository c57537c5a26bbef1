// The frame pipeline: in-order writes whatever order the work finishes in,
// one slot per worker, and the first failure stopping everything.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "io/pipeline.h"

namespace vantaro::tool {
namespace {

TEST(Pipeline, WritesInReadOrderAtEveryThreadCount) {
    for (size_t threads : {1u, 2u, 3u, 8u}) {
        SCOPED_TRACE(threads);
        constexpr uint64_t kFrames = 60;
        std::vector<uint64_t> slots(threads), written;
        std::vector<int> busy(threads, 0);
        bool slot_shared = false;
        run_pipeline(
            threads,
            [&](size_t slot, uint64_t i) {
                if (i == kFrames) return false;
                if (busy[slot]++) slot_shared = true;
                slots[slot] = i;
                return true;
            },
            [&](size_t slot, uint64_t i) {
                // Uneven work, so later frames often finish first.
                for (uint64_t k = 0; k < (i * 7919) % 5; ++k) std::this_thread::yield();
                slots[slot] = slots[slot] * 3 + 1;
            },
            [&](size_t slot, uint64_t i) {
                --busy[slot];
                EXPECT_EQ(slots[slot], i * 3 + 1);
                written.push_back(i);
            });
        EXPECT_FALSE(slot_shared);
        ASSERT_EQ(written.size(), kFrames);
        for (uint64_t i = 0; i < kFrames; ++i) EXPECT_EQ(written[i], i);
    }
}

TEST(Pipeline, TheFirstFailureStopsTheRestAndComesBack) {
    const struct {
        const char* where;
        uint64_t at;
    } cases[] = {{"read", 5}, {"work", 9}, {"write", 0}, {"write", 13}};
    for (const auto& c : cases) {
        for (size_t threads : {1u, 4u}) {
            SCOPED_TRACE(std::string(c.where) + " " + std::to_string(c.at) + " threads " + std::to_string(threads));
            const std::string what = c.where;
            std::atomic<uint64_t> reads{0};
            std::vector<uint64_t> written;
            auto fail = [&](const char* step, uint64_t i) {
                if (what == step && i == c.at) throw std::runtime_error("stop");
            };
            try {
                run_pipeline(
                    threads,
                    [&](size_t, uint64_t i) {
                        fail("read", i);
                        ++reads;
                        return i < 1000;
                    },
                    [&](size_t, uint64_t i) { fail("work", i); },
                    [&](size_t, uint64_t i) {
                        fail("write", i);
                        written.push_back(i);
                    });
                ADD_FAILURE() << "no exception";
            } catch (const std::runtime_error& e) {
                EXPECT_STREQ(e.what(), "stop");
            }
            // Nothing at or past the failing frame is written, and reading
            // stops within a few frames of it.
            ASSERT_LE(written.size(), c.at);
            for (size_t i = 0; i < written.size(); ++i) EXPECT_EQ(written[i], i);
            EXPECT_LE(reads.load(), c.at + threads + 1);
        }
    }
}

}  // namespace
}  // namespace vantaro::tool
