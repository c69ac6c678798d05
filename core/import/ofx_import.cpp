#include "core/import/ofx_import.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "core/import/import_analyzer.h"
#include "core/import/statement_amount.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/currency_code.h"

namespace copperwick::OFXImport {

namespace {

constexpr std::string_view kDocumentTypeProblem =
    "OFX files with document types or external entities are not supported.";
constexpr std::string_view kStatementCountProblem =
    "Choose an OFX/QFX file containing exactly one checking, savings or credit-card statement. "
    "Investment statements are not supported.";
constexpr std::string_view kCurrencyProblem = "This statement has no valid currency.";
constexpr std::string_view kIncompleteProblem =
    "This statement contains an incomplete transaction. Export it again from your bank.";
constexpr std::string_view kBadDate = "Missing or invalid posting date.";
constexpr std::string_view kBadAmount = "Missing or invalid exact transaction amount.";
constexpr std::string_view kNoDescription = "No transaction name or memo.";
constexpr std::string_view kRepeatedID =
    "Repeated transaction ID in this statement; check this row before importing.";
constexpr std::string_view kBankErrorStart = "Your bank sent an error instead of a statement: ";
constexpr std::string_view kBankErrorEnd = ". Download the file again.";
constexpr std::string_view kJoiner = " \xC2\xB7 ";  // U+00B7 MIDDLE DOT between blanks

using Pattern = std::unique_ptr<icu::RegexPattern>;

// Null when ICU refuses the source; the readers treat that as "nothing found".
Pattern compile(std::string_view source) {
    UErrorCode status = U_ZERO_ERROR;
    Pattern pattern(icu::RegexPattern::compile(text::toUnicode(source),
                                               UREGEX_CASE_INSENSITIVE | UREGEX_DOTALL, status));
    if (U_FAILURE(status))
        return nullptr;
    return pattern;
}

// An aggregate, by its two tags. Aggregates are closed in both the tag-only
// and the XML form of OFX; an opening tag may carry attributes.
struct Element {
    Pattern opening;
    Pattern closing;
};

Element element(std::string_view tag) {
    const std::string name(tag);
    return {compile("<" + name + "(?:\\s[^>]*)?>"), compile("</\\s*" + name + "\\s*>")};
}

// A leaf's text up to the next tag or line end, which reads the tag-only form
// (no closing tag) and the XML form alike.
Pattern leafPattern(std::string_view tag) {
    return compile("<" + std::string(tag) + "(?:\\s[^>]*)?>([^<\\r\\n]*)");
}

// Everything the reader matches with, compiled once for the whole process on
// first use. RegexPattern is immutable and safe to share between threads;
// matchers belong to one call.
struct Patterns {
    Pattern ofxTag = compile("<OFX(?:\\s|>)");
    Pattern documentType = compile("<!(?:DOCTYPE|ENTITY)");

    Element bankStatement = element("STMTRS");
    Element cardStatement = element("CCSTMTRS");
    Element transaction = element("STMTTRN");
    Element status = element("STATUS");

