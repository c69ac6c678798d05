#include "core/operations/upsert_profile.h"

#include <gtest/gtest.h>

namespace copperwick {
namespace {

ImportProfile layout(std::string id, std::string name) {
    return ImportProfile{.id = std::move(id),
                         .name = std::move(name),
                         .requiredHeaders = {"Date", "Memo", "Amount"},
                         .dateColumn = "Date",
                         .descriptionColumn = "Memo",
                         .amountColumn = "Amount"};
}

LedgerDelta profileChange(const std::string& id) {
    LedgerDelta delta;
    delta.change(RecordKind::profile, id);
    return delta;
}

TEST(UpsertProfile, NewLayoutIsAppendedAndNeverStoredAsBuiltIn) {
    Ledger ledger;
    ledger.profiles.push_back(layout("custom-aaaaaaaa", "Old"));
    ImportProfile added = layout("custom-bbbbbbbb", "New");
    added.isBuiltIn = true;

    const auto delta = upsertProfile(ledger, added);

    EXPECT_EQ(delta, profileChange("custom-bbbbbbbb"));
    ASSERT_EQ(ledger.profiles.size(), 2u);
    EXPECT_EQ(ledger.profiles[0].name, "Old");
    EXPECT_EQ(ledger.profiles[1].name, "New");
    EXPECT_FALSE(ledger.profiles[1].isBuiltIn);
}

TEST(UpsertProfile, SameIdIsReplacedInPlaceLeavingOthersShared) {
    Ledger before;
    before.profiles.push_back(layout("custom-aaaaaaaa", "First"));
    before.profiles.push_back(layout("custom-bbbbbbbb", "Second"));
    before.profiles.push_back(layout("custom-cccccccc", "Third"));
    Ledger after = before;

    const auto delta = upsertProfile(after, layout("custom-bbbbbbbb", "Renamed"));

    EXPECT_EQ(delta, profileChange("custom-bbbbbbbb"));
    ASSERT_EQ(after.profiles.size(), 3u);
    EXPECT_EQ(after.profiles[1].name, "Renamed");
    // The stored order decides recognition ties, so a replacement keeps its place.
    EXPECT_EQ(after.profiles.address(0), before.profiles.address(0));
    EXPECT_EQ(after.profiles.address(2), before.profiles.address(2));
    EXPECT_EQ(before.profiles[1].name, "Second");
}

TEST(UpsertProfile, IdsDifferingOnlyInCaseAreDifferentLayouts) {
    Ledger ledger;
    ledger.profiles.push_back(layout("custom-abcdef12", "Lower"));
    (void)upsertProfile(ledger, layout("custom-ABCDEF12", "Upper"));
    ASSERT_EQ(ledger.profiles.size(), 2u);
    EXPECT_EQ(ledger.profiles[0].name, "Lower");
}

}  // namespace
}  // namespace copperwick
