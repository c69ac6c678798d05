#include "app/reports/drill_down_sheet.h"

#include <set>

#include <QHeaderView>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/reports/figure_drill_downs.h"
#include "core/reports/report_engine.h"
#include "core/reports/transaction_query.h"
#include "runtime/app_section.h"

namespace copperwick::app {

DrillDown categoryDrillDown(const CategoryLine& line) {
    return {line.name, line.transactionIDs, true, line.categoryID};
}

DrillDownModel::DrillDownModel(Ledger ledger, std::vector<Uuid> ids, std::string currency,
                               QObject* parent)
    : QAbstractTableModel(parent),
      m_ledger(std::move(ledger)),
      m_ids(std::move(ids)),
      m_currency(std::move(currency)) {}

int DrillDownModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_ids.size());
}

int DrillDownModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : Column::kColumnCount;
}

QVariant DrillDownModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const LedgerTransaction* line =
        m_ledger.transaction(m_ids[static_cast<std::size_t>(index.row())]);
    if (!line)
        return {};
    if (role == Qt::TextAlignmentRole)
        return index.column() == Column::amountColumn ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                                                      : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != Qt::AccessibleTextRole)
        return {};
    switch (index.column()) {
        case Column::dateColumn:
            return toQString(DateText::medium(line->date));
        case Column::merchantColumn:
            return toQString(ReportEngine::merchantIdentity(*line, m_ledger).name);
        case Column::categoryColumn:
            return toQString(categoryText(m_ledger, *line));
        case Column::amountColumn:
            return toQString(Money::format(line->amount, m_currency));
        default:
            return {};
    }
}

QVariant DrillDownModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
        case Column::dateColumn:
            return QStringLiteral("Date");
        case Column::merchantColumn:
            return QStringLiteral("Merchant");
        case Column::categoryColumn:
            return QStringLiteral("Category");
        case Column::amountColumn:
            return QStringLiteral("Amount");
        default:
            return {};
    }
}

DrillDownSheet::DrillDownSheet(LedgerRuntime& runtime, DrillDown drillDown, const Ledger& ledger,
                               const std::string& currency, QWidget* parent)
    : SheetDialog(toQString(drillDown.title), {}, parent),
      m_runtime(runtime),
      m_drillDown(std::move(drillDown)),
      m_net(m_drillDown.byCategory
                ? FigureDrillDowns::categoryNet(m_drillDown.ids, ledger, m_drillDown.categoryID)
                : FigureDrillDowns::net(m_drillDown.ids, ledger)),
      m_count(textLabel(countLine(m_drillDown.ids.size(), m_net, currency), this)),
      m_table(new QTableView(this)) {
    keepAtLeastWide(640);
    body()->addWidget(m_count);
    auto* model = new DrillDownModel(ledger, m_drillDown.ids, currency, this);
    m_table->setModel(model);
    m_table->setAccessibleName(toQString(m_drillDown.title));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setShowGrid(false);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    // Rows of one height and columns sized by their longest likely words:
    // sizing them by their contents would measure every line of a long list.
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView* header = m_table->horizontalHeader();
    const QFontMetrics metrics(m_table->font());
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setSectionResizeMode(DrillDownModel::merchantColumn, QHeaderView::Stretch);
    header->resizeSection(DrillDownModel::dateColumn,
                          metrics.horizontalAdvance(QStringLiteral("Sep 30, 2026")) + 24);
    header->resizeSection(DrillDownModel::categoryColumn,
                          metrics.horizontalAdvance(QStringLiteral("Split (3 categories)")) + 24);
    header->resizeSection(DrillDownModel::amountColumn,
                          metrics.horizontalAdvance(QStringLiteral("\u2212$00,000.00")) + 24);
    m_table->setMinimumHeight(280);
    m_table->setTextElideMode(Qt::ElideRight);
    body()->addWidget(m_table, 1);

    addCancelButton(QStringLiteral("Close"));
    m_open = addDefaultButton(QStringLiteral("Open in Transactions"));
    m_open->setEnabled(!m_drillDown.ids.empty());
    connect(m_open, &QPushButton::clicked, this, &DrillDownSheet::openInTransactions);
    resize(720, 520);
}

QString DrillDownSheet::countLine(std::size_t count, int64_t net, const std::string& currency) {
    return QString::number(count) + QStringLiteral(" transactions \u00B7 net ") +
           toQString(Money::format(net, currency));
}

void DrillDownSheet::openInTransactions() {
    m_runtime.setTransactionsFocus(TransactionsFocus{
        m_drillDown.title, std::set<Uuid>(m_drillDown.ids.begin(), m_drillDown.ids.end())});
    m_runtime.setSection(AppSection::transactions);
    accept();
}

}  // namespace copperwick::app
