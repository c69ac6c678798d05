#include "app/widgets/card_frame.h"

#include <QPainter>
#include <QPainterPath>

#include "app/widgets/colour_mix.h"

namespace copperwick::app {

namespace {

constexpr qreal kRadius = 10;

}  // namespace

CardFrame::CardFrame(QWidget* parent) : QFrame(parent) {
    setFrameShape(QFrame::NoFrame);
    setAttribute(Qt::WA_StyledBackground, false);
}

void CardFrame::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(area, kRadius, kRadius);
    const QPalette& colours = palette();
    painter.fillPath(path, colours.color(QPalette::Base));
    painter.setPen(
        QPen(mix(colours.color(QPalette::Base), colours.color(QPalette::Text), 0.13), 1));
    painter.drawPath(path);
}

}  // namespace copperwick::app
