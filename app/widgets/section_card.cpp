#include "app/widgets/section_card.h"

#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

// A card's title, a little larger than its rows' names.
constexpr qreal kTitleScale = 1.15;
constexpr int kSymbolSize = 18;

}  // namespace

SectionCard::SectionCard(const QString& title, const QString& note, std::string_view symbol,
                         QWidget* parent)
    : CardFrame(parent),
      m_title(headingLabel(title, this, kTitleScale)),
      m_titleRow(new QHBoxLayout),
      m_body(new QVBoxLayout),
      m_rows(new QVBoxLayout) {
    setAccessibleName(title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kCardMargins);
    layout->setSpacing(10);

    m_titleRow->setSpacing(8);
    if (!symbol.empty())
        m_titleRow->addWidget(new SymbolView(symbol, kSymbolSize, this));
    m_titleRow->addWidget(m_title, 1);
    layout->addLayout(m_titleRow);
    if (!note.isEmpty())
        layout->addWidget(noteLabel(note, this));

    m_body->setContentsMargins(0, 0, 0, 0);
    m_body->setSpacing(10);
    layout->addLayout(m_body);
    m_rows->setContentsMargins(0, 0, 0, 0);
    m_rows->setSpacing(0);
    layout->addLayout(m_rows);
}

QPushButton* SectionCard::addTitleButton(const QString& text) {
    QPushButton* button = pushButton(text, this);
    m_titleRow->addWidget(button);
    return button;
}

void SectionCard::addRow(QWidget* row) {
    m_rows->addWidget(row);
    row->show();
}

void SectionCard::clearRows() {
    while (QLayoutItem* item = m_rows->takeAt(0)) {
        if (QWidget* row = item->widget()) {
            row->hide();
            row->deleteLater();
        }
        delete item;
    }
}

}  // namespace copperwick::app
