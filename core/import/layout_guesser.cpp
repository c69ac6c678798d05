#include "core/import/layout_guesser.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>
#include <variant>

#include "core/import/csv_reader.h"
#include "core/import/import_analyzer.h"
#include "core/model/date_layout.h"
#include "core/model/enum_text.h"
#include "core/model/money.h"
#include "core/model/text.h"

namespace copperwick::LayoutGuesser {

namespace {

using Rows = std::vector<std::vector<std::string>>;

// The header row is looked for where the analyzer looks for it.
constexpr std::size_t kHeaderSearchRows = 12;
constexpr std::size_t kGuessRows = 200;

const std::string kNoDate = "Copperwick couldn't find a date column in this file.";
const std::string kNoDescription = "Copperwick couldn't find a description column in this file.";
const std::string kNoAmount = "Copperwick couldn't find an amount column in this file.";
const std::string kAmbiguousDates =
    "The dates in this file could be read day first or month first, so Copperwick won't guess "
    "which.";
const std::string kColumnsAlike =
    "Two columns of this file have the same name, so Copperwick can't tell them apart.";
const std::string kTooFewDates =
    "Copperwick needs at least two dated rows to tell the order of the dates in this file.";

bool hasDigit(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool contains(std::string_view haystack, std::string_view needle) {
    return haystack.find(needle) != std::string_view::npos;
}

// What banks call a date column, lowercased: English, then German, Dutch,
// French and Spanish exports. "datum" also finds "Buchungsdatum" and
// "Valutadatum".
constexpr std::array<std::string_view, 7> kDateWords{
    "date", "datum", "buchungstag", "wertstellung", "valuta", "fecha", "valeur"};

bool namesADate(std::string_view lower) {
    return std::any_of(kDateWords.begin(), kDateWords.end(),
                       [&](std::string_view word) { return contains(lower, word); });
}

// Marker pairs of a column saying which way an unsigned amount went: money
// out first. "S"/"H" is Soll/Haben, "Af"/"Bij" Dutch for out/in.
struct MarkerPair {
    std::string_view out;
    std::string_view in;
};
constexpr std::array<MarkerPair, 6> kMarkerPairs{
    {{"S", "H"}, {"D", "C"}, {"Af", "Bij"}, {"DR", "CR"}, {"Soll", "Haben"}, {"Debit", "Credit"}}};

std::string_view cell(const std::vector<std::string>& row, std::size_t column) {
    return column < row.size() ? text::trimmed(row[column]) : std::string_view();
}

// The date orders under which every sample reads.
std::vector<DateLayout> ordersReadingAll(const std::vector<std::string_view>& samples) {
    std::vector<DateLayout> orders;
    for (const auto& entry : EnumTraits<DateLayout>::cases) {
        const DateLayout layout = entry.first;
        const bool all = std::all_of(samples.begin(), samples.end(), [layout](std::string_view s) {
            return parseDate(layout, s).has_value();
        });
        if (all)
            orders.push_back(layout);
    }
    return orders;
}

// Money the way a bank writes it, with a mark of cents or currency, so that
// reference numbers and check numbers aren't taken for amounts.
bool looksLikeMoney(std::string_view value) {
    return contains(value, ".") || contains(value, ",") || contains(value, "$") ||
           contains(value, "\u20AC");
}

// What one column of the data rows holds.
struct ColumnReading {
    std::vector<std::string_view> values;           // trimmed, non-empty
    NumberStyle style = NumberStyle::decimalPoint;  // the amounts were read in
    std::size_t money = 0;                          // values that read as amounts
    std::size_t moneyMarked = 0;                    // of them, written with cents or a currency
    std::size_t positive = 0, negative = 0;
};

ColumnReading readColumn(const Rows& data, std::size_t column, NumberStyle undecided) {
    ColumnReading reading;
    for (const auto& row : data) {
        const auto value = cell(row, column);
        if (!value.empty())
            reading.values.push_back(value);
    }
    reading.style = numberStyle(reading.values, undecided);
    for (const auto value : reading.values) {
        if (const auto cents = Money::parseCents(value, reading.style)) {
            ++reading.money;
            reading.moneyMarked += looksLikeMoney(value) ? 1 : 0;
            reading.positive += *cents > 0 ? 1 : 0;
            reading.negative += *cents < 0 ? 1 : 0;
        }
    }
    return reading;
}

// An amount column: at least one amount, and at most one value in ten
// that isn't one.
bool isMoneyColumn(const ColumnReading& reading) {
    return reading.money > 0 && reading.moneyMarked > 0 &&
           reading.positive + reading.negative > 0 &&
           (reading.values.size() - reading.money) * 10 <= reading.values.size();
}

bool isTextColumn(const ColumnReading& reading) {
    return !reading.values.empty() && reading.money * 2 < reading.values.size();
}

// Where the date is, and whether its order is settled.
struct DateFinding {
    std::optional<std::size_t> column;
    std::optional<DateLayout> order;
    std::optional<std::string> gap;
};

// `samples` are the column's dates; the order must be the only one reading
// them all, and a single date never decides it. A month written as a name
// settles the order by itself.
DateFinding settleOrder(std::size_t column, const std::vector<std::string_view>& samples) {
    DateFinding finding;
    const bool named =
        !samples.empty() && std::all_of(samples.begin(), samples.end(), [](std::string_view s) {
            return parseNamedMonthDate(s).has_value();
        });
    if (named) {
        finding.column = column;
        finding.order = DateLayout::dayMonthYear;
        return finding;
    }
    const auto orders = ordersReadingAll(samples);
    if (samples.empty() || orders.empty())
        return finding;
    finding.column = column;
    if (samples.size() < 2)
        finding.gap = kTooFewDates;
    else if (orders.size() > 1)
        finding.gap = kAmbiguousDates;
    else
        finding.order = orders.front();
    return finding;
}

// The value date of European banks ("Valuta", "Wertstellung", "Date de
// valeur") is when the money moved, which is the posting.
bool isPostingHeader(std::string_view lower) {
    return contains(lower, "post") || contains(lower, "clear") || contains(lower, "settle") ||
           contains(lower, "process") || contains(lower, "valuta") ||
           contains(lower, "wertstellung") || contains(lower, "valeur");
}

bool isCurrencyCode(std::string_view value) {
    return value.size() == 3 && std::all_of(value.begin(), value.end(), [](char c) {
               return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
           });
}

// "betrag (eur)" names its currency: a code of three letters in brackets,
// or the euro's sign ("Betrag (€)").
std::optional<std::string> codeInName(std::string_view lower) {
    if (contains(lower, "\u20AC"))
        return "EUR";
    const auto open = lower.find('(');
    if (open == std::string_view::npos || open + 4 >= lower.size() || lower[open + 4] != ')')
        return std::nullopt;
    const auto code = lower.substr(open + 1, 3);
    if (!isCurrencyCode(code))
        return std::nullopt;
    return text::uppercased(code);
}

std::string lower(std::string_view text) {
    return text::lowercased(text::trimmedWhitespace(text));
}

// The sign of a single amount column: a bank file is mostly money out.
bool purchasesArePositive(const ColumnReading& amount) {
    return amount.positive > amount.negative;
}

// The first header, in order of the words, that holds one of them and
// passes `fits`. A word starting with "=" must be the whole name: "af" is
// Dutch for money out, but also the start of many a word.
template <typename Words, typename Fits>
std::optional<std::size_t> byWords(const std::vector<std::string>& headers, const Words& words,
                                   const std::vector<std::string_view>& refused, Fits fits) {
    for (const std::string_view word : words) {
        for (std::size_t i = 0; i < headers.size(); ++i) {
            const auto& name = headers[i];
            const bool isRefused = std::any_of(refused.begin(), refused.end(),
                                               [&](auto r) { return contains(name, r); });
            const bool named =
                word.starts_with('=') ? name == word.substr(1) : contains(name, word);
            if (named && !isRefused && fits(i))
                return i;
        }
    }
    return std::nullopt;
}

template <typename Fits>
std::optional<std::size_t> byWords(const std::vector<std::string>& headers,
                                   std::initializer_list<std::string_view> words,
                                   const std::vector<std::string_view>& refused, Fits fits) {
    return byWords<std::initializer_list<std::string_view>, Fits>(headers, words, refused, fits);
}

// A column beside an unsigned amount whose every value is one of a marker
// pair, on every row that has an amount.
std::optional<std::pair<std::size_t, MarkerPair>> findSignMarkers(
    const std::vector<ColumnReading>& readings, std::size_t amount,
    const std::function<bool(std::size_t)>& unused) {
    const ColumnReading& money = readings[amount];
    if (money.negative > 0 || money.values.empty())
        return std::nullopt;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        const auto& values = readings[i].values;
        if (i == amount || !unused(i) || values.size() < money.values.size())
            continue;
        for (const auto& pair : kMarkerPairs) {
            const bool all = std::all_of(values.begin(), values.end(), [&](std::string_view v) {
                return text::equalsIgnoringCase(v, pair.out) ||
                       text::equalsIgnoringCase(v, pair.in);
            });
            if (all)
                return std::make_pair(i, pair);
        }
    }
    return std::nullopt;
}

Outcome guessWithHeader(const Rows& rows, std::size_t headerIndex, NumberStyle undecided) {
    Outcome outcome;
    std::vector<std::string> headers;
    for (const auto& field : rows[headerIndex])
        headers.push_back(lower(field));
    const Rows data(rows.begin() + static_cast<std::ptrdiff_t>(headerIndex) + 1, rows.end());
    std::vector<ColumnReading> readings;
    for (std::size_t i = 0; i < headers.size(); ++i)
        readings.push_back(readColumn(data, i, undecided));

    // The transaction's own date before the date of posting.
    DateFinding date;
    for (const bool posting : {false, true}) {
        for (std::size_t i = 0; i < headers.size() && !date.column; ++i) {
            if (!namesADate(headers[i]) || isPostingHeader(headers[i]) != posting)
                continue;
            std::vector<std::string_view> samples;
            for (const auto value : readings[i].values) {
                if (hasDigit(value))
                    samples.push_back(value);
            }
            date = settleOrder(i, samples);
        }
    }
    LayoutGuess guess;
    guess.headerRow = static_cast<int>(headerIndex) + 1;
    if (!date.column)
        outcome.gaps.push_back(kNoDate);
    else
        guess.dateColumn = static_cast<int>(*date.column) + 1;
    if (date.gap)
        outcome.gaps.push_back(*date.gap);
    // Day first is the order a later file, whose days all happen to be under
    // 13, would be misread in; so it goes with the layout.
    if (date.order == DateLayout::dayMonthYear)
        guess.dateLayout = date.order;

    std::vector<std::size_t> used;
    if (date.column)
        used.push_back(*date.column);
    const auto unused = [&](std::size_t i) {
        return std::find(used.begin(), used.end(), i) == used.end();
    };

    const auto amount =
        byWords(headers,
                {"amount", "net", "gross", "value", "betrag", "bedrag", "montant", "importe",
                 "umsatz", "importo"},
                {"balance", "tip", "tax", "fee", "rate", "exempt", "shipping", "insurance", "saldo",
                 "solde", "kontostand", "fremd", "ursprung"},
                [&](std::size_t i) { return unused(i) && isMoneyColumn(readings[i]); });
    // Of several amount columns, the one that says it is the total.
    std::optional<std::size_t> total;
    if (amount && contains(headers[*amount], "amount")) {
        total = byWords(headers, {"total"}, {"balance"}, [&](std::size_t i) {
            return unused(i) && contains(headers[i], "amount") && isMoneyColumn(readings[i]);
        });
    }
    std::optional<std::size_t> moneyOut, moneyIn;
    const auto splitFits = [&](std::size_t i) {
        return unused(i) && (readings[i].values.empty() || isMoneyColumn(readings[i]));
    };
    if (!amount) {
        moneyOut = byWords(headers,
                           {"withdrawal", "debit", "money out", "paid out", "outflow", "débit",
                            "soll", "ausgang", "cargo", "=af"},
                           {"balance", "card", "saldo", "solde"}, splitFits);
        moneyIn = byWords(headers,
                          {"deposit", "credit", "money in", "paid in", "inflow", "crédit", "haben",
                           "eingang", "abono", "=bij"},
                          {"balance", "card", "saldo", "solde"}, splitFits);
    }
    if (const auto chosen = total ? total : amount) {
        guess.amountColumn = static_cast<int>(*chosen) + 1;
        guess.purchasesArePositive = purchasesArePositive(readings[*chosen]);
        guess.numberStyle = readings[*chosen].style;
        used.push_back(*chosen);
        if (const auto markers = findSignMarkers(readings, *chosen, unused)) {
            guess.signMarkerColumn = static_cast<int>(markers->first) + 1;
            guess.moneyOutMarkers = {std::string(markers->second.out)};
            guess.purchasesArePositive = false;
            used.push_back(markers->first);
        }
    } else if (moneyOut && moneyIn && *moneyOut != *moneyIn &&
               (!readings[*moneyOut].values.empty() || !readings[*moneyIn].values.empty())) {
        guess.moneyOutColumn = static_cast<int>(*moneyOut) + 1;
        guess.moneyInColumn = static_cast<int>(*moneyIn) + 1;
        // The two columns are one file's money: their values decide together.
        std::vector<std::string_view> both = readings[*moneyOut].values;
        both.insert(both.end(), readings[*moneyIn].values.begin(), readings[*moneyIn].values.end());
        guess.numberStyle = numberStyle(both, undecided);
        used.push_back(*moneyOut);
        used.push_back(*moneyIn);
    } else {
        outcome.gaps.push_back(kNoAmount);
    }

    // European exports keep the other party's name apart from the purpose
    // text ("Verwendungszweck", "Mededelingen"), which is long and full of
    // references. The name says more in a budget, so it is the description
    // when it is filled in on every row; a row without a description can't
    // be read, so otherwise the purpose text is.
    auto description = byWords(
        headers,
        {"beguenstigter", "begünstigter", "zahlungspflichtiger", "auftraggeber", "empfänger",
         "empfaenger", "naam", "tegenpartij", "bénéficiaire"},
        {"date", "zone", "konto", "iban", "bic", "blz", "rekening", "nummer"}, [&](std::size_t i) {
            return unused(i) && isTextColumn(readings[i]) &&
                   readings[i].values.size() == data.size();
        });
    if (!description) {
        description =
            byWords(headers,
                    {"description", "payee", "merchant", "name", "narrative", "details", "memo",
                     "note", "particulars", "verwendungszweck", "omschrijving", "libellé",
                     "libelle", "concepto", "beschreibung", "buchungstext", "mededelingen", "text"},
                    {"date", "zone"},
                    [&](std::size_t i) { return unused(i) && isTextColumn(readings[i]); });
    }
    if (!description)
        outcome.gaps.push_back(kNoDescription);
    else
        guess.descriptionColumn = static_cast<int>(*description) + 1;

    if (date.column && date.order) {
        const auto posted = byWords(headers, kDateWords, {}, [&](std::size_t i) {
            if (i == *date.column || !isPostingHeader(headers[i]))
                return false;
            return std::all_of(
                readings[i].values.begin(), readings[i].values.end(),
                [&](std::string_view v) { return parseDate(*date.order, v).has_value(); });
        });
        if (posted)
            guess.postedDateColumn = static_cast<int>(*posted) + 1;
    }
    if (const auto status = byWords(headers, {"status"}, {}, [](std::size_t) { return true; }))
        guess.statusColumn = static_cast<int>(*status) + 1;

    // The currency: a column of codes filled on every row, or the code a
    // money column's name carries.
    const auto currency =
        byWords(headers, {"currency", "währung", "waehrung", "devise", "munt", "divisa", "moneda"},
                {}, [&](std::size_t i) {
                    const auto& values = readings[i].values;
                    return unused(i) && !values.empty() && values.size() == data.size() &&
                           std::all_of(values.begin(), values.end(), isCurrencyCode);
                });
    if (currency) {
        guess.currencyColumn = static_cast<int>(*currency) + 1;
    } else {
        for (const int column : {guess.amountColumn, guess.moneyOutColumn}) {
            if (column > 0 && !guess.currency)
                guess.currency = codeInName(headers[static_cast<std::size_t>(column) - 1]);
        }
    }

    if (outcome.gaps.empty())
        outcome.guess = guess;
    return outcome;
}

// Every row must be as wide as the first and date it in the same column:
// without names, the shape of the rows is all there is.
Outcome guessWithoutHeader(const Rows& rows, NumberStyle undecided) {
    Outcome outcome;
    const std::size_t width = rows.front().size();
    const bool even =
        std::all_of(rows.begin(), rows.end(), [&](const auto& row) { return row.size() == width; });
    if (width < 3 || !even) {
        outcome.gaps = {kNoDate, kNoDescription, kNoAmount};
        return outcome;
    }
    std::vector<ColumnReading> readings;
    for (std::size_t i = 0; i < width; ++i)
        readings.push_back(readColumn(rows, i, undecided));

    DateFinding date;
    for (std::size_t i = 0; i < width && !date.column; ++i) {
        if (readings[i].values.size() != rows.size())
            continue;
        date = settleOrder(i, readings[i].values);
    }
    LayoutGuess guess;
    if (!date.column)
        outcome.gaps.push_back(kNoDate);
    else
        guess.dateColumn = static_cast<int>(*date.column) + 1;
    if (date.gap)
        outcome.gaps.push_back(*date.gap);

    std::optional<std::size_t> amount;
    for (std::size_t i = 0; i < width && !amount; ++i) {
        if (i != date.column && readings[i].money == readings[i].values.size() &&
            readings[i].moneyMarked > 0)
            amount = i;
    }
    if (!amount) {
        outcome.gaps.push_back(kNoAmount);
    } else {
        guess.amountColumn = static_cast<int>(*amount) + 1;
        guess.purchasesArePositive = purchasesArePositive(readings[*amount]);
        guess.numberStyle = readings[*amount].style;
    }

    // The description is the text column with the most to say.
    std::optional<std::size_t> description;
    std::size_t longest = 0;
    for (std::size_t i = 0; i < width; ++i) {
        if (i == date.column || i == amount || !isTextColumn(readings[i]))
            continue;
        std::size_t length = 0;
        for (const auto value : readings[i].values)
            length += value.size();
        if (!description || length > longest) {
            description = i;
            longest = length;
        }
    }
    if (!description)
        outcome.gaps.push_back(kNoDescription);
    else
        guess.descriptionColumn = static_cast<int>(*description) + 1;

    if (outcome.gaps.empty())
        outcome.guess = guess;
    return outcome;
}

std::string quoted(std::string_view text) {
    return "\u201C" + std::string(text) + "\u201D";
}

}  // namespace

// The style that reads more of the values. "1.234,56" and "12,50" read only
// with a decimal comma, "1,234.56" and "1,000" only with a decimal point;
// "12" and "1 234" read alike either way and decide nothing. When the
// column leaves it open, `undecided` stands.
NumberStyle numberStyle(const std::vector<std::string_view>& values, NumberStyle undecided) {
    std::size_t point = 0, comma = 0;
    for (const auto value : values) {
        point += Money::parseCents(value, NumberStyle::decimalPoint) ? 1 : 0;
        comma += Money::parseCents(value, NumberStyle::decimalComma) ? 1 : 0;
    }
    if (point == comma)
        return undecided;
    return point > comma ? NumberStyle::decimalPoint : NumberStyle::decimalComma;
}

Outcome guess(const Rows& rows, NumberStyle undecided) {
    if (rows.size() < 2)
        return {std::nullopt, {kTooFewDates}};
    std::optional<Outcome> first;
    const std::size_t window = std::min(rows.size() - 1, kHeaderSearchRows);
    for (std::size_t i = 0; i < window; ++i) {
        const auto& row = rows[i];
        const auto named = std::count_if(row.begin(), row.end(), [](const std::string& field) {
            return !text::trimmed(field).empty();
        });
        const bool datedColumn = std::any_of(row.begin(), row.end(), [](const std::string& field) {
            return namesADate(lower(field)) && !hasDigit(field);
        });
        if (named < 3 || !datedColumn)
            continue;
        auto outcome = guessWithHeader(rows, i, undecided);
        if (outcome.guess)
            return outcome;
        if (!first)
            first = std::move(outcome);
    }
    if (first)
        return *first;
    // A first row of names alone is a header, whatever it calls the date.
    const auto& top = rows.front();
    const auto named = std::count_if(top.begin(), top.end(), [](const std::string& field) {
        return !text::trimmed(field).empty();
    });
    if (named >= 3 && std::none_of(top.begin(), top.end(),
                                   [](const std::string& field) { return hasDigit(field); }))
        return guessWithHeader(rows, 0, undecided);
    return guessWithoutHeader(rows, undecided);
}

WorkedOut workOut(std::string_view fileName, std::string_view data) {
    WorkedOut result;
    const auto rows = LayoutProposal::sampleRows(data, kGuessRows);
    // Where the amounts read either way, a semicolon between the fields
    // speaks for a decimal comma: files are written that way because the
    // comma is taken.
    NumberStyle undecided = NumberStyle::decimalPoint;
    const auto decoded = CSVReader::decodeBorrowing(data);
    if (const auto* text = std::get_if<DecodedText>(&decoded)) {
        if (CSVReader::detectDelimiter(text->view()) == U';')
            undecided = NumberStyle::decimalComma;
    }
    auto outcome = guess(rows, undecided);
    if (!outcome.guess) {
        result.gaps = std::move(outcome.gaps);
        return result;
    }
    LayoutGuess& found = *outcome.guess;
    const auto stem = text::trimmedWhitespace(fileName.substr(0, fileName.find('.')));
    if (!stem.empty())
        found.bankName = std::string(stem);

    // The id follows from the columns, so the same bank's next file, read
    // before this layout is saved, proposes the very same layout.
    std::string identity = std::to_string(found.headerRow);
    if (found.headerRow > 0) {
        for (const auto& field : rows[static_cast<std::size_t>(found.headerRow) - 1])
            identity += "|" + lower(field);
    } else {
        identity += "|" + std::to_string(rows.front().size());
    }
    for (const int column : {found.dateColumn, found.descriptionColumn, found.amountColumn,
                             found.moneyOutColumn, found.moneyInColumn})
        identity += "|" + std::to_string(column);
    if (found.numberStyle == NumberStyle::decimalComma)
        identity += "|comma";
    if (found.signMarkerColumn > 0)
        identity += "|marker " + std::to_string(found.signMarkerColumn);
    const std::string id = "custom-" + ImportAnalyzer::sha256(identity).substr(0, 8);

    const auto profile = LayoutProposal::makeProfile(found, rows, id);
    if (!profile) {
        result.gaps = {kColumnsAlike};
        return result;
    }
    auto checked = LayoutProposal::check(*profile, fileName, data);
    if (!checked.accepted) {
        result.gaps = {checked.note};
        return result;
    }
    result.check = std::move(checked);
    return result;
}

std::string workedOutLine(const ImportProfile& profile) {
    std::string line = "Layout worked out from the file: date in " + quoted(profile.dateColumn) +
                       ", description in " + quoted(profile.descriptionColumn);
    if (profile.amountColumn) {
        line += ", amount in " + quoted(*profile.amountColumn);
        if (profile.signMarkerColumn && profile.moneyOutMarkers &&
            !profile.moneyOutMarkers->empty())
            line += " (money out marked " + quoted(profile.moneyOutMarkers->front()) + " in " +
                    quoted(*profile.signMarkerColumn) + ")";
        else if (profile.signConvention == SignConvention::positiveIsMoneyOut)
            line += " (purchases are positive)";
    } else if (profile.debitColumn && profile.creditColumn) {
        line += ", money out in " + quoted(*profile.debitColumn) + ", money in in " +
                quoted(*profile.creditColumn);
    }
    if (profile.numberStyle == NumberStyle::decimalComma)
        line += ", amounts with decimal commas";
    return line + ".";
}

}  // namespace copperwick::LayoutGuesser
