#include "app/transactions/transactions_page.h"

#include <algorithm>
#include <set>

#include <utility>

#include <QActionGroup>
#include <QCoreApplication>
#include <QEvent>
#include <QEventLoop>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QMenu>
#include <QVBoxLayout>

#include "app/shell/sections.h"
#include "app/transactions/manual_entry_sheet.h"
#include "app/transactions/reflow_bar.h"
#include "app/transactions/transaction_row_delegate.h"
#include "app/widgets/card_frame.h"
#include "app/widgets/page_header.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/saved_change.h"
#include "app/widgets/symbol_icons.h"
#include "app/widgets/text_styles.h"
#include "core/model/file_output.h"
#include "core/model/money.h"
#include "core/operations/classification.h"
#include "core/reports/csv_export.h"

namespace copperwick::app {

namespace {

// The filter menu's fixed part, in the order the menu offers it.
constexpr std::pair<TransactionFilter::Kind, const char*> kFilters[] = {
    {TransactionFilter::Kind::all, "All transactions"},
    {TransactionFilter::Kind::needsReview, "Needs review"},
    {TransactionFilter::Kind::aiFiled, "Filed by Local AI"},
    {TransactionFilter::Kind::spending, "Spending"},
    {TransactionFilter::Kind::income, "Income"},
    {TransactionFilter::Kind::transfers, "Transfers"},
    {TransactionFilter::Kind::zelle, "Zelle"},
    {TransactionFilter::Kind::manual, "Manual entries"},
    {TransactionFilter::Kind::pending, "Pending"},
    {TransactionFilter::Kind::removed, "Removed"},
};

// The services, in the menu's order.
constexpr PaymentService kServices[] = {
    PaymentService::paypal,    PaymentService::zelle, PaymentService::cashApp,
    PaymentService::appleCash, PaymentService::venmo,
};

// A filter menu entry's data: "k:<kind>", "c:<category id>" or "s:<service>".
QString filterKey(TransactionFilter::Kind kind) {
    return QStringLiteral("k:") + QString::number(static_cast<int>(kind));
}

TransactionFilter filterOf(const QString& key) {
    if (key.startsWith(QLatin1String("c:"))) {
        if (const auto id = Uuid::parse(toStdString(key.mid(2))))
            return TransactionFilter::inCategory(*id);
    } else if (key.startsWith(QLatin1String("s:"))) {
        return TransactionFilter::byService(static_cast<PaymentService>(key.mid(2).toInt()));
    } else if (key.startsWith(QLatin1String("k:"))) {
        return {.kind = static_cast<TransactionFilter::Kind>(key.mid(2).toInt())};
    }
    return {};
}

// A custom period's first or last day, typed as YYYY-MM-DD.
QLineEdit* makeDateField(const QString& name, LocalDate date, QWidget* parent) {
    auto* field = new QLineEdit(toQString(date.iso()), parent);
    field->setPlaceholderText(name);
    field->setAccessibleName(name);
    field->setToolTip(name + QStringLiteral(" (YYYY-MM-DD)"));
    field->setMaximumWidth(120);
    return field;
}

// The day typed in `field`, or `fallback` while it doesn't read as one.
LocalDate typedDate(const QLineEdit* field, LocalDate fallback) {
    return LocalDate::fromISO(toStdString(field->text().trimmed())).value_or(fallback);
}

}  // namespace

TransactionsPage::TransactionsPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent),
      m_bridge(bridge),
      m_actions(new TransactionActions(bridge.runtime(), this)),
      m_model(new TransactionTableModel(bridge.runtime(), this)) {
    m_savePanel = [](QWidget* parent, const QString& suggestedName) {
        const QString chosen = QFileDialog::getSaveFileName(
            parent, QStringLiteral("Export CSV"), suggestedName, QStringLiteral("CSV (*.csv)"));
        return chosen.isEmpty() ? std::nullopt
                                : std::optional<std::filesystem::path>(
                                      std::filesystem::path(chosen.toStdString()));
    };
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kPageSideMargin, 24, kPageSideMargin, 16);
    layout->setSpacing(12);
    layout->addWidget(buildToolbar());
    layout->addWidget(buildFilters());
    layout->addWidget(buildBanner());

    m_table = new QTableView(this);
    m_table->setAccessibleName(QStringLiteral("Transactions"));
    m_table->setModel(m_model);
    m_table->setItemDelegate(new TransactionRowDelegate(m_table));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setShowGrid(false);
    // Tab leaves the table for the inspector; arrows move between rows.
    m_table->setTabKeyNavigation(false);
    m_table->setWordWrap(false);
    m_table->setFrameShape(QFrame::NoFrame);
    m_table->setContextMenuPolicy(Qt::CustomContextMenu);
    m_table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_table->verticalHeader()->hide();
    // One height for every row: the view never measures a hundred thousand.
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(TransactionRowDelegate::rowHeight(font()));
    QHeaderView* header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setSectionResizeMode(TransactionTableModel::merchantColumn, QHeaderView::Stretch);
    // The merchant takes what the other columns leave; they start narrow
    // enough that it keeps room for a name beside the inspector.
    header->setMinimumSectionSize(60);
    header->resizeSection(TransactionTableModel::dateColumn, 104);
    header->resizeSection(TransactionTableModel::categoryColumn, 132);
    header->resizeSection(TransactionTableModel::accountColumn, 124);
    header->resizeSection(TransactionTableModel::amountColumn, 108);
    header->setSortIndicator(TransactionTableModel::dateColumn, Qt::DescendingOrder);
    header->setSortIndicatorShown(true);
    m_table->installEventFilter(this);

    m_inspector = new TransactionInspector(bridge, *m_actions, this);
    m_inspector->setMinimumWidth(280);

    auto* tableCard = new CardFrame(this);
    auto* tableLayout = new QVBoxLayout(tableCard);
    tableLayout->setContentsMargins(1, 1, 1, 1);
    tableLayout->setSpacing(0);
    tableLayout->addWidget(m_table);
    auto* inspectorCard = new CardFrame(this);
    m_inspectorCard = inspectorCard;
    auto* inspectorLayout = new QVBoxLayout(inspectorCard);
    inspectorLayout->setContentsMargins(1, 1, 1, 1);
    inspectorLayout->addWidget(m_inspector);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(tableCard);
    m_splitter->addWidget(inspectorCard);
    m_splitter->setStretchFactor(0, 3);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({760, 300});
    layout->addWidget(m_splitter, 1);

    m_footer = textLabel({}, this);
    layout->addWidget(m_footer);
    QLabel* footnote = noteLabel(
        QStringLiteral("Stored in ") +
            QString::fromStdString(bridge.runtime().dataFolder().string()) +
            QStringLiteral(
                ", on this computer only. Use full-disk encryption to protect it at rest."),
        this, true);
    footnote->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(footnote);

    connect(m_model, &TransactionTableModel::rowsRead, this, &TransactionsPage::rowsRead);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &TransactionsPage::selectionChanged);
    connect(m_table, &QWidget::customContextMenuRequested, this,
            &TransactionsPage::showContextMenu);
    connect(&bridge, &RuntimeBridge::changeSaved, this, &TransactionsPage::changeSaved);
    connect(&bridge, &RuntimeBridge::transactionsFocusChanged, this,
            &TransactionsPage::focusChanged);

    fillFilterMenu();
    fillAccountMenu();
    fillPeopleMenu();
    focusChanged();
    m_table->setSortingEnabled(true);
}

