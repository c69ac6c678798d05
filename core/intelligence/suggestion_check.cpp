#include "core/intelligence/suggestion_check.h"

#include "core/intelligence/letters.h"
#include "core/matching/merchant_text.h"
#include "core/model/money.h"
#include "core/model/text.h"

namespace copperwick::SuggestionCheck {

std::string redactDigits(std::string_view text) {
    std::string out(text);
    std::size_t at = 0;
    while (at < out.size()) {
        if (out[at] < '0' || out[at] > '9') {
            ++at;
            continue;
        }
        std::size_t end = at;
        while (end < out.size() && out[end] >= '0' && out[end] <= '9')
            ++end;
        if (end - at >= 5)
            out.replace(at, end - at, end - at, '#');
        at = end;
    }
    return out;
}

std::string describe(const LedgerTransaction& transaction, const Ledger& ledger) {
    const MerchantText words(transaction.rawDescription);
    const Account* account = ledger.account(transaction.accountID);
    std::string text = "Bank text: " + redactDigits(words.normalized);
    text += "\nCleaned: " + words.key;
    text += std::string("\nDirection: ") + (transaction.amount < 0 ? "money out" : "money in");
    text += "\nAmount: " +
            Money::format(transaction.amount < 0 ? -transaction.amount : transaction.amount);
    text += "\nAccount type: " + std::string(account ? label(account->type) : "unknown");
    if (words.via)
        text += "\nPaid through: " + *words.via;
    if (transaction.bankMerchant)
        text += "\nBank's merchant name: " + *transaction.bankMerchant;
    if (transaction.bankCategory)
        text += "\nBank's category: " + *transaction.bankCategory;
    return text;
}

std::optional<Suggestion> validate(std::string_view merchant, std::string_view category,
                                   std::string_view kind, const Ledger& ledger, int64_t amount) {
    const std::string kindWord = text::lowercased(text::trimmed(kind));
    TransactionKind filed;
    if (kindWord == "expense" || kindWord == "spending")
        filed = TransactionKind::expense;
    else if (kindWord == "income")
        filed = TransactionKind::income;
    else if (kindWord == "transfer")
        filed = TransactionKind::transfer;
    else
        return std::nullopt;

    std::string name(text::trimmed(merchant));
    const std::string lowerName = text::lowercased(name);
    if (lowerName == "unknown" || lowerName == "none")
        name.clear();
    if (text::characterCount(name) > 40 || name.find('\n') != std::string::npos ||
        text::lowercased(name).find("http") != std::string::npos)
        return std::nullopt;
    if (!name.empty() && letters::count(name) < 2)
        return std::nullopt;

    std::optional<Uuid> categoryID;
    if (filed != TransactionKind::transfer) {
        const LedgerCategory* found = ledger.categoryNamed(text::trimmed(category));
        if (!found || filingKind(*found) != filed)
            return std::nullopt;
        categoryID = found->id;
    }
    // Money that left can't be income; money that came back may be a refund
    // of spending.
    if (amount < 0 && filed == TransactionKind::income)
        return std::nullopt;

    return Suggestion{.merchantName = name.empty() ? std::nullopt : std::optional(name),
                      .categoryID = categoryID,
                      .kind = filed,
                      .source = MatchMethod::ai,
                      .reason = std::string(kReason)};
}

}  // namespace copperwick::SuggestionCheck