    Pattern currency = leafPattern("CURDEF");
    Pattern accountType = leafPattern("ACCTTYPE");
    Pattern accountID = leafPattern("ACCTID");
    Pattern posted = leafPattern("DTPOSTED");
    Pattern amount = leafPattern("TRNAMT");
    Pattern name = leafPattern("NAME");
    Pattern memo = leafPattern("MEMO");
    Pattern transactionID = leafPattern("FITID");
    Pattern checkNumber = leafPattern("CHECKNUM");
    Pattern transactionType = leafPattern("TRNTYPE");
    Pattern statusCode = leafPattern("CODE");
    Pattern severity = leafPattern("SEVERITY");
    Pattern message = leafPattern("MESSAGE");
};

const Patterns& patterns() {
    static const Patterns kPatterns;
    return kPatterns;
}

std::unique_ptr<icu::RegexMatcher> matcherFor(const Pattern& pattern,
                                              const icu::UnicodeString& in) {
    if (!pattern)
        return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(in, status));
    if (U_FAILURE(status))
        return nullptr;
    return matcher;
}

[[nodiscard]] bool contains(const Pattern& pattern, const icu::UnicodeString& in) {
    const auto matcher = matcherFor(pattern, in);
    UErrorCode status = U_ZERO_ERROR;
    return matcher && matcher->find(status) && U_SUCCESS(status);
}

[[nodiscard]] std::size_t count(const Pattern& pattern, const icu::UnicodeString& in) {
    const auto matcher = matcherFor(pattern, in);
    std::size_t found = 0;
    UErrorCode status = U_ZERO_ERROR;
    while (matcher && matcher->find(status) && U_SUCCESS(status))
        ++found;
    return found;
}

// Every match of <TAG(?:\s[^>]*)?>(.*?)</\s*TAG\s*>, in file order, with
// its inner text untrimmed. The match is found in two steps, the opening tag
// and then the first closing tag after it, which is where the lazy body would
// stop. As one pattern ICU tries the closing tag at every character, and an
// element that never closes rescans the rest of the text once for each later
// opening tag; in two steps the text is read once. Since opening tags end in
// file order, an opening with no closing after it means no later one has
// either.
//
// A span is where one element stands, from its opening tag to the end of its
// closing tag, and where its inner text does.
struct Span {
    int32_t outerStart = 0;
    int32_t innerStart = 0;
    int32_t innerEnd = 0;
    int32_t outerEnd = 0;
};

[[nodiscard]] std::vector<Span> spans(const Element& element, const icu::UnicodeString& in) {
    std::vector<Span> found;
    const auto opening = matcherFor(element.opening, in);
    const auto closing = matcherFor(element.closing, in);
    if (!opening || !closing)
        return found;
    UErrorCode status = U_ZERO_ERROR;
    int32_t from = 0;
    while (from <= in.length() && opening->find(from, status) && U_SUCCESS(status)) {
        Span span;
        span.outerStart = opening->start(status);
        span.innerStart = opening->end(status);
        if (U_FAILURE(status) || !closing->find(span.innerStart, status) || U_FAILURE(status))
            break;
        span.innerEnd = closing->start(status);
        span.outerEnd = closing->end(status);
        from = span.outerEnd;
        if (U_FAILURE(status))
            break;
        found.push_back(span);
    }
    return found;
}

// The inner texts of `spans`, as read-only aliases into `in`, which must
// outlive them; that spares copying every transaction of a large statement.
[[nodiscard]] std::vector<icu::UnicodeString> blocks(const Element& element,
                                                     const icu::UnicodeString& in) {
    std::vector<icu::UnicodeString> found;
    for (const Span& span : spans(element, in))
        found.push_back(in.tempSubStringBetween(span.innerStart, span.innerEnd));
    return found;
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
    std::size_t at = 0;
    while ((at = text.find(from, at)) != std::string::npos) {
        text.replace(at, from.size(), to);
        at += to.size();
    }
}

// Reads one leaf tag, first occurrence only, from any number of texts. One
// reader serves every transaction of an analysis, so the matcher is made once
// rather than once a block.
class LeafReader {
  public:
    explicit LeafReader(const Pattern& pattern) {
        UErrorCode status = U_ZERO_ERROR;
        if (pattern)
            m_matcher.reset(pattern->matcher(status));
        if (U_FAILURE(status))
            m_matcher.reset();
    }

    // Trimmed and unescaped; absent when nothing is left. "&amp;" goes last so
    // that "&amp;lt;" stays "&lt;" instead of becoming "<".
    [[nodiscard]] std::optional<std::string> value(const icu::UnicodeString& in) {
        if (!m_matcher)
            return std::nullopt;
        UErrorCode status = U_ZERO_ERROR;
        m_matcher->reset(in);
        if (!m_matcher->find(status) || U_FAILURE(status))
            return std::nullopt;
        const int32_t start = m_matcher->start(1, status);
        const int32_t end = m_matcher->end(1, status);
        if (U_FAILURE(status))
            return std::nullopt;
        std::string found(text::trimmed(text::toUTF8(in.tempSubStringBetween(start, end))));
        if (found.empty()) {
            if (auto contents = characterData(in, end))
                return contents;
        }
        replaceAll(found, "&lt;", "<");
        replaceAll(found, "&gt;", ">");
        replaceAll(found, "&quot;", "\"");
        replaceAll(found, "&apos;", "'");
        replaceAll(found, "&amp;", "&");
        if (found.empty())
            return std::nullopt;
        return found;
    }