QWidget* TransactionsPage::buildToolbar() {
    auto* bar = new QWidget(this);
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    const auto& info = sectionInfo(AppSection::transactions);
    layout->addWidget(new PageHeader(toQString(info.label), {}, bar), 1);
    m_add = pushButton(QStringLiteral("Add Transaction\u2026"), bar);
    m_export = pushButton(QStringLiteral("Export CSV\u2026"), bar);
    m_export->setIcon(symbolIcon("square.and.arrow.up"));
    m_details = pushButton(QStringLiteral("Hide Details"), bar);
    m_details->setToolTip(QStringLiteral("Show or hide transaction details"));
    for (QPushButton* button : {m_add, m_export, m_details})
        layout->addWidget(button, 0, Qt::AlignVCenter);
    connect(m_add, &QPushButton::clicked, this, &TransactionsPage::openManualEntry);
    connect(m_export, &QPushButton::clicked, this, &TransactionsPage::exportCsv);
    connect(m_details, &QPushButton::clicked, this, [this] { setDetailsShown(!detailsShown()); });
    return bar;
}

QWidget* TransactionsPage::buildFilters() {
    auto* row = new ReflowBar(this);

    m_search = new QLineEdit(row);
    m_search->setPlaceholderText(QStringLiteral("Search merchants, bank text, notes"));
    m_search->setAccessibleName(m_search->placeholderText());
    m_search->setMinimumWidth(120);
    m_clearSearch =
        m_search->addAction(symbolIcon("xmark.circle.fill"), QLineEdit::TrailingPosition);
    m_clearSearch->setText(QStringLiteral("Clear search"));
    m_clearSearch->setToolTip(QStringLiteral("Clear search"));
    m_clearSearch->setVisible(false);
    connect(m_clearSearch, &QAction::triggered, m_search, &QLineEdit::clear);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_clearSearch->setVisible(!text.isEmpty());
        runQuery();
    });

    m_filter = new QComboBox(row);
    m_filter->setAccessibleName(QStringLiteral("Filter"));
    m_filter->setToolTip(QStringLiteral("Filter"));
    m_account = new QComboBox(row);
    m_account->setAccessibleName(QStringLiteral("Account"));
    m_account->setToolTip(QStringLiteral("Account"));
    m_period = new QComboBox(row);
    m_period->setAccessibleName(QStringLiteral("Period"));
    m_period->setToolTip(QStringLiteral("Period"));
    for (PeriodChoice choice : allCases<PeriodChoice>())
        m_period->addItem(toQString(label(choice)), static_cast<int>(choice));
    m_period->setCurrentIndex(m_period->findData(static_cast<int>(PeriodChoice::allTime)));
    const LocalDate today = m_bridge.runtime().today();
    m_customStart = makeDateField(QStringLiteral("From"), today.firstOfMonth(), row);
    m_customEnd = makeDateField(QStringLiteral("To"), today, row);
    m_customStart->hide();
    m_customEnd->hide();
    m_people = pushButton({}, row);
    m_people->setMenu(new QMenu(m_people));

    // On a narrow window the search and its days sit above the menus.
    row->addToFirstRow(m_search, 2);
    row->addToFirstRow(m_customStart);
    row->addToFirstRow(m_customEnd);
    row->addToSecondRow(m_filter, 1);
    row->addToSecondRow(m_account, 1);
    row->addToSecondRow(m_period);
    row->addToSecondRow(m_people);

    // The menus give up width before the window would have to grow: a
    // narrow window floats the details instead.
    for (QComboBox* box : {m_filter, m_account, m_period}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(6);
    }
    for (QComboBox* box : {m_filter, m_account})
        connect(box, &QComboBox::currentIndexChanged, this, &TransactionsPage::runQuery);
    connect(m_period, &QComboBox::currentIndexChanged, this, [this] {
        const bool custom =
            m_period->currentData().toInt() == static_cast<int>(PeriodChoice::custom);
        m_customStart->setVisible(custom);
        m_customEnd->setVisible(custom);
        runQuery();
    });
    for (QLineEdit* field : {m_customStart, m_customEnd}) {
        connect(field, &QLineEdit::textChanged, this, [this, field] {
            if (LocalDate::fromISO(toStdString(field->text().trimmed())))
                runQuery();
        });
    }
    return row;
}

