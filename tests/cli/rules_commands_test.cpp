#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "core/operations/classification.h"
#include "core/operations/rules.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

class RulesCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([&](Ledger& ledger) {
            LedgerDelta delta;
            const Account checking(Uuid::random(), "Joint Checking", AccountType::checking);
            ledger.accounts.push_back(checking);
            delta.change(RecordKind::account, checking.id);
            for (const auto& [id, text, amount] :
                 {std::tuple{hardware, "ACME HARDWARE 1234", -2500},
                  std::tuple{refund, "ACME HARDWARE REFUND", 900},
                  std::tuple{deli, "CORNER DELI", -800}}) {
                ledger.transactions.set(id, LedgerTransaction{.id = id,
                                                              .accountID = checking.id,
                                                              .date = testing::day(2026, 3, 2),
                                                              .amount = amount,
                                                              .rawDescription = text});
                delta.change(RecordKind::transaction, id);
            }
            delta.merge(rematch(ledger));
            return delta;
        });
    }
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return testing::runCommand(arguments);
    }
    boost::json::value json(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "--json");
        const auto result = run(arguments);
        EXPECT_EQ(result.code, 0) << result.err;
        return boost::json::parse(result.out);
    }
    std::string field(const Uuid& transaction, const char* key) {
        const auto lines = json({"transactions"});
        for (const auto& line : lines.as_array()) {
            if (line.at("id").as_string() == transaction.text())
                return std::string(line.at(key).as_string());
        }
        return "?";
    }

    testing::TempFolder folder;
    Uuid hardware = Uuid::random();
    Uuid refund = Uuid::random();
    Uuid deli = Uuid::random();
};

TEST_F(RulesCommandsTest, AddListOrderSwitchAndDelete) {
    EXPECT_EQ(run({"rules"}).out.substr(0, 13), "No rules yet.");
    auto added = json({"rules", "add", "--name", "Hardware", "--match", "startsWith", "--pattern",
                       "acme hardware", "--direction", "moneyOut", "--category", "Shopping"});
    EXPECT_EQ(added.at("changedTransactions").as_int64(), 1);
    EXPECT_EQ(added.at("rule").at("description").as_string(),
              "Text starts with \u201Cacme hardware\u201D, Money out only \u2192 Shopping, "
              "Spending");
    const std::string first(added.at("rule").at("id").as_string());
    EXPECT_EQ(field(hardware, "categoryName"), "Shopping");
    EXPECT_EQ(field(refund, "categoryName"), "") << "money in is left alone";

    const auto second = run({"rules", "add", "--name", "Everything Acme", "--pattern", "ACME",
                             "--category", "Housing", "--min", "1.00", "--top"});
    ASSERT_EQ(second.code, 0) << second.err;
    EXPECT_EQ(field(hardware, "categoryName"), "Housing") << "the rule on top wins";

    auto list = json({"rules"}).as_array();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].at("name").as_string(), "Everything Acme");
    EXPECT_EQ(list[0].at("minimumAmount").as_int64(), 100);
    ASSERT_EQ(run({"rules", "order", first}).code, 0);
    EXPECT_EQ(json({"rules"}).as_array()[0].at("id").as_string(), first);
    EXPECT_EQ(field(hardware, "categoryName"), "Shopping");

    ASSERT_EQ(run({"rules", "disable", first}).code, 0);
    EXPECT_NE(run({"rules"}).out.find("Hardware (off)"), std::string::npos);
    EXPECT_EQ(field(hardware, "categoryName"), "Housing");
    ASSERT_EQ(run({"rules", "enable", "hardware"}).code, 0) << "a name works as well";

    const auto updated = run({"rules", "update", first, "--category", "Pets", "--no-apply"});
    ASSERT_EQ(updated.code, 0) << updated.err;
    EXPECT_NE(updated.out.find("0 transactions filed anew."), std::string::npos) << updated.out;
    EXPECT_EQ(field(hardware, "categoryName"), "Shopping");

    ASSERT_EQ(run({"rules", "delete", first}).code, 0);
    EXPECT_EQ(json({"rules"}).as_array().size(), 1u);
    EXPECT_EQ(field(hardware, "categoryName"), "Housing");
    EXPECT_EQ(run({"rules", "delete", first}).code, 1);
}

