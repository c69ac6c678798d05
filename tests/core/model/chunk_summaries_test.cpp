#include "core/model/chunk_summaries.h"

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

using Map = SharedMap<std::string, int>;

Map mapOf(int records) {
    Map map;
    for (int i = 0; i < records; ++i)
        map.set("k" + std::to_string(i), i);
    return map;
}

// Each chunk's records, summed: what a serial pass over the chunks gives.
std::vector<long> expectedSums(const Map& map) {
    std::vector<long> sums;
    for (std::size_t c = 0; c < Map::chunkCount(); ++c) {
        const auto chunk = map.chunk(c);
        if (!chunk || chunk->empty())
            continue;
        long sum = 0;
        for (const auto& [key, value] : *chunk)
            sum += *value;
        sums.push_back(sum);
    }
    return sums;
}

struct Counting {
    std::atomic<int> calls = 0;
    std::mutex mutex;
    std::set<std::thread::id> threads;

    long operator()(const Map::ChunkTable& chunk) {
        ++calls;
        {
            std::lock_guard lock(mutex);
            threads.insert(std::this_thread::get_id());
        }
        long sum = 0;
        for (const auto& [key, value] : chunk)
            sum += *value;
        return sum;
    }
};

TEST(ChunkSummaries, AFirstVisitOfEveryChunkGivesEachChunkItsOwnSummaryInChunkOrder) {
    const Map map = mapOf(50'000);
    Counting counting;
    ChunkSummaries<Map, long> summaries(
        [&](const Map::ChunkTable& chunk) { return counting(chunk); });

    std::vector<long> visited;
    summaries.each(map, [&](long sum) { visited.push_back(sum); });
    EXPECT_EQ(visited, expectedSums(map));
    EXPECT_EQ(static_cast<std::size_t>(counting.calls), visited.size());
    EXPECT_LE(counting.threads.size(), 2u);

    // A copy with one record written: only its chunk is worked out again,
    // and on this thread alone.
    Map written = map;
    written.set("k17", 1'000'000);
    counting.calls = 0;
    counting.threads.clear();
    visited.clear();
    summaries.each(written, [&](long sum) { visited.push_back(sum); });
    EXPECT_EQ(visited, expectedSums(written));
    EXPECT_EQ(counting.calls, 1);
    EXPECT_EQ(counting.threads, std::set{std::this_thread::get_id()});
}

TEST(ChunkSummaries, AFailedSummaryIsNeitherVisitedNorRememberedAndTheNextVisitWorksItOut) {
    const Map map = mapOf(50'000);
    std::atomic<bool> failing = true;
    std::atomic<int> calls = 0;
    ChunkSummaries<Map, long> summaries([&](const Map::ChunkTable& chunk) {
        ++calls;
        long sum = 0;
        for (const auto& [key, value] : chunk) {
            if (failing && key == "k4242")
                throw std::runtime_error("no memory left");
            sum += *value;
        }
        return sum;
    });

    int visits = 0;
    EXPECT_THROW(summaries.each(map, [&](long) { ++visits; }), std::runtime_error);
    EXPECT_EQ(visits, 0);

    failing = false;
    std::vector<long> visited;
    summaries.each(map, [&](long sum) { visited.push_back(sum); });
    EXPECT_EQ(visited, expectedSums(map));
}

}  // namespace
}  // namespace copperwick
