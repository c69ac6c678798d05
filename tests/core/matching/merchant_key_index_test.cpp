#include "core/matching/merchant_key_index.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "core/matching/merchant_keys.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using Transactions = SharedMap<Uuid, LedgerTransaction>;

std::set<Uuid> foundIDs(const Transactions& transactions, const std::vector<std::string>& keys) {
    std::set<Uuid> ids;
    for (const LedgerTransaction* transaction : MerchantKeyIndex::covered(transactions, keys)) {
        // The pointer must lead to the record this map holds now, not an older one.
        EXPECT_EQ(transactions.find(transaction->id), transaction);
        ids.insert(transaction->id);
    }
    return ids;
}

std::set<Uuid> expectedIDs(const Transactions& transactions, const std::vector<std::string>& keys) {
    std::set<Uuid> ids;
    for (const auto& transaction : transactions) {
        const auto key = MerchantKeys::of(transaction.rawDescription);
        if (std::any_of(keys.begin(), keys.end(), [&](const std::string& learned) {
                return MerchantKeys::isCoveredBy(key, learned);
            }))
            ids.insert(transaction.id);
    }
    return ids;
}

TEST(MerchantKeyIndexTest, FindsTheKeyAndLongerKeysButNotAnotherWord) {
    testing::LedgerBuilder builder;
    const auto card = builder.account("Card");
    const auto plain = builder.transaction(card, "SQ *BLUE BOTTLE #1234 OAKLAND CA", -450);
    const auto longer = builder.transaction(card, "BLUE BOTTLE COFFEE 0099", -520);
    builder.transaction(card, "BLUE BOTTLES", -610);
    builder.transaction(card, "BLUE", -100);
    const auto other = builder.transaction(card, "PAYPAL *SPOTIFY", -999);
    const auto& transactions = builder.ledger().transactions;

    EXPECT_EQ(foundIDs(transactions, {"BLUE BOTTLE"}), (std::set<Uuid>{plain, longer}));
    EXPECT_EQ(foundIDs(transactions, {"BLUE BOTTLE", "SPOTIFY"}),
              (std::set<Uuid>{plain, longer, other}));
    // Two keys covering one line find it once.
    EXPECT_EQ(MerchantKeyIndex::covered(transactions, {"BLUE BOTTLE", "BLUE BOTTLE COFFEE"}).size(),
              2u);
    EXPECT_TRUE(foundIDs(transactions, {}).empty());
    EXPECT_TRUE(foundIDs(transactions, {""}).empty());
    EXPECT_TRUE(foundIDs(Transactions(), {"BLUE BOTTLE"}).empty());
}

TEST(MerchantKeyIndexTest, FollowsEveryCopyThroughAdditionsEditsAndRemovals) {
    const std::vector<std::string> shops{"BLUE BOTTLE", "BLUE BOTTLES", "BLUE BOTTLE COFFEE",
                                         "HAPPY CRUMB", "HAPPY",        "PAYPAL *HAPPY CRUMB"};
    std::mt19937 random(42);
    const auto description = [&] {
        return fmt::format("POS {} #{}", shops[random() % shops.size()], random() % 10000);
    };
    testing::LedgerBuilder builder;
    const auto card = builder.account("Card");
    std::vector<Uuid> ids;
    for (int i = 0; i < 3000; ++i)
        ids.push_back(builder.transaction(card, description(), -100));

    const std::vector<std::string> keys{"BLUE BOTTLE", "HAPPY CRUMB"};
    Ledger older = builder.ledger();
    EXPECT_EQ(foundIDs(older.transactions, keys), expectedIDs(older.transactions, keys));

    // Each round changes a copy the way operations do, and asks both the copy
    // and the ledger it came from: neither may see the other's records.
    for (int round = 0; round < 20; ++round) {
        Ledger newer = older;
        for (int edit = 0; edit < 200; ++edit) {
            const Uuid& id = ids[random() % ids.size()];
            switch (random() % 3) {
                case 0:
                    newer.transactions.update(
                        id, [&](LedgerTransaction& t) { t.rawDescription = description(); });
                    break;
                case 1:
                    newer.transactions.erase(id);
                    break;
                default: {
                    const LedgerTransaction added{.id = Uuid::random(),
                                                  .accountID = card,
                                                  .date = testing::day(2026, 3, 2),
                                                  .amount = -100,
                                                  .rawDescription = description()};
                    newer.transactions.set(added.id, added);
                    ids.push_back(added.id);
                }
            }
            if (edit % 50 == 0) {  // between writes to one copy, too
                EXPECT_EQ(foundIDs(newer.transactions, keys),
                          expectedIDs(newer.transactions, keys));
            }
        }
        EXPECT_EQ(foundIDs(newer.transactions, keys), expectedIDs(newer.transactions, keys));
        EXPECT_EQ(foundIDs(older.transactions, keys), expectedIDs(older.transactions, keys));
        older = newer;
    }
}

}  // namespace
}  // namespace copperwick