  private:
    // A value written as <![CDATA[...]]> is its contents exactly as they
    // stand: no entity inside is decoded. Absent when `at` opens no such
    // section, or one that never closes, or one with nothing in it.
    [[nodiscard]] static std::optional<std::string> characterData(const icu::UnicodeString& in,
                                                                  int32_t at) {
        static const icu::UnicodeString kOpen = icu::UnicodeString::fromUTF8("<![CDATA[");
        static const icu::UnicodeString kClose = icu::UnicodeString::fromUTF8("]]>");
        while (at < in.length() && u_isspace(in.charAt(at)))
            ++at;
        if (in.compare(at, kOpen.length(), kOpen) != 0)
            return std::nullopt;
        const int32_t start = at + kOpen.length();
        const int32_t end = in.indexOf(kClose, start);
        if (end < 0)
            return std::nullopt;
        std::string contents(text::trimmed(text::toUTF8(in.tempSubStringBetween(start, end))));
        if (contents.empty())
            return std::nullopt;
        return contents;
    }

    std::unique_ptr<icu::RegexMatcher> m_matcher;
};

[[nodiscard]] bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// OFX dates are YYYYMMDD, optionally followed by a time and a zone. Only the
// day is kept: shifting by the zone would move late-evening transactions to
// the next day, away from the date the bank shows.
[[nodiscard]] std::optional<LocalDate> date(std::string_view text) {
    if (text.size() < 8)
        return std::nullopt;
    for (std::size_t i = 0; i < 8; ++i) {
        if (!isDigit(text[i]))
            return std::nullopt;
    }
    const std::string iso = std::string(text.substr(0, 4)) + "-" + std::string(text.substr(4, 2)) +
                            "-" + std::string(text.substr(6, 2));
    return LocalDate::fromISO(iso);
}

// Never stored: it only tells the rest of the import path which columns the
// rows came from and what kind of account they belong to.
[[nodiscard]] ImportProfile syntheticProfile(AccountType type) {
    ImportProfile profile;
    profile.id = type == AccountType::creditCard ? "ofx-card" : "ofx-bank";
    profile.name = "OFX/QFX " + text::lowercased(label(type));
    profile.accountType = type;
    profile.hasHeader = false;
    profile.dateColumn = "DTPOSTED";
    profile.descriptionColumn = "NAME";
    profile.amountColumn = "TRNAMT";
    profile.signConvention = SignConvention::positiveIsMoneyIn;
    profile.dateLayout = DateLayout::yearMonthDay;
    profile.isBuiltIn = true;
    return profile;
}

[[nodiscard]] std::string description(const std::optional<std::string>& name,
                                      const std::optional<std::string>& memo) {
    if (name && memo && *name != *memo)
        return *name + std::string(kJoiner) + *memo;
    if (name)
        return *name;
    return memo.value_or(std::string());
}

// Some banks write cheques and fees with neither name nor memo; the type and
// the cheque number are all a person would recognise them by ("CHECK 1042",
// "DEBIT"). "OTHER" says nothing, so it counts as no type; a number without
// a type is a cheque.
[[nodiscard]] std::string typeDescription(const std::optional<std::string>& type,
                                          const std::optional<std::string>& checkNumber) {
    std::string kind = type ? text::uppercased(*type) : std::string();
    if (kind == "OTHER")
        kind.clear();
    if (!checkNumber)
        return kind;
    return (kind.empty() ? std::string("CHECK") : kind) + " " + *checkNumber;
}

// OFX amounts use "." or, from some banks, a decimal comma; a comma is
// never a thousands separator there.
[[nodiscard]] StatementAmount::Reading readAmount(std::string_view text) {
    const bool decimalComma =
        text.find(',') != std::string_view::npos && text.find('.') == std::string_view::npos;
    return StatementAmount::read(
        text, decimalComma ? NumberStyle::decimalComma : NumberStyle::decimalPoint);
}

// Reads the transactions of one statement into `analysis`. Each block is its
// own line: the number is the block's position, which is what a person sees
// when an issue points at it.
void readTransactions(const icu::UnicodeString& statement, bool flipSigns, FileAnalysis& analysis) {
    const Patterns& p = patterns();
    const auto transactions = blocks(p.transaction, statement);
    LeafReader readPosted(p.posted), readAmountText(p.amount), readName(p.name), readMemo(p.memo),
        readTransactionID(p.transactionID), readCheckNumber(p.checkNumber),
        readType(p.transactionType);

    std::unordered_map<std::string, int64_t> occurrences;
    std::unordered_set<std::string> seenIDs;
    int64_t line = 0;
    for (const auto& block : transactions) {
        ++line;
        std::string rawText = text::toUTF8(block);
        const auto issue = [&](std::string_view reason) {
            analysis.issues.push_back(RowIssue{line, std::string(reason), std::move(rawText)});
        };

        const auto amountText = readAmountText.value(block);
        const auto reading = amountText ? readAmount(*amountText) : StatementAmount::Reading{};
        auto amount = reading.cents;
        // A zero line, often with no name, is a placeholder some banks write
        // into an empty statement: nothing happened, so it is no row.
        if (amount == 0) {
            ++analysis.blankLines;
            continue;
        }
        const auto postedText = readPosted.value(block);
        const auto posted = postedText ? date(*postedText) : std::nullopt;
        if (!posted) {
            issue(kBadDate);
            continue;
        }
        if (!amount) {
            issue(reading.finerThanCents ? StatementAmount::kFinerThanCents : kBadAmount);
            continue;
        }
        const auto checkNumber = readCheckNumber.value(block);
        std::string text = description(readName.value(block), readMemo.value(block));
        if (text.empty())
            text = typeDescription(readType.value(block), checkNumber);
        if (text.empty()) {
            issue(kNoDescription);
            continue;
        }
        const auto transactionID = readTransactionID.value(block);
        if (transactionID && !seenIDs.insert(*transactionID).second) {
            issue(kRepeatedID);
            continue;
        }
        if (flipSigns)
            *amount = -*amount;

        ParsedRow row;
        row.line = line;
        row.date = *posted;
        row.postedDate = *posted;
        row.amount = *amount;
        row.status = TransactionStatus::posted;
        row.setTexts({.rawText = rawText,
                      .description = text,
                      .checkNumber = checkNumber,
                      .externalID = transactionID});
        row.occurrence = ++occurrences[row.fingerprint()];
        analysis.rows.push_back(std::move(row));
    }

    // A transaction without its closing tag either runs into the next one's
    // block or never matches at all; both leave an opening tag too many.
    if (count(p.transaction.opening, statement) != transactions.size())
        analysis.problem = std::string(kIncompleteProblem);
}

// The refusal for a file that carries the bank's error in place of a
// statement: one with no statement and a status whose code isn't 0 or whose
// severity is ERROR. Absent when the bank reported no error. A file with
// statements is read even if one of its accounts failed: the statements it
// does hold are the person's.
[[nodiscard]] std::optional<std::string> bankError(const icu::UnicodeString& whole) {
    const Patterns& p = patterns();
    for (const auto& status : blocks(p.status, whole)) {
        const auto code = LeafReader(p.statusCode).value(status);
        const auto severity = LeafReader(p.severity).value(status);
        const bool error = severity && text::uppercased(*severity) == "ERROR";
        const bool failed = code && code->find_first_not_of('0') != std::string::npos;
        if (!error && !failed)
            continue;
        std::string message = LeafReader(p.message).value(status).value_or(
            code ? "error code " + *code : std::string("no reason given"));
        while (!message.empty() && message.back() == '.')
            message.pop_back();
        return std::string(kBankErrorStart) + message + std::string(kBankErrorEnd);
    }
    return std::nullopt;
}

}  // namespace

