#include "core/import/import_analyzer.h"

#include <algorithm>
#include <array>
#include <functional>
#include <set>

#include <openssl/evp.h>
#include <unicode/regex.h>

#include "core/import/camt_import.h"
#include "core/import/layout_guesser.h"
#include "core/import/ofx_import.h"
#include "core/import/qif_import.h"
#include "core/matching/merchant_text.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/currency_code.h"

namespace copperwick {

namespace {

constexpr std::array<std::string_view, 6> kCardMarkers{
    "ONLINE PAYMENT, THANK YOU", "ONLINE PAYMENT THANK YOU",      "INTEREST CHARGE ON PURCHASES",
    "PAYMENT THANK YOU",         "AUTOMATIC PAYMENT - THANK YOU", "AUTOPAY PAYMENT"};
constexpr std::array<std::string_view, 10> kBankMarkers{"ZELLE",
                                                        "PAYROLL",
                                                        "DIRECT DEP",
                                                        "DIR DEP",
                                                        "ATM ",
                                                        "CASH DEPOSIT",
                                                        "PURCHASE AUTHORIZED ON",
                                                        "ONLINE TRANSFER",
                                                        "MOBILE DEPOSIT",
                                                        "CHECK #"};

// Which kinds of marker a file's normalized descriptions have shown so far.
// Once both have, nothing can change the answer, so later texts are passed by.
class MarkerScan {
  public:
    void add(std::string_view normalized) {
        if (sawBoth())
            return;
        const auto contains = [normalized](std::string_view marker) {
            return normalized.find(marker) != std::string_view::npos;
        };
        m_card = m_card || std::any_of(kCardMarkers.begin(), kCardMarkers.end(), contains);
        m_bank = m_bank || std::any_of(kBankMarkers.begin(), kBankMarkers.end(), contains);
    }

    [[nodiscard]] bool sawBoth() const { return m_card && m_bank; }

    [[nodiscard]] std::optional<AccountType> guess() const {
        if (m_card && !m_bank)
            return AccountType::creditCard;
        if (m_bank && !m_card)
            return AccountType::checking;
        return std::nullopt;
    }

  private:
    bool m_card = false;
    bool m_bank = false;
};

}  // namespace

namespace ImportAnalyzer {

namespace {

constexpr std::size_t kHeaderSearchRecords = 12;
constexpr std::size_t kHeaderlessSampleRecords = 5;
constexpr std::size_t kDateSampleRecords = 200;
constexpr std::size_t kSampleRecords = 8;

const char* const kUnrecognized =
    "Copperwick doesn't recognize this layout yet. Choose which columns hold the date, description "
    "and amount.";

std::string lowercasedTrimmed(std::string_view text) {
    return text::lowercased(text::trimmedWhitespace(text));
}

bool containsIgnoringCase(std::string_view haystack, std::string_view needle) {
    return text::lowercased(haystack).find(text::lowercased(needle)) != std::string::npos;
}

// A field as the row procedure reads it: trimmed of blanks and line breaks,
// absent when the column is missing, the row is short, or nothing is left.
std::optional<std::string_view> readField(const CSVRecord& record,
                                          std::optional<std::size_t> column) {
    if (!column || *column >= record.fields.size())
        return std::nullopt;
    const auto trimmed = text::trimmed(record.fields[*column]);
    if (trimmed.empty())
        return std::nullopt;
    return trimmed;
}

std::string quoted(std::string_view text) {
    return "\u201C" + std::string(text) + "\u201D";
}

void appendDigits(std::string_view text, std::string& out) {
    for (char c : text) {
        if (c >= '0' && c <= '9')
            out.push_back(c);
    }
}

// Counts rows by their occurrence key, "{fingerprint}|card:{card, lower
// case}", without keeping a copy of every key: each slot holds 32 bits of the
// key's hash, which also place it, and the latest row with that key. A key
// is rebuilt from its row only when the hashes agree, and growing the table
// never has to look at the rows. The fingerprint's date and amount are
// compared as values: their text forms hold no bar and stand for one value
// each, so the keys are equal exactly when these and the rest are.
class OccurrenceCounter {
  public:
    // `rows` is the list the counted rows go into. The table starts small and
    // doubles, so its size follows the rows actually read.
    explicit OccurrenceCounter(const std::vector<ParsedRow>& rows) : m_rows(rows), m_slots(16) {}

