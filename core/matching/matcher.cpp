#include "core/matching/matcher.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <climits>
#include <cstdlib>
#include <map>
#include <thread>
#include <unordered_map>

#include <fmt/format.h>

#include "core/matching/bank_category_map.h"
#include "core/matching/builtin_rule_set.h"
#include "core/matching/key_similarity.h"
#include "core/matching/phrase_search.h"
#include "core/model/text.h"

namespace copperwick {

namespace {

// Finds a text by view, so that a lookup copies nothing.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

}  // namespace

// What the built-in rules and the merchant list make of one normalized text.
// A bank file repeats its texts: a year of a card holds a few hundred shops,
// and each is asked once. The built-in rules' answer hangs on the text, the
// direction of the money and the account's type alone.
struct Matcher::TextAnswers {
    static constexpr std::size_t kAccountTypes = EnumTraits<AccountType>::cases.size();
    // Money out, in or neither, each without an account type or with one.
    static constexpr std::size_t kBuiltInSlots = 3 * (kAccountTypes + 1);
    std::array<const BuiltInRule*, kBuiltInSlots> builtIn{};
    std::bitset<kBuiltInSlots> builtInAsked;
    std::optional<std::optional<MerchantDirectory::Hit>> directory;
};

// A description as read, with the answers for its text beside it: a line
// finds them in the entry it already holds rather than by looking its text up
// again, which for a large import, whose texts outgrow the processor's
// caches, was most of the matching.
struct Matcher::ReadText : MerchantText {
    ReadText() = default;
    explicit ReadText(MerchantText read) : MerchantText(std::move(read)) {}
    mutable TextAnswers answers;
};

struct Matcher::Memo {
    std::unordered_map<std::string, ReadText> texts;
    std::unordered_map<std::string, std::optional<MerchantDirectory::Closest>> closest;
    std::unordered_map<std::string, std::optional<SimilarMerchant>> similar;
    // Answers for texts read some other way: a bank's merchant column.
    std::unordered_map<std::string, TextAnswers, TextHash, std::equal_to<>> answers;

