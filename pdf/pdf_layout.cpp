#include "pdf/pdf_layout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

#include <fmt/format.h>
#include <unicode/brkiter.h>
#include <unicode/timezone.h>

#include "core/model/checked.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/model/text.h"

namespace copperwick::pdf {

namespace {

constexpr double kRight = PDFLayout::kLeft + PDFLayout::kWidth;
constexpr RGB kWhite{1, 1, 1};
// Figures sit this far inside the table's band, and the first column this
// far from the first figure.
constexpr double kCellInset = 8;
constexpr double kBadgeSize = 14;

RGB mix(const RGB& from, const RGB& to, double t) {
    return {from.red + (to.red - from.red) * t, from.green + (to.green - from.green) * t,
            from.blue + (to.blue - from.blue) * t};
}

// Pango takes UTF-8 only; anything else is shown with replacement characters
// rather than not at all.
std::string printable(std::string_view text) {
    if (text::isValidUTF8(text))
        return std::string(text);
    return text::toUTF8(text::toUnicode(text));
}

// The day a report was made, by this computer's clock and zone.
std::string generatedOn(Instant at) {
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    return DateText::medium(LocalDate::today(*zone, at));
}

std::string coverText(PDFReportStyle style) {
    switch (style) {
        case PDFReportStyle::signature:
            return "Your finances,\nin perspective.";
        case PDFReportStyle::everyday:
            return "Your report,\nat a glance";
        case PDFReportStyle::precision:
            return "Financial statement";
    }
    return {};
}

}  // namespace

PDFLayout::PDFLayout(const PDFReportContent& content, PDFReportStyle style, Skin skin,
                     const TextMeasure& measure)
    : m_content(content), m_style(style), m_measure(measure) {
    const PrintPalette palette = printPalette(skin);
    m_green = palette.accent;
    m_sage = palette.soft;
    m_pale = palette.pale;
    m_ink = palette.ink;
    m_muted = palette.muted;
    m_ruleColor = palette.rule;
}

// ---- Fonts, colours and words ---------------------------------------------

FontSpec PDFLayout::headingFont(double size) const {
    if (m_style == PDFReportStyle::signature)
        return {std::string(m_measure.serifFamily()), size, false, false};
    return {std::string(TextMeasure::kSystemFamily), size, true, false};
}

FontSpec PDFLayout::bodyFont(double size, bool bold) const {
    return {std::string(TextMeasure::kSystemFamily), size, bold, false};
}

std::string PDFLayout::money(int64_t cents) const {
    return Money::format(cents, m_content.report.filter.currency);
}

std::string PDFLayout::share(int64_t amount) const {
    if (const auto tenths = Money::shareTenths(amount, m_content.report.spending))
        return Money::percentText(*tenths);
    return "\u2014";
}

// Seven tones of the palette, dark and light in turn so that neighbours in a
// chart stay apart, by the line's place in the chart.
RGB PDFLayout::chartColour(std::size_t place) const {
    const std::array<RGB, 7> tones{m_green,
                                   m_sage,
                                   mix(m_green, m_ink, 0.55),
                                   mix(m_sage, m_pale, 0.5),
                                   m_muted,
                                   mix(m_green, m_sage, 0.5),
                                   m_ruleColor};
    return tones[place % tones.size()];
}

// A badge's tone in the palette's own colours, so that every badge belongs
// to the page it is printed on.
RGB PDFLayout::toneColour(MerchantIconDescriptor::Tone tone) const {
    using Tone = MerchantIconDescriptor::Tone;
    switch (tone) {
        case Tone::forest:
            return m_green;
        case Tone::sage:
            return mix(m_sage, m_ink, 0.2);
        case Tone::ochre:
            return mix(m_green, m_ink, 0.5);
        case Tone::blue:
            return m_ink;
        case Tone::terracotta:
            return mix(m_muted, m_green, 0.4);
        case Tone::neutral:
            return m_muted;
    }
    return m_muted;
}

std::string PDFLayout::accountsLine(const std::vector<std::string>& names) {
    std::string line;
    for (const std::string& name : names) {
        if (!line.empty())
            line += ", ";
        line += name;
    }
    if (text::characterCount(line) <= kAccountsLength)
        return line;
    // Cut between characters as a person counts them, never inside one.
    const icu::UnicodeString unicode = text::toUnicode(line);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status))
        return line;
    characters->setText(unicode);
    int32_t end = characters->first();
    for (std::size_t i = 0; i < kAccountsLength && end != icu::BreakIterator::DONE; ++i)
        end = characters->next();
    if (end == icu::BreakIterator::DONE)
        return line;
    return text::toUTF8(unicode.tempSubString(0, end)) + "\u2026";
}

