#pragma once

// The sheet that adds a cash wallet: its name, the cash already in it and
// the day tracking starts (blank for today). The wallet takes the report
// currency and belongs to the household. Saved through the runtime's
// commitEntry, since its opening cash is an entry; a refusal keeps the
// sheet open with what was typed. Main thread only.

#include <optional>

#include <QLineEdit>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/uuid.h"

namespace copperwick::app {

class NewWalletSheet : public SheetDialog {
    Q_OBJECT

  public:
    explicit NewWalletSheet(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QLineEdit* openingCashField() const { return m_opening; }
    [[nodiscard]] QLineEdit* dateField() const { return m_date; }
    [[nodiscard]] RefusalLine* refusalLine() const { return m_refusal; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    // The wallet saved, once it is.
    [[nodiscard]] const std::optional<Uuid>& savedWallet() const { return m_saved; }

  private:
    void formChanged();
    void save();

    RuntimeBridge& m_bridge;
    QLineEdit* m_name = nullptr;
    QLineEdit* m_opening = nullptr;
    QLineEdit* m_date = nullptr;
    RefusalLine* m_refusal = nullptr;
    QPushButton* m_save = nullptr;
    std::optional<Uuid> m_saved;
};

}  // namespace copperwick::app
