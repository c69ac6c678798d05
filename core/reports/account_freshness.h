#pragma once

// How current each account's imports are, outside any report: the freshness
// list, and the month whose totals are missing an account that was being kept
// up and has stopped. Pure functions of the ledger and today.

#include <optional>
#include <string>
#include <vector>

#include "core/model/date_span.h"
#include "core/model/enum_text.h"
#include "core/model/instant.h"
#include "core/model/ledger.h"

namespace copperwick {

struct AccountFreshness {
    enum class State {
        manual,         // a cash wallet, kept by hand
        neverImported,  // no file and no transaction yet
        recent,         // something within the last 31 days
        mayNeedImport,
        rarelyUsed,  // quiet on purpose, as the person said
    };

    Account account;
    std::optional<Instant> lastImportedAt;
    // The latest posted transaction, or the person's up-to-date claim when later.
    std::optional<LocalDate> latestTransaction;
    State state = State::neverImported;

    // Every account, by name.
    [[nodiscard]] static std::vector<AccountFreshness> build(const Ledger& ledger, LocalDate today);

    // "Last import: {when}" or "Last import: Never", then " · Latest
    // transaction: Mar 3, 2026" when there is one. `importedAt` is
    // lastImportedAt as the caller words instants (its clock and zone).
    [[nodiscard]] std::string importLine(const std::optional<std::string>& importedAt) const;
    // "You confirmed complete through Mar 31, 2026", absent until the person has.
    [[nodiscard]] std::optional<std::string> confirmedLine() const;

    friend bool operator==(const AccountFreshness&, const AccountFreshness&) = default;
};

template <>
struct EnumTraits<AccountFreshness::State> {
    static constexpr std::array<std::pair<AccountFreshness::State, std::string_view>, 5> cases{{
        {AccountFreshness::State::manual, "manual"},
        {AccountFreshness::State::neverImported, "neverImported"},
        {AccountFreshness::State::recent, "recent"},
        {AccountFreshness::State::mayNeedImport, "mayNeedImport"},
        {AccountFreshness::State::rarelyUsed, "rarelyUsed"},
    }};
};

// The state in the freshness list's words: "Tracked manually", "No imports
// yet", "Recent activity", "May need an import", "Occasional use".
[[nodiscard]] std::string_view label(AccountFreshness::State state);

struct MissingImports {
    std::string monthLabel;  // "March 2026"
    std::vector<std::string> accountNames;

    // Absent when every account that was being kept up reaches the month
    // holding the period's end (or today, when that is earlier).
    [[nodiscard]] static std::optional<MissingImports> find(const DateSpan& span,
                                                            const Ledger& ledger, LocalDate today);

    // "March 2026 isn't imported yet for Visa and Savings, so its totals are
    // missing those accounts."
    [[nodiscard]] std::string message() const;

    friend bool operator==(const MissingImports&, const MissingImports&) = default;
};

}  // namespace copperwick
