#include "app/transactions/manual_entry_sheet.h"

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/operations/manual_entry.h"

namespace copperwick::app {

namespace {

// The kinds the sheet offers, each with the words of its menu.
struct EntryKind {
    const char* words;
    TransactionKind kind;
    bool moneyIn;
};

constexpr EntryKind kKinds[] = {
    {"Spending", TransactionKind::expense, false},
    {"Income", TransactionKind::income, true},
    {"Refund or reimbursement", TransactionKind::expense, true},
};

}  // namespace

ManualEntrySheet::ManualEntrySheet(LedgerRuntime& runtime, QWidget* parent)
    : SheetDialog(QStringLiteral("Add Transaction"), toQString(kIntro), parent),
      m_runtime(runtime) {
    countAsEntryEditor(m_runtime);
    keepAtLeastWide(480);
    QFormLayout* form = addForm();

    m_account = new QComboBox(this);
    for (const Account& account : m_runtime.ledger().accounts) {
        if (!account.isArchived)
            m_account->addItem(toQString(account.name), toQString(account.id.text()));
    }
    form->addRow(fieldLabel(QStringLiteral("Account"), m_account, this),
                 withRefusalLine(m_account, m_accountRefusal, this));

    m_date = new QLineEdit(toQString(m_runtime.today().iso()), this);
    m_date->setToolTip(QStringLiteral("YYYY-MM-DD"));
    form->addRow(fieldLabel(QStringLiteral("Date"), m_date, this), m_date);

    m_kind = new QComboBox(this);
    for (const EntryKind& kind : kKinds)
        m_kind->addItem(QString::fromUtf8(kind.words));
    form->addRow(fieldLabel(QStringLiteral("Kind"), m_kind, this), m_kind);

    m_amount = new QLineEdit(this);
    m_amount->setPlaceholderText(QStringLiteral("0.00"));
    form->addRow(fieldLabel(QStringLiteral("Amount"), m_amount, this),
                 withRefusalLine(m_amount, m_amountRefusal, this));

    m_description = new QLineEdit(this);
    m_description->setPlaceholderText(QStringLiteral("A person, business, or description"));
    form->addRow(fieldLabel(QStringLiteral("Description"), m_description, this),
                 withRefusalLine(m_description, m_descriptionRefusal, this));

    m_category = new QComboBox(this);
    form->addRow(fieldLabel(QStringLiteral("Category"), m_category, this),
                 withRefusalLine(m_category, m_categoryRefusal, this));

    m_note = new QLineEdit(this);
    form->addRow(fieldLabel(QStringLiteral("Note"), m_note, this), m_note);

    addCancelButton();
    m_add = addDefaultButton(QStringLiteral("Add Transaction"));
    connect(m_add, &QPushButton::clicked, this, &ManualEntrySheet::save);
    connect(m_kind, &QComboBox::currentIndexChanged, this, &ManualEntrySheet::fillCategories);
    fillCategories();
}

void ManualEntrySheet::fillCategories() {
    const EntryKind& kind = kKinds[std::max(0, m_kind->currentIndex())];
    const CategoryGroup group =
        kind.kind == TransactionKind::income ? CategoryGroup::income : CategoryGroup::expense;
    const QVariant chosen = m_category->currentData();
    m_category->clear();
    m_category->addItem(QStringLiteral("Choose"));
    for (const LedgerCategory& category : m_runtime.ledger().categories) {
        if (category.group == group)
            m_category->addItem(toQString(category.name), toQString(category.id.text()));
    }
    m_category->setCurrentIndex(std::max(0, m_category->findData(chosen)));
}

QString ManualEntrySheet::refusalText() const {
    QStringList words;
    for (const RefusalLine* line :
         {m_accountRefusal, m_amountRefusal, m_descriptionRefusal, m_categoryRefusal}) {
        if (!line->isHidden())
            words.append(line->label()->text());
    }
    return words.join(QLatin1Char('\n'));
}

void ManualEntrySheet::clearRefusals() {
    for (RefusalLine* line :
         {m_accountRefusal, m_amountRefusal, m_descriptionRefusal, m_categoryRefusal})
        line->setRefusal({});
}

void ManualEntrySheet::showRefusal(const EntryError& error) {
    RefusalLine* line = m_accountRefusal;
    switch (error.kind()) {
        case EntryError::Case::amount:
        case EntryError::Case::entryForm:
            line = m_amountRefusal;
            break;
        case EntryError::Case::description:
            line = m_descriptionRefusal;
            break;
        case EntryError::Case::category:
            line = m_categoryRefusal;
            break;
        default:
            break;
    }
    line->setRefusal(QString::fromUtf8(error.what()));
}

void ManualEntrySheet::save() {
    clearRefusals();
    const EntryKind& kind = kKinds[std::max(0, m_kind->currentIndex())];
    const std::optional<Uuid> account =
        Uuid::parse(toStdString(m_account->currentData().toString()));
    ManualTransaction entry;
    try {
        const FormEntry form = entryFormEntered(toStdString(m_date->text().trimmed()),
                                                toStdString(m_amount->text()), true);
        if (!account)
            throw EntryError(EntryError::Case::entryForm);
        entry.accountID = *account;
        entry.date = form.date;
        entry.amount = kind.moneyIn ? form.amount : -form.amount;
    } catch (const EntryError& error) {
        showRefusal(error);
        return;
    }
    entry.description = toStdString(m_description->text());
    entry.kind = kind.kind;
    entry.categoryID = Uuid::parse(toStdString(m_category->currentData().toString()));
    entry.note = toStdString(m_note->text());
    const Instant now = m_runtime.now();
    const LedgerRuntime::Change change = [entry, now](Ledger& ledger) {
        return addManualTransaction(ledger, entry, now);
    };
    saveEntryThenClose(m_runtime, change, [this](const EntryError& error) { showRefusal(error); });
}

}  // namespace copperwick::app