QWidget* TransactionsPage::buildBanner() {
    m_banner = new CardFrame(this);
    auto* layout = new QHBoxLayout(m_banner);
    layout->setContentsMargins(14, 8, 10, 8);
    m_bannerText = textLabel({}, m_banner);
    m_bannerText->setWordWrap(true);
    m_showAll = pushButton(QStringLiteral("Show All"), m_banner);
    layout->addWidget(m_bannerText, 1);
    layout->addWidget(m_showAll);
    connect(m_showAll, &QPushButton::clicked, this, &TransactionsPage::showAll);
    m_banner->hide();
    return m_banner;
}

void TransactionsPage::fillFilterMenu() {
    const QString chosen = m_filter->currentData().toString();
    const QSignalBlocker blocker(m_filter);
    m_filter->clear();
    for (const auto& [kind, words] : kFilters)
        m_filter->addItem(QString::fromUtf8(words), filterKey(kind));
    m_filter->insertSeparator(m_filter->count());
    for (const LedgerCategory& category : m_bridge.runtime().ledger().categories)
        m_filter->addItem(toQString(category.name),
                          QStringLiteral("c:") + toQString(category.id.text()));
    m_filter->insertSeparator(m_filter->count());
    for (PaymentService service : kServices)
        m_filter->addItem(toQString(name(service)),
                          QStringLiteral("s:") + QString::number(static_cast<int>(service)));
    m_filter->setCurrentIndex(std::max(0, m_filter->findData(chosen)));
}

