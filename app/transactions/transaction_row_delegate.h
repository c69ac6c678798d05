#pragma once

// Paints the Transactions table's cells from what the model holds, and
// nothing else: the merchant's badge beside its name over the bank's text,
// "Pending" under the date of a line that hasn't posted, a removed line's
// name struck through, and amounts right-aligned in figures of one width so
// that a column of them lines up digit under digit. Every row is as high as
// every other, so the view needs no measuring to scroll a hundred thousand
// of them. Colours come from the view's palette. Main thread only.

#include <QStyledItemDelegate>

namespace copperwick::app {

class TransactionRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;

    // The height of every row, for the view's uniform sections.
    [[nodiscard]] static int rowHeight(const QFont& font);
};

}  // namespace copperwick::app
