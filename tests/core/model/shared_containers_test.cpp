#include "core/model/shared_containers.h"

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

TEST(SharedMap, IterationVisitsEveryRecordOnce) {
    SharedMap<std::string, int> map;
    for (int i = 0; i < 1000; ++i)
        map.set("k" + std::to_string(i), i);
    map.set("k7", 70);  // replacing doesn't add
    EXPECT_TRUE(map.erase("k8"));
    EXPECT_FALSE(map.erase("k8"));
    EXPECT_EQ(map.size(), 999u);

    std::set<std::string> seen;
    long sum = 0;
    for (auto it = map.begin(); it != map.end(); ++it) {
        EXPECT_TRUE(seen.insert(it.key()).second);
        sum += *it;
    }
    EXPECT_EQ(seen.size(), 999u);
    EXPECT_EQ(sum, 999 * 1000 / 2 - 8 + 63);
    EXPECT_EQ(
        std::distance(SharedMap<std::string, int>().begin(), SharedMap<std::string, int>().end()),
        0);
}

TEST(SharedMap, WritesToACopyStayInTheCopy) {
    SharedMap<std::string, std::string> a;
    for (int i = 0; i < 600; ++i)
        a.set(std::to_string(i), "v");
    const auto b = a;
    auto c = a;
    c.set("new", "x");
    c.update("3", [](std::string& v) { v = "changed"; });
    c.erase("4");
    EXPECT_EQ(a, b);
    EXPECT_EQ(*a.find("3"), "v");
    EXPECT_TRUE(a.contains("4"));
    EXPECT_FALSE(a.contains("new"));
    EXPECT_EQ(c.size(), 600u);
    EXPECT_FALSE(c.update("missing", [](std::string&) {}));

    // Only the written records are new; the rest are shared.
    std::size_t shared = 0;
    for (int i = 0; i < 600; ++i) {
        const auto key = std::to_string(i);
        if (c.find(key) == a.find(key))
            ++shared;
    }
    EXPECT_EQ(shared, 598u);
}

// The builder must give what a setShared per record, in the same order, gives:
// the later of two records under one key wins, whatever chunk it lands in.
TEST(SharedMapBuilder, BuildsWhatSettingEachRecordInOrderBuilds) {
    using Map = SharedMap<std::string, int>;
    std::vector<std::pair<std::string, std::shared_ptr<const int>>> records;
    Map expected;
    for (int i = 0; i < 3000; ++i) {
        // Every third key comes round again, far from its first time.
        const std::string key = "k" + std::to_string(i % 3 == 0 ? i / 3 : i);
        auto value = std::make_shared<const int>(i);
        records.emplace_back(key, value);
        expected.setShared(key, value);
    }

    for (const bool twoThreads : {false, true}) {
        Map::Builder builder(records);
        if (twoThreads) {
            std::thread other(
                [&] { builder.fill(Map::Builder::kChunks / 2, Map::Builder::kChunks); });
            builder.fill(0, Map::Builder::kChunks / 2);
            other.join();
        }
        const Map built = std::move(builder).finish();
        EXPECT_EQ(built.size(), expected.size());
        EXPECT_EQ(built, expected);
        // The records themselves are kept, not copies of them.
        for (auto it = expected.begin(); it != expected.end(); ++it)
            ASSERT_EQ(built.find(it.key()), &*it) << it.key();
    }

    EXPECT_TRUE(Map::Builder({}).finish().empty());
}

TEST(SharedMapBuilder, BuiltMapIsCopiedOnWriteLikeAnyOther) {
    using Map = SharedMap<int, std::string>;
    std::vector<std::pair<int, std::shared_ptr<const std::string>>> records;
    for (int i = 0; i < 1000; ++i)
        records.emplace_back(i, std::make_shared<const std::string>("v"));
    const Map built = Map::Builder(std::move(records)).finish();
    Map copy = built;
    copy.set(5, "changed");
    copy.erase(6);
    copy.set(5000, "new");
    EXPECT_EQ(*built.find(5), "v");
    EXPECT_TRUE(built.contains(6));
    EXPECT_EQ(built.size(), 1000u);
    EXPECT_EQ(copy.size(), 1000u);
    EXPECT_EQ(copy.find(7), built.find(7));
}

// Many records at once must land as a setShared each, in order, would land
// them: new keys added, held keys replaced, the later of two arrivals under
// one key standing, and a copy made before untouched.
TEST(SharedMap, SettingManyAtOnceIsSettingEachInTurn) {
    using Map = SharedMap<std::string, int>;
    Map held;
    for (int i = 0; i < 5000; i += 2)
        held.set("k" + std::to_string(i), -i);
    const Map before = held;

    std::vector<std::pair<std::string, std::shared_ptr<const int>>> arriving;
    Map expected = held;
    for (int i = 0; i < 9000; i += 3) {
        // Every fourth key arrives twice, the second time far later.
        const std::string key = "k" + std::to_string(i % 4 == 0 ? i / 2 : i);
        auto value = std::make_shared<const int>(i);
        arriving.emplace_back(key, value);
        expected.setShared(key, value);
    }
    held.setShared(std::move(arriving));

    EXPECT_EQ(held.size(), expected.size());
    EXPECT_EQ(held, expected);
    for (auto it = expected.begin(); it != expected.end(); ++it)
        ASSERT_EQ(held.find(it.key()), &*it) << it.key();
    EXPECT_EQ(before.size(), 2500u);
    EXPECT_EQ(*before.find("k6"), -6);

    // Lookups search each chunk in key order, so every chunk must keep it.
    for (std::size_t c = 0; c < Map::chunkCount(); ++c) {
        if (const auto chunk = held.chunk(c)) {
            ASSERT_TRUE(
                std::is_sorted(chunk->begin(), chunk->end(),
                               [](const auto& a, const auto& b) { return a.first < b.first; }))
                << c;
        }
    }
    EXPECT_FALSE(held.contains("k1"));
    EXPECT_FALSE(held.contains("k"));
    EXPECT_FALSE(held.contains("k99999"));
}

TEST(SharedVector, WritesToACopyStayInTheCopy) {
    SharedVector<std::string> a{"one", "two", "three"};
    auto b = a;
    b.push_back("four");
    b.set(0, "uno");
    b.insert(1, "half");
    EXPECT_EQ(b.eraseIf([](const std::string& s) { return s == "three"; }), 1u);
    EXPECT_EQ(a.toVector(), (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_EQ(b.toVector(), (std::vector<std::string>{"uno", "half", "two", "four"}));
    EXPECT_EQ(a.address(1), b.address(2));
    EXPECT_EQ(std::find(a.begin(), a.end(), "three") - a.begin(), 2);
    b.clear();
    EXPECT_TRUE(b.empty());
    EXPECT_EQ(a.size(), 3u);
}

}  // namespace
}  // namespace copperwick
