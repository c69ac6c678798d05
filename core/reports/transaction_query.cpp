#include "core/reports/transaction_query.h"

#include <algorithm>
#include <map>
#include <utility>

#include "core/model/text.h"
#include "core/operations/classification.h"
#include "core/reports/payment_service_detection.h"
#include "core/reports/report_engine.h"
#include "core/reports/zelle_activity.h"

namespace copperwick {

namespace {

std::string searchedText(const LedgerTransaction& transaction, const Ledger& ledger,
                         bool withCategory) {
    std::string haystack = ReportEngine::merchantIdentity(transaction, ledger).name + " " +
                           transaction.rawDescription + " " + transaction.note;
    if (withCategory) {
        if (const LedgerCategory* category = ledger.category(transaction.categoryID))
            haystack += " " + category->name;
    }
    return haystack;
}

// One walk of the query over many lines: the search lowered once, and the
// people's filter made once for each currency met rather than for each line.
class QueryRun {
  public:
    QueryRun(const TransactionQuery& query, const Ledger& ledger)
        : m_query(query),
          m_ledger(ledger),
          m_search(text::lowercased(text::trimmed(query.search))) {}

    // `lowered` is the line's searched words already lowered, when known.
    [[nodiscard]] bool keeps(const LedgerTransaction& transaction,
                             const std::string* lowered = nullptr) {
        const TransactionQuery& query = m_query;
        if (transaction.supersededBy)
            return false;
        if (query.currency && transaction.currency != *query.currency)
            return false;
        if (query.focus) {
            if (!query.focus->contains(transaction.id))
                return false;
        } else if ((query.from && transaction.date < *query.from) ||
                   (query.to && transaction.date > *query.to)) {
            return false;
        }
        if (query.accountID && transaction.accountID != *query.accountID)
            return false;
        if (query.people && !peopleFilter(transaction.currency).includes(transaction, m_ledger))
            return false;
        if (!query.filter.holds(transaction))
            return false;
        if (m_search.empty())
            return true;
        if (lowered && !m_query.searchesCategories)
            return lowered->find(m_search) != std::string::npos;
        return text::lowercased(searchedText(transaction, m_ledger, m_query.searchesCategories))
                   .find(m_search) != std::string::npos;
    }

  private:
    const ReportFilter& peopleFilter(const std::string& currency) {
        auto found = m_peopleFilters.find(currency);
        if (found == m_peopleFilters.end()) {
            const PeopleScope& people = *m_query.people;
            // The days are the query's own test; only the scope is asked here.
            const DateSpan anyDay{};
            found =
                m_peopleFilters
                    .emplace(currency, ReportFilter(anyDay, people.personIDs, {}, currency,
                                                    people.wholeHousehold, people.includeShared,
                                                    people.includeUnassigned, people.peopleMode))
                    .first;
        }
        return found->second;
    }

