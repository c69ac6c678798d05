#include "app/transactions/transaction_actions.h"

#include <utility>

#include "app/widgets/qt_text.h"
#include "core/operations/classification.h"
#include "core/operations/household_assignment.h"

namespace copperwick::app {

namespace {

QAction* addNamedAction(QMenu* menu, std::string_view words) {
    QAction* action = menu->addAction(toQString(words));
    return action;
}

}  // namespace

TransactionActions::TransactionActions(LedgerRuntime& runtime, QObject* parent)
    : QObject(parent), m_runtime(runtime) {}

bool TransactionActions::anyRemoved(const std::vector<Uuid>& ids) const {
    for (const Uuid& id : ids) {
        if (const LedgerTransaction* line = m_runtime.ledger().transaction(id);
            line && line->voided)
            return true;
    }
    return false;
}

bool TransactionActions::anyKept(const std::vector<Uuid>& ids) const {
    for (const Uuid& id : ids) {
        if (const LedgerTransaction* line = m_runtime.ledger().transaction(id);
            line && !line->voided)
            return true;
    }
    return false;
}

void TransactionActions::fill(QMenu* menu, const std::vector<Uuid>& ids) {
    fillAssignMenu(menu->addMenu(toQString(kAssign)), ids);
    fillCategoryMenu(menu->addMenu(toQString(kSpendingCategory)), ids, TransactionKind::expense);
    fillCategoryMenu(menu->addMenu(toQString(kIncomeCategory)), ids, TransactionKind::income);
    connect(addNamedAction(menu, kTransfer), &QAction::triggered, this,
            [this, ids] { markAsTransfer(ids); });
    menu->addSeparator();
    connect(addNamedAction(menu, kAutomatic), &QAction::triggered, this,
            [this, ids] { backToAutomatic(ids); });
    if (anyKept(ids)) {
        connect(addNamedAction(menu, kRemove), &QAction::triggered, this,
                [this, ids] { setRemoved(ids, true); });
    }
    if (anyRemoved(ids)) {
        connect(addNamedAction(menu, kRestore), &QAction::triggered, this,
                [this, ids] { setRemoved(ids, false); });
    }
}

void TransactionActions::fillAssignMenu(QMenu* menu, const std::vector<Uuid>& ids) {
    menu->clear();
    const Ledger& ledger = m_runtime.ledger();
    for (const Person& person : ledger.people) {
        connect(menu->addAction(toQString(person.name)), &QAction::triggered, this,
                [this, ids, id = person.id] { assign(ids, SpendingAssignment::person(id)); });
    }
    connect(menu->addAction(QStringLiteral("Shared household")), &QAction::triggered, this,
            [this, ids] { assign(ids, SpendingAssignment::shared()); });
    connect(menu->addAction(QStringLiteral("Unassigned")), &QAction::triggered, this,
            [this, ids] { assign(ids, SpendingAssignment::unassigned()); });
    menu->addSeparator();
    connect(menu->addAction(QStringLiteral("Use Imported Assignment")), &QAction::triggered, this,
            [this, ids] { assign(ids, std::nullopt); });
}

void TransactionActions::fillCategoryMenu(QMenu* menu, const std::vector<Uuid>& ids,
                                          TransactionKind kind) {
    menu->clear();
    const CategoryGroup group =
        kind == TransactionKind::income ? CategoryGroup::income : CategoryGroup::expense;
    for (const LedgerCategory& category : m_runtime.ledger().categories) {
        if (category.group != group)
            continue;
        connect(menu->addAction(toQString(category.name)), &QAction::triggered, this,
                [this, ids, kind, id = category.id] { setCategory(ids, kind, id); });
    }
}

void TransactionActions::save(LedgerRuntime::PossibleChange change) {
    m_runtime.applyForScreen(std::move(change), [](const ApplyResult&) {});
}

void TransactionActions::assign(const std::vector<Uuid>& ids,
                                const std::optional<SpendingAssignment>& assignment) {
    const Instant now = m_runtime.now();
    save([ids, assignment, now](Ledger& ledger) -> std::optional<LedgerDelta> {
        return assignSpending(ledger, assignment, ids, now);
    });
}

void TransactionActions::setCategory(const std::vector<Uuid>& ids, TransactionKind kind,
                                     const Uuid& categoryID) {
    const Instant now = m_runtime.now();
    Classification decision{.ids = ids,
                            .merchantName = std::nullopt,
                            .kind = kind,
                            .categoryID = categoryID,
                            .remember = false,
                            .label = "Set category"};
    save([decision = std::move(decision), now](Ledger& ledger) -> std::optional<LedgerDelta> {
        return classify(ledger, decision, now);
    });
}

void TransactionActions::markAsTransfer(const std::vector<Uuid>& ids) {
    const Instant now = m_runtime.now();
    Classification decision{.ids = ids,
                            .merchantName = std::nullopt,
                            .kind = TransactionKind::transfer,
                            .categoryID = std::nullopt,
                            .remember = false,
                            .label = "Mark as transfer"};
    save([decision = std::move(decision), now](Ledger& ledger) -> std::optional<LedgerDelta> {
        return classify(ledger, decision, now);
    });
}

void TransactionActions::backToAutomatic(const std::vector<Uuid>& ids) {
    const Instant now = m_runtime.now();
    save([ids, now](Ledger& ledger) -> std::optional<LedgerDelta> {
        return resetToAutomatic(ledger, ids, now);
    });
}

void TransactionActions::setRemoved(const std::vector<Uuid>& ids, bool removed) {
    const Instant now = m_runtime.now();
    save([ids, removed, now](Ledger& ledger) -> std::optional<LedgerDelta> {
        LedgerDelta delta = setVoided(ledger, ids, removed, removed ? "Remove" : "Restore", now);
        if (delta.isEmpty())
            return std::nullopt;
        return delta;
    });
}

}  // namespace copperwick::app
