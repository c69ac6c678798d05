#include "app/import/import_bar.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/import/import_words.h"

namespace copperwick::app {

ImportBar::ImportBar(QWidget* parent)
    : QFrame(parent),
      m_ready(headingLabel({}, this, 1.05)),
      m_blocked(textLabel({}, this)),
      m_progress(new QProgressBar(this)),
      m_import(new QPushButton(QStringLiteral("Import"), this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Window);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(28, 12, 28, 14);
    row->setSpacing(16);

    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(m_ready);
    words->addWidget(secondaryLabel(
        QStringLiteral(
            "A backup is made before anything is saved, and every import can be undone."),
        this));
    m_blocked->setWordWrap(true);
    m_blocked->setForegroundRole(QPalette::Link);
    words->addWidget(m_blocked);
    row->addLayout(words, 1);

    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setFixedWidth(120);
    m_progress->setAccessibleName(QStringLiteral("Importing"));
    m_progress->setVisible(false);
    row->addWidget(m_progress, 0, Qt::AlignVCenter);

    m_import->setAccessibleName(m_import->text());
    m_import->setDefault(true);
    m_import->setMinimumWidth(110);
    applyAccent();
    row->addWidget(m_import, 0, Qt::AlignVCenter);
    connect(m_import, &QPushButton::clicked, this, &ImportBar::importClicked);
}

void ImportBar::showModel(const ImportModel& model) {
    const auto ready = model.readyFiles();
    setLabelText(m_ready, toQString(readyLine(model.totalToImport(), ready.size())));
    std::size_t blocked = 0;
    for (const auto& file : model.files())
        blocked += file.include && file.blocker() ? 1 : 0;
    const auto line = blockedLine(blocked);
    m_blocked->setVisible(line.has_value());
    if (line)
        setLabelText(m_blocked, toQString(*line));
    m_progress->setVisible(model.isBusy());
    m_import->setEnabled(!model.isBusy() && !ready.empty());
}

void ImportBar::applyAccent() {
    // The skin's accent, as the one main action of the screen; off, it looks
    // like any button that is off.
    QPalette accent = palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        accent.setColor(group, QPalette::Button, palette().color(group, QPalette::Link));
        accent.setColor(group, QPalette::ButtonText,
                        palette().color(group, QPalette::HighlightedText));
    }
    m_import->setPalette(accent);
}

void ImportBar::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyAccent();
}

void ImportBar::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    QColor rule = palette().color(QPalette::WindowText);
    rule.setAlphaF(0.14);
    painter.setPen(rule);
    painter.drawLine(rect().topLeft(), rect().topRight());
}

}  // namespace copperwick::app
