#include "core/import/statement_files.h"

#include <algorithm>
#include <variant>

#include "core/import/camt_import.h"
#include "core/import/csv_reader.h"
#include "core/import/ofx_import.h"

namespace copperwick::StatementFiles {

std::vector<StatementPart> split(std::string_view fileName, std::string_view data) {
    const auto decoded = CSVReader::decodeBorrowing(data);
    if (!std::holds_alternative<DecodedText>(decoded))
        return {};
    const std::string_view text = std::get<DecodedText>(decoded).view();
    if (OFXImport::recognizes(fileName, text))
        return OFXImport::statements(text);
    if (CamtImport::recognizes(fileName, text))
        return CamtImport::statements(text);
    return {};
}

std::vector<std::string> labels(const std::vector<std::string>& accounts) {
    std::vector<std::string> labels;
    const std::size_t total = accounts.size();
    for (std::size_t i = 0; i < total; ++i) {
        const auto same = std::count(accounts.begin(), accounts.end(), accounts[i]);
        const std::string place =
            "statement " + std::to_string(i + 1) + " of " + std::to_string(total);
        if (accounts[i].empty())
            labels.push_back(place);
        else if (same == 1)
            labels.push_back(accounts[i]);
        else
            labels.push_back(accounts[i] + ", " + place);
    }
    return labels;
}

std::string partName(std::string_view fileName, std::string_view label) {
    return std::string(fileName) + " \xC2\xB7 " + std::string(label);
}

}  // namespace copperwick::StatementFiles
