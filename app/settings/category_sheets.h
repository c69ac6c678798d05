#pragma once

// The two sheets of a category: one to add or rename it and choose its
// colour (its place in its group, which is what the charts colour by), and
// one to delete it, moving its lines, rules and merchants to a replacement
// or, without one, back to Review. Names are held to core's rule as the
// person types. Main thread only.

#include <optional>

#include <QColor>
#include <QComboBox>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/ledger_category.h"

namespace copperwick::app {

// How many colours a category can take.
inline constexpr int kCategoryColours = 19;

class CategorySheet : public SheetDialog {
    Q_OBJECT

  public:
    // Without an id, a new category of `group`.
    CategorySheet(RuntimeBridge& bridge, const std::optional<Uuid>& categoryID,
                  CategoryGroup group = CategoryGroup::expense, QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QComboBox* groupField() const { return m_group; }
    [[nodiscard]] QComboBox* colourField() const { return m_colour; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }

  private:
    [[nodiscard]] std::optional<LedgerCategory> checked();
    void save();

    RuntimeBridge& m_bridge;
    LedgerCategory m_category;
    QLineEdit* m_name = nullptr;
    RefusalLine* m_nameRefusal = nullptr;
    QComboBox* m_group = nullptr;
    QComboBox* m_colour = nullptr;
    QPushButton* m_save = nullptr;
};

class DeleteCategorySheet : public SheetDialog {
    Q_OBJECT

  public:
    DeleteCategorySheet(RuntimeBridge& bridge, const Uuid& categoryID, QWidget* parent = nullptr);

    // The replacement chosen; the first entry is none.
    [[nodiscard]] QComboBox* replacementField() const { return m_replacement; }
    [[nodiscard]] QPushButton* deleteButton() const { return m_delete; }

  private:
    void remove();

    RuntimeBridge& m_bridge;
    Uuid m_categoryID;
    QComboBox* m_replacement = nullptr;
    QPushButton* m_delete = nullptr;
};

}  // namespace copperwick::app
