#include "app/widgets/section_page.h"

#include "app/widgets/page_header.h"

namespace copperwick::app {

SectionPage::SectionPage(QWidget* parent) : QWidget(parent) {}

std::vector<SelfCheck> SectionPage::selfChecks() {
    return {};
}

QVBoxLayout* SectionPage::makeScrollingColumn(const QString& title, const QString& subtitle) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    m_scroll = new QScrollArea(this);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The column's own controls take the keyboard, not the area around them.
    m_scroll->setFocusPolicy(Qt::NoFocus);
    outer->addWidget(m_scroll);

    auto* content = new QWidget(m_scroll);
    content->setBackgroundRole(QPalette::Window);
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(kPageSideMargin, 24, kPageSideMargin, 28);
    column->setSpacing(16);
    column->addWidget(new PageHeader(title, subtitle, content));
    m_scroll->setWidget(content);
    return column;
}

}  // namespace copperwick::app
