#include "app/cash/new_wallet_sheet.h"

#include <QFormLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/operations/entry_error.h"
#include "core/operations/manual_entry.h"

namespace copperwick::app {

NewWalletSheet::NewWalletSheet(RuntimeBridge& bridge, QWidget* parent)
    : SheetDialog(QStringLiteral("New Wallet"),
                  QStringLiteral("A wallet keeps its own balance. Cash already in it counts as "
                                 "opening cash, not income."),
                  parent),
      m_bridge(bridge) {
    setModal(true);
    keepAtLeastWide(460);
    LedgerRuntime& runtime = m_bridge.runtime();
    countAsEntryEditor(runtime);

    QFormLayout* form = addForm();
    form->setVerticalSpacing(10);
    m_name = new QLineEdit(this);
    form->addRow(fieldLabel(QStringLiteral("Name"), m_name, this), m_name);
    m_opening = new QLineEdit(this);
    m_opening->setPlaceholderText(QStringLiteral("0.00"));
    form->addRow(fieldLabel(QStringLiteral("Opening cash"), m_opening, this), m_opening);
    m_date = new QLineEdit(this);
    m_date->setPlaceholderText(QStringLiteral("YYYY-MM-DD, or blank for today"));
    form->addRow(fieldLabel(QStringLiteral("Since"), m_date, this), m_date);
    m_refusal = new RefusalLine(this);
    body()->addWidget(m_refusal);

    m_save = addDefaultButton(QStringLiteral("Add Wallet"));
    addCancelButton();
    connect(m_save, &QPushButton::clicked, this, &NewWalletSheet::save);
    for (QLineEdit* field : {m_opening, m_date})
        connect(field, &QLineEdit::textChanged, this, &NewWalletSheet::formChanged);
    m_name->setFocus();
}

void NewWalletSheet::formChanged() {
    // The name is refused only on Save: an empty one is where every wallet starts.
    try {
        (void)walletFormEntered("wallet", toStdString(m_opening->text().trimmed()),
                                toStdString(m_date->text().trimmed()));
        m_refusal->setRefusal({});
    } catch (const EntryError& error) {
        m_refusal->setRefusal(QString::fromUtf8(error.what()));
    }
}

void NewWalletSheet::save() {
    WalletForm form;
    try {
        form =
            walletFormEntered(toStdString(m_name->text()), toStdString(m_opening->text().trimmed()),
                              toStdString(m_date->text().trimmed()));
    } catch (const EntryError& error) {
        m_refusal->setRefusal(QString::fromUtf8(error.what()));
        return;
    }
    LedgerRuntime& runtime = m_bridge.runtime();
    Account wallet(Uuid::random(), form.name, AccountType::cash);
    wallet.currency = runtime.ledger().settings->reportCurrency;
    const LocalDate date = form.date.value_or(runtime.today());
    const Instant now = runtime.now();
    // Read only once the sheet is accepted, which is once the wallet is saved.
    m_saved = wallet.id;
    saveEntryThenClose(
        runtime,
        [wallet, opening = form.openingCash, date, now](Ledger& copy) {
            return addWallet(copy, wallet, opening, date, now);
        },
        [this](const EntryError& error) {
            m_refusal->setRefusal(QString::fromUtf8(error.what()));
        });
}

}  // namespace copperwick::app
