#include "core/review/review_decision.h"

#include "core/model/text.h"
#include "core/operations/classification.h"
#include "core/reports/payment_service_detection.h"

namespace copperwick::ReviewDecisions {

namespace {

constexpr std::string_view kNameMerchant = "Enter the merchant's name.";
constexpr std::string_view kChooseCategory = "Choose a category that matches spending or income.";
constexpr std::string_view kChoosePurpose = "Choose what this was for.";

TransactionKind directionKind(const ReviewGroup& group) {
    return group.isMoneyIn ? TransactionKind::income : TransactionKind::expense;
}

bool fits(const Ledger& ledger, const std::optional<Uuid>& categoryID,
          std::optional<CategoryGroup> group) {
    const LedgerCategory* category = ledger.category(categoryID);
    return category && group && category->group == *group;
}

}  // namespace

bool asksPurpose(const ReviewGroup& group) {
    return requiresPurpose(group.example);
}

std::optional<CategoryGroup> categoryGroup(TransactionKind kind) {
    switch (kind) {
        case TransactionKind::expense:
            return CategoryGroup::expense;
        case TransactionKind::income:
            return CategoryGroup::income;
        case TransactionKind::transfer:
        case TransactionKind::unknown:
            break;
    }
    return std::nullopt;
}

ReviewDecision initial(const Ledger& ledger, const ReviewGroup& group) {
    ReviewDecision decision;
    decision.merchantName = group.displayName;
    decision.kind = directionKind(group);
    if (asksPurpose(group))
        return decision;

    if (group.suggestion && group.suggestion->kind != TransactionKind::unknown) {
        const Suggestion& suggestion = *group.suggestion;
        if (suggestion.merchantName && !text::trimmed(*suggestion.merchantName).empty())
            decision.merchantName = *suggestion.merchantName;
        decision.kind = suggestion.kind;
        decision.categoryID = suggestion.categoryID;
    } else if (const Merchant* merchant = ledger.merchant(group.merchantID)) {
        if (merchant->kind == TransactionKind::transfer) {
            decision.kind = TransactionKind::transfer;
        } else if (const LedgerCategory* category = ledger.category(merchant->categoryID)) {
            decision.kind = filingKind(*category);
            decision.categoryID = category->id;
        }
    }
    if (!fits(ledger, decision.categoryID, categoryGroup(decision.kind)))
        decision.categoryID.reset();
    return decision;
}

std::optional<ReviewRefusal> refusal(const Ledger& ledger, const ReviewGroup& group,
                                     const ReviewDecision& decision) {
    if (asksPurpose(group)) {
        if (!decision.purpose)
            return ReviewRefusal{ReviewField::purpose, std::string(kChoosePurpose)};
        const ZelleChoiceTraits& purpose = traits(*decision.purpose);
        if (purpose.needsCategory && !fits(ledger, decision.categoryID, purpose.categoryGroup))
            return ReviewRefusal{ReviewField::category, std::string(kChooseCategory)};
        return std::nullopt;
    }
    const auto wanted = categoryGroup(decision.kind);
    if (wanted && text::trimmed(decision.merchantName).empty())
        return ReviewRefusal{ReviewField::merchant, std::string(kNameMerchant)};
    if (decision.kind != TransactionKind::transfer && !fits(ledger, decision.categoryID, wanted))
        return ReviewRefusal{ReviewField::category, std::string(kChooseCategory)};
    return std::nullopt;
}

std::string label(const ReviewGroup& group) {
    return "Review " + group.displayName;
}

LedgerDelta decide(Ledger& ledger, const ReviewGroup& group, const ReviewDecision& decision,
                   Instant now) {
    const std::string trimmed(text::trimmed(decision.merchantName));
    const std::optional<std::string> merchantName =
        trimmed.empty() ? std::nullopt : std::optional(trimmed);
    if (asksPurpose(group) && decision.purpose) {
        ZelleDecision zelle;
        zelle.ids = group.transactionIDs;
        zelle.merchantName = merchantName;
        zelle.choice = *decision.purpose;
        if (traits(*decision.purpose).needsCategory)
            zelle.categoryID = decision.categoryID;
        zelle.remember = decision.remember;
        zelle.label = label(group);
        return classifyZelle(ledger, zelle, now);
    }
    Classification classification;
    classification.ids = group.transactionIDs;
    classification.merchantName = merchantName;
    classification.kind = decision.kind;
    classification.categoryID = decision.categoryID;
    classification.remember = decision.remember;
    classification.label = label(group);
    return classify(ledger, classification, now);
}

}  // namespace copperwick::ReviewDecisions
