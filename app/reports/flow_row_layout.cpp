#include "app/reports/flow_row_layout.h"

#include <algorithm>

#include <QWidget>

namespace copperwick::app {

FlowRowLayout::FlowRowLayout(QWidget* parent) : QLayout(parent) {
    setContentsMargins(0, 0, 0, 0);
}

FlowRowLayout::~FlowRowLayout() {
    while (QLayoutItem* item = takeAt(0))
        delete item;
}

void FlowRowLayout::setSpacings(int horizontal, int vertical) {
    m_horizontal = horizontal;
    m_vertical = vertical;
    invalidate();
}

void FlowRowLayout::addItem(QLayoutItem* item) {
    m_items.append(item);
    invalidate();
}

QLayoutItem* FlowRowLayout::itemAt(int index) const {
    return index >= 0 && index < m_items.size() ? m_items.at(index) : nullptr;
}

QLayoutItem* FlowRowLayout::takeAt(int index) {
    if (index < 0 || index >= m_items.size())
        return nullptr;
    QLayoutItem* item = m_items.takeAt(index);
    invalidate();
    return item;
}

QSize FlowRowLayout::sizeHint() const {
    int width = 0;
    int height = 0;
    for (const QLayoutItem* item : m_items) {
        if (item->isEmpty())
            continue;
        width += (width > 0 ? m_horizontal : 0) + item->sizeHint().width();
        height = std::max(height, item->sizeHint().height());
    }
    const QMargins margins = contentsMargins();
    return {width + margins.left() + margins.right(), height + margins.top() + margins.bottom()};
}

QSize FlowRowLayout::minimumSize() const {
    QSize least;
    for (const QLayoutItem* item : m_items) {
        if (!item->isEmpty())
            least = least.expandedTo(item->minimumSize());
    }
    const QMargins margins = contentsMargins();
    return least + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

int FlowRowLayout::heightForWidth(int width) const {
    return arrange(QRect(0, 0, width, 0), false);
}

void FlowRowLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int FlowRowLayout::arrange(const QRect& area, bool apply) const {
    const QRect inner = area.marginsRemoved(contentsMargins());
    int x = inner.x();
    int y = inner.y();
    int lineHeight = 0;
    for (QLayoutItem* item : m_items) {
        if (item->isEmpty())
            continue;
        const int width = std::clamp(item->sizeHint().width(), item->minimumSize().width(),
                                     std::max(inner.width(), item->minimumSize().width()));
        if (x > inner.x() && x + width > inner.right() + 1) {
            x = inner.x();
            y += lineHeight + m_vertical;
            lineHeight = 0;
        }
        const int height =
            item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
        if (apply)
            item->setGeometry(QRect(x, y, width, height));
        x += width + m_horizontal;
        lineHeight = std::max(lineHeight, height);
    }
    const QMargins margins = contentsMargins();
    return y + lineHeight - inner.y() + margins.top() + margins.bottom();
}

}  // namespace copperwick::app
