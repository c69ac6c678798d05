#include "core/reports/payment_activity.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "core/model/checked.h"
#include "core/reports/payment_lines.h"
#include "core/reports/payment_service_detection.h"
#include "core/reports/report_engine.h"
#include "core/reports/zelle_activity.h"

namespace copperwick {

int64_t PaymentActivityLine::net() const {
    return checked::sub(received, sent);
}

int64_t PaymentActivity::net() const {
    return checked::sub(received, sent);
}

bool PaymentActivity::panelShown(const Ledger& ledger) {
    return !ledger.settings->paymentServices.empty();
}

std::span<const PaymentActivityLine> PaymentActivity::panelLines() const {
    return std::span(lines).first(std::min(lines.size(), kPanelLines));
}

std::optional<std::string> PaymentActivity::allNamesNote() const {
    if (lines.size() <= kPanelLines)
        return std::nullopt;
    return "Use Show in Transactions to see all " + std::to_string(lines.size()) + " names.";
}

PaymentActivity PaymentActivity::build(const Ledger& ledger, const ReportFilter& filter) {
    PaymentActivity activity;
    const auto& tracked = ledger.settings->paymentServices;
    if (tracked.empty())
        return activity;
    const std::set<PaymentService> services(tracked.begin(), tracked.end());
    const auto phrases = ZelleActivity::householdPhrases(ledger);

    // By id: an arbitrary order, but one that storage can't change.
    std::vector<const LedgerTransaction*> payments;
    for (const LedgerTransaction* transaction : PaymentLines::candidates(ledger, false)) {
        if (ZelleActivity::counts(*transaction, ledger, filter))
            payments.push_back(transaction);
    }
    std::sort(payments.begin(), payments.end(),
              [](const auto* a, const auto* b) { return a->id < b->id; });

    std::map<std::string, PaymentActivityLine> byKey;
    for (const LedgerTransaction* payment : payments) {
        const auto service = detectPaymentService(payment->rawDescription);
        if (!service || !services.contains(*service))
            continue;
        auto identity = ReportEngine::merchantIdentity(*payment, ledger);
        std::string key = std::string(rawValue(*service)) + ":" + identity.id;
        auto [at, isNew] = byKey.try_emplace(key);
        PaymentActivityLine& line = at->second;
        if (isNew) {
            line.id = std::move(key);
            line.name = std::move(identity.name);
            line.service = *service;
        }
        if (payment->amount < 0)
            line.sent = checked::sub(line.sent, payment->amount);
        else
            line.received = checked::add(line.received, payment->amount);
        line.transactionIDs.push_back(payment->id);
        const bool household = payment->kind == TransactionKind::transfer &&
                               ZelleActivity::matchesHousehold(*payment, phrases);
        std::string words = ZelleActivity::treatment(*payment, ledger, household);
        const auto place = std::lower_bound(line.howCounted.begin(), line.howCounted.end(), words);
        if (place == line.howCounted.end() || *place != words)
            line.howCounted.insert(place, std::move(words));
    }

    for (auto& entry : byKey)
        activity.lines.push_back(std::move(entry.second));
    std::sort(activity.lines.begin(), activity.lines.end(), [](const auto& a, const auto& b) {
        const int64_t volumeA = checked::add(a.sent, a.received);
        const int64_t volumeB = checked::add(b.sent, b.received);
        return volumeA != volumeB ? volumeA > volumeB : a.id < b.id;
    });
    for (const auto& line : activity.lines) {
        activity.sent = checked::add(activity.sent, line.sent);
        activity.received = checked::add(activity.received, line.received);
        activity.transactionIDs.insert(activity.transactionIDs.end(), line.transactionIDs.begin(),
                                       line.transactionIDs.end());
    }
    return activity;
}

}  // namespace copperwick
