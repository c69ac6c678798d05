#include "core/operations/classification.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "core/matching/matcher.h"
#include "core/matching/merchant_key_index.h"
#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/matching/transfer_pairing.h"
#include "core/model/text.h"
#include "core/operations/change_history.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

std::optional<Uuid> categoryToApply(TransactionKind kind, const std::optional<Uuid>& categoryID) {
    if (kind == TransactionKind::transfer || kind == TransactionKind::unknown)
        return std::nullopt;
    return categoryID;
}

// The transactions matching could still change whose key a learned or
// rejected key covers. They are looked up in `before`, the ledger as the
// decision found it, whose chunks are the live ledger's and already in the key
// index; a decision changes no bank text, so both cover the same lines. What
// each line holds now is read from `ledger`.
std::vector<Uuid> unprotectedCoveredBy(const Ledger& before, const Ledger& ledger,
                                       const std::vector<std::string>& keys,
                                       const std::unordered_set<Uuid>& excluded,
                                       bool onlyModelFiled) {
    std::vector<Uuid> ids;
    for (const LedgerTransaction* found : MerchantKeyIndex::covered(before.transactions, keys)) {
        if (excluded.contains(found->id))
            continue;
        const LedgerTransaction* transaction = ledger.transaction(found->id);
        if (!transaction || !transaction->isActive())
            continue;
        if (onlyModelFiled) {
            if (transaction->method != MatchMethod::ai ||
                transaction->review != ReviewState::automatic)
                continue;
        } else if (transaction->review == ReviewState::confirmed) {
            continue;
        }
        ids.push_back(transaction->id);
    }
    return ids;
}

std::string_view kindWord(TransactionKind kind) {
    return rawValue(kind);
}

}  // namespace

namespace {

// Names to merchant ids, built on first need: several results may name the
// same new merchant, and it must be created once.
class MerchantsByName {
  public:
    MerchantsByName(Ledger& ledger, LedgerDelta& delta) : m_ledger(ledger), m_delta(delta) {}

    Uuid idFor(const std::string& name) {
        if (!m_ids) {
            m_ids.emplace();
            for (const auto& merchant : m_ledger.merchants) {
                auto [it, fresh] = m_ids->try_emplace(text::lowercased(merchant.name), merchant.id);
                if (!fresh && merchant.id < it->second)
                    it->second = merchant.id;
            }
        }
        const auto lower = text::lowercased(name);
        if (const auto it = m_ids->find(lower); it != m_ids->end())
            return it->second;
        const Merchant created{.id = Uuid::random(), .name = name};
        m_ledger.merchants.set(created.id, created);
        m_delta.change(RecordKind::merchant, created.id);
        m_ids->emplace(lower, created.id);
        return created.id;
    }

  private:
    Ledger& m_ledger;
    LedgerDelta& m_delta;
    std::optional<std::unordered_map<std::string, Uuid>> m_ids;
};

bool isMatched(const LedgerTransaction& transaction) {
    return transaction.isActive() && transaction.review != ReviewState::confirmed;
}

// Runs the matcher over `lines`, in the order given, and calls
// `take(line, result)` for each one whose filing changes.
template <typename Take>
void matchEach(Ledger& ledger, const std::vector<const LedgerTransaction*>& lines,
               LedgerDelta& delta, Take&& take) {
    const Matcher matcher(ledger);
    std::vector<const std::string*> descriptions;
    descriptions.reserve(lines.size());
    for (const LedgerTransaction* transaction : lines)
        descriptions.push_back(&transaction->rawDescription);
    const auto texts = matcher.prepareTexts(descriptions);
    MerchantsByName merchants(ledger, delta);

    for (std::size_t line = 0; line < lines.size(); ++line) {
        const LedgerTransaction& current = *lines[line];
        MatchResult result = matcher.match(current, *texts[line]);

        // A pair stands when the text explains nothing. A filing or a
        // suggestion for the person takes its place like on any other line,
        // and the pairing at the end decides what becomes of the partner.
        if (result.review == ReviewState::unresolved &&
            current.method == MatchMethod::transferPair && current.transferPairID)
            continue;
        if (!result.merchantID && result.newMerchantName)
            result.merchantID = merchants.idFor(*result.newMerchantName);
        // The model's suggestion keeps waiting for the person.
        const bool keepsModelSuggestion = result.review == ReviewState::unresolved &&
                                          current.suggestion &&
                                          current.suggestion->source == MatchMethod::ai;
        if (keepsModelSuggestion) {
            result.method = MatchMethod::ai;
            result.review = ReviewState::suggested;
            result.evidence = current.evidence;
            result.suggestion = current.suggestion.optional();
        }
        // Compared before copying: most lines of a full rematch don't change.
        if (current.kind == result.kind && current.categoryID == result.categoryID &&
            current.merchantID == result.merchantID && current.method == result.method &&
            current.review == result.review && current.evidence == result.evidence &&
            current.suggestion == result.suggestion)
            continue;
        take(line, std::move(result));
    }
}

void file(LedgerTransaction& transaction, MatchResult&& result) {
    transaction.kind = result.kind;
    transaction.categoryID = result.categoryID;
    transaction.merchantID = result.merchantID;
    transaction.method = result.method;
    transaction.evidence = std::move(result.evidence);
    transaction.review = result.review;
    transaction.suggestion = std::move(result.suggestion);
}

// By id, so that merchants are created in the same order on every run.
void sortByID(std::vector<const LedgerTransaction*>& lines) {
    std::sort(lines.begin(), lines.end(),
              [](const LedgerTransaction* a, const LedgerTransaction* b) { return a->id < b->id; });
}

}  // namespace

