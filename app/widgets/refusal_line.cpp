#include "app/widgets/refusal_line.h"

#include <QHBoxLayout>

#include "app/widgets/symbol_view.h"

namespace copperwick::app {

RefusalLine::RefusalLine(QWidget* parent) : QWidget(parent), m_label(new QLabel(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(new SymbolView("exclamationmark.triangle", 14, this), 0, Qt::AlignTop);
    m_label->setWordWrap(true);
    m_label->setTextFormat(Qt::PlainText);
    layout->addWidget(m_label, 1);
    hide();
}

void RefusalLine::setRefusal(const QString& text) {
    m_label->setText(text);
    m_label->setAccessibleName(text);
    setVisible(!text.isEmpty());
}

}  // namespace copperwick::app
