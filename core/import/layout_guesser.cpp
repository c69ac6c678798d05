#include "core/import/layout_guesser.h"

#include <algorithm>
#include <array>

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
    return Money::parseCents(value).has_value() &&
           (contains(value, ".") || contains(value, ",") || contains(value, "$"));
}

// What one column of the data rows holds.
struct ColumnReading {
    std::vector<std::string_view> values;  // trimmed, non-empty
    std::size_t money = 0;                 // values that read as amounts
    std::size_t moneyMarked = 0;           // of them, written with cents or a currency
    std::size_t positive = 0, negative = 0;
};

ColumnReading readColumn(const Rows& data, std::size_t column) {
    ColumnReading reading;
    for (const auto& row : data) {
        const auto value = cell(row, column);
        if (value.empty())
            continue;
        reading.values.push_back(value);
        if (const auto cents = Money::parseCents(value)) {
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
// them all, and a single date never decides it.
DateFinding settleOrder(std::size_t column, const std::vector<std::string_view>& samples) {
    DateFinding finding;
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

bool isPostingHeader(std::string_view lower) {
    return contains(lower, "post") || contains(lower, "clear") || contains(lower, "settle") ||
           contains(lower, "process");
}

std::string lower(std::string_view text) {
    return text::lowercased(text::trimmedWhitespace(text));
}

// The sign of a single amount column: a bank file is mostly money out.
bool purchasesArePositive(const ColumnReading& amount) {
    return amount.positive > amount.negative;
}

// The first header, in order of the words, that holds one of them and
// passes `fits`.
template <typename Fits>
std::optional<std::size_t> byWords(const std::vector<std::string>& headers,
                                   std::initializer_list<std::string_view> words,
                                   const std::vector<std::string_view>& refused, Fits fits) {
    for (const auto word : words) {
        for (std::size_t i = 0; i < headers.size(); ++i) {
            const auto& name = headers[i];
            const bool isRefused = std::any_of(refused.begin(), refused.end(),
                                               [&](auto r) { return contains(name, r); });
            if (contains(name, word) && !isRefused && fits(i))
                return i;
        }
    }
    return std::nullopt;
}

Outcome guessWithHeader(const Rows& rows, std::size_t headerIndex) {
    Outcome outcome;
    std::vector<std::string> headers;
    for (const auto& field : rows[headerIndex])
        headers.push_back(lower(field));
    const Rows data(rows.begin() + static_cast<std::ptrdiff_t>(headerIndex) + 1, rows.end());
    std::vector<ColumnReading> readings;
    for (std::size_t i = 0; i < headers.size(); ++i)
        readings.push_back(readColumn(data, i));

    // The transaction's own date before the date of posting.
    DateFinding date;
    for (const bool posting : {false, true}) {
        for (std::size_t i = 0; i < headers.size() && !date.column; ++i) {
            if (!contains(headers[i], "date") || isPostingHeader(headers[i]) != posting)
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

    std::vector<std::size_t> used;
    if (date.column)
        used.push_back(*date.column);
    const auto unused = [&](std::size_t i) {
        return std::find(used.begin(), used.end(), i) == used.end();
    };

    const auto amount =
        byWords(headers, {"amount", "net", "gross", "value"},
                {"balance", "tip", "tax", "fee", "rate", "exempt", "shipping", "insurance"},
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
        moneyOut = byWords(headers, {"withdrawal", "debit", "money out", "paid out", "outflow"},
                           {"balance", "card"}, splitFits);
        moneyIn = byWords(headers, {"deposit", "credit", "money in", "paid in", "inflow"},
                          {"balance", "card"}, splitFits);
    }
    if (const auto chosen = total ? total : amount) {
        guess.amountColumn = static_cast<int>(*chosen) + 1;
        guess.purchasesArePositive = purchasesArePositive(readings[*chosen]);
        used.push_back(*chosen);
    } else if (moneyOut && moneyIn && *moneyOut != *moneyIn &&
               (!readings[*moneyOut].values.empty() || !readings[*moneyIn].values.empty())) {
        guess.moneyOutColumn = static_cast<int>(*moneyOut) + 1;
        guess.moneyInColumn = static_cast<int>(*moneyIn) + 1;
        used.push_back(*moneyOut);
        used.push_back(*moneyIn);
    } else {
        outcome.gaps.push_back(kNoAmount);
    }

    const auto description = byWords(
        headers,
        {"description", "payee", "merchant", "name", "narrative", "details", "memo", "note",
         "particulars"},
        {"date", "zone"}, [&](std::size_t i) { return unused(i) && isTextColumn(readings[i]); });
    if (!description)
        outcome.gaps.push_back(kNoDescription);
    else
        guess.descriptionColumn = static_cast<int>(*description) + 1;

    if (date.column && date.order) {
        const auto posted = byWords(headers, {"date"}, {}, [&](std::size_t i) {
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

    if (outcome.gaps.empty())
        outcome.guess = guess;
    return outcome;
}

// Every row must be as wide as the first and date it in the same column:
// without names, the shape of the rows is all there is.
Outcome guessWithoutHeader(const Rows& rows) {
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
        readings.push_back(readColumn(rows, i));

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

Outcome guess(const Rows& rows) {
    if (rows.size() < 2)
        return {std::nullopt, {kTooFewDates}};
    std::optional<Outcome> first;
    const std::size_t window = std::min(rows.size() - 1, kHeaderSearchRows);
    for (std::size_t i = 0; i < window; ++i) {
        const auto& row = rows[i];
        const auto named = std::count_if(row.begin(), row.end(), [](const std::string& field) {
            return !text::trimmed(field).empty();
        });
        const bool namesADate = std::any_of(row.begin(), row.end(), [](const std::string& field) {
            return contains(lower(field), "date") && !hasDigit(field);
        });
        if (named < 3 || !namesADate)
            continue;
        auto outcome = guessWithHeader(rows, i);
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
        return guessWithHeader(rows, 0);
    return guessWithoutHeader(rows);
}

WorkedOut workOut(std::string_view fileName, std::string_view data) {
    WorkedOut result;
    const auto rows = LayoutProposal::sampleRows(data, kGuessRows);
    auto outcome = guess(rows);
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
        if (profile.signConvention == SignConvention::positiveIsMoneyOut)
            line += " (purchases are positive)";
    } else if (profile.debitColumn && profile.creditColumn) {
        line += ", money out in " + quoted(*profile.debitColumn) + ", money in in " +
                quoted(*profile.creditColumn);
    }
    return line + ".";
}

}  // namespace copperwick::LayoutGuesser
