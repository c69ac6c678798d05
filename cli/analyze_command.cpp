// `copperwick analyze FILE... [--flip-signs] [--layout ID] [--ai-layout]`:
// what reading each bank file finds, without touching the ledger.

#include <memory>
#include <optional>
#include <ostream>
#include <variant>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/json_stream.h"
#include "cli/runtime_session.h"
#include "core/import/bank_file.h"
#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/import/statement_files.h"
#include "core/model/money.h"
#include "core/model/record_json.h"
#include "runtime/import_model.h"
#include "runtime/intelligence_controller.h"

namespace copperwick::cli {

namespace {

struct AnalyzeOptions {
    std::vector<std::string> files;
    bool flipSigns = false;
    std::string layout;
    bool aiLayout = false;
};

template <typename T>
void putOptional(boost::json::object& object, std::string_view key, const std::optional<T>& value) {
    if (value)
        object[key] = record_json::toJSON(*value);
}

void putOptionalText(boost::json::object& object, std::string_view key,
                     const std::optional<std::string_view>& value) {
    if (value)
        object[key] = *value;
}

boost::json::array textArray(const std::vector<std::string>& items) {
    boost::json::array array;
    for (const auto& item : items)
        array.push_back(boost::json::string(item));
    return array;
}

boost::json::object analysisHead(const FileAnalysis& analysis) {
    boost::json::object object{
        {"fileName", analysis.fileName},         {"fileHash", analysis.fileHash},
        {"delimiter", analysis.delimiter},       {"headers", textArray(analysis.headers)},
        {"skippedLines", analysis.skippedLines}, {"digitHints", textArray(analysis.digitHints)},
        {"blankLines", analysis.blankLines}};
    if (analysis.profile)
        object["profile"] =
            boost::json::object{{"id", analysis.profile->id}, {"name", analysis.profile->name}};
    if (analysis.dateLayout)
        object["dateLayout"] = rawValue(*analysis.dateLayout);
    if (analysis.typeHint)
        object["typeHint"] = rawValue(*analysis.typeHint);
    putOptionalText(object, "currencyHint", analysis.currencyHint);
    putOptionalText(object, "problem", analysis.problem);
    putOptionalText(object, "layoutWorkedOut", analysis.layoutWorkedOut);
    if (!analysis.layoutGaps.empty())
        object["layoutGaps"] = textArray(analysis.layoutGaps);
    return object;
}

boost::json::object rowJSON(const ParsedRow& row) {
    boost::json::object r{{"line", row.line},
                          {"date", row.date.iso()},
                          {"amount", row.amount},
                          {"description", row.description()},
                          {"status", rawValue(row.status)},
                          {"rawText", row.rawText()},
                          {"fingerprint", row.fingerprint()},
                          {"occurrence", row.occurrence}};
    putOptional(r, "postedDate", row.postedDate);
    putOptionalText(r, "bankMerchant", row.bankMerchant());
    putOptionalText(r, "bankCategory", row.bankCategory());
    putOptionalText(r, "checkNumber", row.checkNumber());
    putOptionalText(r, "cardIdentifier", row.cardIdentifier());
    putOptionalText(r, "externalID", row.externalID());
    return r;
}

// Row by row: a large file's rows as one JSON document would take many
// times the memory of the rows themselves.
void writeAnalysis(JSONStream& json, const FileAnalysis& analysis,
                   const std::optional<std::string>& aiLayout) {
    json.beginObject();
    auto head = analysisHead(analysis);
    if (aiLayout)
        head["aiLayout"] = *aiLayout;
    json.members(head);
    json.key("rows");
    json.beginArray();
    for (const auto& row : analysis.rows)
        json.value(rowJSON(row));
    json.endArray();
    json.key("issues");
    json.beginArray();
    for (const auto& issue : analysis.issues) {
        json.value(boost::json::object{
            {"line", issue.line}, {"reason", issue.reason}, {"rawText", issue.rawText}});
    }
    json.endArray();
    json.endObject();
}

std::string joined(const std::vector<std::string>& items, std::string_view separator) {
    std::string out;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0)
            out += separator;
        out += items[i];
    }
    return out;
}

