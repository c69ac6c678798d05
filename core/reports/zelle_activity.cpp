#include "core/reports/zelle_activity.h"

#include <algorithm>
#include <map>

#include "core/matching/merchant_text.h"
#include "core/matching/phrase_search.h"
#include "core/model/checked.h"
#include "core/model/text.h"
#include "core/reports/payment_lines.h"
#include "core/reports/report_engine.h"

namespace copperwick::ZelleActivity {

namespace {

void insertSorted(std::vector<std::string>& list, std::string item) {
    const auto at = std::lower_bound(list.begin(), list.end(), item);
    if (at == list.end() || *at != item)
        list.insert(at, std::move(item));
}

// Every Zelle text holds these letters; most lines are passed over unparsed.
bool mentionsZelle(std::string_view text) {
    for (std::size_t i = 0; i + 5 <= text.size(); ++i) {
        std::size_t j = 0;
        for (; j < 5; ++j) {
            char c = text[i + j];
            if (c >= 'a' && c <= 'z')
                c = static_cast<char>(c - 'a' + 'A');
            if (c != "ZELLE"[j])
                break;
        }
        if (j == 5)
            return true;
    }
    return false;
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// False only for text that can't be a Zelle payment.
bool mayBeZelle(std::string_view text) {
    return !isAscii(text) || mentionsZelle(text);
}

}  // namespace

bool isZelle(std::string_view text) {
    if (!mayBeZelle(text))
        return false;
    const MerchantText reading(text);
    return reading.via == "Zelle";
}

std::vector<std::string> householdPhrases(const Ledger& ledger) {
    std::vector<std::string> phrases;
    for (const auto& person : ledger.people) {
        for (const auto& bankName : person.bankNames) {
            std::string phrase = MerchantText::normalize(bankName);
            // Characters, not bytes: "ZOË" is too short however it is encoded.
            if (text::characterCount(phrase) < 4)
                continue;
            phrases.push_back(std::move(phrase));
        }
    }
    return phrases;
}

bool matchesHousehold(const LedgerTransaction& transaction,
                      const std::vector<std::string>& phrases) {
    if (phrases.empty())
        return false;
    const std::string normalized = MerchantText::normalize(transaction.rawDescription);
    return std::any_of(phrases.begin(), phrases.end(), [&](const std::string& phrase) {
        return PhraseSearch::contains(normalized, phrase, false);
    });
}

std::string treatment(const LedgerTransaction& transaction, const Ledger& ledger,
                      bool isHouseholdMoney) {
    const LedgerCategory* category = ledger.category(transaction.categoryID);
    switch (transaction.kind) {
        case TransactionKind::expense: {
            std::string words = transaction.amount > 0 ? "Paying back" : "Spending";
            if (category)
                words += ": " + category->name;
            return words;
        }
        case TransactionKind::income:
            if (category && text::lowercased(category->name) ==
                                text::lowercased(std::string(kGiftsReceivedCategory)))
                return "Gift received";
            return "Income";
        case TransactionKind::transfer:
            return isHouseholdMoney ? "Household, not counted" : "Not counted";
        case TransactionKind::unknown:
            return "Needs review";
    }
    return "Needs review";
}

bool counts(const LedgerTransaction& transaction, const Ledger& ledger,
            const ReportFilter& filter) {
    return !transaction.supersededBy && !transaction.voided &&
           transaction.status == TransactionStatus::posted &&
           filter.span.contains(transaction.date) && filter.includes(transaction, ledger);
}

ZelleSummary build(const Ledger& ledger, const ReportFilter& filter) {
    const auto phrases = householdPhrases(ledger);
    std::vector<const LedgerTransaction*> payments;
    for (const LedgerTransaction* transaction :
         PaymentLines::candidates(ledger, !phrases.empty())) {
        if (counts(*transaction, ledger, filter))
            payments.push_back(transaction);
    }
    std::sort(payments.begin(), payments.end(), [](const auto* a, const auto* b) {
        return a->date != b->date ? a->date < b->date : a->id < b->id;
    });

    ZelleSummary summary;
    std::map<std::string, ZelleLine> byIdentity;
    for (const LedgerTransaction* payment : payments) {
        const bool household =
            payment->kind == TransactionKind::transfer && matchesHousehold(*payment, phrases);
        if (household) {
            auto& money = summary.household;
            if (payment->amount < 0) {
                money.sent = checked::sub(money.sent, payment->amount);
                money.sentIDs.push_back(payment->id);
            } else {
                money.received = checked::add(money.received, payment->amount);
                money.receivedIDs.push_back(payment->id);
            }
        }
        if (!isZelle(payment->rawDescription))
            continue;
        auto identity = ReportEngine::merchantIdentity(*payment, ledger);
        ZelleLine& line = byIdentity[identity.id];
        line.id = identity.id;
        line.name = std::move(identity.name);  // the latest payment's name stands
        ++line.count;
        line.transactionIDs.push_back(payment->id);
        summary.transactionIDs.push_back(payment->id);
        if (payment->amount < 0)
            line.sent = checked::sub(line.sent, payment->amount);
        else
            line.received = checked::add(line.received, payment->amount);
        insertSorted(line.howCounted, treatment(*payment, ledger, household));
    }

    for (auto& entry : byIdentity) {
        summary.sent = checked::add(summary.sent, entry.second.sent);
        summary.received = checked::add(summary.received, entry.second.received);
        summary.lines.push_back(std::move(entry.second));
    }
    // Stable, so that equal names keep the order of their ids.
    std::stable_sort(summary.lines.begin(), summary.lines.end(), [](const auto& a, const auto& b) {
        const int64_t volumeA = checked::add(a.sent, a.received);
        const int64_t volumeB = checked::add(b.sent, b.received);
        return volumeA != volumeB ? volumeA > volumeB : a.name < b.name;
    });
    return summary;
}

}  // namespace copperwick::ZelleActivity
