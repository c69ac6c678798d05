#pragma once

// Records full of what careless exports and people put in text fields, with
// every optional field set or not at random, for round-trip tests of the
// data file's encodings.

#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "core/model/ledger_transaction.h"

namespace copperwick::testing {

inline std::string awkwardText(std::mt19937& random) {
    static const std::vector<std::string> pieces{"ACME",
                                                 " ",
                                                 "\"",
                                                 "\\",
                                                 "/",
                                                 "\u00e9",
                                                 "\u00df",
                                                 "\u2212",
                                                 "\n",
                                                 "\t",
                                                 "\x01",
                                                 "#552",
                                                 "\u65e5\u672c",
                                                 "\U0001F600",
                                                 "'",
                                                 "\x7f",
                                                 "SOME LONGER TEXT THAN A WORD"};
    std::string text;
    const auto count = random() % 12;
    for (unsigned i = 0; i < count; ++i)
        text += pieces[random() % pieces.size()];
    return text;
}

// A transaction with no nested values, amounts now and then at the extremes.
inline LedgerTransaction randomFlatTransaction(std::mt19937& random) {
    const auto maybe = [&] { return random() % 2 == 0; };
    static const std::vector<int64_t> extremes{std::numeric_limits<int64_t>::min(),
                                               std::numeric_limits<int64_t>::max(), 0, -1, 1};
    LedgerTransaction t{
        .id = Uuid::random(),
        .accountID = Uuid::random(),
        .sourceLine = static_cast<int64_t>(random() % 100000),
        .date = LocalDate::fromDayNumber(static_cast<int64_t>(random() % 60000) - 20000),
        .amount = random() % 8 == 0
                      ? extremes[random() % extremes.size()]
                      : static_cast<int64_t>(random()) - static_cast<int64_t>(random()),
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
        t.cardIdentifier = awkwardText(random);
    if (maybe())
        t.entrySource = TransactionEntrySource::manual;
    if (maybe())
        t.externalID = awkwardText(random);
    return t;
}

}  // namespace copperwick::testing
