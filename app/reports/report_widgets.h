#pragma once

// The pieces the Reports screen is made of: a figure's tile, a row of a
// table that opens the transactions behind it, the bar of a budget line, and
// the colours the charts give categories. Every figure a person can press is
// a button named by what it shows, so that the keyboard and assistive
// technology reach it like any other. Colours come from the palette: the
// categories' are turned round the colour wheel from the skin's accent.
// Main thread only.

#include <vector>

#include <QColor>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QString>
#include <QVBoxLayout>
#include <QWidget>

#include "app/widgets/chart_colours.h"

namespace copperwick::app {

// A category's colour as a dot before its name.
class SwatchDot : public QWidget {
    Q_OBJECT

  public:
    explicit SwatchDot(QWidget* parent = nullptr);
    void setColour(const QColor& colour);
    [[nodiscard]] const QColor& colour() const { return m_colour; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor m_colour;
};

// A figure under its title with a caption beneath, pressed to show its
// transactions.
class FigureTile : public QPushButton {
    Q_OBJECT

  public:
    FigureTile(const QString& title, const QString& figure, const QString& caption,
               QWidget* parent = nullptr);
    [[nodiscard]] QString figure() const { return m_figure->text(); }
    [[nodiscard]] QString caption() const { return m_caption->text(); }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QLabel* m_title;
    QLabel* m_figure;
    QLabel* m_caption;
};

// One line of a table: the first cell takes the room left (and elides),
// the others keep the widths given, right-aligned. Pressed, it opens the
// transactions behind the line.
class FigureRow : public QPushButton {
    Q_OBJECT

  public:
    FigureRow(const std::vector<QString>& cells, const std::vector<int>& widths,
              QWidget* parent = nullptr);
    // The cells' words, in order.
    [[nodiscard]] std::vector<QString> cells() const;
    // A coloured dot before the first cell.
    void setSwatch(const QColor& colour);
    // A widget under the cells (a budget's bar), as wide as the row.
    void addBelow(QWidget* widget);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<QLabel*> m_cells;
    SwatchDot* m_swatch = nullptr;
    QVBoxLayout* m_column;
};

// The heads of a table's columns, lined up with its rows.
[[nodiscard]] QWidget* tableHeader(const std::vector<QString>& heads,
                                   const std::vector<int>& widths, QWidget* parent);

// How much of a budget is spent: filled to `spent` of `budgeted`, in the
// accent, the warning colour when over, or grey with nothing budgeted.
class BudgetBar : public QWidget {
    Q_OBJECT

  public:
    BudgetBar(int64_t spent, int64_t budgeted, QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {120, 8}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {40, 8}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int64_t m_spent;
    int64_t m_budgeted;
};

}  // namespace copperwick::app
