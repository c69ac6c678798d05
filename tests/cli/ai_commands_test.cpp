#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "runtime/ledger_runtime.h"
#include "runtime/on_device_model.h"
#include "tests/support/card_statement.h"
#include "tests/support/fake_model_server.h"
#include "tests/support/model_test_support.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

namespace json = boost::json;
using testing::FakeModelServer;
using testing::layoutDraft;
using testing::lineOf;
using testing::ScopedVariable;
using testing::TempFolder;

// A model that knows a few merchants, copies report facts and lookup
// answers faithfully, and reads one odd file's columns.
FakeModelServer::Reply fakeModel(const json::object& request,
                                 const std::map<std::string, std::string>& merchants) {
    const std::string system = FakeModelServer::said(request, "system");
    const std::string user = FakeModelServer::said(request, "user");
    if (system == OnDeviceModelText::kGuessMerchant) {
        const auto known = merchants.find(lineOf(user, "Cleaned: "));
        if (known == merchants.end())
            return FakeModelServer::structured(
                {{"merchant", "unknown"}, {"category", ""}, {"kind", "unknown"}, {"reason", ""}});
        return FakeModelServer::structured({{"merchant", known->second},
                                            {"category", "Dining"},
                                            {"kind", "expense"},
                                            {"reason", "A cafe by its name."}});
    }
    if (system == OnDeviceModelText::kWriteNarrative) {
        // One bullet copied from the first fact, one with a figure of its own.
        const std::string first = lineOf(user, "F1: ");
        return FakeModelServer::structured(
            {{"bullets", json::array{json::object{{"text", first}, {"factIDs", {"F1"}}},
                                     json::object{{"text", "Spending will reach $9,999.99."},
                                                  {"factIDs", {"F1"}}}}}});
    }
    if (system == OnDeviceModelText::kExplain)
        return FakeModelServer::structured(
            {{"explanation", "A coffee roaster, paid through Square."}, {"confidence", "high"}});
    if (system == OnDeviceModelText::kProposeLayout)
        return FakeModelServer::structured(layoutDraft(3));
    if (system.rfind(OnDeviceModelText::kAnswerBase, 0) == 0) {
        const auto& last = request.at("messages").as_array().back().as_object();
        if (last.at("role").as_string() == "user")
            return FakeModelServer::toolCall("recurringCharges", {{"person", "everyone"}});
        const std::string result(last.at("content").as_string());
        return FakeModelServer::text("Your subscriptions: " + result.substr(result.find('\n') + 1));
    }
    return {.status = 400, .body = R"({"error":"unexpected request"})"};
}

class AICommandsTest : public ::testing::Test {
  protected:
    AICommandsTest() : config("XDG_CONFIG_HOME", (folder / "config").string()) {
        server.onChat(
            [this](const json::object& request) { return fakeModel(request, merchants); });
    }
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return testing::runCommand(arguments);
    }
    json::value json(std::vector<std::string> arguments, int code = 0) {
        arguments.insert(arguments.begin(), "--json");
        const auto result = run(arguments);
        EXPECT_EQ(result.code, code) << result.err;
        return json::parse(result.out);
    }
    void setUpModel() {
        const auto result = run({"ai", "setup", "--endpoint", server.endpoint()});
        ASSERT_EQ(result.code, 0) << result.err;
    }
    // A card "Visa" with lines nobody has filed.
    void importUnfiled() {
        {
            LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
            runtime.apply([](Ledger& ledger) {
                LedgerDelta delta;
                const Account card(Uuid::random(), "Visa", AccountType::creditCard);
                ledger.accounts.push_back(card);
                delta.change(RecordKind::account, card.id);
                return delta;
            });
        }
        testing::writeFile(folder / "visa.csv",
                           testing::cardStatement({{"03/02/2026", "SQ *ZEPHYR BEANS 0042", "-4.50"},
                                                   {"03/09/2026", "SQ *ZEPHYR BEANS 0042", "-5.25"},
                                                   {"03/11/2026", "QQX HOLDINGS 771", "-19.99"}}));
        const auto result = run({"import", (folder / "visa.csv").string(), "--account", "Visa"});
        ASSERT_EQ(result.code, 0) << result.err;
    }

    TempFolder folder;
    ScopedVariable config;
    FakeModelServer server;
    std::map<std::string, std::string> merchants{{"DEMO COFFEE RSTRS", "Demo Coffee Roasters"},
                                                 {"ZEPHYR BEANS", "Zephyr Beans"}};
};