double PDFLayout::fittedSize(std::string_view text, FontSpec font, double floor,
                             double width) const {
    while (font.size > floor && m_measure.measure(text, font, 0).width > width)
        font.size = std::max(floor, font.size - 0.5);
    return font.size;
}

// ---- Recording ------------------------------------------------------------

void PDFLayout::record(DrawCommand command) {
    if (m_pages.empty())
        newPage("Report overview");
    m_pages.back().commands.push_back(std::move(command));
}

double PDFLayout::text(double x, double y, double width, std::string_view words,
                       const FontSpec& font, const RGB& colour, TextAlign align) {
    std::string shown = printable(words);
    const double height = m_measure.measure(shown, font, width).height;
    record({.kind = DrawCommand::Kind::text,
            .rect = {x, y, width, height},
            .colour = colour,
            .text = std::move(shown),
            .font = font,
            .align = align});
    return height;
}

void PDFLayout::figure(double x, double y, double width, std::string_view words, FontSpec font,
                       const RGB& colour) {
    font.size = fittedSize(words, font, 7, width);
    text(x, y, width, words, font, colour, TextAlign::right);
}

void PDFLayout::fill(const Rect& rect, const RGB& colour) {
    record({.kind = DrawCommand::Kind::fill, .rect = rect, .colour = colour});
}

// ---- Pages, sections and text ---------------------------------------------

void PDFLayout::newPage(std::string title) {
    m_pages.push_back({std::move(title), {}});
    m_y = kTop;
}

void PDFLayout::ensure(double height, const std::string& continuation) {
    if (m_y + height > kBottom)
        newPage(continuation);
}

void PDFLayout::section(const std::string& title, double reserve) {
    const std::string shown = m_style == PDFReportStyle::precision
                                  ? fmt::format("{:02d}  {}", m_sectionNumber + 1, title)
                                  : title;
    const FontSpec font = headingFont(m_style == PDFReportStyle::signature ? 19 : 14);
    const double height = std::ceil(m_measure.measure(shown, font, kWidth).height) + 2;
    // Air above a section that follows something on its page; none at a top.
    const double above = m_y > kTop ? (m_style == PDFReportStyle::signature ? 16 : 10) : 0;
    if (m_y + above + reserve + height + 26 > kBottom)
        newPage(title);
    else
        m_y += above;
    ++m_sectionNumber;
    const RGB ruleColour = m_style == PDFReportStyle::precision  ? m_ink
                           : m_style == PDFReportStyle::everyday ? m_sage
                                                                 : m_ruleColor;
    fill({kLeft, m_y, kWidth, kRuleHeight}, ruleColour);
    m_y += 14;
    text(kLeft, m_y, kWidth, shown, font, m_style == PDFReportStyle::signature ? m_green : m_ink);
    m_y += height + (m_style == PDFReportStyle::signature ? 10 : 8);
}

void PDFLayout::paragraph(std::string_view words, const FontSpec& font, const RGB& colour,
                          double gap, const std::string& continuation, double indent,
                          bool bulleted) {
    const std::string all = printable(words);
    std::string_view rest = text::trimmed(all);
    if (rest.empty())
        return;
    const double x = kLeft + indent;
    const double width = kWidth - indent;
    bool first = true;
    while (true) {
        if (kBottom - m_y < 24)
            newPage(continuation);
        std::size_t fits = m_measure.fittingPrefix(rest, font, width, kBottom - m_y);
        if (fits == 0) {
            // Not one line fits here; on a fresh page everything goes, as
            // nothing would fit better on the next.
            if (m_y > kTop) {
                newPage(continuation);
                continue;
            }
            fits = rest.size();
        }
        const std::string_view part = text::trimmed(rest.substr(0, fits));
        const double top = m_y;
        m_y += text(x, top, width, part, font, colour);
        if (bulleted && first)
            text(x - 11, top, 10, "\u2022", font,
                 m_style == PDFReportStyle::precision ? m_ink : m_green);
        first = false;
        rest = text::trimmed(rest.substr(fits));
        if (rest.empty())
            break;
        newPage(continuation);
    }
    m_y += gap;
}

// ---- The order of composing -----------------------------------------------

void PDFLayout::compose() {
    m_pages.clear();
    m_sectionNumber = 0;
    coverPage();
    metrics();
    spendingByCategory();
    summary();
    spendingAssignment();
    categoriesAndMerchants();
    newPage("Income and report details");
    monthByMonth();
    incomeSources();
    recurringCharges();
    paymentServices();
    savingsGoal();
    aboutTheseNumbers();
    reportCoverage();
}

