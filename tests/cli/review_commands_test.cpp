#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/card_statement.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

class ReviewCommandsTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return testing::runCommand(arguments);
    }
    boost::json::object json(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "--json");
        const auto result = run(arguments);
        EXPECT_EQ(result.code, 0) << result.err;
        return boost::json::parse(result.out).as_object();
    }
    void import(const std::string& name, const std::string& csv) {
        testing::writeFile(folder / name, csv);
        const auto result = run({"import", (folder / name).string(), "--account", "Visa"});
        ASSERT_EQ(result.code, 0) << result.err;
    }
    std::vector<std::string> groupIDs() {
        std::vector<std::string> ids;
        const auto review = json({"review"});
        for (const auto& group : review.at("groups").as_array())
            ids.emplace_back(group.at("id").as_string());
        return ids;
    }
    void SetUp() override {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
        runtime.apply([](Ledger& ledger) {
            LedgerDelta delta;
            const Account card(Uuid::random(), "Visa", AccountType::creditCard);
            ledger.accounts.push_back(card);
            delta.change(RecordKind::account, card.id);
            return delta;
        });
    }

    TempFolder folder;
};

TEST_F(ReviewCommandsTest, LearnedDecisionsFileTheNextMonthAndUndoBringsOneBack) {
    import("january.csv",
           testing::cardStatement({{"01/05/2026", "HILLTOP YOGA STUDIO", "-80.00"},
                                   {"01/09/2026", "ROSIES BAKERY PORTLAND", "-12.40"},
                                   { "01/20/2026",
                                     "KESTREL BIKE WORKS",
                                     "-45.00" }}));
    import("february.csv",
           testing::cardStatement({{"02/05/2026", "HILLTOP YOGA STUDIO", "-80.00"},
                                   {"02/11/2026", "ROSIES BAKERY PORTLAND", "-9.10"},
                                   { "02/14/2026",
                                     "ROSIES BAKERY PORTLAND",
                                     "-3.25" }}));
    EXPECT_EQ(groupIDs(),
              (std::vector<std::string>{"out|ROSIES BAKERY PORTLAND", "out|HILLTOP YOGA STUDIO",
                                        "out|KESTREL BIKE WORKS"}));

    const auto review = run({"review"});
    ASSERT_EQ(review.code, 0) << review.err;
    EXPECT_EQ(review.out.substr(0, review.out.find('\n')), "6 transactions in 3 groups need you.");
    EXPECT_NE(review.out.find("Rosies Bakery Portland\n  ROSIES BAKERY PORTLAND\n  3 "
                              "transactions, 2026-01-09 to 2026-02-14, Visa, \u2212$24.75\n"),
              std::string::npos)
        << review.out;

    auto decided = run({"classify", "out|ROSIES BAKERY PORTLAND", "--merchant", "Rosie's",
                        "--category", "Dining"});
    ASSERT_EQ(decided.code, 0) << decided.err;
    EXPECT_NE(decided.out.find("Rosie's, Dining, Spending"), std::string::npos) << decided.out;
    ASSERT_EQ(run({"classify", "out|HILLTOP YOGA STUDIO", "--category", "Health"}).code, 0);
    ASSERT_EQ(run({"classify", "out|KESTREL BIKE WORKS", "--category", "Transportation"}).code, 0);
    EXPECT_EQ(run({"review"}).out.substr(0, 13), "All caught up");

    import("march.csv", testing::cardStatement({{"03/05/2026", "HILLTOP YOGA STUDIO", "-80.00"},
                                                {"03/08/2026", "ROSIES BAKERY PORTLAND", "-7.00"},
                                                {"03/09/2026", "KESTREL BIKE WORKS", "-60.00"},
                                                { "03/12/2026",
                                                  "MOSSY OWL TEAHOUSE",
                                                  "-6.00" }}));
    EXPECT_EQ(groupIDs(), std::vector<std::string>{"out|MOSSY OWL TEAHOUSE"});
    const auto march = boost::json::parse(
        run({"--json", "transactions", "--from", "2026-03-01", "--search", "rosies"}).out);
    ASSERT_EQ(march.as_array().size(), 1u);
    EXPECT_EQ(march.as_array()[0].at("merchantName").as_string(), "Rosie's");
    EXPECT_EQ(march.as_array()[0].at("categoryName").as_string(), "Dining");
    EXPECT_EQ(march.as_array()[0].at("review").as_string(), "automatic");

    const auto undone = run({"undo"});
    ASSERT_EQ(undone.code, 0) << undone.err;
    EXPECT_EQ(undone.out, "Undone.\nReview Kestrel Bike Works\n");
    const auto groups = json({"review"}).at("groups").as_array();
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].at("id").as_string(), "out|KESTREL BIKE WORKS");
    // Undo puts back what the decision touched; the March line, filed later
    // by the import, keeps its merchant.
    EXPECT_EQ(groups[0].at("transactionIDs").as_array().size(), 1u);
    EXPECT_EQ(groups[1].at("id").as_string(), "out|MOSSY OWL TEAHOUSE");
}

