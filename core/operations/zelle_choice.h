#pragma once

// What a person-to-person payment was for. A statement line that only says
// money went through Zelle can't be filed from its text, so the person picks
// one of these and each files the payment as the right kind in the right
// category, making "Gifts received" or "Paying each other" on first use.

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "core/model/enum_text.h"
#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

enum class ZelleChoice {
    spending,
    giftSent,
    payingEachOther,
    income,
    sold,
    giftReceived,
    payingMeBack,
    dontCount,
};

template <>
struct EnumTraits<ZelleChoice> {
    static constexpr std::array<std::pair<ZelleChoice, std::string_view>, 8> cases{{
        {ZelleChoice::spending, "spending"},
        {ZelleChoice::giftSent, "giftSent"},
        {ZelleChoice::payingEachOther, "payingEachOther"},
        {ZelleChoice::income, "income"},
        {ZelleChoice::sold, "sold"},
        {ZelleChoice::giftReceived, "giftReceived"},
        {ZelleChoice::payingMeBack, "payingMeBack"},
        {ZelleChoice::dontCount, "dontCount"},
    }};
};

// The fixed traits of each choice. Money in filed as an expense is a refund,
// which is why paying me back is an expense, and why paying each other back
// and forth nets out inside one category in both directions.
struct ZelleChoiceTraits {
    std::string_view label;  // as the question offers it
    TransactionKind kind;
    std::optional<std::string_view> fixedCategoryName;
    bool needsCategory;
    CategoryGroup categoryGroup;
};

[[nodiscard]] const ZelleChoiceTraits& traits(ZelleChoice choice);

// The choices offered for money in, or for money out, in the order shown.
[[nodiscard]] std::vector<ZelleChoice> zelleChoices(bool moneyIn);

struct ZelleDecision {
    std::vector<Uuid> ids;
    std::optional<std::string> merchantName;  // empty keeps each transaction's merchant
    ZelleChoice choice = ZelleChoice::spending;
    std::optional<Uuid> categoryID;  // replaced for choices with a category of their own
    bool remember = true;
    std::string label;  // what Undo shows
};

// Whether the question asks about money in: the first payment decides, and
// only an amount above zero is money in.
[[nodiscard]] bool asksAboutMoneyIn(const Ledger& ledger, const ZelleDecision& decision);

// What the question refuses: a choice it doesn't offer for the direction of
// the first payment (choice), or, for a choice that asks for one, no category
// of the choice's group (category). Throws EntryError.
void checkZelleDecision(const Ledger& ledger, const ZelleDecision& decision);

// Files the payments as the choice says, as one undoable step. A category the
// choice brings into being stays when the step is undone, like any other.
[[nodiscard]] LedgerDelta classifyZelle(Ledger& ledger, const ZelleDecision& decision, Instant now);

}  // namespace copperwick
