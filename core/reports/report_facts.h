#pragma once

// A report told as numbered sentences, each a finished statement of the
// program's own figures: the key facts a printed report lists, and the text
// a language model's summary is checked against. Pure; safe on any thread.

#include <string>
#include <vector>

#include "core/model/uuid.h"
#include "core/reports/insights.h"
#include "core/reports/report_comparison.h"

namespace copperwick {

struct ReportFact {
    std::string id;  // "F1", "F2", … in the order they were made
    std::string text;
    std::vector<Uuid> transactionIDs;  // what opening the fact shows

    friend bool operator==(const ReportFact&, const ReportFact&) = default;
};

namespace ReportFacts {

// Spending, income and savings against the period before; the biggest
// categories, the categories that moved most, the main income sources;
// recurring charges whose price changed and their monthly total; unusual
// charges; and what still waits for review. Money reads in dollars.
[[nodiscard]] std::vector<ReportFact> build(const ReportComparison& comparison,
                                            const std::vector<RecurringCharge>& recurring,
                                            const std::vector<UnusualCharge>& unusual);

// The sentences alone, in order.
[[nodiscard]] std::vector<std::string> texts(const std::vector<ReportFact>& facts);

}  // namespace ReportFacts

}  // namespace copperwick
