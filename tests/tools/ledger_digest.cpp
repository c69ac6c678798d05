// Describes the ledger in a data folder as text that two runs of the same
// commands share, whatever ids and clocks they drew: the crash and
// concurrency tests compare states by it.
//
//   ledger_digest DATA_FOLDER
//
// Prints the digest and exits 0; prints why and exits 3 when the data file
// fails SQLite's check or can't be opened.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "core/model/enum_text.h"
#include "core/store/ledger_store.h"

namespace {

using namespace copperwick;

template <typename T>
std::string orNone(const T* record) {
    return record ? record->name : std::string("-");
}

std::vector<std::string> sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string digest(const Ledger& ledger) {
    std::string out;
    const auto section = [&out](std::string_view title, const std::vector<std::string>& lines) {
        out += fmt::format("{} ({})\n", title, lines.size());
        for (const auto& line : lines)
            out += "  " + line + "\n";
    };
    std::vector<std::string> lines;
    for (const auto& person : ledger.people)
        lines.push_back(person.name);
    section("people", sorted(std::move(lines)));
    lines = {};
    for (const auto& account : ledger.accounts)
        lines.push_back(fmt::format("{} {}", account.name, rawValue(account.type)));
    section("accounts", sorted(std::move(lines)));
    lines = {};
    for (const auto& category : ledger.categories)
        lines.push_back(fmt::format("{} {}", rawValue(category.group), category.name));
    section("categories", sorted(std::move(lines)));
    lines = {};
    for (const auto& merchant : ledger.merchants)
        lines.push_back(
            fmt::format("{} -> {}", merchant.name, orNone(ledger.category(merchant.categoryID))));
    section("merchants", sorted(std::move(lines)));
    lines = {};
    for (const auto& rule : ledger.rules)
        lines.push_back(
            fmt::format("{} -> {}", rule.pattern, orNone(ledger.category(rule.categoryID))));
    section("rules", sorted(std::move(lines)));
    lines = {};
    for (const auto& t : ledger.transactions) {
        lines.push_back(fmt::format(
            "{} {} {} | {} {} {} {}{}{}{} | {} | {}", t.date.iso(), t.amount, t.rawDescription,
            orNone(ledger.account(t.accountID)), rawValue(t.kind),
            orNone(ledger.category(t.categoryID)), rawValue(t.review), t.voided ? " voided" : "",
            t.supersededBy ? " superseded" : "", t.transferPairID ? " paired" : "",
            orNone(ledger.merchant(t.merchantID)), t.note));
    }
    section("transactions", sorted(std::move(lines)));
    lines = {};
    for (const auto& batch : ledger.batches)
        lines.push_back(batch.fileName);
    section("imports", sorted(std::move(lines)));
    lines = {};
    // In the order undo takes them back.
    for (const auto& change : ledger.changes)
        lines.push_back(change.label);
    section("changes", lines);
    out += fmt::format("budgets {}\nlayouts {}\nfilings {}\n", ledger.budgets.size(),
                       ledger.profiles.size(), ledger.aiFilings.size());
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const std::filesystem::path file = std::filesystem::path(argv[1]) / "Copperwick.sqlite";
    try {
        // Opened to write first, as any command opens it: a journal that a
        // killed save left behind is rolled back then, and a read-only check
        // before that would call the file damaged.
        LedgerStore store(file);
        const Ledger ledger = store.load();
        if (!LedgerStore::verify(file)) {
            std::printf("DAMAGED: %s fails the check\n", file.c_str());
            return 3;
        }
        if (store.unreadableRecords() > 0)
            std::printf("unreadable %d\n", store.unreadableRecords());
        std::fputs(digest(ledger).c_str(), stdout);
    } catch (const std::exception& error) {
        std::printf("UNOPENABLE: %s\n", error.what());
        return 3;
    }
    return 0;
}
