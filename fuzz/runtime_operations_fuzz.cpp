// Random sequences of changes through the runtime, on a real data file:
// entries with any amount and any bytes for text, filings, notes, removals,
// rules with any pattern, people, undo. After every step the file, read
// afresh, holds exactly the live ledger; and a step followed by undo gives
// back the transactions, merchants and filings it found.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/money.h"
#include "core/model/uuid.h"
#include "core/operations/classification.h"
#include "core/operations/manual_entry.h"
#include "core/operations/record_maintenance.h"
#include "core/operations/rules.h"
#include "core/operations/upsert_account.h"
#include "core/store/ledger_store.h"
#include "runtime/ledger_runtime.h"

namespace {

using namespace copperwick;

class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    [[nodiscard]] bool empty() const { return m_at >= m_size; }
    uint8_t byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    // Small values mostly, the edges of what an amount may be sometimes.
    int64_t amount() {
        switch (byte() % 6) {
            case 0:
                return -Money::kLargestAmount;
            case 1:
                return Money::kLargestAmount;
            case 2:
                return 0;
            default: {
                int64_t value = 0;
                for (int i = 0; i < 4; ++i)
                    value = value * 256 + byte();
                return (byte() & 1) ? -value : value;
            }
        }
    }
    // Any bytes, valid UTF-8 or not.
    std::string text() {
        std::string text;
        for (uint8_t length = byte() % 12; length > 0 && !empty(); --length)
            text += static_cast<char>(byte());
        return text;
    }
    template <typename T>
    const T* pick(const std::vector<T>& items) {
        return items.empty() ? nullptr : &items[byte() % items.size()];
    }

  private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

template <typename T>
std::vector<T> byID(const SharedVector<T>& records) {
    auto items = records.toVector();
    std::sort(items.begin(), items.end(),
              [](const T& a, const T& b) { return a.id.text() < b.id.text(); });
    return items;
}

// The file keeps no order of its own for some arrays; compare what they hold.
bool sameRecords(const Ledger& a, const Ledger& b) {
    return byID(a.people) == byID(b.people) && byID(a.accounts) == byID(b.accounts) &&
           byID(a.categories) == byID(b.categories) && byID(a.rules) == byID(b.rules) &&
           byID(a.batches) == byID(b.batches) && byID(a.budgets) == byID(b.budgets) &&
           byID(a.changes) == byID(b.changes) && a.profiles == b.profiles &&
           a.merchants == b.merchants && a.transactions == b.transactions &&
           a.aiFilings == b.aiFilings && *a.settings == *b.settings;
}

std::vector<Uuid> transactionIDs(const Ledger& ledger) {
    std::vector<Uuid> ids;
    for (const auto& transaction : ledger.transactions)
        ids.push_back(transaction.id);
    return ids;
}

std::filesystem::path scratchFolder() {
    const std::filesystem::path memory = "/dev/shm";
    std::error_code error;
    const auto base = std::filesystem::is_directory(memory, error)
                          ? memory
                          : std::filesystem::temp_directory_path();
    return base / ("copperwick-fuzz-" + Uuid::random().text());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Bytes bytes(data, size);
    const auto folder = scratchFolder();
    {
        RuntimeOptions options;
        options.dataFolder = folder / "data";
        options.preferencesFolder = folder / "config";
        double clock = 1'700'000'000;
        options.clock = [&clock] { return Instant{clock += 1}; };
        LedgerRuntime runtime(options);
        const Uuid account = Uuid::random();
        runtime.apply([&](Ledger& ledger) {
            return upsertAccount(ledger, Account(account, "Checking", AccountType::checking));
        });

        for (int step = 0; step < 12 && !bytes.empty(); ++step) {
            const Ledger before = runtime.ledger();
            const auto ids = transactionIDs(before);
            const auto categories = before.categories.toVector();
            const Instant now{clock};
            const std::size_t changesBefore = before.changes.size();
            switch (bytes.byte() % 8) {
                case 0: {
                    const auto* category = bytes.pick(categories);
                    ManualTransaction entry{.accountID = account,
                                            .date = *LocalDate::make(2026, 1 + bytes.byte() % 12,
                                                                     1 + bytes.byte() % 28),
                                            .amount = bytes.amount(),
                                            .description = bytes.text(),
                                            .kind = (bytes.byte() & 1) ? TransactionKind::expense
                                                                       : TransactionKind::income};
                    if (category)
                        entry.categoryID = category->id;
                    (void)runtime.commitEntry(
                        [&](Ledger& ledger) { return addManualTransaction(ledger, entry, now); });
                    break;
                }
                case 1: {
                    Classification decision;
                    for (const auto& id : ids) {
                        if (bytes.byte() & 1)
                            decision.ids.push_back(id);
                    }
                    decision.merchantName = bytes.text();
                    decision.kind = static_cast<TransactionKind>(bytes.byte() % 4);
                    if (const auto* category = bytes.pick(categories))
                        decision.categoryID = category->id;
                    decision.remember = bytes.byte() & 1;
                    decision.label = "Classify";
                    runtime.apply([&](Ledger& ledger) { return classify(ledger, decision, now); });
                    break;
                }
                case 2:
                    if (const auto* id = bytes.pick(ids)) {
                        const std::string note = bytes.text();
                        runtime.apply(
                            [&](Ledger& ledger) { return setNote(ledger, note, *id, now); });
                    }
                    break;
                case 3:
                    if (const auto* id = bytes.pick(ids)) {
                        const bool voided = bytes.byte() & 1;
                        runtime.apply([&](Ledger& ledger) {
                            return setVoided(ledger, {*id}, voided, "Remove", now);
                        });
                    }
                    break;
                case 4:
                    (void)runtime.undoLastChange();
                    break;
                case 5: {
                    const Person person{.id = Uuid::random(), .name = bytes.text()};
                    runtime.apply([&](Ledger& ledger) { return upsertPerson(ledger, person); });
                    break;
                }
                case 6: {
                    Rule rule;
                    rule.id = Uuid::random();
                    rule.name = "Rule";
                    rule.match = static_cast<TextMatch>(bytes.byte() % 4);
                    rule.pattern = bytes.text();
                    if (const auto* category = bytes.pick(categories)) {
                        rule.categoryID = category->id;
                        rule.kind = category->group == CategoryGroup::income
                                        ? TransactionKind::income
                                        : TransactionKind::expense;
                    }
                    runtime.apply(
                        [&](Ledger& ledger) { return addRule(ledger, rule, true, true); });
                    break;
                }
                default:
                    runtime.apply([](Ledger& ledger) { return rematch(ledger); });
                    break;
            }
            runtime.setErrorMessage(std::nullopt);

            // The live ledger is what the file holds.
            {
                LedgerStore reopened(runtime.dataFile());
                if (!sameRecords(reopened.load(), runtime.ledger()))
                    std::abort();
            }
            // A step that recorded itself comes back out whole.
            if (runtime.ledger().changes.size() > changesBefore && (bytes.byte() & 1)) {
                if (!runtime.undoLastChange())
                    std::abort();
                const Ledger& undone = runtime.ledger();
                if (undone.transactions != before.transactions ||
                    undone.merchants != before.merchants || undone.aiFilings != before.aiFilings ||
                    undone.changes.size() != changesBefore) {
                    std::abort();
                }
            }
        }
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return 0;
}
