#include "core/import/camt_import.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/import/import_analyzer.h"
#include "core/import/statement_amount.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/text.h"
#include "core/operations/currency_code.h"

namespace copperwick::CamtImport {

namespace {

constexpr std::string_view kDocumentTypeProblem =
    "CAMT.053 files with document types or external entities are not supported.";
constexpr std::string_view kBrokenProblem =
    "This CAMT.053 file is incomplete or damaged. Export it again from your bank.";
constexpr std::string_view kStatementCountProblem =
    "Choose a CAMT.053 file containing exactly one account statement.";
constexpr std::string_view kCurrencyProblem = "This statement has no valid currency.";
constexpr std::string_view kBadDate = "Missing or invalid booking date.";
constexpr std::string_view kBadAmount = "Missing or invalid exact amount.";
constexpr std::string_view kNoDirection =
    "This entry doesn't say whether money came in or went out.";
constexpr std::string_view kOtherCurrency = "Currency differs from earlier rows.";
constexpr std::string_view kNoDescription = "No description in this entry.";
constexpr std::string_view kJoiner = " \xC2\xB7 ";  // U+00B7 MIDDLE DOT between blanks
// Statements nest about ten deep; anything far deeper is not a statement.
constexpr std::size_t kDeepestElement = 64;

// One element: its name without a namespace prefix, its attributes, its own
// text (entities decoded, CDATA as it stands) and where it stands in the
// source, from "<" to the end of its closing tag.
struct Element {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;
    std::vector<Element> children;
    std::size_t start = 0;
    std::size_t end = 0;

    [[nodiscard]] const Element* child(std::string_view wanted) const {
        for (const auto& element : children) {
            if (element.name == wanted)
                return &element;
        }
        return nullptr;
    }

    [[nodiscard]] std::vector<const Element*> all(std::string_view wanted) const {
        std::vector<const Element*> found;
        for (const auto& element : children) {
            if (element.name == wanted)
                found.push_back(&element);
        }
        return found;
    }

    // The element at the end of a path of child names, or null.
    [[nodiscard]] const Element* at(std::initializer_list<std::string_view> path) const {
        const Element* element = this;
        for (const auto name : path) {
            element = element->child(name);
            if (!element)
                return nullptr;
        }
        return element;
    }

    // The trimmed text at a path, absent when empty.
    [[nodiscard]] std::optional<std::string> value(
        std::initializer_list<std::string_view> path) const {
        const Element* element = at(path);
        if (!element)
            return std::nullopt;
        const std::string_view trimmed = text::trimmed(element->text);
        if (trimmed.empty())
            return std::nullopt;
        return std::string(trimmed);
    }

