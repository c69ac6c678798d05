#include "app/rules/merchant_list_model.h"

#include <set>
#include <vector>

#include "app/widgets/qt_text.h"
#include "core/presentation/merchant_icons.h"
#include "core/reports/merchant_summary.h"

namespace copperwick::app {

namespace {

QString countText(std::size_t count) {
    return QString::number(count) +
           (count == 1 ? QStringLiteral(" transaction") : QStringLiteral(" transactions"));
}

}  // namespace

MerchantListModel::MerchantListModel(QObject* parent) : KeyedListModel(parent) {}

MerchantListModel::Rows MerchantListModel::rowsOf(const Ledger& ledger) {
    const auto counts = merchantTransactionCounts(ledger);
    Rows fresh;
    for (const Merchant* merchant : merchantsMatching(ledger, "")) {
        const auto counted = counts.find(merchant->id);
        const LedgerCategory* category = ledger.category(merchant->categoryID);
        Row row{
            .id = merchant->id,
            .name = toQString(merchant->name),
            .count = counted == counts.end() ? 0 : counted->second,
            .recognized = merchant->keys.empty() ? QString() : toQString(recognizedText(*merchant)),
            .kind = merchant->kind};
        if (merchant->kind == TransactionKind::transfer || category)
            row.filing = toQString(defaultFilingText(ledger, *merchant));
        if (category)
            row.categoryName = category->name;
        fresh.emplace_back(merchant->id.text(), std::move(row));
    }
    return fresh;
}

QVariant MerchantListModel::data(const QModelIndex& index, int role) const {
    const Row* found = index.isValid() ? rowIn(m_rows, index.row()) : nullptr;
    if (!found)
        return {};
    const Row& row = *found;
    switch (role) {
        case Qt::DisplayRole:
            return row.name;
        case MerchantIDRole:
            return toQString(row.id.text());
        case CountRole:
            return countText(row.count);
        case FilingRole:
            return row.filing;
        case RecognizedRole:
            return row.recognized;
        case BadgeRole:
            // Worked out for the rows a view paints, not for every merchant.
            return QVariant::fromValue(MerchantIconCatalog::shared().descriptor(
                toStdString(row.name), row.categoryName, row.kind));
        case Qt::AccessibleTextRole: {
            QString text = row.name + QStringLiteral(", ") + countText(row.count);
            for (const QString& part : {row.filing, row.recognized}) {
                if (!part.isEmpty())
                    text += QStringLiteral(", ") + part;
            }
            return text;
        }
        default:
            return {};
    }
}

Qt::ItemFlags MerchantListModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

MerchantSearchProxy::MerchantSearchProxy(QObject* parent) : QSortFilterProxyModel(parent) {}

void MerchantSearchProxy::setSearch(const Ledger& ledger, const QString& search) {
    m_search = search;
    refresh(ledger);
}

void MerchantSearchProxy::refresh(const Ledger& ledger) {
    const std::string search = toStdString(m_search);
    m_everyone = search.empty();
    m_found.clear();
    if (!m_everyone) {
        for (const Merchant* merchant : merchantsMatching(ledger, search))
            m_found.insert(merchant->id.text());
    }
    invalidateRowsFilter();
}

bool MerchantSearchProxy::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const {
    if (m_everyone)
        return true;
    const QModelIndex index = sourceModel()->index(sourceRow, 0, sourceParent);
    return m_found.contains(toStdString(index.data(MerchantListModel::MerchantIDRole).toString()));
}

}  // namespace copperwick::app
