#pragma once

// The command line's words for a record a person named that isn't there; the
// finding itself is core's (core/model/ledger_lookup.h).

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/commands.h"
#include "core/model/ledger.h"
#include "core/model/ledger_lookup.h"
#include "core/model/text.h"

namespace copperwick::cli {

// The named account, or null after saying there is none (exit 1).
inline const Account* accountOrComplain(CommandContext& context, const Ledger& ledger,
                                        std::string_view nameOrID) {
    const Account* account = findAccount(ledger, nameOrID);
    if (!account) {
        context.err << "There's no account called \u201C" << nameOrID << "\u201D.\n";
        context.exitCode = kExitFailure;
    }
    return account;
}

// The named category, or null after saying there is none (exit 1).
inline const LedgerCategory* categoryOrComplain(CommandContext& context, const Ledger& ledger,
                                                std::string_view nameOrID) {
    const LedgerCategory* category = findCategory(ledger, nameOrID);
    if (!category) {
        context.err << "There's no category called \u201C" << nameOrID << "\u201D.\n";
        context.exitCode = kExitFailure;
    }
    return category;
}

// The ids a person listed, or absent after saying which one isn't an id.
inline std::optional<std::vector<Uuid>> readTransactionIDs(CommandContext& context,
                                                           const std::vector<std::string>& texts) {
    std::vector<Uuid> ids;
    for (const auto& text : texts) {
        const auto id = Uuid::parse(text::trimmed(text));
        if (!id) {
            context.err << "\u201C" << text << "\u201D isn't a transaction id.\n";
            context.exitCode = kExitUsage;
            return std::nullopt;
        }
        ids.push_back(*id);
    }
    return ids;
}

}  // namespace copperwick::cli
