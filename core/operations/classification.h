#pragma once

// How a person decides what transactions are, and how every other transaction
// is brought back in line with what has been decided.
//
// A decision is stored on the transactions it was made for, marked
// `confirmed` so that no automatic matching touches them again. When the
// person asks to remember it, the bank text's merchant key is learned by the
// merchant, and the matcher spreads the decision to every transaction that
// isn't protected. Each function changes the given ledger and returns what it
// changed; the undoable ones also record their step in the history.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

struct Classification {
    std::vector<Uuid> ids;
    std::optional<std::string> merchantName;  // empty keeps each transaction's merchant
    TransactionKind kind = TransactionKind::unknown;
    std::optional<Uuid> categoryID;  // dropped for transfers and unknowns
    bool remember = false;
    std::string label;  // what Undo shows
};

// What the review card refuses to save: spending or income with no category
// of the ledger. Throws EntryError (category).
void checkClassification(const Ledger& ledger, const Classification& decision);

// One undoable step. Also withdraws everywhere a model filing the decision
// contradicts, and re-pairs transfers.
[[nodiscard]] LedgerDelta classify(Ledger& ledger, const Classification& decision, Instant now);

// Runs the matcher again over the given transactions, or every one when
// absent, leaving confirmed, voided and replaced ones alone. Writes only
// what changed. Not undoable by itself: it belongs to the step that called it.
[[nodiscard]] LedgerDelta rematch(Ledger& ledger,
                                  const std::optional<std::vector<Uuid>>& ids = std::nullopt);

// Adds new transactions to the ledger, each filed as `rematch` would file it
// once added, and pairs transfers. Each line is made and stored once, which
// for an import of many lines is most of the work saved.
[[nodiscard]] LedgerDelta addMatched(Ledger& ledger,
                                     std::vector<std::shared_ptr<LedgerTransaction>> lines);

// Takes the protection off and lets the matcher decide again; undoable.
[[nodiscard]] LedgerDelta resetToAutomatic(Ledger& ledger, const std::vector<Uuid>& ids,
                                           Instant now);

// Accepts what waits for an OK: one undoable step per distinct suggestion.
[[nodiscard]] LedgerDelta approveSuggestions(Ledger& ledger, const std::vector<Uuid>& ids,
                                             bool remember, Instant now);

// Offers a filing for approval on transactions nobody has filed; a filed or
// confirmed transaction can't be given one. Not undoable: nothing is decided yet.
[[nodiscard]] LedgerDelta setSuggestion(Ledger& ledger, const Suggestion& suggestion,
                                        const std::string& evidence, const std::vector<Uuid>& ids);

// A filing in the words the screens use, "Blue Bottle, Dining, Spending": the
// merchant and the category where there are, then the kind.
[[nodiscard]] std::string filingText(const Ledger& ledger,
                                     const std::optional<std::string>& merchantName,
                                     const std::optional<Uuid>& categoryID, TransactionKind kind);

// How the transaction stands filed now, in the same words.
[[nodiscard]] std::string filingText(const Ledger& ledger, const LedgerTransaction& transaction);

// The heading over a suggestion: "Local AI suggests" for the on-device model's,
// "Suggested" for every other.
[[nodiscard]] std::string_view suggestionHeading(const Suggestion& suggestion);

// Voided transactions count nowhere. Undoable, unless nothing changed.
[[nodiscard]] LedgerDelta setVoided(Ledger& ledger, const std::vector<Uuid>& ids, bool voided,
                                    const std::string& label, Instant now);

// Undoable; the same note again changes nothing.
[[nodiscard]] LedgerDelta setNote(Ledger& ledger, const std::string& note, const Uuid& id,
                                  Instant now);

}  // namespace copperwick
