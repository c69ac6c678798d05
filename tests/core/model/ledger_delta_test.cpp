#include "core/model/ledger_delta.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

TEST(LedgerDelta, LastWordOnAnIdWins) {
    LedgerDelta delta;
    delta.change(RecordKind::transaction, "A");
    delta.remove(RecordKind::transaction, "A");
    delta.remove(RecordKind::rule, "B");
    delta.change(RecordKind::rule, "B");
    EXPECT_EQ(delta.changed[RecordKind::transaction].count("A"), 0u);
    EXPECT_EQ(delta.deleted[RecordKind::transaction].count("A"), 1u);
    EXPECT_EQ(delta.changed[RecordKind::rule].count("B"), 1u);
    EXPECT_EQ(delta.deleted[RecordKind::rule].count("B"), 0u);
}

TEST(LedgerDelta, MergedDeltaCountsAsLater) {
    const auto id = Uuid::random();
    LedgerDelta first;
    first.change(RecordKind::merchant, id);
    first.sourceLines.push_back({id, 1, "one"});
    LedgerDelta second;
    second.remove(RecordKind::merchant, id);
    second.change(RecordKind::merchant, "OTHER");
    second.sourceLines.push_back({id, 2, "two"});
    second.deletedSourceBatches.push_back(id);
    first.merge(second);
    EXPECT_FALSE(first.changed[RecordKind::merchant].contains(id.text()));
    EXPECT_TRUE(first.deleted[RecordKind::merchant].contains(id.text()));
    EXPECT_TRUE(first.changed[RecordKind::merchant].contains("OTHER"));
    ASSERT_EQ(first.sourceLines.size(), 2u);
    EXPECT_EQ(first.sourceLines[1].text, "two");
    EXPECT_EQ(first.deletedSourceBatches.size(), 1u);
}

// A merge that takes the later delta's ids over instead of copying them must
// land where the copying one does, whatever the earlier delta already held.
TEST(LedgerDelta, MergingByMoveEqualsMergingByCopy) {
    const auto make = [](std::initializer_list<std::pair<bool, std::string>> words) {
        LedgerDelta delta;
        for (const auto& [changed, id] : words) {
            if (changed)
                delta.change(RecordKind::transaction, id);
            else
                delta.remove(RecordKind::transaction, id);
        }
        return delta;
    };
    const std::vector<LedgerDelta> earlier{LedgerDelta{}, make({{true, "A"}, {true, "B"}}),
                                           make({{false, "A"}, {true, "C"}})};
    const std::vector<LedgerDelta> later{LedgerDelta{}, make({{true, "A"}, {true, "D"}}),
                                         make({{false, "B"}, {false, "C"}}),
                                         make({{true, "C"}, {false, "A"}})};
    for (const auto& first : earlier) {
        for (const auto& second : later) {
            LedgerDelta copied = first;
            copied.merge(second);
            LedgerDelta moved = first;
            LedgerDelta taken = second;
            moved.merge(std::move(taken));
            EXPECT_EQ(moved.changed[RecordKind::transaction],
                      copied.changed[RecordKind::transaction]);
            EXPECT_EQ(moved.deleted[RecordKind::transaction],
                      copied.deleted[RecordKind::transaction]);
        }
    }
}

TEST(LedgerDelta, EmptySetsStillCountAsEmpty) {
    LedgerDelta delta;
    EXPECT_TRUE(delta.isEmpty());
    delta.changed[RecordKind::transaction];
    delta.deleted[RecordKind::rule];
    EXPECT_TRUE(delta.isEmpty());
    delta.change(RecordKind::settings, "settings");
    EXPECT_FALSE(delta.isEmpty());
    LedgerDelta lines;
    lines.deletedSourceBatches.push_back(Uuid::random());
    EXPECT_FALSE(lines.isEmpty());
}

}  // namespace
}  // namespace copperwick
