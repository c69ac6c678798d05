// `copperwick info`: what the data folder holds.

#include <ostream>

#include <boost/json/object.hpp>

#include "cli/backup_json.h"
#include "cli/commands.h"
#include "cli/runtime_session.h"
#include "core/model/enum_text.h"

namespace copperwick::cli {

namespace {

std::size_t countOf(const Ledger& ledger, RecordKind kind) {
    switch (kind) {
        case RecordKind::person:
            return ledger.people.size();
        case RecordKind::account:
            return ledger.accounts.size();
        case RecordKind::category:
            return ledger.categories.size();
        case RecordKind::merchant:
            return ledger.merchants.size();
        case RecordKind::rule:
            return ledger.rules.size();
        case RecordKind::transaction:
            return ledger.transactions.size();
        case RecordKind::batch:
            return ledger.batches.size();
        case RecordKind::budget:
            return ledger.budgets.size();
        case RecordKind::change:
            return ledger.changes.size();
        case RecordKind::profile:
            return ledger.profiles.size();
        case RecordKind::aiFiling:
            return ledger.aiFilings.size();
        case RecordKind::settings:
            return 1;
    }
    return 0;
}

void runInfo(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    reportNotes(*runtime, context);

    const Ledger& ledger = runtime->ledger();
    const int unreadable = runtime->unreadableRecords();
    const auto backups = runtime->backups().list();

    if (context.json) {
        boost::json::object counts;
        for (const auto kind : allCases<RecordKind>()) {
            counts[rawValue(kind)] = static_cast<int64_t>(countOf(ledger, kind));
        }
        boost::json::object info{{"dataFolder", runtime->dataFolder().string()},
                                 {"dataFile", runtime->dataFile().string()},
                                 {"formatVersion", LedgerStore::kFormatVersion},
                                 {"revision", runtime->revision()},
                                 {"counts", counts},
                                 {"unreadableRecords", unreadable},
                                 {"backupCount", static_cast<int64_t>(backups.size())}};
        if (!backups.empty())
            info["newestBackup"] = backupJSON(backups.front());
        printJSON(context, info);
        return;
    }

    auto& out = context.out;
    out << "Data folder: " << runtime->dataFolder().string() << '\n'
        << "Data file: " << runtime->dataFile().string() << '\n'
        << "File format: " << LedgerStore::kFormatVersion << '\n'
        << "Revision: " << runtime->revision() << '\n'
        << "Records:\n";
    for (const auto kind : allCases<RecordKind>())
        out << "  " << rawValue(kind) << ": " << countOf(ledger, kind) << '\n';
    out << "Unreadable records: " << unreadable << '\n'
        << "Backups: " << backups.size() << '\n'
        << "Newest backup: "
        << (backups.empty() ? std::string("none") : backupLine(backups.front())) << '\n';
}

}  // namespace

void addInfoCommand(CLI::App& app, CommandContext& context) {
    auto* info =
        app.add_subcommand("info", "Show the data folder, its file format and what it holds");
    info->callback([&context] { runInfo(context); });
}

}  // namespace copperwick::cli
