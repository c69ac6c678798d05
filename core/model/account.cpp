#include "core/model/account.h"

#include <utility>

namespace copperwick {

Account::Account(Uuid id, std::string name, AccountType type, std::optional<Uuid> personID,
                 std::optional<std::vector<Uuid>> userIDs)
    : id(id), name(std::move(name)), type(type) {
    if (userIDs) {
        setUserIDs(std::move(*userIDs));
    } else if (personID) {
        setUserIDs({*personID});
    }
}

void Account::setUserIDs(std::vector<Uuid> userIDs) {
    m_userIDs = std::move(userIDs);
    m_personID = m_userIDs.size() == 1 ? std::optional<Uuid>(m_userIDs.front()) : std::nullopt;
}

}  // namespace copperwick
