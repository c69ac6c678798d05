#include "app/import/drop_area.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include "app/import/file_panels.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

const QString kTitle = QStringLiteral("Drop CSV, OFX, QFX, QIF or CAMT.053 files here");
const QString kLine = QStringLiteral(
    "Common bank CSV layouts are recognized automatically, including DCU, Schwab, Monzo, N26 "
    "and Bank of Ireland. OFX/QFX checking, savings and credit-card statements are also "
    "supported. For an unfamiliar CSV, Local AI helps on this computer, or you choose its "
    "columns once.");
// The widest the explanatory line grows, so that it reads as a paragraph.
constexpr int kLineMeasure = 640;

}  // namespace

DropArea::DropArea(QWidget* parent)
    : CardFrame(parent),
      m_chooseFiles(pushButton(QStringLiteral("Choose Files"), this)),
      m_layouts(pushButton(QStringLiteral("Bank File Layouts…"), this)) {
    setAcceptDrops(true);
    setAccessibleName(kTitle);

    auto* layout = new QVBoxLayout(this);
    // On the layout, not the frame: a frame puts its own margins back
    // whenever its style is applied again.
    layout->setContentsMargins(24, 22, 24, 22);
    layout->setSpacing(8);

    auto* symbol = new SymbolView("tray.and.arrow.down", 40, this);
    layout->addWidget(symbol, 0, Qt::AlignHCenter);

    QLabel* title = headingLabel(kTitle, this, 1.15);
    title->setAlignment(Qt::AlignHCenter);
    layout->addWidget(title);

    // The line grows to its measure and no further, centred by the room on
    // either side. Laid out with an alignment of its own instead, it was
    // given the width of its hint but the height of the whole card's width,
    // and lost its last lines.
    QLabel* line = secondaryLabel(kLine, this);
    line->setAlignment(Qt::AlignHCenter);
    line->setMaximumWidth(kLineMeasure);
    auto* lineRow = new QHBoxLayout;
    lineRow->addStretch(0);
    lineRow->addWidget(line, 1);
    lineRow->addStretch(0);
    layout->addLayout(lineRow);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addStretch(1);
    buttons->addWidget(m_chooseFiles);
    buttons->addWidget(m_layouts);
    buttons->addStretch(1);
    layout->addSpacing(4);
    layout->addLayout(buttons);

    connect(m_chooseFiles, &QPushButton::clicked, this, &DropArea::chooseFilesClicked);
    connect(m_layouts, &QPushButton::clicked, this, &DropArea::layoutsClicked);
}

void DropArea::setDragTarget(bool target) {
    if (target == m_dragTarget)
        return;
    m_dragTarget = target;
    update();
}

void DropArea::dragEnterEvent(QDragEnterEvent* event) {
    if (localFiles(event->mimeData()).empty())
        return;
    event->acceptProposedAction();
    setDragTarget(true);
}

void DropArea::dragMoveEvent(QDragMoveEvent* event) {
    if (!localFiles(event->mimeData()).empty())
        event->acceptProposedAction();
}

void DropArea::dragLeaveEvent(QDragLeaveEvent*) {
    setDragTarget(false);
}

void DropArea::dropEvent(QDropEvent* event) {
    setDragTarget(false);
    const auto files = localFiles(event->mimeData());
    if (files.empty())
        return;
    event->acceptProposedAction();
    Q_EMIT filesDropped(files);
}

void DropArea::paintEvent(QPaintEvent* event) {
    if (!m_dragTarget) {
        CardFrame::paintEvent(event);
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    QPainterPath path;
    path.addRoundedRect(area, 10, 10);
    QColor fill = palette().color(QPalette::Highlight);
    fill.setAlphaF(0.18);
    painter.fillPath(path, palette().color(QPalette::Base));
    painter.fillPath(path, fill);
    painter.setPen(QPen(palette().color(QPalette::Link), 2, Qt::DashLine));
    painter.drawPath(path);
}

}  // namespace copperwick::app