TEST_F(ReviewCommandsTest, ClassifyRefusesWhatTheCardWouldRefuse) {
    import("january.csv", testing::cardStatement(
                              {{ "01/05/2026",
                                 "HILLTOP YOGA STUDIO",
                                 "-80.00" }}));
    auto result = run({"classify", "out|HILLTOP YOGA STUDIO", "--kind", "expense"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Choose a category that matches spending or income.\n");
    result = run({"classify", "out|NOT THERE", "--category", "Dining"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(run({"classify", "--category", "Dining"}).code, 2) << "a group or ids";
    EXPECT_EQ(run({"approve", "out|HILLTOP YOGA STUDIO"}).code, 1) << "no suggestion";

    const auto id = std::string(
        json({"review"}).at("groups").as_array()[0].at("transactionIDs").as_array()[0].as_string());
    const auto answer = json({"classify", "--ids", id, "--kind", "transfer", "--no-remember"});
    EXPECT_EQ(answer.at("label").as_string(), "Classify");
    EXPECT_EQ(answer.at("transactions").as_array()[0].at("kind").as_string(), "transfer");
    EXPECT_EQ(run({"undo"}).out, "Undone.\nClassify\n");
}

TEST_F(ReviewCommandsTest, ApproveTakesTheGroupsSuggestion) {
    import("january.csv", testing::cardStatement({{"01/05/2026", "HILLTOP YOGA STUDIO", "-80.00"},
                                                  { "01/06/2026",
                                                    "HILLTOP YOGA STUDIO",
                                                    "-80.00" }}));
    {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
        std::vector<Uuid> ids;
        for (const auto& t : runtime.ledger().transactions)
            ids.push_back(t.id);
        const Uuid health = runtime.ledger().categoryNamed("Health")->id;
        runtime.apply([&](Ledger& ledger) {
            LedgerDelta delta;
            for (const auto& id : ids) {
                ledger.transactions.update(id, [&](LedgerTransaction& t) {
                    t.review = ReviewState::suggested;
                    t.suggestion = Suggestion{.merchantName = "Hilltop Yoga",
                                              .categoryID = health,
                                              .kind = TransactionKind::expense,
                                              .source = MatchMethod::similar,
                                              .reason = "Like Hilltop."};
                });
                delta.change(RecordKind::transaction, id);
            }
            return delta;
        });
    }
    const auto review = run({"review"});
    EXPECT_NE(review.out.find("  Suggested: Hilltop Yoga, Health, Spending (Like Hilltop.)\n"),
              std::string::npos)
        << review.out;
    const auto group = json({"review"}).at("groups").as_array()[0].as_object();
    EXPECT_EQ(group.at("suggestion").at("merchantName").as_string(), "Hilltop Yoga");
    EXPECT_EQ(group.at("accountNames").as_array()[0].as_string(), "Visa");
    EXPECT_EQ(group.at("total").as_int64(), -16000);

    const auto approved = run({"approve", "out|HILLTOP YOGA STUDIO"});
    ASSERT_EQ(approved.code, 0) << approved.err;
    EXPECT_NE(approved.out.find("All caught up"), std::string::npos) << approved.out;
    EXPECT_EQ(run({"undo"}).out, "Undone.\nApprove suggestion\n");
}

}  // namespace
}  // namespace copperwick::cli
