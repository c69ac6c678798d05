#include "app/widgets/symbol_view.h"

#include <QPainter>

#include "app/widgets/symbol_icons.h"

namespace copperwick::app {

SymbolView::SymbolView(std::string_view symbol, int size, QWidget* parent)
    : QWidget(parent), m_symbol(symbol), m_size(size) {
    setFixedSize(size, size);
}

void SymbolView::setSymbol(std::string_view symbol) {
    m_symbol = symbol;
    update();
}

void SymbolView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    symbolIcon(m_symbol).paint(&painter, rect(), Qt::AlignCenter,
                               isEnabled() ? QIcon::Normal : QIcon::Disabled);
}

}  // namespace copperwick::app