void PDFLayout::coverPage() {
    newPage("Report overview");
    const Report& report = m_content.report;
    const FontSpec cover = headingFont(m_style == PDFReportStyle::precision ? 27 : 32);
    m_y += text(kLeft, m_y, kWidth, coverText(m_style), cover,
                m_style == PDFReportStyle::precision ? m_ink : m_green);
    m_y += 12;
    m_y += text(kLeft, m_y, kWidth, report.filter.span.label(), bodyFont(13), m_ink);
    m_y += 3;
    m_y += text(kLeft, m_y, kWidth,
                DateText::range(report.filter.span.start, report.filter.span.end) +
                    "\nScope: " + report.scopeLabel,
                bodyFont(10), m_muted);
    m_y += 18;
}

void PDFLayout::metrics() {
    const Report& report = m_content.report;
    ensure(98, "Report continued");
    const int64_t net = checked::sub(report.income, report.spending);
    const auto ofIncome = [&](std::optional<int64_t> tenths) {
        return tenths ? Money::percentText(*tenths) + " of income" : "No income recorded";
    };
    const std::array<std::array<std::string, 3>, 3> panels{{
        {"INCOME", money(report.income), std::to_string(report.incomeSources.size()) + " sources"},
        {"SPENDING", money(report.spending),
         ofIncome(Money::shareTenths(report.spending, report.income))},
        {"NET CASH FLOW", money(net), ofIncome(report.savingsRateTenths())},
    }};
    const double top = m_y;
    for (std::size_t i = 0; i < panels.size(); ++i) {
        const double x = kLeft + 180 * static_cast<double>(i);
        const Rect panel{x, top, 168, 80};
        if (m_style == PDFReportStyle::everyday)
            record({.kind = DrawCommand::Kind::roundedFill,
                    .rect = panel,
                    .colour = m_pale,
                    .radius = 7});
        else
            record({.kind = DrawCommand::Kind::roundedFrame,
                    .rect = panel,
                    .colour = m_style == PDFReportStyle::precision ? m_ink : m_ruleColor,
                    .radius = 7,
                    .lineWidth = m_style == PDFReportStyle::precision ? 0.8 : 0.6});
        text(x + 8, top + 10, 152, panels[i][0], bodyFont(7.5, true),
             m_style == PDFReportStyle::everyday ? m_green : m_muted);
        FontSpec amount =
            m_style == PDFReportStyle::signature ? headingFont(23) : bodyFont(23, true);
        amount.size = fittedSize(panels[i][1], amount, 7, 152);
        const double amountHeight = m_measure.measure(panels[i][1], amount, 0).height;
        // Smaller figures stay centred on the line a full-size one takes.
        text(x + 8, top + 24 + std::max(0.0, (28 - amountHeight) / 2), 152, panels[i][1], amount,
             m_ink);
        text(x + 8, top + 58, 152, panels[i][2], bodyFont(8), m_muted);
    }
    m_y = top + 98;
}

std::vector<PDFLayout::RingLine> PDFLayout::ringLines(const std::vector<CategoryLine>& lines) {
    std::vector<const CategoryLine*> ordered;
    for (const CategoryLine& line : lines)
        ordered.push_back(&line);
    std::stable_sort(
        ordered.begin(), ordered.end(),
        [](const CategoryLine* a, const CategoryLine* b) { return a->amount > b->amount; });
    std::vector<RingLine> ring;
    const std::size_t shown = ordered.size() < 8 ? ordered.size() : 6;
    for (std::size_t i = 0; i < shown; ++i)
        ring.push_back({ordered[i]->name, ordered[i]->amount, false});
    if (shown < ordered.size()) {
        int64_t rest = 0;
        for (std::size_t i = shown; i < ordered.size(); ++i)
            rest = checked::add(rest, ordered[i]->amount);
        ring.push_back(
            {"Other categories (" + std::to_string(ordered.size() - shown) + ")", rest, true});
    }
    return ring;
}

bool PDFLayout::usesRing() const {
    const Report& report = m_content.report;
    if (m_style != PDFReportStyle::everyday || report.spending < 1 || report.categories.empty())
        return false;
    for (const CategoryLine& line : report.categories) {
        if (line.amount <= 0)
            return false;
    }
    for (const RingLine& line : ringLines(report.categories)) {
        if (m_measure.measure(line.name, bodyFont(9.5), 190).height > 18)
            return false;
    }
    return true;
}

void PDFLayout::spendingByCategory() {
    section("Spending by category", 100);
    if (m_content.report.categories.empty()) {
        paragraph("No spending in this period.", bodyFont(10), m_muted, 6,
                  "Spending by category continued");
        return;
    }
    if (usesRing())
        ring();
    else
        categoryBars();
}

