#include "app/cash/cash_page.h"
#include "app/widgets/saved_change.h"

#include <utility>

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>

#include "app/cash/cash_entry_sheet.h"
#include "app/cash/new_wallet_sheet.h"
#include "app/shell/sections.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/model/money.h"
#include "core/operations/cash_links.h"
#include "core/operations/manual_entry.h"
#include "core/operations/upsert_account.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kIntro =
    "Cash the bank never sees: what you spend and receive in cash, and cash moved to and from "
    "the bank. Each entry can be undone.";
constexpr std::string_view kWalletsNote =
    "A wallet's balance is its opening cash plus every entry since.";
constexpr std::string_view kNoWalletsText = "No cash wallets yet. Add one with New Wallet.";
constexpr std::string_view kNoLinesText = "No entries in this wallet yet.";

// The most lines the table shows before it scrolls within the page.
constexpr int kVisibleLines = 12;

std::vector<const Account*> openWallets(const Ledger& ledger) {
    std::vector<const Account*> wallets;
    for (const Account& account : ledger.accounts) {
        if (account.type == AccountType::cash && !account.isArchived)
            wallets.push_back(&account);
    }
    return wallets;
}

}  // namespace

CashPage::CashPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge), m_model(new WalletLinesModel(this)) {
    QVBoxLayout* column =
        makeScrollingColumn(toQString(sectionInfo(AppSection::cash).label), toQString(kIntro));

    m_walletsCard =
        new SectionCard(QStringLiteral("Wallets"), toQString(kWalletsNote), "wallet.bifold", this);
    m_newWallet = m_walletsCard->addTitleButton(QStringLiteral("New Wallet\u2026"));
    m_addEntry = m_walletsCard->addTitleButton(QStringLiteral("Add Cash Entry\u2026"));
    m_noWallets = noteLabel(toQString(kNoWalletsText), m_walletsCard);
    m_walletsCard->body()->addWidget(m_noWallets);
    m_choices = new QButtonGroup(this);
    m_choices->setExclusive(true);
    column->addWidget(m_walletsCard);

    m_linesCard = new SectionCard(QStringLiteral("Lines"), {}, {}, this);
    m_lines = new QTableView(m_linesCard);
    m_lines->setAccessibleName(QStringLiteral("Lines"));
    m_lines->setModel(m_model);
    m_lines->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_lines->setSelectionMode(QAbstractItemView::SingleSelection);
    m_lines->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_lines->setShowGrid(false);
    m_lines->setWordWrap(false);
    m_lines->setTextElideMode(Qt::ElideRight);
    m_lines->setFrameShape(QFrame::NoFrame);
    m_lines->verticalHeader()->hide();
    m_lines->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QHeaderView* header = m_lines->horizontalHeader();
    header->setSectionResizeMode(WalletLinesModel::date, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(WalletLinesModel::description, QHeaderView::Stretch);
    header->setSectionResizeMode(WalletLinesModel::amount, QHeaderView::ResizeToContents);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_lines->viewport()->setAutoFillBackground(false);
    m_linesCard->body()->addWidget(m_lines);
    m_noLines = noteLabel(toQString(kNoLinesText), m_linesCard);
    m_linesCard->body()->addWidget(m_noLines);
    column->addWidget(m_linesCard);
    column->addStretch(1);

    connect(m_newWallet, &QPushButton::clicked, this, [this] { openNewWallet(); });
    connect(m_addEntry, &QPushButton::clicked, this, [this] { openCashEntry(); });
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, &CashPage::changeSaved);
    refresh();
}

CashEntrySheet* CashPage::openCashEntry() {
    auto* sheet = new CashEntrySheet(m_bridge, m_chosen, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
    return sheet;
}

NewWalletSheet* CashPage::openNewWallet() {
    auto* sheet = new NewWalletSheet(m_bridge, this);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::accepted, this, [this, sheet] {
        if (sheet->savedWallet())
            chooseWallet(*sheet->savedWallet());
    });
    sheet->open();
    return sheet;
}

void CashPage::chooseWallet(const Uuid& walletID) {
    m_chosen = walletID;
    refresh();
}

