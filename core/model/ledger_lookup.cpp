#include "core/model/ledger_lookup.h"

#include "core/model/text.h"

namespace copperwick {

namespace {

// A text that reads as an id names by id alone: a record called like an id
// of another is never found by its name instead.
template <typename Record>
const Record* byIDOrName(const SharedVector<Record>& records, std::string_view nameOrID) {
    const std::string_view wanted = text::trimmed(nameOrID);
    const auto id = Uuid::parse(wanted);
    for (const auto& record : records) {
        if (id ? record.id == *id : text::equalsIgnoringCase(record.name, wanted))
            return &record;
    }
    return nullptr;
}

}  // namespace

const Account* findAccount(const Ledger& ledger, std::string_view nameOrID) {
    return byIDOrName(ledger.accounts, nameOrID);
}

const Person* findPerson(const Ledger& ledger, std::string_view nameOrID) {
    return byIDOrName(ledger.people, nameOrID);
}

const LedgerCategory* findCategory(const Ledger& ledger, std::string_view nameOrID) {
    return byIDOrName(ledger.categories, nameOrID);
}

const Merchant* findMerchant(const Ledger& ledger, std::string_view nameOrID) {
    const std::string_view wanted = text::trimmed(nameOrID);
    if (const auto id = Uuid::parse(wanted))
        return ledger.merchant(*id);
    return ledger.merchantNamed(wanted);
}

const Rule* findRule(const Ledger& ledger, std::string_view nameOrID) {
    return byIDOrName(ledger.rules, nameOrID);
}

std::optional<SpendingAssignment> findOwner(const Ledger& ledger, std::string_view who) {
    const std::string word = text::lowercased(text::trimmed(who));
    if (word == "shared")
        return SpendingAssignment::shared();
    if (word == "unassigned")
        return SpendingAssignment::unassigned();
    if (const Person* person = findPerson(ledger, who))
        return SpendingAssignment::person(person->id);
    return std::nullopt;
}

}  // namespace copperwick
