#include "app/widgets/elided_label.h"

#include <QEvent>
#include <QFontMetrics>

namespace copperwick::app {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : ElidedLabel(parent) {
    setFullText(text);
}

void ElidedLabel::setFullText(const QString& text) {
    if (text == m_fullText && !QLabel::text().isEmpty())
        return;
    m_fullText = text;
    setAccessibleName(text);
    elide();
    updateGeometry();
}

QSize ElidedLabel::minimumSizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(QStringLiteral("W…")), metrics.height()};
}

QSize ElidedLabel::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(m_fullText) + 2, metrics.height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        elide();
}

void ElidedLabel::elide() {
    const QString shown = fontMetrics().elidedText(m_fullText, Qt::ElideRight, width());
    QLabel::setText(shown);
    // The tooltip says what the "…" stands for, and only then.
    setToolTip(shown == m_fullText ? QString() : m_fullText);
}

}  // namespace copperwick::app