    const TransactionQuery& m_query;
    const Ledger& m_ledger;
    std::string m_search;
    std::map<std::string, ReportFilter> m_peopleFilters;
};

std::string accountName(const Ledger& ledger, const LedgerTransaction& transaction) {
    const Account* account = ledger.account(transaction.accountID);
    return account ? account->name : std::string();
}

}  // namespace

TransactionFilter TransactionFilter::inCategory(Uuid categoryID) {
    return {.kind = Kind::category, .categoryID = categoryID};
}

TransactionFilter TransactionFilter::byService(PaymentService service) {
    return {.kind = Kind::service, .service = service};
}

bool TransactionFilter::holds(const LedgerTransaction& t) const {
    if (kind == Kind::removed)
        return t.voided;
    if (t.voided)
        return false;
    switch (kind) {
        case Kind::all:
        case Kind::removed:
            return true;
        case Kind::needsReview:
            return t.needsReview();
        case Kind::aiFiled:
            return t.method == MatchMethod::ai && t.review == ReviewState::automatic;
        case Kind::spending:
            return t.kind == TransactionKind::expense;
        case Kind::income:
            return t.kind == TransactionKind::income;
        case Kind::transfers:
            return t.kind == TransactionKind::transfer;
        case Kind::zelle:
            return ZelleActivity::isZelle(t.rawDescription);
        case Kind::pending:
            return t.status == TransactionStatus::pending;
        case Kind::manual:
            return t.isManualEntry();
        case Kind::category:
            if (!t.splits)
                return t.categoryID == categoryID;
            return std::any_of(
                t.splits->begin(), t.splits->end(),
                [&](const TransactionSplit& part) { return part.categoryID == categoryID; });
        case Kind::service:
            return detectPaymentService(t.rawDescription) == service;
    }
    return false;
}

PeopleScope PeopleScope::of(const ReportFilter& filter) {
    return {.personIDs = filter.personIDs,
            .wholeHousehold = filter.wholeHousehold,
            .includeShared = filter.includeShared,
            .includeUnassigned = filter.includeUnassigned,
            .peopleMode = filter.peopleMode};
}

void TransactionQuery::narrowTo(const ReportFilter& report) {
    from = report.span.start;
    to = report.span.end;
    currency = report.currency;
    people = PeopleScope::of(report);
}

bool TransactionQuery::keeps(const LedgerTransaction& transaction, const Ledger& ledger) const {
    return QueryRun(*this, ledger).keeps(transaction);
}

std::vector<const LedgerTransaction*> TransactionQuery::select(const Ledger& ledger) const {
    QueryRun run(*this, ledger);
    std::vector<const LedgerTransaction*> lines;
    for (const auto& transaction : ledger.transactions) {
        if (run.keeps(transaction))
            lines.push_back(&transaction);
    }
    return lines;
}

TransactionSearchTexts::TransactionSearchTexts(const Ledger& ledger) {
    m_texts.reserve(ledger.transactions.size());
    for (const auto& transaction : ledger.transactions)
        m_texts.emplace_back(transaction.id,
                             text::lowercased(searchedText(transaction, ledger, false)));
}

const std::string* TransactionSearchTexts::at(std::size_t place, const Uuid& id) const {
    if (place >= m_texts.size() || m_texts[place].first != id)
        return nullptr;
    return &m_texts[place].second;
}

std::vector<const LedgerTransaction*> TransactionQuery::select(
    const Ledger& ledger, const TransactionSearchTexts& texts) const {
    QueryRun run(*this, ledger);
    std::vector<const LedgerTransaction*> lines;
    std::size_t place = 0;
    for (const auto& transaction : ledger.transactions) {
        if (run.keeps(transaction, texts.at(place++, transaction.id)))
            lines.push_back(&transaction);
    }
    return lines;
}

void sortTransactions(std::vector<const LedgerTransaction*>& lines, const Ledger& ledger,
                      TransactionSort sort) {
    // Every key is worked out once per line, not per comparison: on a long
    // history the comparisons, not the keys, are most of the work.
    const bool byNumber =
        sort.column == TransactionColumn::date || sort.column == TransactionColumn::amount;
    if (byNumber) {
        struct Keyed {
            int64_t key;
            Uuid id;
            const LedgerTransaction* line;
        };
        std::vector<Keyed> keyed;
        keyed.reserve(lines.size());
        for (const LedgerTransaction* line : lines) {
            // A day packs into one number that orders as the dates do.
            const int64_t key =
                sort.column == TransactionColumn::date
                    ? (int64_t{line->date.year} * 16 + line->date.month) * 32 + line->date.day
                    : line->amount;
            keyed.push_back({sort.ascending ? key : -key, line->id, line});
        }
        std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) {
            if (a.key != b.key)
                return a.key < b.key;
            return a.id < b.id;
        });
        for (std::size_t i = 0; i < keyed.size(); ++i)
            lines[i] = keyed[i].line;
        return;
    }
    struct Keyed {
        std::string key;
        Uuid id;
        const LedgerTransaction* line;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(lines.size());
    for (const LedgerTransaction* line : lines) {
        std::string key;
        switch (sort.column) {
            case TransactionColumn::merchant:
                key = text::lowercased(ReportEngine::merchantIdentity(*line, ledger).name);
                break;
            case TransactionColumn::category:
                key = text::lowercased(categoryText(ledger, *line));
                break;
            case TransactionColumn::account:
                key = text::lowercased(accountName(ledger, *line));
                break;
            case TransactionColumn::date:
            case TransactionColumn::amount:
                break;
        }
        keyed.push_back({std::move(key), line->id, line});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [&](const Keyed& a, const Keyed& b) {
        const int order = a.key.compare(b.key);
        if (order != 0)
            return sort.ascending ? order < 0 : order > 0;
        return a.id < b.id;
    });
    for (std::size_t i = 0; i < keyed.size(); ++i)
        lines[i] = keyed[i].line;
}

std::string categoryText(const Ledger& ledger, const LedgerTransaction& transaction) {
    switch (transaction.kind) {
        case TransactionKind::transfer:
            return "Transfer";
        case TransactionKind::unknown:
            if (!transaction.suggestion)
                return "Needs review";
            return std::string(suggestionHeading(*transaction.suggestion));
        case TransactionKind::expense:
        case TransactionKind::income:
            break;
    }
    if (transaction.splits)
        return "Split (" + std::to_string(transaction.splits->size()) + " categories)";
    if (const LedgerCategory* category = ledger.category(transaction.categoryID))
        return category->name;
    return "Uncategorized";
}

}  // namespace copperwick
