#include "app/import/account_freshness_view.h"

#include <QHBoxLayout>
#include <QMenu>

#include "app/widgets/saved_change.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/enter_presses.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"
#include "core/operations/report_notes.h"
#include "core/reports/account_freshness.h"
#include "runtime/instant_text.h"

namespace copperwick::app {

namespace {

const QString kNote = QStringLiteral(
    "A quiet account may be complete. Transaction dates do not prove statement coverage. Review "
    "account notes in Settings to reset a confirmation.");

}  // namespace

AccountFreshnessView::AccountFreshnessView(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Account freshness"), kNote, {}, parent),
      m_bridge(bridge),
      m_reading(bridge.runtime(), &AccountFreshness::build,
                [this](const std::vector<AccountFreshness>& lines) { showLines(lines); }) {
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, [this](const SavedChange& change) {
        if (touches(change, {RecordKind::account, RecordKind::transaction, RecordKind::batch}))
            m_reading.start();
    });
    m_reading.start();
}

QToolButton* AccountFreshnessView::statusButton(const QString& name) const {
    for (const auto& row : m_shown) {
        if (row.name == name)
            return row.status;
    }
    return nullptr;
}

QStringList AccountFreshnessView::rowTexts() const {
    QStringList texts;
    for (const auto& row : m_shown) {
        if (row.status)
            texts.append(row.text);
    }
    return texts;
}

void AccountFreshnessView::showLines(const std::vector<AccountFreshness>& lines) {
    // A menu's answer saves, and the save brings us here while that menu's
    // button is still on the stack: the old rows go once the event is over.
    clearRows();
    m_shown.clear();

    for (std::size_t i = 0; i < lines.size(); ++i) {
        const AccountFreshness& line = lines[i];
        auto* widget = new QWidget(this);
        auto* row = new QHBoxLayout(widget);
        row->setContentsMargins(0, 10, 0, 10);
        row->setSpacing(12);
        row->addWidget(new SymbolView(symbol(line.account.type), 22, widget), 0, Qt::AlignTop);

        auto* text = new QVBoxLayout;
        text->setSpacing(2);
        auto* name = new ElidedLabel(widget);
        QFont strong = name->font();
        strong.setWeight(QFont::DemiBold);
        name->setFont(strong);
        name->setFullText(toQString(line.account.name));
        text->addWidget(name);
        const QString importLine = toQString(line.importLine(
            line.lastImportedAt ? std::optional(abbreviatedDateTime(*line.lastImportedAt))
                                : std::nullopt));
        text->addWidget(secondaryLabel(importLine, widget));
        QString words = name->fullText() + QStringLiteral(", ") + importLine;
        if (const auto confirmed = line.confirmedLine()) {
            text->addWidget(secondaryLabel(toQString(*confirmed), widget));
            words += QStringLiteral(", ") + toQString(*confirmed);
        }
        row->addLayout(text, 1);

        auto* status = new QToolButton(widget);
        const QString state = toQString(label(line.state));
        status->setText(state);
        status->setAccessibleName(state);
        status->setToolTip(state);
        status->setPopupMode(QToolButton::InstantPopup);
        status->setToolButtonStyle(Qt::ToolButtonTextOnly);
        status->setAutoRaise(true);
        pressOnEnter(status);
        if (line.state == AccountFreshness::State::mayNeedImport)
            status->setForegroundRole(QPalette::Link);
        auto* menu = new QMenu(status);
        const Uuid id = line.account.id;
        menu->addAction(QStringLiteral("I've Checked — Current Through Today"), this,
                        [this, id] { confirmCurrent(id); });
        menu->addAction(QStringLiteral("Used Only Occasionally"), this,
                        [this, id] { markOccasional(id); });
        menu->addAction(QStringLiteral("Show in Transactions"), this,
                        [this, id] { showInTransactions(id); });
        status->setMenu(menu);
        row->addWidget(status, 0, Qt::AlignVCenter);
        words += QStringLiteral(", ") + state;
        widget->setAccessibleName(words);

        if (i > 0) {
            auto* rule = new QFrame(this);
            rule->setFrameShape(QFrame::HLine);
            rule->setFrameShadow(QFrame::Plain);
            rule->setForegroundRole(QPalette::Midlight);
            addRow(rule);
            m_shown.push_back({rule, {}, {}, nullptr});
        }
        addRow(widget);
        m_shown.push_back({widget, name->fullText(), words, status});
    }
}

void AccountFreshnessView::confirmCurrent(const Uuid& accountID) {
    LedgerRuntime& runtime = m_bridge.runtime();
    runtime.applyForScreen(
        [note = DataNote::Acknowledgement{DataNote::UpToDate{accountID, runtime.today()}}](
            Ledger& ledger) { return acknowledge(ledger, {note}); },
        [](const ApplyResult&) {});
}

void AccountFreshnessView::markOccasional(const Uuid& accountID) {
    m_bridge.runtime().applyForScreen(
        [note = DataNote::Acknowledgement{DataNote::RarelyUsed{accountID}}](Ledger& ledger) {
            return acknowledge(ledger, {note});
        },
        [](const ApplyResult&) {});
}

void AccountFreshnessView::showInTransactions(const Uuid& accountID) {
    LedgerRuntime& runtime = m_bridge.runtime();
    const Account* account = runtime.ledger().account(accountID);
    if (!account)
        return;
    TransactionsFocus focus{account->name, {}};
    for (const auto* transaction : runtime.ledger().activeTransactions()) {
        if (transaction->accountID == accountID)
            focus.ids.insert(transaction->id);
    }
    runtime.setTransactionsFocus(std::move(focus));
    runtime.setSection(AppSection::transactions);
}

}  // namespace copperwick::app
