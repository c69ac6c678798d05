#pragma once

// Why something a person typed or chose was refused (a manual transaction, a
// cash move, a correction, a split, a record of the household, a setting, a
// rule, a decision), in the words the person reads. Thrown before anything
// is changed, so a refused entry leaves the ledger as it was.
//
// Each case has its own words; a refusal that names what was typed ("There
// is already a category called Dining.") carries its own words instead, and
// keeps the case so that a caller can tell the refusals apart.

#include <cstdint>
#include <stdexcept>
#include <string>
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
        name,            // a record's name is blank
        nameTaken,       // another record of the kind has the name, in any case
        currency,        // not three letters
        lastFour,        // not four digits
        users,           // someone who isn't in the household
        timeZone,        // a zone the calendar doesn't know
        paymentService,  // a service Copperwick doesn't track
        pattern,         // no bank text to look for
        invalidPattern,  // a pattern that doesn't compile, or is too slow to use
        choice,          // an answer not offered for the payment's direction
        budget,          // a budget that isn't an amount of zero or more
        entryForm,       // the entry sheet's date or amount
        walletForm,      // the new wallet sheet's name, date or opening cash
        note,            // a report note with no one-click answer
    };

    explicit EntryError(Case c) : std::runtime_error(std::string(text(c))), m_case(c) {}
    EntryError(Case c, const std::string& words) : std::runtime_error(words), m_case(c) {}

    [[nodiscard]] Case kind() const { return m_case; }
    [[nodiscard]] static std::string_view text(Case c);

  private:
    Case m_case;
};

// What an entry may carry: not zero, and no more than the program reads.
[[nodiscard]] bool isEnterableAmount(int64_t amount);

}  // namespace copperwick
