#include "core/presentation/pdf_report_content.h"

#include <unordered_map>
#include <utility>

#include "core/model/checked.h"
#include "core/model/household_resolution.h"
#include "core/reports/report_facts.h"

namespace copperwick {

namespace {

// Spending summed by whose it is, in the order the page lists owners.
std::vector<PDFReportContent::Allocation> allocationOf(const Report& report, const Ledger& ledger) {
    std::unordered_map<SpendingAssignment, int64_t> byOwner;
    for (const Uuid& id : report.includedIDs) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        if (!transaction || transaction->kind != TransactionKind::expense)
            continue;
        int64_t& sum = byOwner[assignment(ledger, *transaction)];
        sum = checked::sub(sum, transaction->amount);
    }

    std::vector<PDFReportContent::Allocation> lines;
    const auto add = [&](const SpendingAssignment& owner) {
        const auto found = byOwner.find(owner);
        if (found != byOwner.end() && found->second != 0)
            lines.push_back({assignmentName(ledger, owner), found->second});
    };
    for (const Person& person : ledger.people)
        add(SpendingAssignment::person(person.id));
    add(SpendingAssignment::shared());
    add(SpendingAssignment::unassigned());
    return lines;
}

// The first line of each merchant record decides its badge: its category and
// kind, as the screens show them.
std::map<Uuid, MerchantIconDescriptor> merchantIconsOf(const Report& report, const Ledger& ledger) {
    const MerchantIconCatalog& catalog = MerchantIconCatalog::shared();
    std::map<Uuid, MerchantIconDescriptor> icons;
    for (const Uuid& id : report.includedIDs) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        if (!transaction || !transaction->merchantID || !ledger.merchant(transaction->merchantID))
            continue;
        if (icons.contains(*transaction->merchantID))
            continue;
        icons.emplace(*transaction->merchantID, catalog.descriptor(*transaction, ledger));
    }
    return icons;
}

}  // namespace

std::string_view name(PDFReportStyle style) {
    switch (style) {
        case PDFReportStyle::signature:
            return "Signature";
        case PDFReportStyle::everyday:
            return "Everyday";
        case PDFReportStyle::precision:
            return "Precision";
    }
    return "Signature";
}

std::string_view styleDetail(PDFReportStyle style) {
    switch (style) {
        case PDFReportStyle::signature:
            return "Elegant headings, open spacing, and understated accents in your skin's "
                   "colour.";
        case PDFReportStyle::everyday:
            return "Friendly summary panels, visual charts, and soft accents in your skin's "
                   "colour.";
        case PDFReportStyle::precision:
            return "Crisp tables, numbered sections, and a formal statement layout.";
    }
    return {};
}

PDFReportContent::PDFReportContent(Report report, const Ledger& ledger,
                                   std::vector<std::string> summary, bool summaryIsAI,
                                   std::vector<RecurringCharge> recurring, Instant generatedAt)
    : report(std::move(report)),
      summary(std::move(summary)),
      summaryIsAI(summaryIsAI),
      recurring(std::move(recurring)),
      generatedAt(generatedAt) {
    allocation = allocationOf(this->report, ledger);
    merchantIcons = merchantIconsOf(this->report, ledger);
    savingsGoal = BudgetReport::savingsGoal(ledger, this->report);
    payments = PaymentActivity::build(ledger, this->report.filter);
}

PDFReportContent PDFReportContent::ofBundle(const ReportBundle& bundle, const Ledger& ledger,
                                            Instant generatedAt) {
    return PDFReportContent(
        bundle.report(), ledger,
        ReportFacts::texts(ReportFacts::build(bundle.comparison, bundle.recurring, bundle.unusual)),
        false, bundle.recurring, generatedAt);
}

}  // namespace copperwick
