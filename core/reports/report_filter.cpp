#include "core/reports/report_filter.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "core/model/household_resolution.h"

namespace copperwick {

namespace {

void combine(std::size_t& seed, std::size_t value) {
    seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
}

}  // namespace

ReportFilter::ReportFilter(DateSpan span, std::set<Uuid> personIDs, std::set<Uuid> accountIDs,
                           std::string currency, std::optional<bool> wholeHousehold,
                           bool includeShared, bool includeUnassigned, PeopleMode peopleMode)
    : span(span),
      personIDs(std::move(personIDs)),
      accountIDs(std::move(accountIDs)),
      currency(std::move(currency)),
      wholeHousehold(wholeHousehold.value_or(this->personIDs.empty())),
      includeShared(includeShared),
      includeUnassigned(includeUnassigned),
      peopleMode(peopleMode) {}

ReportFilter ReportFilter::withSpan(DateSpan other) const {
    ReportFilter copy = *this;
    copy.span = other;
    return copy;
}

bool ReportFilter::includes(const LedgerTransaction& transaction, const Ledger& ledger) const {
    const Account* account = ledger.account(transaction.accountID);
    // The account's currency decides, not the line's own: a report never
    // mixes the money of two accounts in different currencies.
    if (!account || !includes(*account))
        return false;
    if (wholeHousehold)
        return true;
    switch (peopleMode) {
        case PeopleMode::assigned: {
            const SpendingAssignment answer = assignment(ledger, transaction);
            switch (answer.kind()) {
                case SpendingAssignment::Case::person:
                    return personIDs.contains(answer.personID());
                case SpendingAssignment::Case::shared:
                    return includeShared;
                case SpendingAssignment::Case::unassigned:
                    return includeUnassigned;
            }
            return false;
        }
        case PeopleMode::cards: {
            const auto users = cardUsers(ledger, transaction);
            // A card with users belongs to them alone; it never falls through
            // to the shared or unassigned switches.
            if (!users.empty()) {
                return std::any_of(users.begin(), users.end(), [&](const Person* person) {
                    return personIDs.contains(person->id);
                });
            }
            return cardIsUndecided(ledger, transaction) ? includeUnassigned : includeShared;
        }
    }
    return false;
}

bool ReportFilter::includes(const Account& account) const {
    return account.currency == currency && (accountIDs.empty() || accountIDs.contains(account.id));
}

std::string ReportFilter::scopeLabel(const Ledger& ledger) const {
    if (wholeHousehold)
        return "Whole household";
    // The household's own order of people, not the set's order of ids.
    std::vector<std::string> parts;
    for (const auto& person : ledger.people) {
        if (personIDs.contains(person.id))
            parts.push_back(person.name);
    }
    if (includeShared)
        parts.emplace_back("Shared household");
    if (includeUnassigned)
        parts.emplace_back("Unassigned");
    if (parts.empty())
        return "No people selected";
    std::string label;
    for (const auto& part : parts) {
        if (!label.empty())
            label += " + ";
        label += part;
    }
    if (peopleMode == PeopleMode::cards)
        label += " (their cards)";
    return label;
}

}  // namespace copperwick

std::size_t std::hash<copperwick::ReportFilter>::operator()(
    const copperwick::ReportFilter& filter) const noexcept {
    using copperwick::LocalDate;
    using copperwick::Uuid;
    std::size_t seed = 0;
    copperwick::combine(seed, std::hash<LocalDate>{}(filter.span.start));
    copperwick::combine(seed, std::hash<LocalDate>{}(filter.span.end));
    // The sets iterate in id order, so equal sets hash alike.
    copperwick::combine(seed, filter.personIDs.size());
    for (const auto& id : filter.personIDs)
        copperwick::combine(seed, std::hash<Uuid>{}(id));
    copperwick::combine(seed, filter.accountIDs.size());
    for (const auto& id : filter.accountIDs)
        copperwick::combine(seed, std::hash<Uuid>{}(id));
    copperwick::combine(seed, std::hash<std::string>{}(filter.currency));
    copperwick::combine(seed, filter.wholeHousehold);
    copperwick::combine(seed, filter.includeShared);
    copperwick::combine(seed, filter.includeUnassigned);
    copperwick::combine(seed, static_cast<std::size_t>(filter.peopleMode));
    return seed;
}
