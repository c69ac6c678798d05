#include "app/import/import_plan_summary.h"

#include <array>

#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/widgets/enter_presses.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/reflow_grid_layout.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"
#include "core/import/import_words.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "runtime/instant_text.h"

namespace copperwick::app {

namespace {

enum FigureIndex : std::size_t {
    kRows,
    kNew,
    kSaved,
    kReplace,
    kHeld,
    kUnread,
    kMoneyIn,
    kMoneyOut,
    kDates,
    kBlank,
    kFigureCount,
};

constexpr std::array<const char*, kFigureCount> kCaptions{
    "Rows in file",  "New",      "Already saved", "Replace pending", "Held for you",
    "Couldn't read", "Money in", "Money out",     "Dates",           "Blank or summary lines",
};

constexpr int kFigureColumns = 5;
constexpr int kListRows = 6;

const QString kHeldNote = QStringLiteral(
    "These look like transactions you already have, but aren't exact matches (the bank may "
    "have reworded them). They're not imported unless you turn them on.");
const QString kIssueNote =
    QStringLiteral("Some rows couldn't be read. Fix the file, or choose to skip those rows.");

QString count(int64_t value) {
    return value < 0 ? QString::number(value)
                     : toQString(Money::grouped(static_cast<uint64_t>(value)));
}

QString datesText(const ImportPlan& plan) {
    const auto first = plan.firstDate();
    const auto last = plan.lastDate();
    if (!first || !last)
        return QStringLiteral("None");
    if (*first == *last)
        return toQString(DateText::medium(*first));
    return toQString(DateText::medium(*first) + " – " + DateText::medium(*last));
}

QString rowText(LocalDate date, std::string_view description, int64_t amount,
                std::string_view currency) {
    return toQString(DateText::medium(date) + " · " + std::string(description) + " · " +
                     Money::format(amount, currency));
}

}  // namespace

ImportPlanSummary::ImportPlanSummary(QWidget* parent)
    : QWidget(parent),
      m_previous(new QWidget(this)),
      m_previousText(secondaryLabel({}, m_previous)),
      m_previewToggle(new QToolButton(this)),
      m_preview(new QTreeWidget(this)),
      m_heldSection(new QWidget(this)),
      m_heldTitle(headingLabel({}, m_heldSection)),
      m_held(new QListWidget(m_heldSection)),
      m_issueSection(new QWidget(this)),
      m_issueTitle(headingLabel({}, m_issueSection)),
      m_issues(new QListWidget(m_issueSection)),
      m_skipProblemRows(
          new QCheckBox(QStringLiteral("Import the other rows and skip these"), m_issueSection)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);

    auto* previousRow = new QHBoxLayout(m_previous);
    previousRow->setContentsMargins(0, 0, 0, 0);
    previousRow->setSpacing(8);
    previousRow->addWidget(new SymbolView("clock.arrow.circlepath", 16, m_previous), 0,
                           Qt::AlignTop);
    m_previousText->setForegroundRole(QPalette::WindowText);
    previousRow->addWidget(m_previousText, 1);
    layout->addWidget(m_previous);

    layout->addWidget(makeFigures());

    // The first rows, folded away until asked for; the fold stays as it was
    // whenever the plan changes.
    const QString previewTitle = QStringLiteral("Preview the first rows");
    m_previewToggle->setText(previewTitle);
    m_previewToggle->setAccessibleName(previewTitle);
    m_previewToggle->setCheckable(true);
    m_previewToggle->setAutoRaise(true);
    m_previewToggle->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_previewToggle->setArrowType(Qt::RightArrow);
    pressOnEnter(m_previewToggle);
    layout->addWidget(m_previewToggle, 0, Qt::AlignLeft);
    m_preview->setAccessibleName(previewTitle);
    m_preview->setColumnCount(4);
    m_preview->setHeaderHidden(true);
    m_preview->setRootIsDecorated(false);
    m_preview->setSelectionMode(QAbstractItemView::NoSelection);
    m_preview->setFocusPolicy(Qt::NoFocus);
    m_preview->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_preview->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_preview->header()->setStretchLastSection(false);
    m_preview->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_preview->header()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_preview->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    m_preview->header()->setSectionResizeMode(3, QHeaderView::ResizeToContents);
    m_preview->setVisible(false);
    layout->addWidget(m_preview);
    connect(m_previewToggle, &QToolButton::toggled, this, [this](bool open) {
        m_previewToggle->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
        m_preview->setVisible(open);
    });

