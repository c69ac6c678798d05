#include "app/widgets/reflow_grid_layout.h"

#include <algorithm>

namespace copperwick::app {

ReflowGridLayout::ReflowGridLayout(int maxColumns, QWidget* parent)
    : QLayout(parent), m_maxColumns(std::max(1, maxColumns)) {
    setContentsMargins(0, 0, 0, 0);
}

ReflowGridLayout::~ReflowGridLayout() {
    qDeleteAll(m_items);
}

void ReflowGridLayout::setSpacings(int horizontal, int vertical) {
    m_horizontal = horizontal;
    m_vertical = vertical;
    invalidate();
}

void ReflowGridLayout::addItem(QLayoutItem* item) {
    m_items.append(item);
}

QLayoutItem* ReflowGridLayout::itemAt(int index) const {
    return index >= 0 && index < m_items.size() ? m_items[index] : nullptr;
}

QLayoutItem* ReflowGridLayout::takeAt(int index) {
    return index >= 0 && index < m_items.size() ? m_items.takeAt(index) : nullptr;
}

QList<QLayoutItem*> ReflowGridLayout::shownItems() const {
    QList<QLayoutItem*> shown;
    for (QLayoutItem* item : m_items) {
        if (!item->isEmpty())
            shown.append(item);
    }
    return shown;
}

int ReflowGridLayout::cellWidth() const {
    int widest = 0;
    for (const QLayoutItem* item : shownItems())
        widest = std::max({widest, item->sizeHint().width(), item->minimumSize().width()});
    return widest;
}

int ReflowGridLayout::columnsFor(int width) const {
    const int cell = cellWidth();
    if (cell <= 0)
        return m_maxColumns;
    return std::clamp((width + m_horizontal) / (cell + m_horizontal), 1, m_maxColumns);
}

QSize ReflowGridLayout::sizeHint() const {
    const auto shown = static_cast<int>(shownItems().size());
    const int columns = std::clamp(shown, 1, m_maxColumns);
    const int width = columns * cellWidth() + (columns - 1) * m_horizontal;
    const QMargins margins = contentsMargins();
    return {width + margins.left() + margins.right(), heightForWidth(width)};
}

QSize ReflowGridLayout::minimumSize() const {
    const QMargins margins = contentsMargins();
    const int width = cellWidth() + margins.left() + margins.right();
    return {width, heightForWidth(width)};
}

int ReflowGridLayout::heightForWidth(int width) const {
    return arrange(QRect(0, 0, width, 0), false);
}

void ReflowGridLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int ReflowGridLayout::arrange(const QRect& area, bool apply) const {
    const QRect inner = area.marginsRemoved(contentsMargins());
    const QList<QLayoutItem*> shown = shownItems();
    const int columns = columnsFor(inner.width());
    const int column = std::max(0, (inner.width() - (columns - 1) * m_horizontal) / columns);
    int top = inner.top();
    for (qsizetype first = 0; first < shown.size(); first += columns) {
        const qsizetype end = std::min(shown.size(), first + columns);
        int rowHeight = 0;
        for (qsizetype i = first; i < end; ++i) {
            QLayoutItem* item = shown[i];
            const int height = item->hasHeightForWidth() ? item->heightForWidth(column)
                                                         : item->sizeHint().height();
            rowHeight = std::max(rowHeight, height);
        }
        if (apply) {
            for (qsizetype i = first; i < end; ++i) {
                const int left =
                    inner.left() + static_cast<int>(i - first) * (column + m_horizontal);
                shown[i]->setGeometry(QRect(left, top, column, rowHeight));
            }
        }
        top += rowHeight + (end < shown.size() ? m_vertical : 0);
    }
    const QMargins margins = contentsMargins();
    return top - inner.top() + margins.top() + margins.bottom();
}

}  // namespace copperwick::app
