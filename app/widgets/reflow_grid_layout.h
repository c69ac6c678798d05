#pragma once

// A grid of like cells (a figure under its caption, say) in as many equal
// columns as fit the width, up to a most, row after row: the cells move to
// the next row as the room narrows, so that the grid never holds its parent
// wider than one cell. Hidden cells take no place. Main thread only.

#include <QLayout>
#include <QList>

namespace copperwick::app {

class ReflowGridLayout : public QLayout {
  public:
    explicit ReflowGridLayout(int maxColumns, QWidget* parent = nullptr);
    ~ReflowGridLayout() override;

    void setSpacings(int horizontal, int vertical);
    // How many columns `width` holds.
    [[nodiscard]] int columnsFor(int width) const;

    void addItem(QLayoutItem* item) override;
    [[nodiscard]] int count() const override { return static_cast<int>(m_items.size()); }
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    void setGeometry(const QRect& rect) override;

  private:
    [[nodiscard]] QList<QLayoutItem*> shownItems() const;
    // The width one cell asks for: the widest of the cells' hints.
    [[nodiscard]] int cellWidth() const;
    // Lays the cells out in `area` when `apply`; the height they take.
    int arrange(const QRect& area, bool apply) const;

    QList<QLayoutItem*> m_items;
    int m_maxColumns;
    int m_horizontal = 24;
    int m_vertical = 10;
};

}  // namespace copperwick::app
