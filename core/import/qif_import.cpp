#include "core/import/qif_import.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/import/import_analyzer.h"
#include "core/import/statement_amount.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/text.h"

namespace copperwick::QifImport {

namespace {

constexpr std::string_view kInvestmentProblem =
    "Choose a QIF file of a checking, credit-card, cash or other account. Investment accounts "
    "are not supported.";
constexpr std::string_view kSeveralAccountsProblem =
    "This QIF file holds the transactions of several accounts. Export one account at a time.";
constexpr std::string_view kNoRegisterProblem =
    "This QIF file holds no account's transactions. Export a checking, credit-card, cash or "
    "other account from your budgeting program.";
constexpr std::string_view kAmbiguousDatesProblem =
    "Copperwick can't tell whether the dates in this file are day/month or month/day. Export it "
    "again with dates written as year-month-day.";
constexpr std::string_view kMixedDatesProblem =
    "The dates in this file are written both day/month and month/day. Export it again from "
    "your budgeting program.";
constexpr std::string_view kBadDate = "Missing or invalid date.";
constexpr std::string_view kBadAmount = "Missing or invalid exact amount.";
constexpr std::string_view kNoDescription = "No payee or memo in this transaction.";
constexpr std::string_view kJoiner = " \xC2\xB7 ";  // U+00B7 MIDDLE DOT between blanks

// One transaction: the lines between two "^" lines.
struct Record {
    std::vector<std::string_view> lines;
};

// A run of records under one "!Type:" header, with the account that an
// "!Account" block before it named ("" when none did).
struct Section {
    std::string type;  // lowercased, as after "!Type:"
    std::string account;
    std::vector<Record> records;
};

// The account types whose records are transactions of a register.
[[nodiscard]] bool isRegister(std::string_view type) {
    return type == "bank" || type == "ccard" || type == "cash" || type == "oth a" ||
           type == "oth l" || type == "invst";
}

[[nodiscard]] bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           text::equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

[[nodiscard]] std::vector<Section> readSections(std::string_view text) {
    std::vector<Section> sections;
    std::string account;
    std::string pendingAccount;
    bool inAccountBlock = false;
    bool inRegister = false;
    Record current;
    bool recordOpen = false;
    std::size_t at = 0;
    while (at <= text.size()) {
        auto end = text.find('\n', at);
        if (end == std::string_view::npos)
            end = text.size();
        std::string_view line = text.substr(at, end - at);
        at = end + 1;
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        if (text::trimmed(line).empty())
            continue;
        if (line.front() == '!') {
            const std::string_view header = text::trimmed(line);
            inAccountBlock = startsWithIgnoringCase(header, "!Account");
            inRegister = false;
            recordOpen = false;
            if (startsWithIgnoringCase(header, "!Type:")) {
                const std::string type = text::lowercased(text::trimmed(header.substr(6)));
                inRegister = isRegister(type);
                sections.push_back(Section{type, account, {}});
            }
            continue;
        }
        if (inAccountBlock) {
            if (line.front() == 'N')
                pendingAccount = std::string(text::trimmed(line.substr(1)));
            else if (line.front() == '^')
                account = pendingAccount;
            continue;
        }
        if (!inRegister)
            continue;
        if (text::trimmed(line) == "^") {
            if (!recordOpen)
                current = Record{};
            sections.back().records.push_back(std::move(current));
            current = Record{};
            recordOpen = false;
            continue;
        }
        recordOpen = true;
        current.lines.push_back(line);
    }
    // A last record without its "^" is still a record.
    if (recordOpen && inRegister)
        sections.back().records.push_back(std::move(current));
    return sections;
}

// The fields of a record by their letter; the first of each counts, so the
// split lines (S, E, $) after them never replace the transaction's own.
struct Fields {
    std::optional<std::string_view> date, amount, payee, memo, number, category;
};

[[nodiscard]] Fields fieldsOf(const Record& record) {
    Fields fields;
    std::optional<std::string_view> otherAmount;
    for (const auto line : record.lines) {
        const std::string_view value = text::trimmed(line.substr(1));
        const auto take = [&](std::optional<std::string_view>& field) {
            if (!field && !value.empty())
                field = value;
        };
        switch (line.front()) {
            case 'D':
                take(fields.date);
                break;
            case 'T':
                take(fields.amount);
                break;
            case 'U':
                take(otherAmount);
                break;
            case 'P':
                take(fields.payee);
                break;
            case 'M':
                take(fields.memo);
                break;
            case 'N':
                take(fields.number);
                break;
            case 'L':
                take(fields.category);
                break;
            default:
                break;
        }
    }
    if (!fields.amount)
        fields.amount = otherAmount;
    return fields;
}

[[nodiscard]] bool allDigits(std::string_view text) {
    if (text.empty())
        return false;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
    }
    return true;
}

[[nodiscard]] int number(std::string_view digits) {
    int value = 0;
    for (char c : digits)
        value = value * 10 + (c - '0');
    return value;
}

// A date as written, before the order of day and month is known: year
// first ("2024-12-31"), or two small numbers and a year ("12/31/2024",
// "12/31'24", "1/ 5/24").
struct WrittenDate {
    bool yearFirst = false;
    int first = 0;
    int second = 0;
    int year = 0;
};

[[nodiscard]] std::optional<WrittenDate> writtenDate(std::string_view text) {
    std::string plain;
    bool apostrophe = false;
    for (char c : text) {
        if (c == ' ')
            continue;
        if (c == '\'') {
            apostrophe = true;
            c = '/';
        }
        plain.push_back(c == '-' || c == '.' ? '/' : c);
    }
    const auto pieces = text::splitKeepingEmpty(plain, '/');
    if (pieces.size() != 3)
        return std::nullopt;
    for (const auto piece : pieces) {
        if (!allDigits(piece) || piece.size() > 4)
            return std::nullopt;
    }
    WrittenDate date;
    if (pieces[0].size() == 4) {
        if (pieces[1].size() > 2 || pieces[2].size() > 2)
            return std::nullopt;
        date.yearFirst = true;
        date.year = number(pieces[0]);
        date.first = number(pieces[1]);
        date.second = number(pieces[2]);
        return date;
    }
    if (pieces[0].size() > 2 || pieces[1].size() > 2 || pieces[2].size() == 3)
        return std::nullopt;
    date.first = number(pieces[0]);
    date.second = number(pieces[1]);
    date.year = number(pieces[2]);
    // Quicken marks years from 2000 with an apostrophe; a bare two-digit
    // year from the seventies on is of the last century.
    if (pieces[2].size() <= 2)
        date.year += apostrophe || date.year < 70 ? 2000 : 1900;
    return date;
}

[[nodiscard]] std::optional<LocalDate> dateOf(const WrittenDate& written, bool dayFirst) {
    if (written.yearFirst)
        return LocalDate::make(written.year, written.first, written.second);
    return dayFirst ? LocalDate::make(written.year, written.second, written.first)
                    : LocalDate::make(written.year, written.first, written.second);
}

// Whether the amounts use a decimal comma: some do ("12,34") and none uses
// a decimal point. A last separator before three digits ("1,234", "1.234")
// is taken for a thousands separator and tells nothing.
[[nodiscard]] bool usesDecimalComma(const std::vector<std::string_view>& amounts) {
    bool comma = false;
    for (const auto amount : amounts) {
        const auto last = amount.find_last_of(".,");
        if (last == std::string_view::npos)
            continue;
        std::size_t digits = 0;
        while (last + 1 + digits < amount.size() && amount[last + 1 + digits] >= '0' &&
               amount[last + 1 + digits] <= '9')
            ++digits;
        if (digits == 3)
            continue;
        if (amount[last] == '.')
            return false;
        comma = true;
    }
    return comma;
}

[[nodiscard]] std::string description(const Fields& fields) {
    std::string text;
    if (fields.payee && fields.memo && *fields.payee != *fields.memo)
        text = std::string(*fields.payee) + std::string(kJoiner) + std::string(*fields.memo);
    else if (fields.payee)
        text = *fields.payee;
    else if (fields.memo)
        text = *fields.memo;
    if (text.empty() && fields.number && allDigits(*fields.number))
        text = "CHECK " + std::string(*fields.number);
    return text;
}

// The starting balance Quicken writes as the register's first record is no
// transaction: its category names the account itself, in brackets.
[[nodiscard]] bool isOpeningBalance(const Fields& fields) {
    return fields.payee && text::equalsIgnoringCase(*fields.payee, "Opening Balance") &&
           fields.category && fields.category->starts_with('[');
}

struct Kind {
    AccountType type = AccountType::checking;
    std::string_view id;
    std::string_view name;
};

// Copperwick's cash wallets take no imports, so a cash register goes to an
// account of the "other" type, as asset and liability registers do.
[[nodiscard]] Kind kindOf(std::string_view type) {
    if (type == "ccard")
        return {AccountType::creditCard, "qif-card", "QIF credit card"};
    if (type == "cash")
        return {AccountType::other, "qif-cash", "QIF cash"};
    if (type == "oth a" || type == "oth l")
        return {AccountType::other, "qif-other", "QIF other"};
    return {AccountType::checking, "qif-bank", "QIF checking"};
}

[[nodiscard]] ImportProfile syntheticProfile(const Kind& kind) {
    ImportProfile profile;
    profile.id = std::string(kind.id);
    profile.name = std::string(kind.name);
    profile.accountType = kind.type;
    profile.hasHeader = false;
    profile.dateColumn = "D";
    profile.descriptionColumn = "P";
    profile.amountColumn = "T";
    profile.categoryColumn = "L";
    profile.checkNumberColumn = "N";
    profile.signConvention = SignConvention::positiveIsMoneyIn;
    profile.isBuiltIn = true;
    return profile;
}

[[nodiscard]] std::string rawTextOf(const Record& record) {
    std::string raw;
    for (const auto line : record.lines) {
        if (!raw.empty())
            raw += '\n';
        raw += line;
    }
    return raw;
}

void readRecords(const std::vector<const Record*>& records, bool dayFirst, bool flipSigns,
                 FileAnalysis& analysis) {
    std::vector<std::string_view> amounts;
    for (const Record* record : records) {
        if (const auto amount = fieldsOf(*record).amount)
            amounts.push_back(*amount);
    }
    const NumberStyle style =
        usesDecimalComma(amounts) ? NumberStyle::decimalComma : NumberStyle::decimalPoint;

    // A record's number in the account's register serves as its line, as an
    // OFX block's does.
    std::unordered_map<std::string, int64_t> occurrences;
    int64_t line = 0;
    for (const Record* record : records) {
        ++line;
        std::string rawText = rawTextOf(*record);
        const auto issue = [&](std::string_view reason) {
            analysis.issues.push_back(RowIssue{line, std::string(reason), std::move(rawText)});
        };
        const Fields fields = fieldsOf(*record);
        const auto reading = fields.amount ? StatementAmount::read(*fields.amount, style)
                                           : StatementAmount::Reading{};
        if (record->lines.empty() || reading.cents == 0 || isOpeningBalance(fields)) {
            ++analysis.blankLines;
            continue;
        }
        const auto written = fields.date ? writtenDate(*fields.date) : std::nullopt;
        const auto date = written ? dateOf(*written, dayFirst) : std::nullopt;
        if (!date) {
            issue(kBadDate);
            continue;
        }
        if (!reading.cents) {
            issue(reading.finerThanCents ? StatementAmount::kFinerThanCents : kBadAmount);
            continue;
        }
        const std::string text = description(fields);
        if (text.empty()) {
            issue(kNoDescription);
            continue;
        }
        const int64_t amount = flipSigns ? -*reading.cents : *reading.cents;
        std::optional<std::string_view> checkNumber;
        if (fields.number && allDigits(*fields.number))
            checkNumber = fields.number;

        ParsedRow row;
        row.line = line;
        row.date = *date;
        row.postedDate = *date;
        row.amount = amount;
        row.status = TransactionStatus::posted;
        row.setTexts({.rawText = rawText,
                      .description = text,
                      .bankCategory = fields.category,
                      .checkNumber = checkNumber});
        row.occurrence = ++occurrences[row.fingerprint()];
        analysis.rows.push_back(std::move(row));
    }
}

}  // namespace

