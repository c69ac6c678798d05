#include "app/reports/reports_page.h"
#include "app/settings/budgets_card.h"

#include <algorithm>
#include <set>

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QScrollArea>

#include "app/reports/flow_row_layout.h"
#include "app/reports/report_charts.h"
#include "app/shell/sections.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/reflow_grid_layout.h"
#include "app/widgets/symbol_icons.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/file_output.h"
#include "core/model/money.h"
#include "core/operations/report_notes.h"
#include "core/presentation/pdf_report_content.h"
#include "core/reports/csv_export.h"
#include "core/reports/figure_drill_downs.h"
#include "pdf/report_pdf.h"
#include "runtime/skin_preference.h"

namespace copperwick::app {

namespace {

constexpr int kFigureWidth = 110;

QDate qDate(LocalDate date) {
    return {date.year, date.month, date.day};
}

LocalDate localDate(const QDate& date, LocalDate fallback) {
    return LocalDate::make(date.year(), date.month(), date.day()).value_or(fallback);
}

// The words of a note's one-click answer.
QString answerWords(const DataNote::Acknowledgement& answer) {
    return std::visit(
        [](const auto& a) -> QString {
            using T = std::decay_t<decltype(a)>;
            if constexpr (std::is_same_v<T, DataNote::UpToDate>)
                return QStringLiteral("It's Up to Date");
            else if constexpr (std::is_same_v<T, DataNote::HistoryStart>)
                return QStringLiteral("History Starts Here");
            else if constexpr (std::is_same_v<T, DataNote::RarelyUsed>)
                return QStringLiteral("Used Only Occasionally");
            else
                return QStringLiteral("Dismiss");
        },
        answer);
}

QString transactionsWord(int64_t count) {
    return QString::number(count) +
           (count == 1 ? QStringLiteral(" transaction") : QStringLiteral(" transactions"));
}

// The name a report's files are offered under: its days in words.
QString fileStem(const ReportFilter& filter) {
    QString label = toQString(filter.span.label());
    label.replace(QLatin1Char('/'), QLatin1Char('-'));
    return QStringLiteral("Copperwick ") + label;
}

}  // namespace

QString tabLabel(ReportTab tab) {
    switch (tab) {
        case ReportTab::overview:
            return QStringLiteral("Overview");
        case ReportTab::categories:
            return QStringLiteral("Categories");
        case ReportTab::merchants:
            return QStringLiteral("Merchants");
        case ReportTab::trends:
            return QStringLiteral("Trends");
        case ReportTab::income:
            return QStringLiteral("Income");
        case ReportTab::budgets:
            return QStringLiteral("Budgets");
        case ReportTab::recurring:
            return QStringLiteral("Recurring");
    }
    return {};
}

ReportsPage::ReportsPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge), m_runtime(bridge.runtime()) {
    QVBoxLayout* column =
        makeScrollingColumn(toQString(sectionInfo(AppSection::reports).label), {});
    QWidget* page = scrollArea()->widget();

    m_scopeLine = secondaryLabel({}, page);
    column->addWidget(m_scopeLine);
    column->addWidget(buildControls(page));

    m_buildingLine = noteLabel(QStringLiteral("Working out the figures\u2026"), page);
    m_buildingLine->hide();
    column->addWidget(m_buildingLine);

    m_narrative = new NarrativeCard(page);
    m_narrative->hide();
    column->addWidget(m_narrative);

    m_tabs = new QTabBar(page);
    m_tabs->setAccessibleName(QStringLiteral("Report tabs"));
    m_tabs->setDrawBase(false);
    m_tabs->setExpanding(false);
    // On a narrow window the tabs' words shorten rather than hide behind
    // scrolling arrows; each stays whole in its tooltip and its name.
    m_tabs->setUsesScrollButtons(false);
    m_tabs->setElideMode(Qt::ElideRight);
    m_tabs->setFocusPolicy(Qt::StrongFocus);
    for (ReportTab tab : kReportTabs) {
        const int index = m_tabs->addTab(tabLabel(tab));
        m_tabs->setTabToolTip(index, tabLabel(tab));
    }
    column->addWidget(m_tabs);

    m_content = new QWidget(page);
    column->addWidget(m_content);

    m_notes = new SectionCard(QStringLiteral("About these numbers"), {}, "info.circle", page);
    QPushButton* markAll = m_notes->addTitleButton(QStringLiteral("Mark All as Fine"));
    markAll->setObjectName(QStringLiteral("markAllAsFine"));
    connect(markAll, &QPushButton::clicked, this, [this] { answerNotes(std::nullopt); });
    column->addWidget(m_notes);
    column->addStretch(1);

    m_chooseFile = [this](const QString& title, const QString& name) {
        const bool pdf = name.endsWith(QStringLiteral(".pdf"));
        return QFileDialog::getSaveFileName(
            this, title, name,
            pdf ? QStringLiteral("PDF files (*.pdf)") : QStringLiteral("CSV files (*.csv)"));
    };

    connect(m_tabs, &QTabBar::currentChanged, this, [this] { showTab(); });
    connect(&m_bridge, &RuntimeBridge::revisionChanged, this, [this] {
        refreshChoices();
        requestBuild();
    });
    connect(&m_bridge, &RuntimeBridge::intelligenceChanged, this, &ReportsPage::showNarrative);
    connect(m_narrative, &NarrativeCard::tryAgain, this, [this] {
        if (m_shown)
            m_bridge.intelligence().writeNarrative(
                IntelligenceController::narrativeKey(m_shown->report().filter, m_shownRevision),
                m_shown->facts);
    });

    refreshChoices();
    requestBuild();
}

ReportsPage::~ReportsPage() = default;

