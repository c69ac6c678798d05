#include "core/intelligence/merchant_names.h"

#include <algorithm>
#include <vector>

#include "core/intelligence/letters.h"
#include "core/matching/builtin_knowledge.h"
#include "core/matching/merchant_text.h"
#include "core/model/text.h"

namespace copperwick::MerchantNames {

namespace {

// Words of more than three characters, lower-cased: enough to carry a
// business's name, too long to be a code or a joining word.
std::set<std::string> longWords(std::string_view text) {
    const std::string lowered = text::lowercased(text);
    std::set<std::string> words;
    for (const auto word : text::splitDroppingEmpty(lowered, " \t\n\r")) {
        if (text::characterCount(word) > 3)
            words.emplace(word);
    }
    return words;
}

bool holds(const std::string& whole, const std::string& part) {
    return letters::count(part) >= 3 && whole.find(part) != std::string::npos;
}

}  // namespace

const std::set<std::string>& directoryNames() {
    static const std::set<std::string> names = [] {
        std::set<std::string> lowered;
        for (const auto& entry : BuiltInKnowledge::merchants())
            lowered.insert(text::lowercased(entry.name));
        return lowered;
    }();
    return names;
}

bool needsTidying(const Merchant& merchant, const std::set<std::string>& directoryNames) {
    const std::string& name = merchant.name;
    if (merchant.nameLocked || directoryNames.contains(text::lowercased(name)))
        return false;
    if (letters::count(name) >= 3 && !letters::anyLowercase(name))
        return true;
    if (name.find_first_of("*#") != std::string::npos)
        return true;
    if (letters::longestNumberRun(name) >= 3)
        return true;
    return std::any_of(merchant.keys.begin(), merchant.keys.end(), [&](const std::string& key) {
        return MerchantText::titleCase(key) == name;
    });
}

std::optional<std::string> acceptRename(std::string_view from, std::string_view to) {
    const std::string name(text::trimmed(to));
    const std::size_t length = text::characterCount(name);
    if (name == from || length < 2 || length > 40 || name.find('\n') != std::string::npos ||
        letters::count(name) < 2 || text::lowercased(name).find("http") != std::string::npos)
        return std::nullopt;

    const std::string oldLetters = letters::lowercasedOnly(from);
    const std::string newLetters = letters::lowercasedOnly(name);
    if (oldLetters == newLetters || holds(oldLetters, newLetters) || holds(newLetters, oldLetters))
        return name;

    const auto oldWords = longWords(from);
    const auto newWords = longWords(name);
    const bool shared = std::any_of(newWords.begin(), newWords.end(), [&](const std::string& word) {
        return oldWords.contains(word);
    });
    if (!shared)
        return std::nullopt;
    return name;
}

}  // namespace copperwick::MerchantNames