    auto* held = new QVBoxLayout(m_heldSection);
    held->setContentsMargins(0, 0, 0, 0);
    held->setSpacing(6);
    held->addWidget(m_heldTitle);
    held->addWidget(secondaryLabel(kHeldNote, m_heldSection));
    m_held->setAccessibleName(QStringLiteral("Possible duplicates held back"));
    m_held->setSelectionMode(QAbstractItemView::SingleSelection);
    m_held->setWordWrap(true);
    m_held->setSpacing(2);
    held->addWidget(m_held);
    layout->addWidget(m_heldSection);
    connect(m_held, &QListWidget::itemChanged, this, &ImportPlanSummary::heldItemChanged);

    auto* issues = new QVBoxLayout(m_issueSection);
    issues->setContentsMargins(0, 0, 0, 0);
    issues->setSpacing(6);
    issues->addWidget(m_issueTitle);
    m_issues->setAccessibleName(QStringLiteral("Rows Copperwick couldn't read"));
    m_issues->setSelectionMode(QAbstractItemView::SingleSelection);
    m_issues->setSpacing(2);
    issues->addWidget(m_issues);
    issues->addWidget(secondaryLabel(kIssueNote, m_issueSection));
    m_skipProblemRows->setAccessibleName(m_skipProblemRows->text());
    issues->addWidget(m_skipProblemRows);
    layout->addWidget(m_issueSection);
    connect(m_skipProblemRows, &QCheckBox::toggled, this,
            &ImportPlanSummary::skipProblemRowsChanged);
}

QWidget* ImportPlanSummary::makeFigures() {
    // As many columns as fit, up to five: a narrow window moves figures to
    // the next row rather than holding the whole screen wider than itself.
    auto* figures = new QWidget(this);
    auto* grid = new ReflowGridLayout(kFigureColumns, figures);
    grid->setSpacings(24, 10);
    for (std::size_t i = 0; i < kFigureCount; ++i) {
        auto* cell = new QWidget(figures);
        auto* column = new QVBoxLayout(cell);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(1);
        QLabel* caption = secondaryLabel(QString::fromUtf8(kCaptions[i]), cell);
        caption->setWordWrap(false);
        QLabel* value = headingLabel({}, cell);
        column->addWidget(caption);
        column->addWidget(value);
        grid->addWidget(cell);
        m_figures.push_back({caption, value});
    }
    return figures;
}

void ImportPlanSummary::setFigure(std::size_t index, const QString& value) {
    setLabelText(m_figures[index].value, value);
    // Read as one: "New: 12".
    m_figures[index].value->setAccessibleName(m_figures[index].caption->text() + ": " + value);
}

QString ImportPlanSummary::figure(const QString& caption) const {
    for (const auto& figure : m_figures) {
        if (figure.caption->text() == caption)
            return figure.caption->parentWidget()->isHidden() ? QString() : figure.value->text();
    }
    return {};
}

void ImportPlanSummary::setFile(const ImportFile& file, const Ledger& ledger,
                                std::string_view currency) {
    const ImportPlan& plan = *file.plan;

    m_previous->setVisible(plan.previousImport.has_value());
    if (plan.previousImport) {
        setLabelText(
            m_previousText,
            toQString(previousImportLine(abbreviatedDateTime(plan.previousImport->importedAt))));
    }

    const auto totals = plan.totals();
    const auto held = plan.possibleDuplicates();
    setFigure(kRows, count(static_cast<int64_t>(plan.rows.size() + plan.issues.size())));
    setFigure(kNew, count(plan.newCount()));
    setFigure(kSaved, count(plan.duplicateCount()));
    setFigure(kReplace, count(plan.replacesPendingCount()));
    setFigure(kHeld, count(static_cast<int64_t>(held.size())));
    setFigure(kUnread, count(static_cast<int64_t>(plan.issues.size())));
    setFigure(kMoneyIn, toQString(Money::format(totals.moneyIn, currency)));
    setFigure(kMoneyOut, toQString(Money::format(totals.moneyOut, currency)));
    setFigure(kDates, datesText(plan));
    const int64_t blank = plan.blankLines + plan.skippedLines;
    setFigure(kBlank, count(blank));
    m_figures[kBlank].caption->parentWidget()->setVisible(blank > 0);

    fillPreview(plan, currency);
    fillHeld(file, ledger, currency);
    fillIssues(plan);
    const QSignalBlocker blocker(m_skipProblemRows);
    m_skipProblemRows->setChecked(file.skipProblemRows);
}

