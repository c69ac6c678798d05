#include "app/cash/wallet_lines_model.h"

#include <algorithm>

#include "app/widgets/qt_text.h"
#include "core/model/date_text.h"
#include "core/model/money.h"

namespace copperwick::app {

void WalletLinesModel::refresh(const Ledger& ledger, const std::optional<Uuid>& walletID) {
    std::vector<Line> lines;
    if (walletID) {
        for (const LedgerTransaction& line : ledger.transactions) {
            if (line.accountID == *walletID && line.isActive())
                lines.push_back(
                    Line{line.id, line.date, line.rawDescription, line.amount, line.currency});
        }
    }
    std::sort(lines.begin(), lines.end(), [](const Line& left, const Line& right) {
        if (left.date != right.date)
            return right.date < left.date;
        return left.id.text() < right.id.text();
    });
    if (lines == m_lines)
        return;
    // A wallet's lines are few, so a reset costs nothing worth a finer diff.
    beginResetModel();
    m_lines = std::move(lines);
    endResetModel();
}

int WalletLinesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int WalletLinesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 3;
}

QVariant WalletLinesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Line& line = m_lines[static_cast<std::size_t>(index.row())];
    const int column = index.column();
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
        switch (column) {
            case date:
                return toQString(DateText::medium(line.date));
            case description:
                return toQString(line.description);
            case amount:
                return toQString(Money::format(line.amount, line.currency));
            default:
                return {};
        }
    }
    if (role == Qt::UserRole) {
        if (column == date)
            return toQString(line.date.iso());
        if (column == amount)
            return QVariant::fromValue<qlonglong>(line.amount);
        return toQString(line.description);
    }
    if (role == Qt::TextAlignmentRole && column == amount)
        return QVariant::fromValue<int>(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant WalletLinesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
        case date:
            return QStringLiteral("Date");
        case description:
            return QStringLiteral("Description");
        case amount:
            return QStringLiteral("Amount");
        default:
            return {};
    }
}

}  // namespace copperwick::app
