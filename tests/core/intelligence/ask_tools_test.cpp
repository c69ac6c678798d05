#include "core/intelligence/ask_tools.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <boost/json/parse.hpp>

#include "core/intelligence/finance_queries.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

const LocalDate kToday = day(2026, 4, 15);

boost::json::object arguments(std::string_view json) {
    return boost::json::parse(json).as_object();
}

TEST(AskTools, SixLookupsInOrderWithTheirArguments) {
    testing::LedgerBuilder builder;
    const auto tools = AskTools::all(builder.ledger(), kToday, std::make_shared<ToolCallLog>());
    std::vector<std::string> described;
    for (const auto& tool : tools) {
        std::string line = tool.name() + " (" + tool.label() + "):";
        for (const auto& parameter : tool.parameters())
            line +=
                " " + parameter.name + (parameter.type == ToolParameter::Type::integer ? "#" : "");
        described.push_back(line);
    }
    EXPECT_EQ(described, (std::vector<std::string>{
                             "spendingSummary (Summary): start end person",
                             "categorySpending (Category): category start end person",
                             "merchantSpending (Merchant): merchant start end person",
                             "comparePeriods (Compare): firstStart firstEnd secondStart "
                             "secondEnd person",
                             "findTransactions (Transactions): start end text category "
                             "minimumDollars# person",
                             "recurringCharges (Recurring): person",
                         }));
    EXPECT_EQ(tools[4].description(),
              "Lists the largest matching transactions in a period, optionally by text, category "
              "or minimum amount.");
    EXPECT_EQ(tools[0].parameters()[0].guide,
              "First day, as YYYY-MM-DD, or YYYY-MM for a whole month");
}

TEST(AskTools, EveryCallIsLoggedWithItsArgumentsAsGiven) {
    testing::LedgerBuilder builder;
    const auto log = std::make_shared<ToolCallLog>();
    const auto tools = AskTools::all(builder.ledger(), kToday, log);
    const auto summary =
        tools[0].call(arguments(R"({"start":"2026-03","end":"2026-03","person":"everyone"})"));
    EXPECT_EQ(summary,
              FinanceQueries::summary(builder.ledger(), "2026-03", "2026-03", "everyone", kToday));
    (void)tools[2].call(
        arguments(R"({"merchant":"Amazon","start":"2026-03","end":"x","person":""})"));
    (void)tools[3].call(arguments(
        R"({"firstStart":"2026-01","firstEnd":"2026-01","secondStart":"2026-02","secondEnd":"2026-02","person":"us"})"));
    (void)tools[4].call(arguments(
        R"({"start":"2026-03","end":"2026-03","text":"shop","category":"","minimumDollars":"25","person":"Ann"})"));
    (void)tools[5].call(arguments(R"({"person":"everyone"})"));

    const auto entries = log->entries();
    ASSERT_EQ(entries.size(), 5u);
    std::vector<std::string> told;
    for (const auto& entry : entries)
        told.push_back(entry.tool + ": " + entry.arguments);
    EXPECT_EQ(told, (std::vector<std::string>{
                        "Summary: 2026-03 to 2026-03, everyone",
                        "Merchant: Amazon, 2026-03 to x, ",
                        "Compare: 2026-01 to 2026-01 vs 2026-02 to 2026-02, us",
                        "Transactions: 2026-03 to 2026-03, text \u201cshop\u201d, category "
                        "\u201c\u201d, at least $25",
                        "Recurring: everyone",
                    }));
    EXPECT_EQ(entries[0].result, summary);
    EXPECT_EQ(entries[1].result, FinanceQueries::kDateError);
    EXPECT_EQ(entries[4].result, "No active recurring charges found.");
    EXPECT_NE(entries[0].id, entries[1].id);
    EXPECT_EQ(log->results()[4], entries[4].result);
}

TEST(AskTools, ArgumentsTheModelGotWrongAreAnsweredInWords) {
    testing::LedgerBuilder builder;
    const auto log = std::make_shared<ToolCallLog>();
    const auto tools = AskTools::all(builder.ledger(), kToday, log);
    EXPECT_EQ(tools[0].call(arguments("{}")), FinanceQueries::kDateError);
    EXPECT_EQ(tools[1].call(arguments(R"({"category":7,"start":"2026-03","end":"2026-03"})")),
              "Error: no category named 7. Categories: Housing, Utilities, Groceries, Dining, "
              "Transportation, Shopping, Subscriptions, Health, Personal Care, Entertainment, "
              "Travel, Education, Insurance, Pets, Gifts & Donations, Cash & ATM, Fees & "
              "Interest, Taxes, Other Spending, Salary, Interest & Rewards, Refunds & "
              "Settlements, Other Income");
    for (const auto* minimum : {"1e300", "-1e300", "18446744073709551615", "null", "\"lots\""}) {
        const auto text = tools[4].call(
            arguments(std::string(R"({"start":"2026-03","end":"2026-03","minimumDollars":)") +
                      minimum + "}"));
        EXPECT_EQ(text,
                  "Period: Mar 1, 2026 to Mar 31, 2026 (Whole household)\n"
                  "No matching transactions.")
            << minimum;
    }
    EXPECT_EQ(log->entries().size(), 7u);
}

TEST(ToolCallLog, ToolsOfOneQuestionRecordFromManyThreads) {
    ToolCallLog log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&log, t] {
            for (int i = 0; i < 250; ++i)
                log.record("Summary", std::to_string(t), std::to_string(i));
        });
    for (auto& thread : threads)
        thread.join();
    const auto entries = log.entries();
    ASSERT_EQ(entries.size(), 1000u);
    std::vector<int> next(4, 0);
    for (const auto& entry : entries) {
        const int t = std::stoi(entry.arguments);
        EXPECT_EQ(entry.result, std::to_string(next[t]++)) << "each thread's calls stay in order";
    }
}

}  // namespace
}  // namespace copperwick
