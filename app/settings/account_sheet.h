#pragma once

// The sheet for one account, new or known: its name, type, currency and
// last four digits; who uses it and who uses each of its cards; whether
// its bank writes spending as positive amounts; whether it is used only now
// and then, or archived. Each field is held to core's rule for it as the
// person types, with the refusal under it. Delete removes an account that
// has no transactions and otherwise says why it can't. Main thread only.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/account.h"

namespace copperwick::app {

class AccountSheet : public SheetDialog {
    Q_OBJECT

  public:
    // Without an id, a new account.
    AccountSheet(RuntimeBridge& bridge, const std::optional<Uuid>& accountID,
                 QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QComboBox* typeField() const { return m_type; }
    [[nodiscard]] QLineEdit* currencyField() const { return m_currency; }
    [[nodiscard]] QLineEdit* lastFourField() const { return m_lastFour; }
    [[nodiscard]] QCheckBox* userBox(const Uuid& personID) const;
    [[nodiscard]] QCheckBox* nobodyBox() const { return m_nobody; }
    [[nodiscard]] QComboBox* cardField(const std::string& card) const;
    [[nodiscard]] QCheckBox* flipSignsBox() const { return m_flipSigns; }
    [[nodiscard]] QCheckBox* occasionalBox() const { return m_occasional; }
    [[nodiscard]] QCheckBox* archivedBox() const { return m_archived; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    // Null for a new account.
    [[nodiscard]] QPushButton* deleteButton() const { return m_delete; }
    [[nodiscard]] RefusalLine* refusalLine() const { return m_refusal; }

  private:
    void makeFields();
    void load();
    // The account as core accepts the form, or nothing with the refusals shown.
    [[nodiscard]] std::optional<Account> checked();
    void fieldsChanged();
    void save();
    void remove();

    RuntimeBridge& m_bridge;
    Account m_account;
    bool m_isNew = false;
    QLineEdit* m_name = nullptr;
    RefusalLine* m_nameRefusal = nullptr;
    QComboBox* m_type = nullptr;
    QLineEdit* m_currency = nullptr;
    RefusalLine* m_currencyRefusal = nullptr;
    QLineEdit* m_lastFour = nullptr;
    RefusalLine* m_lastFourRefusal = nullptr;
    std::vector<std::pair<Uuid, QCheckBox*>> m_users;
    QCheckBox* m_nobody = nullptr;
    RefusalLine* m_usersRefusal = nullptr;
    std::map<std::string, QComboBox*> m_cards;
    QCheckBox* m_flipSigns = nullptr;
    QCheckBox* m_occasional = nullptr;
    QCheckBox* m_archived = nullptr;
    RefusalLine* m_refusal = nullptr;
    QPushButton* m_save = nullptr;
    QPushButton* m_delete = nullptr;
};

}  // namespace copperwick::app
