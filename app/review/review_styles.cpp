#include "app/review/review_styles.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>

#include "app/widgets/colour_mix.h"

namespace copperwick::app {

namespace {

constexpr qreal kRadius = 7;

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
