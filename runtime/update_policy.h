#pragma once

// When an update may be installed: never while a person's work is under way.
// UpdateActivity is what the program is doing now, as LedgerRuntime reads it
// on each call; UpdateInstallPolicy holds the rule and how often a waiting
// install looks again. Plain values, safe on any thread.

#include <chrono>
#include <string>

namespace copperwick {

struct UpdateActivity {
    // The importer is busy, or an entry editor is open: a half-written
    // manual entry holds an install back as an import does.
    bool isImporting = false;
    bool isBuildingReport = false;
    bool isBuildingPDF = false;
    // Local AI is filing transactions; the field keeps its long-standing name.
    bool isFilingWithAppleIntelligence = false;
    bool isTidyingMerchants = false;

    friend bool operator==(const UpdateActivity&, const UpdateActivity&) = default;
};

namespace UpdateInstallPolicy {

// How long a waiting install sleeps before it looks at the activity again.
inline constexpr std::chrono::seconds retryInterval{15};

[[nodiscard]] constexpr bool canInstallNow(const UpdateActivity& activity) {
    return !activity.isImporting && !activity.isBuildingReport && !activity.isBuildingPDF &&
           !activity.isFilingWithAppleIntelligence && !activity.isTidyingMerchants;
}

}  // namespace UpdateInstallPolicy

// What holds an install back, in the words of a sentence: "importing or
// editing an entry and filing with Local AI". Empty when nothing does.
[[nodiscard]] std::string busyWords(const UpdateActivity& activity);

}  // namespace copperwick