void PDFLayout::ring() {
    const std::string continuation = "Spending by category continued";
    ensure(190, continuation);
    const std::vector<RingLine> lines = ringLines(m_content.report.categories);
    const double top = m_y;
    const double outer = 80;
    const double thickness = 24;
    const Rect box{kLeft + 5, top, outer * 2, outer * 2};
    const double whole = static_cast<double>(m_content.report.spending);
    const RGB grouped = mix(m_ruleColor, m_pale, 0.5);
    double angle = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const RingLine& line = lines[i];
        const double sweep = 2 * std::numbers::pi * static_cast<double>(line.amount) / whole;
        // A hairline of paper between neighbours, where there are any.
        const double gap = lines.size() > 1 ? std::min(0.012, sweep / 4) : 0;
        record({.kind = DrawCommand::Kind::arc,
                .rect = box,
                .colour = line.grouped ? grouped : chartColour(i),
                .lineWidth = thickness,
                .startAngle = angle + gap,
                .endAngle = angle + sweep - gap});
        angle += sweep;
    }
    const double inner = (outer - thickness) * 2 - 12;
    const double centreX = box.x + outer;
    const double centreY = box.y + outer;
    text(centreX - inner / 2, centreY - 17, inner, "TOTAL SPENDING", bodyFont(6.5, true), m_muted,
         TextAlign::center);
    FontSpec amount = bodyFont(13, true);
    amount.size = fittedSize(money(m_content.report.spending), amount, 7, inner);
    text(centreX - inner / 2, centreY - 5, inner, money(m_content.report.spending), amount, m_ink,
         TextAlign::center);

    const double legendTop =
        top + std::max(0.0, (outer * 2 - 25 * static_cast<double>(lines.size())) / 2);
    bool anyGrouped = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const RingLine& line = lines[i];
        anyGrouped = anyGrouped || line.grouped;
        const double rowY = legendTop + 25 * static_cast<double>(i) + 6;
        const double height = text(244, rowY, 190, line.name, bodyFont(9.5), m_ink);
        record({.kind = DrawCommand::Kind::circle,
                .rect = {228, rowY + (height - 8) / 2, 8, 8},
                .colour = line.grouped ? grouped : chartColour(i)});
        text(436, rowY + 0.5, 44, share(line.amount), bodyFont(8.5), m_muted, TextAlign::right);
        figure(484, rowY, kRight - 484, money(line.amount), bodyFont(9.5, true), m_ink);
    }
    m_y = top + 190;
    if (anyGrouped)
        paragraph(
            "Smaller categories are grouped in this chart. Every category appears "
            "separately in the detailed ledger.",
            bodyFont(8.5), m_muted, 6, continuation);
}

void PDFLayout::categoryBars() {
    const std::string continuation = "Spending by category continued";
    const Report& report = m_content.report;
    int64_t largest = 0;
    for (const CategoryLine& line : report.categories)
        largest = std::max(largest, line.amount < 0 ? -line.amount : line.amount);
    // A statement's bars are square-cut; the other styles round them off.
    const double radius = m_style == PDFReportStyle::precision ? 1.5 : 5.5;
    for (std::size_t i = 0; i < report.categories.size(); ++i) {
        const CategoryLine& line = report.categories[i];
        // Understated bars for the formal styles; the chart's tones for everyday.
        const RGB barColour = m_style == PDFReportStyle::everyday    ? chartColour(i)
                              : m_style == PDFReportStyle::signature ? m_green
                                                                     : mix(m_ink, m_green, 0.35);
        const double nameHeight = m_measure.measure(line.name, bodyFont(10), 155).height;
        const double rowHeight = std::max(30.0, nameHeight + 14);
        ensure(rowHeight, continuation);
        text(kLeft, m_y + (rowHeight - nameHeight) / 2, 155, line.name, bodyFont(10), m_ink);
        const Rect track{207, m_y + (rowHeight - 11) / 2, 190, 11};
        record({.kind = DrawCommand::Kind::roundedFill,
                .rect = track,
                .colour = m_pale,
                .radius = radius});
        if (line.amount > 0 && largest > 0) {
            const double filled =
                std::max(2 * radius, track.width * static_cast<double>(line.amount) /
                                         static_cast<double>(largest));
            record({.kind = DrawCommand::Kind::roundedFill,
                    .rect = {track.x, track.y, filled, track.height},
                    .colour = barColour,
                    .radius = radius});
        }
        const double figureY = m_y + (rowHeight - 12) / 2;
        text(405, figureY + 0.5, 50, share(line.amount), bodyFont(8.5), m_muted, TextAlign::right);
        figure(kRight - 104, figureY, 104, money(line.amount), bodyFont(10, true), m_ink);
        m_y += rowHeight;
    }
    m_y += 6;
    paragraph("Net spending after refunds \u00B7 negative amounts represent net refunds.",
              bodyFont(8.5), m_muted, 6, continuation);
}