void ImportPlanSummary::fillPreview(const ImportPlan& plan, std::string_view currency) {
    const int shown = std::min<int>(kPreviewRows, static_cast<int>(plan.rows.size()));
    while (m_preview->topLevelItemCount() > shown)
        delete m_preview->takeTopLevelItem(m_preview->topLevelItemCount() - 1);
    for (int i = 0; i < shown; ++i) {
        const PlannedRow& planned = plan.rows[static_cast<std::size_t>(i)];
        QTreeWidgetItem* item = m_preview->topLevelItem(i);
        if (!item)
            item = new QTreeWidgetItem(m_preview);
        item->setText(0, toQString(DateText::medium(planned.row.date)));
        item->setText(1, toQString(planned.row.description()));
        item->setText(2, toQString(Money::format(planned.row.amount, currency)));
        item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
        item->setText(3, toQString(label(planned.disposition.kind)));
        item->setForeground(3, palette().brush(QPalette::PlaceholderText));
        item->setData(
            0, Qt::AccessibleTextRole,
            item->text(0) + ", " + item->text(1) + ", " + item->text(2) + ", " + item->text(3));
    }
    fitToRows(m_preview, shown, kPreviewRows);
}

void ImportPlanSummary::fillHeld(const ImportFile& file, const Ledger& ledger,
                                 std::string_view currency) {
    const auto held = file.plan->possibleDuplicates();
    std::vector<std::pair<int64_t, std::string>> rows;
    for (const auto* planned : held) {
        rows.emplace_back(planned->row.line,
                          planned->disposition.match ? planned->disposition.match->text() : "");
    }
    m_heldSection->setVisible(!held.empty());
    setLabelText(m_heldTitle,
                 QStringLiteral("Possible duplicates held back (%1)").arg(held.size()));

    const QSignalBlocker blocker(m_held);
    if (rows != m_heldShown) {
        m_held->clear();
        for (const auto* planned : held) {
            const auto& row = planned->row;
            QString text = rowText(row.date, row.description(), row.amount, currency);
            if (const auto* match = ledger.transaction(planned->disposition.match)) {
                text += QStringLiteral("\nLooks like ") +
                        rowText(match->date, match->rawDescription, match->amount, match->currency);
            }
            auto* item = new QListWidgetItem(text, m_held);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            item->setData(Qt::UserRole, QVariant::fromValue<qint64>(row.line));
            item->setData(Qt::AccessibleTextRole, text);
        }
        m_heldShown = std::move(rows);
        fitToRows(m_held, m_held->count(), kListRows);
    }
    for (int i = 0; i < m_held->count(); ++i) {
        QListWidgetItem* item = m_held->item(i);
        const bool forced = file.forcedLines.contains(item->data(Qt::UserRole).toLongLong());
        item->setCheckState(forced ? Qt::Checked : Qt::Unchecked);
    }
}

void ImportPlanSummary::fillIssues(const ImportPlan& plan) {
    std::vector<int64_t> lines;
    for (const auto& issue : plan.issues)
        lines.push_back(issue.line);
    m_issueSection->setVisible(!lines.empty());
    setLabelText(m_issueTitle,
                 QStringLiteral("Rows Copperwick couldn't read (%1)").arg(plan.issues.size()));
    if (lines == m_issuesShown)
        return;
    m_issues->clear();
    for (const auto& issue : plan.issues) {
        QString text = QStringLiteral("Line %1: ").arg(issue.line) + toQString(issue.reason);
        if (!issue.rawText.empty())
            text += QLatin1Char('\n') + toQString(issue.rawText);
        auto* item = new QListWidgetItem(text, m_issues);
        item->setData(Qt::AccessibleTextRole, text);
    }
    m_issuesShown = std::move(lines);
    fitToRows(m_issues, m_issues->count(), kListRows);
}

void ImportPlanSummary::heldItemChanged() {
    std::set<int64_t> forced;
    for (int i = 0; i < m_held->count(); ++i) {
        const QListWidgetItem* item = m_held->item(i);
        if (item->checkState() == Qt::Checked)
            forced.insert(item->data(Qt::UserRole).toLongLong());
    }
    Q_EMIT forcedLinesChanged(forced);
}

}  // namespace copperwick::app
