#include "app/transactions/transaction_table_model.h"

#include <utility>

#include "app/widgets/qt_text.h"
#include "app/widgets/saved_change.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/reports/report_engine.h"

namespace copperwick::app {

namespace {

const LedgerTransaction* lineOf(const Ledger& ledger, const RecordID& recordID) {
    const std::optional<Uuid> id = recordID.uuid();
    return id ? ledger.transaction(*id) : nullptr;
}

QString accountName(const Ledger& ledger, const LedgerTransaction& line) {
    const Account* account = ledger.account(line.accountID);
    return account ? toQString(account->name) : QString();
}

}  // namespace

TransactionTableModel::TransactionTableModel(LedgerRuntime& runtime, QObject* parent)
    : QAbstractTableModel(parent), m_runtime(runtime), m_ledger(runtime.ledger()) {}

TransactionTableModel::~TransactionTableModel() = default;

int TransactionTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_ids.size());
}

int TransactionTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columnCount_;
}

QVariant TransactionTableModel::headerData(int section, Qt::Orientation orientation,
                                           int role) const {
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole && section == amountColumn)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    switch (section) {
        case dateColumn:
            return QStringLiteral("Date");
        case merchantColumn:
            return QStringLiteral("Merchant");
        case categoryColumn:
            return QStringLiteral("Category");
        case accountColumn:
            return QStringLiteral("Account");
        case amountColumn:
            return QStringLiteral("Amount");
        default:
            return {};
    }
}

std::optional<Uuid> TransactionTableModel::idAt(int row) const {
    if (row < 0 || row >= static_cast<int>(m_ids.size()))
        return std::nullopt;
    return m_ids[static_cast<std::size_t>(row)];
}

int TransactionTableModel::rowOf(const Uuid& id) const {
    const auto found = m_rows.find(id);
    return found == m_rows.end() ? -1 : found->second;
}

const LedgerTransaction* TransactionTableModel::transactionAt(int row) const {
    const std::optional<Uuid> id = idAt(row);
    return id ? m_ledger.transaction(*id) : nullptr;
}

const MerchantIconDescriptor& TransactionTableModel::descriptorAt(int row) const {
    static const MerchantIconDescriptor kNone{.initials = "?"};
    const LedgerTransaction* line = transactionAt(row);
    if (!line)
        return kNone;
    auto found = m_descriptors.find(line->id);
    if (found == m_descriptors.end()) {
        found = m_descriptors
                    .emplace(line->id, MerchantIconCatalog::shared().descriptor(*line, m_ledger))
                    .first;
    }
    return found->second;
}

QVariant TransactionTableModel::data(const QModelIndex& index, int role) const {
    const LedgerTransaction* line = transactionAt(index.row());
    if (!line || !index.isValid())
        return {};
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            switch (index.column()) {
                case dateColumn:
                    return toQString(DateText::medium(line->date));
                case merchantColumn:
                    return toQString(ReportEngine::merchantIdentity(*line, m_ledger).name);
                case categoryColumn:
                    return toQString(categoryText(m_ledger, *line));
                case accountColumn:
                    return accountName(m_ledger, *line);
                case amountColumn:
                    return toQString(Money::format(line->amount, line->currency));
                default:
                    return {};
            }
        case Qt::ToolTipRole:
            if (index.column() == merchantColumn)
                return toQString(line->rawDescription);
            return {};
        case Qt::TextAlignmentRole:
            if (index.column() == amountColumn)
                return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
            return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
        case idRole:
            return toQString(line->id.text());
        case detailRole:
            return toQString(line->rawDescription);
        case sortRole:
            switch (index.column()) {
                case dateColumn:
                    return QVariant::fromValue<qint64>(line->date.dayNumber());
                case amountColumn:
                    return QVariant::fromValue<qint64>(line->amount);
                default:
                    return data(index, Qt::DisplayRole);
            }
        case amountRole:
            return QVariant::fromValue<qint64>(line->amount);
        case pendingRole:
            return line->status == TransactionStatus::pending;
        case voidedRole:
            return line->voided;
        case manualRole:
            return line->isManualEntry();
        case editedRole:
            return line->revisions && !line->revisions->empty();
        case needsReviewRole:
            return line->needsReview();
        default:
            return {};
    }
}

void TransactionTableModel::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= columnCount_)
        return;
    const TransactionSort wanted{.column = static_cast<TransactionColumn>(column),
                                 .ascending = order == Qt::AscendingOrder};
    if (wanted == m_sort && !m_ids.empty())
        return;
    m_sort = wanted;
    refresh();
}

void TransactionTableModel::setQuery(TransactionQuery query) {
    m_query = std::move(query);
    refresh();
}

