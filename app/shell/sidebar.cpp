#include "app/shell/sidebar.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_icons.h"
#include "app/widgets/symbol_view.h"

namespace copperwick::app {

namespace {

constexpr int kRowHeight = 34;
constexpr int kIconSize = 18;
constexpr int kSideMargin = 10;

// Paints a row: a rounded selection in the skin's selection colour, the
// section's icon, its label and, on the right, its count.
class SidebarDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {option.rect.width(), kRowHeight};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QPalette& palette = option.palette;
        const bool selected = option.state & QStyle::State_Selected;
        const QRect row = option.rect.adjusted(kSideMargin, 2, -kSideMargin, -2);
        if (selected) {
            QPainterPath path;
            path.addRoundedRect(row, 7, 7);
            painter->fillPath(path, palette.color(QPalette::Highlight));
        } else if (option.state & QStyle::State_MouseOver) {
            QPainterPath path;
            path.addRoundedRect(row, 7, 7);
            painter->fillPath(path, palette.color(QPalette::Midlight));
        }
        if (option.state & QStyle::State_HasFocus &&
            option.state & QStyle::State_KeyboardFocusChange) {
            painter->setPen(QPen(palette.color(QPalette::Link), 1.5));
            painter->drawRoundedRect(QRectF(row).adjusted(0.75, 0.75, -0.75, -0.75), 7, 7);
        }

        const QRect iconRect(row.left() + 10, row.center().y() - kIconSize / 2 + 1, kIconSize,
                             kIconSize);
        const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
        if (icon.isNull()) {
            // No icon theme on this machine: the label stands alone.
        } else if (selected) {
            // The section icons are single-colour outlines: on the selection
            // they take the selection's text colour, as the label does.
            const qreal ratio = painter->device()->devicePixelRatioF();
            QPixmap tinted = icon.pixmap(iconRect.size(), ratio);
            QPainter tint(&tinted);
            tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
            tint.fillRect(tinted.rect(), palette.color(QPalette::HighlightedText));
            tint.end();
            painter->drawPixmap(iconRect, tinted);
        } else {
            icon.paint(painter, iconRect, Qt::AlignCenter);
        }

        const QColor text =
            palette.color(selected ? QPalette::HighlightedText : QPalette::WindowText);
        const QString badge = index.data(Sidebar::kBadgeRole).toString();
        QRect textRect = row.adjusted(10 + kIconSize + 10, 0, -10, 0);
        if (!badge.isEmpty()) {
            QFont font = option.font;
            font.setWeight(QFont::DemiBold);
            painter->setFont(font);
            const int width = QFontMetrics(font).horizontalAdvance(badge);
            const QRect badgeRect(textRect.right() - width, row.top(), width, row.height());
            painter->setPen(selected ? text : palette.color(QPalette::PlaceholderText));
            painter->drawText(badgeRect, Qt::AlignVCenter | Qt::AlignRight, badge);
            textRect.setRight(badgeRect.left() - 8);
        }
        painter->setFont(option.font);
        painter->setPen(text);
        painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                          QFontMetrics(option.font)
                              .elidedText(index.data(Qt::DisplayRole).toString(), Qt::ElideRight,
                                          textRect.width()));
        painter->restore();
    }
};

}  // namespace

