#include "app/widgets/card_frame.h"

#include <QPainter>
#include <QPainterPath>

namespace copperwick::app {

namespace {

constexpr qreal kRadius = 10;

QColor mix(const QColor& from, const QColor& to, double t) {
    const auto channel = [t](float a, float b) { return static_cast<float>(a + (b - a) * t); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

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
