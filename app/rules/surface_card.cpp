#include "app/rules/surface_card.h"

#include <QPainter>

namespace copperwick::app {

SurfaceCard::SurfaceCard(QWidget* parent, int margin)
    : QWidget(parent), m_layout(new QVBoxLayout(this)) {
    m_layout->setContentsMargins(margin, margin - 2, margin, margin - 2);
    m_layout->setSpacing(10);
}

void SurfaceCard::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::Midlight));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 10, 10);
}

}  // namespace copperwick::app