Sidebar::Sidebar(bool isDemo, QWidget* parent) : QWidget(parent), m_list(new QListWidget(this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 14, 0, 14);
    layout->setSpacing(6);

    if (isDemo) {
        m_demoLabel = new QLabel(QStringLiteral("Demo workspace"), this);
        m_demoLabel->setForegroundRole(QPalette::Link);
        QFont font = m_demoLabel->font();
        font.setWeight(QFont::DemiBold);
        m_demoLabel->setFont(font);
        m_demoLabel->setContentsMargins(20, 0, 20, 4);
        layout->addWidget(m_demoLabel);
    }

    m_list->setAccessibleName(QStringLiteral("Sections"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->viewport()->setAutoFillBackground(true);
    m_list->viewport()->setBackgroundRole(QPalette::AlternateBase);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setItemDelegate(new SidebarDelegate(m_list));
    m_list->setMouseTracking(true);
    m_list->setIconSize({kIconSize, kIconSize});
    for (const auto& info : kSections) {
        auto* item = new QListWidgetItem(symbolIcon(info.symbol), toQString(info.label), m_list);
        item->setData(Qt::AccessibleTextRole, toQString(info.label));
        item->setToolTip(QStringLiteral("%1 (Ctrl+%2)").arg(toQString(info.label)).arg(info.key));
    }
    layout->addWidget(m_list, 1);

    // The foot: where the data lives, said once and plainly.
    auto* foot = new QWidget(this);
    auto* footLayout = new QVBoxLayout(foot);
    footLayout->setContentsMargins(20, 8, 16, 0);
    footLayout->setSpacing(2);
    auto* place = new QHBoxLayout;
    place->setSpacing(6);
    place->addWidget(new SymbolView("lock.shield", 16, foot));
    auto* placeLabel = new QLabel(QStringLiteral("On this computer"), foot);
    QFont placeFont = placeLabel->font();
    placeFont.setWeight(QFont::DemiBold);
    placeLabel->setFont(placeFont);
    place->addWidget(placeLabel, 1);
    footLayout->addLayout(place);
    auto* privacy = new QLabel(QStringLiteral("Your financial data stays private."), foot);
    privacy->setWordWrap(true);
    privacy->setForegroundRole(QPalette::PlaceholderText);
    QFont small = privacy->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    privacy->setFont(small);
    footLayout->addWidget(privacy);
    layout->addWidget(foot);

    setMinimumWidth(190);
    setMaximumWidth(260);

    setCurrentSection(m_current);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &Sidebar::selectionChanged);
}

void Sidebar::setCurrentSection(AppSection section) {
    m_current = section;
    const int row = sectionIndex(section);
    if (m_list->currentRow() == row && m_list->item(row)->isSelected() &&
        m_list->selectedItems().size() == 1)
        return;
    m_updating = true;
    m_list->setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
    m_updating = false;
}

void Sidebar::setReviewCount(std::size_t count) {
    auto* item = m_list->item(sectionIndex(AppSection::review));
    const QString badge = count == 0 ? QString() : QString::number(count);
    if (item->data(kBadgeRole).toString() == badge)
        return;
    item->setData(kBadgeRole, badge);
    item->setData(Qt::AccessibleDescriptionRole, badge);
}

QString Sidebar::reviewBadge() const {
    return m_list->item(sectionIndex(AppSection::review))->data(kBadgeRole).toString();
}

void Sidebar::selectionChanged() {
    if (m_updating)
        return;
    const auto selected = m_list->selectedItems();
    if (selected.isEmpty()) {
        // A row can't be unchosen, only another chosen. Assistive technology
        // chooses a row by clearing the selection and then selecting it, so
        // the mark goes back only if nothing was chosen meanwhile.
        QTimer::singleShot(0, this, [this] {
            if (m_list->selectedItems().isEmpty())
                setCurrentSection(m_current);
        });
        return;
    }
    // The newly chosen row, when the old one is still marked beside it.
    int chosen = sectionIndex(m_current);
    for (const QListWidgetItem* item : selected) {
        if (m_list->row(item) != sectionIndex(m_current)) {
            chosen = m_list->row(item);
            break;
        }
    }
    if (chosen < 0 || chosen >= static_cast<int>(kSections.size()))
        return;
    const AppSection section = kSections[static_cast<std::size_t>(chosen)].section;
    if (section == m_current) {
        // Only the mark of the row already chosen: make it the only one.
        if (selected.size() > 1)
            setCurrentSection(section);
        return;
    }
    Q_EMIT sectionChosen(section);
}

}  // namespace copperwick::app