TEST_F(RulesCommandsTest, TheEditorsRefusals) {
    auto result = run({"rules", "add", "--name", "Bad", "--match", "regex", "--pattern", "(ACME",
                       "--category", "Shopping"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "That pattern isn't valid.\n");
    result = run({"rules", "add", "--name", "Blank", "--pattern", "   ", "--category", "Shopping"});
    EXPECT_EQ(result.code, 2);
    result = run({"rules", "add", "--name", "No category", "--pattern", "ACME"});
    EXPECT_EQ(result.err, "Choose a category that matches spending or income.\n");
    result = run({"rules", "add", "--name", "Moves", "--pattern", "ACME", "--kind", "transfer"});
    EXPECT_EQ(result.code, 0) << "a transfer needs no category";
    EXPECT_EQ(run({"rules", "add", "--name", "x", "--pattern", "x", "--category", "Dining", "--max",
                   "lots"})
                  .code,
              2);
    EXPECT_EQ(json({"rules"}).as_array().size(), 1u);
}

// `rules add` asked for a category even for a rule that names only a merchant,
// which rules may do: the merchant's own filing or the later stages file it.
TEST_F(RulesCommandsTest, ARuleMayNameOnlyAMerchant) {
    const auto added = json({"rules", "add", "--name", "Deli", "--pattern", "CORNER DELI",
                             "--merchant", "Corner Deli"});
    const auto& rule = added.at("rule").as_object();
    EXPECT_EQ(rule.at("merchantName").as_string(), "Corner Deli");
    EXPECT_FALSE(rule.contains("kind"));
    EXPECT_FALSE(rule.contains("categoryID"));
    EXPECT_EQ(rule.at("description").as_string(),
              "Text contains \u201CCORNER DELI\u201D \u2192 Corner Deli");
    EXPECT_EQ(field(deli, "merchantName"), "Corner Deli");

    const auto spending = run({"rules", "add", "--name", "Spending", "--pattern", "DELI",
                               "--merchant", "Deli", "--kind", "expense"});
    EXPECT_EQ(spending.code, 1);
    EXPECT_EQ(spending.err, "Choose a category that matches spending or income.\n");
}

// A rule pattern that takes a lifetime to fail on a long line of bank text hung
// every import and rematch.
TEST_F(RulesCommandsTest, APatternTooSlowToMatchIsRefusedOrMarked) {
    const std::string slowPattern = "^(([A-Z ]+)*)*$";
    const auto refused = run({"rules", "add", "--name", "Slow", "--match", "regex", "--pattern",
                              slowPattern, "--category", "Pets"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.err, "This pattern takes too long to match. Simplify it.\n");
    EXPECT_EQ(json({"rules"}).as_array().size(), 0u);

    // Saved before patterns were checked: it stays, marked, and files nothing,
    // although on "CORNER DELI" alone it would be quick to match.
    {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([&](Ledger& ledger) {
            const Rule slow{.id = Uuid::random(),
                            .name = "Slow",
                            .match = TextMatch::regex,
                            .pattern = slowPattern,
                            .categoryID = ledger.categoryNamed("Pets")->id};
            return addRule(ledger, slow, false, true);
        });
        ASSERT_FALSE(runtime.errorMessage());
    }
    const std::string mark = "(too slow to match, so it files nothing)";
    EXPECT_NE(run({"rules"}).out.find(mark), std::string::npos);
    const auto listed = json({"rules"}).as_array();
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_TRUE(std::string(listed[0].at("description").as_string()).ends_with(mark));
    EXPECT_NE(field(deli, "categoryName"), "Pets");

    const auto renamed = run({"rules", "update", "Slow", "--name", "Still slow"});
    EXPECT_EQ(renamed.code, 0) << "a saved rule can be renamed before it is mended";
    const auto unchanged = run({"rules", "update", "Still slow", "--pattern", "^(A+)+$"});
    EXPECT_EQ(unchanged.err, "This pattern takes too long to match. Simplify it.\n");
    EXPECT_EQ(run({"rules", "update", "Still slow", "--pattern", "^CORNER"}).code, 0);
    EXPECT_EQ(field(deli, "categoryName"), "Pets");
}

TEST_F(RulesCommandsTest, BuiltInRulesSwitchOffAndOn) {
    const auto rules = json({"builtin-rules"}).as_array();
    ASSERT_FALSE(rules.empty());
    const std::string id(rules[0].at("id").as_string());
    EXPECT_TRUE(rules[0].at("isEnabled").as_bool());
    ASSERT_EQ(run({"builtin-rules", "off", id}).code, 0);
    EXPECT_FALSE(json({"builtin-rules"}).as_array()[0].at("isEnabled").as_bool());
    EXPECT_EQ(run({"builtin-rules"}).out.substr(0, 3), "off");
    ASSERT_EQ(run({"builtin-rules", "on", id}).code, 0);
    EXPECT_TRUE(json({"builtin-rules"}).as_array()[0].at("isEnabled").as_bool());
    EXPECT_EQ(run({"builtin-rules", "off", "no-such-rule"}).code, 1);
}

TEST_F(RulesCommandsTest, MerchantsRenameMergeSetAndPrune) {
    EXPECT_EQ(run({"merchants"}).out,
              "Merchants appear here as you import and review transactions.\n");
    ASSERT_EQ(
        run({"classify", "--ids", deli.text(), "--merchant", "Corner Deli", "--category", "Dining"})
            .code,
        0);
    ASSERT_EQ(run({"classify", "--ids", hardware.text(), "--merchant", "Acme", "--category",
                   "Shopping", "--no-remember"})
                  .code,
              0);
    auto merchants = json({"merchants", "--search", "deli"}).as_array();
    ASSERT_EQ(merchants.size(), 1u);
    EXPECT_EQ(merchants[0].at("transactionCount").as_int64(), 1);
    EXPECT_NE(run({"merchants"})
                  .out.find("Corner Deli  1 transaction  always Dining  recognizes "
                            "1 bank text  "),
              std::string::npos);

    // Renaming to another merchant's name merges the two.
    auto renamed = json({"merchants", "rename", "Acme", "corner deli"});
    EXPECT_EQ(renamed.at("merchant").at("name").as_string(), "Corner Deli");
    EXPECT_EQ(renamed.at("merchant").at("transactionCount").as_int64(), 2);
    EXPECT_EQ(json({"merchants"}).as_array().size(), 1u);

    ASSERT_EQ(run({"merchants", "set", "Corner Deli", "--kind", "transfer"}).code, 0);
    EXPECT_NE(run({"merchants"}).out.find("always a transfer"), std::string::npos);
    EXPECT_EQ(field(deli, "kind"), "expense") << "lines set by hand stay";

    const auto pruned = run({"merchants", "prune"});
    EXPECT_EQ(pruned.out, "Removed 0 unused merchants.\n");
    EXPECT_EQ(run({"merchants", "merge", "Corner Deli", "Nobody"}).code, 1);
}

TEST_F(RulesCommandsTest, PreviewSavesNothingAndSuggestionsBecomeRules) {
    ASSERT_EQ(run({"rules", "add", "--name", "Refunds", "--pattern", "REFUND", "--category",
                   "Refunds & Settlements"})
                  .code,
              0);
    auto preview = json({"rules", "preview", "--name", "Acme", "--match", "regex", "--pattern",
                         "^ACME", "--category", "Shopping"});
    EXPECT_EQ(preview.at("matchingIDs").as_array().size(), 2u);
    EXPECT_EQ(preview.at("changingIDs").as_array().size(), 1u);
    EXPECT_EQ(preview.at("shadowedBy").as_array()[0].at("name").as_string(), "Refunds");
    const auto text = run({"rules", "preview", "--name", "Acme", "--pattern", "ACME", "--category",
                           "Shopping", "--top"});
    EXPECT_NE(text.out.find("Matches 2 transactions; 2 would change; 0 you set by hand"),
              std::string::npos)
        << text.out;
    EXPECT_EQ(json({"rules"}).as_array().size(), 1u) << "a preview saves nothing";

    EXPECT_EQ(run({"rules", "suggestions"}).out, "No suggested rules.\n");
    ASSERT_EQ(run({"classify", "--ids", hardware.text() + "," + refund.text(), "--merchant", "Acme",
                   "--category", "Shopping", "--no-remember"})
                  .code,
              0);
    const auto suggestions = json({"rules", "suggestions"}).as_array();
    ASSERT_EQ(suggestions.size(), 1u);
    EXPECT_EQ(suggestions[0].at("pattern").as_string(), "ACME HARDWARE");
    EXPECT_EQ(suggestions[0].at("matchCount").as_int64(), 2);
    const std::string id(suggestions[0].at("id").as_string());
    EXPECT_NE(run({"rules", "suggestions"}).out.find("Based on 2 corrections"), std::string::npos);

    EXPECT_EQ(run({"rules", "accept-suggestion", "nope"}).code, 1);
    const auto accepted = json({"rules", "accept-suggestion", id, "--category", "Housing"});
    EXPECT_EQ(accepted.at("rule").at("name").as_string(), "Acme Hardware \u2192 Housing");
    EXPECT_EQ(field(hardware, "categoryName"), "Shopping") << "set by hand stays";
    EXPECT_EQ(json({"rules", "suggestions"}).as_array().size(), 0u);
}

}  // namespace
}  // namespace copperwick::cli
