#include "app/transactions/reflow_bar.h"

#include <algorithm>

#include <QEvent>
#include <QHBoxLayout>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace copperwick::app {

namespace {

constexpr int kSpacing = 8;

// The narrowest a control can be laid out without cutting it: a button asks
// for its whole words, a field or a menu for what it says it can shrink to.
int narrowest(const QWidget* control) {
    if (control->minimumWidth() > 0)
        return control->minimumWidth();
    if (!(control->sizePolicy().horizontalPolicy() & QSizePolicy::ShrinkFlag))
        return control->sizeHint().width();
    return control->minimumSizeHint().width();
}

}  // namespace

ReflowBar::ReflowBar(QWidget* parent) : QWidget(parent) {
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(kSpacing);
    m_first = new QHBoxLayout;
    m_second = new QHBoxLayout;
    for (QBoxLayout* row : {m_first, m_second}) {
        row->setSpacing(kSpacing);
        rows->addLayout(row);
    }
}

void ReflowBar::addToFirstRow(QWidget* control, int stretch) {
    m_firstRow.emplace_back(control, stretch);
    arrange(m_twoRows);
}

void ReflowBar::addToSecondRow(QWidget* control, int stretch) {
    m_secondRow.emplace_back(control, stretch);
    arrange(m_twoRows);
}

int ReflowBar::rowWidth(const Row& row, bool natural) const {
    int width = 0;
    int shown = 0;
    for (const auto& [control, stretch] : row) {
        if (control->isHidden())
            continue;
        width += natural ? std::max(control->sizeHint().width(), narrowest(control))
                         : narrowest(control);
        ++shown;
    }
    return width + std::max(0, shown - 1) * kSpacing;
}

QSize ReflowBar::minimumSizeHint() const {
    // Two rows are always there to fall back on, so the bar never holds the
    // window wider than its wider row.
    const int width = std::max(rowWidth(m_firstRow, false), rowWidth(m_secondRow, false));
    return {width, layout()->minimumSize().height()};
}

bool ReflowBar::event(QEvent* event) {
    // A control shown or hidden changes what one row needs.
    if (event->type() == QEvent::LayoutRequest)
        follow(width());
    return QWidget::event(event);
}

void ReflowBar::resizeEvent(QResizeEvent* event) {
    follow(event->size().width());
    QWidget::resizeEvent(event);
}

void ReflowBar::follow(int width) {
    Row both = m_firstRow;
    both.insert(both.end(), m_secondRow.begin(), m_secondRow.end());
    const bool twoRows = width < rowWidth(both, true);
    if (twoRows != m_twoRows)
        arrange(twoRows);
}

void ReflowBar::arrange(bool twoRows) {
    m_twoRows = twoRows;
    for (const Row* row : {&m_firstRow, &m_secondRow}) {
        for (const auto& [control, stretch] : *row) {
            m_first->removeWidget(control);
            m_second->removeWidget(control);
        }
    }
    for (const auto& [control, stretch] : m_firstRow)
        m_first->addWidget(control, stretch);
    for (const auto& [control, stretch] : m_secondRow)
        (twoRows ? m_second : m_first)->addWidget(control, stretch);
    updateGeometry();
}

}  // namespace copperwick::app
