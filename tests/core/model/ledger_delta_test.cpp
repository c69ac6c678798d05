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
    EXPECT_FALSE(delta.changed[RecordKind::transaction].contains("A"));
    EXPECT_TRUE(delta.deleted[RecordKind::transaction].contains("A"));
    EXPECT_TRUE(delta.changed[RecordKind::rule].contains("B"));
    EXPECT_FALSE(delta.deleted[RecordKind::rule].contains("B"));
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

// The store writes rows in the order of their keys' texts, whether a key was
// named by its UUID or spelled out, and one record named both ways is one row.
TEST(RecordIDs, AUuidAndItsTextAreOneKeyInTheOrderOfTexts) {
    const auto low = *Uuid::parse("0A000000-0000-4000-8000-000000000000");
    const auto high = *Uuid::parse("F0000000-0000-4000-8000-000000000000");
    LedgerDelta delta;
    delta.change(RecordKind::profile, high);
    delta.change(RecordKind::profile, "bank-layout");
    delta.change(RecordKind::profile, low.text());
    delta.change(RecordKind::profile, low);
    delta.change(RecordKind::profile, "1-first");
    const auto& ids = delta.changed[RecordKind::profile];
    EXPECT_EQ(ids.texts(),
              (std::vector<std::string>{"0A000000-0000-4000-8000-000000000000", "1-first",
                                        "F0000000-0000-4000-8000-000000000000", "bank-layout"}));
    EXPECT_TRUE(ids.contains(RecordID(low.text())));
    EXPECT_EQ(ids.sorted().front().uuid(), low);
    EXPECT_EQ(RecordID("bank-layout").uuid(), std::nullopt);
    // Lower-case hex isn't how the store spells a UUID, so it stays a text of its own.
    EXPECT_FALSE(ids.contains("0a000000-0000-4000-8000-000000000000"));
}

}  // namespace
}  // namespace copperwick
