#pragma once

// Whose money a report covers: the whole household, or one or more people
// (with shared spending and what belongs to nobody yet, when chosen), tied
// to them by assignment or by the cards they use. A button that reads the
// scope as the report words it, opening a menu of the choices; the line
// under it explains the choice in force. Main thread only.

#include <vector>

#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QWidget>

#include "core/model/ledger.h"
#include "core/reports/transaction_query.h"

namespace copperwick::app {

class PeopleScopePicker : public QWidget {
    Q_OBJECT

  public:
    explicit PeopleScopePicker(QWidget* parent = nullptr);

    [[nodiscard]] const PeopleScope& scope() const { return m_scope; }
    // Sets the choice without telling `changed`.
    void setScope(const PeopleScope& scope);
    // The people to offer, and the button's words for the scope in force.
    void setPeople(const std::vector<Person>& people, const QString& scopeLabel);

    [[nodiscard]] QPushButton* button() const { return m_button; }
    [[nodiscard]] QMenu* menu() const { return m_menu; }
    [[nodiscard]] QLabel* captionLabel() const { return m_caption; }

  Q_SIGNALS:
    void changed(const copperwick::PeopleScope& scope);

  private:
    void rebuildMenu();
    void choose(PeopleScope scope);

    PeopleScope m_scope;
    std::vector<Person> m_people;
    QPushButton* m_button;
    QMenu* m_menu;
    QLabel* m_caption;
};

}  // namespace copperwick::app
