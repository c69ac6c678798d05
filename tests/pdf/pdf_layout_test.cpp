#include "pdf/pdf_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "core/model/text.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::pdf {
namespace {

using testing::day;

ReportFilter marchFilter() {
    return ReportFilter({day(2026, 3, 1), day(2026, 3, 31)}, {}, {}, "USD", std::nullopt, false,
                        false, PeopleMode::assigned);
}

CategoryLine category(std::string name, int64_t amount, int colorIndex) {
    CategoryLine line;
    line.id = name;
    line.name = std::move(name);
    line.amount = amount;
    line.count = 1;
    line.colorIndex = colorIndex;
    return line;
}

// A report of `categories`, with spending their sum, and nothing else.
PDFReportContent contentWith(std::vector<CategoryLine> categories,
                             std::vector<std::string> summary = {}) {
    Report report(marchFilter());
    report.scopeLabel = "Whole household";
    for (const CategoryLine& line : categories)
        report.spending += line.amount;
    report.categories = std::move(categories);
    report.months = {{"2026-03", report.income, report.spending}};
    return PDFReportContent(std::move(report), Ledger::starter(), std::move(summary), false, {},
                            Instant{});
}

std::vector<const DrawCommand*> texts(const std::vector<DrawCommand>& commands) {
    std::vector<const DrawCommand*> found;
    for (const DrawCommand& command : commands) {
        if (command.kind == DrawCommand::Kind::text)
            found.push_back(&command);
    }
    return found;
}

const DrawCommand* findText(const std::vector<DrawCommand>& commands, std::string_view words) {
    for (const DrawCommand& command : commands) {
        if (command.kind == DrawCommand::Kind::text && command.text == words)
            return &command;
    }
    return nullptr;
}

bool anywhere(const PDFLayout& layout, std::string_view words) {
    for (const Page& page : layout.pages()) {
        if (findText(page.commands, words))
            return true;
    }
    return false;
}

int count(const std::vector<DrawCommand>& commands, DrawCommand::Kind kind) {
    return static_cast<int>(std::count_if(commands.begin(), commands.end(),
                                          [&](const DrawCommand& c) { return c.kind == kind; }));
}

class PDFLayoutTest : public ::testing::Test {
  protected:
    TextMeasure measure;
};

TEST_F(PDFLayoutTest, EveryFooterCountsThePagesThatFollowedIt) {
    const PDFReportContent content =
        contentWith({category("Groceries", 12000, 0), category("Dining", 4000, 1)});
    PDFLayout layout(content, PDFReportStyle::signature, Skin::forest, measure);
    layout.compose();
    const std::size_t total = layout.pages().size();
    ASSERT_GE(total, 3u) << "overview, categories and income each start a page";
    for (std::size_t i = 0; i < total; ++i) {
        const std::string number = std::to_string(i + 1) + " / " + std::to_string(total);
        const std::vector<DrawCommand> played = layout.played(i);
        const DrawCommand* footer = findText(played, number);
        ASSERT_NE(footer, nullptr) << number;
        EXPECT_EQ(footer->rect.x, 490);
        EXPECT_EQ(footer->rect.y, 744);
        EXPECT_EQ(footer->align, TextAlign::right);
        EXPECT_EQ(findText(layout.pages()[i].commands, number), nullptr)
            << "the number belongs to the frame, drawn once the count is known";
    }
    const std::vector<DrawCommand> first = layout.played(0);
    EXPECT_NE(findText(first, "1 / 3"), nullptr);
    EXPECT_NE(findText(first, "Posted only \u00B7 Transfers excluded \u00B7 Refunds netted"),
              nullptr);
    EXPECT_NE(findText(first, "Signature \u00B7 Report overview"), nullptr);
}

TEST_F(PDFLayoutTest, ASectionThatWouldNotFitMovesWholeWithItsRule) {
    const PDFReportContent content = contentWith({});
    {
        PDFLayout layout(content, PDFReportStyle::signature, Skin::forest, measure);
        layout.newPage("Report overview");
        layout.moveTo(700);
        layout.section("Spending assignment", 70);
        ASSERT_EQ(layout.pages().size(), 2u);
        EXPECT_TRUE(layout.pages()[0].commands.empty()) << "not even the rule stays behind";
        const Page& page = layout.pages()[1];
        EXPECT_EQ(page.title, "Spending assignment");
        ASSERT_GE(page.commands.size(), 2u);
        EXPECT_EQ(page.commands[0].kind, DrawCommand::Kind::fill);
        EXPECT_EQ(page.commands[0].rect, (Rect{42, 120, 528, 0.6}));
        EXPECT_EQ(page.commands[1].text, "Spending assignment");
        EXPECT_EQ(page.commands[1].rect.y, 134);
    }
    {
        PDFLayout layout(content, PDFReportStyle::signature, Skin::forest, measure);
        layout.newPage("Report overview");
        layout.moveTo(500);
        layout.section("Spending assignment", 70);
        EXPECT_EQ(layout.pages().size(), 1u) << "room enough: the section starts where it is";
        EXPECT_GE(layout.pages()[0].commands[0].rect.y, 500);
        EXPECT_LE(layout.pages()[0].commands[0].rect.y, 520);
    }
}

TEST_F(PDFLayoutTest, ParagraphsFlowOnToPagesOfTheirContinuation) {
    const PDFReportContent content = contentWith({});
    PDFLayout layout(content, PDFReportStyle::everyday, Skin::sky, measure);
    layout.newPage("Report overview");
    layout.moveTo(690);
    std::string words;
    for (int i = 0; i < 60; ++i)
        words += "Every figure comes from the ledger's own arithmetic. ";
    layout.paragraph(words, layout.bodyFont(10), RGB{}, 0, "Summary continued");
    ASSERT_EQ(layout.pages().size(), 2u);
    EXPECT_EQ(layout.pages()[1].title, "Summary continued");
    std::string joined;
    for (const Page& page : layout.pages()) {
        for (const DrawCommand* command : texts(page.commands)) {
            EXPECT_LE(command->rect.bottom(), PDFLayout::kBottom + 0.01);
            joined += command->text + " ";
        }
    }
    EXPECT_EQ(std::string(text::trimmed(joined)), std::string(text::trimmed(words)))
        << "no word lost or doubled at the break";
}

TEST_F(PDFLayoutTest, PrecisionNumbersItsSections) {
    const PDFReportContent content =
        contentWith({category("Groceries", 12000, 0)}, {"Spending in March 2026 was $120.00."});
    PDFLayout layout(content, PDFReportStyle::precision, Skin::slate, measure);
    layout.compose();
    EXPECT_TRUE(anywhere(layout, "01  Spending by category"));
    EXPECT_TRUE(anywhere(layout, "02  Key facts"));
    EXPECT_TRUE(anywhere(layout, "03  Month by month"));
    EXPECT_FALSE(anywhere(layout, "Spending by category"));

    PDFLayout plain(content, PDFReportStyle::everyday, Skin::slate, measure);
    plain.compose();
    EXPECT_TRUE(anywhere(plain, "Spending by category"));
}

TEST_F(PDFLayoutTest, TheRingGroupsSmallerCategoriesFromEight) {
    std::vector<CategoryLine> eight;
    for (int i = 0; i < 8; ++i)
        eight.push_back(category("Category " + std::to_string(i), 1000 * (8 - i), i));
    const auto lines = PDFLayout::ringLines(eight);
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(lines[0].name, "Category 0");
    EXPECT_EQ(lines[5].name, "Category 5");
    EXPECT_EQ(lines[6].name, "Other categories (2)");
    EXPECT_EQ(lines[6].amount, 2000 + 1000);
    EXPECT_TRUE(lines[6].grouped);

    eight.pop_back();
    EXPECT_EQ(PDFLayout::ringLines(eight).size(), 7u) << "seven are shown as they are";
    EXPECT_FALSE(PDFLayout::ringLines(eight).back().grouped);

    eight.push_back(category("Category 7", 1000, 7));
    const PDFReportContent content = contentWith(eight);
    PDFLayout layout(content, PDFReportStyle::everyday, Skin::forest, measure);
    layout.compose();
    EXPECT_EQ(count(layout.pages()[0].commands, DrawCommand::Kind::arc), 7);
    EXPECT_TRUE(anywhere(layout,
                         "Smaller categories are grouped in this chart. Every category "
                         "appears separately in the detailed ledger."));
    EXPECT_TRUE(anywhere(layout, "TOTAL SPENDING"));
}

TEST_F(PDFLayoutTest, ANetRefundTurnsTheRingIntoBars) {
    const PDFReportContent positive =
        contentWith({category("Groceries", 12000, 0), category("Shopping", 3000, 1)});
    PDFLayout ring(positive, PDFReportStyle::everyday, Skin::forest, measure);
    EXPECT_TRUE(ring.usesRing());

    const PDFReportContent refunded =
        contentWith({category("Groceries", 12000, 0), category("Shopping", -3000, 1)});
    PDFLayout bars(refunded, PDFReportStyle::everyday, Skin::forest, measure);
    EXPECT_FALSE(bars.usesRing());
    bars.compose();
    EXPECT_EQ(count(bars.pages()[0].commands, DrawCommand::Kind::arc), 0);
    EXPECT_TRUE(anywhere(
        bars, "Net spending after refunds \u00B7 negative amounts represent net refunds."));
    EXPECT_TRUE(anywhere(bars, "\u2212$30.00"));

    PDFLayout signature(positive, PDFReportStyle::signature, Skin::forest, measure);
    EXPECT_FALSE(signature.usesRing()) << "only the everyday style draws the ring";
}

TEST_F(PDFLayoutTest, ALongAccountListIsCutAtItsHundredAndSecondCharacter) {
    const std::vector<std::string> exact{std::string(50, 'a'), std::string(50, 'b')};
    EXPECT_EQ(PDFLayout::accountsLine(exact), std::string(50, 'a') + ", " + std::string(50, 'b'))
        << "102 characters stay whole";

    std::vector<std::string> many;
    for (int i = 0; i < 12; ++i)
        many.push_back("Caf\u00E9 card " + std::to_string(i));
    const std::string cut = PDFLayout::accountsLine(many);
    EXPECT_EQ(text::characterCount(cut), 103u);
    EXPECT_TRUE(cut.ends_with("\u2026"));
    EXPECT_TRUE(text::isValidUTF8(cut)) << "never cut inside a character";

    Report report(marchFilter());
    report.accountNames = many;
    const PDFReportContent content(report, Ledger::starter(), {}, false, {}, Instant{});
    PDFLayout layout(content, PDFReportStyle::signature, Skin::forest, measure);
    layout.compose();
    const std::vector<DrawCommand> played = layout.played(0);
    const DrawCommand* accounts = findText(played, cut);
    ASSERT_NE(accounts, nullptr);
    EXPECT_EQ(accounts->rect.x, 42);
    EXPECT_LE(accounts->rect.bottom(), 112) << "within the header's 40 points from y 72";
}

TEST_F(PDFLayoutTest, ALargestAmountShrinksWithinItsPanel) {
    Report report(marchFilter());
    report.income = 90'000'000'000'000;
    const PDFReportContent content(report, Ledger::starter(), {}, false, {}, Instant{});
    for (const PDFReportStyle style :
         {PDFReportStyle::signature, PDFReportStyle::everyday, PDFReportStyle::precision}) {
        PDFLayout layout(content, style, Skin::forest, measure);
        layout.compose();
        const DrawCommand* amount = findText(layout.pages()[0].commands, "$900,000,000,000.00");
        ASSERT_NE(amount, nullptr);
        EXPECT_LT(amount->font.size, 23);
        EXPECT_GE(amount->font.size, 7);
        EXPECT_EQ(std::fmod(amount->font.size, 0.5), 0) << "shrunk by halves of a point";
        EXPECT_LE(measure.measure(amount->text, amount->font, 0).width, 152);
    }
    PDFLayout layout(content, PDFReportStyle::everyday, Skin::forest, measure);
    EXPECT_EQ(layout.fittedSize(std::string(200, '9'), layout.bodyFont(23, true), 7, 152), 7)
        << "a text that never fits stops at the floor";
    EXPECT_EQ(layout.fittedSize("$1.00", layout.bodyFont(23, true), 7, 152), 23);
}

TEST_F(PDFLayoutTest, SpendingAssignmentOnlyWithSpendingToAssign) {
    PDFReportContent content = contentWith({category("Groceries", 12000, 0)});
    {
        PDFLayout layout(content, PDFReportStyle::signature, Skin::forest, measure);
        layout.compose();
        EXPECT_FALSE(anywhere(layout, "Spending assignment"));
        EXPECT_FALSE(anywhere(layout, "ASSIGNED"));
    }
    content.allocation = {{"Ana", 8000}, {"Shared household", 4000}};
    PDFLayout layout(content, PDFReportStyle::signature, Skin::forest, measure);
    layout.compose();
    EXPECT_TRUE(anywhere(layout, "Spending assignment"));
    EXPECT_TRUE(anywhere(layout, "ASSIGNED"));
    EXPECT_TRUE(anywhere(layout, "66.7%"));
    EXPECT_TRUE(anywhere(layout, "Total spending"));
}

TEST_F(PDFLayoutTest, ATableHeaderIsNeverLeftAloneAtTheFoot) {
    std::vector<CategoryLine> many;
    for (int i = 0; i < 40; ++i) {
        CategoryLine line = category("Category " + std::to_string(i), 10000 - i, i);
        for (int m = 0; m < 3; ++m)
            line.merchants.push_back({"key:m" + std::to_string(m),
                                      "Merchant " + std::to_string(m),
                                      (10000 - i) / 3,
                                      1,
                                      {}});
        many.push_back(line);
    }
    const PDFReportContent content = contentWith(many);
    PDFLayout layout(content, PDFReportStyle::precision, Skin::forest, measure);
    layout.compose();
    int tablePages = 0;
    for (const Page& page : layout.pages()) {
        if (!page.title.starts_with("Categories and merchants"))
            continue;
        ++tablePages;
        const auto words = texts(page.commands);
        ASSERT_GE(words.size(), 2u);
        EXPECT_EQ(words[0]->text, "CATEGORY / MERCHANT") << "each page starts with the header";
        // A category's heading row is followed on its page by its first merchant.
        for (std::size_t i = 0; i + 1 < words.size(); ++i) {
            if (words[i]->text.starts_with("Category ") && words[i]->font.bold) {
                const auto next = std::find_if(
                    words.begin() + static_cast<long>(i) + 1, words.end(),
                    [](const DrawCommand* c) { return c->text.starts_with("Merchant "); });
                EXPECT_NE(next, words.end()) << words[i]->text << " left without its merchants";
            }
        }
        for (const DrawCommand& command : page.commands)
            EXPECT_LE(command.rect.bottom(), PDFLayout::kBottom + 0.01) << command.text;
    }
    EXPECT_GE(tablePages, 2);
}

// A table's total row was carried alone to a new page, under a header with
// no rows of its own.
TEST_F(PDFLayoutTest, ATotalNeverOpensAPage) {
    for (int months = 1; months <= 40; ++months) {
        PDFReportContent content = contentWith({category("Groceries", 12000, 0)});
        content.report.months.clear();
        for (int i = 0; i < months; ++i)
            content.report.months.push_back({"2026-03", 0, 12000});
        PDFLayout layout(content, PDFReportStyle::precision, Skin::forest, measure);
        layout.compose();
        for (const Page& page : layout.pages()) {
            const auto words = texts(page.commands);
            for (std::size_t i = 1; i < words.size(); ++i) {
                if (words[i]->text.starts_with("Total") && words[i]->font.bold) {
                    EXPECT_NE(words[i - 1]->font.size, 7.5)
                        << months << " months: \"" << words[i]->text << "\" right under the header";
                }
            }
        }
    }
}

}  // namespace
}  // namespace copperwick::pdf
