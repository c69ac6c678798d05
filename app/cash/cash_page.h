#pragma once

// The Cash section: the household's cash wallets with their balances, the
// lines of the wallet chosen, and the sheets that add a wallet and enter
// cash. Everything is read from the ledger through the runtime and changed
// only through it; the page redraws when a save touches accounts or
// transactions. Main thread only.

#include <optional>
#include <vector>

#include <QButtonGroup>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>

#include "app/cash/wallet_lines_model.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_card.h"
#include "app/widgets/section_page.h"

namespace copperwick::app {

class CashEntrySheet;
class NewWalletSheet;

class CashPage : public SectionPage {
    Q_OBJECT

  public:
    explicit CashPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    // The sheets, opened as the buttons open them; each closes itself.
    CashEntrySheet* openCashEntry();
    NewWalletSheet* openNewWallet();

    [[nodiscard]] const std::optional<Uuid>& chosenWallet() const { return m_chosen; }
    void chooseWallet(const Uuid& walletID);

    [[nodiscard]] QPushButton* newWalletButton() const { return m_newWallet; }
    [[nodiscard]] QPushButton* addEntryButton() const { return m_addEntry; }
    // The balance shown for a wallet, or null when it isn't listed.
    [[nodiscard]] QLabel* balanceLabel(const Uuid& walletID) const;
    [[nodiscard]] QPushButton* archiveButton(const Uuid& walletID) const;
    [[nodiscard]] QTableView* linesView() const { return m_lines; }
    [[nodiscard]] WalletLinesModel* linesModel() const { return m_model; }

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    struct WalletRow {
        Uuid id;
        QRadioButton* choice = nullptr;
        QLabel* balance = nullptr;
        QPushButton* archive = nullptr;
    };

    void changeSaved(const SavedChange& change);
    void refresh();
    void showWallets();
    void showLines();
    void archive(const Uuid& walletID);

    RuntimeBridge& m_bridge;
    std::optional<Uuid> m_chosen;
    SectionCard* m_walletsCard = nullptr;
    SectionCard* m_linesCard = nullptr;
    QPushButton* m_newWallet = nullptr;
    QPushButton* m_addEntry = nullptr;
    QLabel* m_noWallets = nullptr;
    QButtonGroup* m_choices = nullptr;
    std::vector<WalletRow> m_rows;
    QTableView* m_lines = nullptr;
    QLabel* m_noLines = nullptr;
    WalletLinesModel* m_model = nullptr;
    // Saved while the page was hidden: it reads everything again when it shows.
    bool m_outdated = false;
};

}  // namespace copperwick::app