TransactionTableModel::Reading TransactionTableModel::read(const Ledger& ledger, int64_t revision,
                                                           const TransactionQuery& query,
                                                           TransactionSort sort,
                                                           SearchTexts texts) {
    if (!texts)
        texts = std::make_shared<const TransactionSearchTexts>(ledger);
    std::vector<const LedgerTransaction*> lines = query.select(ledger, *texts);
    sortTransactions(lines, ledger, sort);
    Reading reading{
        .ledger = ledger, .ids = {}, .totals = {}, .texts = std::move(texts), .revision = revision};
    reading.ids.reserve(lines.size());
    for (const LedgerTransaction* line : lines)
        reading.ids.push_back(line->id);
    reading.totals = totalsOf(ledger, reading.ids);
    return reading;
}

TransactionTotals TransactionTableModel::totalsOf(const Ledger& ledger,
                                                  const std::vector<Uuid>& ids) {
    TransactionTotals totals;
    totals.count = ids.size();
    for (const Uuid& id : ids) {
        const LedgerTransaction* line = ledger.transaction(id);
        if (!line)
            continue;
        // Each line is within the amount limit and the ledger's sum of
        // magnitudes is bounded, so these sums can't overflow.
        if (line->amount > 0)
            totals.moneyIn += line->amount;
        else
            totals.moneyOut -= line->amount;
    }
    return totals;
}

void TransactionTableModel::refresh() {
    const uint64_t number = ++m_number;
    const Ledger& ledger = m_runtime.ledger();
    const int64_t revision = m_runtime.revision();
    SearchTexts texts = revision == m_searchRevision ? m_searchTexts : nullptr;
    if (ledger.transactions.size() < m_inBackgroundFrom) {
        m_reading = false;
        show(read(ledger, revision, m_query, m_sort, std::move(texts)));
        return;
    }
    if (!m_work)
        m_work = std::make_unique<BackgroundWork>(m_runtime.mainQueue());
    m_reading = true;
    m_work->run([copy = ledger, revision, query = m_query, sort = m_sort,
                 texts = std::move(texts)] { return read(copy, revision, query, sort, texts); },
                [this, number](WorkResult<Reading> result) {
                    if (number != m_number)
                        return;
                    m_reading = false;
                    // A reading that failed leaves the last one shown; the
                    // next save reads again.
                    if (result.value)
                        show(std::move(*result.value));
                });
}

void TransactionTableModel::show(Reading reading) {
    beginResetModel();
    m_ledger = std::move(reading.ledger);
    m_ids = std::move(reading.ids);
    m_totals = reading.totals;
    m_searchTexts = std::move(reading.texts);
    m_searchRevision = reading.revision;
    m_rows.clear();
    m_rows.reserve(m_ids.size());
    for (std::size_t row = 0; row < m_ids.size(); ++row)
        m_rows.emplace(m_ids[row], static_cast<int>(row));
    m_descriptors.clear();
    endResetModel();
    Q_EMIT rowsRead();
}

void TransactionTableModel::changeSaved(const SavedChange& change) {
    // Names, categories and the report currency show in every row, and
    // whose lines they are decides which rows there are.
    if (touches(change, {RecordKind::person, RecordKind::account, RecordKind::category,
                         RecordKind::merchant, RecordKind::settings})) {
        refresh();
        return;
    }
    const LedgerDelta& delta = *change.delta;
    // Lines deleted leave the list.
    if (const auto deleted = delta.deleted.find(RecordKind::transaction);
        deleted != delta.deleted.end() && !deleted->second.empty()) {
        refresh();
        return;
    }
    const auto changed = delta.changed.find(RecordKind::transaction);
    if (changed == delta.changed.end() || changed->second.empty()) {
        // The ledger moved on (an undo step, say) with nothing of the rows.
        m_ledger = m_runtime.ledger();
        return;
    }
    if (m_reading) {
        refresh();
        return;
    }
    const Ledger& live = m_runtime.ledger();
    std::vector<int> rows;
    for (const RecordID& id : changed->second) {
        const LedgerTransaction* now = lineOf(live, id);
        const LedgerTransaction* before = lineOf(m_ledger, id);
        if (!now || !before) {
            refresh();
            return;
        }
        const int row = rowOf(now->id);
        if ((row >= 0) != m_query.keeps(*now, live)) {
            refresh();
            return;
        }
        if (row >= 0) {
            rows.push_back(row);
            // A correction may change an amount: the totals follow line by line.
            for (const auto& [line, sign] : {std::pair{before, -1}, std::pair{now, 1}}) {
                if (line->amount > 0)
                    m_totals.moneyIn += sign * line->amount;
                else
                    m_totals.moneyOut -= sign * line->amount;
            }
        }
    }
    m_ledger = live;
    if (rows.empty())
        return;
    for (int row : rows) {
        m_descriptors.erase(m_ids[static_cast<std::size_t>(row)]);
        Q_EMIT dataChanged(index(row, 0), index(row, columnCount_ - 1));
    }
    Q_EMIT rowsRead();
}

}  // namespace copperwick::app
