#include "app/reports/narrative_card.h"

#include <QHBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

NarrativeCard::NarrativeCard(QWidget* parent)
    : CardFrame(parent),
      m_writing(noteLabel(toQString(kWriting), this)),
      m_bullets(new QVBoxLayout),
      m_checked(noteLabel(toQString(kChecked), this, true)),
      m_failure(textLabel({}, this)),
      m_tryAgain(pushButton(QStringLiteral("Try Again"), this)) {
    setObjectName(QStringLiteral("narrative"));
    setAccessibleName(toQString(kIntro));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kCardMargins);
    layout->setSpacing(8);
    auto* head = new QHBoxLayout;
    head->setSpacing(8);
    head->addWidget(new SymbolView("sparkles", 18, this), 0, Qt::AlignTop);
    head->addWidget(secondaryLabel(toQString(kIntro), this), 1);
    layout->addLayout(head);
    layout->addWidget(m_writing);
    m_bullets->setSpacing(4);
    layout->addLayout(m_bullets);
    layout->addWidget(m_checked);
    m_failure->setWordWrap(true);
    layout->addWidget(m_failure);
    layout->addWidget(m_tryAgain, 0, Qt::AlignLeft);
    connect(m_tryAgain, &QPushButton::clicked, this, &NarrativeCard::tryAgain);
    showWriting();
}

void NarrativeCard::clearBullets() {
    for (QLabel* label : m_bulletLabels) {
        m_bullets->removeWidget(label);
        label->hide();
        label->deleteLater();
    }
    m_bulletLabels.clear();
}

void NarrativeCard::showWriting() {
    clearBullets();
    m_writing->show();
    m_checked->hide();
    m_failure->hide();
    m_tryAgain->hide();
}

void NarrativeCard::showBullets(const std::vector<GroundedBullet>& bullets) {
    QStringList wanted;
    for (const GroundedBullet& bullet : bullets)
        wanted.append(toQString(bullet.text));
    if (wanted != bulletTexts()) {
        clearBullets();
        for (const QString& text : wanted) {
            QLabel* label = textLabel(QStringLiteral("\u2022 ") + text, this);
            label->setWordWrap(true);
            label->setTextInteractionFlags(Qt::TextSelectableByMouse);
            m_bullets->addWidget(label);
            m_bulletLabels.push_back(label);
        }
    }
    m_writing->hide();
    m_checked->show();
    m_failure->hide();
    m_tryAgain->hide();
}

void NarrativeCard::showFailure(const std::string& failure) {
    clearBullets();
    setLabelText(m_failure, toQString(failure));
    m_writing->hide();
    m_checked->hide();
    m_failure->show();
    m_tryAgain->show();
}

QStringList NarrativeCard::bulletTexts() const {
    QStringList texts;
    for (const QLabel* label : m_bulletLabels)
        texts.append(label->text().mid(2));
    return texts;
}

}  // namespace copperwick::app
