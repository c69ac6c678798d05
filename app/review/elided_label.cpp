#include "app/review/elided_label.h"

#include <QResizeEvent>

namespace copperwick::app {

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : QLabel(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setFullText(text);
}

void ElidedLabel::setFullText(const QString& text) {
    m_fullText = text;
    setAccessibleName(text);
    setToolTip(text);
    elide();
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().horizontalAdvance(QStringLiteral("W…")),
            QLabel::minimumSizeHint().height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::elide() {
    const QString shown = fontMetrics().elidedText(m_fullText, Qt::ElideRight, qMax(0, width()));
    if (shown != text())
        setText(shown);
}

}  // namespace copperwick::app
