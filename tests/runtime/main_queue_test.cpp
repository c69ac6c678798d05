#include "runtime/main_queue.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

TEST(BackgroundWork, DeliversResultsOnTheThreadThatRunsTheQueue) {
    auto queue = std::make_shared<PlainQueue>();
    BackgroundWork work(queue);
    const auto mainThread = std::this_thread::get_id();
    std::vector<int> delivered;
    std::thread::id workedOn;
    for (int i = 1; i <= 3; ++i) {
        work.run(
            [i, &workedOn] {
                workedOn = std::this_thread::get_id();
                return i * 10;
            },
            [&](WorkResult<int> result) {
                EXPECT_EQ(std::this_thread::get_id(), mainThread);
                delivered.push_back(result.value.value_or(-1));
            });
    }
    EXPECT_TRUE(delivered.empty()) << "nothing arrives before the main thread runs the queue";
    queue->runUntil([&] { return delivered.size() == 3; });
    std::sort(delivered.begin(), delivered.end());
    EXPECT_EQ(delivered, (std::vector<int>{10, 20, 30}));
    EXPECT_NE(workedOn, mainThread);
}

TEST(BackgroundWork, WordsWhatAJobThrew) {
    auto queue = std::make_shared<PlainQueue>();
    BackgroundWork work(queue);
    std::optional<WorkResult<int>> got;
    work.run([]() -> int { throw std::runtime_error("The file ended early."); },
             [&](WorkResult<int> result) { got = std::move(result); });
    queue->runUntil([&] { return got.has_value(); });
    EXPECT_FALSE(got->value);
    EXPECT_EQ(got->error, "The file ended early.");
}

TEST(BackgroundWork, DropsResultsWhoseOwnerWentAway) {
    // A card's analysis finishing after its screen closed was handed to an
    // object that no longer existed.
    auto queue = std::make_shared<PlainQueue>();
    std::atomic<bool> release = false;
    bool delivered = false;
    {
        BackgroundWork work(queue);
        work.run(
            [&] {
                while (!release)
                    std::this_thread::yield();
                return 1;
            },
            [&](WorkResult<int>) { delivered = true; });
        release = true;
        // The owner goes while its result waits in the queue.
    }
    EXPECT_EQ(queue->runPending(), 1u);
    EXPECT_FALSE(delivered);
}

}  // namespace
}  // namespace copperwick
