#pragma once

// The sheet for one person of the household, new or known: the name, the
// forms of it that banks print (which let Copperwick tell whose a payment
// is) and an optional monthly spending allowance. Each field is held to
// core's rule for it as the person types, with the refusal under it. Save
// keeps the person and matches every line again, beside the window on a
// long history. Main thread only.

#include <optional>

#include <QLineEdit>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/person.h"

namespace copperwick::app {

class PersonSheet : public SheetDialog {
    Q_OBJECT

  public:
    // Without an id, a new person.
    PersonSheet(RuntimeBridge& bridge, const std::optional<Uuid>& personID,
                QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QLineEdit* bankNamesField() const { return m_bankNames; }
    [[nodiscard]] QLineEdit* allowanceField() const { return m_allowance; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }

  private:
    // The person as core accepts the form, or nothing with the refusals shown.
    [[nodiscard]] std::optional<Person> checked(bool showRefusals);
    void save();

    RuntimeBridge& m_bridge;
    Person m_person;
    QLineEdit* m_name = nullptr;
    RefusalLine* m_nameRefusal = nullptr;
    QLineEdit* m_bankNames = nullptr;
    QLineEdit* m_allowance = nullptr;
    RefusalLine* m_allowanceRefusal = nullptr;
    QPushButton* m_save = nullptr;
};

}  // namespace copperwick::app
