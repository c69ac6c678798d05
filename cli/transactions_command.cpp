// `copperwick transactions [--account NAME|ID] [--from DATE] [--to DATE]
// [--review|--ai-filed] [--search TEXT] [--limit N]`: the ledger's lines, newest first,
// as the Transactions screen lists them.

#include <charconv>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/model/money.h"
#include "core/model/record_json.h"
#include "core/reports/transaction_query.h"

namespace copperwick::cli {

namespace {

struct TransactionsOptions {
    std::string account;
    std::string from;
    std::string to;
    bool review = false;
    bool aiFiled = false;
    std::string search;
    int64_t limit = 0;  // none
};

std::string nameOrEmpty(const auto* record) {
    return record ? record->name : std::string();
}

void runTransactions(CommandContext& context, const TransactionsOptions& options) {
    TransactionQuery query{.search = options.search, .searchesCategories = true};
    if (options.review)
        query.filter.kind = TransactionFilter::Kind::needsReview;
    if (options.aiFiled)
        query.filter.kind = TransactionFilter::Kind::aiFiled;
    for (const auto& [text, date] :
         {std::pair{&options.from, &query.from}, std::pair{&options.to, &query.to}}) {
        if (text->empty())
            continue;
        *date = LocalDate::fromISO(*text);
        if (!*date) {
            context.err << "Copperwick couldn't read the date \u201C" << *text
                        << "\u201D. Write it as YYYY-MM-DD.\n";
            context.exitCode = kExitUsage;
            return;
        }
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    if (!options.account.empty()) {
        const Account* account = accountOrComplain(context, ledger, options.account);
        if (!account)
            return;
        query.accountID = account->id;
    }

    std::vector<const LedgerTransaction*> lines = query.select(ledger);
    sortTransactions(lines, ledger, {});
    if (options.limit > 0 && lines.size() > static_cast<std::size_t>(options.limit))
        lines.resize(static_cast<std::size_t>(options.limit));

    if (context.json) {
        boost::json::array array;
        for (const LedgerTransaction* transaction : lines) {
            auto object = record_json::toJSON(*transaction).as_object();
            object["accountName"] = nameOrEmpty(ledger.account(transaction->accountID));
            object["categoryName"] = nameOrEmpty(ledger.category(transaction->categoryID));
            object["merchantName"] = nameOrEmpty(ledger.merchant(transaction->merchantID));
            array.push_back(std::move(object));
        }
        printJSON(context, array);
        return;
    }
    if (lines.empty()) {
        context.out << "No transactions.\n";
        return;
    }
    for (const LedgerTransaction* transaction : lines) {
        context.out << fmt::format(
            "{}  {}  {}  {}  {}  {}  {}  {}  {}\n", transaction->date.iso(),
            nameOrEmpty(ledger.account(transaction->accountID)), transaction->rawDescription,
            Money::format(transaction->amount, transaction->currency), label(transaction->kind),
            nameOrEmpty(ledger.category(transaction->categoryID)),
            nameOrEmpty(ledger.merchant(transaction->merchantID)), rawValue(transaction->review),
            transaction->id.text());
    }
}

}  // namespace

void addTransactionsCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand("transactions", "List transactions, newest first");
    auto options = std::make_shared<TransactionsOptions>();
    command->add_option("--account", options->account, "Only this account (name or id)");
    command->add_option("--from", options->from, "From this day (YYYY-MM-DD)");
    command->add_option("--to", options->to, "Through this day (YYYY-MM-DD)");
    auto* review =
        command->add_flag("--review", options->review, "Only lines waiting for a decision");
    command
        ->add_flag("--ai-filed", options->aiFiled,
                   "Only lines Local AI filed that nobody has checked yet")
        ->excludes(review);
    command->add_option("--search", options->search,
                        "Only lines whose text, merchant, category or note holds this");
    command->add_option("--limit", options->limit, "At most this many lines")
        ->type_name("N")
        ->check(CLI::Validator(
            [](const std::string& text) {
                int64_t limit = 0;
                const auto [end, error] =
                    std::from_chars(text.data(), text.data() + text.size(), limit);
                if (error == std::errc() && end == text.data() + text.size() && limit > 0)
                    return std::string();
                return "the number of lines is a whole number from 1 up, not \u201C" + text +
                       "\u201D";
            },
            ""));
    command->callback([&context, options] { runTransactions(context, *options); });
}

}  // namespace copperwick::cli
