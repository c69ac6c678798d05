#pragma once

// The transactions behind one figure of a report: its title, the list, how
// many there are and what they come to, and "Open in Transactions", which
// hands the same ids to the Transactions section. The list is a model over
// a copy of the ledger as the report saw it, so a long one (every line of
// "All time") costs only the rows in view. Main thread only.

#include <optional>
#include <string>
#include <vector>

#include <QAbstractTableModel>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

#include "app/widgets/sheet_dialog.h"
#include "core/model/ledger.h"
#include "core/reports/report.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

// A figure's title and the transactions behind it, in the report's order.
struct DrillDown {
    std::string title;
    std::vector<Uuid> ids;
    // A category's lines: its net counts a split line by its parts in
    // `categoryID` alone (none: the uncategorized lines), as its row does.
    bool byCategory = false;
    std::optional<Uuid> categoryID = std::nullopt;
};

// The drill-down of a category's line of a report.
[[nodiscard]] DrillDown categoryDrillDown(const CategoryLine& line);

class DrillDownModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { dateColumn, merchantColumn, categoryColumn, amountColumn, kColumnCount };

    DrillDownModel(Ledger ledger, std::vector<Uuid> ids, std::string currency,
                   QObject* parent = nullptr);
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  private:
    Ledger m_ledger;
    std::vector<Uuid> m_ids;
    std::string m_currency;
};

class DrillDownSheet : public SheetDialog {
    Q_OBJECT

  public:
    // `ledger` is the one the report was built from.
    DrillDownSheet(LedgerRuntime& runtime, DrillDown drillDown, const Ledger& ledger,
                   const std::string& currency, QWidget* parent = nullptr);

    [[nodiscard]] const DrillDown& drillDown() const { return m_drillDown; }
    // The signed sum of the transactions' amounts.
    [[nodiscard]] int64_t net() const { return m_net; }
    [[nodiscard]] QLabel* countLabel() const { return m_count; }
    [[nodiscard]] QTableView* table() const { return m_table; }
    [[nodiscard]] QPushButton* openButton() const { return m_open; }

    // "12 transactions · net −$1,234.56"
    [[nodiscard]] static QString countLine(std::size_t count, int64_t net,
                                           const std::string& currency);

  private:
    void openInTransactions();

    LedgerRuntime& m_runtime;
    DrillDown m_drillDown;
    int64_t m_net = 0;
    QLabel* m_count;
    QTableView* m_table;
    QPushButton* m_open;
};

}  // namespace copperwick::app
