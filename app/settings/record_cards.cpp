#include "app/settings/record_cards.h"
#include "app/widgets/chart_colours.h"

#include "app/settings/account_sheet.h"
#include "app/settings/category_sheets.h"
#include "app/settings/person_sheet.h"
#include "app/settings/settings_rows.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/model/household_resolution.h"
#include "core/model/ledger_enums.h"
#include "core/model/money.h"
#include "core/operations/record_maintenance.h"

namespace copperwick::app {

namespace {

// Opens a sheet that closes itself.
template <typename Sheet>
Sheet* openSheet(Sheet* sheet) {
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
    return sheet;
}

const QString kEdit = QStringLiteral("Edit\u2026");
const QString kDelete = QStringLiteral("Delete\u2026");

// The row whose record has `id` and its button with `text`.
QPushButton* buttonOf(const QWidget* card, const Uuid& id, const QString& text) {
    for (auto* row : card->findChildren<RecordRow*>()) {
        if (row->property("recordID").toString() != toQString(id.text()) || row->isHidden())
            continue;
        for (auto* button : row->findChildren<QPushButton*>()) {
            if (button->text() == text)
                return button;
        }
    }
    return nullptr;
}

}  // namespace

PeopleCard::PeopleCard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("People"),
                  QStringLiteral("Who spends in this household, the names banks print for them, "
                                 "and an optional monthly allowance."),
                  "person.2", parent),
      m_bridge(bridge) {
    m_add = addTitleButton(QStringLiteral("Add Person\u2026"));
    connect(m_add, &QPushButton::clicked, this,
            [this] { openSheet(new PersonSheet(m_bridge, std::nullopt, this)); });
    showRows();
}

void PeopleCard::changeSaved(const SavedChange& change) {
    if (touches(change, RecordKind::person))
        showRows();
}

void PeopleCard::showRows() {
    clearRows();
    const Ledger& ledger = m_bridge.runtime().ledger();
    if (ledger.people.empty()) {
        addRow(noteLabel(QStringLiteral("No people yet. Spending is the household's until you add "
                                        "someone."),
                         this));
        orderTabs({this});
        return;
    }
    for (const Person& person : ledger.people) {
        QStringList detail;
        if (!person.bankNames.empty()) {
            QStringList names;
            for (const auto& name : person.bankNames)
                names << toQString(name);
            detail << QStringLiteral("Banks print ") + names.join(QStringLiteral(", "));
        }
        if (person.monthlyAllowance)
            detail << QStringLiteral("Allowance ") +
                          toQString(Money::format(*person.monthlyAllowance)) +
                          QStringLiteral(" a month");
        auto* row =
            new RecordRow(toQString(person.name), detail.join(QStringLiteral(" \u00B7 ")), this);
        row->setProperty("recordID", toQString(person.id.text()));
        const Uuid id = person.id;
        connect(row->addButton(kEdit), &QPushButton::clicked, this,
                [this, id] { openSheet(new PersonSheet(m_bridge, id, this)); });
        connect(row->addButton(kDelete), &QPushButton::clicked, this, [this, id] { remove(id); });
        addRow(row);
    }
    // Rows made afresh come last in Qt's chain; Tab follows the card as it reads.
    orderTabs({this});
}

void PeopleCard::remove(const Uuid& personID) {
    const Person* person = m_bridge.runtime().ledger().person(personID);
    if (!person)
        return;
    if (!confirmed(this, QStringLiteral("Delete Person"),
                   QStringLiteral("Delete \u201C") + toQString(person->name) +
                       QStringLiteral("\u201D? Spending set to them becomes unassigned."),
                   QStringLiteral("Delete Person")))
        return;
    m_bridge.runtime().applyForScreen(
        [personID](Ledger& copy) -> std::optional<LedgerDelta> {
            return deletePerson(copy, personID);
        },
        [](const ApplyResult&) {});
}