void PDFLayout::summary() {
    if (m_content.summary.empty())
        return;
    const std::string continuation = "Summary continued";
    section(m_content.summaryIsAI ? "Summary" : "Key facts", 40);
    for (const std::string& bullet : m_content.summary)
        paragraph(bullet, bodyFont(10), m_ink, 6, continuation, 14, true);
    if (m_content.summaryIsAI)
        paragraph(
            "Written by Local AI on this computer from Copperwick's figures; every number "
            "was checked.",
            {std::string(TextMeasure::kSystemFamily), 8.5, false, true}, m_muted, 6, continuation);
}

void PDFLayout::spendingAssignment() {
    if (m_content.allocation.empty())
        return;
    const std::string continuation = "Spending assignment continued";
    section("Spending assignment", 70);
    paragraph(
        "Within this report; each expense is counted once. Assignments can differ from who "
        "uses a card.",
        bodyFont(9), m_muted, 8, continuation);
    std::vector<Row> rows;
    int64_t sum = 0;
    for (const PDFReportContent::Allocation& line : m_content.allocation) {
        rows.push_back({.name = line.name, .figures = {share(line.amount), money(line.amount)}});
        sum = checked::add(sum, line.amount);
    }
    setTable({"ASSIGNED", {{"SHARE", 56}, {"AMOUNT", 104}}, continuation});
    beginTable(rowHeight(rows[0]));
    tableRows(rows, total("Total spending", {"", money(sum)}));
}

std::optional<MerchantIconDescriptor> PDFLayout::badgeFor(const MerchantLine& line,
                                                          const CategoryLine& category) const {
    if (const auto id = Uuid::parse(line.id)) {
        if (const auto found = m_content.merchantIcons.find(*id);
            found != m_content.merchantIcons.end())
            return found->second;
    }
    // A line known by its bank text alone wears the badge its name and
    // category give it.
    std::optional<std::string_view> categoryName;
    if (category.categoryID)
        categoryName = category.name;
    return MerchantIconCatalog::shared().descriptor(line.name, categoryName,
                                                    TransactionKind::expense);
}

void PDFLayout::categoriesAndMerchants() {
    newPage("Categories and merchants");
    const std::string continuation = "Categories and merchants continued";
    const Report& report = m_content.report;
    if (report.categories.empty()) {
        paragraph("No spending in this period.", bodyFont(10), m_muted, 6, continuation);
        return;
    }
    const Table table{
        "CATEGORY / MERCHANT", {{"COUNT", 56}, {"SHARE", 56}, {"AMOUNT", 104}}, continuation};
    setTable(table);
    const Row closing = total("Total spending", {"", "", money(report.spending)});
    bool started = false;
    for (const CategoryLine& category : report.categories) {
        const Row heading{.name = category.name,
                          .figures = {std::to_string(category.count), share(category.amount),
                                      money(category.amount)},
                          .bold = true};
        std::vector<Row> merchants;
        for (const MerchantLine& merchant : category.merchants)
            merchants.push_back({.name = merchant.name,
                                 .figures = {std::to_string(merchant.count), share(merchant.amount),
                                             money(merchant.amount)},
                                 .indent = 12,
                                 .badge = badgeFor(merchant, category)});
        // A category keeps its first merchants with it, up to 180 points.
        const double headingHeight = rowHeight(heading);
        double block = headingHeight;
        for (const Row& merchant : merchants) {
            if (block >= 180)
                break;
            block += rowHeight(merchant);
        }
        const double asked = std::max(headingHeight, std::min(180.0, block));
        if (!started) {
            beginTable(asked);
            started = true;
        }
        tableSpace(asked);
        const bool last = &category == &report.categories.back();
        tableRow(heading, last && merchants.empty() ? rowHeight(closing) : 0);
        for (std::size_t i = 0; i < merchants.size(); ++i)
            tableRow(merchants[i], last && i + 1 == merchants.size() ? rowHeight(closing) : 0);
    }
    totalRow(closing);
}

