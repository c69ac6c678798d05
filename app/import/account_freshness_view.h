#pragma once

// "Account freshness": how current each account's imports are, a row per
// account with its type's symbol, its last import and latest transaction,
// the date the person confirmed it complete through, and its status word.
// The status opens a menu with the three answers a person can give: the
// account is current through today, it is only used now and then, or show
// its transactions.
//
// Everything shown comes from core's AccountFreshness; the answers go
// through the runtime like any change. The rows are made again after each
// saved change to accounts, transactions or imports: a household has a
// handful of accounts, but finding each one's latest line reads the whole
// history, so a long one is read in the background. Main thread only.

#include <vector>

#include <QToolButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_card.h"
#include "core/model/uuid.h"
#include "core/reports/account_freshness.h"
#include "runtime/ledger_reading.h"

namespace copperwick::app {

class AccountFreshnessView : public SectionCard {
    Q_OBJECT

  public:
    explicit AccountFreshnessView(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // The status button of the account called `name`, or null.
    [[nodiscard]] QToolButton* statusButton(const QString& name) const;
    // Each row's words, one string a row, in order.
    [[nodiscard]] QStringList rowTexts() const;

    // The menu's answers, by account.
    void confirmCurrent(const Uuid& accountID);
    void markOccasional(const Uuid& accountID);
    void showInTransactions(const Uuid& accountID);

  private:
    struct Row {
        QWidget* widget;
        QString name;
        QString text;
        QToolButton* status;
    };

    void showLines(const std::vector<AccountFreshness>& lines);

    RuntimeBridge& m_bridge;
    std::vector<Row> m_shown;
    LedgerReading<std::vector<AccountFreshness>> m_reading;
};

}  // namespace copperwick::app
