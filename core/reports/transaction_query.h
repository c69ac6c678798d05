#pragma once

// The Transactions screen's list: which lines it keeps, tested in the order
// the screen tests them, and how its columns sort them. The command line's
// `transactions` and `export transactions` ask the same query with the
// options they offer, so a line can't be in one list and missing from the
// other. Plain copyable values and pure functions of the ledger, safe on any
// thread for a ledger nobody writes meanwhile.

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "core/model/ledger.h"
#include "core/model/payment_service.h"
#include "core/reports/report_filter.h"

namespace copperwick {

// The screen's filter menu. Every case but `removed` leaves voided lines out,
// and `removed` keeps nothing else, so a removed line shows only there.
struct TransactionFilter {
    enum class Kind {
        all,
        needsReview,
        aiFiled,
        spending,
        income,
        transfers,
        zelle,
        pending,
        removed,
        manual,
        category,  // with `categoryID`
        service,   // with `service`
    };

    Kind kind = Kind::all;
    Uuid categoryID;
    PaymentService service = PaymentService::zelle;

    // Lines filed in the category, or with a split part in it.
    [[nodiscard]] static TransactionFilter inCategory(Uuid categoryID);
    // Lines whose bank text names the service.
    [[nodiscard]] static TransactionFilter byService(PaymentService service);

    [[nodiscard]] bool holds(const LedgerTransaction& transaction) const;

    friend bool operator==(const TransactionFilter&, const TransactionFilter&) = default;
};

// Whose lines: the people half of a ReportFilter, as the people picker sets it.
struct PeopleScope {
    std::set<Uuid> personIDs;
    std::optional<bool> wholeHousehold;  // as ReportFilter takes it
    bool includeShared = false;
    bool includeUnassigned = false;
    PeopleMode peopleMode = PeopleMode::assigned;

    [[nodiscard]] static PeopleScope of(const ReportFilter& filter);

    friend bool operator==(const PeopleScope&, const PeopleScope&) = default;
};

// The words a search looks through, lowered once for every line of one
// ledger, so that each query is a plain scan. Build it again whenever the
// ledger changes: a merchant renamed changes the words of all its lines.
class TransactionSearchTexts {
  public:
    TransactionSearchTexts() = default;
    explicit TransactionSearchTexts(const Ledger& ledger);

    // The lowered words of the line met at this place of a walk over the
    // ledger it was built from, or null when that place holds another line.
    [[nodiscard]] const std::string* at(std::size_t place, const Uuid& id) const;

  private:
    std::vector<std::pair<Uuid, std::string>> m_texts;
};

// Each field narrows the list; an absent one lets everything through. A line
// replaced by its posted form is never kept.
struct TransactionQuery {
    // Only these lines, whatever their days: a list opened from a figure
    // elsewhere overrides the period. An empty set keeps nothing.
    std::optional<std::set<Uuid>> focus;
    // The first and last day, both kept; passed over when there is a focus.
    std::optional<LocalDate> from;
    std::optional<LocalDate> to;
    // Lines in this currency; the screen asks for the report currency.
    std::optional<std::string> currency;
    std::optional<Uuid> accountID;
    // Whose lines, tested with the line's own currency and every account.
    std::optional<PeopleScope> people;
    TransactionFilter filter;
    // As typed: trimmed, then found in any case in the merchant's name, the
    // bank text or the note.
    std::string search;
    // The command line's search also finds a line by its category's name.
    bool searchesCategories = false;

    // The days, currency and people of a report, as its drill-downs and
    // exports keep them.
    void narrowTo(const ReportFilter& report);

    [[nodiscard]] bool keeps(const LedgerTransaction& transaction, const Ledger& ledger) const;

    // The lines kept, in no set order; sortTransactions orders them.
    [[nodiscard]] std::vector<const LedgerTransaction*> select(const Ledger& ledger) const;
    // The same lines, searched in words lowered beforehand for this ledger.
    [[nodiscard]] std::vector<const LedgerTransaction*> select(
        const Ledger& ledger, const TransactionSearchTexts& texts) const;
};

// The columns the list sorts by.
enum class TransactionColumn {
    date,
    merchant,
    category,
    account,
    amount,
};

struct TransactionSort {
    TransactionColumn column = TransactionColumn::date;
    bool ascending = false;  // the screen opens on the newest first

    friend bool operator==(const TransactionSort&, const TransactionSort&) = default;
};

// Sorts by the column's raw value (days, cents; names ignoring case), and
// lines that tie by their id, ascending whichever way the column runs, so
// the same list always reads the same.
void sortTransactions(std::vector<const LedgerTransaction*>& lines, const Ledger& ledger,
                      TransactionSort sort);

// The Category column's words: "Transfer"; for a line nobody has filed,
// "Suggested", "Local AI suggests" or "Needs review"; "Split (3 categories)";
// the category's name; or "Uncategorized".
[[nodiscard]] std::string categoryText(const Ledger& ledger, const LedgerTransaction& transaction);

}  // namespace copperwick
