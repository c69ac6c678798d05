#include "core/presentation/demo_ledger.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "core/matching/transfer_pairing.h"
#include "core/model/enum_text.h"
#include "core/operations/household_assignment.h"
#include "core/operations/manual_entry.h"
#include "core/reports/insights.h"
#include "core/reports/period_choice.h"
#include "core/reports/report_engine.h"
#include "core/review/review_queue.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

ReportFilter lastThreeMonths(LocalDate today) {
    return ReportFilter(span(PeriodChoice::last3Months, today, std::nullopt, today, today), {}, {},
                        "USD", std::nullopt, false, false, PeopleMode::assigned);
}

std::string nameOf(const Ledger& ledger, const std::optional<Uuid>& id) {
    if (const Account* account = ledger.account(id))
        return account->name;
    if (const LedgerCategory* category = ledger.category(id))
        return category->name;
    if (const Merchant* merchant = ledger.merchant(id))
        return merchant->name;
    if (const Person* person = ledger.person(id))
        return person->name;
    return id ? "?" : "-";
}

// Everything a person could see of the ledger, with every id replaced by the
// name of what it points at, one record a line, sorted.
std::string describe(const Ledger& ledger) {
    std::vector<std::string> lines;
    for (const auto& person : ledger.people)
        lines.push_back("person " + person.name);
    for (const auto& account : ledger.accounts) {
        std::string users;
        for (const auto& user : account.userIDs())
            users += nameOf(ledger, user) + ",";
        for (const auto& [card, who] : account.cardAssignments)
            users += card + "=" + nameOf(ledger, who.personID()) + ",";
        lines.push_back("account " + account.name + " " + std::string(rawValue(account.type)) +
                        " " + users);
    }
    for (const auto& category : ledger.categories)
        lines.push_back("category " + category.name);
    for (const auto& merchant : ledger.merchants) {
        std::string keys;
        for (const auto& key : merchant.keys)
            keys += key + ",";
        lines.push_back("merchant " + merchant.name + " " + nameOf(ledger, merchant.categoryID) +
                        " " + keys);
    }
    for (const auto& budget : ledger.budgets)
        lines.push_back("budget " + nameOf(ledger, budget.categoryID) + " " +
                        std::to_string(budget.monthlyAmount));
    for (const auto& batch : ledger.batches) {
        lines.push_back("batch " + batch.fileName + " " + nameOf(ledger, batch.accountID) + " " +
                        batch.profileID + " " + std::to_string(batch.importedAt.unixSeconds()) +
                        " " + batch.firstDate->iso() + " " + batch.lastDate->iso() + " " +
                        std::to_string(batch.counts.imported));
    }
    for (const auto& change : ledger.changes)
        lines.push_back("change " + change.label);
    for (const auto& t : ledger.transactions) {
        std::ostringstream line;
        const LedgerTransaction* partner = ledger.transaction(t.transferPairID);
        const ImportBatch* batch = nullptr;
        for (const auto& candidate : ledger.batches) {
            if (candidate.id == t.batchID)
                batch = &candidate;
        }
        line << "transaction " << t.fingerprint << " " << nameOf(ledger, t.accountID) << " "
             << t.date << " " << t.amount << " " << t.rawDescription << " | " << rawValue(t.kind)
             << " " << nameOf(ledger, t.categoryID) << " " << nameOf(ledger, t.merchantID) << " "
             << rawValue(t.method) << " " << rawValue(t.review) << " " << rawValue(t.status)
             << " | " << t.evidence << " | " << t.note << " | " << t.cardIdentifier.value_or("-")
             << " " << (partner ? partner->fingerprint : "-") << " "
             << (batch ? batch->fileName : "-") << " " << t.sourceLine << " "
             << (t.originalDetails ? t.originalDetails->amount : 0) << " "
             << (t.suggestion ? t.suggestion->reason : "-");
        lines.push_back(line.str());
    }
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

const Account& accountNamed(const Ledger& ledger, std::string_view name) {
    const auto found = std::find_if(ledger.accounts.begin(), ledger.accounts.end(),
                                    [&](const Account& account) { return account.name == name; });
    EXPECT_NE(found, ledger.accounts.end()) << name;
    return *found;
}

std::vector<const LedgerTransaction*> withText(const Ledger& ledger, std::string_view text) {
    std::vector<const LedgerTransaction*> found;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.rawDescription == text)
            found.push_back(&transaction);
    }
    return found;
}

