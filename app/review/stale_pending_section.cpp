#include "app/review/stale_pending_section.h"

#include <QHBoxLayout>
#include <QLabel>

#include "app/widgets/elided_label.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/operations/classification.h"
#include "core/presentation/review_text.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kRemoveLabel = "Remove pending charge";

}  // namespace

StalePendingSection::StalePendingSection(LedgerRuntime& runtime, QWidget* parent)
    : SectionCard(toQString(ReviewText::kStalePendingTitle),
                  toQString(ReviewText::kStalePendingDetail), {}, parent),
      m_runtime(runtime) {
    hide();
}

void StalePendingSection::setTransactions(const std::vector<LedgerTransaction>& transactions) {
    setVisible(!transactions.empty());
    if (transactions == m_transactions)
        return;
    m_transactions = transactions;
    m_buttons.clear();
    clearRows();
    const Ledger& ledger = m_runtime.ledger();
    for (const LedgerTransaction& transaction : m_transactions) {
        auto* row = new QWidget(this);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 6, 0, 6);
        line->setSpacing(12);
        auto* date = new QLabel(toQString(DateText::medium(transaction.date)), row);
        date->setForegroundRole(QPalette::PlaceholderText);
        date->setMinimumWidth(
            date->fontMetrics().horizontalAdvance(QStringLiteral("Mmm 00, 0000")));
        line->addWidget(date);
        auto* words = new QVBoxLayout;
        words->setSpacing(0);
        words->addWidget(new ElidedLabel(toQString(transaction.rawDescription), row));
        if (const Account* account = ledger.account(transaction.accountID)) {
            auto* accountName = new ElidedLabel(toQString(account->name), row);
            accountName->setForegroundRole(QPalette::PlaceholderText);
            words->addWidget(accountName);
        }
        line->addLayout(words, 1);
        auto* amount =
            new QLabel(toQString(Money::format(transaction.amount, transaction.currency)), row);
        amount->setAccessibleName(amount->text());
        line->addWidget(amount);
        QPushButton* remove = pushButton(QStringLiteral("Remove"), row);
        remove->setAccessibleDescription(toQString(transaction.rawDescription));
        const Uuid id = transaction.id;
        connect(remove, &QPushButton::clicked, this, [this, id] { this->remove(id); });
        line->addWidget(remove);
        m_buttons.emplace_back(id, remove);
        addRow(row);
    }
}

QPushButton* StalePendingSection::removeButton(const Uuid& id) const {
    for (const auto& [lineID, button] : m_buttons) {
        if (lineID == id)
            return button;
    }
    return nullptr;
}

void StalePendingSection::remove(const Uuid& id) {
    const Instant now = m_runtime.now();
    m_runtime.applyForScreen(
        [id, now](Ledger& copy) {
            return setVoided(copy, {id}, true, std::string(kRemoveLabel), now);
        },
        [](const ApplyResult&) {});
}

}  // namespace copperwick::app