LedgerDelta rematch(Ledger& ledger, const std::optional<std::vector<Uuid>>& ids) {
    // A pointer stays valid until its own record is replaced, which happens
    // only once we are done with it.
    std::vector<const LedgerTransaction*> lines;
    const auto consider = [&](const LedgerTransaction& transaction) {
        if (isMatched(transaction))
            lines.push_back(&transaction);
    };
    if (ids) {
        for (const auto& id : *ids) {
            if (const LedgerTransaction* transaction = ledger.transaction(id))
                consider(*transaction);
        }
    } else {
        lines.reserve(ledger.transactions.size());
        for (const auto& transaction : ledger.transactions)
            consider(transaction);
    }
    sortByID(lines);
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());

    LedgerDelta delta;
    matchEach(ledger, lines, delta, [&](std::size_t line, MatchResult&& result) {
        LedgerTransaction updated = *lines[line];
        file(updated, std::move(result));
        const Uuid id = updated.id;
        ledger.transactions.set(id, std::move(updated));
        delta.change(RecordKind::transaction, id);
    });
    delta.merge(pairTransfers(ledger));
    return delta;
}

LedgerDelta addMatched(Ledger& ledger, std::vector<std::shared_ptr<LedgerTransaction>> lines) {
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (isMatched(*lines[i]))
            order.push_back(i);
    }
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return lines[a]->id < lines[b]->id; });
    std::vector<const LedgerTransaction*> matched;
    matched.reserve(order.size());
    for (const std::size_t i : order)
        matched.push_back(lines[i].get());

    LedgerDelta delta;
    matchEach(ledger, matched, delta, [&](std::size_t line, MatchResult&& result) {
        file(*lines[order[line]], std::move(result));
    });
    delta.changed[RecordKind::transaction].reserve(lines.size());
    std::vector<std::pair<Uuid, std::shared_ptr<const LedgerTransaction>>> records;
    records.reserve(lines.size());
    for (auto& transaction : lines) {
        const Uuid id = transaction->id;
        records.emplace_back(id, std::move(transaction));
        delta.change(RecordKind::transaction, id);
    }
    ledger.transactions.setShared(std::move(records));
    delta.merge(pairTransfers(ledger));
    return delta;
}