QLabel* CashPage::balanceLabel(const Uuid& walletID) const {
    for (const WalletRow& row : m_rows) {
        if (row.id == walletID)
            return row.balance;
    }
    return nullptr;
}

QPushButton* CashPage::archiveButton(const Uuid& walletID) const {
    for (const WalletRow& row : m_rows) {
        if (row.id == walletID)
            return row.archive;
    }
    return nullptr;
}

void CashPage::showEvent(QShowEvent* event) {
    SectionPage::showEvent(event);
    if (std::exchange(m_outdated, false))
        refresh();
}

void CashPage::changeSaved(const SavedChange& change) {
    // A hidden screen reads what changed when it next shows, not on every save.
    if (!isVisible()) {
        m_outdated = true;
        return;
    }
    if (touches(change, {RecordKind::account})) {
        refresh();
        return;
    }
    // Most saves (a review decision, a rule) touch no wallet at all; a line
    // that went can't be looked up, so its going redraws everything.
    const LedgerDelta& delta = *change.delta;
    if (const auto deleted = delta.deleted.find(RecordKind::transaction);
        deleted != delta.deleted.end() && !deleted->second.empty()) {
        refresh();
        return;
    }
    const auto changed = delta.changed.find(RecordKind::transaction);
    if (changed == delta.changed.end())
        return;
    const Ledger& ledger = m_bridge.runtime().ledger();
    for (const RecordID& id : changed->second) {
        const LedgerTransaction* line = ledger.transaction(id.uuid());
        const Account* account = line ? ledger.account(line->accountID) : nullptr;
        if (!line || (account && account->type == AccountType::cash)) {
            refresh();
            return;
        }
    }
}

void CashPage::refresh() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    const auto wallets = openWallets(ledger);
    const bool chosenStands =
        m_chosen && std::any_of(wallets.begin(), wallets.end(),
                                [this](const Account* wallet) { return wallet->id == *m_chosen; });
    if (!chosenStands) {
        m_chosen.reset();
        if (!wallets.empty())
            m_chosen = wallets.front()->id;
    }
    showWallets();
    showLines();
}

void CashPage::showWallets() {
    // Which control had the keyboard, so that it stays on the same wallet.
    std::optional<Uuid> focused;
    for (const WalletRow& row : m_rows) {
        if (row.choice->hasFocus() || row.archive->hasFocus())
            focused = row.id;
    }
    for (const WalletRow& row : m_rows)
        m_choices->removeButton(row.choice);
    m_walletsCard->clearRows();
    m_rows.clear();

    const Ledger& ledger = m_bridge.runtime().ledger();
    const auto wallets = openWallets(ledger);
    auto balances = walletBalances(ledger);
    for (const Account* wallet : wallets) {
        auto* rowWidget = new QWidget(m_walletsCard);
        auto* layout = new QHBoxLayout(rowWidget);
        layout->setContentsMargins(0, 2, 0, 2);
        layout->setSpacing(12);
        WalletRow row{.id = wallet->id};
        row.choice = new QRadioButton(toQString(wallet->name), rowWidget);
        row.choice->setAccessibleName(toQString(wallet->name));
        row.choice->setToolTip(toQString(wallet->name));
        row.choice->setChecked(m_chosen == wallet->id);
        m_choices->addButton(row.choice);
        layout->addWidget(row.choice, 1);
        const QString balance = toQString(Money::format(balances[wallet->id], wallet->currency));
        row.balance = textLabel(balance, rowWidget);
        row.balance->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        QFont font = row.balance->font();
        font.setWeight(QFont::DemiBold);
        row.balance->setFont(font);
        row.balance->setAccessibleDescription(toQString(wallet->name));
        layout->addWidget(row.balance);
        row.archive = pushButton(QStringLiteral("Archive"), rowWidget);
        row.archive->setAccessibleDescription(toQString(wallet->name));
        layout->addWidget(row.archive);
        const Uuid id = wallet->id;
        connect(row.choice, &QRadioButton::toggled, this, [this, id](bool on) {
            if (on && m_chosen != id) {
                m_chosen = id;
                showLines();
            }
        });
        connect(row.archive, &QPushButton::clicked, this, [this, id] { archive(id); });
        m_walletsCard->addRow(rowWidget);
        m_rows.push_back(row);
    }
    m_noWallets->setVisible(wallets.empty());
    m_addEntry->setEnabled(!wallets.empty());
    for (const WalletRow& row : m_rows) {
        if (focused == row.id)
            row.choice->setFocus();
    }
    orderTabs({m_walletsCard, m_linesCard});
}

