#include "app/transactions/transaction_row_delegate.h"

#include <algorithm>

#include <QPainter>

#include "app/transactions/transaction_table_model.h"
#include "app/widgets/merchant_badge.h"

namespace copperwick::app {

namespace {

constexpr int kPadding = 8;
constexpr int kLineGap = 2;
constexpr int kBadgeSize = 28;

QFont nameFont(const QFont& base) {
    QFont font = base;
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont detailFont(const QFont& base) {
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() * 0.88);
    return font;
}

QColor textColor(const QStyleOptionViewItem& option) {
    return option.palette.color(option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                      : QPalette::Text);
}

QColor quietColor(const QStyleOptionViewItem& option) {
    return option.palette.color(option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                      : QPalette::PlaceholderText);
}

// Draws `text` ending at the right edge of `area`, each digit in the width of
// the widest one: the font's own figures may be proportional, and amounts
// read best when their digits stand in columns.
void drawTabular(QPainter& painter, const QRect& area, const QString& text) {
    const QFontMetrics metrics(painter.font());
    int digitWidth = 0;
    for (QChar digit = u'0'; digit <= u'9'; digit = QChar(digit.unicode() + 1))
        digitWidth = std::max(digitWidth, metrics.horizontalAdvance(digit));
    const auto advance = [&](QChar c) {
        return c.isDigit() ? digitWidth : metrics.horizontalAdvance(c);
    };
    int width = 0;
    for (QChar c : text)
        width += advance(c);
    int x = area.right() - width;
    const int baseline = area.center().y() + (metrics.ascent() - metrics.descent()) / 2;
    for (QChar c : text) {
        const int w = advance(c);
        painter.drawText(QPoint(x + (w - metrics.horizontalAdvance(c)) / 2, baseline), QString(c));
        x += w;
    }
}

// One line of `text` in `area`, elided at its end, vertically centred.
void drawLine(QPainter& painter, const QRect& area, const QString& text,
              Qt::Alignment alignment = Qt::AlignLeft) {
    const QFontMetrics metrics(painter.font());
    painter.drawText(area, static_cast<int>(alignment | Qt::AlignVCenter),
                     metrics.elidedText(text, Qt::ElideRight, area.width()));
}

}  // namespace

int TransactionRowDelegate::rowHeight(const QFont& font) {
    return std::max(kBadgeSize, QFontMetrics(nameFont(font)).height() + kLineGap +
                                    QFontMetrics(detailFont(font)).height()) +
           2 * kPadding;
}

QSize TransactionRowDelegate::sizeHint(const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(rowHeight(option.font));
    return size;
}

void TransactionRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    const auto* model = qobject_cast<const TransactionTableModel*>(index.model());
    if (!model)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    // No fill under the pointer: the view redraws only the cell it is over,
    // and half a row lit reads as a fault.
    if (option.state & QStyle::State_Selected)
        painter->fillRect(option.rect, option.palette.color(QPalette::Highlight));
    painter->setPen(option.palette.color(QPalette::Midlight));
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());

    const QRect area = option.rect.adjusted(kPadding, kPadding, -kPadding, -kPadding);
    const QString text = index.data(Qt::DisplayRole).toString();
    const bool pending = index.data(TransactionTableModel::pendingRole).toBool();
    const bool voided = index.data(TransactionTableModel::voidedRole).toBool();
    const QFontMetrics nameMetrics(nameFont(option.font));
    const QFontMetrics detailMetrics(detailFont(option.font));
    const int twoLines = nameMetrics.height() + kLineGap + detailMetrics.height();
    const QRect upper(area.left(), area.center().y() - twoLines / 2, area.width(),
                      nameMetrics.height());
    const QRect lower(area.left(), upper.bottom() + 1 + kLineGap, area.width(),
                      detailMetrics.height());

    switch (index.column()) {
        case TransactionTableModel::dateColumn: {
            painter->setFont(option.font);
            painter->setPen(textColor(option));
            if (!pending) {
                drawLine(*painter, area, text);
                break;
            }
            drawLine(*painter, upper, text);
            QFont font = detailFont(option.font);
            font.setItalic(true);
            painter->setFont(font);
            painter->setPen(quietColor(option));
            drawLine(*painter, lower, QStringLiteral("Pending"));
            break;
        }
        case TransactionTableModel::merchantColumn: {
            const QRect badge(area.left(), area.center().y() - kBadgeSize / 2, kBadgeSize,
                              kBadgeSize);
            MerchantBadge::paint(*painter, badge, model->descriptorAt(index.row()), option.palette,
                                 option.font);
            const int textLeft = badge.right() + 1 + kPadding;
            QFont font = nameFont(option.font);
            font.setStrikeOut(voided);
            painter->setFont(font);
            painter->setPen(textColor(option));
            drawLine(*painter, upper.adjusted(textLeft - upper.left(), 0, 0, 0), text);
            QString detail = index.data(TransactionTableModel::detailRole).toString();
            if (index.data(TransactionTableModel::editedRole).toBool())
                detail = QStringLiteral("Corrected \u00B7 ") + detail;
            if (index.data(TransactionTableModel::manualRole).toBool())
                detail = QStringLiteral("Manual entry \u00B7 ") + detail;
            painter->setFont(detailFont(option.font));
            painter->setPen(quietColor(option));
            drawLine(*painter, lower.adjusted(textLeft - lower.left(), 0, 0, 0), detail);
            break;
        }
        case TransactionTableModel::categoryColumn: {
            QFont font = option.font;
            const bool waiting = index.data(TransactionTableModel::needsReviewRole).toBool();
            font.setItalic(waiting);
            painter->setFont(font);
            painter->setPen(waiting && !(option.state & QStyle::State_Selected)
                                ? option.palette.color(QPalette::Link)
                                : textColor(option));
            drawLine(*painter, area, text);
            break;
        }
        case TransactionTableModel::amountColumn: {
            QFont font = option.font;
            font.setWeight(QFont::Medium);
            font.setStrikeOut(voided);
            painter->setFont(font);
            painter->setPen(pending ? quietColor(option) : textColor(option));
            drawTabular(*painter, area, text);
            break;
        }
        default:
            painter->setFont(option.font);
            painter->setPen(textColor(option));
            drawLine(*painter, area, text);
            break;
    }
    if (option.state & QStyle::State_HasFocus && index.column() == 0) {
        painter->setPen(QPen(option.palette.color(QPalette::Link), 1.5));
        painter->drawLine(option.rect.topLeft() + QPoint(1, 2),
                          option.rect.bottomLeft() + QPoint(1, -2));
    }
    painter->restore();
}

}  // namespace copperwick::app
