#include "core/import/layout_file.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "core/model/file_output.h"
#include "core/model/record_json.h"
#include "core/model/uuid.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace json = boost::json;

namespace {

void indent(std::string& out, int depth) {
    out.append(static_cast<std::size_t>(depth) * 2, ' ');
}

// Sorted keys and one member per line keep exported files stable, so two
// exports of the same layout compare equal byte for byte.
void writePretty(std::string& out, const json::value& value, int depth) {
    if (const auto* object = value.if_object()) {
        if (object->empty()) {
            out += "{}";
            return;
        }
        std::vector<json::string_view> keys;
        keys.reserve(object->size());
        for (const auto& member : *object)
            keys.push_back(member.key());
        std::sort(keys.begin(), keys.end());
        out += "{\n";
        for (std::size_t i = 0; i < keys.size(); ++i) {
            indent(out, depth + 1);
            out += json::serialize(keys[i]);
            out += " : ";
            writePretty(out, object->at(keys[i]), depth + 1);
            out += i + 1 < keys.size() ? ",\n" : "\n";
        }
        indent(out, depth);
        out += '}';
    } else if (const auto* array = value.if_array()) {
        if (array->empty()) {
            out += "[]";
            return;
        }
        out += "[\n";
        for (std::size_t i = 0; i < array->size(); ++i) {
            indent(out, depth + 1);
            writePretty(out, (*array)[i], depth + 1);
            out += i + 1 < array->size() ? ",\n" : "\n";
        }
        indent(out, depth);
        out += ']';
    } else {
        out += json::serialize(value);
    }
}

// A layout that decodes but could never read a file.
bool isUsable(const ImportProfile& profile) {
    if (profile.name.empty() || profile.dateColumn.empty() || profile.descriptionColumn.empty())
        return false;
    if (!profile.amountColumn && !(profile.debitColumn && profile.creditColumn))
        return false;
    return !profile.hasHeader || !profile.requiredHeaders.empty();
}

// The system's own words for the last failure. A stream may fail without
// setting errno; then the honest answer is an input/output error.
[[noreturn]] void throwErrno() {
    throw std::runtime_error(std::generic_category().message(errno != 0 ? errno : EIO));
}

}  // namespace

std::string exportLayout(const ImportProfile& profile) {
    std::string out;
    writePretty(out, record_json::toJSON(profile), 0);
    out += '\n';
    return out;
}

ImportProfile importLayout(std::string_view bytes) {
    if (bytes.size() > kMaximumLayoutFileBytes)
        throw EntryError(EntryError::Case::unavailable);
    auto decoded = record_json::decode<ImportProfile>(bytes);
    if (!decoded)
        throw std::runtime_error(decoded.error);
    ImportProfile profile = std::move(*decoded.value);
    if (!isUsable(profile))
        throw EntryError(EntryError::Case::unavailable);
    // The whole UUID, unlike a layout taught in the form: the same file
    // imported twice must give two layouts, not replace the first.
    profile.id = "custom-" + Uuid::random().text();
    profile.isBuiltIn = false;
    return profile;
}

ImportProfile readLayoutFile(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (error)
        throw std::runtime_error(error.message());
    if (size > kMaximumLayoutFileBytes)
        throw EntryError(EntryError::Case::unavailable);
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throwErrno();
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    if (in.bad())
        throwErrno();
    return importLayout(bytes);
}

void writeLayoutFile(const std::filesystem::path& file, const ImportProfile& profile) {
    // A layout holds column names, never money, and is meant to be shared.
    if (const auto problem = saveFile(file, exportLayout(profile), FileAccess::everyone))
        throw std::runtime_error(*problem);
}

std::string suggestedLayoutFileName(const ImportProfile& profile) {
    return profile.name + ".json";
}

std::string importRefusal(const std::exception& error) {
    return std::string("Could not import that saved layout: ") + error.what();
}

std::string importedLayoutMessage(const ImportProfile& profile) {
    return "Imported the layout \u201C" + profile.name + "\u201D.";
}

std::string savedLayoutMessage(const std::filesystem::path& file) {
    return "Saved " + file.filename().string() + ".";
}

std::string layoutSaveFailure(const std::exception& error) {
    return std::string("Couldn't save the file: ") + error.what();
}

}  // namespace copperwick
