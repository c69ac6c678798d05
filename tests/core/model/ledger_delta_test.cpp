#include "core/model/ledger_delta.h"

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