QWidget* ReportsPage::buildControls(QWidget* parent) {
    auto* bar = new QWidget(parent);
    // On a narrow window the choices wrap to a second line rather than
    // push the page wider than the screen.
    auto* row = new FlowRowLayout(bar);
    row->setSpacings(24, 12);
    const auto group = [bar](QLayout* column) {
        auto* holder = new QWidget(bar);
        column->setContentsMargins(0, 0, 0, 0);
        holder->setLayout(column);
        return holder;
    };

    // Period, with the two dates of a custom one under it.
    auto* periodColumn = new QVBoxLayout;
    periodColumn->setSpacing(4);
    m_period = new QComboBox(bar);
    for (PeriodChoice choice : allCases<PeriodChoice>()) {
        const QString words =
            choice == PeriodChoice::custom ? QStringLiteral("Custom") : toQString(label(choice));
        m_period->addItem(words, static_cast<int>(choice));
    }
    periodColumn->addWidget(fieldLabel(QStringLiteral("Period"), m_period, bar));
    periodColumn->addWidget(m_period);
    m_customDates = new QWidget(bar);
    auto* dates = new QHBoxLayout(m_customDates);
    dates->setContentsMargins(0, 0, 0, 0);
    dates->setSpacing(6);
    const LocalDate today = m_runtime.today();
    m_from = new QDateEdit(qDate(today.firstOfMonth()), m_customDates);
    m_to = new QDateEdit(qDate(today), m_customDates);
    for (QDateEdit* edit : {m_from, m_to}) {
        edit->setCalendarPopup(true);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        edit->setMinimumDate(QDate(1900, 1, 1));
        edit->setMaximumDate(QDate(2200, 12, 31));
    }
    m_from->setAccessibleName(QStringLiteral("From"));
    m_to->setAccessibleName(QStringLiteral("To"));
    dates->addWidget(textLabel(QStringLiteral("From"), m_customDates));
    dates->addWidget(m_from);
    dates->addWidget(textLabel(QStringLiteral("To"), m_customDates));
    dates->addWidget(m_to);
    m_customDates->hide();
    periodColumn->addWidget(m_customDates);
    periodColumn->addStretch(1);
    row->addWidget(group(periodColumn));

    auto* peopleColumn = new QVBoxLayout;
    peopleColumn->setSpacing(4);
    m_people = new PeopleScopePicker(bar);
    peopleColumn->addWidget(textLabel(QStringLiteral("People"), bar));
    peopleColumn->addWidget(m_people);
    peopleColumn->addStretch(1);
    row->addWidget(group(peopleColumn));

    auto* currencyColumn = new QVBoxLayout;
    currencyColumn->setSpacing(4);
    m_currency = new QComboBox(bar);
    currencyColumn->addWidget(fieldLabel(QStringLiteral("Currency"), m_currency, bar));
    currencyColumn->addWidget(m_currency, 0, Qt::AlignLeft);
    m_currencyNote =
        noteLabel(QStringLiteral("Currencies are reported separately; amounts are not converted."),
                  bar, true);
    m_currencyNote->setMaximumWidth(260);
    currencyColumn->addWidget(m_currencyNote);
    currencyColumn->addStretch(1);
    row->addWidget(group(currencyColumn));

    m_export = new QToolButton(bar);
    m_export->setIcon(symbolIcon("square.and.arrow.up"));
    m_export->setIconSize(QSize(20, 20));
    m_export->setToolTip(QStringLiteral("Export"));
    m_export->setAccessibleName(QStringLiteral("Export"));
    m_export->setPopupMode(QToolButton::InstantPopup);
    m_export->setFocusPolicy(Qt::StrongFocus);
    auto* menu = new QMenu(m_export);
    menu->addAction(QStringLiteral("Report as PDF\u2026"), this, [this] { exportPDF(); });
    menu->addAction(QStringLiteral("Report summary as CSV\u2026"), this,
                    &ReportsPage::exportSummary);
    menu->addAction(QStringLiteral("Transactions in this report as CSV\u2026"), this,
                    &ReportsPage::exportTransactions);
    m_export->setMenu(menu);
    row->addWidget(m_export);

    connect(m_period, &QComboBox::currentIndexChanged, this, [this] {
        m_customDates->setVisible(m_period->currentData().toInt() ==
                                  static_cast<int>(PeriodChoice::custom));
        choicesChanged();
    });
    connect(m_from, &QDateEdit::dateChanged, this, [this] { choicesChanged(); });
    connect(m_to, &QDateEdit::dateChanged, this, [this] { choicesChanged(); });
    connect(m_currency, &QComboBox::currentIndexChanged, this, [this] { choicesChanged(); });
    connect(m_people, &PeopleScopePicker::changed, this, [this] { choicesChanged(); });
    return bar;
}

// The people and currencies to choose from follow the ledger.
void ReportsPage::refreshChoices() {
    const Ledger& ledger = m_runtime.ledger();
    std::set<std::string> currencies{ledger.settings->reportCurrency};
    for (const Account& account : ledger.accounts) {
        if (!account.isArchived)
            currencies.insert(account.currency);
    }
    const QString chosen = m_currency->count() > 0 ? m_currency->currentText()
                                                   : toQString(ledger.settings->reportCurrency);
    QStringList codes;
    for (const auto& code : currencies)
        codes.append(toQString(code));
    QStringList present;
    for (int i = 0; i < m_currency->count(); ++i)
        present.append(m_currency->itemText(i));
    if (codes != present) {
        const QSignalBlocker quiet(m_currency);
        m_currency->clear();
        m_currency->addItems(codes);
        const int index = m_currency->findText(chosen);
        m_currency->setCurrentIndex(
            index >= 0 ? index : m_currency->findText(toQString(ledger.settings->reportCurrency)));
    }
    m_currencyNote->setVisible(m_currency->count() > 1);
    m_currency->setEnabled(m_currency->count() > 1);
    m_people->setPeople({ledger.people.begin(), ledger.people.end()},
                        toQString(filter().scopeLabel(ledger)));
}

ReportFilter ReportsPage::filter() const {
    const Ledger& ledger = m_runtime.ledger();
    const LocalDate today = m_runtime.today();
    const auto choice = static_cast<PeriodChoice>(m_period->currentData().toInt());
    const DateSpan span = copperwick::span(choice, ledger, today, localDate(m_from->date(), today),
                                           localDate(m_to->date(), today));
    const PeopleScope& people = m_people->scope();
    const std::string currency = m_currency->count() > 0 ? toStdString(m_currency->currentText())
                                                         : ledger.settings->reportCurrency;
    return ReportFilter(span, people.personIDs, {}, currency, people.wholeHousehold,
                        people.includeShared, people.includeUnassigned, people.peopleMode);
}

