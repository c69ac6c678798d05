#pragma once

// "Import history": every import, newest first, each with its file, its
// account, when it was made, what became of its rows, and "Undo Import",
// which asks first and then takes the whole import back out through the
// runtime.
//
// A list model over the ledger's import records, kept in step with each
// saved change by its delta (rows come and go one by one; a change without
// a delta reads everything again), a delegate that paints each row and its
// button, and a view that answers Enter or Space on a row as the button
// does. Main thread only.

#include <vector>

#include <QAbstractListModel>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QWidget>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_card.h"
#include "core/model/import_batch.h"

namespace copperwick::app {

class ImportHistoryModel : public QAbstractListModel {
    Q_OBJECT

  public:
    enum Role {
        kAccountRole = Qt::UserRole + 1,
        kWhenRole,
        kCountsRole,
        kBatchIDRole,
    };

    explicit ImportHistoryModel(const LedgerRuntime& runtime, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] const ImportBatch& batch(int row) const {
        return m_batches[static_cast<std::size_t>(row)];
    }

    // Follows one saved change: the imports it added or removed, and the
    // rows whose import or account it changed.
    void follow(const SavedChange& change);

  private:
    [[nodiscard]] std::vector<ImportBatch> newestFirst() const;

    const LedgerRuntime& m_runtime;
    std::vector<ImportBatch> m_batches;
};

class ImportHistoryDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // Where a row's "Undo Import" button stands within the row's rectangle.
    [[nodiscard]] static QRect buttonRect(const QRect& row, const QFontMetrics& metrics);

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

  Q_SIGNALS:
    void undoClicked(const QModelIndex& index);
};

class ImportHistoryView : public QListView {
    Q_OBJECT

  public:
    using QListView::QListView;

  Q_SIGNALS:
    void undoRequested(const QModelIndex& index);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};

class RecentImportsSection : public SectionCard {
    Q_OBJECT

  public:
    // How many rows show before the list scrolls.
    static constexpr int kVisibleRows = 5;

    explicit RecentImportsSection(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] ImportHistoryModel* model() const { return m_model; }
    [[nodiscard]] ImportHistoryView* view() const { return m_view; }
    [[nodiscard]] QLabel* emptyLabel() const { return m_empty; }
    // The confirmation now open, if any.
    [[nodiscard]] QMessageBox* confirmation() const { return m_confirmation; }
    // Asks "Undo this import?" for the batch on `row`.
    void askToUndo(int row);

  private:
    void refresh();
    void undo(const ImportBatch& batch);

    RuntimeBridge& m_bridge;
    ImportHistoryModel* m_model;
    ImportHistoryView* m_view;
    QLabel* m_empty;
    QPointer<QMessageBox> m_confirmation;
};

}  // namespace copperwick::app
