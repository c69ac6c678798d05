#include "app/settings/budgets_card.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/settings/settings_rows.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/sheet_dialog.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/model/money.h"
#include "core/operations/entry_error.h"
#include "core/operations/set_budget.h"
#include "core/operations/update_settings.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kGoalNote =
    "Optional: compare household income minus spending with a target for complete months. Leave "
    "empty to hide. Each goal uses your current report currency.";

// Two columns of short fields read better than one long one, and still
// fit the narrowest window.
constexpr int kBudgetColumns = 2;

QString amountText(const std::optional<int64_t>& cents) {
    return cents ? toQString(Money::decimalString(*cents)) : QString();
}

}  // namespace

BudgetsCard::BudgetsCard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Budgets"),
                  QStringLiteral("Monthly family budgets by spending category. Leave a field "
                                 "empty for no budget."),
                  "dollarsign.circle", parent),
      m_bridge(bridge) {
    m_budgetBox = new QWidget(this);
    // Nineteen short fields read better side by side than in one long column.
    m_budgetGrid = new QGridLayout(m_budgetBox);
    m_budgetGrid->setContentsMargins(0, 0, 0, 0);
    m_budgetGrid->setHorizontalSpacing(32);
    m_budgetGrid->setVerticalSpacing(6);
    body()->addWidget(m_budgetBox);

    body()->addSpacing(6);
    body()->addWidget(headingLabel(QStringLiteral("Monthly savings goal"), this));
    auto* goalRow = new QWidget(this);
    auto* goalLayout = new QHBoxLayout(goalRow);
    goalLayout->setContentsMargins(0, 0, 0, 0);
    m_goal = new QLineEdit(goalRow);
    m_goal->setPlaceholderText(QStringLiteral("Optional monthly amount"));
    m_goal->setAccessibleName(m_goal->placeholderText());
    m_goal->setMaximumWidth(260);
    goalLayout->addWidget(m_goal);
    m_saveGoal = pushButton(QStringLiteral("Save Goal"), goalRow);
    goalLayout->addWidget(m_saveGoal);
    goalLayout->addStretch(1);
    body()->addWidget(goalRow);
    m_goalRefusal = new RefusalLine(this);
    body()->addWidget(m_goalRefusal);
    body()->addWidget(noteLabel(toQString(kGoalNote), this, true));

    connect(m_saveGoal, &QPushButton::clicked, this, &BudgetsCard::saveGoal);
    connect(m_goal, &QLineEdit::returnPressed, this, &BudgetsCard::saveGoal);
    connect(m_goal, &QLineEdit::textEdited, this, [this] { m_goalRefusal->setRefusal({}); });
    showBudgets();
    showGoal();
}

QLineEdit* BudgetsCard::budgetField(const Uuid& categoryID) const {
    const auto found = m_budgets.find(categoryID);
    return found == m_budgets.end() ? nullptr : found->second.field;
}

void BudgetsCard::changeSaved(const SavedChange& change) {
    if (touches(change, RecordKind::category))
        showBudgets();
    else if (touches(change, RecordKind::budget)) {
        const Ledger& ledger = m_bridge.runtime().ledger();
        for (auto& [id, budget] : m_budgets) {
            if (!budget.field->hasFocus())
                budget.field->setText(amountText(monthlyBudget(ledger, id)));
        }
    }
    if (touches(change, RecordKind::settings))
        showGoal();
}

void BudgetsCard::showBudgets() {
    while (QLayoutItem* item = m_budgetGrid->takeAt(0)) {
        if (QWidget* cell = item->widget()) {
            cell->hide();
            cell->deleteLater();
        }
        delete item;
    }
    m_budgets.clear();
    const Ledger& ledger = m_bridge.runtime().ledger();
    int place = 0;
    for (const LedgerCategory& category : ledger.categories) {
        if (category.group != CategoryGroup::expense)
            continue;
        auto* cell = new QWidget(m_budgetBox);
        auto* cellLayout = new QVBoxLayout(cell);
        cellLayout->setContentsMargins(0, 0, 0, 0);
        cellLayout->setSpacing(2);
        auto* line = new QHBoxLayout;
        line->setSpacing(8);
        BudgetField budget;
        budget.field = new QLineEdit(amountText(monthlyBudget(ledger, category.id)), cell);
        budget.field->setPlaceholderText(QStringLiteral("No budget"));
        budget.field->setFixedWidth(100);
        budget.field->setAlignment(Qt::AlignRight);
        // A name's "&" is the name's own, not a mnemonic.
        const QString name = toQString(category.name);
        QLabel* label = fieldLabel(QString(name).replace(QLatin1Char('&'), QStringLiteral("&&")),
                                   budget.field, cell);
        budget.field->setAccessibleName(name);
        line->addWidget(label, 1);
        line->addWidget(budget.field);
        cellLayout->addLayout(line);
        budget.refusal = new RefusalLine(cell);
        budget.refusal->label()->setWordWrap(true);
        cellLayout->addWidget(budget.refusal);
        m_budgetGrid->addWidget(cell, place / kBudgetColumns, place % kBudgetColumns);
        ++place;
        const Uuid id = category.id;
        connect(budget.field, &QLineEdit::editingFinished, this, [this, id] { saveBudget(id); });
        m_budgets[id] = budget;
    }
    // Fields made afresh come last in Qt's chain; Tab follows the card as it reads.
    orderTabs({this});
}

void BudgetsCard::showGoal() {
    const LedgerSettings& settings = *m_bridge.runtime().ledger().settings;
    if (!m_goal->hasFocus())
        m_goal->setText(amountText(settings.monthlySavingsGoal));
}

void BudgetsCard::saveBudget(const Uuid& categoryID) {
    const auto found = m_budgets.find(categoryID);
    if (found == m_budgets.end())
        return;
    BudgetField& budget = found->second;
    LedgerRuntime& runtime = m_bridge.runtime();
    std::optional<int64_t> amount;
    try {
        amount = budgetEntered(toStdString(budget.field->text()));
    } catch (const EntryError& refusal) {
        budget.refusal->setRefusal(QString::fromUtf8(refusal.what()));
        runtime.setErrorMessage(refusal.what());
        return;
    }
    budget.refusal->setRefusal({});
    if (amount == monthlyBudget(runtime.ledger(), categoryID)) {
        budget.field->setText(amountText(amount));
        return;
    }
    // A budget touches no transaction, so it saves here and now at any size.
    if (runtime.apply([&](Ledger& copy) { return setBudget(copy, categoryID, amount); }).saved)
        budget.field->setText(amountText(amount));
}

void BudgetsCard::saveGoal() {
    LedgerRuntime& runtime = m_bridge.runtime();
    std::optional<int64_t> goal;
    try {
        goal = savingsGoalEntered(toStdString(m_goal->text()));
    } catch (const EntryError& refusal) {
        m_goalRefusal->setRefusal(QString::fromUtf8(refusal.what()));
        runtime.setErrorMessage(refusal.what());
        return;
    }
    m_goalRefusal->setRefusal({});
    if (runtime.apply([&](Ledger& copy) { return setSavingsGoal(copy, goal); }).saved)
        m_goal->setText(amountText(goal));
}

}  // namespace copperwick::app