void ReportsPage::choicesChanged() {
    m_people->setPeople({m_runtime.ledger().people.begin(), m_runtime.ledger().people.end()},
                        toQString(filter().scopeLabel(m_runtime.ledger())));
    requestBuild();
}

void ReportsPage::setPeople(const PeopleScope& scope) {
    m_people->setScope(scope);
    choicesChanged();
}

ReportTab ReportsPage::tab() const {
    return kReportTabs[static_cast<std::size_t>(std::max(m_tabs->currentIndex(), 0))];
}

void ReportsPage::setTab(ReportTab tab) {
    m_tabs->setCurrentIndex(static_cast<int>(tab));
}

void ReportsPage::showEvent(QShowEvent* event) {
    SectionPage::showEvent(event);
    if (m_outdated)
        requestBuild();
    showNarrative();
}

void ReportsPage::requestBuild() {
    // A hidden page builds when it next shows.
    if (!isVisible() && m_shown) {
        m_outdated = true;
        return;
    }
    m_outdated = false;
    const ReportFilter wanted = filter();
    Inputs inputs{wanted, m_runtime.revision(), m_runtime.today()};
    if (m_requested == inputs)
        return;
    m_requested = inputs;
    ++m_buildCount;
    const uint64_t number = ++m_buildNumber;
    const Ledger& ledger = m_runtime.ledger();
    if (ledger.transactions.size() < m_inBackgroundFrom) {
        m_building = false;
        m_buildingLine->hide();
        show(Built{ReportScreenData::build(ledger, wanted, inputs.today), ledger, inputs.revision});
        return;
    }
    if (!m_work)
        m_work = std::make_unique<BackgroundWork>(m_runtime.mainQueue());
    m_building = true;
    m_buildingLine->show();
    m_work->run(
        [copy = ledger, wanted, today = inputs.today, revision = inputs.revision] {
            return Built{ReportScreenData::build(copy, wanted, today), copy, revision};
        },
        [this, number](WorkResult<Built> result) {
            if (number != m_buildNumber)
                return;
            m_building = false;
            m_buildingLine->hide();
            if (result.value) {
                show(std::move(*result.value));
            } else {
                // The next change of choice or save tries again.
                m_requested.reset();
                m_runtime.setErrorMessage(result.error);
            }
        });
}

void ReportsPage::show(Built built) {
    m_shown = std::move(built.data);
    m_shownLedger = std::move(built.ledger);
    m_shownRevision = built.revision;
    const Report& report = m_shown->report();
    setLabelText(m_scopeLine, toQString(report.filter.span.label()) + QStringLiteral(" \u00B7 ") +
                                  toQString(report.scopeLabel) + QStringLiteral(" \u00B7 ") +
                                  toQString(report.filter.currency));
    showTab();
    showNotes();
    showNarrative();
}

void ReportsPage::showNarrative() {
    IntelligenceController& intelligence = m_bridge.intelligence();
    const bool on = intelligence.switches().enabled;
    m_narrative->setVisible(on && m_shown);
    if (!on || !m_shown)
        return;
    const std::string key =
        IntelligenceController::narrativeKey(m_shown->report().filter, m_shownRevision);
    if (intelligence.writingNarrative().contains(key)) {
        m_narrative->showWriting();
    } else if (const auto bullets = intelligence.narratives().find(key);
               bullets != intelligence.narratives().end()) {
        m_narrative->showBullets(bullets->second);
    } else if (const auto failure = intelligence.narrativeFailures().find(key);
               failure != intelligence.narrativeFailures().end()) {
        m_narrative->showFailure(failure->second);
    } else {
        m_narrative->showWriting();
        // Each set of figures is summed up once, and only where someone looks.
        if (isVisible())
            intelligence.writeNarrative(key, m_shown->facts);
    }
}

QString ReportsPage::money(int64_t cents, bool showPlus) const {
    const std::string currency = m_shown ? m_shown->report().filter.currency : std::string("USD");
    return toQString(Money::format(cents, currency, false, showPlus));
}

FigureTile* ReportsPage::figureTile(const QString& title, const QString& figure,
                                    const QString& caption, DrillDownSource drillDown,
                                    QWidget* parent) {
    auto* tile = new FigureTile(title, figure, caption, parent);
    connect(tile, &QPushButton::clicked, this,
            [this, drillDown = std::move(drillDown)] { openDrillDown(drillDown()); });
    return tile;
}

FigureRow* ReportsPage::figureRow(const std::vector<QString>& cells, const std::vector<int>& widths,
                                  DrillDownSource drillDown, QWidget* parent) {
    auto* row = new FigureRow(cells, widths, parent);
    connect(row, &QPushButton::clicked, this,
            [this, drillDown = std::move(drillDown)] { openDrillDown(drillDown()); });
    return row;
}

FigureRow* ReportsPage::figureRow(const std::vector<QString>& cells, const std::vector<int>& widths,
                                  DrillDown drillDown, QWidget* parent) {
    return figureRow(
        cells, widths, [drillDown = std::move(drillDown)] { return drillDown; }, parent);
}

DrillDownSheet* ReportsPage::openDrillDown(DrillDown drillDown) {
    if (!m_shown)
        return nullptr;
    if (m_sheet)
        m_sheet->close();
    m_sheet = new DrillDownSheet(m_runtime, std::move(drillDown), m_shownLedger,
                                 m_shown->report().filter.currency, this);
    m_sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_sheet->open();
    return m_sheet;
}