    // The occurrence of `row`, which the caller appends to the rows next.
    [[nodiscard]] int64_t count(const ParsedRow& row) {
        if ((m_used + 1) * 4 > m_slots.size() * 3)
            grow();
        keyRest(row, m_key);
        const uint32_t hash = hashOf(row, m_key);
        // Rows are counted in 32 bits; no file comes near four billion lines.
        const auto index = static_cast<uint32_t>(m_rows.size());
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
            Slot& slot = m_slots[i];
            if (slot.rowPlusOne == 0) {
                slot = {hash, index + 1};
                ++m_used;
                return 1;
            }
            if (slot.hash != hash)
                continue;
            const ParsedRow& latest = m_rows[slot.rowPlusOne - 1];
            if (latest.date != row.date || latest.amount != row.amount)
                continue;
            keyRest(latest, m_otherKey);
            if (m_otherKey != m_key)
                continue;
            slot.rowPlusOne = index + 1;
            return latest.occurrence + 1;
        }
    }

  private:
    struct Slot {
        uint32_t hash = 0;
        uint32_t rowPlusOne = 0;  // 0 for an empty slot
    };

    // The key after "{date}|{amount}|".
    static void keyRest(const ParsedRow& row, std::string& out) {
        out.assign(row.normalizedDescription());
        out += "|card:";
        if (const auto card = row.cardIdentifier())
            out += text::lowercased(*card);
    }