void CashPage::showLines() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    m_model->refresh(ledger, m_chosen);
    const Account* wallet = ledger.account(m_chosen);
    setLabelText(
        m_linesCard->titleLabel(),
        wallet ? QStringLiteral("Lines in ") + toQString(wallet->name) : QStringLiteral("Lines"));
    const int rows = m_model->rowCount();
    // As tall as its rows under the header, up to a most, then it scrolls.
    const int shown = std::min(rows, kVisibleLines);
    m_lines->setFixedHeight(m_lines->horizontalHeader()->sizeHint().height() +
                            shown * m_lines->verticalHeader()->defaultSectionSize() +
                            2 * m_lines->frameWidth());
    m_lines->setVerticalScrollBarPolicy(rows > kVisibleLines ? Qt::ScrollBarAsNeeded
                                                             : Qt::ScrollBarAlwaysOff);
    m_lines->setVisible(rows > 0);
    m_noLines->setVisible(rows == 0);
    m_linesCard->setVisible(wallet != nullptr);
}

void CashPage::archive(const Uuid& walletID) {
    const Account* wallet = m_bridge.runtime().ledger().account(walletID);
    if (!wallet)
        return;
    Account archived = *wallet;
    archived.isArchived = true;
    m_bridge.runtime().applyForScreen(
        [archived](Ledger& copy) -> std::optional<LedgerDelta> {
            return upsertAccount(copy, archived);
        },
        [](const ApplyResult&) {});
}

std::vector<SelfCheck> CashPage::selfChecks() {
    return {SelfCheck{
        "Cash spent in the demo wallet, then undone", [this]() -> SelfCheckOutcome {
            LedgerRuntime& runtime = m_bridge.runtime();
            const auto wallets = openWallets(runtime.ledger());
            if (wallets.empty())
                return {false, "The demo workspace has no cash wallet."};
            const Uuid walletID = wallets.front()->id;
            const std::string walletName = wallets.front()->name;
            chooseWallet(walletID);
            const int64_t before = cashBalance(runtime.ledger(), walletID);
            const std::size_t count = runtime.ledger().transactions.size();

            QPointer<CashEntrySheet> sheet = openCashEntry();
            sheet->kindField()->setCurrentIndex(
                sheet->kindField()->findData(static_cast<int>(ManualEntryKind::spending)));
            sheet->amountField()->setText(QStringLiteral("12.34"));
            sheet->descriptionField()->setText(QStringLiteral("Farmers market"));
            sheet->saveButton()->click();
            if (sheet && sheet->isVisible()) {
                const QString why = sheet->refusalLine()->label()->text();
                sheet->close();
                return {false, "The cash entry was refused: " + toStdString(why)};
            }
            const int64_t after = cashBalance(runtime.ledger(), walletID);
            if (after != before - 1234 || runtime.ledger().transactions.size() != count + 1)
                return {false, "The wallet's balance went from " + Money::format(before) + " to " +
                                   Money::format(after) + " instead of down by $12.34."};
            if (runtime.ledger().undoLabel() !=
                std::optional<std::string>("Add manual transaction"))
                return {false, "The entry left no undo step of its own."};
            if (!runtime.undoLastChange())
                return {false, "Undoing the entry failed."};
            if (cashBalance(runtime.ledger(), walletID) != before ||
                runtime.ledger().transactions.size() != count)
                return {false, "Undoing the entry left the wallet changed."};
            return {true, "Entered $12.34 of cash spent in " + walletName + " and took it back."};
        }}};
}

}  // namespace copperwick::app
