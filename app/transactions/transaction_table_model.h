#pragma once

// The Transactions screen's table: the lines the core query keeps, in the
// order sortTransactions gives, over a copy of the ledger they were read
// from. The query is the one the command line's `transactions` asks; on a
// long history it runs beside the window on a copy and the newest request
// wins, so typing in the search field never waits for an older pass.
//
// A saved change that only edits lines redraws the rows it names, unless an
// edit moves a line into or out of the list; a change that adds or removes
// lines, or a ledger read afresh, runs the query again. Main thread only.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <QAbstractTableModel>

#include "core/model/ledger.h"
#include "core/presentation/merchant_icons.h"
#include "core/reports/transaction_query.h"
#include "runtime/ledger_runtime.h"
#include "runtime/main_queue.h"

namespace copperwick::app {

// What the footer says about the rows shown.
struct TransactionTotals {
    std::size_t count = 0;
    int64_t moneyIn = 0;
    int64_t moneyOut = 0;  // a magnitude
};

class TransactionTableModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column {
        dateColumn,
        merchantColumn,
        categoryColumn,
        accountColumn,
        amountColumn,
        columnCount_,
    };

    enum Role {
        idRole = Qt::UserRole + 1,
        // The bank's text under the merchant's name.
        detailRole,
        // The raw value the column sorts by: days, cents, or the words.
        sortRole,
        amountRole,
        pendingRole,
        voidedRole,
        manualRole,
        editedRole,
        needsReviewRole,
    };

    // From this many lines on, the query runs beside the window.
    static constexpr std::size_t kInBackgroundFrom = 5'000;

    explicit TransactionTableModel(LedgerRuntime& runtime, QObject* parent = nullptr);
    ~TransactionTableModel() override;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    // Runs the query again with these narrowings (the sort stays the table's).
    void setQuery(TransactionQuery query);
    [[nodiscard]] const TransactionQuery& query() const { return m_query; }
    [[nodiscard]] TransactionSort sortOrder() const { return m_sort; }
    // Runs the query again on the live ledger.
    void refresh();
    // After a save: redraws the rows the delta names, or runs the query
    // again when lines came or went, or joined or left the list.
    void changeSaved(const SavedChange& change);

    [[nodiscard]] bool isReading() const { return m_reading; }
    [[nodiscard]] const std::vector<Uuid>& ids() const { return m_ids; }
    [[nodiscard]] std::optional<Uuid> idAt(int row) const;
    [[nodiscard]] int rowOf(const Uuid& id) const;
    [[nodiscard]] const LedgerTransaction* transactionAt(int row) const;
    [[nodiscard]] const Ledger& ledger() const { return m_ledger; }
    [[nodiscard]] const TransactionTotals& totals() const { return m_totals; }
    // The badge of the row's merchant, worked out once a row.
    [[nodiscard]] const MerchantIconDescriptor& descriptorAt(int row) const;

    // Tests lower it to see a short ledger read in the background.
    void setInBackgroundFrom(std::size_t lines) { m_inBackgroundFrom = lines; }

  Q_SIGNALS:
    // The rows were read again, or some of them redrawn: counts and totals
    // may have changed.
    void rowsRead();

  private:
    using SearchTexts = std::shared_ptr<const TransactionSearchTexts>;
    struct Reading {
        Ledger ledger;
        std::vector<Uuid> ids;
        TransactionTotals totals;
        SearchTexts texts;
        int64_t revision = 0;
    };
    // `texts` are the ledger's searched words when already lowered; the
    // reading lowers them otherwise.
    [[nodiscard]] static Reading read(const Ledger& ledger, int64_t revision,
                                      const TransactionQuery& query, TransactionSort sort,
                                      SearchTexts texts);
    void show(Reading reading);
    [[nodiscard]] static TransactionTotals totalsOf(const Ledger& ledger,
                                                    const std::vector<Uuid>& ids);

    LedgerRuntime& m_runtime;
    TransactionQuery m_query;
    TransactionSort m_sort;
    Ledger m_ledger;
    std::vector<Uuid> m_ids;
    std::unordered_map<Uuid, int> m_rows;
    TransactionTotals m_totals;
    mutable std::unordered_map<Uuid, MerchantIconDescriptor> m_descriptors;
    // Lowered once per ledger revision, so that a search typed on a long
    // history is a plain scan.
    SearchTexts m_searchTexts;
    int64_t m_searchRevision = -1;
    std::size_t m_inBackgroundFrom = kInBackgroundFrom;
    uint64_t m_number = 0;
    bool m_reading = false;
    // Last, so that a reading still out ends before the rest goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick::app