TEST_F(AICommandsTest, SetupTakesOnlyAnAddressOnThisComputer) {
    const auto preferences = folder / "config" / "Copperwick" / "preferences.json";
    for (const char* address :
         {"http://10.0.0.1:8080/v1", "http://example.com/v1", "https://127.0.0.1.nip.io/v1"}) {
        const auto refused = run({"ai", "setup", "--endpoint", address, "--model", "m"});
        EXPECT_EQ(refused.code, 1) << address;
        EXPECT_EQ(refused.err, std::string(OnDeviceModelText::kNotLoopback) + "\n");
        EXPECT_FALSE(std::filesystem::exists(preferences)) << "nothing stored for " << address;
    }

    const auto none = json({"ai"});
    EXPECT_EQ(none.at("available"), false);
    EXPECT_EQ(none.at("endpoint"), nullptr);
    EXPECT_EQ(none.at("unavailableReason").as_string(), OnDeviceModelText::kNoAddress);

    const auto setUp =
        run({"ai", "setup", "--endpoint", server.endpoint() + "/", "--model", "llama-3.2-3b"});
    ASSERT_EQ(setUp.code, 0) << setUp.err;
    EXPECT_NE(setUp.out.find("Model server: " + server.endpoint() + "\n"), std::string::npos)
        << setUp.out;
    EXPECT_NE(setUp.out.find("The local model is answering."), std::string::npos);
    EXPECT_EQ(json({"ai"}), json::parse(R"({"enabled":true,"autoSuggest":true,"autoFile":true,)"
                                        R"("tidyNames":true,"endpoint":")" +
                                        server.endpoint() +
                                        R"(","model":"llama-3.2-3b","available":true,)"
                                        R"("unavailableReason":null})"));

    EXPECT_EQ(run({"ai", "off"}).out, "Local AI: off\n");
    EXPECT_EQ(run({"ai", "set", "autoFile", "off"}).out, "autoFile: off\n");
    const auto switched = json({"ai"});
    EXPECT_EQ(switched.at("enabled"), false);
    EXPECT_EQ(switched.at("autoFile"), false);
    EXPECT_EQ(switched.at("autoSuggest"), true);
    EXPECT_EQ(run({"ai", "set", "autoNothing", "on"}).code, 2);

    // A demo uses this model, keeps its switches to itself and changes nothing here.
    const std::string before = testing::readFile(preferences);
    EXPECT_EQ(
        testing::runCommand({"--demo", "ai", "setup", "--endpoint", "http://127.0.0.1:9/v1"}).code,
        1);
    const auto demo = testing::runCommand({"--demo", "--json", "ai", "set", "tidyNames", "off"});
    ASSERT_EQ(demo.code, 0) << demo.err;
    const auto demoStatus = json::parse(demo.out);
    EXPECT_EQ(demoStatus.at("endpoint").as_string(), server.endpoint());
    EXPECT_EQ(demoStatus.at("enabled"), true);
    EXPECT_EQ(demoStatus.at("tidyNames"), false);
    EXPECT_EQ(testing::readFile(preferences), before);
}

