#include "runtime/on_device_model.h"

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "core/intelligence/ask_tools.h"
#include "tests/support/fake_model_server.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/model_test_support.h"

namespace copperwick {
namespace {

namespace json = boost::json;
using testing::FakeModelServer;
using testing::quickLimits;
using testing::ScopedVariable;
using namespace std::chrono_literals;

OnDeviceModel modelAt(const FakeModelServer& server, ModelLimits limits = quickLimits()) {
    return OnDeviceModel(server.endpoint(), "test-model", limits);
}

const json::object& schemaOf(const json::object& request) {
    return request.at("response_format").at("json_schema").at("schema").as_object();
}

std::string guideOf(const json::object& schema, const char* field) {
    return std::string(schema.at("properties").at(field).at("description").as_string());
}

template <typename Call>
std::string errorOf(Call call) {
    try {
        call();
    } catch (const ModelTimeout&) {
        return "timed out";
    } catch (const ModelError& error) {
        return error.what();
    }
    return "no error";
}

TEST(OnDeviceModel, AsksForEachStructuredAnswerWithItsInstructionsAndGuides) {
    FakeModelServer server;
    server.onChat([](const json::object&) {
        return FakeModelServer::structured({{"merchant", "Joe's Diner"},
                                            {"category", "Dining"},
                                            {"kind", "expense"},
                                            {"reason", std::string(200, 'r')}});
    });
    const auto guess = modelAt(server).guessMerchant("Identify this transaction.\nBank text: X");
    EXPECT_EQ(guess.merchant, "Joe's Diner");
    EXPECT_EQ(guess.kind, "expense");
    EXPECT_EQ(guess.reason, std::string(160, 'r'));

    ASSERT_EQ(server.chats().size(), 1u);
    const auto request = server.chats()[0];
    EXPECT_EQ(request.at("model"), "test-model");
    EXPECT_EQ(FakeModelServer::said(request, "system"), OnDeviceModelText::kGuessMerchant);
    EXPECT_EQ(FakeModelServer::said(request, "user"), "Identify this transaction.\nBank text: X");
    EXPECT_EQ(request.at("response_format").at("type"), "json_schema");
    const auto& schema = schemaOf(request);
    EXPECT_EQ(guideOf(schema, "merchant"),
              "The merchant's common name, like Starbucks or Joe's Diner, or unknown if you "
              "can't tell");
    EXPECT_EQ(guideOf(schema, "category"), "Exactly one category name from the allowed list");
    EXPECT_EQ(guideOf(schema, "kind"),
              "expense, income, transfer, or unknown if you can't tell what this is");
    EXPECT_EQ(guideOf(schema, "reason"), "One short sentence explaining the choice");
    EXPECT_EQ(schema.at("required").as_array().size(), 4u);
    // No instructions mention the Mac.
    EXPECT_EQ(FakeModelServer::said(request, "system").find("Mac"), std::string::npos);
}

TEST(OnDeviceModel, TakesTheFirstListedModelWhenNoneIsNamed) {
    FakeModelServer server;
    server.onModels([](const json::object&) {
        return FakeModelServer::Reply{.body = R"({"data":[{"id":"llama-3.2-3b"},{"id":"qwen"}]})"};
    });
    server.onChat([](const json::object&) {
        return FakeModelServer::structured({{"name", "Joe's Coffee"}});
    });
    OnDeviceModel model(server.endpoint(), "", quickLimits());
    EXPECT_EQ(model.tidyName("Current name: SQ *JOES COFFEE"), "Joe's Coffee");
    EXPECT_EQ(server.chats().at(0).at("model"), "llama-3.2-3b");
    EXPECT_EQ(guideOf(schemaOf(server.chats()[0]), "name"),
              "The merchant's everyday name with normal capitals and punctuation, like Joe's "
              "Coffee or BJ's Restaurant");
}

TEST(OnDeviceModel, CutsLongTextsAndReadsConfidenceFromHigh) {
    FakeModelServer server;
    std::string confidence;
    server.onChat([&confidence](const json::object&) {
        return FakeModelServer::structured(
            {{"explanation", std::string(700, 'e')}, {"confidence", confidence}});
    });
    for (const auto& [said, confident] :
         {std::pair{"High", true}, {"very high", true}, {"medium", false}, {"low", false}}) {
        confidence = said;
        const auto explanation = modelAt(server).explain("Explain this charge.\nBank text: X");
        EXPECT_EQ(explanation.text.size(), 600u);
        EXPECT_EQ(explanation.isConfident, confident) << said;
    }
    const auto chats = server.chats();
    const auto& schema = schemaOf(chats.at(0));
    EXPECT_EQ(guideOf(schema, "explanation"),
              "Two or three plain sentences: what this charge most likely is, and what to check "
              "if it looks unfamiliar");
    EXPECT_EQ(guideOf(schema, "confidence"),
              "high if you recognize the merchant, low if you are guessing");
}

TEST(OnDeviceModel, ReadsALayoutWithItsAccountTypeAndWholeColumnNumbers) {
    FakeModelServer server;
    json::object draft{{"headerRow", 1},
                       {"dateColumn", 1},
                       {"descriptionColumn", 2.0},
                       {"amountColumn", 3},
                       {"moneyOutColumn", 0},
                       {"moneyInColumn", 0},
                       {"postedDateColumn", 0},
                       {"statusColumn", 0},
                       {"purchasesArePositive", false},
                       {"bankName", std::string(50, 'B')},
                       {"accountType", "Brokerage"}};
    server.onChat([&draft](const json::object&) { return FakeModelServer::structured(draft); });
    auto guess = modelAt(server).proposeLayout("First rows of the file:\nRow 1: [1] Date");
    EXPECT_EQ(guess.descriptionColumn, 2);
    EXPECT_EQ(guess.amountColumn, 3);
    EXPECT_EQ(guess.bankName, std::string(40, 'B'));
    EXPECT_EQ(guess.accountType, std::nullopt);
    EXPECT_EQ(guideOf(schemaOf(server.chats()[0]), "headerRow"),
              "The row number that holds the column names, or 0 if the file has no row of "
              "column names");
    EXPECT_EQ(schemaOf(server.chats()[0]).at("properties").at("purchasesArePositive").at("type"),
              "boolean");

    draft["accountType"] = "Credit Card";
    EXPECT_EQ(modelAt(server).proposeLayout("rows").accountType, AccountType::creditCard);
    // Half a column is no column.
    draft["amountColumn"] = 2.5;
    EXPECT_EQ(errorOf([&] { (void)modelAt(server).proposeLayout("rows"); }),
              "the local model's answer gave \u201c"
              "amountColumn\u201d in the wrong form");
}

TEST(OnDeviceModel, ReadsNarrativeBulletsInOrder) {
    FakeModelServer server;
    server.onChat([](const json::object&) {
        return FakeModelServer::structured(
            {{"bullets",
              json::array{
                  json::object{{"text", "Spending was $10.00."}, {"factIDs", json::array{"F1"}}},
                  json::object{{"text", "Dining led."}, {"factIDs", json::array{"f4", "F5"}}}}}});
    });
    const auto bullets = modelAt(server).writeNarrative("Facts:\nF1: …");
    ASSERT_EQ(bullets.size(), 2u);
    EXPECT_EQ(bullets[1].text, "Dining led.");
    EXPECT_EQ(bullets[1].factIDs, (std::vector<std::string>{"f4", "F5"}));
    const auto chats = server.chats();
    const auto& schema = schemaOf(chats[0]);
    EXPECT_EQ(guideOf(schema, "bullets"), "Three to five short bullet points");
    const auto& bullet = schema.at("properties").at("bullets").at("items").as_object();
    EXPECT_EQ(guideOf(bullet, "text"),
              "One sentence that uses only the given facts and copies amounts exactly");
    EXPECT_EQ(guideOf(bullet, "factIDs"), "The ids of the facts this sentence uses, such as F1");
}

TEST(OnDeviceModel, AnAnswerThatCantBeUsedIsAnErrorOfTheCallNeverACrash) {
    FakeModelServer server;
    FakeModelServer::Reply reply;
    server.onChat([&reply](const json::object&) { return reply; });
    const auto guessError = [&](FakeModelServer::Reply given) {
        reply = std::move(given);
        return errorOf([&] { (void)modelAt(server).guessMerchant("Identify this transaction."); });
    };
    const json::object fine{
        {"merchant", "A"}, {"category", "Dining"}, {"kind", "expense"}, {"reason", "r"}};
    const auto without = [&](const char* field) {
        auto content = fine;
        content.erase(field);
        return FakeModelServer::structured(content);
    };
    auto wrongKind = fine;
    wrongKind["kind"] = 5;

    EXPECT_EQ(guessError({.body = "<html>Bad gateway</html>"}),
              "the local model's answer couldn't be read");
    EXPECT_EQ(guessError({.body = R"({"choices":[]})"}),
              "the local model's answer couldn't be read");
    EXPECT_EQ(guessError({.body = R"({"choices":[{"message":"hello"}]})"}),
              "the local model's answer couldn't be read");
    EXPECT_EQ(guessError(FakeModelServer::text("Sure! It's a diner.")),
              "the local model's answer wasn't in the expected form");
    EXPECT_EQ(guessError(FakeModelServer::text("[1, 2, 3]")),
              "the local model's answer wasn't in the expected form");
    EXPECT_EQ(guessError(without("kind")), "the local model's answer had no \u201ckind\u201d");
    EXPECT_EQ(guessError(FakeModelServer::structured(wrongKind)),
              "the local model's answer gave \u201ckind\u201d in the wrong form");
    EXPECT_EQ(
        guessError({.status = 500, .body = R"({"error":{"message":"model overloaded\u001b[2J"}})"}),
        "the local model said: model overloaded [2J");
    EXPECT_EQ(guessError({.status = 404, .body = "Not Found"}),
              "the local model answered with status 404");
    EXPECT_EQ(guessError(FakeModelServer::completion(
                  {{"content", nullptr}, {"refusal", "I can't help with that."}})),
              "the local model declined: I can't help with that.");
    // A reply far longer than any answer is cut off, not read into memory.
    EXPECT_EQ(guessError({.body = std::string(3 << 20, ' ')}),
              "the local model's answer was too long");
    // Some models fence their JSON; that much is forgiven.
    reply = FakeModelServer::text("```json\n" + json::serialize(fine) + "\n```");
    EXPECT_EQ(modelAt(server).guessMerchant("Identify this transaction.").merchant, "A");

    // The narrative's array is checked item by item.
    reply = FakeModelServer::structured(
        {{"bullets", json::array{json::object{{"text", "x"}, {"factIDs", json::array{1}}}}}});
    EXPECT_EQ(errorOf([&] { (void)modelAt(server).writeNarrative("Facts:"); }),
              "the local model's answer gave \u201c"
              "factIDs\u201d in the wrong form");
    reply = FakeModelServer::structured({{"bullets", "three"}});
    EXPECT_EQ(errorOf([&] { (void)modelAt(server).writeNarrative("Facts:"); }),
              "the local model's answer gave \u201c"
              "bullets\u201d in the wrong form");
}

TEST(OnDeviceModel, ANeverAnsweringModelTimesOutAtItsLimitAndALateAnswerIsDropped) {
    FakeModelServer server;
    auto limits = quickLimits();
    limits.guessMerchant = 300ms;
    server.onChat([](const json::object&) { return FakeModelServer::Reply{.hang = true}; });
    auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(errorOf([&] { (void)modelAt(server, limits).guessMerchant("x"); }), "timed out");
    EXPECT_LT(std::chrono::steady_clock::now() - started, 3s);

    // An answer that comes after the limit is never read.
    server.onChat([](const json::object&) {
        auto late = FakeModelServer::structured(
            {{"merchant", "Late"}, {"category", "Dining"}, {"kind", "expense"}, {"reason", ""}});
        late.delay = 900ms;
        return late;
    });
    started = std::chrono::steady_clock::now();
    EXPECT_EQ(errorOf([&] { (void)modelAt(server, limits).guessMerchant("x"); }), "timed out");
    EXPECT_LT(std::chrono::steady_clock::now() - started, 800ms);
}

TEST(OnDeviceModel, AnErrorReachesTheCallerWellBeforeTheLimit) {
    FakeModelServer server;
    server.onChat([](const json::object&) {
        return FakeModelServer::Reply{.status = 503, .body = R"({"error":"loading model"})"};
    });
    auto limits = quickLimits();
    limits.explain = 20s;
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(errorOf([&] { (void)modelAt(server, limits).explain("x"); }),
              "the local model said: loading model");
    EXPECT_LT(std::chrono::steady_clock::now() - started, 2s);
}

TEST(OnDeviceModel, AStoppedCallEndsAtOnceEvenWhileTheModelThinks) {
    FakeModelServer server;
    server.onChat([](const json::object&) { return FakeModelServer::Reply{.hang = true}; });
    auto limits = quickLimits();
    limits.tidyName = 20s;
    const auto stopAt = std::chrono::steady_clock::now() + 200ms;
    const auto model = modelAt(server, limits).withCancellation([stopAt] {
        return std::chrono::steady_clock::now() > stopAt;
    });
    EXPECT_EQ(errorOf([&] { (void)model.tidyName("x"); }), "it was stopped");
    EXPECT_LT(std::chrono::steady_clock::now() - stopAt, 2s);
}

class AnswerTest : public ::testing::Test {
  protected:
    AnswerTest() {
        testing::LedgerBuilder builder;
        const auto card = builder.account("Card", AccountType::creditCard);
        for (int month = 1; month <= 4; ++month) {
            const auto id =
                builder.transaction(card, "NETFLIX.COM", -1549, testing::day(2026, month, 3));
            builder.change(id, [&](LedgerTransaction& transaction) {
                transaction.kind = TransactionKind::expense;
                transaction.categoryID = builder.category("Entertainment");
                transaction.review = ReviewState::confirmed;
            });
        }
        ledger = builder.ledger();
    }
    std::vector<AskTool> tools() { return AskTools::all(ledger, testing::day(2026, 4, 20), log); }

    Ledger ledger;
    std::shared_ptr<ToolCallLog> log = std::make_shared<ToolCallLog>();
    FakeModelServer server;
};

TEST_F(AnswerTest, RunsEachLookupTheModelAsksForAndSendsItsTextBack) {
    server.onChat([](const json::object& request) {
        const auto& messages = request.at("messages").as_array();
        const auto& last = messages.back().as_object();
        if (last.at("role") == "user")
            return FakeModelServer::toolCall("recurringCharges", {{"person", "everyone"}});
        // The lookup's own text, copied: the model has nothing else.
        const std::string result(last.at("content").as_string());
        return FakeModelServer::text("From your lookups: " + result.substr(result.find('\n') + 1));
    });
    const std::string text =
        modelAt(server).answer("What subscriptions do I have?", "Answer well.", tools());
    EXPECT_NE(text.find("Netflix"), std::string::npos) << text;
    EXPECT_NE(text.find("$15.49"), std::string::npos) << text;

    const auto entries = log->entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].tool, "Recurring");
    EXPECT_EQ(entries[0].arguments, "everyone");

