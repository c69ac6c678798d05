#pragma once

// A person's decision on one review group, as the review editor takes it:
// a merchant, a kind and a category, or, for a payment to a person, what the
// money was for. Whether it is complete enough to save, and the one undoable
// step that files every line of the group by it.
//
// Pure functions of values: they run wherever the caller holds the ledger
// copy, and only decide() changes it.

#include <optional>
#include <string>

#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"
#include "core/operations/zelle_choice.h"
#include "core/review/review_queue.h"

namespace copperwick {

// A value; the editor's state between keystrokes.
struct ReviewDecision {
    std::string merchantName;
    TransactionKind kind = TransactionKind::expense;
    std::optional<Uuid> categoryID;
    // What a payment to a person was for; unused for any other group.
    std::optional<ZelleChoice> purpose;
    bool remember = true;

    friend bool operator==(const ReviewDecision&, const ReviewDecision&) = default;
};

// The part of a decision that holds it back.
enum class ReviewField {
    merchant,
    category,
    purpose,
};

// Why a decision can't be saved yet, in the words shown under its field.
struct ReviewRefusal {
    ReviewField field = ReviewField::category;
    std::string words;

    friend bool operator==(const ReviewRefusal&, const ReviewRefusal&) = default;
};

namespace ReviewDecisions {

// Whether the group's bank text is a payment to a person through a service
// such as Zelle, which says neither whom it was for nor what it bought: the
// person is asked what it was for instead of a merchant and category.
[[nodiscard]] bool asksPurpose(const ReviewGroup& group);

// Where the editor starts: the group's suggestion when it has one, else the
// filing of the merchant the lines share, else spending for money out and
// income for money in with no category. A category that has gone or doesn't
// fit the kind is left out. The merchant name is the suggestion's or the
// group's own, and remember is on.
[[nodiscard]] ReviewDecision initial(const Ledger& ledger, const ReviewGroup& group);

// The group of categories a kind files into: none for transfers and for
// what is still unknown.
[[nodiscard]] std::optional<CategoryGroup> categoryGroup(TransactionKind kind);

// Absent when the decision can be saved: a merchant named for spending and
// income, a category of the right group unless it is a transfer, and, for a
// payment to a person, a purpose with its category when it needs one.
[[nodiscard]] std::optional<ReviewRefusal> refusal(const Ledger& ledger, const ReviewGroup& group,
                                                   const ReviewDecision& decision);

// What Undo shows: "Review " and the group's name.
[[nodiscard]] std::string label(const ReviewGroup& group);

// Files every line of the group as one undoable step, through classify, or
// classifyZelle for a payment to a person. The caller checks refusal first.
[[nodiscard]] LedgerDelta decide(Ledger& ledger, const ReviewGroup& group,
                                 const ReviewDecision& decision, Instant now);

}  // namespace ReviewDecisions

}  // namespace copperwick
