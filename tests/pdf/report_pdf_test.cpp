#include "pdf/report_pdf.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "core/presentation/demo_ledger.h"
#include "core/reports/period_choice.h"
#include "core/reports/report_bundle.h"
#include "core/reports/report_engine.h"
#include "core/reports/report_facts.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;
using testing::day;
using testing::TempFolder;

// Poppler's command-line tools, found on the PATH as a person would run them.
std::optional<fs::path> tool(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::stringstream folders(path ? path : "/usr/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path candidate = fs::path(folder) / name;
        if (::access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return std::nullopt;
}

std::string lastLine(const std::string& text) {
    const auto end = text.find_last_not_of(" \n");
    if (end == std::string::npos)
        return {};
    const auto start = text.rfind('\n', end);
    return text.substr(start == std::string::npos ? 0 : start + 1, end + 1 - (start + 1));
}

std::string withoutSpaces(std::string text) {
    std::erase(text, ' ');
    return text;
}

struct WordBox {
    double xMin = 0;
    double yMin = 0;
    double xMax = 0;
    double yMax = 0;
    std::string text;
};

// The words of `pdftotext -bbox`, each written as
// <word xMin="…" yMin="…" xMax="…" yMax="…">text</word>.
std::vector<WordBox> wordBoxes(const std::string& html) {
    std::vector<WordBox> boxes;
    const auto number = [&](std::size_t from, const std::string& name) {
        const auto at = html.find(name + "=\"", from);
        return std::stod(html.substr(at + name.size() + 2));
    };
    for (auto at = html.find("<word "); at != std::string::npos; at = html.find("<word ", at + 1)) {
        WordBox box{
            number(at, "xMin"), number(at, "yMin"), number(at, "xMax"), number(at, "yMax"), {}};
        const auto open = html.find('>', at);
        box.text = html.substr(open + 1, html.find("</word>", open) - open - 1);
        boxes.push_back(std::move(box));
    }
    return boxes;
}

class ReportPDFTest : public ::testing::Test {
  protected:
    void SetUp() override {
        pdfinfo = tool("pdfinfo");
        pdftotext = tool("pdftotext");
        if (!pdfinfo || !pdftotext)
            GTEST_SKIP() << "poppler-utils isn't installed";
    }

    std::map<std::string, std::string> info(const fs::path& file) {
        const auto result = testing::runProcess({pdfinfo->string(), file.string()}, folder.path());
        EXPECT_EQ(result.code, 0) << result.err;
        std::map<std::string, std::string> fields;
        std::stringstream lines(result.out);
        for (std::string line; std::getline(lines, line);) {
            const auto colon = line.find(':');
            if (colon == std::string::npos)
                continue;
            const auto value = line.find_first_not_of(' ', colon + 1);
            fields[line.substr(0, colon)] = value == std::string::npos ? "" : line.substr(value);
        }
        return fields;
    }

    // The text of each page, in reading order.
    std::vector<std::string> pageTexts(const fs::path& file) {
        const auto result = testing::runProcess(
            {pdftotext->string(), "-layout", file.string(), "-"}, folder.path());
        EXPECT_EQ(result.code, 0) << result.err;
        std::vector<std::string> pages;
        std::stringstream all(result.out);
        for (std::string page; std::getline(all, page, '\f');)
            pages.push_back(page);
        if (!pages.empty() && pages.back().find_first_not_of(" \n") == std::string::npos)
            pages.pop_back();
        return pages;
    }

    std::optional<fs::path> pdfinfo;
    std::optional<fs::path> pdftotext;
    TempFolder folder;
};

PDFReportContent demoContent(const ReportFilter& filter, LocalDate today, const Ledger& ledger) {
    const ReportBundle bundle = ReportBundle::build(ledger, filter, today);
    return PDFReportContent(
        bundle.report(), ledger,
        ReportFacts::texts(ReportFacts::build(bundle.comparison, bundle.recurring, bundle.unusual)),
        false, bundle.recurring, Instant::now());
}

TEST_F(ReportPDFTest, TheDemoInEveryStyleReadsWholeOnEveryPage) {
    const LocalDate today = day(2026, 3, 18);
    const Ledger ledger = DemoLedger::make(today);
    const ReportFilter filter(span(PeriodChoice::last12Months, ledger, today, today, today), {}, {},
                              "USD", std::nullopt, false, false, PeopleMode::assigned);
    const PDFReportContent content = demoContent(filter, today, ledger);

    for (const PDFReportStyle style :
         {PDFReportStyle::signature, PDFReportStyle::everyday, PDFReportStyle::precision}) {
        SCOPED_TRACE(std::string(rawValue(style)));
        const fs::path file = folder / (std::string(rawValue(style)) + ".pdf");
        const std::size_t pages = ReportPDF::write(content, style, Skin::turquoise, file);

        auto fields = info(file);
        EXPECT_EQ(fields["Title"], "Copperwick \u00B7 " + filter.span.label());
        EXPECT_EQ(fields["Creator"], "Copperwick");
        EXPECT_EQ(fields["Subject"], "Whole household \u00B7 " + std::string(rawValue(style)));
        EXPECT_EQ(fields["Pages"], std::to_string(pages));
        EXPECT_TRUE(fields["Page size"].starts_with("612 x 792 pts")) << fields["Page size"];

        const std::vector<std::string> texts = pageTexts(file);
        ASSERT_EQ(texts.size(), pages);
        std::string all;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            EXPECT_NE(texts[i].find("Posted only \u00B7 Transfers excluded \u00B7 Refunds netted"),
                      std::string::npos)
                << "page " << i + 1;
            // pdftotext closes up the spaces around the slash.
            const std::string footer = withoutSpaces(lastLine(texts[i]));
            EXPECT_TRUE(footer.ends_with(std::to_string(i + 1) + "/" + std::to_string(pages)))
                << "page " << i + 1 << ": " << footer;
            all += texts[i];
        }
        for (const char* title :
             {"Spending by category", "Key facts", "Spending assignment", "CATEGORY / MERCHANT",
              "Month by month", "Income sources", "Recurring charges", "About these numbers",
              "Report coverage", "Made on this computer by Copperwick."})
            EXPECT_NE(all.find(title), std::string::npos) << title;

        // Every word's box lies on the page.
        const auto boxes =
            testing::runProcess({pdftotext->string(), "-bbox", file.string(), "-"}, folder.path());
        ASSERT_EQ(boxes.code, 0) << boxes.err;
        int words = 0;
        for (const WordBox& box : wordBoxes(boxes.out)) {
            ++words;
            EXPECT_GE(box.xMin, 0) << box.text;
            EXPECT_GE(box.yMin, 0) << box.text;
            EXPECT_LE(box.xMax, 612) << box.text;
            EXPECT_LE(box.yMax, 792) << box.text;
        }
        EXPECT_GT(words, 200);
    }
}

TEST_F(ReportPDFTest, TheTitleNamesTheMonth) {
    testing::LedgerBuilder builder;
    const ReportFilter march({day(2026, 3, 1), day(2026, 3, 31)}, {}, {}, "USD", std::nullopt,
                             false, false, PeopleMode::assigned);
    const Report report = ReportEngine::build(builder.ledger(), march, day(2026, 4, 2));
    const PDFReportContent content(report, builder.ledger(), {}, false, {}, Instant::now());
    const fs::path file = folder / "march.pdf";
    (void)ReportPDF::write(content, PDFReportStyle::signature, Skin::forest, file);
    EXPECT_EQ(info(file)["Title"], "Copperwick \u00B7 March 2026");
    EXPECT_EQ(ReportPDF::data(content, PDFReportStyle::signature, Skin::forest).substr(0, 5),
              "%PDF-");
}

TEST_F(ReportPDFTest, AnUnwritableLocationSaysSoAndLeavesNothing) {
    testing::LedgerBuilder builder;
    const ReportFilter march({day(2026, 3, 1), day(2026, 3, 31)}, {}, {}, "USD", std::nullopt,
                             false, false, PeopleMode::assigned);
    const PDFReportContent content(ReportEngine::build(builder.ledger(), march, day(2026, 4, 2)),
                                   builder.ledger(), {}, false, {}, Instant::now());

    const fs::path locked = folder / "locked";
    fs::create_directory(locked);
    fs::permissions(locked, fs::perms::owner_read | fs::perms::owner_exec);
    const bool root = ::geteuid() == 0;
    for (const fs::path& target :
         {folder / "missing" / "report.pdf", fs::path(folder.path()), locked / "report.pdf"}) {
        if (root && target.parent_path() == locked)
            continue;  // root writes into read-only folders
        try {
            (void)ReportPDF::write(content, PDFReportStyle::everyday, Skin::forest, target);
            ADD_FAILURE() << target << " was written";
        } catch (const PDFExportError& error) {
            EXPECT_STREQ(error.what(), "The PDF file couldn't be created at that location.");
        }
    }
    EXPECT_FALSE(fs::exists(folder / "missing"));
    EXPECT_TRUE(fs::is_empty(locked));
    std::vector<fs::path> left;
    for (const auto& entry : fs::directory_iterator(folder.path()))
        left.push_back(entry.path().filename());
    EXPECT_EQ(left, std::vector<fs::path>{"locked"}) << "no temporary file stays behind";
}

}  // namespace
}  // namespace copperwick
