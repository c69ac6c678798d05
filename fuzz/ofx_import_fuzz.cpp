// Feeds arbitrary bytes to the OFX reader as if they were a decoded statement.
// The reader must never crash, must account for each transaction block once
// and in order (a zero line as a blank line), and must find the same blocks
// as the one-pattern form of the element match,
// <TAG(?:\s[^>]*)?>(.*?)</\s*TAG\s*>, that it reads in two steps. Cutting
// the text into its statements must not crash either, and every statement
// must read as a file of its own.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include "core/import/ofx_import.h"

namespace {

void check(bool holds) {
    if (!holds)
        std::abort();
}

std::vector<icu::UnicodeString> literalBlocks(std::string_view tag, const icu::UnicodeString& in) {
    const std::string name(tag);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexPattern> pattern(icu::RegexPattern::compile(
        icu::UnicodeString::fromUTF8("<" + name + "(?:\\s[^>]*)?>(.*?)</\\s*" + name + "\\s*>"),
        UREGEX_CASE_INSENSITIVE | UREGEX_DOTALL, status));
    check(U_SUCCESS(status));
    std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(in, status));
    std::vector<icu::UnicodeString> found;
    while (matcher->find(status))
        found.push_back(matcher->group(1, status));
    check(U_SUCCESS(status));
    return found;
}

// Every block, by its number, as the analysis saw it; a blank line's is
// absent.
std::vector<std::optional<std::string>> blockTexts(const copperwick::FileAnalysis& analysis) {
    check(analysis.blankLines >= 0);
    std::vector<std::optional<std::string>> texts(analysis.rows.size() + analysis.issues.size() +
                                                  static_cast<std::size_t>(analysis.blankLines));
    std::vector<bool> seen(texts.size(), false);
    const auto take = [&](int64_t line, std::string_view rawText) {
        check(line >= 1 && static_cast<std::size_t>(line) <= texts.size());
        const auto at = static_cast<std::size_t>(line - 1);
        check(!seen[at]);
        seen[at] = true;
        texts[at] = rawText;
    };
    int64_t previous = 0;
    for (const auto& row : analysis.rows) {
        check(row.line > previous);
        check(row.occurrence >= 1);
        check(!row.description().empty());
        check(!row.fingerprint().empty());
        previous = row.line;
        take(row.line, row.rawText());
    }
    previous = 0;
    for (const auto& issue : analysis.issues) {
        check(issue.line > previous);
        previous = issue.line;
        take(issue.line, issue.rawText);
    }
    check(static_cast<int64_t>(std::count(seen.begin(), seen.end(), false)) == analysis.blankLines);
    return texts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto analysis = copperwick::OFXImport::analyze("fuzz.ofx", text, text, false);

    check(analysis.fileHash.size() == 64);
    const auto parts = copperwick::OFXImport::statements(text);
    check(parts.size() != 1);
    for (const auto& part : parts) {
        check(!part.label.empty());
        const auto one = copperwick::OFXImport::analyze("part.ofx", part.data, part.data, false);
        check(one.fileHash.size() == 64);
    }

    const auto texts = blockTexts(analysis);
    if (!analysis.profile) {
        check(texts.empty());
        return 0;
    }

    const auto in = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    auto statements = literalBlocks("STMTRS", in);
    const auto cards = literalBlocks("CCSTMTRS", in);
    statements.insert(statements.end(), cards.begin(), cards.end());
    check(statements.size() == 1);
    const auto expected = literalBlocks("STMTTRN", statements.front());
    check(expected.size() == texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        std::string piece;
        expected[i].toUTF8String(piece);
        check(!texts[i] || piece == *texts[i]);
    }
    return 0;
}
