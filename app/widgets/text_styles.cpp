#include "app/widgets/text_styles.h"

#include <algorithm>

namespace copperwick::app {

QLabel* textLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setAccessibleName(text);
    return label;
}

QLabel* headingLabel(const QString& text, QWidget* parent, qreal scale) {
    QLabel* label = textLabel(text, parent);
    QFont font = label->font();
    font.setWeight(QFont::DemiBold);
    if (scale != 1.0)
        font.setPointSizeF(font.pointSizeF() * scale);
    label->setFont(font);
    return label;
}

QLabel* secondaryLabel(const QString& text, QWidget* parent) {
    QLabel* label = textLabel(text, parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* noteLabel(const QString& text, QWidget* parent, bool small) {
    QLabel* label = secondaryLabel(text, parent);
    if (small) {
        QFont font = label->font();
        font.setPointSizeF(font.pointSizeF() * 0.92);
        label->setFont(font);
    }
    return label;
}

QLabel* fieldLabel(const QString& text, QWidget* buddy, QWidget* parent) {
    QLabel* label = textLabel(text, parent);
    if (buddy) {
        label->setBuddy(buddy);
        buddy->setAccessibleName(text);
    }
    return label;
}

QPushButton* pushButton(const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setAccessibleName(text);
    // Outside a dialog a button takes Enter only when it is an auto-default one.
    button->setAutoDefault(true);
    return button;
}

void setLabelText(QLabel* label, const QString& text) {
    if (label->text() == text)
        return;
    label->setText(text);
    label->setAccessibleName(text);
}

void fitToRows(QAbstractItemView* view, int rowCount, int maxRows) {
    const int shown = std::clamp(rowCount, 1, maxRows);
    int rowHeight = view->sizeHintForRow(0);
    if (rowHeight <= 0)
        rowHeight = view->fontMetrics().height() + 8;
    int height = 2 * view->frameWidth();
    for (int row = 0; row < shown; ++row) {
        const int hint = row < rowCount ? view->sizeHintForRow(row) : -1;
        height += hint > 0 ? hint : rowHeight;
    }
    view->setFixedHeight(height);
}

}  // namespace copperwick::app
