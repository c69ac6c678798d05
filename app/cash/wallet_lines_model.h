#pragma once

// The lines of one cash wallet, newest first: the day, what it was and the
// amount, with the raw date and cents under Qt::UserRole for sorting. Read
// from the ledger again whenever a save touches transactions or accounts.
// Main thread only.

#include <optional>
#include <string>
#include <vector>

#include <QAbstractTableModel>

#include "core/model/ledger.h"

namespace copperwick::app {

class WalletLinesModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column {
        date,
        description,
        amount,
    };

    using QAbstractTableModel::QAbstractTableModel;

    // Shows `walletID`'s active lines as `ledger` has them; none without a wallet.
    void refresh(const Ledger& ledger, const std::optional<Uuid>& walletID);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  private:
    struct Line {
        Uuid id;
        LocalDate date;
        std::string description;
        int64_t amount = 0;
        std::string currency;

        friend bool operator==(const Line&, const Line&) = default;
    };
    std::vector<Line> m_lines;
};

}  // namespace copperwick::app