TEST(DemoLedger, NoDateLiesPastTheMonthOfToday) {
    // Short months, a leap day and 31sts: the loop's day 28 to 31 rows clamp,
    // and no transfer's credit spills into the next month.
    for (const LocalDate today : {day(2026, 2, 28), day(2028, 2, 29), day(2026, 1, 31),
                                  day(2026, 3, 31), day(2025, 12, 31), day(2026, 4, 30)}) {
        SCOPED_TRACE(today.iso());
        const Ledger ledger = DemoLedger::make(today);
        const LocalDate first = today.firstOfMonth().addingMonths(-13);
        std::set<std::string> months;
        for (const auto& transaction : ledger.transactions) {
            EXPECT_LE(transaction.date, today.lastOfMonth()) << transaction.rawDescription;
            EXPECT_GE(transaction.date, first) << transaction.rawDescription;
            months.insert(transaction.date.monthKey());
        }
        EXPECT_EQ(months.size(), 14u);
        for (const auto& batch : ledger.batches)
            EXPECT_LE(*batch.lastDate, today.lastOfMonth()) << batch.fileName;
    }
}

TEST(DemoLedger, FirstOfTheMonthAlreadyHoldsTheWholeMonth) {
    const LocalDate today = day(2026, 5, 1);
    const Ledger ledger = DemoLedger::make(today);
    int thisMonth = 0, ahead = 0;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.date.monthKey() != "2026-05")
            continue;
        ++thisMonth;
        ahead += transaction.date > today ? 1 : 0;
    }
    EXPECT_GE(thisMonth, 30);
    EXPECT_GT(2 * ahead, thisMonth) << "most of the month lies ahead of today";
    for (const char* text :
         {"NETFLIX.COM", "Sample Learning Studio payroll", "Demo savings interest",
          "Rainy-day savings transfer", "CINEMARK THEATRES"}) {
        const auto rows = withText(ledger, text);
        EXPECT_TRUE(std::any_of(rows.begin(), rows.end(), [](const auto* t) {
            return t->date.monthKey() == "2026-05";
        })) << text;
    }
}

TEST(DemoLedger, SameDayGivesTheSameRecordsIdsAside) {
    const LocalDate today = day(2026, 11, 20);
    const std::string first = describe(DemoLedger::make(today));
    EXPECT_EQ(first, describe(DemoLedger::make(today)));
    EXPECT_NE(first, describe(DemoLedger::make(day(2026, 12, 20))));
}

TEST(DemoLedger, EveryRowIsMarkedAndEveryBankRowHasItsFile) {
    const LocalDate today = day(2026, 11, 20);
    const Ledger ledger = DemoLedger::make(today);
    std::set<std::string> fingerprints;
    for (const auto& transaction : ledger.transactions) {
        EXPECT_EQ(transaction.fingerprint.rfind("demo:", 0), 0u) << transaction.fingerprint;
        EXPECT_TRUE(fingerprints.insert(transaction.fingerprint).second)
            << "a re-import would take one for the other: " << transaction.fingerprint;
        EXPECT_FALSE(transaction.note.empty()) << transaction.rawDescription;

        const Account* account = ledger.account(transaction.accountID);
        ASSERT_TRUE(account);
        const bool fromBank = !transaction.entrySource && account->type != AccountType::cash;
        EXPECT_EQ(transaction.batchID.has_value(), fromBank) << transaction.rawDescription;
        if (!fromBank)
            continue;
        const auto batch =
            std::find_if(ledger.batches.begin(), ledger.batches.end(),
                         [&](const ImportBatch& b) { return b.id == transaction.batchID; });
        ASSERT_NE(batch, ledger.batches.end());
        EXPECT_EQ(batch->accountID, transaction.accountID);
        EXPECT_GE(transaction.date, *batch->firstDate);
        EXPECT_LE(transaction.date, *batch->lastDate);
    }
    ASSERT_EQ(ledger.batches.size(), 5u) << "one file for every account but the cash wallet";
    const ImportBatch& checking = ledger.batches[0];
    EXPECT_EQ(checking.fileName, "Demo household Demo household checking 2026-11.csv");
    EXPECT_EQ(checking.fileHash.rfind("demo-", 0), 0u);
    EXPECT_EQ(checking.profileID, "demo-fictional");
    EXPECT_EQ(checking.importedAt.unixSeconds(), static_cast<double>(today.dayNumber()) * 86400);
    EXPECT_EQ(checking.firstDate, day(2025, 10, 1));
}

