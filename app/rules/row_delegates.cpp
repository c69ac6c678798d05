#include "app/rules/row_delegates.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "app/rules/merchant_list_model.h"
#include "app/rules/row_roles.h"
#include "app/widgets/merchant_badge.h"

namespace copperwick::app {

namespace {

constexpr int kPadding = 12;
constexpr int kLineGap = 3;
constexpr QSize kSwitchSize{36, 20};
constexpr int kBadgeSize = 34;
const QString kEditText = QStringLiteral("Edit");

// Both delegates show a name over a line of detail.
QFont nameFont(const QFont& base) {
    QFont font = base;
    font.setWeight(QFont::DemiBold);
    return font;
}

QFont detailFont(const QFont& base) {
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() * 0.92);
    return font;
}

int twoLineHeight(const QFont& base) {
    return 2 * kPadding + QFontMetrics(nameFont(base)).height() + kLineGap +
           QFontMetrics(detailFont(base)).height();
}

QRect editButtonRect(const QRect& row, const QFont& font) {
    const QFontMetrics metrics(font);
    const QSize size(metrics.horizontalAdvance(kEditText) + 24, metrics.height() + 10);
    return QRect(
        QPoint(row.right() - kPadding - size.width() + 1, row.center().y() - size.height() / 2),
        size);
}

// The row's panel: a rounded fill while it is chosen or under the pointer, a
// line under it, and a ring while it has the keyboard focus.
void paintPanel(QPainter* painter, const QStyleOptionViewItem& option) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF panel = QRectF(option.rect).adjusted(1.5, 1.5, -1.5, -1.5);
    painter->setPen(Qt::NoPen);
    if (option.state & QStyle::State_Selected) {
        painter->setBrush(option.palette.color(QPalette::Highlight));
        painter->drawRoundedRect(panel, 6, 6);
    } else if (option.state & QStyle::State_MouseOver) {
        painter->setBrush(option.palette.color(QPalette::AlternateBase));
        painter->drawRoundedRect(panel, 6, 6);
    }
    painter->setPen(option.palette.color(QPalette::Midlight));
    painter->drawLine(QPointF(option.rect.left() + kPadding, option.rect.bottom() + 0.5),
                      QPointF(option.rect.right() - kPadding, option.rect.bottom() + 0.5));
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(QPen(option.palette.color(QPalette::Link), 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(panel, 6, 6);
    }
    painter->restore();
}

QColor nameColor(const QStyleOptionViewItem& option) {
    return option.palette.color(option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                      : QPalette::Text);
}

QColor detailColor(const QStyleOptionViewItem& option) {
    return option.palette.color(option.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                      : QPalette::PlaceholderText);
}

// The name on the upper line and the detail under it, both elided to `area`.
void paintTwoLines(QPainter* painter, const QStyleOptionViewItem& option, const QRect& area,
                   const QString& name, const QString& detail) {
    const QFont upper = nameFont(option.font);
    const QFont lower = detailFont(option.font);
    const QFontMetrics upperMetrics(upper);
    const QFontMetrics lowerMetrics(lower);
    const int height = upperMetrics.height() + kLineGap + lowerMetrics.height();
    const int top = area.center().y() - height / 2;
    painter->save();
    painter->setFont(upper);
    painter->setPen(nameColor(option));
    painter->drawText(QRect(area.left(), top, area.width(), upperMetrics.height()),
                      Qt::AlignLeft | Qt::AlignVCenter,
                      upperMetrics.elidedText(name, Qt::ElideRight, area.width()));
    painter->setFont(lower);
    painter->setPen(detailColor(option));
    painter->drawText(QRect(area.left(), top + upperMetrics.height() + kLineGap, area.width(),
                            lowerMetrics.height()),
                      Qt::AlignLeft | Qt::AlignVCenter,
                      lowerMetrics.elidedText(detail, Qt::ElideRight, area.width()));
    painter->restore();
}

void paintEditButton(QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect) {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(option.palette.color(QPalette::Mid));
    painter->setBrush(option.palette.color(QPalette::Button));
    painter->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    painter->setPen(option.palette.color(QPalette::ButtonText));
    painter->setFont(option.font);
    painter->drawText(rect, Qt::AlignCenter, kEditText);
    painter->restore();
}

void paintSwitch(QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect,
                 bool on) {
    // On a chosen row the selection's own colours keep the switch apart from it.
    const bool selected = option.state & QStyle::State_Selected;
    const QColor track = option.palette.color(
        on ? (selected ? QPalette::HighlightedText : QPalette::Link) : QPalette::Mid);
    const QColor knob = option.palette.color(on && selected ? QPalette::Highlight : QPalette::Base);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter->setPen(Qt::NoPen);
    painter->setBrush(track);
    painter->drawRoundedRect(bounds, bounds.height() / 2, bounds.height() / 2);
    const qreal size = bounds.height() - 4;
    const qreal left = on ? bounds.right() - 2 - size : bounds.left() + 2;
    painter->setBrush(knob);
    painter->drawEllipse(QRectF(left, bounds.top() + 2, size, size));
    painter->restore();
}

bool isLeftMouse(QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
            return static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
        default:
            return false;
    }
}