TEST_F(AICommandsTest, TheDemoAnswersWhatSubscriptionsThereAreFromItsLookups) {
    setUpModel();
    const auto result =
        testing::runCommand({"--demo", "--json", "ask", "What", "subscriptions do I have?"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto answer = json::parse(result.out).as_object();
    EXPECT_EQ(answer.at("question"), "What subscriptions do I have?");
    EXPECT_EQ(answer.at("isGrounded"), true);
    EXPECT_EQ(answer.at("failed"), false);
    const auto& lookups = answer.at("lookups").as_array();
    ASSERT_EQ(lookups.size(), 1u);
    EXPECT_EQ(lookups[0].at("tool"), "Recurring");
    EXPECT_EQ(lookups[0].at("arguments"), "everyone");
    EXPECT_EQ(lookups[0].at("result").as_string().rfind("Active recurring charges (", 0), 0u);
    EXPECT_NE(std::string(answer.at("text").as_string()).find("Netflix"), std::string::npos)
        << answer.at("text");
    for (const char* key : {"id", "text"})
        EXPECT_TRUE(answer.at(key).is_string()) << key;

    const auto text = testing::runCommand({"--demo", "ask", "What subscriptions do I have?"});
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_EQ(text.out.rfind("Your subscriptions: ", 0), 0u) << text.out;
    EXPECT_EQ(text.out.find("! Some numbers"), std::string::npos);
    EXPECT_NE(text.out.find("\nHow Copperwick worked this out (1 lookup)\n  Recurring: everyone\n"
                            "    Active recurring charges ("),
              std::string::npos)
        << text.out;
}

TEST_F(AICommandsTest, AnAnswerThatFailsExitsWithItsWords) {
    const auto missing = run({"ask", "What changed?"});
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.err, std::string(OnDeviceModelText::kNoAddress) + "\n");
    setUpModel();
    run({"ai", "off"});
    const auto off = json({"ask", "What changed?"}, 1);
    EXPECT_EQ(off.at("failed"), true);
    EXPECT_EQ(off.at("text"), "Local AI features are turned off in Settings.");
    EXPECT_TRUE(server.chats().empty());
    EXPECT_EQ(run({"ask", "  "}).code, 2);
}

TEST_F(AICommandsTest, TheDemoReportSummaryShowsOnlyCheckedBullets) {
    setUpModel();
    const auto result = testing::runCommand({"--demo", "report", "--summary", "--tab", "overview"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto facts = result.out.find("Key facts\n  F1: Spending in ");
    const auto summary = result.out.find("\nSummary by Local AI\n  \u2713 Spending in ");
    ASSERT_NE(facts, std::string::npos) << result.out;
    ASSERT_NE(summary, std::string::npos) << result.out;
    EXPECT_LT(facts, summary);
    EXPECT_NE(result.out.find(" [F1]\n", summary), std::string::npos);
    EXPECT_EQ(result.out.find("$9,999.99"), std::string::npos) << "a figure of its own is dropped";
    EXPECT_LT(summary, result.out.find("About these numbers"));

    const auto report =
        json::parse(testing::runCommand({"--demo", "--json", "report", "--summary"}).out);
    ASSERT_EQ(report.at("narrative").as_array().size(), 1u);
    EXPECT_EQ(report.at("narrative").at(0).at("factIDs"), json::array{"F1"});
    EXPECT_EQ(report.at("narrative").at(0).at("id"), 0);
    EXPECT_EQ(report.at("narrativeFailure"), nullptr);
    EXPECT_EQ(report.at("facts").at(0).at("id"), "F1");

    // Switched off, the report stands, with the reason where the summary goes.
    // The demo's switch is its own.
    ASSERT_EQ(testing::runCommand({"--demo", "ai", "off"}).code, 0);
    const auto off = testing::runCommand({"--demo", "report", "--summary"});
    EXPECT_EQ(off.code, 0) << off.err;
    EXPECT_NE(
        off.out.find("Summary by Local AI\n  Local AI features are turned off in Settings.\n"),
        std::string::npos);
}

TEST_F(AICommandsTest, TheDemoLookFilesWhatTheModelIsSureOf) {
    setUpModel();
    const auto result = testing::runCommand({"--demo", "ai", "look"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out,
              "Local AI filed 3 transactions. They're marked so you can check them in Review, "
              "and Undo reverses the whole run.\n");
    EXPECT_NE(result.err.find("Local AI is looking at 1 of 3\u2026\n"), std::string::npos)
        << result.err;

    const auto suggested =
        testing::runCommand({"--demo", "--json", "ai", "look", "--suggest-only"});
    ASSERT_EQ(suggested.code, 0) << suggested.err;
    const auto outcome = json::parse(suggested.out);
    EXPECT_EQ(outcome.at("statusMessage"),
              "It suggested merchants for 1 group; approve them in Review.");
    EXPECT_TRUE(outcome.at("filedIDs").as_array().empty());
    EXPECT_NE(std::find(outcome.at("suggestedGroupIDs").as_array().begin(),
                        outcome.at("suggestedGroupIDs").as_array().end(),
                        json::value("out|DEMO COFFEE RSTRS")),
              outcome.at("suggestedGroupIDs").as_array().end());
}

TEST_F(AICommandsTest, AFilingShowsEverywhereAndUndoTakesTheRunBack) {
    importUnfiled();
    const auto waiting = json({"review"});
    ASSERT_EQ(waiting.at("groups").as_array().size(), 2u);
    EXPECT_TRUE(waiting.at("aiFiled").as_array().empty());

    setUpModel();
    const auto look = run({"ai", "look"});
    ASSERT_EQ(look.code, 0) << look.err;
    EXPECT_EQ(look.out.rfind("Local AI filed 2 transactions.", 0), 0u) << look.out;

    const auto review = json({"review"});
    ASSERT_EQ(review.at("groups").as_array().size(), 1u);
    ASSERT_EQ(review.at("aiFiled").as_array().size(), 1u);
    const std::string group(review.at("aiFiled").at(0).at("id").as_string());
    const auto reviewText = run({"review"}).out;
    EXPECT_NE(reviewText.find("\nFiled by Local AI\nLocal AI filed these on this computer"),
              std::string::npos)
        << reviewText;
    EXPECT_NE(reviewText.find("Filed as: Zephyr Beans, Dining, Spending"), std::string::npos);

    EXPECT_EQ(json({"transactions", "--ai-filed"}).as_array().size(), 2u);
    const auto notes = run({"report", "--from", "2026-03-01", "--to", "2026-03-31"}).out;
    EXPECT_NE(notes.find("2 transactions were filed by Local AI ($9.75 in all)"), std::string::npos)
        << notes;

    const auto undone = run({"undo"});
    ASSERT_EQ(undone.code, 0) << undone.err;
    EXPECT_EQ(undone.out, "Undone.\nFiled by Local AI (2)\n");
    const auto after = json({"review"});
    EXPECT_EQ(after.at("groups").as_array().size(), 2u);
    EXPECT_TRUE(after.at("aiFiled").as_array().empty());
    EXPECT_TRUE(json({"transactions", "--ai-filed"}).as_array().empty());

    // The person files what the model couldn't; the model files the rest,
    // and then nothing is left to ask it about.
    for (const auto& waitingGroup : after.at("groups").as_array()) {
        if (waitingGroup.at("key") != "ZEPHYR BEANS") {
            ASSERT_EQ(run({"classify", std::string(waitingGroup.at("id").as_string()), "--category",
                           "Shopping"})
                          .code,
                      0);
        }
    }
    ASSERT_EQ(run({"ai", "look"}).code, 0);
    const auto chats = server.chats().size();
    EXPECT_EQ(run({"ai", "look"}).out, "Nothing in Review is left for Local AI to look at.\n");
    EXPECT_EQ(server.chats().size(), chats);

    // Looks right: the filing becomes the person's own.
    const auto kept = json({"ai", "confirm", group});
    EXPECT_EQ(kept.at("changed"), true);
    EXPECT_EQ(kept.at("label"), "Keep Local AI filing");
    for (const auto& transaction : kept.at("transactions").as_array())
        EXPECT_EQ(transaction.at("review"), "confirmed");
    EXPECT_TRUE(json({"review"}).at("aiFiled").as_array().empty());
    EXPECT_EQ(run({"ai", "confirm", group}).code, 1) << "nothing of that group waits any more";
    EXPECT_EQ(run({"ai", "confirm", group, "--all"}).code, 2);
}

TEST_F(AICommandsTest, AnImportLetsLocalAILookAtWhatItLeaves) {
    setUpModel();
    importUnfiled();
    EXPECT_EQ(json({"transactions", "--ai-filed"}).as_array().size(), 2u);
    // Switched off, the next import leaves everything to the person.
    run({"ai", "set", "autoSuggest", "off"});
    testing::writeFile(folder / "april.csv",
                       testing::cardStatement({{"04/02/2026", "SQ *ZEPHYR BEANS 0042", "-4.75"},
                                               {"04/05/2026", "WQV TRADING 12", "-8.00"}}));
    const auto chatsBefore = server.chats().size();
    const auto imported = run({"import", (folder / "april.csv").string(), "--account", "Visa"});
    ASSERT_EQ(imported.code, 0) << imported.err;
    EXPECT_EQ(imported.out, "Imported 2 transactions from 1 file.\n");
    EXPECT_EQ(server.chats().size(), chatsBefore);
}

TEST_F(AICommandsTest, LookupsAndFactsNeedNoModel) {
    importUnfiled();
    const auto recurring = run({"lookup", "recurringCharges", "person=everyone"});
    EXPECT_EQ(recurring.code, 0) << recurring.err;
    EXPECT_EQ(recurring.out, "No active recurring charges found.\n");

    const auto summary =
        json({"lookup", "spendingSummary", "start=2026-03", "end=2026-03", "person=everyone"});
    EXPECT_EQ(summary.at("tool"), "spendingSummary");
    EXPECT_EQ(summary.at("arguments"),
              (json::object{{"start", "2026-03"}, {"end", "2026-03"}, {"person", "everyone"}}));
    const std::string text(summary.at("result").as_string());
    EXPECT_EQ(text.rfind("Period: Mar 1, 2026 to Mar 31, 2026 (Whole household)\n", 0), 0u) << text;
    EXPECT_NE(text.find("Not included yet: 3 transactions need review ($29.74 out, $0.00 in)."),
              std::string::npos)
        << text;

    const auto found = run({"lookup", "findTransactions", "start=2026-03-01", "end=2026-03-31",
                            "text=zephyr", "minimumDollars=5", "category=", "person="});
    EXPECT_EQ(found.code, 0) << found.err;
    EXPECT_NE(found.out.find("1 matching transactions, net \u2212$5.25. Largest first:"),
              std::string::npos)
        << found.out;

    const auto badDates = run({"lookup", "spendingSummary", "start=March", "end=2026-03"});
    EXPECT_EQ(badDates.code, 1);
    EXPECT_EQ(badDates.out.rfind("Error: dates must look like", 0), 0u);
    EXPECT_EQ(run({"lookup", "netWorth"}).code, 2);
    const auto wrongName = run({"lookup", "merchantSpending", "shop=Amazon"});
    EXPECT_EQ(wrongName.code, 2);
    EXPECT_EQ(wrongName.err,
              "\u201Cshop=Amazon\u201D isn't an argument of merchantSpending. Give NAME=VALUE "
              "with the names merchant, start, end, person.\n");

    const auto facts = run({"facts", "--from", "2026-03-01", "--to", "2026-03-31"});
    ASSERT_EQ(facts.code, 0) << facts.err;
    EXPECT_EQ(facts.out.rfind("F1: Spending in March 2026 was $0.00", 0), 0u) << facts.out;
    EXPECT_NE(facts.out.find("\nF4: 3 transactions still need review and are not included in "
                             "these totals.\n"),
              std::string::npos)
        << facts.out;
    const auto factsJSON = json({"facts", "--from", "2026-03-01", "--to", "2026-03-31"});
    const auto& last = factsJSON.as_array().back().as_object();
    EXPECT_EQ(last.at("id"), "F4");
    EXPECT_EQ(last.at("transactionIDs").as_array().size(), 3u);
    EXPECT_TRUE(server.chats().empty());
}

TEST_F(AICommandsTest, ExplainSaysWhatTheChargeMostLikelyIs) {
    importUnfiled();
    const auto lines = json({"transactions", "--search", "ZEPHYR"}).as_array();
    ASSERT_EQ(lines.size(), 2u);
    const std::string id(lines[0].at("id").as_string());
    const auto unavailable = run({"explain", id});
    EXPECT_EQ(unavailable.code, 1);
    EXPECT_EQ(unavailable.err, std::string(OnDeviceModelText::kNoAddress) + "\n");

    setUpModel();
    EXPECT_EQ(json({"explain", id}),
              json::parse(R"({"text":"A coffee roaster, paid through Square.","isConfident":true,)"
                          R"("isGrounded":true,"failed":false})"));
    EXPECT_EQ(run({"explain", id}).out, "A coffee roaster, paid through Square.\n");
    EXPECT_EQ(run({"explain", Uuid::random().text()}).code, 1);
    EXPECT_EQ(run({"explain", "not-an-id"}).code, 2);
}

constexpr std::string_view kOddFile =
    "Booked;Text;Sum;Left\n"
    "2026-03-01;COFFEE SHOP;-4.50;100.00\n"
    "2026-03-02;GROCER;-30.10;69.90\n"
    "2026-03-03;PAYROLL;1000.00;1069.90\n"
    "2026-03-04;BOOKS;-12.00;1057.90\n"
    "2026-03-05;GAS;-40.00;1017.90\n";

TEST_F(AICommandsTest, LocalAIReadsTheColumnsOfAFileNoLayoutFits) {
    importUnfiled();
    const auto odd = folder / "odd.csv";
    testing::writeFile(odd, std::string(kOddFile));
    const auto without = run({"analyze", "--ai-layout", odd.string()});
    EXPECT_NE(without.out.find("  " + std::string(OnDeviceModelText::kNoAddress) + "\n"),
              std::string::npos)
        << without.out;

    setUpModel();
    const auto analysed = json({"analyze", "--ai-layout", odd.string()});
    EXPECT_EQ(analysed.at(0).at("aiLayout"),
              "Local AI set up this layout and Copperwick read 5 rows with it.");
    EXPECT_EQ(analysed.at(0).at("profile").at("name"), "Odd Bank");
    EXPECT_EQ(analysed.at(0).at("rows").as_array().size(), 5u);

    const auto imported = run({"import", "--ai-layout", odd.string(), "--account", "Visa"});
    ASSERT_EQ(imported.code, 0) << imported.err;
    EXPECT_EQ(imported.out.rfind("odd.csv: Local AI set up this layout and Copperwick read 5 "
                                 "rows with it.\nImported 5 transactions from 1 file.\n",
                                 0),
              0u)
        << imported.out;

    // Taught with the import: the bank's next file is recognised without asking.
    const auto chats = server.chats().size();
    testing::writeFile(folder / "odd-april.csv",
                       "Booked;Text;Sum;Left\n2026-04-01;TEA HOUSE;-3.00;97.00\n");
    const auto next = json({"analyze", (folder / "odd-april.csv").string()});
    EXPECT_EQ(next.at(0).at("profile").at("name"), "Odd Bank");
    EXPECT_EQ(server.chats().size(), chats);
}

}  // namespace
}  // namespace copperwick::cli
