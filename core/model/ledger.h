#pragma once

// All records of one data file as one value.
//
// A Ledger is a plain value: copy it, change the copy, and the original never
// sees it. Copies are cheap because every container shares its storage until
// written (shared_containers.h); that is what lets each change run on a copy
// while the live value stays untouched until the change is saved. There are no
// pointers between records, only ids. Lookups return a pointer into the
// ledger, valid until the ledger is next changed, or null when absent.

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/account.h"
#include "core/model/ai_filing.h"
#include "core/model/budget.h"
#include "core/model/change_set.h"
#include "core/model/import_batch.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_category.h"
#include "core/model/ledger_settings.h"
#include "core/model/ledger_transaction.h"
#include "core/model/merchant.h"
#include "core/model/person.h"
#include "core/model/rule.h"
#include "core/model/shared_containers.h"
#include "core/model/uuid.h"

namespace copperwick {

struct Ledger {
    static constexpr int kMaximumUndoSteps = 50;

    SharedVector<Person> people;
    SharedVector<Account> accounts;
    SharedVector<LedgerCategory> categories;
    SharedMap<Uuid, Merchant> merchants;
    SharedVector<Rule> rules;
    SharedMap<Uuid, LedgerTransaction> transactions;  // voided and superseded ones too
    SharedVector<ImportBatch> batches;                // oldest first
    SharedVector<Budget> budgets;
    SharedVector<ImportProfile> profiles;  // layouts the person taught
    SharedVector<ChangeSet> changes;       // oldest first; the last is the next to undo
    SharedMap<std::string, AIFiling> aiFilings;
    Box<LedgerSettings> settings;

    // A new data file's contents: the starter categories and default settings.
    [[nodiscard]] static Ledger starter();

    [[nodiscard]] const Person* person(const std::optional<Uuid>& id) const;
    [[nodiscard]] const Account* account(const std::optional<Uuid>& id) const;
    [[nodiscard]] const LedgerCategory* category(const std::optional<Uuid>& id) const;
    [[nodiscard]] const Merchant* merchant(const std::optional<Uuid>& id) const;
    [[nodiscard]] const LedgerTransaction* transaction(const std::optional<Uuid>& id) const;

    // The first category, in order, whose name equals `name` ignoring case.
    [[nodiscard]] const LedgerCategory* categoryNamed(std::string_view name) const;
    // Of the merchants whose name equals `name` ignoring case, the one with the
    // smallest id, so that the answer doesn't depend on the table's order.
    [[nodiscard]] const Merchant* merchantNamed(std::string_view name) const;

    // Active transactions in no set order; callers sort.
    [[nodiscard]] std::vector<const LedgerTransaction*> activeTransactions() const;
    [[nodiscard]] std::size_t reviewCount() const;
    // Filed by the local model and not yet seen by a person.
    [[nodiscard]] std::vector<const LedgerTransaction*> aiFiledUnchecked() const;
    [[nodiscard]] std::set<std::string> rejectedAIKeys() const;
    // The key under which the model's filing for a merchant key is stored:
    // the key itself, else the longest stored key it extends by a word. A
    // bare short word ("AMC") never covers a longer text.
    [[nodiscard]] std::optional<std::string> aiFilingKey(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> undoLabel() const;

    friend bool operator==(const Ledger&, const Ledger&) = default;
};

}  // namespace copperwick
