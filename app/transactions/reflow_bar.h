#pragma once

// A bar of controls in one row while they all fit at the widths they ask
// for, and in two rows when the window is too narrow for that, so that no
// control is ever cut short or laid over its neighbour. Hidden controls take
// no place. Main thread only.

#include <utility>
#include <vector>

#include <QWidget>

class QBoxLayout;

namespace copperwick::app {

class ReflowBar : public QWidget {
  public:
    explicit ReflowBar(QWidget* parent = nullptr);

    // `stretch` is the control's share of the width left over in its row.
    void addToFirstRow(QWidget* control, int stretch = 0);
    void addToSecondRow(QWidget* control, int stretch = 0);

    [[nodiscard]] bool inTwoRows() const { return m_twoRows; }
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    using Row = std::vector<std::pair<QWidget*, int>>;
    [[nodiscard]] int rowWidth(const Row& row, bool natural) const;
    void follow(int width);
    void arrange(bool twoRows);

    QBoxLayout* m_first;
    QBoxLayout* m_second;
    Row m_firstRow;
    Row m_secondRow;
    bool m_twoRows = false;
};

}  // namespace copperwick::app
