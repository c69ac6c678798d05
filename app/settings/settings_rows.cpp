#include "app/settings/settings_rows.h"

#include <QMessageBox>
#include <QVBoxLayout>

#include "app/widgets/elided_label.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

bool touches(const SavedChange& change, RecordKind kind) {
    if (!change.delta)
        return true;
    const auto deleted = change.delta->deleted.find(kind);
    return change.delta->changes(kind) ||
           (deleted != change.delta->deleted.end() && !deleted->second.empty());
}

bool confirmed(QWidget* parent, const QString& title, const QString& text, const QString& action) {
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::NoButton, parent);
    QPushButton* go = box.addButton(action, QMessageBox::DestructiveRole);
    go->setAccessibleName(action);
    QPushButton* cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(cancel);
    box.exec();
    return box.clickedButton() == go;
}

RecordRow::RecordRow(const QString& name, const QString& detail, QWidget* parent)
    : QWidget(parent), m_name(new ElidedLabel(name, this)), m_layout(new QHBoxLayout(this)) {
    m_layout->setContentsMargins(0, 6, 0, 6);
    m_layout->setSpacing(8);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    m_name->setAccessibleName(name);
    words->addWidget(m_name);
    if (!detail.isEmpty()) {
        auto* line = new ElidedLabel(detail, this);
        line->setAccessibleName(detail);
        line->setForegroundRole(QPalette::PlaceholderText);
        words->addWidget(line);
    }
    m_layout->addLayout(words, 1);
}

QPushButton* RecordRow::addButton(const QString& text) {
    QPushButton* button = pushButton(text, this);
    button->setAccessibleDescription(m_name->accessibleName());
    m_layout->addWidget(button);
    return button;
}

}  // namespace copperwick::app