std::vector<StatementPart> statements(std::string_view text) {
    std::vector<StatementPart> found;
    const Patterns& p = patterns();
    const icu::UnicodeString whole = text::toUnicode(text);
    if (contains(p.documentType, whole))
        return found;
    struct Place {
        Span span;
        bool isCard = false;
    };
    std::vector<Place> places;
    for (const Span& span : spans(p.bankStatement, whole))
        places.push_back({span, false});
    for (const Span& span : spans(p.cardStatement, whole))
        places.push_back({span, true});
    if (places.size() < 2)
        return found;
    std::sort(places.begin(), places.end(),
              [](const Place& a, const Place& b) { return a.span.outerStart < b.span.outerStart; });
    // A statement inside another (a card statement written into a bank one)
    // can't be cut out on its own; such a file is left whole, to be refused.
    for (std::size_t i = 1; i < places.size(); ++i) {
        if (places[i].span.outerStart < places[i - 1].span.outerEnd)
            return found;
    }

    std::vector<std::string> accounts;
    for (const Place& place : places) {
        const auto inner = whole.tempSubStringBetween(place.span.innerStart, place.span.innerEnd);
        const auto accountID = LeafReader(p.accountID).value(inner);
        const auto last4 = accountID ? ImportAnalyzer::lastFourDigits(*accountID) : std::nullopt;
        accounts.push_back(last4 ? (place.isCard ? "card ending " : "account ending ") + *last4
                                 : std::string());
    }
    const auto labels = StatementFiles::labels(accounts);

    // Each statement keeps the file's text before the first statement and
    // after the last, so that it reads as a file of its own.
    const icu::UnicodeString head = whole.tempSubStringBetween(0, places.front().span.outerStart);
    const icu::UnicodeString tail = whole.tempSubString(places.back().span.outerEnd);
    for (std::size_t i = 0; i < places.size(); ++i) {
        icu::UnicodeString part(head);
        part.append(whole, places[i].span.outerStart,
                    places[i].span.outerEnd - places[i].span.outerStart);
        part.append(tail);
        found.push_back({labels[i], text::toUTF8(part)});
    }
    return found;
}

