#include "runtime/update_policy.h"

#include <string_view>
#include <vector>

namespace copperwick {

std::string busyWords(const UpdateActivity& activity) {
    std::vector<std::string_view> doing;
    if (activity.isImporting)
        doing.push_back("importing or editing an entry");
    if (activity.isBuildingReport)
        doing.push_back("building a report");
    if (activity.isBuildingPDF)
        doing.push_back("making a PDF");
    if (activity.isFilingWithAppleIntelligence)
        doing.push_back("filing with Local AI");
    if (activity.isTidyingMerchants)
        doing.push_back("tidying merchant names");
    std::string words;
    for (std::size_t i = 0; i < doing.size(); ++i) {
        if (i > 0)
            words += i + 1 == doing.size() ? " and " : ", ";
        words += doing[i];
    }
    return words;
}

}  // namespace copperwick
