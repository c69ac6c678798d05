#include "app/shell/message_bar.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/section_page.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

// Room above the bars; the screen below keeps its own margin under them.
constexpr int kTopMargin = 12;

}  // namespace

MessageBar::MessageBar(bool isError, QWidget* parent)
    : QFrame(parent),
      m_isError(isError),
      m_icon(new SymbolView(isError ? "exclamationmark.triangle.fill" : "checkmark.circle.fill", 18,
                            this)),
      m_text(new QLabel(this)),
      m_dismiss(pushButton(QStringLiteral("Dismiss"), this)) {
    setFrameShape(QFrame::NoFrame);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 8, 8, 8);
    layout->setSpacing(10);
    layout->addWidget(m_icon, 0, Qt::AlignVCenter);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_text, 1);
    m_dismiss->setFlat(true);
    layout->addWidget(m_dismiss, 0, Qt::AlignVCenter);
    connect(m_dismiss, &QPushButton::clicked, this, &MessageBar::dismissed);
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
    // In line with the screens' content below.
    layout->setContentsMargins(kPageSideMargin, kTopMargin, kPageSideMargin, 0);
    layout->setSpacing(6);
    layout->addWidget(m_error);
    layout->addWidget(m_status);
    m_error->hide();
    m_status->hide();
    hide();
    connect(m_error, &MessageBar::dismissed, this, &MessageBarStack::errorDismissed);
    connect(m_status, &MessageBar::dismissed, this, &MessageBarStack::statusDismissed);
}

void MessageBarStack::setErrorMessage(const std::optional<std::string>& message) {
    m_error->setText(message ? toQString(*message) : QString());
    m_error->setVisible(message.has_value());
    showWhileAnyStands();
}

void MessageBarStack::setStatusMessage(const std::optional<std::string>& message) {
    m_status->setText(message ? toQString(*message) : QString());
    m_status->setVisible(message.has_value());
    showWhileAnyStands();
}

void MessageBarStack::showWhileAnyStands() {
    setVisible(!m_error->isHidden() || !m_status->isHidden());
}

}  // namespace copperwick::app