void TransactionsPage::fillAccountMenu() {
    const QString chosen = m_account->currentData().toString();
    const QSignalBlocker blocker(m_account);
    m_account->clear();
    m_account->addItem(QStringLiteral("All accounts"), QString());
    for (const Account& account : m_bridge.runtime().ledger().accounts)
        m_account->addItem(toQString(account.name), toQString(account.id.text()));
    m_account->setCurrentIndex(std::max(0, m_account->findData(chosen)));
}

void TransactionsPage::fillPeopleMenu() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    QMenu* menu = m_people->menu();
    menu->clear();
    // People who have gone leave the choice.
    std::set<Uuid> present;
    for (const Person& person : ledger.people) {
        if (m_scope.personIDs.contains(person.id))
            present.insert(person.id);
    }
    m_scope.personIDs = present;
    const bool whole = m_scope.wholeHousehold.value_or(m_scope.personIDs.empty());
    QAction* everyone =
        menu->addAction(QStringLiteral("Everyone, shared spending, and unassigned transactions"));
    everyone->setCheckable(true);
    everyone->setChecked(whole);
    connect(everyone, &QAction::triggered, this, [this] {
        m_scope = PeopleScope{.peopleMode = m_scope.peopleMode};
        peopleChanged();
    });
    menu->addSeparator();
    const auto toggle = [this, menu](const QString& words, bool checked, auto change) {
        QAction* action = menu->addAction(words);
        action->setCheckable(true);
        action->setChecked(checked);
        connect(action, &QAction::triggered, this, [this, change](bool on) {
            m_scope.wholeHousehold = false;
            change(on);
            peopleChanged();
        });
    };
    for (const Person& person : ledger.people) {
        toggle(toQString(person.name), !whole && m_scope.personIDs.contains(person.id),
               [this, id = person.id](bool on) {
                   if (on)
                       m_scope.personIDs.insert(id);
                   else
                       m_scope.personIDs.erase(id);
               });
    }
    toggle(QStringLiteral("Shared household"), !whole && m_scope.includeShared,
           [this](bool on) { m_scope.includeShared = on; });
    toggle(QStringLiteral("Unassigned"), !whole && m_scope.includeUnassigned,
           [this](bool on) { m_scope.includeUnassigned = on; });
    menu->addSeparator();
    auto* modes = new QActionGroup(menu);
    for (const auto& [mode, words] : {std::pair{PeopleMode::assigned, "Spending assigned to them"},
                                      std::pair{PeopleMode::cards, "Everything on their cards"}}) {
        QAction* action = menu->addAction(QString::fromUtf8(words));
        action->setCheckable(true);
        action->setChecked(m_scope.peopleMode == mode);
        modes->addAction(action);
        connect(action, &QAction::triggered, this, [this, mode] {
            m_scope.peopleMode = mode;
            peopleChanged();
        });
    }
    const ReportFilter scope(DateSpan{}, m_scope.personIDs, {}, ledger.settings->reportCurrency,
                             whole ? std::optional<bool>(true) : m_scope.wholeHousehold,
                             m_scope.includeShared, m_scope.includeUnassigned, m_scope.peopleMode);
    const QString words = toQString(scope.scopeLabel(ledger));
    m_people->setText(words);
    m_people->setAccessibleName(words);
}