void printAnalysis(std::ostream& out, const FileAnalysis& analysis) {
    out << analysis.fileName << '\n';
    if (analysis.profile) {
        out << "  Layout: " << analysis.profile->name << " (" << analysis.profile->id << ")\n";
        if (analysis.layoutWorkedOut)
            out << "  " << *analysis.layoutWorkedOut << '\n';
    } else {
        out << "  Layout: not recognised\n";
    }
    out << "  Delimiter: " << (analysis.delimiter == "\t" ? std::string("tab") : analysis.delimiter)
        << '\n'
        << "  Headers: " << (analysis.headers.empty() ? "none" : joined(analysis.headers, " | "))
        << '\n'
        << "  Lines before the header: " << analysis.skippedLines << '\n'
        << "  Date layout: "
        << (analysis.dateLayout ? std::string(label(*analysis.dateLayout))
                                : std::string("not found"))
        << '\n'
        << "  Looks like: "
        << (analysis.typeHint ? std::string(label(*analysis.typeHint)) : std::string("unknown"))
        << '\n'
        << "  Card or account digits: "
        << (analysis.digitHints.empty() ? "none" : joined(analysis.digitHints, ", ")) << '\n'
        << "  Currency: " << analysis.currencyHint.value_or("not stated") << '\n';
    if (analysis.problem)
        out << "  Problem: " << *analysis.problem << '\n';
    for (const auto& gap : analysis.layoutGaps)
        out << "  " << gap << '\n';
    out << "  " << analysis.rows.size() << " rows read, " << analysis.issues.size()
        << " couldn't be read, " << analysis.blankLines << " blank lines\n";
    for (const auto& row : analysis.rows) {
        out << "    line " << row.line << "  " << row.date.iso() << "  "
            << Money::format(row.amount) << "  " << row.description();
        if (row.status == TransactionStatus::pending)
            out << "  (pending)";
        if (const auto card = row.cardIdentifier())
            out << "  [" << *card << "]";
        out << '\n';
    }
    for (const auto& issue : analysis.issues)
        out << "    line " << issue.line << ": " << issue.reason << '\n';
}

void runAnalyze(CommandContext& context, const AnalyzeOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto profiles = allProfiles(runtime->ledger());
    std::optional<ImportProfile> chosen;
    if (!options.layout.empty()) {
        for (const auto& profile : profiles) {
            if (profile.id == options.layout)
                chosen = profile;
        }
        if (!chosen) {
            context.err << "There is no layout with the id " << options.layout
                        << ". Run 'copperwick layouts list' to see them.\n";
            context.exitCode = kExitFailure;
            return;
        }
    }

    // One file at a time, each written as soon as it is read.
    std::optional<JSONStream> json;
    if (context.json) {
        json.emplace(context.out);
        json->beginArray();
    }
    std::optional<IntelligenceController> intelligence;
    if (options.aiLayout)
        intelligence.emplace(*runtime);
    for (const auto& file : options.files) {
        auto read = readBankFile(file);
        if (const auto* problem = std::get_if<BankFileProblem>(&read)) {
            context.err << unreadableFileMessage(file, *problem) << '\n';
            context.exitCode = kExitFailure;
            continue;
        }
        std::string data = std::move(std::get<std::string>(read));
        const std::string name = std::filesystem::path(file).filename().string();
        // A file of several statements is told one statement at a time, as
        // the import takes it.
        auto parts = StatementFiles::split(name, data);
        if (parts.empty())
            parts.push_back({{}, std::move(data)});
        for (const auto& part : parts) {
            FileAnalysis analysis =
                chosen ? ImportAnalyzer::analyze(name, part.data, *chosen, options.flipSigns)
                       : ImportAnalyzer::analyze(name, part.data, profiles, options.flipSigns);
            if (!part.label.empty())
                analysis.fileName = StatementFiles::partName(name, part.label);
            // Columns nobody recognised: Local AI reads them, and the file is
            // shown as its layout reads it when that layout holds.
            std::optional<std::string> aiLayout;
            if (intelligence && !analysis.profile && !analysis.layoutGaps.empty()) {
                std::optional<LayoutOutcome> outcome;
                intelligence->proposeLayout(
                    name, std::make_shared<const std::string>(part.data),
                    [&](LayoutOutcome given) { outcome = std::move(given); });
                intelligence->wait();
                aiLayout = outcome->message;
                if (outcome->check.accepted) {
                    const std::string fileName = analysis.fileName;
                    analysis = std::move(outcome->check.analysis);
                    analysis.fileName = fileName;
                }
            }
            if (json) {
                writeAnalysis(*json, analysis, aiLayout);
            } else {
                printAnalysis(context.out, analysis);
                if (aiLayout)
                    context.out << "  " << *aiLayout << '\n';
            }
        }
    }
    if (json)
        json->endArray();
}

}  // namespace

void addAnalyzeCommand(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<AnalyzeOptions>();
    auto* analyze = app.add_subcommand(
        "analyze", "Show what Copperwick reads in bank files, without importing them");
    takesPath(context,
              analyze->add_option("FILE", options->files, "CSV, OFX, QFX, QIF or CAMT.053 files"))
        ->required();
    analyze->add_flag("--flip-signs", options->flipSigns,
                      "The bank writes spending as positive amounts");
    analyze
        ->add_option("--layout", options->layout,
                     "Read the files with this layout (see 'layouts list')")
        ->type_name("ID");
    analyze
        ->add_flag("--ai-layout", options->aiLayout,
                   "Let Local AI read the columns of a file no layout fits")
        ->excludes("--layout");
    analyze->callback([&context, options] { runAnalyze(context, *options); });
}

}  // namespace copperwick::cli
