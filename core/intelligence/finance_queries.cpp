#include "core/intelligence/finance_queries.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <vector>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/reports/insights.h"
#include "core/reports/report_comparison.h"
#include "core/reports/report_engine.h"

namespace copperwick::FinanceQueries {

namespace {

// The model reads every amount in dollars, whatever the report's currency:
// the grounding check compares its numbers with these.
std::string money(int64_t cents, bool showPlus = false) {
    return Money::format(cents, "USD", false, showPlus);
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string text;
    for (const auto& part : parts) {
        if (!text.empty())
            text += separator;
        text += part;
    }
    return text;
}

std::string lowerTrimmed(std::string_view text) {
    return text::lowercased(text::trimmed(text));
}

bool contains(std::string_view haystack, std::string_view needle) {
    return haystack.find(needle) != std::string_view::npos;
}

// Who the lookup is about, and the words that widen or narrow the scope
// beyond a set of people.
struct Scope {
    std::set<Uuid> people;
    bool shared = false;
    bool unassigned = false;
};

std::optional<Scope> scopeOf(const std::optional<std::string>& person, const Ledger& ledger) {
    auto people = peopleFilter(person, ledger);
    if (!people)
        return std::nullopt;
    const std::string word = lowerTrimmed(person.value_or(""));
    return Scope{.people = std::move(*people),
                 .shared = word == "shared" || word == "shared household",
                 .unassigned = word == "unassigned"};
}

ReportFilter filterFor(const Ledger& ledger, const DateSpan& span, const Scope& scope) {
    const bool whole = scope.people.empty() && !scope.shared && !scope.unassigned;
    return ReportFilter(span, scope.people, {}, ledger.settings->reportCurrency, whole,
                        scope.shared, scope.unassigned, PeopleMode::assigned);
}

std::string periodLine(const DateSpan& span, const std::string& scopeLabel) {
    return "Period: " + DateText::medium(span.start) + " to " + DateText::medium(span.end) + " (" +
           scopeLabel + ")";
}

std::string periodLine(const Report& report) {
    return periodLine(report.filter.span, report.scopeLabel);
}

class Lines {
  public:
    void add(std::string line) { m_lines.push_back(std::move(line)); }
    void addIfAny(const std::optional<std::string>& line) {
        if (line)
            m_lines.push_back(*line);
    }
    [[nodiscard]] std::string text() const { return joined(m_lines, "\n"); }