void PDFLayout::monthByMonth() {
    const std::string continuation = "Month by month continued";
    section("Month by month", 60);
    const Report& report = m_content.report;
    std::vector<Row> rows;
    for (const MonthLine& month : report.months)
        rows.push_back(
            {.name = DateText::monthLabel(month.monthKey),
             .figures = {money(month.income), money(month.spending), money(month.net())}});
    if (rows.empty()) {
        paragraph("No months in this period.", bodyFont(10), m_muted, 6, continuation);
        return;
    }
    setTable({"MONTH", {{"INCOME", 104}, {"SPENDING", 104}, {"NET", 104}}, continuation});
    beginTable(rowHeight(rows[0]));
    tableRows(rows, total("Total",
                          {money(report.income), money(report.spending), money(report.savings())}));
}

void PDFLayout::incomeSources() {
    const std::string continuation = "Income sources continued";
    section("Income sources", 60);
    const Report& report = m_content.report;
    if (report.incomeSources.empty()) {
        paragraph("No income in this period.", bodyFont(10), m_muted, 6, continuation);
        return;
    }
    std::vector<Row> rows;
    for (const MerchantLine& source : report.incomeSources)
        rows.push_back(
            {.name = source.name, .figures = {std::to_string(source.count), money(source.amount)}});
    setTable({"INCOME SOURCES", {{"COUNT", 56}, {"AMOUNT", 104}}, continuation});
    beginTable(rowHeight(rows[0]));
    tableRows(rows, total("Total income", {"", money(report.income)}));
}

void PDFLayout::recurringCharges() {
    if (m_content.recurring.empty())
        return;
    const std::string continuation = "Recurring charges continued";
    section("Recurring charges", 60);
    std::vector<Row> rows;
    for (const RecurringCharge& charge : m_content.recurring) {
        std::string frequency(label(charge.cadence));
        if (charge.priceChanged())
            frequency += " \u00B7 price changed";
        Row row{.name = charge.merchantName,
                .detail = frequency,
                .figures = {DateText::medium(charge.lastDate), money(charge.typicalAmount)}};
        if (const auto id = Uuid::parse(charge.id)) {
            if (const auto found = m_content.merchantIcons.find(*id);
                found != m_content.merchantIcons.end())
                row.badge = found->second;
        }
        rows.push_back(std::move(row));
    }
    setTable({"MERCHANT / FREQUENCY", {{"LAST CHARGE", 104}, {"TYPICAL", 104}}, continuation});
    beginTable(rowHeight(rows[0]));
    for (const Row& row : rows)
        tableRow(row);
}

void PDFLayout::paymentServices() {
    const PaymentActivity& payments = m_content.payments;
    if (payments.lines.empty())
        return;
    const std::string continuation = "Payment services continued";
    section("Payment services", 70);
    for (const PaymentActivityLine& line : payments.lines) {
        const std::string title =
            std::string(name(line.service)) + " \u00B7 " + printable(line.name);
        const std::string amounts = "Sent " + money(line.sent) + " \u00B7 Received " +
                                    money(line.received) + " \u00B7 Net " + money(line.net());
        const double titleHeight = m_measure.measure(title, bodyFont(9.5, true), kWidth).height;
        const double amountsHeight = m_measure.measure(amounts, bodyFont(9), kWidth).height;
        ensure(titleHeight + amountsHeight + 8, continuation);
        m_y += text(kLeft, m_y, kWidth, title, bodyFont(9.5, true), m_ink);
        m_y += text(kLeft, m_y + 1, kWidth, amounts, bodyFont(9), m_muted) + 9;
    }
    paragraph(
        "These are account flows, not additional spending or income. Net = received minus "
        "sent. Display choices do not change the totals.",
        bodyFont(8.5), m_muted, 6, continuation);
}

void PDFLayout::savingsGoal() {
    if (!m_content.savingsGoal)
        return;
    const SavingsGoal& goal = *m_content.savingsGoal;
    const std::string title = goal.title();
    section(title, 40);
    const std::string continuation = title + " continued";
    ensure(18, continuation);
    const Rect track{kLeft, m_y, kWidth, 8};
    record({.kind = DrawCommand::Kind::roundedFill, .rect = track, .colour = m_pale, .radius = 4});
    if (goal.target > 0 && goal.barValue() > 0)
        record({.kind = DrawCommand::Kind::roundedFill,
                .rect = {track.x, track.y,
                         std::max(track.height, track.width * static_cast<double>(goal.barValue()) /
                                                    static_cast<double>(goal.target)),
                         track.height},
                .colour = m_green,
                .radius = 4});
    m_y += 18;
    paragraph(Money::format(goal.saved, goal.currency) + " of " +
                  Money::format(goal.target, goal.currency) +
                  ". Filed, posted income minus spending for complete months. Pending and review "
                  "items are excluded; not a bank balance.",
              bodyFont(10), m_ink, 6, continuation);
}

