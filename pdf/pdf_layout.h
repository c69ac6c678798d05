#pragma once

// The page composer of a printed report. It doesn't draw as it goes: it walks
// the report once, measures every piece of text, and records per page a list
// of drawing commands. Only when every page exists, and their number is
// known, is each page played inside its frame; that is what lets the footer
// say "3 / 7", and lets a section decide before it starts whether it fits.
//
// The text area runs from y 120 to y 718 and from x 42 to x 570 of a US
// Letter page. Colours come from the skin's print palette alone. Composing
// can't fail: text that is too long is measured and moved on.
//
// One layout makes one report, on one thread; not copyable.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/presentation/pdf_report_content.h"
#include "core/presentation/skin.h"
#include "pdf/draw_command.h"
#include "pdf/text_measure.h"

namespace copperwick::pdf {

class PDFLayout {
  public:
    static constexpr double kPageWidth = 612;
    static constexpr double kPageHeight = 792;
    static constexpr double kLeft = 42;
    static constexpr double kWidth = 528;
    static constexpr double kTop = 120;
    static constexpr double kBottom = 718;
    static constexpr double kRuleHeight = 0.6;
    // The accounts under the header are cut after this many characters.
    static constexpr std::size_t kAccountsLength = 102;

    // A line of the spending ring: a category, or the smaller ones together.
    struct RingLine {
        std::string name;
        int64_t amount = 0;
        bool grouped = false;

        friend bool operator==(const RingLine&, const RingLine&) = default;
    };

    PDFLayout(const PDFReportContent& content, PDFReportStyle style, Skin skin,
              const TextMeasure& measure);
    PDFLayout(const PDFLayout&) = delete;
    PDFLayout& operator=(const PDFLayout&) = delete;

    // Walks the whole report into pages, once.
    void compose();

    [[nodiscard]] const std::vector<Page>& pages() const { return m_pages; }
    // A page's frame (paper, header, footer, "n / total") followed by its
    // own commands: what is drawn, in order.
    [[nodiscard]] std::vector<DrawCommand> played(std::size_t pageIndex) const;

    // The pieces compose() is made of, open to tests.
    void newPage(std::string title);
    // A new page under `continuation` unless `height` fits above the foot.
    void ensure(double height, const std::string& continuation);
    // A heading with its rule, kept whole with `reserve` points below it.
    void section(const std::string& title, double reserve);
    // Text that flows on to new pages under `continuation` when it must.
    void paragraph(std::string_view text, const FontSpec& font, const RGB& colour, double gap,
                   const std::string& continuation, double indent = 0, bool bulleted = false);
    [[nodiscard]] double y() const { return m_y; }
    void moveTo(double y) { m_y = y; }

    // Whether `everyday` draws the spending ring rather than bars.
    [[nodiscard]] bool usesRing() const;
    // The categories by amount; from 8 on, the first 6 and the rest as one.
    [[nodiscard]] static std::vector<RingLine> ringLines(const std::vector<CategoryLine>& lines);
    // The largest size from `start` down by halves of a point, to `floor` at
    // the least, at which `text` is no wider than `width`.
    [[nodiscard]] double fittedSize(std::string_view text, FontSpec font, double floor,
                                    double width) const;
    // The account names, cut to kAccountsLength characters and ended with
    // "…" when longer.
    [[nodiscard]] static std::string accountsLine(const std::vector<std::string>& names);
    // The amount as a share of the report's spending; "—" without spending.
    [[nodiscard]] std::string share(int64_t amount) const;
    // Georgia (or the machine's serif) for the signature style, otherwise
    // the system font.
    [[nodiscard]] FontSpec headingFont(double size) const;
    [[nodiscard]] FontSpec bodyFont(double size, bool bold = false) const;

  private:
    // A table's columns: the first, titled, takes what the figure columns
    // leave; figures are right-aligned in columns of a fixed width.
    struct FigureColumn {
        std::string title;
        double width = 104;
    };
    struct Table {
        std::string title;
        std::vector<FigureColumn> figures;
        std::string continuation;
    };
    struct Row {
        std::string name;
        std::optional<std::string> detail;  // a second, smaller line
        std::vector<std::string> figures;
        double indent = 0;
        std::optional<MerchantIconDescriptor> badge;
        bool bold = false;
        bool total = false;
    };

    void coverPage();
    void metrics();
    void spendingByCategory();
    void ring();
    void categoryBars();
    void summary();
    void spendingAssignment();
    void categoriesAndMerchants();
    void monthByMonth();
    void incomeSources();
    void recurringCharges();
    void paymentServices();
    void savingsGoal();
    void aboutTheseNumbers();
    void reportCoverage();

    // The columns of the rows that follow; rows are measured against them.
    void setTable(Table table);
    // The header, on a new page unless the first row fits below it.
    void beginTable(double firstRowHeight);
    void tableHeader();
    // Carries the table to a new page, header and all, unless `height` fits.
    void tableSpace(double height);
    [[nodiscard]] double rowHeight(const Row& row) const;
    // A row, carried to a new page with the header unless it fits together
    // with `keepWith` points more.
    void tableRow(const Row& row, double keepWith = 0);
    [[nodiscard]] static Row total(std::string label, std::vector<std::string> figures);
    void totalRow(const Row& row);
    // The rows and their total, never a total alone at the top of a page.
    void tableRows(const std::vector<Row>& rows, const Row& closing);
    [[nodiscard]] double nameWidth(const Row& row) const;
    [[nodiscard]] std::vector<double> figureLefts() const;

    // Records a text and returns its height.
    double text(double x, double y, double width, std::string_view text, const FontSpec& font,
                const RGB& colour, TextAlign align = TextAlign::left);
    // A figure right-aligned in its column, shrunk until it fits.
    void figure(double x, double y, double width, std::string_view text, FontSpec font,
                const RGB& colour);
    void fill(const Rect& rect, const RGB& colour);
    void record(DrawCommand command);

    [[nodiscard]] std::string money(int64_t cents) const;
    [[nodiscard]] RGB chartColour(std::size_t place) const;
    [[nodiscard]] RGB toneColour(MerchantIconDescriptor::Tone tone) const;
    [[nodiscard]] std::optional<MerchantIconDescriptor> badgeFor(
        const MerchantLine& line, const CategoryLine& category) const;

    const PDFReportContent& m_content;
    PDFReportStyle m_style;
    const TextMeasure& m_measure;
    std::vector<Page> m_pages;
    double m_y = kTop;
    int m_sectionNumber = 0;
    std::optional<Table> m_table;

    RGB m_green;
    RGB m_sage;
    RGB m_pale;
    RGB m_ink;
    RGB m_muted;
    RGB m_ruleColor;
};

}  // namespace copperwick::pdf