void TransactionsPage::peopleChanged() {
    fillPeopleMenu();
    runQuery();
}

TransactionQuery TransactionsPage::currentQuery() const {
    const Ledger& ledger = m_bridge.runtime().ledger();
    TransactionQuery query;
    query.currency = ledger.settings->reportCurrency;
    if (const auto& focus = m_bridge.runtime().transactionsFocus()) {
        query.focus = focus->ids;
    } else {
        const LocalDate today = m_bridge.runtime().today();
        const auto choice = static_cast<PeriodChoice>(m_period->currentData().toInt());
        const DateSpan days = span(choice, ledger, today, typedDate(m_customStart, today),
                                   typedDate(m_customEnd, today));
        query.from = days.start;
        query.to = days.end;
    }
    query.accountID = Uuid::parse(toStdString(m_account->currentData().toString()));
    query.people = m_scope;
    query.filter = filterOf(m_filter->currentData().toString());
    query.search = toStdString(m_search->text());
    return query;
}

void TransactionsPage::runQuery() {
    if (!m_table)
        return;
    m_model->setQuery(currentQuery());
}

void TransactionsPage::rowsRead() {
    const TransactionTotals& totals = m_model->totals();
    const std::string currency = m_bridge.runtime().ledger().settings->reportCurrency;
    const TransactionFilter::Kind kind = m_model->query().filter.kind;
    const bool services =
        kind == TransactionFilter::Kind::zelle || kind == TransactionFilter::Kind::service;
    const QString count = QString::number(totals.count) + QStringLiteral(" transactions \u00B7 ");
    const QString in = toQString(Money::format(totals.moneyIn, currency));
    const QString out = toQString(Money::format(totals.moneyOut, currency));
    setLabelText(m_footer, services ? count + QStringLiteral("sent ") + out +
                                          QStringLiteral(" \u00B7 received ") + in
                                    : count + QStringLiteral("money in ") + in +
                                          QStringLiteral(" \u00B7 money out ") + out);
    if (const auto& focus = m_bridge.runtime().transactionsFocus()) {
        setLabelText(m_bannerText, QStringLiteral("Showing ") + QString::number(totals.count) +
                                       QStringLiteral(" transactions: ") + toQString(focus->title));
    }
    // The rows were read again: what was chosen stays chosen where it still shows.
    m_restoringSelection = true;
    QItemSelection selection;
    for (const Uuid& id : m_selected) {
        if (const int row = m_model->rowOf(id); row >= 0)
            selection.select(m_model->index(row, 0),
                             m_model->index(row, TransactionTableModel::columnCount_ - 1));
    }
    m_table->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_restoringSelection = false;
    m_inspector->setSelection(selectedIds());
}

std::vector<Uuid> TransactionsPage::selectedIds() const {
    std::vector<Uuid> ids;
    for (const QModelIndex& index : m_table->selectionModel()->selectedRows()) {
        if (const auto id = m_model->idAt(index.row()))
            ids.push_back(*id);
    }
    std::sort(ids.begin(), ids.end(), [this](const Uuid& a, const Uuid& b) {
        return m_model->rowOf(a) < m_model->rowOf(b);
    });
    return ids;
}