void ReportsPage::showTab() {
    // The old content goes once the event under way is over: its own
    // button may be what asked.
    QWidget* old = m_content;
    m_content = new QWidget(old->parentWidget());
    auto* column = new QVBoxLayout(m_content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(16);
    if (m_shown) {
        switch (tab()) {
            case ReportTab::overview:
                addOverview(column);
                break;
            case ReportTab::categories:
                addCategories(column);
                break;
            case ReportTab::merchants:
                addMerchants(column);
                break;
            case ReportTab::trends:
                addTrends(column);
                break;
            case ReportTab::income:
                addIncome(column);
                break;
            case ReportTab::budgets:
                addBudgets(column);
                break;
            case ReportTab::recurring:
                addRecurring(column);
                break;
        }
    }
    auto* pageColumn = static_cast<QVBoxLayout*>(old->parentWidget()->layout());
    // The layout hands back the old widget's item, which is ours to delete.
    delete pageColumn->replaceWidget(old, m_content);
    m_content->show();
    old->hide();
    old->deleteLater();
    orderTabs({scrollArea()->widget()});
}

std::vector<FigureTile*> ReportsPage::tiles() const {
    const auto found = m_content->findChildren<FigureTile*>();
    return {found.begin(), found.end()};
}

FigureTile* ReportsPage::tile(const QString& title) const {
    for (FigureTile* tile : m_content->findChildren<FigureTile*>()) {
        if (tile->accessibleName().startsWith(title + QStringLiteral(": ")))
            return tile;
    }
    return nullptr;
}

std::vector<FigureRow*> ReportsPage::rows() const {
    const auto found = m_content->findChildren<FigureRow*>();
    return {found.begin(), found.end()};
}

QStringList ReportsPage::tabTexts() const {
    QStringList texts;
    for (const QLabel* label : m_content->findChildren<QLabel*>()) {
        const auto* elided = qobject_cast<const ElidedLabel*>(label);
        texts.append(elided ? elided->fullText() : label->text());
    }
    return texts;
}

void ReportsPage::addOverview(QVBoxLayout* column) {
    const ReportBundle& bundle = m_shown->bundle;
    const Report& report = bundle.report();
    const Ledger& ledger = m_shownLedger;
    if (report.isEmpty())
        column->addWidget(headingLabel(
            QStringLiteral("Choose another period or import a bank file."), m_content));

    auto* tiles = new QWidget(m_content);
    auto* grid = new ReflowGridLayout(4, tiles);
    grid->setSpacings(12, 12);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(figureTile(
        QStringLiteral("Income"), money(report.incomeWithoutGifts()),
        QString::number(report.incomeSources.size()) + QStringLiteral(" sources"),
        [this] {
            return DrillDown{"Income",
                             FigureDrillDowns::income(m_shown->report(), m_shownLedger, false)};
        },
        tiles));
    if (report.showsGiftsReceived())
        grid->addWidget(figureTile(
            QStringLiteral("Gifts received"), money(report.giftsReceived),
            QStringLiteral("Counted in net cash flow"),
            [this] {
                return DrillDown{"Gifts received",
                                 FigureDrillDowns::income(m_shown->report(), m_shownLedger, true)};
            },
            tiles));
    const auto change = bundle.comparison.spendingChangeTenths();
    grid->addWidget(figureTile(
        QStringLiteral("Spending"), money(report.spending),
        change
            ? toQString(Money::percentText(*change, true)) + QStringLiteral(" vs previous period")
            : QStringLiteral("No earlier period to compare"),
        [this] {
            return DrillDown{"Spending", FigureDrillDowns::spending(m_shown->report())};
        },
        tiles));
    const auto rate = report.savingsRateTenths();
    grid->addWidget(figureTile(
        QStringLiteral("Net cash flow"), money(report.savings()),
        rate ? toQString(Money::percentText(*rate)) + QStringLiteral(" of income")
             : QStringLiteral("No income recorded"),
        [this] {
            return DrillDown{"Net cash flow", m_shown->report().includedIDs};
        },
        tiles));
    if (const auto& allowance = bundle.allowance) {
        const DrillDownSource spent = [this] {
            return DrillDown{"Spending", FigureDrillDowns::spending(m_shown->report())};
        };
        grid->addWidget(figureTile(QStringLiteral("Spending allowance"),
                                   toQString(Money::format(allowance->allowance)),
                                   QStringLiteral("For the selected period"), spent, tiles));
        grid->addWidget(figureTile(QStringLiteral("Allowance left"),
                                   toQString(Money::format(allowance->left)),
                                   toQString(allowance->personName), spent, tiles));
    }
    column->addWidget(tiles);

    // Where it went: the ring and its categories, side by side.
    auto* where = new SectionCard(QStringLiteral("Where it went"), {}, {}, m_content);
    auto* split = new QHBoxLayout;
    split->setSpacing(16);
    const auto openCategory = [this](int index) {
        const CategoryLine& line = m_shown->report().categories[static_cast<std::size_t>(index)];
        openDrillDown(categoryDrillDown(line));
    };
    if (!report.categories.empty()) {
        // The ring gives way first on a narrow window, down to a size that
        // still reads; the rows keep their figures whole.
        QChartView* donut = categoryDonut(report, openCategory, where);
        donut->setMinimumWidth(160);
        donut->setMaximumWidth(230);
        donut->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        split->addWidget(donut, 2, Qt::AlignTop);
    }
    auto* list = new QVBoxLayout;
    list->setSpacing(0);
    if (report.categories.empty())
        list->addWidget(noteLabel(QStringLiteral("No spending in this period."), where));
    for (std::size_t i = 0; i < report.categories.size() && i < 8; ++i) {
        const CategoryLine& line = report.categories[i];
        const auto share = Money::shareTenths(line.amount, report.spending);
        FigureRow* row = figureRow({toQString(line.name), money(line.amount),
                                    share ? toQString(Money::percentText(*share)) : QString()},
                                   {0, kFigureWidth, 56}, categoryDrillDown(line), where);
        row->setSwatch(categoryColour(palette(), line.colorIndex));
        list->addWidget(row);
    }
    if (report.categories.size() > 8)
        list->addWidget(noteLabel(QStringLiteral("Every category is in Categories."), where, true));
    list->addStretch(1);
    split->addLayout(list, 3);
    where->body()->addLayout(split);
    column->addWidget(where);

    // Spending over time, month by month.
    auto* overTime = new SectionCard(
        QStringLiteral("Spending over time"),
        QStringLiteral("Monthly spending \u00B7 ") + toQString(report.scopeLabel), {}, m_content);
    const auto openMonth = [this](const Report& from, int index) {
        const MonthLine& month = from.months[static_cast<std::size_t>(index)];
        openDrillDown({DateText::monthLabel(month.monthKey),
                       FigureDrillDowns::month(from, m_shownLedger, month.monthKey)});
    };
    overTime->body()->addWidget(monthBars(
        report.months, report.filter.currency, false, QStringLiteral("Chart of monthly spending"),
        [this, openMonth](int index) { openMonth(m_shown->report(), index); }, overTime));
    for (const MonthLine& month : report.months) {
        overTime->body()->addWidget(figureRow(
            {toQString(DateText::monthLabel(month.monthKey)), money(month.spending)},
            {0, kFigureWidth},
            [this, key = month.monthKey] {
                return DrillDown{DateText::monthLabel(key),
                                 FigureDrillDowns::month(m_shown->report(), m_shownLedger, key)};
            },
            overTime));
    }
    column->addWidget(overTime);

    if (const auto& goal = bundle.savingsGoal) {
        auto* card = new SectionCard(toQString(goal->title()), {},
                                     goal->isReached() ? "checkmark.seal.fill" : "", m_content);
        card->body()->addWidget(headingLabel(
            toQString(Money::format(goal->saved, goal->currency)) + QStringLiteral(" of ") +
                toQString(Money::format(goal->target, goal->currency)),
            card, 1.2));
        auto* bar = new QProgressBar(card);
        bar->setTextVisible(false);
        bar->setAccessibleName(toQString(goal->title()));
        // The bar's scale is the target's share, in tenths of a percent.
        bar->setRange(0, 1000);
        bar->setValue(
            static_cast<int>(Money::shareTenths(goal->barValue(), goal->target).value_or(0)));
        bar->setMaximumHeight(10);
        card->body()->addWidget(bar);
        card->body()->addWidget(noteLabel(toQString(SavingsGoal::kCaption), card, true));
        column->addWidget(card);
    }

    if (const auto& context = m_shown->household) {
        auto* card = new SectionCard(QStringLiteral("Household context"), {}, {}, m_content);
        card->body()->addWidget(headingLabel(
            context->shareTenths ? toQString(Money::percentText(*context->shareTenths)) +
                                       QStringLiteral(" of household spending")
                                 : QStringLiteral("No household spending in this period"),
            card));
        card->body()->addWidget(textLabel(toQString(context->scopeLabel) + QStringLiteral(": ") +
                                              toQString(Money::format(context->scopeSpending)) +
                                              QStringLiteral(" \u00B7 Whole household: ") +
                                              toQString(Money::format(context->householdSpending)),
                                          card));
        if (context->familyBudgets) {
            card->body()->addWidget(textLabel(QStringLiteral("Family category budgets: ") +
                                                  toQString(Money::format(*context->familyBudgets)),
                                              card));
            card->body()->addWidget(noteLabel(
                QStringLiteral("Whole household spending includes all people, shared, and "
                               "unassigned transactions."),
                card, true));
        }
        column->addWidget(card);
    }

    if (bundle.showsHouseholdMoney()) {
        const HouseholdMoney& household = bundle.zelle.household;
        auto* card =
            new SectionCard(QStringLiteral("Money moved within the household"), {}, {}, m_content);
        if (!household.sentIDs.empty())
            card->body()->addWidget(
                figureRow({QStringLiteral("Sent to the household"), money(household.sent),
                           transactionsWord(static_cast<int64_t>(household.sentIDs.size()))},
                          {0, kFigureWidth, kFigureWidth},
                          {"Sent to the household", household.sentIDs}, card));
        if (!household.receivedIDs.empty())
            card->body()->addWidget(
                figureRow({QStringLiteral("Received from the household"), money(household.received),
                           transactionsWord(static_cast<int64_t>(household.receivedIDs.size()))},
                          {0, kFigureWidth, kFigureWidth},
                          {"Received from the household", household.receivedIDs}, card));
        card->body()->addWidget(noteLabel(
            QStringLiteral("Not counted as income or spending. Shown so these numbers line up with "
                           "what happened in the accounts."),
            card, true));
        column->addWidget(card);
    }

    if (PaymentActivity::panelShown(ledger))
        addPaymentServices(column);
}

void ReportsPage::addPaymentServices(QVBoxLayout* column) {
    const ReportBundle& bundle = m_shown->bundle;
    const PaymentActivity& activity = bundle.payments;
    auto* card = new SectionCard(
        QStringLiteral("Payment services"),
        QStringLiteral("Account activity \u00B7 ") + toQString(bundle.report().scopeLabel), {},
        m_content);
    QPushButton* show = card->addTitleButton(QStringLiteral("Show in Transactions"));
    connect(show, &QPushButton::clicked, this, [this, ids = activity.transactionIDs] {
        m_runtime.setTransactionsFocus(
            TransactionsFocus{"Payment services", std::set<Uuid>(ids.begin(), ids.end())});
        m_runtime.setSection(AppSection::transactions);
    });
    auto* figures = new QWidget(card);
    auto* grid = new ReflowGridLayout(3, figures);
    grid->setContentsMargins(0, 0, 0, 0);
    for (const auto& [title, value] :
         {std::pair{QStringLiteral("Sent"), money(activity.sent)},
          std::pair{QStringLiteral("Received"), money(activity.received)},
          std::pair{QStringLiteral("Net"), money(activity.net(), true)}}) {
        auto* cell = new QWidget(figures);
        auto* cellColumn = new QVBoxLayout(cell);
        cellColumn->setContentsMargins(0, 0, 0, 0);
        cellColumn->setSpacing(2);
        cellColumn->addWidget(secondaryLabel(title, cell));
        cellColumn->addWidget(headingLabel(value, cell, 1.2));
        grid->addWidget(cell);
    }
    card->body()->addWidget(figures);
    if (activity.lines.empty()) {
        card->body()->addWidget(noteLabel(
            QStringLiteral("No activity for the selected services in this period."), card));
    } else {
        const std::vector<int> widths{0, 80, 96, 96, 96};
        card->body()->addWidget(
            tableHeader({QStringLiteral("Person or business"), QStringLiteral("Service"),
                         QStringLiteral("Sent"), QStringLiteral("Received"), QStringLiteral("Net")},
                        widths, card));
        for (const PaymentActivityLine& line : activity.panelLines()) {
            card->body()->addWidget(
                figureRow({toQString(line.name), toQString(name(line.service)), money(line.sent),
                           money(line.received), money(line.net(), true)},
                          widths, {line.name, line.transactionIDs}, card));
        }
        if (const auto note = activity.allNamesNote())
            card->body()->addWidget(noteLabel(toQString(*note), card, true));
    }
    card->body()->addWidget(noteLabel(QStringLiteral("Net = received \u2212 sent. Display choices "
                                                     "do not change how payments are filed or "
                                                     "counted."),
                                      card, true));
    column->addWidget(card);
}

void ReportsPage::addCategories(QVBoxLayout* column) {
    const ReportComparison& comparison = m_shown->bundle.comparison;
    auto* card = new SectionCard(
        QStringLiteral("Spending by category"),
        QStringLiteral("Compared with ") + toQString(comparison.previous.filter.span.label()), {},
        m_content);
    if (comparison.categoryChanges.empty()) {
        card->body()->addWidget(noteLabel(QStringLiteral("No spending in this period."), card));
    } else {
        const std::vector<int> widths{0, kFigureWidth, kFigureWidth, 136};
        card->body()->addWidget(
            tableHeader({QStringLiteral("Category"), QStringLiteral("This period"),
                         QStringLiteral("Before"), QStringLiteral("Change")},
                        widths, card));
        for (const CategoryChange& line : comparison.categoryChanges) {
            const auto tenths = line.changeTenths();
            QString changeText = money(line.change(), true);
            if (tenths)
                changeText += QStringLiteral(" (") + toQString(Money::percentText(*tenths, true)) +
                              QStringLiteral(")");
            // A category seen only before opens what it had then.
            const auto lineOf = [&](const Report& report) -> const CategoryLine* {
                for (const CategoryLine& category : report.categories) {
                    if (category.id == line.id)
                        return &category;
                }
                return nullptr;
            };
            const CategoryLine* now = lineOf(comparison.current);
            const CategoryLine* before = now ? now : lineOf(comparison.previous);
            FigureRow* row = figureRow(
                {toQString(line.name), money(line.current), money(line.previous), changeText},
                widths, before ? categoryDrillDown(*before) : DrillDown{line.name, {}}, card);
            if (before)
                row->setSwatch(categoryColour(palette(), before->colorIndex));
            card->body()->addWidget(row);
        }
    }
    column->addWidget(card);
}

void ReportsPage::addMerchants(QVBoxLayout* column) {
    const Report& report = m_shown->report();
    auto* card = new SectionCard(
        QStringLiteral("Where the money went"),
        QStringLiteral("Top 15 merchants by spending, after refunds. Payment services such as "
                       "PayPal are shown as the business behind them when the bank text says."),
        {}, m_content);
    if (report.topMerchants.empty())
        card->body()->addWidget(noteLabel(QStringLiteral("No spending in this period."), card));
    for (const MerchantLine& line : report.topMerchants)
        card->body()->addWidget(
            figureRow({toQString(line.name), money(line.amount), transactionsWord(line.count)},
                      {0, kFigureWidth, kFigureWidth}, {line.name, line.transactionIDs}, card));
    column->addWidget(card);
}

void ReportsPage::addTrends(QVBoxLayout* column) {
    const TwelveMonthTrend& trend = m_shown->trend;
    auto* card = new SectionCard(QStringLiteral("Twelve months to ") +
                                     toQString(DateText::monthLabel(trend.lastMonth.monthKey())),
                                 {}, {}, m_content);
    const auto openMonth = [this](int index) {
        const MonthLine& month = m_shown->trend.months[static_cast<std::size_t>(index)];
        openDrillDown(
            {DateText::monthLabel(month.monthKey),
             FigureDrillDowns::month(m_shown->trendReport, m_shownLedger, month.monthKey)});
    };
    card->body()->addWidget(monthBars(trend.months, m_shown->report().filter.currency, true,
                                      QStringLiteral("Chart of income and spending by month"),
                                      openMonth, card));
    card->body()->addWidget(headingLabel(QStringLiteral("By month"), card));
    const std::vector<int> widths{0, kFigureWidth, kFigureWidth, kFigureWidth};
    card->body()->addWidget(tableHeader({QStringLiteral("Month"), QStringLiteral("Income"),
                                         QStringLiteral("Spending"), QStringLiteral("Saved")},
                                        widths, card));
    for (const MonthLine& month : trend.months) {
        card->body()->addWidget(figureRow(
            {toQString(DateText::monthLabel(month.monthKey)), money(month.income),
             money(month.spending), money(month.net())},
            widths,
            [this, key = month.monthKey] {
                return DrillDown{DateText::monthLabel(key),
                                 FigureDrillDowns::month(m_shown->trendReport, m_shownLedger, key)};
            },
            card));
    }
    card->body()->addWidget(noteLabel(QStringLiteral("Average monthly spending over these 12 "
                                                     "months: ") +
                                          money(trend.averageSpending) +
                                          QStringLiteral(". Months before your first import show "
                                                         "as zero."),
                                      card, true));
    column->addWidget(card);
}

void ReportsPage::addIncome(QVBoxLayout* column) {
    const Report& report = m_shown->report();
    auto* card = new SectionCard(QStringLiteral("Income sources"), {}, {}, m_content);
    if (report.incomeSources.empty()) {
        card->body()->addWidget(noteLabel(
            QStringLiteral("No income in this period. Paychecks are recognized automatically; "
                           "other deposits wait in Review until you say what they are."),
            card));
    } else {
        for (const MerchantLine& line : report.incomeSources)
            card->body()->addWidget(figureRow({toQString(line.name), money(line.amount)},
                                              {0, kFigureWidth}, {line.name, line.transactionIDs},
                                              card));
        FigureRow* total = figureRow(
            {QStringLiteral("Total income"), money(report.income)}, {0, kFigureWidth},
            [this] {
                return DrillDown{"Total income", FigureDrillDowns::allIncome(m_shown->report())};
            },
            card);
        QFont bold = total->font();
        bold.setWeight(QFont::DemiBold);
        for (QLabel* cell : total->findChildren<QLabel*>())
            cell->setFont(bold);
        card->body()->addWidget(total);
    }
    column->addWidget(card);
}

void ReportsPage::addBudgets(QVBoxLayout* column) {
    const ReportBundle& bundle = m_shown->bundle;
    if (!bundle.filter.wholeHousehold) {
        auto* card =
            new SectionCard(QStringLiteral("Household category budgets"), {}, {}, m_content);
        card->body()->addWidget(noteLabel(
            QStringLiteral("Choose Whole household to compare family category budgets with the "
                           "family's spending. Personal allowances appear in the Overview for each "
                           "person."),
            card));
        column->addWidget(card);
        return;
    }
    auto* card = new SectionCard(QStringLiteral("Budget vs actual"), {}, {}, m_content);
    if (const auto note = BudgetReport::periodNote(bundle.filter.span))
        card->body()->addWidget(noteLabel(toQString(*note), card));
    if (bundle.budgets.empty())
        card->body()->addWidget(
            noteLabel(QStringLiteral("No budgets yet. Set monthly amounts below."), card));
    for (const BudgetLine& line : bundle.budgets) {
        FigureRow* row =
            figureRow({toQString(line.name), toQString(line.summary())}, {0, 260},
                      {line.name, FigureDrillDowns::category(bundle.report(), line.categoryID),
                       true, line.categoryID},
                      card);
        row->setSwatch(categoryColour(palette(), line.colorIndex));
        QLabel* summary = row->findChildren<QLabel*>().back();
        QPalette colours = summary->palette();
        colours.setColor(QPalette::WindowText, line.isOver() ? warningColour(palette())
                                                             : palette().color(QPalette::Link));
        summary->setPalette(colours);
        row->addBelow(new BudgetBar(line.spent, line.budgeted, row));
        card->body()->addWidget(row);
    }
    column->addWidget(card);
    addBudgetEditors(column);
}

void ReportsPage::addBudgetEditors(QVBoxLayout* column) {
    // The same fields as in Settings: the tab is made again after each save,
    // so the card always shows what the ledger holds.
    column->addWidget(new BudgetsCard(m_bridge, m_content));
}

void ReportsPage::addRecurring(QVBoxLayout* column) {
    const ReportBundle& bundle = m_shown->bundle;
    auto* card = new SectionCard(QStringLiteral("Recurring charges"), {}, {}, m_content);
    if (bundle.recurring.empty()) {
        card->body()->addWidget(noteLabel(
            QStringLiteral("None found yet. A charge counts as recurring after at least three "
                           "similar charges on a regular schedule."),
            card));
    } else {
        const RecurringTotal total = RecurringTotal::of(bundle.recurring);
        card->body()->addWidget(headingLabel(
            QStringLiteral("About ") + toQString(Money::format(total.monthly)) +
                QStringLiteral(" a month across ") + QString::number(total.activeCount),
            card));
        for (const RecurringCharge& charge : bundle.recurring) {
            QString caption = toQString(label(charge.cadence));
            if (charge.isActive)
                caption +=
                    QStringLiteral(", next ") + toQString(DateText::medium(charge.nextExpected));
            else
                caption +=
                    QStringLiteral(", Stopped ") + toQString(DateText::medium(charge.lastDate));
            if (charge.priceChanged())
                caption +=
                    QStringLiteral(", was ") + toQString(Money::format(charge.previousAmount));
            card->body()->addWidget(figureRow({toQString(charge.merchantName), caption,
                                               toQString(Money::format(charge.typicalAmount))},
                                              {0, 230, kFigureWidth},
                                              {charge.merchantName, charge.transactionIDs}, card));
        }
        card->body()->addWidget(noteLabel(
            QStringLiteral("Found by arithmetic on your transactions (no AI): regular gaps between "
                           "charges and steady amounts."),
            card, true));
    }
    column->addWidget(card);

    auto* unusual = new SectionCard(QStringLiteral("Unusual this period"), {}, {}, m_content);
    if (bundle.unusual.empty())
        unusual->body()->addWidget(noteLabel(
            QStringLiteral("Nothing stands out: no charge was at least three times its merchant's "
                           "usual amount, and no first-time charge was over $200."),
            unusual));
    for (const UnusualCharge& charge : bundle.unusual) {
        FigureRow* row = figureRow(
            {toQString(charge.merchantName), toQString(DateText::medium(charge.date)),
             toQString(Money::format(charge.amount))},
            {0, 110, kFigureWidth}, {charge.merchantName, {charge.transactionID}}, unusual);
        row->addBelow(noteLabel(toQString(charge.reason), row, true));
        unusual->body()->addWidget(row);
    }
    column->addWidget(unusual);
}

void ReportsPage::showNotes() {
    m_notes->clearRows();
    const std::vector<DataNote>& notes = m_shown->report().notes;
    bool anyAnswer = false;
    if (notes.empty()) {
        m_notes->addRow(noteLabel(
            QStringLiteral("Nothing to add: every account is imported through this period."),
            m_notes));
    }
    for (const DataNote& note : notes) {
        auto* row = new QWidget(m_notes);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 4, 0, 4);
        line->setSpacing(8);
        line->addWidget(
            new SymbolView(note.severity == DataNote::Severity::warning ? "exclamationmark.triangle"
                                                                        : "info.circle",
                           16, row),
            0, Qt::AlignTop);
        QLabel* text = textLabel(toQString(note.text), row);
        text->setWordWrap(true);
        line->addWidget(text, 1);
        if (note.acknowledgement) {
            anyAnswer = true;
            QPushButton* answer = pushButton(answerWords(*note.acknowledgement), row);
            connect(answer, &QPushButton::clicked, this, [this, id = note.id] { answerNotes(id); });
            line->addWidget(answer, 0, Qt::AlignTop);
        }
        m_notes->addRow(row);
    }
    if (auto* markAll = m_notes->findChild<QPushButton*>(QStringLiteral("markAllAsFine")))
        markAll->setVisible(anyAnswer);
    orderTabs({scrollArea()->widget()});
}

