#pragma once

// The settings card of the family budgets: a monthly amount for each
// spending category, kept as the person leaves its field (blank or zero
// removes it), and the household's monthly savings goal. Each field is held
// to core's rule for it, with the refusal under it. Main thread only.

#include <map>

#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/section_card.h"

namespace copperwick::app {

class BudgetsCard : public SectionCard {
    Q_OBJECT

  public:
    explicit BudgetsCard(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // The budget field of a spending category, or null.
    [[nodiscard]] QLineEdit* budgetField(const Uuid& categoryID) const;
    [[nodiscard]] QLineEdit* goalField() const { return m_goal; }
    [[nodiscard]] QPushButton* saveGoalButton() const { return m_saveGoal; }
    [[nodiscard]] RefusalLine* goalRefusal() const { return m_goalRefusal; }
    void changeSaved(const SavedChange& change);

  private:
    struct BudgetField {
        QLineEdit* field = nullptr;
        RefusalLine* refusal = nullptr;
    };

    void showBudgets();
    void showGoal();
    void saveBudget(const Uuid& categoryID);
    void saveGoal();

    RuntimeBridge& m_bridge;
    QWidget* m_budgetBox = nullptr;
    QGridLayout* m_budgetGrid = nullptr;
    std::map<Uuid, BudgetField> m_budgets;
    QLineEdit* m_goal = nullptr;
    RefusalLine* m_goalRefusal = nullptr;
    QPushButton* m_saveGoal = nullptr;
};

}  // namespace copperwick::app