void TransactionsPage::selectionChanged() {
    if (m_restoringSelection)
        return;
    m_selected = selectedIds();
    m_inspector->setSelection(m_selected);
}

void TransactionsPage::selectLines(const std::vector<Uuid>& ids) {
    m_selected = ids;
    QItemSelection selection;
    for (const Uuid& id : ids) {
        if (const int row = m_model->rowOf(id); row >= 0)
            selection.select(m_model->index(row, 0),
                             m_model->index(row, TransactionTableModel::columnCount_ - 1));
    }
    m_table->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (!ids.empty()) {
        if (const int row = m_model->rowOf(ids.front()); row >= 0) {
            m_table->selectionModel()->setCurrentIndex(m_model->index(row, 0),
                                                       QItemSelectionModel::NoUpdate);
            m_table->scrollTo(m_model->index(row, 0));
        }
    }
}

void TransactionsPage::showContextMenu(const QPoint& at) {
    const QModelIndex index = m_table->indexAt(at);
    if (index.isValid() && !m_table->selectionModel()->isRowSelected(index.row(), {})) {
        if (const auto id = m_model->idAt(index.row()))
            selectLines({*id});
    }
    const std::vector<Uuid> ids = selectedIds();
    if (ids.empty())
        return;
    QMenu menu(this);
    m_actions->fill(&menu, ids);
    menu.exec(m_table->viewport()->mapToGlobal(at));
}

void TransactionsPage::focusChanged() {
    const auto& focus = m_bridge.runtime().transactionsFocus();
    m_banner->setVisible(focus.has_value());
    if (focus)
        setLabelText(m_bannerText, QStringLiteral("Showing ") + QString::number(focus->ids.size()) +
                                       QStringLiteral(" transactions: ") + toQString(focus->title));
    runQuery();
}

void TransactionsPage::showAll() {
    m_bridge.runtime().setTransactionsFocus(std::nullopt);
}

void TransactionsPage::changeSaved(const SavedChange& change) {
    // A hidden screen reads what changed when it next shows, not on every save.
    if (!isVisible()) {
        m_outdated = true;
        return;
    }
    if (touches(change, {RecordKind::category, RecordKind::account, RecordKind::person})) {
        fillFilterMenu();
        fillAccountMenu();
        fillPeopleMenu();
        runQuery();
    } else {
        m_model->changeSaved(change);
    }
    m_inspector->changeSaved(change);
}

void TransactionsPage::showEvent(QShowEvent* event) {
    SectionPage::showEvent(event);
    if (std::exchange(m_outdated, false))
        changeSaved(SavedChange{.revision = m_bridge.runtime().revision(), .delta = std::nullopt});
}

bool TransactionsPage::detailsShown() const {
    return m_floating ? m_floatingShown : m_detailsShown;
}

void TransactionsPage::setDetailsShown(bool shown) {
    (m_floating ? m_floatingShown : m_detailsShown) = shown;
    placeInspector();
}

void TransactionsPage::resizeEvent(QResizeEvent* event) {
    SectionPage::resizeEvent(event);
    placeInspector();
}

bool TransactionsPage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_table && event->type() == QEvent::Resize)
        fitColumns();
    return SectionPage::eventFilter(watched, event);
}

void TransactionsPage::fitColumns() {
    const int width = m_table->viewport()->width();
    const int fit = width >= 640 ? 0 : width >= 520 ? 1 : 2;
    // Only when the width crosses a step, so that a column the person
    // widened keeps its width otherwise.
    if (fit == m_columnFit)
        return;
    m_columnFit = fit;
    m_table->setColumnHidden(TransactionTableModel::accountColumn, fit > 0);
    m_table->horizontalHeader()->resizeSection(TransactionTableModel::categoryColumn,
                                               fit > 1 ? 104 : 132);
}