void ReportsPage::answerNotes(const std::optional<std::string>& noteID) {
    if (!m_shown)
        return;
    std::optional<std::vector<DataNote::Acknowledgement>> answers;
    try {
        answers = noteAnswers(m_shown->report().notes, noteID);
    } catch (const std::exception& refusal) {
        m_runtime.setErrorMessage(refusal.what());
        return;
    }
    if (!answers || answers->empty())
        return;
    m_runtime.applyForScreen(
        [answers = *answers](Ledger& ledger) -> std::optional<LedgerDelta> {
            return acknowledge(ledger, answers);
        },
        [](const ApplyResult&) {});
}

void ReportsPage::writeExport(const QString& title, const QString& name, const std::string& text) {
    const QString file = m_chooseFile(title, name);
    if (file.isEmpty())
        return;
    const std::filesystem::path path = toStdString(file);
    if (const auto failure = saveFile(path, text))
        m_runtime.setErrorMessage("Couldn't save the file: " + *failure);
    else
        m_runtime.setStatusMessage("Saved " + path.filename().string());
}

void ReportsPage::exportSummary() {
    if (!m_shown)
        return;
    const ReportBundle& bundle = m_shown->bundle;
    writeExport(QStringLiteral("Report summary as CSV"),
                fileStem(bundle.filter) + QStringLiteral(" report.csv"),
                CSVExport::reportSummary(bundle.report(), bundle.payments));
}

