// `copperwick text DESCRIPTION... [--amount AMOUNT] [--account-type TYPE]`:
// how the matching reads a bank description, and what it would file it as
// against the ledger in the data folder. Handy when a rule or a merchant
// doesn't match as hoped. Without a data file it answers from the built-in
// knowledge alone and creates nothing.

#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/runtime_session.h"
#include "core/matching/matcher.h"
#include "core/matching/merchant_text.h"
#include "core/model/money.h"
#include "runtime/data_folders.h"

namespace copperwick::cli {

namespace {

// Stands for a view the description doesn't have, such as `via` without a
// payment service.
constexpr const char* kAbsent = "\u2014";
constexpr int64_t kDefaultAmount = -1000;

struct TextOptions {
    std::vector<std::string> descriptions;
    std::string amount;
    std::string accountType;
};

// What the match means in names, ready for either output.
struct MatchView {
    std::string kind;
    std::optional<std::string> categoryName;
    std::optional<std::string> merchantName;
    bool merchantIsNew = false;
    std::string method;
    std::string evidence;
    std::string review;
    struct SuggestionView {
        std::optional<std::string> merchantName;
        std::optional<std::string> categoryName;
        std::string kind;
        std::string source;
        std::string reason;
    };
    std::optional<SuggestionView> suggestion;
};

std::optional<std::string> categoryName(const Ledger& ledger, const std::optional<Uuid>& id) {
    const LedgerCategory* category = ledger.category(id);
    return category ? std::optional(category->name) : std::nullopt;
}

MatchView viewOf(const Ledger& ledger, const MatchResult& result) {
    MatchView view{.kind = std::string(rawValue(result.kind)),
                   .categoryName = categoryName(ledger, result.categoryID),
                   .method = std::string(rawValue(result.method)),
                   .evidence = result.evidence,
                   .review = std::string(rawValue(result.review))};
    if (const Merchant* merchant = ledger.merchant(result.merchantID)) {
        view.merchantName = merchant->name;
    } else if (result.newMerchantName) {
        view.merchantName = result.newMerchantName;
        view.merchantIsNew = true;
    }
    if (result.suggestion) {
        view.suggestion = MatchView::SuggestionView{
            .merchantName = result.suggestion->merchantName,
            .categoryName = categoryName(ledger, result.suggestion->categoryID),
            .kind = std::string(rawValue(result.suggestion->kind)),
            .source = std::string(rawValue(result.suggestion->source)),
            .reason = result.suggestion->reason};
    }
    return view;
}

boost::json::value optionalJSON(const std::optional<std::string>& value) {
    return value ? boost::json::value(*value) : boost::json::value(nullptr);
}

boost::json::object textJSON(const MerchantText& text, const MatchView& match) {
    boost::json::object object{{"normalized", text.normalized},
                               {"core", text.core},
                               {"key", text.key},
                               {"displayName", text.displayName()}};
    if (text.via)
        object["via"] = *text.via;
    if (text.counterpart)
        object["counterpart"] = *text.counterpart;
    boost::json::object matchJSON{{"kind", match.kind},
                                  {"categoryName", optionalJSON(match.categoryName)},
                                  {"merchantName", optionalJSON(match.merchantName)},
                                  {"method", match.method},
                                  {"evidence", match.evidence},
                                  {"review", match.review},
                                  {"suggestion", nullptr}};
    if (match.suggestion) {
        matchJSON["suggestion"] =
            boost::json::object{{"merchantName", optionalJSON(match.suggestion->merchantName)},
                                {"categoryName", optionalJSON(match.suggestion->categoryName)},
                                {"kind", match.suggestion->kind},
                                {"source", match.suggestion->source},
                                {"reason", match.suggestion->reason}};
    }
    object["match"] = std::move(matchJSON);
    return object;
}

void printText(std::ostream& out, const MerchantText& text, const MatchView& match) {
    const auto optional = [](const std::optional<std::string>& value) {
        return value ? *value : std::string(kAbsent);
    };
    out << "normalized: " << text.normalized << '\n'
        << "core: " << text.core << '\n'
        << "via: " << optional(text.via) << '\n'
        << "counterpart: " << optional(text.counterpart) << '\n'
        << "key: " << text.key << '\n'
        << "displayName: " << text.displayName() << '\n'
        << "kind: " << match.kind << '\n'
        << "category: " << optional(match.categoryName) << '\n'
        << "merchant: " << optional(match.merchantName) << (match.merchantIsNew ? " (new)" : "")
        << '\n'
        << "method: " << match.method << '\n'
        << "evidence: " << match.evidence << '\n'
        << "review: " << match.review << '\n';
    if (match.suggestion) {
        out << "suggestion: " << optional(match.suggestion->merchantName) << ", "
            << optional(match.suggestion->categoryName) << ", " << match.suggestion->kind << " ("
            << match.suggestion->source << "): " << match.suggestion->reason << '\n';
    } else {
        out << "suggestion: " << kAbsent << '\n';
    }
}

void runText(CommandContext& context, const TextOptions& options) {
    int64_t amount = kDefaultAmount;
    if (!options.amount.empty()) {
        const auto parsed = Money::parseCents(options.amount);
        if (!parsed) {
            context.err << "Copperwick couldn't read the amount \u201C" << options.amount
                        << "\u201D.\n";
            context.exitCode = kExitUsage;
            return;
        }
        amount = *parsed;
    }

    // Only an existing data file is read; asking how a text reads must not
    // create a data folder as a side effect.
    Ledger ledger = Ledger::starter();
    OpenRuntime runtime;
    const auto folder = context.dataDir.value_or(data_folders::standardDataFolder());
    std::error_code error;
    if (context.demo || std::filesystem::exists(data_folders::dataFile(folder), error)) {
        runtime = openRuntime(context);
        if (reportUnavailable(*runtime, context))
            return;
        ledger = runtime->ledger();
    }

    // The transaction stands in an account of the given type, or in one the
    // ledger doesn't know, exactly as an import into a new account would.
    const Uuid accountID = Uuid::random();
    if (!options.accountType.empty()) {
        ledger.accounts.push_back(
            Account(accountID, "Account", *enumFromRaw<AccountType>(options.accountType)));
    }
    const Matcher matcher(ledger);

    boost::json::array texts;
    bool first = true;
    for (const auto& description : options.descriptions) {
        const LedgerTransaction transaction{.id = Uuid::random(),
                                            .accountID = accountID,
                                            .amount = amount,
                                            .rawDescription = description};
        const auto view = viewOf(ledger, matcher.match(transaction));
        const MerchantText text(description);
        if (context.json) {
            texts.push_back(textJSON(text, view));
            continue;
        }
        if (!first)
            context.out << '\n';
        first = false;
        printText(context.out, text, view);
    }
    if (context.json)
        printJSON(context, texts);
}

}  // namespace

void addTextCommand(CLI::App& app, CommandContext& context) {
    auto* text = app.add_subcommand(
        "text", "Show how bank descriptions are read and what they would be filed as");
    // Owned by the command so that it outlives parsing; a command line is
    // parsed once.
    auto options = std::make_shared<TextOptions>();
    text->add_option("DESCRIPTION", options->descriptions,
                     "A bank description; quote it to keep its words together")
        ->required();
    text->add_option("--amount", options->amount,
                     "The amount to match with, as a bank prints it (default -10.00)");
    std::vector<std::string> types;
    for (const auto type : allCases<AccountType>())
        types.emplace_back(rawValue(type));
    text->add_option("--account-type", options->accountType,
                     "The type of account the line comes from")
        ->check(CLI::IsMember(types));
    text->callback([&context, options] { runText(context, *options); });
}

}  // namespace copperwick::cli
