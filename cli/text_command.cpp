// `copperwick text DESCRIPTION...`: how the matching reads a bank description.
// Needs no data folder; handy when a rule or a merchant doesn't match as hoped.

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/runtime_session.h"
#include "core/matching/merchant_text.h"

namespace copperwick::cli {

namespace {

// Stands for a view the description doesn't have, such as `via` without a
// payment service.
constexpr const char* kAbsent = "\u2014";

boost::json::object textJSON(const MerchantText& text) {
    boost::json::object object{{"normalized", text.normalized},
                               {"core", text.core},
                               {"key", text.key},
                               {"displayName", text.displayName()}};
    if (text.via)
        object["via"] = *text.via;
    if (text.counterpart)
        object["counterpart"] = *text.counterpart;
    return object;
}

void printText(std::ostream& out, const MerchantText& text) {
    const auto optional = [](const std::optional<std::string>& value) {
        return value ? *value : std::string(kAbsent);
    };
    out << "normalized: " << text.normalized << '\n'
        << "core: " << text.core << '\n'
        << "via: " << optional(text.via) << '\n'
        << "counterpart: " << optional(text.counterpart) << '\n'
        << "key: " << text.key << '\n'
        << "displayName: " << text.displayName() << '\n';
}

void runText(CommandContext& context, const std::vector<std::string>& descriptions) {
    if (context.json) {
        boost::json::array texts;
        for (const auto& description : descriptions)
            texts.push_back(textJSON(MerchantText(description)));
        printJSON(context, texts);
        return;
    }
    bool first = true;
    for (const auto& description : descriptions) {
        if (!first)
            context.out << '\n';
        first = false;
        printText(context.out, MerchantText(description));
    }
}

}  // namespace

void addTextCommand(CLI::App& app, CommandContext& context) {
    auto* text = app.add_subcommand(
        "text", "Show how bank descriptions are read: wrappers, payment service, merchant key");
    // Owned by the command so that it outlives parsing; a command line is
    // parsed once.
    auto descriptions = std::make_shared<std::vector<std::string>>();
    text->add_option("DESCRIPTION", *descriptions,
                     "A bank description; quote it to keep its words together")
        ->required();
    text->callback([&context, descriptions] { runText(context, *descriptions); });
}

}  // namespace copperwick::cli