bool recognizes(std::string_view fileName, std::string_view text) {
    if (text::lowercased(ImportAnalyzer::extension(fileName)) == "qif")
        return true;
    std::string_view start = text.substr(0, 64);
    if (start.starts_with("\xEF\xBB\xBF"))
        start.remove_prefix(3);
    start = text::trimmed(start);
    return startsWithIgnoringCase(start, "!Type:") || startsWithIgnoringCase(start, "!Account") ||
           startsWithIgnoringCase(start, "!Option:");
}

FileAnalysis analyze(std::string_view fileName, std::string_view data, std::string_view text,
                     bool flipSigns) {
    FileAnalysis analysis = ImportAnalyzer::statementAnalysis(fileName, data);
    analysis.delimiter = ",";

    const auto sections = readSections(text);
    // The registers that hold transactions, one per account and type.
    const Section* chosen = nullptr;
    bool several = false;
    bool investment = false;
    for (const auto& section : sections) {
        investment = investment || section.type == "invst";
        if (!isRegister(section.type) || section.records.empty())
            continue;
        if (chosen && (chosen->account != section.account || chosen->type != section.type))
            several = true;
        if (!chosen)
            chosen = &section;
    }
    if (several) {
        analysis.problem = std::string(investment ? kInvestmentProblem : kSeveralAccountsProblem);
        return analysis;
    }
    if (!chosen) {
        // A register with no transactions yet is fine, and empty.
        for (const auto& section : sections) {
            if (isRegister(section.type))
                chosen = &section;
        }
    }
    if (investment && (!chosen || chosen->type == "invst")) {
        analysis.problem = std::string(kInvestmentProblem);
        return analysis;
    }
    if (!chosen) {
        analysis.problem = std::string(kNoRegisterProblem);
        return analysis;
    }

    const Kind kind = kindOf(chosen->type);
    analysis.typeHint = kind.type;
    analysis.profile = syntheticProfile(kind);

    std::vector<const Record*> records;
    for (const auto& section : sections) {
        if (section.account != chosen->account || section.type != chosen->type)
            continue;
        for (const auto& record : section.records)
            records.push_back(&record);
    }

    // The order of day and month is the file's, not the line's: one date
    // that is a real day in only one order settles it for all.
    bool dayFirstSeen = false;
    bool monthFirstSeen = false;
    bool undecided = false;
    bool anyWithoutYearFirst = false;
    for (const Record* record : records) {
        const auto date = fieldsOf(*record).date;
        const auto written = date ? writtenDate(*date) : std::nullopt;
        if (!written || written->yearFirst)
            continue;
        anyWithoutYearFirst = true;
        const bool dayFirst = dateOf(*written, true).has_value();
        const bool monthFirst = dateOf(*written, false).has_value();
        dayFirstSeen = dayFirstSeen || (dayFirst && !monthFirst);
        monthFirstSeen = monthFirstSeen || (monthFirst && !dayFirst);
        undecided = undecided || (dayFirst && monthFirst && written->first != written->second);
    }
    if (dayFirstSeen && monthFirstSeen) {
        analysis.problem = std::string(kMixedDatesProblem);
        return analysis;
    }
    if (!dayFirstSeen && !monthFirstSeen && undecided) {
        analysis.problem = std::string(kAmbiguousDatesProblem);
        return analysis;
    }
    analysis.dateLayout = !anyWithoutYearFirst ? DateLayout::yearMonthDay
                          : dayFirstSeen       ? DateLayout::dayMonthYear
                                               : DateLayout::monthDayYear;

    readRecords(records, dayFirstSeen, flipSigns, analysis);
    return analysis;
}

}  // namespace copperwick::QifImport
