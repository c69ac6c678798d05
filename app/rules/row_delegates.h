#pragma once

// The painters of the rows of the Rules & Merchants screen. They only paint
// what the model holds and turn a click on a switch or an "Edit" button, or
// Space on a row, into the model's own request; they change nothing
// themselves.
//
// SwitchRowDelegate paints a rule: its switch (the row's check state), its
// name and description, and, when asked, an "Edit" button. MerchantRowDelegate
// paints a merchant: badge, name, what it files as, and "Edit". Colours come
// from the view's palette. Main thread only.

#include <QRect>
#include <QStyledItemDelegate>

namespace copperwick::app {

class SwitchRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    // With `editable`, each row carries an "Edit" button.
    explicit SwitchRowDelegate(bool editable, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

    // Where a row's switch and "Edit" button stand; tests click there.
    [[nodiscard]] static QRect switchRect(const QRect& row);
    [[nodiscard]] static QRect editRect(const QRect& row, const QFont& font);

  Q_SIGNALS:
    void editRequested(const QModelIndex& index);

  private:
    bool m_editable;
};

class MerchantRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

  Q_SIGNALS:
    void editRequested(const QModelIndex& index);
};

}  // namespace copperwick::app