LedgerDelta classify(Ledger& ledger, const Classification& decision, Instant now) {
    const Ledger original = ledger;
    LedgerDelta delta;
    const std::unordered_set<Uuid> chosen(decision.ids.begin(), decision.ids.end());

    const auto name = std::string(
        text::trimmedSpaces(decision.merchantName ? *decision.merchantName : std::string()));
    std::optional<Uuid> merchantID;
    if (!name.empty()) {
        if (const Merchant* existing = ledger.merchantNamed(name)) {
            merchantID = existing->id;
        } else {
            // Locked against tidying when the person typed a name the bank
            // text wouldn't give by itself.
            const bool fromBankText =
                std::any_of(decision.ids.begin(), decision.ids.end(), [&](const Uuid& id) {
                    const LedgerTransaction* transaction = ledger.transaction(id);
                    return transaction &&
                           MerchantText::titleCase(MerchantKeys::of(transaction->rawDescription)) ==
                               name;
                });
            const Merchant created{.id = Uuid::random(), .name = name, .nameLocked = !fromBankText};
            ledger.merchants.set(created.id, created);
            delta.change(RecordKind::merchant, created.id);
            merchantID = created.id;
        }
    }

    const auto category = categoryToApply(decision.kind, decision.categoryID);
    std::set<std::string> rejectedKeys;
    std::vector<std::string> keys;
    for (const auto& id : decision.ids) {
        const LedgerTransaction* current = ledger.transaction(id);
        if (!current)
            continue;
        LedgerTransaction updated = *current;
        if (updated.kind != decision.kind || updated.categoryID != category)
            updated.splits.reset();
        const auto key = MerchantKeys::of(updated.rawDescription);
        if (updated.method == MatchMethod::ai && updated.review == ReviewState::automatic) {
            const bool differs = updated.kind != decision.kind || updated.categoryID != category ||
                                 (merchantID && updated.merchantID != merchantID);
            if (differs) {
                if (auto filingKey = ledger.aiFilingKey(key))
                    rejectedKeys.insert(std::move(*filingKey));
            }
        }
        // A transfer decision keeps the pair; anything else sets the partner free.
        if (updated.transferPairID && decision.kind != TransactionKind::transfer) {
            unpair(ledger, *updated.transferPairID, delta);
            updated.transferPairID.reset();
        }
        updated.kind = decision.kind;
        updated.categoryID = category;
        if (merchantID)
            updated.merchantID = merchantID;
        updated.method = MatchMethod::manual;
        updated.review = decision.kind == TransactionKind::unknown ? ReviewState::unresolved
                                                                   : ReviewState::confirmed;
        updated.suggestion.reset();
        updated.evidence = "Set by you.";
        ledger.transactions.set(id, std::move(updated));
        delta.change(RecordKind::transaction, id);
        if (!key.empty() && std::find(keys.begin(), keys.end(), key) == keys.end())
            keys.push_back(key);
    }

    bool rematchedLast = false;
    if (decision.remember && merchantID && ledger.merchant(merchantID)) {
        std::vector<Uuid> holders;
        for (const auto& merchant : ledger.merchants) {
            if (merchant.id == *merchantID)
                continue;
            const bool holds =
                std::any_of(merchant.keys.begin(), merchant.keys.end(), [&](const std::string& k) {
                    return std::find(keys.begin(), keys.end(), k) != keys.end();
                });
            if (holds)
                holders.push_back(merchant.id);
        }
        // A key belongs to one merchant: learning it here takes it from the others.
        for (const auto& holder : holders) {
            ledger.merchants.update(holder, [&](Merchant& merchant) {
                std::erase_if(merchant.keys, [&](const std::string& k) {
                    return std::find(keys.begin(), keys.end(), k) != keys.end();
                });
            });
            delta.change(RecordKind::merchant, holder);
        }
        ledger.merchants.update(*merchantID, [&](Merchant& merchant) {
            for (const auto& key : keys) {
                if (std::find(merchant.keys.begin(), merchant.keys.end(), key) ==
                    merchant.keys.end())
                    merchant.keys.push_back(key);
            }
            switch (decision.kind) {
                case TransactionKind::expense:
                case TransactionKind::income:
                    // The kind then follows the category's group.
                    merchant.kind.reset();
                    merchant.categoryID = category;
                    break;
                case TransactionKind::transfer:
                    merchant.kind = TransactionKind::transfer;
                    merchant.categoryID.reset();
                    break;
                case TransactionKind::unknown:
                    break;
            }
        });
        delta.change(RecordKind::merchant, *merchantID);
        delta.merge(rematch(ledger, unprotectedCoveredBy(original, ledger, keys, chosen, false)));
        rematchedLast = true;
    }

    if (!rejectedKeys.empty()) {
        rematchedLast = false;
        for (const auto& key : rejectedKeys) {
            const AIFiling* filing = ledger.aiFilings.find(key);
            if (!filing || filing->rejected)
                continue;
            ledger.aiFilings.update(key, [](AIFiling& f) { f.rejected = true; });
            delta.change(RecordKind::aiFiling, key);
        }
        // One correction withdraws the model's filing everywhere it was used.
        const std::vector<std::string> withdrawn(rejectedKeys.begin(), rejectedKeys.end());
        delta.merge(
            rematch(ledger, unprotectedCoveredBy(original, ledger, withdrawn, chosen, true)));
        rematchedLast = true;
    }

    // A rematch ends by pairing transfers; right after one, pairing again
    // could change nothing.
    if (!rematchedLast)
        delta.merge(pairTransfers(ledger));
    delta.merge(record(ledger, changeSetFor(original, delta, decision.label, now)));
    return delta;
}

LedgerDelta resetToAutomatic(Ledger& ledger, const std::vector<Uuid>& ids, Instant now) {
    const Ledger original = ledger;
    LedgerDelta delta;
    for (const auto& id : ids) {
        const bool found = ledger.transactions.update(id, [](LedgerTransaction& transaction) {
            transaction.review = ReviewState::unresolved;
            transaction.method = MatchMethod::none;
            transaction.suggestion.reset();
        });
        if (found)
            delta.change(RecordKind::transaction, id);
    }
    delta.merge(rematch(ledger, ids));
    delta.merge(record(ledger, changeSetFor(original, delta, "Reset to automatic", now)));
    return delta;
}

