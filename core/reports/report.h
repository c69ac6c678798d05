#pragma once

// The result of one report: every figure of a period and scope, computed in
// one pass by ReportEngine::build. Screens, exports and the finance lookups all
// state money from a Report, which is what keeps them in agreement. A plain
// copyable value; money is signed cents, and spending is positive.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/data_note.h"
#include "core/model/uuid.h"
#include "core/reports/report_filter.h"

namespace copperwick {

struct MerchantLine {
    std::string id;  // a merchant's id as text, or "key:" and the bank text's key
    std::string name;
    int64_t amount = 0;
    int64_t count = 0;
    std::vector<Uuid> transactionIDs;

    friend bool operator==(const MerchantLine&, const MerchantLine&) = default;
};

struct CategoryLine {
    static constexpr std::string_view kUncategorizedID = "uncategorized";

    std::string id;  // the category's id as text, or "uncategorized"
    std::optional<Uuid> categoryID;
    std::string name;
    int colorIndex = -1;
    int64_t amount = 0;   // after refunds; negative when refunds outweigh purchases
    int64_t refunds = 0;  // already netted into amount
    int64_t count = 0;
    std::vector<MerchantLine> merchants;
    std::vector<Uuid> transactionIDs;

    friend bool operator==(const CategoryLine&, const CategoryLine&) = default;
};

struct MonthLine {
    std::string monthKey;
    int64_t income = 0;
    int64_t spending = 0;

    [[nodiscard]] int64_t net() const;

    friend bool operator==(const MonthLine&, const MonthLine&) = default;
};

struct Report {
    static constexpr std::size_t kTopMerchantCount = 15;

    ReportFilter filter;
    std::string scopeLabel;
    int64_t income = 0;
    int64_t spending = 0;  // after refunds
    int64_t refunds = 0;   // already netted into spending
    std::vector<CategoryLine> categories;
    std::vector<MerchantLine> incomeSources;
    std::vector<MerchantLine> topMerchants;
    std::vector<MonthLine> months;  // every month of the span, empty ones too
    int64_t transferCount = 0;
    int64_t transferVolume = 0;  // money leaving, so a pair counts once
    int64_t unknownCount = 0;
    int64_t unknownIn = 0;
    int64_t unknownOut = 0;  // zero or negative
    std::vector<Uuid> unknownIDs;
    int64_t pendingCount = 0;
    int64_t pendingTotal = 0;
    std::vector<Uuid> includedIDs;  // posted income and expense, in date order
    std::vector<Uuid> aiFiledIDs;   // filed by the model, not checked yet
    std::vector<DataNote> notes;
    std::vector<std::string> accountNames;
    int64_t giftsReceived = 0;  // also inside income

    explicit Report(ReportFilter filter) : filter(std::move(filter)) {}

    [[nodiscard]] int64_t savings() const;
    // Income other than gifts received: what the overview's Income tile shows.
    [[nodiscard]] int64_t incomeWithoutGifts() const;
    // The overview shows gifts received beside income only when there are some.
    [[nodiscard]] bool showsGiftsReceived() const { return giftsReceived >= 1; }
    // Savings as a share of income in tenths of a percent; absent without income.
    [[nodiscard]] std::optional<int64_t> savingsRateTenths() const;
    // Nothing waits for review and nothing is pending.
    [[nodiscard]] bool isComplete() const { return unknownCount == 0 && pendingCount == 0; }
    // Nothing happened in the period at all: no line counted, moved, waiting
    // or pending. The overview then asks for another period or a bank file.
    [[nodiscard]] bool isEmpty() const {
        return includedIDs.empty() && transferCount == 0 && unknownCount == 0 && pendingCount == 0;
    }

    friend bool operator==(const Report&, const Report&) = default;
};

namespace detail {
// numerator / denominator rounded to the nearest whole, halves away from zero;
// denominator must be at least 1.
[[nodiscard]] int64_t roundedQuotient(int64_t numerator, int64_t denominator);
}  // namespace detail

}  // namespace copperwick