  private:
    std::vector<std::string> m_lines;
};

// A period and a scope read from the model's words, or the sentence that
// tells it what was wrong.
struct Asked {
    std::optional<ReportFilter> filter;
    std::string error;
};

Asked ask(const Ledger& ledger, std::string_view start, std::string_view end,
          const std::optional<std::string>& person) {
    const auto span = period(start, end);
    if (!span)
        return {.filter = std::nullopt, .error = std::string(kDateError)};
    const auto scope = scopeOf(person, ledger);
    if (!scope)
        return {.filter = std::nullopt, .error = unknownPerson(person, ledger)};
    return {.filter = filterFor(ledger, *span, *scope), .error = {}};
}

std::string nameAndAmount(const std::string& name, int64_t amount) {
    return name + " " + money(amount);
}

const LedgerCategory* findCategory(const Ledger& ledger, std::string_view text) {
    const std::string_view name = text::trimmed(text);
    if (const LedgerCategory* exact = ledger.categoryNamed(name))
        return exact;
    // A fragment of one or two letters would find too much to mean anything.
    if (text::characterCount(name) <= 2)
        return nullptr;
    const std::string needle = text::lowercased(name);
    for (const auto& category : ledger.categories) {
        if (contains(text::lowercased(category.name), needle))
            return &category;
    }
    return nullptr;
}

std::string categoryNames(const Ledger& ledger) {
    std::vector<std::string> names;
    for (const auto& category : ledger.categories)
        names.push_back(category.name);
    return joined(names, ", ");
}

std::string peopleNames(const Ledger& ledger, std::string_view none) {
    std::vector<std::string> names;
    for (const auto& person : ledger.people)
        names.push_back(person.name);
    return names.empty() ? std::string(none) : joined(names, ", ");
}

// What a found line is filed as, in the words of the list.
std::string filedAs(const Ledger& ledger, const LedgerTransaction& transaction) {
    if (transaction.splits && !transaction.splits->empty()) {
        std::vector<std::string> parts;
        for (const auto& split : *transaction.splits) {
            const LedgerCategory* category = ledger.category(split.categoryID);
            parts.push_back(
                nameAndAmount(category ? category->name : "Uncategorized", split.amount));
        }
        return joined(parts, "; ");
    }
    if (const LedgerCategory* category = ledger.category(transaction.categoryID))
        return category->name;
    return std::string(label(transaction.kind));
}

bool filedInCategoryMatching(const Ledger& ledger, const LedgerTransaction& transaction,
                             std::string_view needle) {
    const auto matches = [&](const Uuid& id) {
        const LedgerCategory* category = ledger.category(id);
        return category && contains(text::lowercased(category->name), needle);
    };
    if (transaction.splits && !transaction.splits->empty())
        return std::any_of(
            transaction.splits->begin(), transaction.splits->end(),
            [&](const TransactionSplit& split) { return matches(split.categoryID); });
    return transaction.categoryID && matches(*transaction.categoryID);
}

int64_t magnitude(int64_t cents) {
    return cents < 0 ? checked::neg(cents) : cents;
}

// Whole dollars to cents, held below any amount the ledger can hold rather
// than past the range of the arithmetic.
int64_t minimumCents(std::optional<int64_t> dollars) {
    const int64_t whole = std::max<int64_t>(dollars.value_or(0), 0);
    constexpr int64_t kBeyondAnyAmount = Money::kLargestAmount / 100 + 1;
    return std::min(whole, kBeyondAnyAmount) * 100;
}

}  // namespace

std::optional<LocalDate> parseDay(std::string_view text, bool end) {
    if (const auto date = LocalDate::fromISO(text))
        return date;
    const auto pieces = text::splitKeepingEmpty(text, '-');
    if (pieces.size() != 2 || pieces[0].size() != 4)
        return std::nullopt;
    const auto year = detail::readInteger(pieces[0]);
    const auto month = detail::readInteger(pieces[1]);
    if (!year || !month || *year < std::numeric_limits<int>::min() ||
        *year > std::numeric_limits<int>::max() || *month < std::numeric_limits<int>::min() ||
        *month > std::numeric_limits<int>::max())
        return std::nullopt;
    const auto first = LocalDate::make(static_cast<int>(*year), static_cast<int>(*month), 1);
    if (!first)
        return std::nullopt;
    return end ? first->lastOfMonth() : *first;
}

std::optional<DateSpan> period(std::string_view start, std::string_view end) {
    const auto first = parseDay(text::trimmed(start), false);
    const auto last = parseDay(text::trimmed(end), true);
    if (!first || !last || *first > *last)
        return std::nullopt;
    const DateSpan span(*first, *last);
    if (span.dayCount() > kMaximumDays)
        return std::nullopt;
    return span;
}

std::optional<std::set<Uuid>> peopleFilter(const std::optional<std::string>& person,
                                           const Ledger& ledger) {
    const std::string word = lowerTrimmed(person.value_or(""));
    static constexpr std::string_view kEveryone[] = {
        "everyone", "all",    "household",        "whole household", "both",
        "us",       "shared", "shared household", "unassigned"};
    if (word.empty() ||
        std::find(std::begin(kEveryone), std::end(kEveryone), word) != std::end(kEveryone))
        return std::set<Uuid>{};
    // A first name finds the full name it begins.
    for (const auto& candidate : ledger.people) {
        const std::string name = text::lowercased(candidate.name);
        if (name == word || name.starts_with(word + " "))
            return std::set<Uuid>{candidate.id};
    }
    std::vector<std::string> pieces;
    for (const auto piece : text::splitKeepingEmpty(word, ',')) {
        const auto trimmedPiece = text::trimmed(piece);
        if (!trimmedPiece.empty())
            pieces.emplace_back(trimmedPiece);
    }
    if (pieces.size() < 2)
        return std::nullopt;
    std::set<Uuid> chosen;
    for (const auto& piece : pieces) {
        const auto found =
            std::find_if(ledger.people.begin(), ledger.people.end(),
                         [&](const Person& p) { return text::lowercased(p.name) == piece; });
        if (found == ledger.people.end())
            return std::nullopt;
        chosen.insert(found->id);
    }
    return chosen;
}

std::string unknownPerson(const std::optional<std::string>& person, const Ledger& ledger) {
    return "Error: no person named " + person.value_or("") +
           ". People: " + peopleNames(ledger, "none set up") + ", or everyone.";
}

std::optional<std::string> reviewLine(const Report& report) {
    if (report.unknownCount < 1)
        return std::nullopt;
    return "Not included yet: " + std::to_string(report.unknownCount) +
           " transactions need review (" + money(checked::neg(report.unknownOut)) + " out, " +
           money(report.unknownIn) + " in).";
}

std::string summary(const Ledger& ledger, std::string_view start, std::string_view end,
                    const std::optional<std::string>& person, LocalDate today) {
    const Asked asked = ask(ledger, start, end, person);
    if (!asked.filter)
        return asked.error;
    const Report report = ReportEngine::build(ledger, *asked.filter, today);
    Lines lines;
    lines.add(periodLine(report));
    lines.add("Income: " + money(report.income));
    lines.add("Spending: " + money(report.spending) + " (after " + money(report.refunds) +
              " in refunds)");
    std::string savings = "Savings: " + money(report.savings());
    if (const auto rate = report.savingsRateTenths())
        savings += " (" + Money::percentText(*rate) + " of income)";
    lines.add(savings);
    if (!report.categories.empty()) {
        std::vector<std::string> top;
        for (std::size_t i = 0; i < report.categories.size() && i < 6; ++i)
            top.push_back(nameAndAmount(report.categories[i].name, report.categories[i].amount));
        lines.add("Top categories: " + joined(top, "; "));
    }
    lines.addIfAny(reviewLine(report));
    if (report.pendingCount >= 1)
        lines.add("Pending (not counted): " + std::to_string(report.pendingCount) + " charges, " +
                  money(report.pendingTotal) + ".");
    return lines.text();
}

std::string category(const Ledger& ledger, std::string_view name, std::string_view start,
                     std::string_view end, const std::optional<std::string>& person,
                     LocalDate today) {
    const Asked asked = ask(ledger, start, end, person);
    if (!asked.filter)
        return asked.error;
    const LedgerCategory* found = findCategory(ledger, name);
    if (!found)
        return "Error: no category named " + std::string(text::trimmed(name)) +
               ". Categories: " + categoryNames(ledger);
    const Report report = ReportEngine::build(ledger, *asked.filter, today);
    Lines lines;
    lines.add(periodLine(report));
    if (found->group == CategoryGroup::income) {
        int64_t received = 0;
        int64_t count = 0;
        for (const auto& id : report.includedIDs) {
            const LedgerTransaction* transaction = ledger.transaction(id);
            if (!transaction || transaction->kind != TransactionKind::income ||
                transaction->categoryID != found->id)
                continue;
            received = checked::add(received, transaction->amount);
            ++count;
        }
        lines.add(found->name + ": " + money(received) + " received in " + std::to_string(count) +
                  " transactions.");
    } else {
        const auto line = std::find_if(
            report.categories.begin(), report.categories.end(),
            [&](const CategoryLine& candidate) { return candidate.categoryID == found->id; });
        if (line == report.categories.end()) {
            lines.add(found->name + ": $0.00 spent (no transactions).");
        } else {
            std::string spent = found->name + ": " + money(line->amount) + " spent in " +
                                std::to_string(line->count) + " transactions";
            spent += line->refunds >= 1 ? " (after " + money(line->refunds) + " in refunds)." : ".";
            lines.add(spent);
            if (!line->merchants.empty()) {
                std::vector<std::string> top;
                for (std::size_t i = 0; i < line->merchants.size() && i < 6; ++i)
                    top.push_back(
                        nameAndAmount(line->merchants[i].name, line->merchants[i].amount));
                lines.add("Top merchants: " + joined(top, "; "));
            }
        }
    }
    lines.addIfAny(reviewLine(report));
    return lines.text();
}

std::string merchant(const Ledger& ledger, std::string_view name, std::string_view start,
                     std::string_view end, const std::optional<std::string>& person,
                     LocalDate today) {
    const Asked asked = ask(ledger, start, end, person);
    if (!asked.filter)
        return asked.error;
    const std::string needle = lowerTrimmed(name);
    if (text::characterCount(needle) < 2)
        return "Error: give at least two letters of the merchant's name.";
    const Report report = ReportEngine::build(ledger, *asked.filter, today);
    // Every merchant of every category, not only the report's top ones; a
    // line split over two categories counts once but adds both its pieces.
    int64_t spent = 0;
    std::set<Uuid> ids;
    std::set<std::string> names;
    for (const auto& line : report.categories) {
        for (const auto& merchantLine : line.merchants) {
            if (!contains(text::lowercased(merchantLine.name), needle))
                continue;
            spent = checked::add(spent, merchantLine.amount);
            ids.insert(merchantLine.transactionIDs.begin(), merchantLine.transactionIDs.end());
            names.insert(merchantLine.name);
        }
    }
    Lines lines;
    lines.add(periodLine(report));
    if (ids.empty()) {
        lines.add("No spending found at a merchant matching \u201c" + std::string(name) +
                  "\u201d.");
    } else {
        lines.add("Spending at " +
                  joined(std::vector<std::string>(names.begin(), names.end()), ", ") + ": " +
                  money(spent) + " in " + std::to_string(ids.size()) + " transactions.");
    }
    return lines.text();
}

std::string compare(const Ledger& ledger, std::string_view firstStart, std::string_view firstEnd,
                    std::string_view secondStart, std::string_view secondEnd,
                    const std::optional<std::string>& person, LocalDate today) {
    const auto firstSpan = period(firstStart, firstEnd);
    if (!firstSpan)
        return std::string(kDateError);
    const auto secondSpan = period(secondStart, secondEnd);
    if (!secondSpan)
        return std::string(kDateError);
    const auto scope = scopeOf(person, ledger);
    if (!scope)
        return unknownPerson(person, ledger);
    // The second period stands where a comparison keeps the current one.
    const ReportComparison comparison = ReportComparison::of(
        ReportEngine::build(ledger, filterFor(ledger, *secondSpan, *scope), today),
        ReportEngine::build(ledger, filterFor(ledger, *firstSpan, *scope), today));
    const Report& first = comparison.previous;
    const Report& second = comparison.current;

    Lines lines;
    lines.add("First: " + DateText::medium(firstSpan->start) + " to " +
              DateText::medium(firstSpan->end) +
              ". Second: " + DateText::medium(secondSpan->start) + " to " +
              DateText::medium(secondSpan->end) + ".");
    lines.add("Spending: " + money(first.spending) + " then " + money(second.spending) +
              " (change " + money(comparison.spendingChange(), true) + ")");
    lines.add("Income: " + money(first.income) + " then " + money(second.income) + " (change " +
              money(comparison.incomeChange(), true) + ")");
    if (!comparison.categoryChanges.empty()) {
        std::vector<std::string> moves;
        for (std::size_t i = 0; i < comparison.categoryChanges.size() && i < 5; ++i) {
            const CategoryChange& change = comparison.categoryChanges[i];
            moves.push_back(change.name + " " + money(change.previous) + " \u2192 " +
                            money(change.current) + " (" + money(change.change(), true) + ")");
        }
        lines.add("Biggest category changes: " + joined(moves, "; "));
    }
    if (const auto line = reviewLine(first))
        lines.add("First period \u2014 " + *line);
    if (const auto line = reviewLine(second))
        lines.add("Second period \u2014 " + *line);
    return lines.text();
}

std::string transactions(const Ledger& ledger, std::string_view start, std::string_view end,
                         std::string_view text, std::string_view category,
                         std::optional<int64_t> minimumDollars,
                         const std::optional<std::string>& person, int64_t limit,
                         LocalDate /*today*/) {
    const Asked asked = ask(ledger, start, end, person);
    if (!asked.filter)
        return asked.error;
    const ReportFilter& filter = *asked.filter;
    const std::string needle = lowerTrimmed(text);
    const std::string categoryNeedle = lowerTrimmed(category);
    const int64_t minimum = minimumCents(minimumDollars);

    std::vector<const LedgerTransaction*> found;
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.isActive() || transaction.status != TransactionStatus::posted ||
            !filter.span.contains(transaction.date) || magnitude(transaction.amount) < minimum ||
            !filter.includes(transaction, ledger))
            continue;
        if (!needle.empty()) {
            const Merchant* filed = ledger.merchant(transaction.merchantID);
            const std::string merchantName =
                filed ? filed->name
                      : MerchantText::titleCase(MerchantKeys::of(transaction.rawDescription));
            if (!contains(text::lowercased(merchantName), needle) &&
                !contains(text::lowercased(transaction.rawDescription), needle))
                continue;
        }
        if (!categoryNeedle.empty() &&
            !filedInCategoryMatching(ledger, transaction, categoryNeedle))
            continue;
        found.push_back(&transaction);
    }
    std::sort(found.begin(), found.end(),
              [](const LedgerTransaction* a, const LedgerTransaction* b) {
                  const int64_t sizeA = magnitude(a->amount);
                  const int64_t sizeB = magnitude(b->amount);
                  if (sizeA != sizeB)
                      return sizeA > sizeB;
                  if (a->date != b->date)
                      return a->date < b->date;
                  return a->id < b->id;
              });

    Lines lines;
    lines.add(periodLine(filter.span, filter.scopeLabel(ledger)));
    if (found.empty()) {
        lines.add("No matching transactions.");
        return lines.text();
    }
    int64_t net = 0;
    for (const LedgerTransaction* transaction : found)
        net = checked::add(net, transaction->amount);
    lines.add(std::to_string(found.size()) + " matching transactions, net " + money(net) +
              ". Largest first:");
    const auto shown = static_cast<std::size_t>(std::clamp<int64_t>(limit, 1, 25));
    for (std::size_t i = 0; i < found.size() && i < shown; ++i) {
        const LedgerTransaction& transaction = *found[i];
        lines.add(DateText::medium(transaction.date) + " \u00b7 " +
                  ReportEngine::merchantIdentity(transaction, ledger).name + " \u00b7 " +
                  filedAs(ledger, transaction) + " \u00b7 " + money(transaction.amount));
    }
    return lines.text();
}

