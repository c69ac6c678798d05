#include "app/review/card_frame.h"

#include <QApplication>
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

TintPanel::TintPanel(QWidget* parent) : QFrame(parent) {
    setFrameShape(QFrame::NoFrame);
}

void TintPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    path.addRoundedRect(QRectF(rect()), kRadius - 3, kRadius - 3);
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

QLabel* headingLabel(const QString& text, QWidget* parent, double scale) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setWeight(QFont::DemiBold);
    if (scale != 1.0)
        font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
    label->setAccessibleName(text);
    return label;
}

QLabel* noteLabel(const QString& text, QWidget* parent, bool small) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    if (small) {
        QFont font = label->font();
        font.setPointSizeF(font.pointSizeF() * 0.92);
        label->setFont(font);
    }
    label->setAccessibleName(text);
    return label;
}

}  // namespace copperwick::app