    TextAnswers& answersFor(std::string_view normalized) {
        auto it = answers.find(normalized);
        if (it == answers.end())
            it = answers.emplace(std::string(normalized), TextAnswers{}).first;
        return it->second;
    }
};

namespace {

constexpr int kSimilarMinimum = 88;
constexpr int kSimilarFloor = 83;
constexpr int kSimilarMargin = 5;
constexpr std::string_view kBankMerchantNote = "bank's merchant name";

bool hasTwoWords(std::string_view key) {
    return key.find(' ') != std::string_view::npos;
}

// Longest first, so the first prefix that fits is the most specific one.
bool longerKeyFirst(std::string_view a, std::string_view b) {
    const auto lengthA = text::characterCount(a);
    const auto lengthB = text::characterCount(b);
    if (lengthA != lengthB)
        return lengthA > lengthB;
    return a < b;
}

// `prefix` followed by one blank begins `key`: a learned key applies to a
// longer text only at a word boundary.
bool isWordPrefix(std::string_view prefix, std::string_view key) {
    return key.size() > prefix.size() && key[prefix.size()] == ' ' && key.starts_with(prefix);
}

struct MerchantPick {
    std::optional<Uuid> id;
    std::optional<std::string> name;
    std::string note;
};

struct ClassPick {
    std::optional<TransactionKind> kind;
    std::optional<Uuid> categoryID;
    MatchMethod method = MatchMethod::none;
    std::string note;
};

std::optional<ClassPick> filingOf(const Merchant& merchant) {
    if (!merchant.kind && !merchant.categoryID)
        return std::nullopt;
    return ClassPick{.kind = merchant.kind,
                     .categoryID = merchant.categoryID,
                     .method = MatchMethod::learned,
                     .note = fmt::format("Learned: you filed {} this way before", merchant.name)};
}

template <typename T>
std::vector<T> toVector(const SharedVector<T>& records) {
    return records.toVector();
}

}  // namespace

std::vector<Rule> orderedRules(const Ledger& ledger) {
    std::unordered_map<Uuid, std::size_t> place;
    const auto& order = ledger.settings->ruleOrder;
    for (std::size_t i = 0; i < order.size(); ++i)
        place.emplace(order[i], i);
    const auto placeOf = [&](const Rule& rule) {
        const auto it = place.find(rule.id);
        return it == place.end() ? SIZE_MAX : it->second;
    };
    auto rules = ledger.rules.toVector();
    std::stable_sort(rules.begin(), rules.end(), [&](const Rule& a, const Rule& b) {
        const auto placeA = placeOf(a);
        const auto placeB = placeOf(b);
        if (placeA != placeB)
            return placeA < placeB;
        return a.createdAt < b.createdAt;
    });
    return rules;
}

Matcher::Matcher(const std::vector<Rule>& rules, const std::vector<Merchant>& merchants,
                 const std::vector<LedgerCategory>& categories,
                 const std::vector<Account>& accounts, const std::vector<Person>& people,
                 std::set<std::string> disabledBuiltIns, const std::vector<AIFiling>& aiFilings,
                 const MerchantDirectory& directory)
    : m_people(people),
      m_disabledBuiltIns(std::move(disabledBuiltIns)),
      m_directory(&directory),
      m_memo(std::make_shared<Memo>()) {
    for (const auto& filing : aiFilings) {
        if (filing.rejected || filing.key.empty())
            continue;
        m_aiFilingsByKey.insert_or_assign(filing.key, filing);
    }
    for (const auto& [key, filing] : m_aiFilingsByKey) {
        if (hasTwoWords(key) || text::characterCount(key) > 5)
            m_aiPrefixKeys.push_back(key);
    }
    std::sort(m_aiPrefixKeys.begin(), m_aiPrefixKeys.end(), longerKeyFirst);

    for (const auto& rule : rules) {
        if (!rule.isEnabled || !rule.hasOutcome() || rule.pattern.empty())
            continue;
        CompiledRule compiled{.rule = rule, .upperPattern = MerchantText::normalize(rule.pattern)};
        // A pattern that doesn't compile, or takes too long to match, keeps
        // its place and never matches: the person sees the rule and can mend it.
        if (rule.match == TextMatch::regex &&
            RulePattern::check(rule.pattern) == RulePattern::Verdict::usable)
            compiled.regex = PatternMatcher::make(rule.pattern);
        m_compiledRules.push_back(std::move(compiled));
    }

    // From an unordered map: sort so that the first of two merchants sharing
    // a name or a key is the same on every run.
    std::vector<const Merchant*> sorted;
    sorted.reserve(merchants.size());
    for (const auto& merchant : merchants)
        sorted.push_back(&merchant);
    std::sort(sorted.begin(), sorted.end(), [](const Merchant* a, const Merchant* b) {
        if (a->name != b->name)
            return a->name < b->name;
        return a->id < b->id;
    });
    for (const Merchant* merchant : sorted) {
        m_merchantsByID.insert_or_assign(merchant->id, *merchant);
        m_merchantIDByName.try_emplace(text::lowercased(merchant->name), merchant->id);
        for (const auto& key : merchant->keys) {
            if (key.empty())
                continue;
            const bool fresh = m_merchantIDByKey.try_emplace(key, merchant->id).second;
            if (fresh && (hasTwoWords(key) || text::characterCount(key) >= 6))
                m_prefixKeys.emplace_back(key, merchant->id);
        }
    }
    std::sort(m_prefixKeys.begin(), m_prefixKeys.end(),
              [](const auto& a, const auto& b) { return longerKeyFirst(a.first, b.first); });

    for (const auto& category : categories) {
        m_categoriesByID.insert_or_assign(category.id, category);
        m_categoryIDByName.try_emplace(text::lowercased(category.name), category.id);
    }
    for (const auto& account : accounts)
        m_accountsByID.insert_or_assign(account.id, account);

    for (std::size_t p = 0; p < m_people.size(); ++p) {
        for (const auto& bankName : m_people[p].bankNames) {
            auto phrase = MerchantText::normalize(bankName);
            if (text::characterCount(phrase) <= 3)
                continue;
            m_household.push_back({.phrase = std::move(phrase), .person = p});
        }
    }
    std::stable_sort(m_household.begin(), m_household.end(),
                     [](const HouseholdPhrase& a, const HouseholdPhrase& b) {
                         return a.phrase.size() > b.phrase.size();
                     });
}

Matcher::Matcher(const Ledger& ledger, const MerchantDirectory& directory)
    : Matcher(
          orderedRules(ledger),
          [&] {
              std::vector<Merchant> merchants;
              merchants.reserve(ledger.merchants.size());
              for (const auto& merchant : ledger.merchants)
                  merchants.push_back(merchant);
              return merchants;
          }(),
          toVector(ledger.categories), toVector(ledger.accounts), toVector(ledger.people),
          std::set<std::string>(ledger.settings->disabledBuiltInRules.begin(),
                                ledger.settings->disabledBuiltInRules.end()),
          [&] {
              std::vector<AIFiling> filings;
              for (const auto& filing : ledger.aiFilings)
                  filings.push_back(filing);
              // The store keeps no order; by key, so a clash resolves the same way.
              std::sort(filings.begin(), filings.end(),
                        [](const AIFiling& a, const AIFiling& b) { return a.key < b.key; });
              return filings;
          }(),
          directory) {}

const MerchantText& Matcher::text(const std::string& raw) const {
    auto it = m_memo->texts.find(raw);
    if (it == m_memo->texts.end())
        it = m_memo->texts.emplace(raw, ReadText(MerchantText(raw))).first;
    return it->second;
}

std::vector<const MerchantText*> Matcher::prepareTexts(
    const std::vector<const std::string*>& raws) const {
    std::vector<const MerchantText*> prepared(raws.size());
    // Slots in the memo first (its nodes never move), then the reading.
    std::vector<std::pair<const std::string*, ReadText*>> missing;
    for (std::size_t i = 0; i < raws.size(); ++i) {
        auto [it, fresh] = m_memo->texts.try_emplace(*raws[i]);
        prepared[i] = &it->second;
        if (fresh)
            missing.emplace_back(raws[i], &it->second);
    }
    // Below this a thread costs more than it saves.
    constexpr std::size_t kPerThread = 2'000;
    const std::size_t threads =
        std::clamp<std::size_t>(missing.size() / kPerThread, 1,
                                std::max<std::size_t>(1, std::thread::hardware_concurrency()));
    const auto work = [&](std::size_t first) {
        for (std::size_t i = first; i < missing.size(); i += threads)
            static_cast<MerchantText&>(*missing[i].second) = MerchantText(*missing[i].first);
    };
    std::vector<std::thread> helpers;
    for (std::size_t t = 1; t < threads; ++t)
        helpers.emplace_back(work, t);
    work(0);
    for (auto& helper : helpers)
        helper.join();
    return prepared;
}

bool Matcher::ruleMatches(const CompiledRule& compiled, const LedgerTransaction& transaction,
                          std::string_view normalized) const {
    const Rule& rule = compiled.rule;
    if (!rule.accountIDs.empty() && std::find(rule.accountIDs.begin(), rule.accountIDs.end(),
                                              transaction.accountID) == rule.accountIDs.end()) {
        return false;
    }
    if (rule.direction == AmountDirection::moneyIn && transaction.amount < 1)
        return false;
    if (rule.direction == AmountDirection::moneyOut && transaction.amount >= 0)
        return false;
    // Bounds compare magnitudes, so the sign the person typed doesn't matter.
    const auto magnitude = [](int64_t cents) {
        const auto bits = static_cast<uint64_t>(cents);
        return cents < 0 ? 0 - bits : bits;
    };
    if (rule.minimumAmount && magnitude(transaction.amount) < magnitude(*rule.minimumAmount))
        return false;
    if (rule.maximumAmount && magnitude(transaction.amount) > magnitude(*rule.maximumAmount))
        return false;

    const std::string_view pattern = compiled.upperPattern;
    switch (rule.match) {
        case TextMatch::contains:
            return !pattern.empty() && normalized.find(pattern) != std::string_view::npos;
        case TextMatch::startsWith:
            return !pattern.empty() && normalized.starts_with(pattern);
        case TextMatch::exact:
            return normalized == pattern;
        case TextMatch::regex:
            return compiled.regex && compiled.regex->find(normalized);
    }
    return false;
}

const Rule* Matcher::firstMatchingRule(const LedgerTransaction& transaction,
                                       std::string_view normalized) const {
    for (const auto& compiled : m_compiledRules) {
        if (ruleMatches(compiled, transaction, normalized))
            return &compiled.rule;
    }
    return nullptr;
}

const Merchant* Matcher::learnedMerchant(std::string_view key) const {
    const auto lookup = [&](const Uuid& id) -> const Merchant* {
        const auto it = m_merchantsByID.find(id);
        return it == m_merchantsByID.end() ? nullptr : &it->second;
    };
    if (const auto it = m_merchantIDByKey.find(std::string(key)); it != m_merchantIDByKey.end())
        return lookup(it->second);
    for (const auto& [prefix, id] : m_prefixKeys) {
        if (isWordPrefix(prefix, key))
            return lookup(id);
    }
    return nullptr;
}

const AIFiling* Matcher::aiFiling(std::string_view key) const {
    if (const auto it = m_aiFilingsByKey.find(std::string(key)); it != m_aiFilingsByKey.end())
        return &it->second;
    for (const auto& prefix : m_aiPrefixKeys) {
        if (isWordPrefix(prefix, key))
            return &m_aiFilingsByKey.at(prefix);
    }
    return nullptr;
}

std::optional<TransactionKind> Matcher::kindFor(const std::optional<Uuid>& categoryID) const {
    if (!categoryID)
        return std::nullopt;
    const auto it = m_categoriesByID.find(*categoryID);
    if (it == m_categoriesByID.end())
        return std::nullopt;
    return filingKind(it->second);
}

std::optional<Uuid> Matcher::merchantIDNamed(std::string_view name) const {
    const auto it = m_merchantIDByName.find(text::lowercased(name));
    return it == m_merchantIDByName.end() ? std::nullopt : std::optional<Uuid>(it->second);
}

std::optional<Uuid> Matcher::categoryIDNamed(std::string_view name) const {
    const auto it = m_categoryIDByName.find(text::lowercased(name));
    return it == m_categoryIDByName.end() ? std::nullopt : std::optional<Uuid>(it->second);
}

const std::optional<MerchantDirectory::Hit>& Matcher::directoryMatch(
    const std::string& normalized) const {
    return directoryMatch(m_memo->answersFor(normalized), normalized);
}

const std::optional<MerchantDirectory::Hit>& Matcher::directoryMatch(
    TextAnswers& answers, const std::string& normalized) const {
    if (!answers.directory)
        answers.directory = m_directory->match(normalized);
    return *answers.directory;
}

const std::optional<MerchantDirectory::Closest>& Matcher::closest(const std::string& key) const {
    auto it = m_memo->closest.find(key);
    if (it == m_memo->closest.end())
        it = m_memo->closest.emplace(key, m_directory->closest(key, kSimilarMinimum)).first;
    return it->second;
}

const BuiltInRule* Matcher::builtInRule(TextAnswers& answers, std::string_view normalized,
                                        int64_t amount,
                                        std::optional<AccountType> accountType) const {
    const std::size_t direction = amount < 0 ? 0 : amount > 0 ? 1 : 2;
    const std::size_t slot = direction * (TextAnswers::kAccountTypes + 1) +
                             (accountType ? 1 + static_cast<std::size_t>(*accountType) : 0);
    if (!answers.builtInAsked[slot]) {
        answers.builtIn[slot] =
            BuiltInRuleSet::match(normalized, amount, accountType, m_disabledBuiltIns);
        answers.builtInAsked[slot] = true;
    }
    return answers.builtIn[slot];
}

std::optional<Matcher::SimilarMerchant> Matcher::similarLearned(const std::string& key) const {
    if (const auto it = m_memo->similar.find(key); it != m_memo->similar.end())
        return it->second;

    // Ordered by id so that the runner-up rule walks merchants the same way every time.
    std::map<Uuid, int> best;
    for (const auto& [learnedKey, id] : m_merchantIDByKey) {
        const int score = KeySimilarity::score(key, learnedKey, kSimilarFloor);
        auto [it, fresh] = best.try_emplace(id, score);
        if (!fresh)
            it->second = std::max(it->second, score);
    }
    std::optional<Uuid> winner;
    int top = -1;
    int runnerUp = -1;
    for (const auto& [id, score] : best) {
        if (score > top) {
            runnerUp = top;
            top = score;
            winner = id;
        } else if (score > runnerUp) {
            runnerUp = score;
        }
    }
    std::optional<SimilarMerchant> result;
    if (winner && top >= kSimilarMinimum && top - std::max(runnerUp, 0) >= kSimilarMargin) {
        if (const auto it = m_merchantsByID.find(*winner); it != m_merchantsByID.end())
            result = SimilarMerchant{.merchant = it->second, .score = top};
    }
    m_memo->similar.emplace(key, result);
    return result;
}

MatchResult Matcher::match(const LedgerTransaction& transaction) const {
    return match(transaction, text(transaction.rawDescription));
}

MatchResult Matcher::match(const LedgerTransaction& transaction, const MerchantText& words) const {
    const std::string& normalized = words.normalized;
    // Every text this matcher hands out is one of its own.
    TextAnswers& answers = static_cast<const ReadText&>(words).answers;
    std::optional<MerchantPick> merchant;
    std::optional<ClassPick> filing;

    const auto merchantByID = [&](const std::optional<Uuid>& id) -> const Merchant* {
        if (!id)
            return nullptr;
        const auto it = m_merchantsByID.find(*id);
        return it == m_merchantsByID.end() ? nullptr : &it->second;
    };
    const auto pickNamed = [&](std::string name, std::string note) {
        const auto id = merchantIDNamed(name);
        merchant = MerchantPick{.id = id, .name = std::move(name), .note = std::move(note)};
    };

    // 1. The person's own rules, top to bottom.
    if (const Rule* rule = firstMatchingRule(transaction, normalized)) {
        const auto name =
            rule->merchantName ? text::trimmedSpaces(*rule->merchantName) : std::string_view();
        if (!name.empty())
            pickNamed(std::string(name), fmt::format("your rule \u201C{}\u201D", rule->name));
        if (rule->kind || rule->categoryID) {
            filing = ClassPick{.kind = rule->kind,
                               .categoryID = rule->categoryID,
                               .method = MatchMethod::userRule,
                               .note = fmt::format("Your rule \u201C{}\u201D", rule->name)};
        }
    }

    // 2. Money to or from somebody of the household.
    if (!merchant || !filing) {
        for (const auto& household : m_household) {
            if (!PhraseSearch::contains(normalized, household.phrase, false))
                continue;
            const Person& person = m_people[household.person];
            if (!merchant)
                pickNamed(person.name, "household member");
            if (!filing) {
                filing = ClassPick{
                    .kind = TransactionKind::transfer,
                    .method = MatchMethod::builtInRule,
                    .note = fmt::format("Money to or from {} (your household)", person.name)};
            }
            break;
        }
    }

    // 3. What the person taught.
    if (!merchant || !filing) {
        if (const Merchant* learned = learnedMerchant(words.key)) {
            if (!merchant) {
                merchant = MerchantPick{
                    .id = learned->id, .name = learned->name, .note = "learned from you"};
            }
            if (!filing && merchant->id == learned->id)
                filing = filingOf(*learned);
        }
    }

    // 4. The chosen merchant's own filing.
    if (!filing && merchant) {
        if (const Merchant* chosen = merchantByID(merchant->id))
            filing = filingOf(*chosen);
    }

    // 5. Built-in rules.
    if (!filing) {
        std::optional<AccountType> accountType;
        if (const auto it = m_accountsByID.find(transaction.accountID); it != m_accountsByID.end())
            accountType = it->second.type;
        if (const BuiltInRule* rule =
                builtInRule(answers, normalized, transaction.amount, accountType)) {
            filing =
                ClassPick{.kind = rule->kind,
                          .categoryID = rule->categoryName ? categoryIDNamed(*rule->categoryName)
                                                           : std::nullopt,
                          .method = MatchMethod::builtInRule,
                          .note = "Built-in rule: " + text::lowercased(rule->name)};
        }
    }

    // 6. The built-in merchant list, on the description or else the bank's merchant column.
    if (!merchant || !filing) {
        const auto* hit = &directoryMatch(answers, normalized);
        if (!*hit && transaction.bankMerchant && !transaction.bankMerchant->empty())
            hit = &directoryMatch(MerchantText::normalize(*transaction.bankMerchant));
        if (*hit) {
            const DirectoryEntry& entry = *(*hit)->entry;
            if (!merchant)
                pickNamed(entry.name, "built-in merchant list");
            if (!filing) {
                const Merchant* chosen = merchantByID(merchant->id);
                if (auto own = chosen ? filingOf(*chosen) : std::nullopt) {
                    filing = std::move(own);
                } else if (auto category = categoryIDNamed(entry.category)) {
                    filing = ClassPick{.categoryID = category,
                                       .method = MatchMethod::directory,
                                       .note = "Built-in merchant list: " + entry.name};
                }
            }
        }
    }

    // 7. A filing the local model made for this key.
    if (!filing) {
        if (const AIFiling* ai = aiFiling(words.key)) {
            if (!merchant && ai->merchantName && !ai->merchantName->empty())
                pickNamed(*ai->merchantName, "Local AI");
            std::optional<Uuid> category;
            if (ai->categoryID && m_categoriesByID.contains(*ai->categoryID))
                category = ai->categoryID;
            filing = ClassPick{.kind = ai->kind,
                               .categoryID = category,
                               .method = MatchMethod::ai,
                               .note = "Filed by Local AI: " + ai->reason};
        }
    }

    // 8. The bank's own merchant column.
    if (!merchant && transaction.bankMerchant) {
        const auto name = text::trimmed(*transaction.bankMerchant);
        if (!name.empty()) {
            pickNamed(std::string(name), std::string(kBankMerchantNote));
            if (!filing) {
                if (const Merchant* chosen = merchantByID(merchant->id))
                    filing = filingOf(*chosen);
            }
        }
    }

    if (filing && !filing->kind)
        filing->kind = kindFor(filing->categoryID);

    if (filing && filing->kind) {
        const TransactionKind kind = *filing->kind;
        if (kind == TransactionKind::unknown || kind == TransactionKind::transfer)
            filing->categoryID.reset();
        // A transfer doesn't take a shop name from the bank's merchant column.
        if (kind == TransactionKind::transfer && merchant && merchant->note == kBankMerchantNote)
            merchant.reset();

        std::string evidence = filing->note;
        if (merchant && merchant->name && filing->note.find(*merchant->name) == std::string::npos)
            evidence += fmt::format(". Merchant {} from {}", *merchant->name, merchant->note);
        if (kind == TransactionKind::expense && transaction.amount >= 1)
            evidence += ". Money in, so it counts as a refund";
        evidence += ".";

        MatchResult result{.kind = kind,
                           .categoryID = filing->categoryID,
                           .method = filing->method,
                           .evidence = std::move(evidence),
                           .review = ReviewState::automatic};
        if (merchant) {
            result.merchantID = merchant->id;
            if (!merchant->id)
                result.newMerchantName = merchant->name;
        }
        return result;
    }

    // Nothing filed: offer what comes close, for the person to approve.
    MatchResult result = MatchResult::unresolved();
    if (merchant) {
        result.merchantID = merchant->id;
        if (!merchant->id)
            result.newMerchantName = merchant->name;
        result.evidence = fmt::format("Merchant {} from {}; no category yet.",
                                      merchant->name.value_or(""), merchant->note);
    }
    const auto suggest = [&](std::string name, std::optional<Uuid> category, TransactionKind kind,
                             int score) {
        result.review = ReviewState::suggested;
        result.method = MatchMethod::similar;
        result.evidence = fmt::format("Looks like {}; waiting for your OK.", name);
        result.suggestion =
            Suggestion{.merchantName = name,
                       .categoryID = std::move(category),
                       .kind = kind,
                       .source = MatchMethod::similar,
                       .reason = fmt::format("Looks like {} ({}% similar).", name, score)};
    };
    if (!merchant && text::characterCount(words.key) >= 3) {
        if (const auto similar = similarLearned(words.key)) {
            const Merchant& m = similar->merchant;
            const auto kind =
                m.kind.value_or(kindFor(m.categoryID).value_or(TransactionKind::unknown));
            suggest(m.name, m.categoryID, kind, similar->score);
            return result;
        }
        if (const auto& near = closest(words.key)) {
            const auto category = categoryIDNamed(near->entry->category);
            suggest(near->entry->name, category,
                    kindFor(category).value_or(TransactionKind::expense), near->score);
            return result;
        }
    }
    if (const auto label = BankCategoryMap::categoryName(transaction.bankCategory.optional())) {
        if (const auto category = categoryIDNamed(*label)) {
            result.review = ReviewState::suggested;
            result.method = MatchMethod::similar;
            result.evidence = fmt::format("Your bank's category suggests {}; waiting for your OK.",
                                          m_categoriesByID.at(*category).name);
            result.suggestion =
                Suggestion{.merchantName = merchant ? merchant->name : std::nullopt,
                           .categoryID = category,
                           .kind = kindFor(category).value_or(TransactionKind::expense),
                           .source = MatchMethod::similar,
                           .reason = fmt::format("Your bank labeled this \u201C{}\u201D.",
                                                 *transaction.bankCategory)};
        }
    }
    return result;
}

}  // namespace copperwick
