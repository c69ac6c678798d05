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

// One walk of the query over many lines: the search lowered once, and the
// people's filter made once for each currency met rather than for each line.
class QueryRun {
  public:
    QueryRun(const TransactionQuery& query, const Ledger& ledger)
        : m_query(query),
          m_ledger(ledger),
          m_search(text::lowercased(text::trimmed(query.search))) {}

    [[nodiscard]] bool keeps(const LedgerTransaction& transaction) {
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
        return m_search.empty() ||
               text::lowercased(searchedText(transaction)).find(m_search) != std::string::npos;
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

    std::string searchedText(const LedgerTransaction& transaction) const {
        std::string haystack = ReportEngine::merchantIdentity(transaction, m_ledger).name + " " +
                               transaction.rawDescription + " " + transaction.note;
        if (m_query.searchesCategories) {
            if (const LedgerCategory* category = m_ledger.category(transaction.categoryID))
                haystack += " " + category->name;
        }
        return haystack;
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

void sortTransactions(std::vector<const LedgerTransaction*>& lines, const Ledger& ledger,
                      TransactionSort sort) {
    // The text columns' keys are worked out once per line, not per comparison.
    std::vector<std::pair<std::string, const LedgerTransaction*>> keyed;
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
        keyed.emplace_back(std::move(key), line);
    }
    // Negative for a before b in the column's own ascending order.
    const auto compare = [&](const auto& a, const auto& b) -> int {
        switch (sort.column) {
            case TransactionColumn::date:
                return a.second->date < b.second->date ? -1 : b.second->date < a.second->date;
            case TransactionColumn::amount:
                return a.second->amount < b.second->amount ? -1
                                                           : b.second->amount < a.second->amount;
            case TransactionColumn::merchant:
            case TransactionColumn::category:
            case TransactionColumn::account:
                return a.first.compare(b.first);
        }
        return 0;
    };
    std::stable_sort(keyed.begin(), keyed.end(), [&](const auto& a, const auto& b) {
        const int order = compare(a, b);
        if (order != 0)
            return sort.ascending ? order < 0 : order > 0;
        return a.second->id < b.second->id;
    });
    for (std::size_t i = 0; i < keyed.size(); ++i)
        lines[i] = keyed[i].second;
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