bool recognizes(std::string_view fileName, std::string_view text) {
    const std::string suffix = text::lowercased(ImportAnalyzer::extension(fileName));
    if (suffix == "ofx" || suffix == "qfx")
        return true;
    // Every match starts with "<"; a CSV file without one needs no conversion.
    if (text.find('<') == std::string_view::npos)
        return false;
    return contains(patterns().ofxTag, text::toUnicode(text));
}

FileAnalysis analyze(std::string_view fileName, std::string_view data, std::string_view text,
                     bool flipSigns) {
    FileAnalysis analysis = ImportAnalyzer::statementAnalysis(fileName, data);
    analysis.delimiter = ",";
    analysis.dateLayout = DateLayout::yearMonthDay;

    const Patterns& p = patterns();
    const icu::UnicodeString whole = text::toUnicode(text);

    // Refused outright rather than ignored: a reader this simple can't tell
    // what an entity would have expanded to.
    if (contains(p.documentType, whole)) {
        analysis.problem = std::string(kDocumentTypeProblem);
        return analysis;
    }

    const auto bankStatements = blocks(p.bankStatement, whole);
    const auto cardStatements = blocks(p.cardStatement, whole);
    const std::size_t statementCount = bankStatements.size() + cardStatements.size();
    if (statementCount == 0) {
        if (auto refusal = bankError(whole)) {
            analysis.problem = std::move(*refusal);
            return analysis;
        }
    }
    if (statementCount != 1) {
        analysis.problem = std::string(kStatementCountProblem);
        return analysis;
    }
    const bool isCard = !cardStatements.empty();
    const icu::UnicodeString& statement = isCard ? cardStatements.front() : bankStatements.front();

    // A statement with an empty currency is in the account's own currency,
    // which the chosen account supplies when no hint stands in the way.
    if (const auto stated = LeafReader(p.currency).value(statement)) {
        const std::string currency = text::uppercased(*stated);
        if (!isCurrencyCode(currency)) {
            analysis.problem = std::string(kCurrencyProblem);
            return analysis;
        }
        analysis.currencyHint = currency;
    }

    AccountType type = AccountType::creditCard;
    if (!isCard) {
        const auto accountType = LeafReader(p.accountType).value(statement);
        type = accountType && text::uppercased(*accountType) == "SAVINGS" ? AccountType::savings
                                                                          : AccountType::checking;
    }
    analysis.typeHint = type;
    analysis.profile = syntheticProfile(type);

    if (const auto accountID = LeafReader(p.accountID).value(statement)) {
        if (auto last4 = ImportAnalyzer::lastFourDigits(*accountID))
            analysis.digitHints.push_back(std::move(*last4));
    }

    readTransactions(statement, flipSigns, analysis);
    return analysis;
}

}  // namespace copperwick::OFXImport
