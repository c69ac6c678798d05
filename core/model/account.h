#pragma once

// A bank, card or cash account. Written to survive old files: most fields
// have a default when the stored record lacks them.
//
// `personID` and `userIDs` say the same thing twice, for files from before
// shared accounts: `personID` is the sole user when there is exactly one. The
// two are kept in step through setUserIDs and the constructor, which is why
// they are private.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/spending_assignment.h"
#include "core/model/uuid.h"

namespace copperwick {

class Account {
  public:
    Account() = default;
    // Without `userIDs`, the users are [personID] when there is a person, else none.
    Account(Uuid id, std::string name, AccountType type,
            std::optional<Uuid> personID = std::nullopt,
            std::optional<std::vector<Uuid>> userIDs = std::nullopt);

    Uuid id;
    std::string name;
    AccountType type = AccountType::checking;
    std::string currency = "USD";
    std::optional<std::string> last4;
    std::optional<std::string> profileID;
    bool flipSigns = false;
    bool isArchived = false;
    bool rarelyUsed = false;
    std::optional<LocalDate> upToDateThrough;
    std::optional<LocalDate> historyStartsOn;
    bool isUnassigned = false;
    std::map<std::string, SpendingAssignment> cardAssignments;

    [[nodiscard]] const std::optional<Uuid>& personID() const { return m_personID; }
    [[nodiscard]] const std::vector<Uuid>& userIDs() const { return m_userIDs; }
    // Also sets personID to the single user, or clears it when there isn't exactly one.
    void setUserIDs(std::vector<Uuid> userIDs);

    friend bool operator==(const Account&, const Account&) = default;

  private:
    std::optional<Uuid> m_personID;
    std::vector<Uuid> m_userIDs;
};

}  // namespace copperwick