void PDFLayout::aboutTheseNumbers() {
    const std::string continuation = "About these numbers continued";
    section("About these numbers", 40);
    const Report& report = m_content.report;
    if (report.showsGiftsReceived())
        paragraph("Income includes " + money(report.giftsReceived) +
                      " of gifts received, which Copperwick shows as its own line.",
                  bodyFont(9.5), m_ink, 6, continuation);
    paragraph(
        "Posted transactions only. Transfers and card payments are excluded from income and "
        "spending. Refunds reduce spending. Local AI filings that are already counted "
        "remain marked in the report notes.",
        bodyFont(9.5), m_ink, 6, continuation);
    paragraph("Transfers and card payments: " + std::to_string(report.transferCount) +
                  " transactions (" + money(report.transferVolume) + " moved).\nNeeding review: " +
                  std::to_string(report.unknownCount) + " transactions, " +
                  money(report.unknownIn) + " in and " + money(checked::neg(report.unknownOut)) +
                  " out; pending: " + std::to_string(report.pendingCount) +
                  (report.pendingCount == 1 ? " charge, " : " charges, ") +
                  money(report.pendingTotal) + ".",
              bodyFont(9.5), m_ink, 6, continuation);
}

void PDFLayout::reportCoverage() {
    const std::string continuation = "Report coverage continued";
    section("Report coverage", 40);
    for (const DataNote& note : m_content.report.notes)
        paragraph(note.text, bodyFont(9.5), m_ink, 5, continuation, 14, true);
    const double generatedTop = m_y + 4;
    m_y = generatedTop;
    paragraph("Generated " + generatedOn(m_content.generatedAt) + " \u00B7 " +
                  std::string(rawValue(m_style)) + " style\nMade on this computer by Copperwick.",
              bodyFont(8.5), m_muted, 0, continuation);
}

// ---- Tables ---------------------------------------------------------------

std::vector<double> PDFLayout::figureLefts() const {
    std::vector<double> lefts(m_table->figures.size());
    double right = kRight - kCellInset;
    for (std::size_t i = lefts.size(); i-- > 0;) {
        lefts[i] = right - m_table->figures[i].width;
        right = lefts[i] - kCellInset;
    }
    return lefts;
}

double PDFLayout::nameWidth(const Row& row) const {
    const double start = kLeft + kCellInset + row.indent + (row.badge ? kBadgeSize + 6 : 0);
    const double end = m_table->figures.empty() ? kRight - kCellInset : figureLefts().front() - 12;
    return end - start;
}

double PDFLayout::rowHeight(const Row& row) const {
    double height =
        m_measure.measure(row.name, bodyFont(9.5, row.bold || row.total), nameWidth(row)).height;
    if (row.detail)
        height += 1 + m_measure.measure(*row.detail, bodyFont(8), nameWidth(row)).height;
    return std::max(25.0, height + 14);
}

void PDFLayout::setTable(Table table) {
    m_table = std::move(table);
}

void PDFLayout::beginTable(double firstRowHeight) {
    ensure(24 + firstRowHeight, m_table->continuation);
    tableHeader();
}

void PDFLayout::tableHeader() {
    fill({kLeft, m_y, kWidth, 24}, m_pale);
    const FontSpec font = bodyFont(7.5, true);
    const RGB colour = m_style == PDFReportStyle::precision ? m_ink : m_muted;
    const std::vector<double> lefts = figureLefts();
    text(kLeft + kCellInset, m_y + 8, kWidth / 2, m_table->title, font, colour);
    for (std::size_t i = 0; i < lefts.size(); ++i)
        text(lefts[i], m_y + 8, m_table->figures[i].width, m_table->figures[i].title, font, colour,
             TextAlign::right);
    m_y += 24;
}

void PDFLayout::tableSpace(double height) {
    if (m_y + height <= kBottom)
        return;
    newPage(m_table->continuation);
    tableHeader();
}

void PDFLayout::tableRow(const Row& row, double keepWith) {
    const double height = rowHeight(row);
    tableSpace(height + keepWith);
    const double top = m_y;
    double x = kLeft + kCellInset + row.indent;
    const FontSpec nameFont = bodyFont(9.5, row.bold || row.total);
    const double lineHeight = m_measure.measure("Ag", nameFont, 0).height;
    if (row.badge) {
        record({.kind = DrawCommand::Kind::badge,
                .rect = {x, top + 7 + (lineHeight - kBadgeSize) / 2, kBadgeSize, kBadgeSize},
                .colour = toneColour(row.badge->tone),
                .badge = row.badge});
        x += kBadgeSize + 6;
    }
    const double width = nameWidth(row);
    const double nameHeight =
        text(x, top + 7, width, row.name, nameFont, row.indent > 0 ? m_muted : m_ink);
    if (row.detail)
        text(x, top + 8 + nameHeight, width, *row.detail, bodyFont(8), m_muted);
    const std::vector<double> lefts = figureLefts();
    for (std::size_t i = 0; i < lefts.size() && i < row.figures.size(); ++i) {
        if (row.figures[i].empty())
            continue;
        figure(lefts[i], top + 7, m_table->figures[i].width, row.figures[i],
               bodyFont(9.5, row.bold || row.total), row.indent > 0 ? m_muted : m_ink);
    }
    fill({kLeft, top + height - kRuleHeight, kWidth, kRuleHeight}, row.total ? m_ink : m_ruleColor);
    m_y = top + height;
}

