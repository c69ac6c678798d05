#pragma once

// Why an entry typed by hand (a manual transaction, a cash move, a correction,
// a split, a savings goal, an allowance) was refused, in the words the person
// reads. Thrown before anything is changed, so a refused entry leaves the
// ledger as it was.

#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "core/model/enum_text.h"

namespace copperwick {

class EntryError : public std::runtime_error {
  public:
    enum class Case {
        account,
        amount,
        description,
        category,
        unavailable,
        transfer,
        splits,
        reason,
        savingsGoal,
        allowance,
    };

    explicit EntryError(Case c) : std::runtime_error(std::string(text(c))), m_case(c) {}

    [[nodiscard]] Case kind() const { return m_case; }
    [[nodiscard]] static std::string_view text(Case c);

  private:
    Case m_case;
};

// What an entry may carry: not zero, and no more than the program reads.
[[nodiscard]] bool isEnterableAmount(int64_t amount);

}  // namespace copperwick