void ReportsPage::exportTransactions() {
    if (!m_shown)
        return;
    const Report& report = m_shown->report();
    writeExport(QStringLiteral("Transactions in this report as CSV"),
                fileStem(report.filter) + QStringLiteral(" transactions.csv"),
                CSVExport::transactions(report.includedIDs, m_shownLedger));
}

PDFExportSheet* ReportsPage::exportPDF() {
    if (!m_shown)
        return nullptr;
    if (m_pdfSheet)
        m_pdfSheet->close();
    m_pdfSheet = new PDFExportSheet(rememberedPDFStyle(m_runtime.defaults()), this);
    m_pdfSheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_pdfSheet, &QDialog::accepted, this, [this, sheet = m_pdfSheet] {
        const PDFReportStyle style = sheet->style();
        m_runtime.defaults().set(preference_keys::pdfReportStyle, rawValue(style));
        savePDF(style);
    });
    m_pdfSheet->open();
    return m_pdfSheet;
}

void ReportsPage::savePDF(PDFReportStyle style) {
    if (!m_shown)
        return;
    const ReportBundle& bundle = m_shown->bundle;
    const QString file = m_chooseFile(QStringLiteral("Report as PDF"),
                                      fileStem(bundle.filter) + QStringLiteral(" report.pdf"));
    if (file.isEmpty())
        return;
    // The content is read here, from the ledger the figures on screen came
    // from; only the pages are made beside the window.
    PDFReportContent content = PDFReportContent::ofBundle(bundle, m_shownLedger, m_runtime.now());
    const Skin skin = SkinPreference::load(m_runtime.defaults()).skin;
    const std::filesystem::path path = toStdString(file);
    // Held by the answer, which the main thread runs and lets go of.
    auto building = std::make_shared<ActivityCount>(m_runtime.countPDFBuild());
    if (!m_work)
        m_work = std::make_unique<BackgroundWork>(m_runtime.mainQueue());
    ++m_savingPDFs;
    m_work->run([content = std::move(content), style, skin,
                 path] { return ReportPDF::write(content, style, skin, path); },
                [this, building, path](WorkResult<std::size_t> result) {
                    --m_savingPDFs;
                    if (result.value)
                        m_runtime.setStatusMessage("Saved " + path.filename().string());
                    else
                        m_runtime.setErrorMessage("Couldn't save the PDF: " + result.error);
                });
}