std::string recurring(const Ledger& ledger, const std::optional<std::string>& person,
                      LocalDate today) {
    const auto scope = scopeOf(person, ledger);
    if (!scope)
        return unknownPerson(person, ledger);
    // The series are found over the whole history up to today; the span
    // only completes the filter.
    const ReportFilter filter = filterFor(ledger, DateSpan(today.addingDays(-400), today), *scope);
    std::vector<RecurringCharge> active;
    for (auto& charge : Insights::recurring(ledger, filter, today)) {
        if (charge.isActive)
            active.push_back(std::move(charge));
    }
    if (active.empty())
        return "No active recurring charges found.";
    Lines lines;
    lines.add("Active recurring charges (" + std::to_string(active.size()) + "):");
    for (std::size_t i = 0; i < active.size() && i < 20; ++i) {
        const RecurringCharge& charge = active[i];
        std::string line = charge.merchantName + ": " + text::lowercased(label(charge.cadence)) +
                           ", about " + money(charge.typicalAmount) + ", last " +
                           DateText::medium(charge.lastDate);
        if (charge.lastAmount != charge.previousAmount)
            line += " (changed from " + money(charge.previousAmount) + " to " +
                    money(charge.lastAmount) + ")";
        lines.add(std::move(line));
    }
    return lines.text();
}

std::string context(const Ledger& ledger, LocalDate today) {
    std::optional<LocalDate> earliest;
    std::optional<LocalDate> latest;
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.isActive())
            continue;
        if (!earliest || transaction.date < *earliest)
            earliest = transaction.date;
        if (!latest || transaction.date > *latest)
            latest = transaction.date;
    }
    const std::string reach =
        earliest ? "Data runs from " + earliest->iso() + " to " + latest->iso() + "."
                 : std::string("There are no transactions yet.");
    return "Today is " + today.iso() + ". " + reach +
           " People: " + peopleNames(ledger, "none set up (use everyone)") +
           ". Categories: " + categoryNames(ledger) + ".";
}

}  // namespace copperwick::FinanceQueries