TEST(DemoLedger, StalePendingChargeShowsInReviewAndTheNotes) {
    for (const LocalDate today : {day(2026, 3, 1), day(2026, 11, 20), day(2026, 8, 31)}) {
        SCOPED_TRACE(today.iso());
        const Ledger ledger = DemoLedger::make(today);
        const auto stale = ReviewQueue::stalePending(ledger, today);
        ASSERT_EQ(stale.size(), 1u);
        EXPECT_EQ(stale[0].note, "Pending hotel authorization");
        EXPECT_EQ(stale[0].amount, -20000);

        const Report report = ReportEngine::build(ledger, lastThreeMonths(today), today);
        EXPECT_TRUE(std::any_of(report.notes.begin(), report.notes.end(),
                                [](const DataNote& note) { return note.id == "pending"; }));
    }
}

TEST(DemoLedger, ReportsFindRecurringAndUnusualCharges) {
    for (const LocalDate today : {day(2026, 3, 28), day(2026, 12, 31)}) {
        SCOPED_TRACE(today.iso());
        const Ledger ledger = DemoLedger::make(today);
        const ReportFilter filter = lastThreeMonths(today);

        const auto recurring = Insights::recurring(ledger, filter, today);
        std::set<std::string> monthly;
        for (const auto& charge : recurring) {
            if (charge.cadence == Cadence::monthly && charge.count >= 14 && charge.isActive)
                monthly.insert(charge.merchantName);
        }
        for (const char* name : {"Netflix", "Spotify", "Apple Services", "Planet Fitness",
                                 "Xfinity", "AT&T", "Audible", "Chipotle", "Target", "Cinemark"})
            EXPECT_TRUE(monthly.contains(name)) << name;

        const auto unusual = Insights::unusual(ledger, filter);
        EXPECT_TRUE(std::any_of(unusual.begin(), unusual.end(), [](const UnusualCharge& charge) {
            return charge.merchantName == "Best Buy" && charge.amount == 124999;
        }));
    }
}

TEST(DemoLedger, EveryMonthHasAPairedTransfer) {
    const LocalDate today = day(2026, 2, 28);
    Ledger ledger = DemoLedger::make(today);
    std::map<std::string, int> pairedSavings;
    for (const auto& debit : ledger.transactions) {
        if (!debit.transferPairID || debit.amount > 0)
            continue;
        const LedgerTransaction* credit = ledger.transaction(debit.transferPairID);
        ASSERT_TRUE(credit);
        EXPECT_EQ(credit->transferPairID, debit.id);
        EXPECT_EQ(credit->amount, -debit.amount);
        EXPECT_NE(credit->accountID, debit.accountID);
        EXPECT_EQ(debit.kind, TransactionKind::transfer);
        EXPECT_EQ(credit->kind, TransactionKind::transfer);
        EXPECT_FALSE(debit.categoryID || credit->categoryID);
        if (debit.rawDescription == "Rainy-day savings transfer") {
            EXPECT_EQ(credit->date, debit.date.addingDays(1));
            ++pairedSavings[debit.date.monthKey()];
        }
    }
    EXPECT_EQ(pairedSavings.size(), 14u);
    // Pairing, run again as after any change, finds nothing to mend or add.
    const LedgerDelta delta = pairTransfers(ledger);
    EXPECT_TRUE(delta.changed.empty());
}

TEST(DemoLedger, ReviewQueueHasWaitingGroups) {
    const Ledger ledger = DemoLedger::make(day(2026, 11, 20));
    const auto groups = ReviewQueue::groups(ledger);
    ASSERT_GE(groups.size(), 3u);
    const auto suggested = std::find_if(groups.begin(), groups.end(), [](const ReviewGroup& g) {
        return g.suggestion && g.suggestion->source == MatchMethod::similar;
    });
    ASSERT_NE(suggested, groups.end());
    EXPECT_EQ(suggested->transactionIDs.size(), 3u);
    EXPECT_EQ(nameOf(ledger, suggested->suggestion->categoryID), "Dining");
    EXPECT_TRUE(std::any_of(groups.begin(), groups.end(),
                            [](const ReviewGroup& g) { return !g.suggestion; }));

    const auto model = withText(ledger, "Demo sample: review this Local AI filing.");
    ASSERT_EQ(model.size(), 1u);
    EXPECT_EQ(model[0]->review, ReviewState::suggested);
    EXPECT_EQ(model[0]->method, MatchMethod::ai);
    EXPECT_EQ(model[0]->evidence, "Fictional demo AI filing");
    EXPECT_EQ(model[0]->note, "Fictional example of a Local AI filing; no model was run.");
}