std::vector<SelfCheck> ReportsPage::selfChecks() {
    return {{"open a report figure's transactions", [this]() -> SelfCheckOutcome {
                 m_period->setCurrentIndex(static_cast<int>(PeriodChoice::last3Months));
                 m_runtime.mainQueue()->runUntil([this] { return !m_building; });
                 for (ReportTab each : kReportTabs) {
                     setTab(each);
                     if (!m_content->layout() || m_content->layout()->count() == 0)
                         return {false, "The " + toStdString(tabLabel(each)) + " tab is empty."};
                 }
                 setTab(ReportTab::overview);
                 FigureTile* spending = tile(QStringLiteral("Spending"));
                 if (!spending || !m_shown)
                     return {false, "The Overview has no Spending tile."};
                 spending->click();
                 DrillDownSheet* sheet = m_sheet;
                 if (!sheet)
                     return {false, "The Spending tile opened nothing."};
                 const int64_t figure = m_shown->report().spending;
                 if (-sheet->net() != figure || spending->figure() != money(figure))
                     return {false, "The Spending tile reads " + toStdString(spending->figure()) +
                                        " but its transactions come to " +
                                        toStdString(money(-sheet->net())) + "."};
                 const std::set<Uuid> ids(sheet->drillDown().ids.begin(),
                                          sheet->drillDown().ids.end());
                 sheet->openButton()->click();
                 const auto& focus = m_runtime.transactionsFocus();
                 const bool focused =
                     focus && focus->ids == ids && m_runtime.section() == AppSection::transactions;
                 m_runtime.setSection(AppSection::reports);
                 return {focused, "The Spending tile's " + std::to_string(ids.size()) +
                                      " transactions come to " + toStdString(money(figure)) +
                                      (focused ? ", and Open in Transactions shows exactly them."
                                               : ", but Open in Transactions didn't show them.")};
             }}};
}

}  // namespace copperwick::app
