#pragma once

// What a printed report holds, and the three styles it can be printed in.
//
// PDFReportContent is worked out once from the ledger (spending by owner,
// merchant badges, the savings goal, payment services), so that whoever lays
// the pages out reads one plain value and never a Ledger. Every style shows
// the same figures; only the look differs. Build the content on the thread
// that owns the ledger; the value itself is copyable and may then travel to
// any thread.

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/enum_text.h"
#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/presentation/merchant_icons.h"
#include "core/reports/budget_report.h"
#include "core/reports/insights.h"
#include "core/reports/payment_activity.h"
#include "core/reports/report.h"
#include "core/reports/report_bundle.h"

namespace copperwick {

enum class PDFReportStyle {
    signature,
    everyday,
    precision,
};

template <>
struct EnumTraits<PDFReportStyle> {
    static constexpr std::array<std::pair<PDFReportStyle, std::string_view>, 3> cases{{
        {PDFReportStyle::signature, "signature"},
        {PDFReportStyle::everyday, "everyday"},
        {PDFReportStyle::precision, "precision"},
    }};
};

// "Signature", "Everyday", "Precision".
[[nodiscard]] std::string_view name(PDFReportStyle style);
// The sentence that tells a person what the style looks like.
[[nodiscard]] std::string_view styleDetail(PDFReportStyle style);

// The one way making or saving a PDF fails, in the words a person reads.
class PDFExportError : public std::runtime_error {
  public:
    static constexpr std::string_view kMessage =
        "The PDF file couldn't be created at that location.";

    PDFExportError() : std::runtime_error(std::string(kMessage)) {}
};

struct PDFReportContent {
    // Spending of one owner: a person, "Shared household" or "Unassigned".
    struct Allocation {
        std::string name;
        int64_t amount = 0;

        friend bool operator==(const Allocation&, const Allocation&) = default;
    };

    Report report;
    std::vector<std::string> summary;  // the bullets, in order
    bool summaryIsAI = false;          // written by the local model and checked
    std::vector<RecurringCharge> recurring;
    // People in the household's order, then the shared household, then
    // what belongs to nobody; owners with nothing spent are left out.
    std::vector<Allocation> allocation;
    Instant generatedAt;
    PaymentActivity payments;
    std::optional<SavingsGoal> savingsGoal;
    // The badge of each merchant record the report's lines were filed to.
    // Lines known only by their bank text have no record and no entry.
    std::map<Uuid, MerchantIconDescriptor> merchantIcons;

    // Everything the pages need about `report`, read from `ledger`.
    PDFReportContent(Report report, const Ledger& ledger, std::vector<std::string> summary,
                     bool summaryIsAI, std::vector<RecurringCharge> recurring, Instant generatedAt);
    // What the Reports screen and the command line print: the bundle's
    // figures, with its key facts as the summary.
    [[nodiscard]] static PDFReportContent ofBundle(const ReportBundle& bundle, const Ledger& ledger,
                                                   Instant generatedAt);

    friend bool operator==(const PDFReportContent&, const PDFReportContent&) = default;
};

}  // namespace copperwick