TEST(DemoLedger, CashWalletHoldsOpeningCashPlusMovesLessSpending) {
    const Ledger ledger = DemoLedger::make(day(2026, 11, 20));
    const Account& wallet = accountNamed(ledger, "Demo cash wallet");
    EXPECT_EQ(wallet.type, AccountType::cash);
    int64_t opening = 0, moved = 0, spent = 0, received = 0;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.accountID != wallet.id)
            continue;
        EXPECT_TRUE(transaction.entrySource) << "a wallet only holds what was typed by hand";
        if (transaction.entrySource == TransactionEntrySource::openingBalance) {
            EXPECT_EQ(transaction.rawDescription, "Opening cash");
            opening += transaction.amount;
        } else if (const auto* bankLeg = ledger.transaction(transaction.transferPairID)) {
            moved -= bankLeg->amount;  // counted from the bank's side
        } else if (transaction.kind == TransactionKind::income) {
            received += transaction.amount;
        } else {
            spent -= transaction.amount;
        }
    }
    EXPECT_GT(opening, 0);
    EXPECT_GT(moved, 0);
    EXPECT_GT(spent, 0);
    EXPECT_EQ(cashBalance(ledger, wallet.id), opening + moved + received - spent);
    EXPECT_GE(cashBalance(ledger, wallet.id), 0);
}

TEST(DemoLedger, PlantedSamplesStandAsAPersonWouldHaveLeftThem) {
    const Ledger ledger = DemoLedger::make(day(2026, 11, 20));
    std::vector<std::string> people;
    for (const auto& person : ledger.people)
        people.push_back(person.name);
    EXPECT_EQ(people, (std::vector<std::string>{"Alex Example", "Sam Sample", "Riley Demo"}));
    EXPECT_EQ(ledger.accounts.size(), 6u);
    EXPECT_EQ(ledger.categories.size(), LedgerCategory::defaults().size());

    // The correction keeps what the bank said.
    const auto homeGoods = withText(ledger, "HOMEGOODS #0412");
    ASSERT_EQ(homeGoods.size(), 1u);
    EXPECT_EQ(homeGoods[0]->amount, -6495);
    ASSERT_TRUE(homeGoods[0]->originalDetails);
    EXPECT_EQ(homeGoods[0]->originalDetails->amount, -7495);
    ASSERT_TRUE(homeGoods[0]->revisions);
    EXPECT_EQ(homeGoods[0]->revisions->back().reason,
              "Demo correction: receipt included a $10 discount.");

    // Typed by hand, and undoable like any entry.
    for (const char* text : {"Demo weekend tutoring", "Demo farmers market",
                             "Demo neighborhood lunch", "Groceries and household supplies"}) {
        const auto rows = withText(ledger, text);
        ASSERT_EQ(rows.size(), 1u) << text;
        EXPECT_EQ(rows[0]->entrySource, TransactionEntrySource::manual) << text;
    }
    EXPECT_EQ(ledger.undoLabel(), "Correct transaction");

    // Riley's card on the shared account counts as Riley's.
    const auto wings = withText(ledger, "BUFFALO WILD WINGS 0231");
    ASSERT_FALSE(wings.empty());
    EXPECT_EQ(wings[0]->cardIdentifier, "Cardholder: Riley Demo");
    EXPECT_EQ(assignmentName(ledger, assignment(ledger, *wings[0])), "Riley Demo");

    const auto zelle = withText(ledger, "Zelle payment to Casey Example");
    ASSERT_EQ(zelle.size(), 1u);
    EXPECT_EQ(zelle[0]->note, "Shared dinner");
    EXPECT_EQ(nameOf(ledger, zelle[0]->merchantID), "Casey Example");
    const auto venmo = withText(ledger, "VENMO PAYMENT MORGAN DEMO");
    ASSERT_EQ(venmo.size(), 1u);
    EXPECT_EQ(venmo[0]->amount, 2500);
    EXPECT_EQ(nameOf(ledger, venmo[0]->categoryID), "Dining");

    std::map<std::string, int64_t> budgets;
    for (const auto& budget : ledger.budgets)
        budgets[nameOf(ledger, budget.categoryID)] = budget.monthlyAmount;
    EXPECT_EQ(budgets.size(), 9u);
    EXPECT_EQ(budgets["Housing"], 190000);
    EXPECT_EQ(budgets["Entertainment"], 15000);
}

}  // namespace
}  // namespace copperwick