    static uint32_t hashOf(const ParsedRow& row, std::string_view keyRest) {
        uint64_t hash = std::hash<std::string_view>{}(keyRest);
        const auto mix = [&hash](uint64_t value) {
            hash ^= value + 0x9e3779b97f4a7c15ULL + (hash << 6) + (hash >> 2);
        };
        mix(static_cast<uint64_t>(row.date.year * 10'000 + row.date.month * 100 + row.date.day));
        mix(static_cast<uint64_t>(row.amount));
        // The low bits place the slot, so every bit of the input must reach them.
        hash = (hash ^ (hash >> 30)) * 0xbf58476d1ce4e5b9ULL;
        hash = (hash ^ (hash >> 27)) * 0x94d049bb133111ebULL;
        return static_cast<uint32_t>(hash ^ (hash >> 31));
    }

    void grow() {
        std::vector<Slot> old(m_slots.size() * 2);
        old.swap(m_slots);
        const std::size_t mask = m_slots.size() - 1;
        for (const Slot& slot : old) {
            if (slot.rowPlusOne == 0)
                continue;
            std::size_t i = slot.hash & mask;
            while (m_slots[i].rowPlusOne != 0)
                i = (i + 1) & mask;
            m_slots[i] = slot;
        }
    }

    const std::vector<ParsedRow>& m_rows;
    std::vector<Slot> m_slots;
    std::size_t m_used = 0;
    std::string m_key, m_otherKey;  // kept between rows for their buffers
};

// Where each of the layout's columns stands in this file.
struct Columns {
    std::optional<std::size_t> date, postedDate, description, merchant, category, amount, debit,
        credit, status, checkNumber, cardNumber, cardholder, currency, externalID, signMarker;
};

Columns locate(const ImportProfile& profile, const std::map<std::string, std::size_t>& columns) {
    const auto find = [&](const std::optional<std::string>& name) -> std::optional<std::size_t> {
        if (!name)
            return std::nullopt;
        const auto it = columns.find(lowercasedTrimmed(*name));
        if (it == columns.end())
            return std::nullopt;
        return it->second;
    };
    Columns c;
    c.date = find(profile.dateColumn);
    c.postedDate = find(profile.postedDateColumn);
    c.description = find(profile.descriptionColumn);
    c.merchant = find(profile.merchantColumn);
    c.category = find(profile.categoryColumn);
    c.amount = find(profile.amountColumn);
    // With an amount column in the file, split columns play no part.
    if (!c.amount) {
        c.debit = find(profile.debitColumn);
        c.credit = find(profile.creditColumn);
    }
    c.status = find(profile.statusColumn);
    c.checkNumber = find(profile.checkNumberColumn);
    c.cardNumber = find(profile.cardNumberColumn);
    c.cardholder = find(profile.cardholderColumn);
    c.currency = find(profile.currencyColumn);
    c.externalID = find(profile.externalIDColumn);
    // A marker only says which way a single amount went.
    if (c.amount)
        c.signMarker = find(profile.signMarkerColumn);
    return c;
}

// Whether a row has anything in the columns that carry its money.
bool hasAmountText(const CSVRecord& record, const Columns& columns) {
    return readField(record, columns.amount) || readField(record, columns.debit) ||
           readField(record, columns.credit);
}

// A row missing its date or its money is a balance or total line when one
// of its fields says so; a row missing both can't be a transaction at all.
bool isSummaryRow(const CSVRecord& record, bool hasDate, bool hasAmount) {
    if (!hasDate && !hasAmount)
        return true;
    return std::any_of(record.fields.begin(), record.fields.end(),
                       [](const std::string& field) { return isSummaryText(field); });
}

FileAnalysis freshAnalysis(std::string_view fileName, std::string_view data) {
    FileAnalysis analysis = statementAnalysis(fileName, data);
    analysis.digitHints = digitHints(fileName);
    return analysis;
}

// The row procedure for one data record: appends the row, or records the
// first issue it meets.
class RowReader {
  public:
    RowReader(const ImportProfile& profile, const Columns& columns, FileAnalysis& analysis,
              bool flipSigns)
        : m_profile(profile),
          m_columns(columns),
          m_analysis(analysis),
          m_flipSigns(flipSigns),
          m_numberStyle(profile.numberStyle.value_or(NumberStyle::decimalPoint)),
          m_occurrences(analysis.rows) {
        for (const auto& value : profile.pendingValues)
            m_pendingValues.insert(text::lowercased(value));
        for (const auto& marker : profile.moneyOutMarkers.value_or(std::vector<std::string>{}))
            m_moneyOutMarkers.insert(text::lowercased(marker));
    }

    void read(const CSVRecord& record) {
        if (record.isBlank()) {
            ++m_analysis.blankLines;
            return;
        }
        const auto issue = [&](std::string reason) {
            m_analysis.issues.push_back({record.line, std::move(reason), record.rawText});
        };

        const auto dateText = readField(record, m_columns.date);
        if (!dateText) {
            if (isSummaryRow(record, false, hasAmountText(record, m_columns))) {
                ++m_analysis.blankLines;
                return;
            }
            return issue("No date in this row (it may be a summary line).");
        }
        std::optional<LocalDate> date;
        if (m_analysis.dateLayout)
            date = parseDate(*m_analysis.dateLayout, *dateText);
        if (!date) {
            // "Total" where the date would be.
            if (isSummaryText(*dateText)) {
                ++m_analysis.blankLines;
                return;
            }
            return issue("The date " + quoted(*dateText) + " isn't a date Copperwick can read.");
        }

        if (m_columns.currency) {
            const auto code = readField(record, m_columns.currency);
            const std::string upper = code ? text::uppercased(*code) : std::string();
            if (!code || !isCurrencyCode(upper))
                return issue("No valid currency for this row.");
            if (!m_analysis.currencyHint)
                m_analysis.currencyHint = upper;
            if (upper != *m_analysis.currencyHint) {
                m_analysis.problem =
                    "This file contains multiple account currencies. Export one currency at a "
                    "time.";
                return issue("Currency differs from earlier rows.");
            }
        }

        // A dated line without money, such as "Beginning balance as of ...",
        // is the bank's summary when it says so.
        const auto noAmount = [&] {
            if (isSummaryRow(record, true, false))
                ++m_analysis.blankLines;
            else
                issue("No amount in this row.");
        };

        std::optional<LocalDate> postedDate;
        if (const auto posted = readField(record, m_columns.postedDate))
            postedDate = parseDate(*m_analysis.dateLayout, *posted);

        int64_t amount = 0;
        if (m_columns.amount) {
            const auto amountText = readField(record, m_columns.amount);
            if (!amountText)
                return noAmount();
            const auto cents = Money::parseCents(*amountText, m_numberStyle);
            if (!cents)
                return issue("The amount " + quoted(*amountText) +
                             " isn't an exact dollar amount.");
            if (const auto marker = readField(record, m_columns.signMarker)) {
                // The marker says which way the money went; the amount is only its size.
                const int64_t size = *cents < 0 ? -*cents : *cents;
                amount = m_moneyOutMarkers.contains(text::lowercased(*marker)) ? -size : size;
            } else {
                amount = m_profile.signConvention == SignConvention::positiveIsMoneyOut ? -*cents
                                                                                        : *cents;
            }
        } else {
            const auto debitText = readField(record, m_columns.debit);
            const auto creditText = readField(record, m_columns.credit);
            if (!debitText && !creditText)
                return noAmount();
            std::optional<int64_t> debit, credit;
            if (debitText) {
                debit = Money::parseCents(*debitText, m_numberStyle);
                if (!debit)
                    return issue("The debit " + quoted(*debitText) +
                                 " isn't an exact dollar amount.");
                debit = *debit < 0 ? -*debit : *debit;
            }
            if (creditText) {
                credit = Money::parseCents(*creditText, m_numberStyle);
                if (!credit)
                    return issue("The credit " + quoted(*creditText) +
                                 " isn't an exact dollar amount.");
                credit = *credit < 0 ? -*credit : *credit;
            }
            if (debit && !credit) {
                amount = -*debit;
            } else if (!debit && credit) {
                amount = *credit;
            } else if (*debit == 0) {
                amount = *credit;
            } else if (*credit == 0) {
                amount = -*debit;
            } else {
                return issue("Both Debit and Credit are filled in, so the direction is unclear.");
            }
        }
        if (m_flipSigns)
            amount = -amount;

        auto description = readField(record, m_columns.description);
        const auto merchant = readField(record, m_columns.merchant);
        if (!description)
            description = merchant;
        if (!description)
            return issue("No description in this row.");
        if (description->find('\n') != std::string_view::npos) {
            m_description.assign(*description);
            std::replace(m_description.begin(), m_description.end(), '\n', ' ');
            description = m_description;
        }

        const auto status = readField(record, m_columns.status);
        const bool pending = status && m_pendingValues.contains(text::lowercased(*status));

        std::optional<std::string_view> lastFour;
        if (const auto card = readField(record, m_columns.cardNumber)) {
            m_digits.clear();
            appendDigits(*card, m_digits);
            if (m_digits.size() >= 4)
                lastFour = std::string_view(m_digits).substr(m_digits.size() - 4);
        }
        if (lastFour &&
            std::find(m_cardDigits.begin(), m_cardDigits.end(), *lastFour) == m_cardDigits.end())
            m_cardDigits.emplace_back(*lastFour);
        std::optional<std::string_view> cardIdentifier;
        if (const auto holder = readField(record, m_columns.cardholder)) {
            m_card.assign("Cardholder: ").append(*holder);
            cardIdentifier = m_card;
        } else if (lastFour) {
            m_card.assign("Card ending ").append(*lastFour);
            cardIdentifier = m_card;
        }

        ParsedRow row;
        row.line = record.line;
        row.date = *date;
        row.postedDate = postedDate;
        row.amount = amount;
        row.status = pending ? TransactionStatus::pending : TransactionStatus::posted;
        row.setTexts({.rawText = record.rawText,
                      .description = *description,
                      .bankMerchant = merchant,
                      .bankCategory = readField(record, m_columns.category),
                      .checkNumber = readField(record, m_columns.checkNumber),
                      .cardIdentifier = cardIdentifier,
                      .externalID = readField(record, m_columns.externalID)});
        row.occurrence = m_occurrences.count(row);
        if (!m_profile.accountType)
            m_markers.add(row.normalizedDescription());
        m_analysis.rows.push_back(std::move(row));
    }

    // Card digits seen in the rows, in order of first appearance.
    [[nodiscard]] const std::vector<std::string>& cardDigits() const { return m_cardDigits; }
    // What the rows' descriptions say about the account, when the layout doesn't.
    [[nodiscard]] std::optional<AccountType> typeHint() const {
        return m_profile.accountType ? m_profile.accountType : m_markers.guess();
    }

  private:
    const ImportProfile& m_profile;
    const Columns& m_columns;
    FileAnalysis& m_analysis;
    bool m_flipSigns;
    NumberStyle m_numberStyle;
    std::set<std::string> m_pendingValues;
    std::set<std::string> m_moneyOutMarkers;
    OccurrenceCounter m_occurrences;
    MarkerScan m_markers;
    std::vector<std::string> m_cardDigits;
    // Kept between rows for their buffers.
    std::string m_description, m_digits, m_card;
};

// Where the data records come from, for `parse` and for the streaming read:
// calls `visit` on each record after the header, in order, until it returns
// false.
using ForEachRecord = std::function<void(const std::function<bool(const CSVRecord&)>& visit)>;

// Puts the header in the analysis; returns the index of the first data record.
std::size_t takeHeader(const DetectedLayout& layout, const std::vector<CSVRecord>& head,
                       FileAnalysis& analysis) {
    analysis.profile = layout.profile;
    if (!layout.headerIndex) {
        analysis.headers = layout.profile.headerlessColumns;
        return 0;
    }
    analysis.headers = head[*layout.headerIndex].fields;
    analysis.skippedLines = static_cast<int64_t>(*layout.headerIndex);
    return *layout.headerIndex + 1;
}

// Everything `parse` does past the header. The records are walked twice at
// most: once for the date samples, once for the rows.
void readData(const ForEachRecord& forEachRecord, std::size_t expectedRows,
              const DetectedLayout& layout, FileAnalysis& analysis, bool flipSigns) {
    const ImportProfile& profile = layout.profile;
    const Columns columns = locate(profile, layout.columns);
    if (!columns.date || !columns.description ||
        (!columns.amount && (!columns.debit || !columns.credit))) {
        analysis.problem = "The layout " + quoted(profile.name) +
                           " is missing a date, description or amount column.";
        return;
    }
    analysis.currencyHint = profile.currency;

    if (profile.dateLayout) {
        analysis.dateLayout = profile.dateLayout;
    } else {
        std::vector<std::string> samples;
        forEachRecord([&](const CSVRecord& record) {
            if (!record.isBlank() && *columns.date < record.fields.size())
                samples.push_back(record.fields[*columns.date]);
            return samples.size() < kDateSampleRecords;
        });
        analysis.dateLayout = detectDateLayout(samples);
    }

    analysis.rows.reserve(expectedRows);
    RowReader reader(profile, columns, analysis, flipSigns);
    forEachRecord([&](const CSVRecord& record) {
        reader.read(record);
        return true;
    });

    if (!analysis.dateLayout)
        analysis.problem = "The dates in this file aren't in a format Copperwick can read.";
    for (const auto& digits : reader.cardDigits()) {
        if (std::find(analysis.digitHints.begin(), analysis.digitHints.end(), digits) ==
            analysis.digitHints.end())
            analysis.digitHints.push_back(digits);
    }
    analysis.typeHint = reader.typeHint();
}

// Detection and the samples need only the head of the file: its first twelve
// records, and the first eight with content wherever they stand. Blank
// records past the twelfth play no part, so a file that opens with a long
// run of them still holds only a few records here.
std::vector<CSVRecord> readHead(std::string_view text, char32_t delimiter) {
    static_assert(kSampleRecords >= kHeaderlessSampleRecords);
    std::vector<CSVRecord> head;
    CSVRecordStream stream(text, delimiter);
    CSVRecord record;
    std::size_t withContent = 0;
    while ((head.size() < kHeaderSearchRecords || withContent < kSampleRecords) &&
           stream.next(record)) {
        const bool blank = record.isBlank();
        if (blank && head.size() >= kHeaderSearchRecords)
            continue;
        withContent += blank ? 0 : 1;
        head.push_back(record);
    }
    return head;
}

FileAnalysis analyzeText(FileAnalysis analysis, std::string_view data, std::string_view text,
                         const std::vector<ImportProfile>& profiles, bool flipSigns) {
    if (OFXImport::recognizes(analysis.fileName, text))
        return OFXImport::analyze(analysis.fileName, data, text, flipSigns);
    if (CamtImport::recognizes(analysis.fileName, text))
        return CamtImport::analyze(analysis.fileName, data, text, flipSigns);
    if (QifImport::recognizes(analysis.fileName, text))
        return QifImport::analyze(analysis.fileName, data, text, flipSigns);

    const char32_t delimiter = CSVReader::detectDelimiter(text);
    analysis.delimiter = std::string(1, static_cast<char>(delimiter));
    const auto head = readHead(text, delimiter);

    for (const auto& record : head) {
        if (analysis.sampleRecords.size() == kSampleRecords)
            break;
        if (!record.isBlank())
            analysis.sampleRecords.push_back(record.fields);
    }

    if (const auto layout = detect(head, profiles, analysis.fileName)) {
        // The rows are read in one pass over the text that drops each record
        // once its row is made; the records ahead of the data are read again
        // rather than kept, as there are at most twelve of them.
        const std::size_t firstData = takeHeader(*layout, head, analysis);
        const auto forEachRecord = [&](const std::function<bool(const CSVRecord&)>& visit) {
            CSVRecordStream stream(text, delimiter);
            CSVRecord record;
            for (std::size_t skipped = 0; skipped < firstData; ++skipped) {
                if (!stream.next(record))
                    return;
            }
            while (stream.next(record)) {
                if (!visit(record))
                    return;
            }
        };
        const std::size_t records = CSVReader::maxRecords(text);
        readData(forEachRecord, records > firstData ? records - firstData : 0, *layout, analysis,
                 flipSigns);
        return analysis;
    }
    analysis.problem = kUnrecognized;
    for (const auto& record : head) {
        if (!record.isBlank()) {
            analysis.headers = record.fields;
            break;
        }
    }
    return analysis;
}

FileAnalysis analyzeBytes(std::string_view fileName, std::string_view data,
                          const std::vector<ImportProfile>& profiles, bool flipSigns) {
    FileAnalysis analysis = freshAnalysis(fileName, data);
    const auto decoded = CSVReader::decodeBorrowing(data);
    if (const auto* error = std::get_if<CSVReaderError>(&decoded)) {
        analysis.problem = *error == CSVReaderError::empty
                               ? "This file is empty."
                               : "This file isn't readable text. Export it from your bank as CSV.";
        return analysis;
    }
    return analyzeText(std::move(analysis), data, std::get<DecodedText>(decoded).view(), profiles,
                       flipSigns);
}

}  // namespace

FileAnalysis analyze(std::string_view fileName, std::string_view data,
                     const std::vector<ImportProfile>& profiles, bool flipSigns) {
    auto analysis = analyzeBytes(fileName, data, profiles, flipSigns);
    const bool unrecognized = !analysis.profile && analysis.problem == kUnrecognized;
    if (!unrecognized)
        return analysis;
    auto workedOut = LayoutGuesser::workOut(fileName, data);
    if (!workedOut.check) {
        analysis.layoutGaps = std::move(workedOut.gaps);
        return analysis;
    }
    const ImportProfile& profile = workedOut.check->profile;
    auto guessed = flipSigns ? analyzeBytes(fileName, data, {profile}, true)
                             : std::move(workedOut.check->analysis);
    guessed.layoutWorkedOut = LayoutGuesser::workedOutLine(profile);
    return guessed;
}

FileAnalysis analyzeKnown(std::string_view fileName, std::string_view data,
                          const std::vector<ImportProfile>& profiles, bool flipSigns) {
    return analyzeBytes(fileName, data, profiles, flipSigns);
}

FileAnalysis analyze(std::string_view fileName, std::string_view data, ImportProfile profile,
                     bool flipSigns) {
    // A layout chosen by hand is never blocked by the file's name.
    profile.fileNameHints.reset();
    return analyzeBytes(fileName, data, {std::move(profile)}, flipSigns);
}

bool isSummaryText(std::string_view field) {
    std::string words;
    for (const char c : text::lowercased(text::trimmed(field))) {
        const bool letter = (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
        if (letter) {
            words.push_back(c);
        } else if (!words.empty() && words.back() != ' ') {
            words.push_back(' ');
        }
    }
    while (!words.empty() && words.back() == ' ')
        words.pop_back();
    // Whole phrases only, so that "TOTAL WINE" and "NEW BALANCE ATHLETICS"
    // stay shops.
    static constexpr std::array<std::string_view, 6> kWholeLines{
        "total", "totals", "grand total", "subtotal", "sub total", "balance"};
    static constexpr std::array<std::string_view, 16> kTotalsOf{
        "debits",  "credits",  "withdrawals",  "deposits", "fees", "interest",
        "charges", "payments", "purchases",    "for",      "of",   "amount",
        "balance", "activity", "transactions", "spending"};
    static constexpr std::array<std::string_view, 13> kBalanceKinds{
        "beginning", "ending",  "opening", "closing",   "starting", "previous", "new",
        "available", "current", "ledger",  "statement", "daily",    "running"};
    static constexpr std::array<std::string_view, 4> kBalanceAfter{
        "forward", "as of", "brought forward", "carried forward"};
    if (std::find(kWholeLines.begin(), kWholeLines.end(), words) != kWholeLines.end())
        return true;
    for (const auto what : kTotalsOf) {
        const std::string phrase = "total " + std::string(what);
        if (words == phrase || words.starts_with(phrase + " "))
            return true;
    }
    // "New balance" alone is a statement's; "NEW BALANCE ATHLETICS" a shop's.
    static constexpr std::array<std::string_view, 5> kBalanceDated{"as of", "on", "for", "at",
                                                                   "from"};
    for (const auto kind : kBalanceKinds) {
        const std::string phrase = std::string(kind) + " balance";
        if (words == phrase)
            return true;
        for (const auto dated : kBalanceDated) {
            const std::string withDate = phrase + " " + std::string(dated);
            if (words == withDate || words.starts_with(withDate + " "))
                return true;
        }
    }
    for (const auto after : kBalanceAfter) {
        const std::string phrase = "balance " + std::string(after);
        if (words == phrase || words.starts_with(phrase + " "))
            return true;
    }
    return false;
}

std::map<std::string, std::size_t> columnMap(const std::vector<std::string>& fields) {
    std::map<std::string, std::size_t> columns;
    for (std::size_t i = 0; i < fields.size(); ++i)
        columns.emplace(lowercasedTrimmed(fields[i]), i);  // emplace keeps the first
    return columns;
}

std::optional<DetectedLayout> detect(const std::vector<CSVRecord>& records,
                                     const std::vector<ImportProfile>& profiles,
                                     std::string_view fileName) {
    std::optional<DetectedLayout> best;
    if (!records.empty()) {
        std::vector<std::map<std::string, std::size_t>> maps;
        const std::size_t window = std::min(records.size(), kHeaderSearchRecords);
        for (std::size_t i = 0; i < window; ++i)
            maps.push_back(columnMap(records[i].fields));

        for (const auto& profile : profiles) {
            if (!profile.hasHeader || profile.requiredHeaders.empty())
                continue;
            if (profile.fileNameHints) {
                const bool hinted = std::any_of(
                    profile.fileNameHints->begin(), profile.fileNameHints->end(),
                    [&](const std::string& hint) { return containsIgnoringCase(fileName, hint); });
                if (!hinted)
                    continue;
            }
            const int score = static_cast<int>(profile.requiredHeaders.size());
            if (best && score <= best->score)
                continue;
            std::vector<std::string> required, forbidden;
            for (const auto& h : profile.requiredHeaders)
                required.push_back(text::lowercased(h));
            for (const auto& h : profile.forbiddenHeaders)
                forbidden.push_back(text::lowercased(h));
            for (std::size_t i = 0; i < window; ++i) {
                const auto& columns = maps[i];
                const bool hasAll =
                    std::all_of(required.begin(), required.end(),
                                [&](const std::string& h) { return columns.contains(h); });
                const bool hasForbidden =
                    std::any_of(forbidden.begin(), forbidden.end(),
                                [&](const std::string& h) { return columns.contains(h); });
                if (hasAll && !hasForbidden) {
                    best = DetectedLayout{profile, i, columns, score};
                    break;
                }
            }
        }
    }
    if (best)
        return best;

    std::vector<const CSVRecord*> sample;
    for (const auto& record : records) {
        if (sample.size() == kHeaderlessSampleRecords)
            break;
        if (!record.isBlank())
            sample.push_back(&record);
    }
    if (sample.empty())
        return std::nullopt;
    std::vector<const ImportProfile*> candidates;
    for (const bool builtIn : {true, false}) {
        for (const auto& profile : profiles) {
            if (!profile.hasHeader && profile.isBuiltIn == builtIn)
                candidates.push_back(&profile);
        }
    }
    for (const auto* profile : candidates) {
        const bool fits = std::all_of(sample.begin(), sample.end(), [&](const CSVRecord* record) {
            return headerlessShapeMatches(*profile, *record);
        });
        if (fits)
            return DetectedLayout{*profile, std::nullopt, columnMap(profile->headerlessColumns), 0};
    }
    return std::nullopt;
}

bool headerlessShapeMatches(const ImportProfile& profile, const CSVRecord& record) {
    if (record.fields.size() != profile.headerlessColumns.size())
        return false;
    const DateLayout layout = profile.dateLayout.value_or(DateLayout::monthDayYear);
    const auto isDate = [&](std::size_t i) {
        return parseDate(layout, record.fields[i]).has_value();
    };
    const NumberStyle style = profile.numberStyle.value_or(NumberStyle::decimalPoint);
    const auto isAmount = [&](std::size_t i) {
        return Money::parseCents(record.fields[i], style).has_value();
    };
    switch (profile.headerlessShape) {
        case HeaderlessShape::wellsFargoClassic:
            return record.fields.size() >= 3 && isDate(0) && isAmount(1) &&
                   text::trimmedWhitespace(record.fields[2]) == "*";
        case HeaderlessShape::comenity:
            return record.fields.size() >= 3 && isDate(0) &&
                   text::trimmedWhitespace(record.fields[1]).find('$') != std::string_view::npos &&
                   isAmount(1) && !text::trimmedWhitespace(record.fields[2]).empty();
        case HeaderlessShape::none: {
            const auto columns = columnMap(profile.headerlessColumns);
            const auto date = columns.find(lowercasedTrimmed(profile.dateColumn));
            if (date == columns.end() || !isDate(date->second))
                return false;
            if (profile.amountColumn) {
                const auto amount = columns.find(lowercasedTrimmed(*profile.amountColumn));
                if (amount != columns.end() && !isAmount(amount->second))
                    return false;
            }
            return true;
        }
    }
    return false;
}

void parse(const std::vector<CSVRecord>& records, const DetectedLayout& layout,
           FileAnalysis& analysis, bool flipSigns) {
    const std::size_t firstData = takeHeader(layout, records, analysis);
    const auto forEachRecord = [&](const std::function<bool(const CSVRecord&)>& visit) {
        for (std::size_t i = firstData; i < records.size(); ++i) {
            if (!visit(records[i]))
                return;
        }
    };
    readData(forEachRecord, records.size() - std::min(firstData, records.size()), layout, analysis,
             flipSigns);
}

std::string fingerprint(LocalDate date, int64_t amount, std::string_view description) {
    return date.iso() + "|" + std::to_string(amount) + "|" + MerchantText::normalize(description);
}

std::string_view extension(std::string_view fileName) {
    const auto dot = fileName.rfind('.');
    return dot == std::string_view::npos ? std::string_view() : fileName.substr(dot + 1);
}

std::optional<std::string> lastFourDigits(std::string_view accountID) {
    std::string digits;
    appendDigits(accountID, digits);
    if (digits.size() < 4)
        return std::nullopt;
    return digits.substr(digits.size() - 4);
}

std::vector<std::string> digitHints(std::string_view fileName) {
    const auto dot = fileName.rfind('.');
    std::string stem(dot == std::string_view::npos ? fileName : fileName.substr(0, dot));
    stem.push_back(' ');
    std::vector<std::string> hints;
    std::string run;
    for (const char c : stem) {
        if (c >= '0' && c <= '9') {
            run.push_back(c);
            continue;
        }
        if (run.size() == 4 && std::find(hints.begin(), hints.end(), run) == hints.end())
            hints.push_back(run);
        run.clear();
    }
    return hints;
}

FileAnalysis statementAnalysis(std::string_view fileName, std::string_view data) {
    FileAnalysis analysis;
    analysis.id = Uuid::random();
    analysis.fileName = std::string(fileName);
    analysis.fileHash = sha256(data);
    return analysis;
}

std::string sha256(std::string_view data) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_Digest(data.data(), data.size(), digest, &length, EVP_sha256(), nullptr);
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        out.push_back(kHex[digest[i] >> 4]);
        out.push_back(kHex[digest[i] & 0x0F]);
    }
    return out;
}

AccountSuggestion suggestAccount(const FileAnalysis& analysis,
                                 const std::vector<Account>& accounts) {
    if (!analysis.profile)
        return {AccountSuggestion::None{}};
    const ImportProfile& profile = *analysis.profile;
    std::vector<const Account*> candidates;
    for (const auto& account : accounts) {
        if (account.isArchived || account.type == AccountType::cash)
            continue;
        if (analysis.currencyHint && account.currency != *analysis.currencyHint)
            continue;
        if (account.profileID != profile.id)
            continue;
        if (analysis.typeHint && !profile.accountType && account.type != *analysis.typeHint)
            continue;
        candidates.push_back(&account);
    }
    std::vector<const Account*> byDigits;
    for (const auto* account : candidates) {
        if (account->last4 && std::find(analysis.digitHints.begin(), analysis.digitHints.end(),
                                        *account->last4) != analysis.digitHints.end())
            byDigits.push_back(account);
    }
    if (byDigits.size() == 1)
        return {AccountSuggestion::Existing{byDigits[0]->id,
                                            "matched the card ending " + *byDigits[0]->last4}};
    if (!candidates.empty() && profile.id.starts_with("ofx-"))
        return {AccountSuggestion::Choose{
            "OFX/QFX is shared by many banks. Confirm the account for this statement."}};
    if (!candidates.empty() && profile.id == "camt053")
        return {AccountSuggestion::Choose{
            "CAMT.053 is shared by many banks. Confirm the account for this statement."}};
    if (candidates.empty()) {
        AccountSuggestion::New proposal;
        proposal.type =
            analysis.typeHint.value_or(profile.accountType.value_or(AccountType::checking));
        if (!analysis.digitHints.empty())
            proposal.last4 = analysis.digitHints.front();
        proposal.profileID = profile.id;
        proposal.name = profile.name;
        if (!profile.accountType)
            proposal.name += " " + text::lowercased(label(proposal.type));
        if (!analysis.digitHints.empty())
            proposal.name += " \u2022\u2022" + analysis.digitHints.front();
        return {proposal};
    }
    if (candidates.size() == 1)
        return {AccountSuggestion::Existing{candidates[0]->id,
                                            "the only " + profile.name + " account"}};
    return {AccountSuggestion::Choose{
        "Several accounts use this layout. Choose which one this file belongs to."}};
}

}  // namespace ImportAnalyzer

namespace AccountTypeMarkers {

std::optional<AccountType> guess(const std::vector<std::string>& descriptions) {
    MarkerScan scan;
    for (const auto& description : descriptions) {
        scan.add(MerchantText::normalize(description));
        if (scan.sawBoth())
            break;
    }
    return scan.guess();
}

}  // namespace AccountTypeMarkers

}  // namespace copperwick