void TransactionsPage::placeInspector() {
    const bool floating = width() < kFloatBelow;
    if (floating != m_floating) {
        m_floating = floating;
        if (floating) {
            // Out of the splitter, over the table; it waits to be asked for,
            // since it would cover most of a narrow table.
            m_inspectorCard->setParent(this);
            m_floatingShown = false;
        } else {
            m_splitter->addWidget(m_inspectorCard);
            m_splitter->setStretchFactor(1, 1);
            const int room = m_splitter->width();
            m_splitter->setSizes({room - room / 4, room / 4});
        }
    }
    if (m_floating) {
        const QRect area = m_splitter->geometry();
        const int panelWidth = std::min(320, area.width() * 4 / 5);
        m_inspectorCard->setGeometry(area.right() + 1 - panelWidth, area.top(), panelWidth,
                                     area.height());
        m_inspectorCard->raise();
    }
    const bool shown = detailsShown();
    m_inspectorCard->setVisible(shown);
    const QString words = shown ? QStringLiteral("Hide Details") : QStringLiteral("Show Details");
    m_details->setText(words);
    m_details->setAccessibleName(words);
}

void TransactionsPage::openManualEntry() {
    auto* sheet = new ManualEntrySheet(m_bridge.runtime(), window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

void TransactionsPage::exportCsv() {
    LedgerRuntime& runtime = m_bridge.runtime();
    const std::optional<std::filesystem::path> file = m_savePanel(window(), toQString(kExportName));
    if (!file)
        return;
    const std::string text = CSVExport::transactions(m_model->ids(), m_model->ledger());
    if (const std::optional<std::string> failure = saveFile(*file, text)) {
        runtime.setErrorMessage("Couldn't save the file: " + *failure);
        return;
    }
    runtime.setStatusMessage("Saved " + file->filename().string());
}

std::vector<SelfCheck> TransactionsPage::selfChecks() {
    std::vector<SelfCheck> checks;
    checks.push_back(
        {"the Spending filter lists what the query keeps", [this] {
             const int spending = m_filter->findData(filterKey(TransactionFilter::Kind::spending));
             m_filter->setCurrentIndex(spending);
             m_model->refresh();
             while (m_model->isReading())
                 QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
             const Ledger& ledger = m_bridge.runtime().ledger();
             const std::size_t expected = currentQuery().select(ledger).size();
             const auto shown = static_cast<std::size_t>(m_model->rowCount());
             m_filter->setCurrentIndex(0);
             return SelfCheckOutcome{shown == expected && expected > 0,
                                     std::to_string(shown) + " spending lines shown, " +
                                         std::to_string(expected) + " kept by the query"};
         }});
    checks.push_back({"a note added in the inspector is saved, then undone", [this] {
                          while (m_model->isReading())
                              QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
                          const std::optional<Uuid> id = m_model->idAt(0);
                          if (!id)
                              return SelfCheckOutcome{false, "No line to add a note to"};
                          selectLines({*id});
                          if (!m_inspector->noteField())
                              return SelfCheckOutcome{false, "The inspector shows no note field"};
                          const std::string note = "Checked by the package self-check";
                          m_inspector->noteField()->setText(toQString(note));
                          m_inspector->saveNoteButton()->click();
                          LedgerRuntime& runtime = m_bridge.runtime();
                          const LedgerTransaction* line = runtime.ledger().transaction(*id);
                          const bool saved = line && line->note == note;
                          const bool undone = runtime.undoLastChange();
                          line = runtime.ledger().transaction(*id);
                          const bool restored = line && line->note != note;
                          return SelfCheckOutcome{
                              saved && undone && restored,
                              std::string(saved ? "note saved" : "note not saved") + ", " +
                                  (undone && restored ? "undone" : "not undone")};
                      }});
    return checks;
}

}  // namespace copperwick::app
