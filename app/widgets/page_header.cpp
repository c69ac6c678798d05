#include "app/widgets/page_header.h"

#include <QVBoxLayout>

namespace copperwick::app {

PageHeader::PageHeader(const QString& title, const QString& subtitle, QWidget* parent)
    : QWidget(parent), m_title(new QLabel(title, this)), m_subtitle(new QLabel(subtitle, this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);

    QFont titleFont = m_title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setWeight(QFont::DemiBold);
    m_title->setFont(titleFont);
    m_title->setAccessibleName(title);
    m_title->setTextInteractionFlags(Qt::NoTextInteraction);
    layout->addWidget(m_title);

    m_subtitle->setWordWrap(true);
    m_subtitle->setForegroundRole(QPalette::PlaceholderText);
    m_subtitle->setAccessibleName(subtitle);
    m_subtitle->setVisible(!subtitle.isEmpty());
    layout->addWidget(m_subtitle);
}

}  // namespace copperwick::app
