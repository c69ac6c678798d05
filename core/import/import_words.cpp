#include "core/import/import_words.h"

namespace copperwick {

std::string readyLine(int64_t transactions, std::size_t files) {
    return std::to_string(transactions) + " transactions ready from " + std::to_string(files) +
           (files == 1 ? " file" : " files");
}

std::optional<std::string> blockedLine(std::size_t files) {
    if (files == 0)
        return std::nullopt;
    if (files == 1)
        return "1 file needs a decision first (see above), or turn it off.";
    return std::to_string(files) + " files need a decision first (see above), or turn them off.";
}

std::string previousImportLine(std::string_view when) {
    return "You imported this exact file on " + std::string(when) +
           ". Rows already saved are skipped.";
}

int64_t transactionsAdded(const ImportCounts& counts) {
    return counts.imported + counts.replacedPending + counts.forcedDuplicates;
}

std::string importCountsLine(const ImportCounts& counts) {
    std::string line = std::to_string(transactionsAdded(counts)) + " added, " +
                       std::to_string(counts.duplicates) + " already saved";
    if (counts.heldDuplicates > 0)
        line += ", " + std::to_string(counts.heldDuplicates) + " held back";
    if (counts.errors > 0)
        line += ", " + std::to_string(counts.errors) + " skipped rows";
    return line;
}

std::string removedImportMessage(std::string_view fileName) {
    return "Removed the import of " + std::string(fileName) + ".";
}

}  // namespace copperwick