    [[nodiscard]] std::optional<std::string> attribute(std::string_view wanted) const {
        for (const auto& [name, value] : attributes) {
            if (name == wanted)
                return value;
        }
        return std::nullopt;
    }
};

[[nodiscard]] std::string_view localName(std::string_view name) {
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// A character reference's code point, if it names a character XML allows.
[[nodiscard]] std::optional<uint32_t> characterReference(std::string_view digits) {
    const bool hex = !digits.empty() && (digits[0] == 'x' || digits[0] == 'X');
    if (hex)
        digits.remove_prefix(1);
    if (digits.empty() || digits.size() > 8)
        return std::nullopt;
    uint32_t code = 0;
    for (char c : digits) {
        uint32_t digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<uint32_t>(c - '0');
        else if (hex && c >= 'a' && c <= 'f')
            digit = static_cast<uint32_t>(c - 'a' + 10);
        else if (hex && c >= 'A' && c <= 'F')
            digit = static_cast<uint32_t>(c - 'A' + 10);
        else
            return std::nullopt;
        code = code * (hex ? 16 : 10) + digit;
    }
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return std::nullopt;
    return code;
}

// Text with its entities decoded; an entity it doesn't know stays as written.
void appendDecoded(std::string& out, std::string_view raw) {
    std::size_t at = 0;
    while (at < raw.size()) {
        const auto amp = raw.find('&', at);
        if (amp == std::string_view::npos) {
            out.append(raw.substr(at));
            return;
        }
        out.append(raw.substr(at, amp - at));
        const auto semicolon = raw.find(';', amp);
        const std::string_view name = semicolon == std::string_view::npos
                                          ? std::string_view()
                                          : raw.substr(amp + 1, semicolon - amp - 1);
        std::optional<uint32_t> code;
        if (name == "lt")
            code = '<';
        else if (name == "gt")
            code = '>';
        else if (name == "amp")
            code = '&';
        else if (name == "quot")
            code = '"';
        else if (name == "apos")
            code = '\'';
        else if (name.size() > 1 && name[0] == '#')
            code = characterReference(name.substr(1));
        if (!code) {
            out.push_back('&');
            at = amp + 1;
            continue;
        }
        text::appendUTF8(out, *code);
        at = semicolon + 1;
    }
}

[[nodiscard]] bool isNameEnd(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '/' || c == '>';
}

[[nodiscard]] bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The whole document as one tree, or absent when it isn't well formed
// enough to read: an unclosed or mismatched element, a stray declaration, a
// second root, or nesting deeper than any statement.
class Reader {
  public:
    explicit Reader(std::string_view source) : m_source(source) {}

    [[nodiscard]] std::optional<Element> read() {
        while (m_at < m_source.size()) {
            const auto open = m_source.find('<', m_at);
            if (open == std::string_view::npos) {
                if (!takeText(m_source.substr(m_at)))
                    return std::nullopt;
                break;
            }
            if (!takeText(m_source.substr(m_at, open - m_at)))
                return std::nullopt;
            m_at = open;
            if (!markup())
                return std::nullopt;
        }
        if (!m_open.empty() || !m_root)
            return std::nullopt;
        return std::move(m_root);
    }

  private:
    // Text outside the root may only be blank.
    [[nodiscard]] bool takeText(std::string_view raw) {
        if (m_open.empty()) {
            for (char c : raw) {
                if (!isBlank(c))
                    return false;
            }
            return true;
        }
        appendDecoded(m_open.back().text, raw);
        return true;
    }

    [[nodiscard]] bool skipPast(std::string_view end) {
        const auto found = m_source.find(end, m_at);
        if (found == std::string_view::npos)
            return false;
        m_at = found + end.size();
        return true;
    }

    [[nodiscard]] bool markup() {
        const std::string_view rest = m_source.substr(m_at);
        if (rest.starts_with("<?"))
            return skipPast("?>");
        if (rest.starts_with("<!--"))
            return skipPast("-->");
        if (rest.starts_with("<![CDATA[")) {
            const auto close = m_source.find("]]>", m_at);
            if (m_open.empty() || close == std::string_view::npos)
                return false;
            const std::size_t from = m_at + 9;
            m_open.back().text.append(m_source.substr(from, close - from));
            m_at = close + 3;
            return true;
        }
        if (rest.starts_with("<!"))
            return false;
        if (rest.starts_with("</"))
            return closing();
        return opening();
    }

    [[nodiscard]] bool closing() {
        const auto end = m_source.find('>', m_at);
        if (end == std::string_view::npos || m_open.empty())
            return false;
        const std::string_view name = text::trimmed(m_source.substr(m_at + 2, end - m_at - 2));
        if (localName(name) != m_open.back().name)
            return false;
        m_at = end + 1;
        return finish();
    }

    [[nodiscard]] bool finish() {
        Element done = std::move(m_open.back());
        m_open.pop_back();
        done.end = m_at;
        if (!m_open.empty()) {
            m_open.back().children.push_back(std::move(done));
            return true;
        }
        if (m_root)
            return false;
        m_root = std::move(done);
        return true;
    }

    [[nodiscard]] bool opening() {
        if (m_open.size() >= kDeepestElement)
            return false;
        Element element;
        element.start = m_at;
        std::size_t at = m_at + 1;
        const std::size_t nameStart = at;
        while (at < m_source.size() && !isNameEnd(m_source[at]))
            ++at;
        if (at == nameStart || at >= m_source.size())
            return false;
        element.name = std::string(localName(m_source.substr(nameStart, at - nameStart)));
        for (;;) {
            while (at < m_source.size() && isBlank(m_source[at]))
                ++at;
            if (at >= m_source.size())
                return false;
            if (m_source[at] == '>') {
                m_at = at + 1;
                m_open.push_back(std::move(element));
                return true;
            }
            if (m_source[at] == '/') {
                if (at + 1 >= m_source.size() || m_source[at + 1] != '>')
                    return false;
                m_at = at + 2;
                m_open.push_back(std::move(element));
                return finish();
            }
            const std::size_t attributeStart = at;
            while (at < m_source.size() && m_source[at] != '=' && !isNameEnd(m_source[at]))
                ++at;
            const std::string_view attribute = m_source.substr(attributeStart, at - attributeStart);
            while (at < m_source.size() && isBlank(m_source[at]))
                ++at;
            if (attribute.empty() || at >= m_source.size() || m_source[at] != '=')
                return false;
            ++at;
            while (at < m_source.size() && isBlank(m_source[at]))
                ++at;
            if (at >= m_source.size() || (m_source[at] != '"' && m_source[at] != '\''))
                return false;
            const char quote = m_source[at];
            const auto close = m_source.find(quote, at + 1);
            if (close == std::string_view::npos)
                return false;
            std::string value;
            appendDecoded(value, m_source.substr(at + 1, close - at - 1));
            element.attributes.emplace_back(std::string(localName(attribute)), std::move(value));
            at = close + 1;
        }
    }

    std::string_view m_source;
    std::size_t m_at = 0;
    std::vector<Element> m_open;
    std::optional<Element> m_root;
};

[[nodiscard]] bool hasDocumentType(std::string_view text) {
    const std::string upper = text::uppercased(text);
    return upper.find("<!DOCTYPE") != std::string::npos ||
           upper.find("<!ENTITY") != std::string::npos;
}

// The statements of a document, wherever its root puts them.
[[nodiscard]] std::vector<const Element*> statementsOf(const Element& root) {
    const Element* holder = root.name == "BkToCstmrStmt" ? &root : root.child("BkToCstmrStmt");
    if (!holder)
        return {};
    return holder->all("Stmt");
}

[[nodiscard]] std::optional<std::string> accountNumber(const Element& statement) {
    if (auto iban = statement.value({"Acct", "Id", "IBAN"}))
        return iban;
    return statement.value({"Acct", "Id", "Othr", "Id"});
}

// A <Dt> or the day of a <DtTm>; the time and its zone are left aside, as
// the bank's own day is the one a person sees.
[[nodiscard]] std::optional<LocalDate> dayOf(const Element* holder) {
    if (!holder)
        return std::nullopt;
    auto written = holder->value({"Dt"});
    if (!written)
        written = holder->value({"DtTm"});
    if (!written || written->size() < 10)
        return std::nullopt;
    return LocalDate::fromISO(written->substr(0, 10));
}

// Up to .04 the status is the code itself; from .08 on it sits in <Cd>.
[[nodiscard]] std::string statusCode(const Element& entry) {
    const Element* status = entry.child("Sts");
    if (!status)
        return {};
    if (auto code = status->value({"Cd"}))
        return text::uppercased(*code);
    return text::uppercased(text::trimmed(status->text));
}

// A party's name, in the .02 form (<Dbtr><Nm>) or the .08 one (<Dbtr><Pty><Nm>).
[[nodiscard]] std::optional<std::string> partyName(const Element& parties, std::string_view role) {
    const Element* party = parties.child(role);
    if (!party)
        return std::nullopt;
    if (auto name = party->value({"Nm"}))
        return name;
    return party->value({"Pty", "Nm"});
}

[[nodiscard]] std::string joined(const std::vector<std::string>& parts, std::string_view between) {
    std::string out;
    for (const auto& part : parts) {
        if (part.empty())
            continue;
        if (!out.empty())
            out += between;
        out += part;
    }
    return out;
}

// Who is on the other side, and what the payment says: the debtor of money
// that came in, the creditor of money that went out.
[[nodiscard]] std::string transactionText(const Element& details, bool moneyIn) {
    std::optional<std::string> name;
    if (const Element* parties = details.child("RltdPties"))
        name = partyName(*parties, moneyIn ? "Dbtr" : "Cdtr");
    std::vector<std::string> lines;
    if (const Element* remittance = details.child("RmtInf")) {
        for (const Element* line : remittance->all("Ustrd"))
            lines.emplace_back(text::trimmed(line->text));
    }
    const std::string note = joined(lines, " ");
    if (name && *name == note)
        return note;
    return joined({name.value_or(""), note}, kJoiner);
}

[[nodiscard]] std::string entryText(const Element& entry, bool moneyIn) {
    const auto details = [&] {
        const Element* batch = entry.child("NtryDtls");
        return batch ? batch->all("TxDtls") : std::vector<const Element*>();
    }();
    // A batch is one booking of many payments; the bank's line for the whole
    // of it says more than any one payment does.
    if (details.size() > 1) {
        if (auto summary = entry.value({"AddtlNtryInf"}))
            return *summary;
    }
    if (!details.empty()) {
        std::string text = transactionText(*details.front(), moneyIn);
        if (!text.empty())
            return text;
    }
    return entry.value({"AddtlNtryInf"}).value_or("");
}

[[nodiscard]] std::optional<std::string> entryID(const Element& entry) {
    if (auto reference = entry.value({"AcctSvcrRef"}))
        return reference;
    if (auto reference = entry.value({"NtryRef"}))
        return reference;
    const Element* batch = entry.child("NtryDtls");
    const auto details = batch ? batch->all("TxDtls") : std::vector<const Element*>();
    if (details.size() != 1)
        return std::nullopt;
    auto endToEnd = details.front()->value({"Refs", "EndToEndId"});
    if (endToEnd && text::uppercased(*endToEnd) == "NOTPROVIDED")
        return std::nullopt;
    return endToEnd;
}

[[nodiscard]] ImportProfile syntheticProfile(AccountType type) {
    ImportProfile profile;
    profile.id = "camt053";
    profile.name = "CAMT.053 " + text::lowercased(label(type));
    profile.accountType = type;
    profile.hasHeader = false;
    profile.dateColumn = "BookgDt";
    profile.descriptionColumn = "RmtInf";
    profile.amountColumn = "Amt";
    profile.signConvention = SignConvention::positiveIsMoneyIn;
    profile.dateLayout = DateLayout::yearMonthDay;
    profile.isBuiltIn = true;
    return profile;
}

void readEntries(std::string_view source, const Element& statement, bool flipSigns,
                 FileAnalysis& analysis) {
    std::unordered_map<std::string, int64_t> occurrences;
    int64_t line = 0;
    for (const Element* entry : statement.all("Ntry")) {
        ++line;
        const std::string rawText(source.substr(entry->start, entry->end - entry->start));
        const auto issue = [&](std::string_view reason) {
            analysis.issues.push_back(RowIssue{line, std::string(reason), rawText});
        };

        const std::string status = statusCode(*entry);
        // An information entry tells of something the bank hasn't booked and
        // won't: it is no transaction.
        const Element* amountElement = entry->child("Amt");
        const auto reading = amountElement
                                 ? StatementAmount::read(text::trimmed(amountElement->text),
                                                         NumberStyle::decimalPoint)
                                 : StatementAmount::Reading{};
        if (status == "INFO" || reading.cents == 0) {
            ++analysis.blankLines;
            continue;
        }
        const Element* booked = entry->child("BookgDt");
        const Element* valued = entry->child("ValDt");
        // Pending entries often have a value date and no booking date yet.
        const auto date = booked ? dayOf(booked) : dayOf(valued);
        if (!date) {
            issue(kBadDate);
            continue;
        }
        if (!reading.cents || *reading.cents < 0) {
            issue(reading.finerThanCents ? StatementAmount::kFinerThanCents : kBadAmount);
            continue;
        }
        const auto direction = text::uppercased(entry->value({"CdtDbtInd"}).value_or(""));
        if (direction != "CRDT" && direction != "DBIT") {
            issue(kNoDirection);
            continue;
        }
        const auto currency = amountElement->attribute("Ccy");
        if (currency) {
            const std::string code = text::uppercased(text::trimmed(*currency));
            if (!analysis.currencyHint && isCurrencyCode(code))
                analysis.currencyHint = code;
            if (code != analysis.currencyHint) {
                issue(kOtherCurrency);
                continue;
            }
        }
        const bool moneyIn = direction == "CRDT";
        const std::string description = entryText(*entry, moneyIn);
        if (description.empty()) {
            issue(kNoDescription);
            continue;
        }
        int64_t amount = moneyIn ? *reading.cents : -*reading.cents;
        if (flipSigns)
            amount = -amount;

        const auto externalID = entryID(*entry);
        ParsedRow row;
        row.line = line;
        row.date = *date;
        row.postedDate = dayOf(valued).value_or(*date);
        row.amount = amount;
        row.status = status == "PDNG" ? TransactionStatus::pending : TransactionStatus::posted;
        row.setTexts({.rawText = rawText, .description = description, .externalID = externalID});
        row.occurrence = ++occurrences[row.fingerprint()];
        analysis.rows.push_back(std::move(row));
    }
}

}  // namespace

bool recognizes(std::string_view /*fileName*/, std::string_view text) {
    return text.find("urn:iso:std:iso:20022:tech:xsd:camt.053") != std::string_view::npos ||
           text.find("BkToCstmrStmt>") != std::string_view::npos;
}

FileAnalysis analyze(std::string_view fileName, std::string_view data, std::string_view text,
                     bool flipSigns) {
    FileAnalysis analysis = ImportAnalyzer::statementAnalysis(fileName, data);
    analysis.delimiter = ",";
    analysis.dateLayout = DateLayout::yearMonthDay;

    if (hasDocumentType(text)) {
        analysis.problem = std::string(kDocumentTypeProblem);
        return analysis;
    }
    const auto root = Reader(text).read();
    if (!root) {
        analysis.problem = std::string(kBrokenProblem);
        return analysis;
    }
    const auto found = statementsOf(*root);
    if (found.size() != 1) {
        analysis.problem = std::string(kStatementCountProblem);
        return analysis;
    }
    const Element& statement = *found.front();

    if (const auto stated = statement.value({"Acct", "Ccy"})) {
        const std::string currency = text::uppercased(*stated);
        if (!isCurrencyCode(currency)) {
            analysis.problem = std::string(kCurrencyProblem);
            return analysis;
        }
        analysis.currencyHint = currency;
    }
    const auto accountKind = text::uppercased(statement.value({"Acct", "Tp", "Cd"}).value_or(""));
    const AccountType type = accountKind == "SVGS" ? AccountType::savings : AccountType::checking;
    analysis.typeHint = type;
    analysis.profile = syntheticProfile(type);
    if (const auto number = accountNumber(statement)) {
        if (auto last4 = ImportAnalyzer::lastFourDigits(*number))
            analysis.digitHints.push_back(std::move(*last4));
    }

    readEntries(text, statement, flipSigns, analysis);
    return analysis;
}

std::vector<StatementPart> statements(std::string_view text) {
    if (hasDocumentType(text))
        return {};
    const auto root = Reader(text).read();
    if (!root)
        return {};
    const auto found = statementsOf(*root);
    if (found.size() < 2)
        return {};
    std::vector<std::string> accounts;
    for (const Element* statement : found) {
        const auto number = accountNumber(*statement);
        const auto last4 = number ? ImportAnalyzer::lastFourDigits(*number) : std::nullopt;
        accounts.push_back(last4 ? "account ending " + *last4 : std::string());
    }
    const auto labels = StatementFiles::labels(accounts);

    // Each statement keeps the document around the first and the last, so
    // that it reads as a file of its own.
    const std::string_view head = text.substr(0, found.front()->start);
    const std::string_view tail = text.substr(found.back()->end);
    std::vector<StatementPart> parts;
    for (std::size_t i = 0; i < found.size(); ++i) {
        std::string part(head);
        part += text.substr(found[i]->start, found[i]->end - found[i]->start);
        part += tail;
        parts.push_back({labels[i], std::move(part)});
    }
    return parts;
}

}  // namespace copperwick::CamtImport
