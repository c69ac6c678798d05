// `copperwick export transactions FILE [filters]` and `copperwick export
// summary FILE [period and people options]`: CSV files that a spreadsheet
// opens safely, as the Reports and Transactions screens save them. `copperwick
// export pdf FILE [period and people options]` prints the report as the
// Reports screen's "Report as PDF…" does.

#include <filesystem>
#include <memory>
#include <ostream>

#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/pdf_writer.h"
#include "cli/report_options.h"
#include "cli/runtime_session.h"
#include "core/model/file_output.h"
#include "core/presentation/pdf_report_content.h"
#include "core/reports/csv_export.h"
#include "core/reports/transaction_query.h"
#include "runtime/skin_preference.h"

namespace copperwick::cli {

namespace {

namespace fs = std::filesystem;

struct ExportOptions {
    std::string file;
    ReportOptions filter;
    std::string account;
    bool review = false;
    std::string search;
    std::string style;  // raw; empty means the preference
    std::string skin;   // raw; empty means the person's skin
};

bool choosesReport(const ReportOptions& options) {
    return !options.period.empty() || !options.from.empty() || !options.to.empty() ||
           !options.people.empty() || options.household || !options.peopleMode.empty() ||
           options.includeShared || options.includeUnassigned || !options.currency.empty();
}

// The saved file as a person would look for it.
fs::path savedPath(const std::string& file) {
    std::error_code unknown;  // a working folder deleted meanwhile: the name as given
    fs::path target = fs::absolute(file, unknown);
    return unknown ? fs::path(file) : target;
}

void reportSaved(CommandContext& context, const fs::path& target, boost::json::object details) {
    const std::string message = "Saved " + target.filename().string();
    if (context.json) {
        details["file"] = target.string();
        details["message"] = message;
        printJSON(context, details);
        return;
    }
    context.out << message << '\n';
}

void saveAndReport(CommandContext& context, const std::string& file, const std::string& text,
                   boost::json::object details) {
    if (const auto problem = saveFile(file, text)) {
        context.err << "Couldn't save the file: " << *problem << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    reportSaved(context, savedPath(file), std::move(details));
}

void runExportTransactions(CommandContext& context, const ExportOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    TransactionQuery query{.search = options.search, .searchesCategories = true};
    if (options.review)
        query.filter.kind = TransactionFilter::Kind::needsReview;
    if (choosesReport(options.filter)) {
        const auto report = reportFilter(options.filter, ledger, runtime->today(), context);
        if (!report)
            return;
        query.narrowTo(*report);
    }
    if (!options.account.empty()) {
        const Account* account = accountOrComplain(context, ledger, options.account);
        if (!account)
            return;
        query.accountID = account->id;
    }
    std::vector<Uuid> ids;
    for (const LedgerTransaction* transaction : query.select(ledger))
        ids.push_back(transaction->id);
    const auto count = static_cast<int64_t>(ids.size());
    saveAndReport(context, options.file, CSVExport::transactions(ids, ledger),
                  boost::json::object{{"transactions", count}});
}

void runExportSummary(CommandContext& context, const ExportOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto filter = reportFilter(options.filter, runtime->ledger(), runtime->today(), context);
    if (!filter)
        return;
    const ReportBundle bundle = runtime->buildReportBundle(*filter);
    saveAndReport(context, options.file, CSVExport::reportSummary(bundle.report(), bundle.payments),
                  boost::json::object{});
}

void runExportPDF(CommandContext& context, const ExportOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto filter = reportFilter(options.filter, runtime->ledger(), runtime->today(), context);
    if (!filter)
        return;
    // The style and skin last chosen on screen, unless the command names them.
    const PDFReportStyle style = enumFromRaw<PDFReportStyle>(options.style)
                                     .value_or(rememberedPDFStyle(runtime->defaults()));
    const Skin skin =
        enumFromRaw<Skin>(options.skin).value_or(SkinPreference::load(runtime->defaults()).skin);

    if (const std::string failure = PDFWriter::openFailure(); !failure.empty()) {
        context.err << "Couldn't save the PDF: " << failure << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    const ActivityCount building = runtime->countPDFBuild();
    const ReportBundle bundle = runtime->buildReportBundle(*filter);
    const PDFReportContent content =
        PDFReportContent::ofBundle(bundle, runtime->ledger(), runtime->now());
    const fs::path target = savedPath(options.file);
    std::size_t pages = 0;
    try {
        pages = PDFWriter::write(content, style, skin, target);
    } catch (const PDFExportError& error) {
        context.err << "Couldn't save the PDF: " << error.what() << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    reportSaved(context, target, boost::json::object{{"pages", static_cast<int64_t>(pages)}});
}

}  // namespace

void addExportCommands(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand(
        "export", "Save transactions or a report summary as CSV, or a report as PDF");
    command->require_subcommand(1);

    auto* transactions = command->add_subcommand(
        "transactions", "The transactions of a report, or of the whole ledger, as CSV");
    auto transactionOptions = std::make_shared<ExportOptions>();
    takesPath(context, transactions->add_option("FILE", transactionOptions->file,
                                                "Where to save the CSV file"))
        ->required();
    addReportOptions(*transactions, transactionOptions->filter);
    transactions->add_option("--account", transactionOptions->account,
                             "Only this account (name or id)");
    transactions->add_flag("--review", transactionOptions->review,
                           "Only transactions that need review");
    transactions->add_option("--search", transactionOptions->search,
                             "Only transactions whose text, merchant, category or note holds this");
    transactions->callback(
        [&context, transactionOptions] { runExportTransactions(context, *transactionOptions); });

    auto* summary = command->add_subcommand("summary", "A report's figures in one CSV file");
    auto summaryOptions = std::make_shared<ExportOptions>();
    takesPath(context,
              summary->add_option("FILE", summaryOptions->file, "Where to save the CSV file"))
        ->required();
    addReportOptions(*summary, summaryOptions->filter);
    summary->callback([&context, summaryOptions] { runExportSummary(context, *summaryOptions); });

    auto* pdf = command->add_subcommand("pdf", "A report as a printable PDF on Letter pages");
    auto pdfOptions = std::make_shared<ExportOptions>();
    takesPath(context, pdf->add_option("FILE", pdfOptions->file, "Where to save the PDF file"))
        ->required();
    addReportOptions(*pdf, pdfOptions->filter);
    pdf->add_option("--style", pdfOptions->style,
                    "signature, everyday or precision (default: the style last chosen, else "
                    "signature)")
        ->check(CLI::IsMember({"signature", "everyday", "precision"}));
    pdf->add_option("--skin", pdfOptions->skin,
                    "forest, sky, slate, turquoise, bordeaux or wisteria (default: your skin)")
        ->check(CLI::IsMember({"forest", "sky", "slate", "turquoise", "bordeaux", "wisteria"}));
    pdf->callback([&context, pdfOptions] { runExportPDF(context, *pdfOptions); });
}

}  // namespace copperwick::cli
