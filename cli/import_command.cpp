// `copperwick import`, `imports` and `undo-import`: bank files into the
// ledger through the same import session the desktop application uses, the
// history of what was imported, and taking one import back out.

#include <algorithm>
#include <charconv>
#include <ctime>
#include <memory>
#include <ostream>
#include <sstream>
#include <variant>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/json_stream.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/import/bank_file.h"
#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/import/import_commit.h"
#include "core/import/import_words.h"
#include "core/import/layout_guesser.h"
#include "core/import/statement_files.h"
#include "core/model/enum_text.h"
#include "core/model/money.h"
#include "core/model/record_json.h"
#include "core/model/text.h"
#include "core/operations/entry_error.h"
#include "core/operations/upsert_account.h"
#include "runtime/import_model.h"
#include "runtime/instant_text.h"
#include "runtime/intelligence_controller.h"

namespace copperwick::cli {

namespace {

struct ImportOptions {
    std::vector<std::string> files;
    std::string account;
    std::string newAccount;
    std::string type;
    std::optional<std::string> last4;
    std::string person;
    bool shared = false;
    bool flipSigns = false;
    std::vector<std::string> force;
    bool skipProblemRows = false;
    std::string layout;
    std::string archive;
    bool dryRun = false;
    bool aiLayout = false;
};

std::string accountText(const Ledger& ledger, const ImportFile& file) {
    using Kind = ImportFile::AccountChoice::Kind;
    switch (file.choice.kind) {
        case Kind::existing: {
            const auto* account = ledger.account(file.choice.accountID);
            return account ? account->name : file.choice.accountID->text();
        }
        case Kind::newAccount: {
            std::string text = "new account \"" + std::string(text::trimmed(file.draft.name)) +
                               "\" (" + std::string(rawValue(file.draft.type));
            if (!file.draft.last4.empty())
                text += ", ending " + file.draft.last4;
            return text + ")";
        }
        case Kind::undecided:
            break;
    }
    return "not chosen";
}

std::string batchLine(const Ledger& ledger, const ImportBatch& batch) {
    const auto* account = ledger.account(batch.accountID);
    std::ostringstream out;
    out << batch.fileName << " into " << (account ? account->name : batch.accountID.text());
    return out.str();
}

// What couldn't be found in a file no layout fits, and what to do about it.
std::vector<std::string> layoutGapLines(const ImportFile& file) {
    std::vector<std::string> lines = file.analysis.layoutGaps;
    if (!lines.empty())
        lines.emplace_back(LayoutGuesser::kChooseColumns);
    return lines;
}

void printPlan(std::ostream& out, const Ledger& ledger, const ImportFile& file) {
    out << file.name() << '\n';
    out << "  "
        << (file.analysis.profile ? "Layout: " + file.analysis.profile->name
                                  : std::string("Layout not recognized"))
        << '\n';
    if (file.analysis.layoutWorkedOut)
        out << "  " << *file.analysis.layoutWorkedOut << '\n';
    out << "  Account: " << accountText(ledger, file) << '\n';
    if (file.suggestionReason)
        out << "  " << *file.suggestionReason << '\n';
    if (const auto blocker = file.blocker())
        out << "  " << *blocker << '\n';
    for (const auto& line : layoutGapLines(file))
        out << "  " << line << '\n';
    if (!file.plan)
        return;
    const auto& plan = *file.plan;
    const auto currency = file.analysis.currencyHint.value_or(ledger.settings->reportCurrency);
    if (plan.previousImport) {
        out << "  " << previousImportLine(abbreviatedDateTime(plan.previousImport->importedAt))
            << '\n';
    }
    out << "  Rows in file: " << plan.rows.size() + plan.issues.size() << '\n'
        << "  New: " << plan.newCount() << '\n'
        << "  Already saved: " << plan.duplicateCount() << '\n'
        << "  Replace pending: " << plan.replacesPendingCount() << '\n'
        << "  Held for you: " << plan.possibleDuplicates().size() << '\n'
        << "  Couldn't read: " << plan.issues.size() << '\n'
        << "  Money in: " << Money::format(plan.totals().moneyIn, currency) << '\n'
        << "  Money out: " << Money::format(plan.totals().moneyOut, currency) << '\n'
        << "  Dates: "
        << (plan.firstDate() ? plan.firstDate()->iso() + " to " + plan.lastDate()->iso()
                             : std::string("none"))
        << '\n';
    if (const auto blank = plan.blankLines + plan.skippedLines; blank > 0)
        out << "  Blank or summary lines: " << blank << '\n';
    for (const auto& planned : plan.rows) {
        const auto& row = planned.row;
        out << "    line " << row.line << "  " << row.date.iso() << "  "
            << Money::format(row.amount, currency) << "  " << row.description() << "  "
            << label(planned.disposition.kind);
        if (planned.disposition.kind == RowDisposition::Kind::possibleDuplicate &&
            file.forcedLines.contains(row.line))
            out << " (importing anyway)";
        const bool showsMatch =
            planned.disposition.kind == RowDisposition::Kind::possibleDuplicate ||
            planned.disposition.kind == RowDisposition::Kind::replacesPending;
        if (showsMatch) {
            if (const auto* match = ledger.transaction(planned.disposition.match)) {
                out << ", matches " << match->date.iso() << "  "
                    << Money::format(match->amount, currency) << "  " << match->rawDescription;
            }
        }
        out << '\n';
    }
    if (!plan.possibleDuplicates().empty()) {
        out << "  Possible duplicates held back (" << plan.possibleDuplicates().size()
            << "): they look like transactions you already have, but aren't exact matches. "
               "They're not imported unless you name their lines with --force.\n";
    }
    if (!plan.issues.empty()) {
        out << "  Rows Copperwick couldn't read (" << plan.issues.size() << ")\n";
        for (const auto& issue : plan.issues) {
            out << "    Line " << issue.line << ": " << issue.reason << '\n';
            if (!issue.rawText.empty())
                out << "      " << issue.rawText << '\n';
        }
        if (!file.skipProblemRows) {
            out << "  Some rows couldn't be read. Fix the file, or choose to skip those rows "
                   "(--skip-problem-rows).\n";
        }
    }
}

// Absent values are null: every key of a file's plan is always there.
template <typename T, typename F>
boost::json::value orNull(const std::optional<T>& value, F&& convert) {
    return value ? boost::json::value(convert(*value)) : boost::json::value(nullptr);
}

// Row by row: a large file's plan as one JSON document would take many
// times the memory of the plan itself.
void writePlan(JSONStream& json, const ImportFile& file, bool aiLayout) {
    json.beginObject();
    if (aiLayout) {
        using Kind = ImportFile::LayoutHelp::Kind;
        const bool asked =
            file.layoutHelp.kind == Kind::done || file.layoutHelp.kind == Kind::failed;
        json.key("aiLayout");
        json.value(asked ? boost::json::value(file.layoutHelp.text) : boost::json::value(nullptr));
    }
    json.members(boost::json::object{
        {"fileName", file.name()},
        {"profile", file.analysis.profile ? boost::json::value(file.analysis.profile->id)
                                          : boost::json::value(nullptr)},
        {"account", orNull(file.targetAccountID(), [](const Uuid& id) { return id.text(); })},
        {"blocker", orNull(file.blocker(), [](const std::string& words) { return words; })},
        {"layoutWorkedOut",
         orNull(file.analysis.layoutWorkedOut, [](const std::string& words) { return words; })},
        {"layoutGaps", [&] {
             boost::json::array gaps;
             for (const auto& gap : file.analysis.layoutGaps)
                 gaps.push_back(boost::json::string(gap));
             return gaps;
         }()}});
    json.key("plan");
    if (!file.plan) {
        json.value(nullptr);
        json.endObject();
        return;
    }
    const auto& plan = *file.plan;
    json.beginObject();
    json.key("rows");
    json.beginArray();
    for (const auto& planned : plan.rows) {
        json.value(boost::json::object{
            {"line", planned.row.line},
            {"date", planned.row.date.iso()},
            {"amount", planned.row.amount},
            {"description", planned.row.description()},
            {"disposition", rawValue(planned.disposition.kind)},
            {"matchID",
             orNull(planned.disposition.match, [](const Uuid& id) { return id.text(); })}});
    }
    json.endArray();
    boost::json::array held;
    for (const auto* planned : plan.possibleDuplicates())
        held.push_back(planned->row.line);
    boost::json::array issues;
    for (const auto& issue : plan.issues) {
        issues.push_back(boost::json::object{
            {"line", issue.line}, {"reason", issue.reason}, {"rawText", issue.rawText}});
    }
    const auto iso = [](const LocalDate& date) { return date.iso(); };
    json.members(boost::json::object{
        {"newCount", plan.newCount()},
        {"duplicateCount", plan.duplicateCount()},
        {"replacesPendingCount", plan.replacesPendingCount()},
        {"possibleDuplicates", std::move(held)},
        {"issues", std::move(issues)},
        {"moneyIn", plan.totals().moneyIn},
        {"moneyOut", plan.totals().moneyOut},
        {"firstDate", orNull(plan.firstDate(), iso)},
        {"lastDate", orNull(plan.lastDate(), iso)},
        {"previousImport", orNull(plan.previousImport, [](const ImportBatch& batch) {
             return record_json::toJSON(batch);
         })}});
    json.endObject();
    json.endObject();
}

bool fail(CommandContext& context, const std::string& message) {
    context.err << message << '\n';
    context.exitCode = kExitFailure;
    return false;
}

// Brings the session's cards in line with the command's options.
bool applyOptions(CommandContext& context, LedgerRuntime& runtime, ImportModel& model,
                  const ImportOptions& options) {
    const Ledger& ledger = runtime.ledger();
    std::set<int64_t> forced;
    for (const auto& list : options.force) {
        std::stringstream items(list);
        std::string item;
        while (std::getline(items, item, ',')) {
            // Whole and nothing else: "12abc" is no more line 12 than "abc" is.
            const std::string_view number = text::trimmed(item);
            int64_t line = 0;
            const auto [end, error] =
                std::from_chars(number.data(), number.data() + number.size(), line);
            if (number.empty() || error != std::errc() || end != number.data() + number.size() ||
                line < 1)
                return fail(context, "'" + item + "' isn't a line number.");
            forced.insert(line);
        }
    }
    const Account* account = nullptr;
    if (!options.account.empty()) {
        account = findAccount(ledger, options.account);
        if (!account)
            return fail(context, "There is no account called " + options.account + ".");
    }
    std::optional<AccountType> type;
    if (!options.type.empty()) {
        type = enumFromRaw<AccountType>(options.type);
        if (!type)
            return fail(context, "There is no account type called " + options.type + ".");
    }
    std::optional<Uuid> personID;
    if (!options.person.empty()) {
        const auto* person = findPerson(ledger, options.person);
        if (!person)
            return fail(context, "There is no person called " + options.person + ".");
        personID = person->id;
    }

    // Every file of one command goes to one new account when one is named.
    std::optional<ImportFile::NewAccountDraft> sharedDraft;
    std::vector<Uuid> ids;
    for (const auto& file : model.files())
        ids.push_back(file.id);
    for (const auto& id : ids) {
        if (account) {
            runtime.setErrorMessage(std::nullopt);
            model.setChoice(ImportFile::AccountChoice::existing(account->id), id, runtime);
            if (runtime.errorMessage())
                return fail(context, *runtime.errorMessage());
        } else if (!options.newAccount.empty()) {
            if (!sharedDraft) {
                sharedDraft = model.file(id)->draft;
                sharedDraft->id = Uuid::random();
                sharedDraft->name = options.newAccount;
                if (type)
                    sharedDraft->type = *type;
                if (options.last4)
                    sharedDraft->last4 = *options.last4;
                if (personID)
                    sharedDraft->personID = personID;
                sharedDraft->isShared = options.shared;
            }
            model.setDraft(*sharedDraft, id);
            model.setChoice(ImportFile::AccountChoice::newAccount(), id, runtime);
        }
        // After the choice, which would otherwise take over the account's own setting.
        if (options.flipSigns)
            model.setFlip(true, id, runtime);
        if (options.skipProblemRows)
            model.setSkipProblemRows(true, id);
        if (!forced.empty())
            model.setForcedLines(forced, id);
    }
    return true;
}

void runImport(CommandContext& context, ImportOptions options) {
    // The new account's last four are refused as the account form refuses
    // them, before a file is read or the ledger opened; blank is none.
    if (options.last4) {
        try {
            options.last4 = lastFourEntered(*options.last4).value_or("");
        } catch (const EntryError& refusal) {
            fail(context, refusal.what());
            return;
        }
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    runtime->setErrorMessage(std::nullopt);
    const HeldForCommand<ImportModel> held(new ImportModel, CommandMemory{context.processEnds});
    ImportModel& model = *held;

    std::vector<std::filesystem::path> urls;
    for (const auto& file : options.files)
        urls.push_back(std::filesystem::absolute(file));
    if (!options.layout.empty()) {
        std::optional<ImportProfile> chosen;
        for (const auto& profile : allProfiles(runtime->ledger())) {
            if (profile.id == options.layout)
                chosen = profile;
        }
        if (!chosen) {
            fail(context, "There is no layout with the id " + options.layout +
                              ". Run 'copperwick layouts list' to see them.");
            return;
        }
        for (const auto& url : urls) {
            auto read = readBankFile(url);
            if (const auto* problem = std::get_if<BankFileProblem>(&read)) {
                fail(context, unreadableFileMessage(url, *problem));
                return;
            }
            const std::string name = url.filename().string();
            auto parts = StatementFiles::split(name, std::get<std::string>(read));
            if (parts.empty())
                parts.push_back({{}, std::move(std::get<std::string>(read))});
            for (auto& part : parts) {
                auto data = std::make_shared<const std::string>(std::move(part.data));
                auto analysis = ImportAnalyzer::analyze(name, *data, *chosen, false);
                model.receive(url, std::move(data), std::move(analysis), *runtime, part.label);
            }
        }
    } else {
        model.add(urls, *runtime);
        model.waitForAnalyses(*runtime);
    }
    if (runtime->errorMessage()) {
        fail(context, *runtime->errorMessage());
        return;
    }
    // Local AI looks at what the import leaves for review, as its switches say.
    IntelligenceController intelligence(*runtime);
    model.setIntelligence(&intelligence);
    // Files whose columns nobody recognised, read by Local AI when asked;
    // an accepted layout is used, and taught with the import.
    std::vector<std::pair<std::string, std::string>> aiLayouts;
    if (options.aiLayout) {
        std::vector<Uuid> unknown;
        for (const auto& file : model.files()) {
            if (!file.analysis.profile && !file.analysis.layoutGaps.empty())
                unknown.push_back(file.id);
        }
        for (const auto& id : unknown) {
            model.setUpLayout(id, *runtime);
            intelligence.wait();
            if (const ImportFile* file = model.file(id))
                aiLayouts.emplace_back(file->name(), file->layoutHelp.text);
        }
    }
    if (!context.json) {
        for (const auto& [name, message] : aiLayouts)
            context.out << name << ": " << message << '\n';
    }
    if (!applyOptions(context, *runtime, model, options))
        return;

    const Ledger& ledger = runtime->ledger();
    std::size_t blocked = 0;
    for (const auto& file : model.files())
        blocked += file.blocker() ? 1 : 0;
    if (options.dryRun) {
        if (context.json) {
            JSONStream json(context.out);
            json.beginObject();
            json.key("files");
            json.beginArray();
            for (const auto& file : model.files())
                writePlan(json, file, options.aiLayout);
            json.endArray();
            json.key("totalToImport");
            json.value(model.totalToImport());
            json.endObject();
        } else {
            for (const auto& file : model.files())
                printPlan(context.out, ledger, file);
            const auto ready = model.readyFiles().size();
            context.out << readyLine(model.totalToImport(), ready) << '\n';
            if (const auto line = blockedLine(blocked))
                context.out << *line << '\n';
        }
        // As the real import would: a file waiting for a decision stops it.
        if (blocked > 0)
            context.exitCode = kExitFailure;
        return;
    }

    for (const auto& file : model.files()) {
        if (const auto blocker = file.blocker()) {
            context.err << file.name() << ": " << *blocker << '\n';
            for (const auto& line : layoutGapLines(file))
                context.err << "  " << line << '\n';
        }
    }
    if (blocked > 0) {
        context.err << "Nothing was imported.\n";
        context.exitCode = kExitFailure;
        return;
    }

    runtime->setStatusMessage(std::nullopt);
    model.commit(*runtime, options.archive);
    if (!model.lastResult()) {
        fail(context, runtime->errorMessage().value_or("Nothing was imported."));
        return;
    }
    intelligence.wait();
    // What Local AI filed or suggested once the import had landed.
    const auto aiStatus = runtime->statusMessage();
    // An archive that failed leaves the import standing; say so beside it.
    if (runtime->errorMessage())
        context.err << *runtime->errorMessage() << '\n';
    if (context.json) {
        boost::json::array batches;
        for (const auto& batch : model.lastBatches())
            batches.push_back(record_json::toJSON(batch));
        boost::json::object result{{"result", *model.lastResult()}, {"batches", batches}};
        if (aiStatus)
            result["aiStatus"] = *aiStatus;
        if (options.aiLayout) {
            boost::json::array layouts;
            for (const auto& [name, message] : aiLayouts)
                layouts.push_back(boost::json::object{{"fileName", name}, {"message", message}});
            result["aiLayouts"] = layouts;
        }
        printJSON(context, result);
        return;
    }
    context.out << *model.lastResult() << '\n';
    if (aiStatus)
        context.out << *aiStatus << '\n';
}

std::string localTime(Instant instant) {
    const auto seconds = static_cast<std::time_t>(instant.unixSeconds());
    std::tm parts{};
    localtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &parts);
    return text;
}

void runImports(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    if (context.json) {
        boost::json::array batches;
        for (std::size_t i = ledger.batches.size(); i-- > 0;)
            batches.push_back(record_json::toJSON(ledger.batches[i]));
        printJSON(context, batches);
        return;
    }
    if (ledger.batches.empty()) {
        context.out << kNothingImportedYet << '\n';
        return;
    }
    for (std::size_t i = ledger.batches.size(); i-- > 0;) {
        const auto& batch = ledger.batches[i];
        const auto& counts = batch.counts;
        context.out << batch.id.text() << "  " << localTime(batch.importedAt) << "  "
                    << batchLine(ledger, batch) << '\n'
                    << "    " << counts.totalRows << " rows: " << counts.imported << " imported, "
                    << counts.replacedPending << " replaced pending, " << counts.duplicates
                    << " already saved, " << counts.heldDuplicates << " held, "
                    << counts.forcedDuplicates << " imported anyway, " << counts.errors
                    << " couldn't be read\n";
    }
}

void runUndoImport(CommandContext& context, const std::string& batchText) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto batchID = Uuid::parse(batchText);
    const ImportBatch* batch = nullptr;
    for (std::size_t i = 0; batchID && i < runtime->ledger().batches.size(); ++i) {
        if (runtime->ledger().batches[i].id == *batchID)
            batch = &runtime->ledger().batches[i];
    }
    if (!batch) {
        fail(context, "There is no import with the id " + batchText +
                          ". Run 'copperwick imports' to see them.");
        return;
    }
    const std::string fileName = batch->fileName;
    const Uuid id = *batchID;
    runtime->setErrorMessage(std::nullopt);
    const int64_t before = runtime->revision();
    bool gone = false;
    runtime->apply([id, &gone](Ledger& ledger) {
        // Another program may have taken the import back meanwhile.
        const auto& batches = ledger.batches;
        gone = std::none_of(batches.begin(), batches.end(),
                            [&](const ImportBatch& batch) { return batch.id == id; });
        return gone ? LedgerDelta{} : undoImport(ledger, id);
    });
    if (runtime->revision() == before) {
        fail(context,
             runtime->errorMessage().value_or(std::string(LedgerRuntime::kNoStoreMessage)));
        return;
    }
    if (gone) {
        fail(context, "There is no import with the id " + batchText +
                          ". Run 'copperwick imports' to see them.");
        return;
    }
    const std::string message = removedImportMessage(fileName);
    if (context.json) {
        printJSON(context, boost::json::object{{"result", message}, {"batchID", id.text()}});
        return;
    }
    context.out << message << '\n';
}

}  // namespace

