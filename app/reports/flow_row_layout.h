#pragma once

// Groups of controls in a line, left to right, each as wide as it asks;
// a group that doesn't fit moves to the next line, so a narrow window holds
// every group whole instead of growing wider than the screen. A group
// wider than the whole line is given the line. Main thread only.

#include <QLayout>
#include <QList>

namespace copperwick::app {

class FlowRowLayout : public QLayout {
  public:
    explicit FlowRowLayout(QWidget* parent = nullptr);
    ~FlowRowLayout() override;

    void setSpacings(int horizontal, int vertical);

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
    // Lays the groups out in `area` when `apply`; the height they take.
    int arrange(const QRect& area, bool apply) const;

    QList<QLayoutItem*> m_items;
    int m_horizontal = 24;
    int m_vertical = 12;
};

}  // namespace copperwick::app
