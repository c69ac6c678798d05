#include "app/review/review_styles.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>

namespace copperwick::app {

namespace {

constexpr qreal kRadius = 7;

QColor mix(const QColor& from, const QColor& to, double t) {
    const auto channel = [t](float a, float b) { return static_cast<float>(a + (b - a) * t); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

}  // namespace

TintPanel::TintPanel(QWidget* parent) : QFrame(parent) {
    setFrameShape(QFrame::NoFrame);
}

void TintPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    path.addRoundedRect(QRectF(rect()), kRadius, kRadius);
    const QPalette& colours = palette();
    painter.fillPath(path,
                     mix(colours.color(QPalette::Base), colours.color(QPalette::Highlight), 0.12));
}

void makePrimary(QPushButton* button) {
    // Only the active and inactive colours: a button that can't be pressed
    // keeps the palette's own disabled look.
    QPalette colours = QApplication::palette(button);
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        colours.setColor(group, QPalette::Button, colours.color(QPalette::Highlight));
        colours.setColor(group, QPalette::ButtonText, colours.color(QPalette::HighlightedText));
    }
    button->setPalette(colours);
}

}  // namespace copperwick::app
