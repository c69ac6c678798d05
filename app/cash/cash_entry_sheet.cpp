#include "app/cash/cash_entry_sheet.h"

#include <QSignalBlocker>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/operations/cash_links.h"
#include "core/operations/entry_error.h"

namespace copperwick::app {

namespace {

constexpr ManualEntryKind kKinds[] = {
    ManualEntryKind::spending, ManualEntryKind::income,     ManualEntryKind::gift,
    ManualEntryKind::refund,   ManualEntryKind::withdrawal, ManualEntryKind::deposit,
};

bool isMove(ManualEntryKind kind) {
    return kind == ManualEntryKind::withdrawal || kind == ManualEntryKind::deposit;
}

std::optional<Uuid> chosenID(const QComboBox* box) {
    const QVariant data = box->currentData();
    if (!data.isValid() || data.toString().isEmpty())
        return std::nullopt;
    return Uuid::parse(toStdString(data.toString()));
}

void choose(QComboBox* box, const std::optional<Uuid>& id) {
    const int index = id ? box->findData(toQString(id->text())) : -1;
    box->setCurrentIndex(index >= 0 ? index : (box->count() > 0 ? 0 : -1));
}

}  // namespace

CashEntrySheet::CashEntrySheet(RuntimeBridge& bridge, const std::optional<Uuid>& walletID,
                               QWidget* parent)
    : SheetDialog(QStringLiteral("Add Cash Entry"),
                  QStringLiteral("Cash the bank never sees, or cash moved to or from a bank "
                                 "account."),
                  parent),
      m_bridge(bridge) {
    setModal(true);
    keepAtLeastWide(520);
    LedgerRuntime& runtime = m_bridge.runtime();
    countAsEntryEditor(runtime);

    makeFields();
    m_save = addDefaultButton(QStringLiteral("Save"));
    addCancelButton();
    connect(m_save, &QPushButton::clicked, this, &CashEntrySheet::save);

    for (const Account& account : runtime.ledger().accounts) {
        if (account.type == AccountType::cash && !account.isArchived)
            m_wallet->addItem(toQString(account.name), toQString(account.id.text()));
    }
    choose(m_wallet, walletID);
    m_date->setText(toQString(runtime.today().iso()));
    kindChanged();

    connect(m_kind, &QComboBox::currentIndexChanged, this, &CashEntrySheet::kindChanged);
    connect(m_wallet, &QComboBox::currentIndexChanged, this, [this] {
        fillBankAccounts();
        fillBankLines();
    });
    connect(m_bankAccount, &QComboBox::currentIndexChanged, this, &CashEntrySheet::fillBankLines);
    connect(m_amount, &QLineEdit::textChanged, this, [this] {
        fillBankLines();
        formChanged();
    });
    connect(m_date, &QLineEdit::textChanged, this, &CashEntrySheet::formChanged);
    m_amount->setFocus();
}

void CashEntrySheet::makeFields() {
    m_form = addForm();
    m_form->setVerticalSpacing(10);
    m_kind = new QComboBox(this);
    for (const ManualEntryKind kind : kKinds)
        m_kind->addItem(toQString(label(kind)), static_cast<int>(kind));
    m_form->addRow(fieldLabel(QStringLiteral("Kind"), m_kind, this), m_kind);

    m_wallet = new QComboBox(this);
    m_wallet->setMinimumContentsLength(18);
    m_form->addRow(fieldLabel(QStringLiteral("Wallet"), m_wallet, this), m_wallet);

    m_date = new QLineEdit(this);
    m_date->setPlaceholderText(QStringLiteral("YYYY-MM-DD"));
    m_form->addRow(fieldLabel(QStringLiteral("Date"), m_date, this), m_date);

    m_amount = new QLineEdit(this);
    m_amount->setPlaceholderText(QStringLiteral("0.00"));
    m_form->addRow(fieldLabel(QStringLiteral("Amount"), m_amount, this), m_amount);

    m_description = new QLineEdit(this);
    m_description->setPlaceholderText(QStringLiteral("Person, business, or description"));
    m_form->addRow(fieldLabel(QStringLiteral("Description"), m_description, this), m_description);

    m_category = new QComboBox(this);
    m_category->setMinimumContentsLength(18);
    m_form->addRow(fieldLabel(QStringLiteral("Category"), m_category, this), m_category);

    m_bankAccount = new QComboBox(this);
    m_bankAccount->setMinimumContentsLength(18);
    m_form->addRow(fieldLabel(QStringLiteral("Bank account"), m_bankAccount, this), m_bankAccount);

    m_bankLine = new QComboBox(this);
    m_bankLine->setMinimumContentsLength(24);
    m_bankLine->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_form->addRow(fieldLabel(QStringLiteral("Bank side"), m_bankLine, this), m_bankLine);

    m_refusal = new RefusalLine(this);
    body()->addWidget(m_refusal);
}

ManualEntryKind CashEntrySheet::kind() const {
    return static_cast<ManualEntryKind>(m_kind->currentData().toInt());
}

void CashEntrySheet::kindChanged() {
    const ManualEntryKind chosen = kind();
    const bool move = isMove(chosen);
    m_form->setRowVisible(m_description, !move);
    m_form->setRowVisible(m_category, !move && chosen != ManualEntryKind::gift);
    m_form->setRowVisible(m_bankAccount, move);
    m_form->setRowVisible(m_bankLine, move);
    fillCategories();
    fillBankAccounts();
    fillBankLines();
    orderTabsAsLaidOut();
    adjustSize();
}

void CashEntrySheet::fillCategories() {
    const auto kept = chosenID(m_category);
    const CategoryGroup group =
        kind() == ManualEntryKind::income ? CategoryGroup::income : CategoryGroup::expense;
    const QSignalBlocker blocker(m_category);
    m_category->clear();
    for (const LedgerCategory& category : m_bridge.runtime().ledger().categories) {
        if (category.group == group)
            m_category->addItem(toQString(category.name), toQString(category.id.text()));
    }
    choose(m_category, kept);
}

void CashEntrySheet::fillBankAccounts() {
    const auto kept = chosenID(m_bankAccount);
    const Ledger& ledger = m_bridge.runtime().ledger();
    const Account* wallet = ledger.account(chosenID(m_wallet));
    const QSignalBlocker blocker(m_bankAccount);
    m_bankAccount->clear();
    for (const Account& account : ledger.accounts) {
        // moveCash takes only an open bank account in the wallet's currency.
        if (account.type == AccountType::cash || account.isArchived ||
            (wallet && account.currency != wallet->currency))
            continue;
        m_bankAccount->addItem(toQString(account.name), toQString(account.id.text()));
    }
    choose(m_bankAccount, kept);
}

void CashEntrySheet::fillBankLines() {
    const auto kept = chosenID(m_bankLine);
    const QSignalBlocker blocker(m_bankLine);
    m_bankLine->clear();
    m_bankLine->addItem(QStringLiteral("Add a new bank line"), QString());
    const auto bankID = chosenID(m_bankAccount);
    const auto amount = Money::parseCents(toStdString(m_amount->text().trimmed()));
    if (isMove(kind()) && bankID && amount && *amount > 0) {
        const Ledger& ledger = m_bridge.runtime().ledger();
        const int64_t walletAmount = kind() == ManualEntryKind::withdrawal ? *amount : -*amount;
        for (const LedgerTransaction* line : linkableBankLines(ledger, *bankID, walletAmount)) {
            const QString text = toQString(DateText::medium(line->date)) +
                                 QStringLiteral(" \u00B7 ") + toQString(line->rawDescription) +
                                 QStringLiteral(" \u00B7 ") +
                                 toQString(Money::format(line->amount, line->currency));
            m_bankLine->addItem(text, toQString(line->id.text()));
        }
    }
    choose(m_bankLine, kept);
    m_bankLine->setEnabled(m_bankLine->count() > 1);
}

std::optional<FormEntry> CashEntrySheet::checkedForm(QString* refusal) const {
    try {
        if (!chosenID(m_wallet))
            throw EntryError(EntryError::Case::entryForm);
        return entryFormEntered(toStdString(m_date->text().trimmed()),
                                toStdString(m_amount->text().trimmed()), true);
    } catch (const EntryError& error) {
        *refusal = QString::fromUtf8(error.what());
        return std::nullopt;
    }
}

void CashEntrySheet::formChanged() {
    // Nothing typed yet is no refusal.
    QString refusal;
    if (!m_amount->text().trimmed().isEmpty() && !checkedForm(&refusal))
        m_refusal->setRefusal(refusal);
    else
        m_refusal->setRefusal({});
}

void CashEntrySheet::save() {
    QString refusal;
    const auto form = checkedForm(&refusal);
    if (!form) {
        m_refusal->setRefusal(refusal);
        return;
    }
    const ManualEntryKind chosen = kind();
    CashEntry entry{.kind = chosen,
                    .walletID = *chosenID(m_wallet),
                    .date = form->date,
                    .amount = form->amount,
                    .description = toStdString(m_description->text())};
    if (isMove(chosen)) {
        entry.bankAccountID = chosenID(m_bankAccount);
        entry.bankTransactionID = chosenID(m_bankLine);
    } else if (chosen != ManualEntryKind::gift) {
        entry.categoryID = chosenID(m_category);
    }
    LedgerRuntime& runtime = m_bridge.runtime();
    const Instant now = runtime.now();
    saveEntryThenClose(
        runtime, [entry, now](Ledger& copy) { return enterCash(copy, entry, now); },
        [this](const EntryError& error) {
            m_refusal->setRefusal(QString::fromUtf8(error.what()));
        });
}

}  // namespace copperwick::app