AccountsCard::AccountsCard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Accounts"),
                  QStringLiteral("Bank, card and cash accounts, who uses them, and how their "
                                 "files read."),
                  "building.columns", parent),
      m_bridge(bridge) {
    m_add = addTitleButton(QStringLiteral("Add Account\u2026"));
    connect(m_add, &QPushButton::clicked, this,
            [this] { openSheet(new AccountSheet(m_bridge, std::nullopt, this)); });
    showRows();
}

QPushButton* AccountsCard::editButton(const Uuid& accountID) const {
    return buttonOf(this, accountID, kEdit);
}

void AccountsCard::changeSaved(const SavedChange& change) {
    if (touches(change, RecordKind::account) || touches(change, RecordKind::person))
        showRows();
}

void AccountsCard::showRows() {
    clearRows();
    const Ledger& ledger = m_bridge.runtime().ledger();
    if (ledger.accounts.empty()) {
        addRow(noteLabel(QStringLiteral("No accounts yet. Importing a file makes one."), this));
        orderTabs({this});
        return;
    }
    for (const Account& account : ledger.accounts) {
        QStringList detail{toQString(label(account.type)), toQString(account.currency)};
        if (account.last4)
            detail << QStringLiteral("\u2022\u2022") + toQString(*account.last4);
        detail << toQString(usersLabel(ledger, account));
        if (account.rarelyUsed)
            detail << QStringLiteral("Used now and then");
        if (account.isArchived)
            detail << QStringLiteral("Archived");
        auto* row =
            new RecordRow(toQString(account.name), detail.join(QStringLiteral(" \u00B7 ")), this);
        row->setProperty("recordID", toQString(account.id.text()));
        const Uuid id = account.id;
        connect(row->addButton(kEdit), &QPushButton::clicked, this,
                [this, id] { openSheet(new AccountSheet(m_bridge, id, this)); });
        addRow(row);
    }
    // Rows made afresh come last in Qt's chain; Tab follows the card as it reads.
    orderTabs({this});
}

CategoriesCard::CategoriesCard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Categories"),
                  QStringLiteral("Deleting a category moves what it holds to another one, or back "
                                 "to Review."),
                  "tag", parent),
      m_bridge(bridge) {
    m_add = addTitleButton(QStringLiteral("Add Category\u2026"));
    connect(m_add, &QPushButton::clicked, this, [this] {
        openSheet(new CategorySheet(m_bridge, std::nullopt, CategoryGroup::expense, this));
    });
    showRows();
}

QPushButton* CategoriesCard::rowButton(const Uuid& categoryID, const QString& text) const {
    return buttonOf(this, categoryID, text);
}

void CategoriesCard::changeSaved(const SavedChange& change) {
    if (touches(change, RecordKind::category))
        showRows();
}

void CategoriesCard::showRows() {
    clearRows();
    const Ledger& ledger = m_bridge.runtime().ledger();
    for (const CategoryGroup group : {CategoryGroup::expense, CategoryGroup::income}) {
        auto* heading = headingLabel(
            group == CategoryGroup::expense ? QStringLiteral("Spending") : QStringLiteral("Income"),
            this);
        heading->setContentsMargins(0, 8, 0, 2);
        addRow(heading);
        for (const LedgerCategory& category : ledger.categories) {
            if (category.group != group)
                continue;
            auto* row = new RecordRow(toQString(category.name), {}, this);
            row->setProperty("recordID", toQString(category.id.text()));
            QPixmap dot(12, 12);
            dot.fill(categoryColour(palette(), category.colorIndex));
            auto* swatch = new QLabel(row);
            swatch->setPixmap(dot);
            static_cast<QHBoxLayout*>(row->layout())->insertWidget(0, swatch);
            const Uuid id = category.id;
            connect(row->addButton(kEdit), &QPushButton::clicked, this, [this, id] {
                openSheet(new CategorySheet(m_bridge, id, CategoryGroup::expense, this));
            });
            connect(row->addButton(kDelete), &QPushButton::clicked, this,
                    [this, id] { openSheet(new DeleteCategorySheet(m_bridge, id, this)); });
            addRow(row);
        }
    }
    // Rows made afresh come last in Qt's chain; Tab follows the card as it reads.
    orderTabs({this});
}

}  // namespace copperwick::app
