#include "app/settings/account_sheet.h"

#include <set>

#include <QFormLayout>
#include <QVBoxLayout>

#include "app/settings/settings_rows.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/ledger_enums.h"
#include "core/operations/currency_code.h"
#include "core/operations/entry_error.h"
#include "core/operations/maintenance_words.h"
#include "core/operations/record_maintenance.h"
#include "core/operations/upsert_account.h"

namespace copperwick::app {

namespace {

constexpr AccountType kTypes[] = {AccountType::checking, AccountType::savings,
                                  AccountType::creditCard, AccountType::cash, AccountType::other};

// A card's choice as its combo box keeps it: empty follows the account.
QString assignmentData(const std::optional<SpendingAssignment>& assignment) {
    if (!assignment)
        return {};
    switch (assignment->kind()) {
        case SpendingAssignment::Case::person:
            return QStringLiteral("person:") + toQString(assignment->personID().text());
        case SpendingAssignment::Case::shared:
            return QStringLiteral("shared");
        case SpendingAssignment::Case::unassigned:
            return QStringLiteral("unassigned");
    }
    return {};
}

std::optional<SpendingAssignment> assignmentOf(const QString& data) {
    if (data == QStringLiteral("shared"))
        return SpendingAssignment::shared();
    if (data == QStringLiteral("unassigned"))
        return SpendingAssignment::unassigned();
    if (data.startsWith(QStringLiteral("person:"))) {
        if (const auto id = Uuid::parse(toStdString(data.mid(7))))
            return SpendingAssignment::person(*id);
    }
    return std::nullopt;
}

// Runs a field's rule; the refusal's words, or none.
template <typename Rule>
QString refusalOf(Rule rule) {
    try {
        rule();
        return {};
    } catch (const EntryError& refusal) {
        return QString::fromUtf8(refusal.what());
    }
}

}  // namespace

AccountSheet::AccountSheet(RuntimeBridge& bridge, const std::optional<Uuid>& accountID,
                           QWidget* parent)
    : SheetDialog(accountID ? QStringLiteral("Edit Account") : QStringLiteral("New Account"), {},
                  parent),
      m_bridge(bridge) {
    setModal(true);
    keepAtLeastWide(540);
    const Ledger& ledger = m_bridge.runtime().ledger();
    if (const Account* known = accountID ? ledger.account(accountID) : nullptr) {
        m_account = *known;
    } else {
        m_isNew = true;
        m_account = Account(Uuid::random(), {}, AccountType::checking);
        m_account.currency = ledger.settings->reportCurrency;
    }
    makeFields();
    load();
    if (!m_isNew) {
        m_delete = addFootButton(QStringLiteral("Delete Account"));
        connect(m_delete, &QPushButton::clicked, this, &AccountSheet::remove);
    }
    m_save = addDefaultButton(QStringLiteral("Save"));
    addCancelButton();
    connect(m_save, &QPushButton::clicked, this, &AccountSheet::save);
    for (QLineEdit* field : {m_name, m_currency, m_lastFour})
        connect(field, &QLineEdit::textChanged, this, &AccountSheet::fieldsChanged);
    m_name->setFocus();
}

void AccountSheet::makeFields() {
    QFormLayout* form = addForm();
    form->setVerticalSpacing(10);
    m_name = new QLineEdit(this);
    form->addRow(fieldLabel(QStringLiteral("Name"), m_name, this),
                 withRefusalLine(m_name, m_nameRefusal, this));
    m_type = new QComboBox(this);
    for (const AccountType type : kTypes)
        m_type->addItem(toQString(label(type)), static_cast<int>(type));
    form->addRow(fieldLabel(QStringLiteral("Type"), m_type, this), m_type);
    m_currency = new QLineEdit(this);
    m_currency->setMaxLength(8);
    form->addRow(fieldLabel(QStringLiteral("Currency"), m_currency, this),
                 withRefusalLine(m_currency, m_currencyRefusal, this));
    m_lastFour = new QLineEdit(this);
    m_lastFour->setPlaceholderText(QStringLiteral("Optional"));
    form->addRow(fieldLabel(QStringLiteral("Last four digits"), m_lastFour, this),
                 withRefusalLine(m_lastFour, m_lastFourRefusal, this));

    const Ledger& ledger = m_bridge.runtime().ledger();
    auto* users = new QWidget(this);
    auto* usersLayout = new QVBoxLayout(users);
    usersLayout->setContentsMargins(0, 0, 0, 0);
    usersLayout->setSpacing(4);
    for (const Person& person : ledger.people) {
        auto* box = new QCheckBox(toQString(person.name), users);
        box->setAccessibleName(box->text());
        usersLayout->addWidget(box);
        m_users.emplace_back(person.id, box);
        connect(box, &QCheckBox::toggled, this, &AccountSheet::fieldsChanged);
    }
    m_nobody =
        new QCheckBox(QStringLiteral("Nobody in particular: leave its spending unassigned"), users);
    m_nobody->setAccessibleName(m_nobody->text());
    usersLayout->addWidget(m_nobody);
    m_usersRefusal = new RefusalLine(users);
    usersLayout->addWidget(m_usersRefusal);
    QLabel* usersLabel = textLabel(QStringLiteral("Used by"), this);
    usersLabel->setAlignment(Qt::AlignRight | Qt::AlignTop);
    form->addRow(usersLabel, users);
    connect(m_nobody, &QCheckBox::toggled, this, &AccountSheet::fieldsChanged);

    // The cards its lines name, and any that already have someone.
    std::set<std::string> cards;
    for (const auto& [card, assignment] : m_account.cardAssignments)
        cards.insert(card);
    if (!m_isNew) {
        for (const LedgerTransaction& line : ledger.transactions) {
            if (line.accountID == m_account.id && line.cardIdentifier &&
                !line.cardIdentifier->empty())
                cards.insert(*line.cardIdentifier);
        }
    }
    for (const std::string& card : cards) {
        auto* box = new QComboBox(this);
        box->addItem(QStringLiteral("Same as the account"), QString());
        for (const Person& person : ledger.people)
            box->addItem(toQString(person.name),
                         assignmentData(SpendingAssignment::person(person.id)));
        box->addItem(QStringLiteral("Shared household"), QStringLiteral("shared"));
        box->addItem(QStringLiteral("Unassigned"), QStringLiteral("unassigned"));
        form->addRow(fieldLabel(QStringLiteral("Card ") + toQString(card), box, this), box);
        m_cards[card] = box;
    }

    auto* options = new QWidget(this);
    auto* optionsLayout = new QVBoxLayout(options);
    optionsLayout->setContentsMargins(0, 0, 0, 0);
    optionsLayout->setSpacing(4);
    m_flipSigns =
        new QCheckBox(QStringLiteral("Flip signs: the bank writes spending as positive"), options);
    m_occasional = new QCheckBox(QStringLiteral("Used only now and then"), options);
    m_archived = new QCheckBox(QStringLiteral("Archived"), options);
    for (QCheckBox* box : {m_flipSigns, m_occasional, m_archived}) {
        box->setAccessibleName(box->text());
        optionsLayout->addWidget(box);
    }
    QLabel* optionsLabel = textLabel(QStringLiteral("Options"), this);
    optionsLabel->setAlignment(Qt::AlignRight | Qt::AlignTop);
    form->addRow(optionsLabel, options);

    m_refusal = new RefusalLine(this);
    body()->addWidget(m_refusal);
}

void AccountSheet::load() {
    m_name->setText(toQString(m_account.name));
    m_type->setCurrentIndex(std::max(0, m_type->findData(static_cast<int>(m_account.type))));
    m_currency->setText(toQString(m_account.currency));
    m_lastFour->setText(toQString(m_account.last4.value_or(std::string())));
    for (const auto& [id, box] : m_users) {
        const auto& ids = m_account.userIDs();
        box->setChecked(std::find(ids.begin(), ids.end(), id) != ids.end());
    }
    m_nobody->setChecked(m_account.isUnassigned);
    for (const auto& [card, box] : m_cards) {
        const auto found = m_account.cardAssignments.find(card);
        const QString data =
            found == m_account.cardAssignments.end() ? QString() : assignmentData(found->second);
        box->setCurrentIndex(std::max(0, box->findData(data)));
    }
    m_flipSigns->setChecked(m_account.flipSigns);
    m_occasional->setChecked(m_account.rarelyUsed);
    m_archived->setChecked(m_account.isArchived);
}

void AccountSheet::fieldsChanged() {
    m_nameRefusal->setRefusal(
        refusalOf([this] { (void)accountNameEntered(toStdString(m_name->text())); }));
    m_currencyRefusal->setRefusal(
        refusalOf([this] { (void)currencyEntered(toStdString(m_currency->text())); }));
    m_lastFourRefusal->setRefusal(
        refusalOf([this] { (void)lastFourEntered(toStdString(m_lastFour->text())); }));
    // Naming people and naming nobody can't both hold.
    const bool anyone = std::any_of(m_users.begin(), m_users.end(),
                                    [](const auto& user) { return user.second->isChecked(); });
    m_nobody->setEnabled(!anyone);
}

std::optional<Account> AccountSheet::checked() {
    fieldsChanged();
    const Ledger& ledger = m_bridge.runtime().ledger();
    Account account = m_account;
    account.name = toStdString(m_name->text());
    account.type = static_cast<AccountType>(m_type->currentData().toInt());
    account.currency = toStdString(m_currency->text());
    std::optional<std::string> lastFour;
    try {
        account.currency = currencyEntered(account.currency);
        lastFour = lastFourEntered(toStdString(m_lastFour->text()));
    } catch (const EntryError&) {
        return std::nullopt;  // the field's own line says why
    }
    account.last4 = lastFour;
    std::vector<Uuid> users;
    for (const auto& [id, box] : m_users) {
        if (box->isChecked())
            users.push_back(id);
    }
    setUsers(account, std::move(users), m_nobody->isChecked() && m_nobody->isEnabled());
    for (const auto& [card, box] : m_cards) {
        if (const auto assignment = assignmentOf(box->currentData().toString()))
            account.cardAssignments[card] = *assignment;
        else
            account.cardAssignments.erase(card);
    }
    account.flipSigns = m_flipSigns->isChecked();
    account.rarelyUsed = m_occasional->isChecked();
    account.isArchived = m_archived->isChecked();
    try {
        return accountEntered(ledger, std::move(account));
    } catch (const EntryError& refusal) {
        if (refusal.kind() == EntryError::Case::users)
            m_usersRefusal->setRefusal(QString::fromUtf8(refusal.what()));
        else if (refusal.kind() != EntryError::Case::name)
            m_refusal->setRefusal(QString::fromUtf8(refusal.what()));
        return std::nullopt;
    }
}

void AccountSheet::save() {
    m_refusal->setRefusal({});
    const auto account = checked();
    if (!account)
        return;
    saveThenClose(m_bridge.runtime(),
                  [account = *account](Ledger& copy) -> std::optional<LedgerDelta> {
                      return upsertAccount(copy, account);
                  });
}

void AccountSheet::remove() {
    // Asked on a copy first, so that the refusal is said before any question.
    Ledger trial = m_bridge.runtime().ledger();
    if (!deleteAccount(trial, m_account.id)) {
        m_refusal->setRefusal(toQString(kAccountHasTransactions));
        return;
    }
    m_refusal->setRefusal({});
    if (!confirmed(this, QStringLiteral("Delete Account"),
                   QStringLiteral("Delete \u201C") + toQString(m_account.name) +
                       QStringLiteral("\u201D? Rules that name it stay as they are."),
                   QStringLiteral("Delete Account")))
        return;
    saveThenClose(m_bridge.runtime(),
                  [id = m_account.id](Ledger& copy) { return deleteAccount(copy, id); });
}

QCheckBox* AccountSheet::userBox(const Uuid& personID) const {
    for (const auto& [id, box] : m_users) {
        if (id == personID)
            return box;
    }
    return nullptr;
}

QComboBox* AccountSheet::cardField(const std::string& card) const {
    const auto found = m_cards.find(card);
    return found == m_cards.end() ? nullptr : found->second;
}

}  // namespace copperwick::app