void addImportCommands(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<ImportOptions>();
    auto* import = app.add_subcommand("import", "Import bank files into the ledger");
    takesPath(context,
              import->add_option("FILE", options->files, "CSV, OFX, QFX, QIF or CAMT.053 files"))
        ->required();
    import->add_option("--account", options->account, "Import into this account")
        ->type_name("NAME|ID");
    auto* newAccount =
        import->add_option("--new-account", options->newAccount, "Import into a new account")
            ->type_name("NAME")
            ->excludes("--account");
    import
        ->add_option("--type", options->type,
                     "The new account's type: checking, savings, creditCard, other or cash")
        ->needs(newAccount);
    import->add_option("--last4", options->last4, "The new account's last four digits")
        ->type_name("DIGITS")
        ->needs(newAccount);
    import->add_option("--person", options->person, "Who uses the new account")
        ->type_name("NAME")
        ->needs(newAccount);
    import->add_flag("--shared", options->shared, "The new account is the household's")
        ->needs(newAccount);
    import->add_flag("--flip-signs", options->flipSigns,
                     "The bank writes spending as positive amounts");
    import->add_option("--force", options->force, "Import these held lines anyway (see --dry-run)")
        ->type_name("LINE[,LINE...]");
    import->add_flag("--skip-problem-rows", options->skipProblemRows,
                     "Leave out the rows that couldn't be read");
    import
        ->add_option("--layout", options->layout,
                     "Read the files with this layout (see 'layouts list')")
        ->type_name("ID");
    takesPath(context, import->add_option("--archive", options->archive,
                                          "Move imported files into month folders here"))
        ->type_name("DIR");
    import->add_flag("--dry-run", options->dryRun, "Show what would be imported, and stop");
    import
        ->add_flag("--ai-layout", options->aiLayout,
                   "Let Local AI read the columns of a file no layout fits")
        ->excludes("--layout");
    import->callback([&context, options] { runImport(context, *options);
});

auto* imports = app.add_subcommand("imports", "List what has been imported, newest first");
imports->callback([&context] { runImports(context); });

auto batch = std::make_shared<std::string>();
auto* undo = app.add_subcommand("undo-import", "Take one import back out of the ledger");
undo->add_option("BATCH_ID", *batch, "The import's id (see 'imports')")->required();
undo->callback([&context, batch] { runUndoImport(context, *batch); });
}  // namespace copperwick::cli

}  // namespace copperwick::cli
