#include "core/intelligence/ask_tools.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <utility>

#include <boost/json/value.hpp>

#include "core/intelligence/finance_queries.h"
#include "core/model/checked.h"
#include "core/model/text.h"

namespace copperwick {

namespace {

struct Definition {
    std::string name;
    std::string description;
    std::string label;
    std::vector<ToolParameter> parameters;
};

ToolParameter text(std::string name, std::string guide) {
    return {
        .name = std::move(name), .type = ToolParameter::Type::string, .guide = std::move(guide)};
}

const ToolParameter kStart =
    text("start", "First day, as YYYY-MM-DD, or YYYY-MM for a whole month");
const ToolParameter kEnd = text("end", "Last day, as YYYY-MM-DD, or YYYY-MM for a whole month");
const ToolParameter kPerson = text("person", "A person's name, or everyone");

const std::array<Definition, 6>& definitions() {
    static const std::array<Definition, 6> table{{
        {"spendingSummary",
         "Income, spending, savings and top categories for a period, for everyone or one person.",
         "Summary",
         {kStart, kEnd, kPerson}},
        {"categorySpending",
         "Spending in one category for a period, with its top merchants.",
         "Category",
         {text("category", "A category name such as Dining or Groceries"), kStart, kEnd, kPerson}},
        {"merchantSpending",
         "How much was spent at a merchant in a period.",
         "Merchant",
         {text("merchant", "Part of the merchant's name, such as Amazon"), kStart, kEnd, kPerson}},
        {"comparePeriods",
         "Compares spending and income between two periods, with the biggest category changes.",
         "Compare",
         {text("firstStart", "First period start, YYYY-MM-DD or YYYY-MM"),
          text("firstEnd", "First period end, YYYY-MM-DD or YYYY-MM"),
          text("secondStart", "Second period start, YYYY-MM-DD or YYYY-MM"),
          text("secondEnd", "Second period end, YYYY-MM-DD or YYYY-MM"), kPerson}},
        {"findTransactions",
         "Lists the largest matching transactions in a period, optionally by text, category or "
         "minimum amount.",
         "Transactions",
         {kStart,
          kEnd,
          text("text", "Text to look for in the merchant or description, or empty"),
          text("category", "A category name, or empty"),
          {.name = "minimumDollars",
           .type = ToolParameter::Type::integer,
           .guide = "Smallest amount in whole dollars, or 0"},
          kPerson}},
        {"recurringCharges",
         "Lists active recurring charges such as subscriptions, with their usual amounts.",
         "Recurring",
         {kPerson}},
    }};
    return table;
}

const Definition& definition(AskTool::Lookup lookup) {
    return definitions()[static_cast<std::size_t>(lookup)];
}

// A text argument as the model sent it; a number it wrote without quotes
// reads as its digits, anything else as nothing.
std::string textArgument(const boost::json::object& arguments, std::string_view name) {
    const boost::json::value* value = arguments.if_contains(name);
    if (!value)
        return {};
    if (const auto* string = value->if_string())
        return std::string(string->data(), string->size());
    if (const auto* number = value->if_int64())
        return std::to_string(*number);
    if (const auto* number = value->if_uint64())
        return std::to_string(*number);
    return {};
}

// Whole dollars however the model wrote them: a number, a fraction (cut to
// whole dollars) or digits in quotes. Absent when it sent none.
std::optional<int64_t> integerArgument(const boost::json::object& arguments,
                                       std::string_view name) {
    const boost::json::value* value = arguments.if_contains(name);
    if (!value)
        return std::nullopt;
    if (const auto* number = value->if_int64())
        return *number;
    if (const auto* number = value->if_uint64())
        return static_cast<int64_t>(
            std::min<uint64_t>(*number, std::numeric_limits<int64_t>::max()));
    if (const auto* number = value->if_double()) {
        constexpr double kBound = 1e15;  // far beyond any amount, well inside the range
        return static_cast<int64_t>(std::clamp(*number, -kBound, kBound));
    }
    if (const auto* string = value->if_string())
        return detail::readInteger(text::trimmed(std::string_view(string->data(), string->size())));
    return std::nullopt;
}

}  // namespace

AskTool::AskTool(Lookup lookup, Ledger ledger, LocalDate today, std::shared_ptr<ToolCallLog> log)
    : m_lookup(lookup), m_ledger(std::move(ledger)), m_today(today), m_log(std::move(log)) {}

const std::string& AskTool::name() const {
    return definition(m_lookup).name;
}

const std::string& AskTool::description() const {
    return definition(m_lookup).description;
}

const std::string& AskTool::label() const {
    return definition(m_lookup).label;
}

const std::vector<ToolParameter>& AskTool::parameters() const {
    return definition(m_lookup).parameters;
}

std::string AskTool::call(const boost::json::object& arguments) const {
    const auto get = [&](std::string_view name) { return textArgument(arguments, name); };
    const std::string person = get("person");
    std::string logged;
    std::string result;
    try {
        switch (m_lookup) {
            case Lookup::summary: {
                const auto start = get("start");
                const auto end = get("end");
                logged = start + " to " + end + ", " + person;
                result = FinanceQueries::summary(m_ledger, start, end, person, m_today);
                break;
            }
            case Lookup::category:
            case Lookup::merchant: {
                const bool isCategory = m_lookup == Lookup::category;
                const auto name = get(isCategory ? "category" : "merchant");
                const auto start = get("start");
                const auto end = get("end");
                logged = name + ", " + start + " to " + end + ", " + person;
                result =
                    isCategory
                        ? FinanceQueries::category(m_ledger, name, start, end, person, m_today)
                        : FinanceQueries::merchant(m_ledger, name, start, end, person, m_today);
                break;
            }
            case Lookup::compare: {
                const auto firstStart = get("firstStart");
                const auto firstEnd = get("firstEnd");
                const auto secondStart = get("secondStart");
                const auto secondEnd = get("secondEnd");
                logged = firstStart + " to " + firstEnd + " vs " + secondStart + " to " +
                         secondEnd + ", " + person;
                result = FinanceQueries::compare(m_ledger, firstStart, firstEnd, secondStart,
                                                 secondEnd, person, m_today);
                break;
            }
            case Lookup::transactions: {
                const auto start = get("start");
                const auto end = get("end");
                const auto text = get("text");
                const auto category = get("category");
                const auto minimum = integerArgument(arguments, "minimumDollars");
                logged = start + " to " + end + ", text \u201c" + text + "\u201d, category \u201c" +
                         category + "\u201d, at least $" + std::to_string(minimum.value_or(0));
                result = FinanceQueries::transactions(m_ledger, start, end, text, category, minimum,
                                                      person, AskTools::kTransactionLimit, m_today);
                break;
            }
            case Lookup::recurring:
                logged = person;
                result = FinanceQueries::recurring(m_ledger, person, m_today);
                break;
        }
    } catch (const checked::Overflow& overflow) {
        // A ledger whose sums leave the range: the model is told, and the
        // conversation goes on.
        result = "Error: " + std::string(overflow.what());
    }
    if (m_log)
        m_log->record(label(), std::move(logged), result);
    return result;
}

namespace AskTools {

std::vector<AskTool> all(const Ledger& ledger, LocalDate today, std::shared_ptr<ToolCallLog> log) {
    std::vector<AskTool> tools;
    for (const auto lookup :
         {AskTool::Lookup::summary, AskTool::Lookup::category, AskTool::Lookup::merchant,
          AskTool::Lookup::compare, AskTool::Lookup::transactions, AskTool::Lookup::recurring})
        tools.emplace_back(lookup, ledger, today, log);
    return tools;
}

}  // namespace AskTools

}  // namespace copperwick
