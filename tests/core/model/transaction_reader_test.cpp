#include "core/model/transaction_reader.h"

#include <random>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "core/model/record_json.h"

namespace copperwick {
namespace {

// The reader every other record goes through, for comparison.
std::optional<LedgerTransaction> readThroughTree(const std::string& text) {
    boost::json::error_code ec;
    const auto value = boost::json::parse(text, ec);
    if (ec)
        return std::nullopt;
    return record_json::fromJSON<LedgerTransaction>(value).value;
}

std::string awkwardText(std::mt19937& random) {
    static const std::vector<std::string> pieces{"ACME", " ",    "\"",           "\\", "/",
                                                 "é",    "ß",    "\xE2\x88\x92", "\n", "\t",
                                                 "\x01", "#552", "日本",         "😀",  "'"};
    std::string text;
    const auto count = random() % 12;
    for (unsigned i = 0; i < count; ++i)
        text += pieces[random() % pieces.size()];
    return text;
}

LedgerTransaction randomFlatTransaction(std::mt19937& random) {
    const auto maybe = [&] { return random() % 2 == 0; };
    LedgerTransaction t{
        .id = Uuid::random(),
        .accountID = Uuid::random(),
        .sourceLine = static_cast<int64_t>(random() % 100000),
        .date = LocalDate::fromDayNumber(static_cast<int64_t>(random() % 60000) - 20000),
        .amount = static_cast<int64_t>(random()) - static_cast<int64_t>(random()),
        .currency = random() % 5 == 0 ? "EUR" : "USD",
        .rawDescription = awkwardText(random),
        .status = maybe() ? TransactionStatus::posted : TransactionStatus::pending,
        .fingerprint = awkwardText(random),
        .occurrence = static_cast<int64_t>(random() % 4) + 1};
    t.kind = allCases<TransactionKind>()[random() % 4];
    t.method = allCases<MatchMethod>()[random() % 10];
    t.review = allCases<ReviewState>()[random() % 4];
    t.evidence = awkwardText(random);
    t.note = awkwardText(random);
    t.voided = maybe();
    if (maybe())
        t.batchID = Uuid::random();
    if (maybe())
        t.postedDate = t.date.addingDays(2);
    if (maybe())
        t.bankMerchant = awkwardText(random);
    if (maybe())
        t.bankCategory = awkwardText(random);
    if (maybe())
        t.checkNumber = std::to_string(random() % 9999);
    if (maybe())
        t.categoryID = Uuid::random();
    if (maybe())
        t.merchantID = Uuid::random();
    if (maybe())
        t.transferPairID = Uuid::random();
    if (maybe())
        t.supersededBy = Uuid::random();
    if (maybe())
        t.cardIdentifier = "4421";
    if (maybe())
        t.entrySource = TransactionEntrySource::manual;
    if (maybe())
        t.externalID = awkwardText(random);
    return t;
}

TEST(TransactionReader, ReadsEveryFlatRecordAsTheTreeReaderDoes) {
    std::mt19937 random(7);
    for (int i = 0; i < 500; ++i) {
        const auto t = randomFlatTransaction(random);
        const auto text = record_json::encode(t);
        const auto flat = detail::readFlatTransaction(text);
        ASSERT_TRUE(flat) << text;
        EXPECT_EQ(*flat, t) << text;
    }
}

TEST(TransactionReader, LeavesNestedRecordsToTheTreeReader) {
    std::mt19937 random(11);
    auto t = randomFlatTransaction(random);
    t.spendingAssignment = SpendingAssignment::shared();
    const auto text = record_json::encode(t);
    EXPECT_FALSE(detail::readFlatTransaction(text));
    const auto decoded = record_json::decode<LedgerTransaction>(text);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded.value, t);
}

// Whatever damage a row has, the quick reader never accepts what the tree
// reader refuses, nor reads it differently.
TEST(TransactionReader, NeverDisagreesWithTheTreeReaderOnDamagedRows) {
    std::mt19937 random(13);
    const std::string alphabet = "{}[]\":,0123456789-.eE tfnul\\abcXYZ";
    int accepted = 0;
    for (int i = 0; i < 4000; ++i) {
        std::string text = record_json::encode(randomFlatTransaction(random));
        const auto edits = 1 + random() % 3;
        for (unsigned e = 0; e < edits; ++e) {
            const auto at = random() % text.size();
            switch (random() % 3) {
                case 0:
                    text[at] = alphabet[random() % alphabet.size()];
                    break;
                case 1:
                    text.erase(at, 1 + random() % 8);
                    break;
                default:
                    text.insert(at, 1, alphabet[random() % alphabet.size()]);
                    break;
            }
            if (text.empty())
                text = "{}";
        }
        const auto flat = detail::readFlatTransaction(text);
        if (!flat)
            continue;
        ++accepted;
        const auto tree = readThroughTree(text);
        ASSERT_TRUE(tree) << "only the quick reader accepted: " << text;
        ASSERT_EQ(*flat, *tree) << text;
    }
    EXPECT_GT(accepted, 0) << "no damaged row survived; the comparison proved nothing";
}

}  // namespace
}  // namespace copperwick