QPoint mousePosition(QEvent* event) {
    return static_cast<QMouseEvent*>(event)->position().toPoint();
}

bool isSpace(QEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    return key == Qt::Key_Space || key == Qt::Key_Select;
}

void toggle(QAbstractItemModel* model, const QModelIndex& index) {
    const bool on = index.data(Qt::CheckStateRole).value<Qt::CheckState>() == Qt::Checked;
    model->setData(index, on ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

}  // namespace

SwitchRowDelegate::SwitchRowDelegate(bool editable, QObject* parent)
    : QStyledItemDelegate(parent), m_editable(editable) {}

QRect SwitchRowDelegate::switchRect(const QRect& row) {
    return QRect(QPoint(row.left() + kPadding, row.center().y() - kSwitchSize.height() / 2),
                 kSwitchSize);
}

QRect SwitchRowDelegate::editRect(const QRect& row, const QFont& font) {
    return editButtonRect(row, font);
}

void SwitchRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    paintPanel(painter, option);
    const bool on = index.data(Qt::CheckStateRole).value<Qt::CheckState>() == Qt::Checked;
    const QRect toggleArea = switchRect(option.rect);
    paintSwitch(painter, option, toggleArea, on);
    int right = option.rect.right() - kPadding;
    if (m_editable) {
        const QRect button = editRect(option.rect, option.font);
        paintEditButton(painter, option, button);
        right = button.left() - kPadding;
    }
    const QRect text(QPoint(toggleArea.right() + kPadding + 2, option.rect.top()),
                     QPoint(right, option.rect.bottom()));
    paintTwoLines(painter, option, text, index.data(Qt::DisplayRole).toString(),
                  index.data(kDescriptionRole).toString());
}

QSize SwitchRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {std::max(option.rect.width(), 320), twoLineHeight(option.font)};
}

bool SwitchRowDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                    const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (isSpace(event)) {
        toggle(model, index);
        return true;
    }
    if (!isLeftMouse(event))
        return false;
    const QPoint at = mousePosition(event);
    const bool onSwitch = switchRect(option.rect).contains(at);
    const bool onEdit = m_editable && editRect(option.rect, option.font).contains(at);
    if (!onSwitch && !onEdit)
        return false;
    // The press and a double click stay with the control, so that neither
    // opens the row.
    if (event->type() != QEvent::MouseButtonRelease)
        return true;
    if (onSwitch)
        toggle(model, index);
    else
        Q_EMIT editRequested(index);
    return true;
}

void MerchantRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    paintPanel(painter, option);

    const QRect badge(
        QPoint(option.rect.left() + kPadding, option.rect.center().y() - kBadgeSize / 2),
        QSize(kBadgeSize, kBadgeSize));
    MerchantBadge::paint(*painter, badge,
                         index.data(MerchantListModel::BadgeRole).value<MerchantIconDescriptor>(),
                         option.palette, option.font);

    const QRect button = editButtonRect(option.rect, option.font);
    paintEditButton(painter, option, button);

    QStringList details{index.data(MerchantListModel::CountRole).toString()};
    for (const int role : {MerchantListModel::FilingRole, MerchantListModel::RecognizedRole}) {
        const QString part = index.data(role).toString();
        if (!part.isEmpty())
            details.append(part);
    }
    const QRect text(QPoint(badge.right() + kPadding, option.rect.top()),
                     QPoint(button.left() - kPadding, option.rect.bottom()));
    paintTwoLines(painter, option, text, index.data(Qt::DisplayRole).toString(),
                  details.join(QStringLiteral(" \u00B7 ")));
}

QSize MerchantRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {std::max(option.rect.width(), 320),
            std::max(twoLineHeight(option.font), kBadgeSize + 2 * 8)};
}

bool MerchantRowDelegate::editorEvent(QEvent* event, QAbstractItemModel*,
                                      const QStyleOptionViewItem& option,
                                      const QModelIndex& index) {
    if (!isLeftMouse(event) ||
        !editButtonRect(option.rect, option.font).contains(mousePosition(event)))
        return false;
    if (event->type() == QEvent::MouseButtonRelease)
        Q_EMIT editRequested(index);
    return true;
}

}  // namespace copperwick::app
