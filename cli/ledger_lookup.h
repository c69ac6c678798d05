#pragma once

// Finding the records a person names on the command line: by id, or by name
// ignoring case.

#include <string_view>

#include "core/model/ledger.h"
#include "core/model/text.h"

namespace copperwick::cli {

inline const Account* findAccount(const Ledger& ledger, std::string_view nameOrID) {
    if (const auto id = Uuid::parse(nameOrID))
        return ledger.account(*id);
    for (const auto& account : ledger.accounts) {
        if (text::equalsIgnoringCase(account.name, nameOrID))
            return &account;
    }
    return nullptr;
}

inline const Person* findPerson(const Ledger& ledger, std::string_view nameOrID) {
    if (const auto id = Uuid::parse(nameOrID))
        return ledger.person(*id);
    for (const auto& person : ledger.people) {
        if (text::equalsIgnoringCase(person.name, nameOrID))
            return &person;
    }
    return nullptr;
}

inline const LedgerCategory* findCategory(const Ledger& ledger, std::string_view nameOrID) {
    if (const auto id = Uuid::parse(nameOrID))
        return ledger.category(*id);
    return ledger.categoryNamed(nameOrID);
}

inline const Merchant* findMerchant(const Ledger& ledger, std::string_view nameOrID) {
    if (const auto id = Uuid::parse(nameOrID))
        return ledger.merchant(*id);
    return ledger.merchantNamed(nameOrID);
}

}  // namespace copperwick::cli