PDFLayout::Row PDFLayout::total(std::string label, std::vector<std::string> figures) {
    return {.name = std::move(label), .figures = std::move(figures), .total = true};
}

void PDFLayout::totalRow(const Row& row) {
    tableRow(row);
    m_y += 6;
}

void PDFLayout::tableRows(const std::vector<Row>& rows, const Row& closing) {
    // The last row goes with the total, so that a total never opens a page.
    for (std::size_t i = 0; i < rows.size(); ++i)
        tableRow(rows[i], i + 1 == rows.size() ? rowHeight(closing) : 0);
    totalRow(closing);
}

// ---- The frame --------------------------------------------------------------

std::vector<DrawCommand> PDFLayout::played(std::size_t pageIndex) const {
    const Report& report = m_content.report;
    const Page& page = m_pages.at(pageIndex);
    const bool banded = m_style == PDFReportStyle::everyday;
    std::vector<DrawCommand> commands;
    const auto add = [&](DrawCommand command) { commands.push_back(std::move(command)); };
    const auto words = [&](Rect rect, std::string_view said, FontSpec font, RGB colour,
                           TextAlign align = TextAlign::left) {
        std::string shown = printable(said);
        rect.height = m_measure.measure(shown, font, rect.width).height;
        add({.kind = DrawCommand::Kind::text,
             .rect = rect,
             .colour = colour,
             .text = std::move(shown),
             .font = std::move(font),
             .align = align});
    };

    add({.kind = DrawCommand::Kind::fill,
         .rect = {0, 0, kPageWidth, kPageHeight},
         .colour = kWhite});
    if (banded)
        add({.kind = DrawCommand::Kind::fill, .rect = {0, 0, kPageWidth, 62}, .colour = m_green});

    // The brand mark: the app icon's tile with its stripe, small.
    const RGB tile = banded ? kWhite : m_green;
    add({.kind = DrawCommand::Kind::roundedFill,
         .rect = {kLeft, 24, 18, 18},
         .colour = tile,
         .radius = 4.5});
    add({.kind = DrawCommand::Kind::fill,
         .rect = {kLeft, 33.5, 18, 3.5},
         .colour = banded ? m_green : m_sage});
    const FontSpec brand = m_style == PDFReportStyle::signature
                               ? FontSpec{std::string(m_measure.serifFamily()), 16, false, false}
                               : FontSpec{std::string(TextMeasure::kSystemFamily), 14, true, false};
    words({67, 27, 160, 0}, "Copperwick", brand, banded ? kWhite : m_green);
    words({230, 30, 340, 0}, std::string(name(m_style)) + " \u00B7 " + page.title, bodyFont(9),
          banded ? m_pale : m_muted, TextAlign::right);

    const std::string scopeLine = report.filter.span.label() + " \u00B7 " + report.scopeLabel;
    const double scopeHeight = m_measure.measure(scopeLine, bodyFont(10.5, true), kWidth).height;
    words({kLeft, 72, kWidth, 0}, scopeLine, bodyFont(10.5, true), m_ink);
    const std::string accounts = accountsLine(report.accountNames);
    if (!accounts.empty())
        words({kLeft, 72 + scopeHeight + 2, kWidth, 0}, accounts, bodyFont(8.5), m_muted);

    add({.kind = DrawCommand::Kind::fill,
         .rect = {kLeft, 733, kWidth, kRuleHeight},
         .colour = m_ruleColor});
    words({kLeft, 745, 390, 0}, "Posted only \u00B7 Transfers excluded \u00B7 Refunds netted",
          bodyFont(7.5), m_muted);
    words({490, 744, 80, 0}, std::to_string(pageIndex + 1) + " / " + std::to_string(m_pages.size()),
          bodyFont(8), m_muted, TextAlign::right);

    commands.insert(commands.end(), page.commands.begin(), page.commands.end());
    return commands;
}

}  // namespace copperwick::pdf
