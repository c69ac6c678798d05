#include "app/widgets/tab_order.h"

#include <QLayout>
#include <QScrollArea>

namespace copperwick::app {

namespace {

void collect(QWidget* widget, std::vector<QWidget*>& chain);

void collectLayout(QLayout* layout, std::vector<QWidget*>& chain) {
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (QWidget* child = item->widget())
            collect(child, chain);
        else if (QLayout* inner = item->layout())
            collectLayout(inner, chain);
    }
}

void collect(QWidget* widget, std::vector<QWidget*>& chain) {
    if (auto* area = qobject_cast<QScrollArea*>(widget)) {
        if (area->widget())
            collect(area->widget(), chain);
        return;
    }
    // A control is one stop; what it is made of inside is its own affair.
    if (widget->focusPolicy() & Qt::TabFocus) {
        chain.push_back(widget);
        return;
    }
    if (QLayout* layout = widget->layout())
        collectLayout(layout, chain);
}

}  // namespace

void orderTabs(const std::vector<QWidget*>& roots) {
    std::vector<QWidget*> chain;
    for (QWidget* root : roots)
        collect(root, chain);
    for (std::size_t i = 1; i < chain.size(); ++i)
        QWidget::setTabOrder(chain[i - 1], chain[i]);
}

}  // namespace copperwick::app
