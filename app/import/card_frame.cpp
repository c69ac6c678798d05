#include "app/import/card_frame.h"

#include <QPainter>
#include <QPainterPath>

namespace copperwick::app {

namespace {

constexpr qreal kRadius = 10;

}  // namespace

CardFrame::CardFrame(QWidget* parent) : QFrame(parent) {
    setFrameShape(QFrame::NoFrame);
    setContentsMargins(16, 14, 16, 14);
}

void CardFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(area, kRadius, kRadius);
    painter.fillPath(path, palette().color(QPalette::Base));
    // The border is the text colour, faint: it reads on any surface.
    QColor border = palette().color(QPalette::WindowText);
    border.setAlphaF(0.14);
    painter.setPen(QPen(border, 1));
    painter.drawPath(path);
}

}  // namespace copperwick::app
