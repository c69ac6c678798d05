#include "app/shell/message_bar.h"

#include <QEvent>
#include <QGraphicsDropShadowEffect>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"

namespace copperwick::app {

namespace {

// Room kept around the bars, so that they float over the screens below.
constexpr int kMargin = 4;
// How far a bar's shadow reaches, kept clear around the bars.
constexpr int kShadow = 9;
// The bars never grow wider than this; a wide window centres them.
constexpr int kMaximumWidth = 760;

}  // namespace

MessageBar::MessageBar(bool isError, QWidget* parent)
    : QFrame(parent),
      m_isError(isError),
      m_icon(new SymbolView(isError ? "exclamationmark.triangle.fill" : "checkmark.circle.fill", 18,
                            this)),
      m_text(new QLabel(this)),
      m_dismiss(new QPushButton(QStringLiteral("Dismiss"), this)) {
    setFrameShape(QFrame::NoFrame);
    // It floats over the screen below: a soft shadow sets it apart.
    m_shadow = new QGraphicsDropShadowEffect(this);
    m_shadow->setBlurRadius(kShadow * 2);
    m_shadow->setOffset(0, 2);
    setGraphicsEffect(m_shadow);
    shadeFromPalette();

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 8, 8);
    layout->setSpacing(10);
    layout->addWidget(m_icon, 0, Qt::AlignVCenter);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_text, 1);
    m_dismiss->setFlat(true);
    m_dismiss->setAccessibleName(QStringLiteral("Dismiss"));
    layout->addWidget(m_dismiss, 0, Qt::AlignVCenter);
    connect(m_dismiss, &QPushButton::clicked, this, &MessageBar::dismissed);
}

void MessageBar::shadeFromPalette() {
    QColor shade = palette().color(QPalette::Shadow);
    shade.setAlphaF(0.35f);
    m_shadow->setColor(shade);
}

void MessageBar::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange)
        shadeFromPalette();
    QFrame::changeEvent(event);
}

void MessageBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(box, 9, 9);
}

void MessageBar::setText(const QString& text) {
    m_text->setText(text);
    m_text->setAccessibleName(text);
}

MessageBarStack::MessageBarStack(QWidget* parent)
    : QWidget(parent), m_error(new MessageBar(true, this)), m_status(new MessageBar(false, this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kShadow, kShadow, kShadow, kShadow);
    layout->setSpacing(6);
    layout->addWidget(m_error);
    layout->addWidget(m_status);
    m_error->hide();
    m_status->hide();
    hide();
    connect(m_error, &MessageBar::dismissed, this, &MessageBarStack::errorDismissed);
    connect(m_status, &MessageBar::dismissed, this, &MessageBarStack::statusDismissed);
    parent->installEventFilter(this);
}

void MessageBarStack::setErrorMessage(const std::optional<std::string>& message) {
    m_error->setText(message ? toQString(*message) : QString());
    m_error->setVisible(message.has_value());
    place();
}

void MessageBarStack::setStatusMessage(const std::optional<std::string>& message) {
    m_status->setText(message ? toQString(*message) : QString());
    m_status->setVisible(message.has_value());
    place();
}

bool MessageBarStack::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(watched, event);
}

void MessageBarStack::place() {
    const bool any = !m_error->isHidden() || !m_status->isHidden();
    setVisible(any);
    if (!any)
        return;
    const QWidget* parent = parentWidget();
    const int width = std::min(parent->width() - 2 * kMargin, kMaximumWidth + 2 * kShadow);
    layout()->activate();
    const int height = heightForWidth(width) > 0 ? heightForWidth(width) : sizeHint().height();
    setGeometry((parent->width() - width) / 2, kMargin, width, height);
    raise();
}

}  // namespace copperwick::app
