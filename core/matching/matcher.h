#pragma once

// Decides what one transaction is, and says why in words the person reads.
//
// A Matcher is a snapshot of the household's rules, merchants, categories,
// accounts, people and model filings, compiled once and then used for any
// number of transactions without touching the ledger. The merchant and the
// classification (kind and category) are separate slots: the stages run in a
// fixed order, person's knowledge before built-in knowledge, and a slot once
// filled is never overwritten.
//
// Copies share one memo of the texts, directory hits and similarity searches
// already worked out, so a matcher is used from one thread at a time.

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/matching/builtin_knowledge.h"
#include "core/matching/merchant_directory.h"
#include "core/matching/merchant_text.h"
#include "core/matching/rule_pattern.h"
#include "core/model/ledger.h"

namespace copperwick {

struct MatchResult {
    TransactionKind kind = TransactionKind::unknown;
    std::optional<Uuid> categoryID;
    std::optional<Uuid> merchantID;
    // A merchant the caller creates; set only when `merchantID` isn't.
    std::optional<std::string> newMerchantName;
    MatchMethod method = MatchMethod::none;
    std::string evidence = "No rule or known merchant matched.";
    ReviewState review = ReviewState::unresolved;
    std::optional<Suggestion> suggestion;

    // Where every match starts: nothing known.
    [[nodiscard]] static MatchResult unresolved() { return {}; }

    friend bool operator==(const MatchResult&, const MatchResult&) = default;
};

// The person's rules in the order they run: by their place in the settings'
// order, rules missing from it last, equal places oldest first.
[[nodiscard]] std::vector<Rule> orderedRules(const Ledger& ledger);

class Matcher {
  public:
    struct SimilarMerchant {
        Merchant merchant;
        int score = 0;
    };

    Matcher(const std::vector<Rule>& rules, const std::vector<Merchant>& merchants,
            const std::vector<LedgerCategory>& categories, const std::vector<Account>& accounts,
            const std::vector<Person>& people, std::set<std::string> disabledBuiltIns,
            const std::vector<AIFiling>& aiFilings,
            const MerchantDirectory& directory = MerchantDirectory::shared());
    explicit Matcher(const Ledger& ledger,
                     const MerchantDirectory& directory = MerchantDirectory::shared());

    // Reads the transaction's description, amount, account, bank merchant and
    // bank category; nothing else.
    [[nodiscard]] MatchResult match(const LedgerTransaction& transaction) const;

    [[nodiscard]] const MerchantText& text(const std::string& raw) const;
    // Reads many descriptions ahead of matching, on every core: reading the
    // text is most of the work of a first match and needs nothing else. The
    // results line up with `raws` and live as long as the matcher.
    [[nodiscard]] std::vector<const MerchantText*> prepareTexts(
        const std::vector<const std::string*>& raws) const;
    // `match` with the description already read by this matcher's `text` or
    // `prepareTexts`, and by nothing else: what it makes of the text is kept
    // beside it.
    [[nodiscard]] MatchResult match(const LedgerTransaction& transaction,
                                    const MerchantText& text) const;
    [[nodiscard]] const Rule* firstMatchingRule(const LedgerTransaction& transaction,
                                                std::string_view normalized) const;
    [[nodiscard]] const Merchant* learnedMerchant(std::string_view key) const;
    [[nodiscard]] std::optional<SimilarMerchant> similarLearned(const std::string& key) const;
    [[nodiscard]] const std::optional<MerchantDirectory::Hit>& directoryMatch(
        const std::string& normalized) const;
    [[nodiscard]] const AIFiling* aiFiling(std::string_view key) const;
    [[nodiscard]] std::optional<TransactionKind> kindFor(
        const std::optional<Uuid>& categoryID) const;

  private:
    struct CompiledRule {
        Rule rule;
        std::string upperPattern;
        // Only for regular-expression rules that are usable; used by one thread.
        std::shared_ptr<PatternMatcher> regex;
    };
    struct HouseholdPhrase {
        std::string phrase;
        std::size_t person = 0;  // index into m_people
    };
    struct Memo;
    struct TextAnswers;
    struct ReadText;

    [[nodiscard]] bool ruleMatches(const CompiledRule& compiled,
                                   const LedgerTransaction& transaction,
                                   std::string_view normalized) const;
    [[nodiscard]] const std::optional<MerchantDirectory::Closest>& closest(
        const std::string& key) const;
    // BuiltInRuleSet::match with this matcher's disabled rules, asked once
    // per text, direction and account type.
    [[nodiscard]] const BuiltInRule* builtInRule(TextAnswers& answers, std::string_view normalized,
                                                 int64_t amount,
                                                 std::optional<AccountType> accountType) const;
    [[nodiscard]] const std::optional<MerchantDirectory::Hit>& directoryMatch(
        TextAnswers& answers, const std::string& normalized) const;
    [[nodiscard]] std::optional<Uuid> merchantIDNamed(std::string_view name) const;
    [[nodiscard]] std::optional<Uuid> categoryIDNamed(std::string_view name) const;

    std::vector<CompiledRule> m_compiledRules;
    std::unordered_map<Uuid, Merchant> m_merchantsByID;
    std::unordered_map<std::string, Uuid> m_merchantIDByKey;
    std::unordered_map<std::string, Uuid> m_merchantIDByName;
    std::vector<std::pair<std::string, Uuid>> m_prefixKeys;
    std::unordered_map<Uuid, LedgerCategory> m_categoriesByID;
    std::unordered_map<std::string, Uuid> m_categoryIDByName;
    std::unordered_map<Uuid, Account> m_accountsByID;
    std::vector<Person> m_people;
    std::vector<HouseholdPhrase> m_household;
    std::set<std::string> m_disabledBuiltIns;
    const MerchantDirectory* m_directory;
    std::unordered_map<std::string, AIFiling> m_aiFilingsByKey;
    std::vector<std::string> m_aiPrefixKeys;
    std::shared_ptr<Memo> m_memo;
};

}  // namespace copperwick