    const auto chats = server.chats();
    ASSERT_EQ(chats.size(), 2u);
    // The six lookups, each argument described by its guide.
    const auto& definitions = chats[0].at("tools").as_array();
    ASSERT_EQ(definitions.size(), 6u);
    EXPECT_EQ(definitions[0].at("function").at("name"), "spendingSummary");
    EXPECT_EQ(definitions[4].at("function").at("parameters").at("properties").at("minimumDollars"),
              (json::object{{"type", "integer"},
                            {"description", "Smallest amount in whole dollars, or 0"}}));
    EXPECT_EQ(definitions[5].at("function").at("description"),
              "Lists active recurring charges such as subscriptions, with their usual amounts.");
    // The second request carries the call and its answer, tied by the call's id.
    const auto& messages = chats[1].at("messages").as_array();
    ASSERT_EQ(messages.size(), 4u);
    EXPECT_EQ(messages[2].at("tool_calls").at(0).at("id"), "call-1");
    EXPECT_EQ(messages[3].at("role"), "tool");
    EXPECT_EQ(messages[3].at("tool_call_id"), "call-1");
    EXPECT_EQ(messages[3].at("content").as_string(), entries[0].result);
}

TEST_F(AnswerTest, AnUnknownLookupIsToldToTheModelAndAnEndlessOneIsStopped) {
    server.onChat([](const json::object& request) {
        const auto& last = request.at("messages").as_array().back().as_object();
        if (last.at("role") == "user")
            return FakeModelServer::toolCall("deleteEverything", {{"really", true}});
        return FakeModelServer::text(std::string(last.at("content").as_string()));
    });
    EXPECT_EQ(modelAt(server).answer("q", "i", tools()),
              "Error: there is no lookup named \u201c"
              "deleteEverything\u201d. Use one of: "
              "spendingSummary, categorySpending, merchantSpending, comparePeriods, "
              "findTransactions, recurringCharges.");
    EXPECT_TRUE(log->entries().empty());

    // Arguments that aren't JSON reach the lookup as none, which says what it needs.
    server.onChat([](const json::object& request) {
        const auto& last = request.at("messages").as_array().back().as_object();
        if (last.at("role") == "user") {
            auto call = FakeModelServer::toolCall("spendingSummary", {});
            const std::string broken = "{\"start\": ";
            auto body = json::parse(call.body).as_object();
            body["choices"]
                .at(0)
                .at("message")
                .at("tool_calls")
                .at(0)
                .at("function")
                .at("arguments") = broken;
            call.body = json::serialize(body);
            return call;
        }
        return FakeModelServer::text("done");
    });
    EXPECT_EQ(modelAt(server).answer("q", "i", tools()), "done");
    ASSERT_EQ(log->entries().size(), 1u);
    EXPECT_EQ(log->entries()[0].result.rfind("Error: dates must look like", 0), 0u);

    server.onChat([](const json::object&) {
        return FakeModelServer::toolCall("recurringCharges", {{"person", ""}});
    });
    EXPECT_EQ(errorOf([&] { (void)modelAt(server).answer("q", "i", tools()); }),
              "the local model kept looking things up without answering");
    EXPECT_EQ(server.chats().size(), 4u + 8u);
}

TEST(OnDeviceModel, SaysWhyItIsUnavailableInThePersonsWords) {
    EXPECT_EQ(OnDeviceModel("", "").unavailableReason(), OnDeviceModelText::kNoAddress);
    EXPECT_EQ(OnDeviceModel("   ", "m").unavailableReason(), OnDeviceModelText::kNoAddress);

    std::string silent;
    {
        FakeModelServer gone;
        silent = gone.endpoint();
    }
    EXPECT_EQ(OnDeviceModel(silent, "m", quickLimits()).unavailableReason(),
              "The local model at " + silent + " isn't answering.");
    EXPECT_EQ(errorOf([&] { (void)OnDeviceModel(silent, "m", quickLimits()).tidyName("x"); }),
              "the local model at " + silent + " isn't answering");

    FakeModelServer server;
    EXPECT_EQ(modelAt(server).unavailableReason(), std::nullopt);
    server.onModels([](const json::object&) { return FakeModelServer::Reply{.status = 500}; });
    EXPECT_EQ(modelAt(server).unavailableReason(), OnDeviceModelText::kNotAvailable);
    // With no model named, a server without models can't be used.
    server.onModels(
        [](const json::object&) { return FakeModelServer::Reply{.body = R"({"data":[]})"}; });
    EXPECT_EQ(OnDeviceModel(server.endpoint(), "", quickLimits()).unavailableReason(),
              OnDeviceModelText::kNotAvailable);
    EXPECT_EQ(modelAt(server).unavailableReason(), std::nullopt);

    server.onModels([](const json::object&) { return FakeModelServer::Reply{.hang = true}; });
    auto limits = quickLimits();
    limits.availability = 200ms;
    EXPECT_EQ(modelAt(server, limits).unavailableReason(),
              "The local model at " + server.endpoint() + " isn't answering.");
}

TEST(OnDeviceModel, NeverConnectsAnywhereButThisComputer) {
    // Addresses off the machine are refused before any connection: with
    // nothing listening there, a tried connection would take its time.
    for (const char* address :
         {"http://10.0.0.1:8080/v1", "http://example.com/v1", "https://127.0.0.1.nip.io/v1"}) {
        const OnDeviceModel model(address, "m", quickLimits());
        const auto started = std::chrono::steady_clock::now();
        EXPECT_EQ(model.unavailableReason(), OnDeviceModelText::kNotAvailable) << address;
        EXPECT_EQ(errorOf([&] { (void)model.guessMerchant("x"); }),
                  "the local model's address isn't on this computer")
            << address;
        EXPECT_LT(std::chrono::steady_clock::now() - started, 200ms) << address;
    }

    FakeModelServer server;
    FakeModelServer elsewhere;
    server.onChat([&elsewhere](const json::object&) {
        return FakeModelServer::Reply{.status = 307,
                                      .location = elsewhere.endpoint() + "/chat/completions"};
    });
    EXPECT_EQ(errorOf([&] { (void)modelAt(server).guessMerchant("x"); }),
              "the local model answered with status 307");
    EXPECT_EQ(elsewhere.requestCount(), 0);

    // The environment's proxies are passed by, whatever they say.
    FakeModelServer proxy;
    const std::string proxyAddress = "http://127.0.0.1:" + std::to_string(proxy.port());
    const ScopedVariable http("http_proxy", proxyAddress);
    const ScopedVariable upper("HTTP_PROXY", proxyAddress);
    const ScopedVariable all("ALL_PROXY", proxyAddress);
    const ScopedVariable none("no_proxy", "");
    server.onChat([](const json::object&) {
        return FakeModelServer::structured({{"name", "Joe's Coffee"}});
    });
    EXPECT_EQ(modelAt(server).tidyName("x"), "Joe's Coffee");
    EXPECT_EQ(modelAt(server).unavailableReason(), std::nullopt);
    EXPECT_EQ(proxy.requestCount(), 0);
}

TEST(OnDeviceModel, LocalhostReachesTheServerOnThisComputer) {
    FakeModelServer server;
    server.onChat([](const json::object&) {
        return FakeModelServer::structured({{"name", "Joe's Coffee"}});
    });
    const OnDeviceModel model("http://localhost:" + std::to_string(server.port()) + "/v1/", "m",
                              quickLimits());
    EXPECT_EQ(model.unavailableReason(), std::nullopt);
    EXPECT_EQ(model.tidyName("x"), "Joe's Coffee");
}

}  // namespace
}  // namespace copperwick