LedgerDelta approveSuggestions(Ledger& ledger, const std::vector<Uuid>& ids, bool remember,
                               Instant now) {
    // Transactions with the same suggestion are one decision.
    std::map<std::string, std::pair<Suggestion, std::vector<Uuid>>> groups;
    for (const auto& id : ids) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        if (!transaction || !transaction->suggestion)
            continue;
        const Suggestion& suggestion = *transaction->suggestion;
        const auto groupKey = suggestion.merchantName.value_or("") + "|" +
                              std::string(kindWord(suggestion.kind)) + "|" +
                              (suggestion.categoryID ? suggestion.categoryID->text() : "");
        auto [it, fresh] = groups.try_emplace(groupKey, suggestion, std::vector<Uuid>{});
        it->second.second.push_back(id);
    }
    LedgerDelta delta;
    for (const auto& [groupKey, group] : groups) {
        const auto& [suggestion, members] = group;
        delta.merge(classify(ledger,
                             Classification{.ids = members,
                                            .merchantName = suggestion.merchantName,
                                            .kind = suggestion.kind,
                                            .categoryID = suggestion.categoryID,
                                            .remember = remember,
                                            .label = "Approve suggestion"},
                             now));
    }
    return delta;
}

LedgerDelta setSuggestion(Ledger& ledger, const Suggestion& suggestion, const std::string& evidence,
                          const std::vector<Uuid>& ids) {
    LedgerDelta delta;
    for (const auto& id : ids) {
        const LedgerTransaction* current = ledger.transaction(id);
        if (!current || !current->isActive() || !isWaiting(current->review))
            continue;
        ledger.transactions.update(id, [&](LedgerTransaction& transaction) {
            transaction.suggestion = suggestion;
            transaction.method = suggestion.source;
            transaction.review = ReviewState::suggested;
            transaction.evidence = evidence;
        });
        delta.change(RecordKind::transaction, id);
    }
    return delta;
}

LedgerDelta setVoided(Ledger& ledger, const std::vector<Uuid>& ids, bool voided,
                      const std::string& label, Instant now) {
    const Ledger original = ledger;
    LedgerDelta delta;
    for (const auto& id : ids) {
        const LedgerTransaction* current = ledger.transaction(id);
        if (!current || current->voided == voided)
            continue;
        const auto partner = current->transferPairID;
        ledger.transactions.update(id, [&](LedgerTransaction& t) { t.voided = voided; });
        delta.change(RecordKind::transaction, id);
        if (voided && partner)
            unpair(ledger, *partner, delta);
    }
    if (delta.isEmpty())
        return delta;
    delta.merge(pairTransfers(ledger));
    delta.merge(record(ledger, changeSetFor(original, delta, label, now)));
    return delta;
}

LedgerDelta setNote(Ledger& ledger, const std::string& note, const Uuid& id, Instant now) {
    const LedgerTransaction* current = ledger.transaction(id);
    if (!current || current->note == note)
        return {};
    const Ledger original = ledger;
    LedgerDelta delta;
    ledger.transactions.update(id,
                               [&](LedgerTransaction& transaction) { transaction.note = note; });
    delta.change(RecordKind::transaction, id);
    delta.merge(record(ledger, changeSetFor(original, delta, "Edit transaction note", now)));
    return delta;
}

void checkClassification(const Ledger& ledger, const Classification& decision) {
    const bool needsCategory =
        decision.kind == TransactionKind::expense || decision.kind == TransactionKind::income;
    if (needsCategory && !ledger.category(decision.categoryID))
        throw EntryError(EntryError::Case::category);
}

std::string filingText(const Ledger& ledger, const std::optional<std::string>& merchantName,
                       const std::optional<Uuid>& categoryID, TransactionKind kind) {
    std::string text;
    const auto add = [&](std::string_view part) {
        if (!part.empty())
            text += (text.empty() ? "" : ", ") + std::string(part);
    };
    if (merchantName)
        add(*merchantName);
    if (const LedgerCategory* category = ledger.category(categoryID))
        add(category->name);
    add(label(kind));
    return text;
}

std::string filingText(const Ledger& ledger, const LedgerTransaction& transaction) {
    const Merchant* merchant = ledger.merchant(transaction.merchantID);
    return filingText(ledger, merchant ? std::optional(merchant->name) : std::nullopt,
                      transaction.categoryID, transaction.kind);
}

std::string_view suggestionHeading(const Suggestion& suggestion) {
    return suggestion.source == MatchMethod::ai ? "Local AI suggests" : "Suggested";
}

}  // namespace copperwick
