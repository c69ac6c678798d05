// Saves large deltas to a data file in a loop until it is killed.
//
//   store_crash_writer FILE            every transaction gets the round's note
//   store_crash_writer FILE imports    each round imports its own lines in
//                                      place of the last round's
//
// After each save returns, the round is printed on its own line. The
// crash-safety test kills this process at random moments and checks that the
// file holds one whole round, never a mix.
//
// An import's round removes the last round's transactions and raw lines and
// adds as many new ones, enough to go straight into the file, so that kills
// land while pages are both freed and added under a rollback journal.

#include <cstdio>
#include <set>
#include <string>
#include <string_view>

#include "core/store/ledger_store.h"
#include "tests/support/imported_lines.h"

namespace {

using namespace copperwick;

constexpr std::size_t kImportedLines = LedgerStore::kDirectWriteLines + 100;

long noteOf(const Ledger& ledger) {
    return ledger.transactions.empty() ? 0 : std::stol(ledger.transactions.begin()->note);
}

void noteEveryTransaction(LedgerStore& store, Ledger& ledger, long round) {
    LedgerDelta delta;
    const std::string note = std::to_string(round);
    std::vector<Uuid> ids;
    for (const auto& t : ledger.transactions)
        ids.push_back(t.id);
    for (const auto& id : ids) {
        ledger.transactions.update(id, [&](LedgerTransaction& t) { t.note = note; });
        delta.change(RecordKind::transaction, id);
    }
    store.save(delta, ledger);
}

void importInPlaceOfTheLast(LedgerStore& store, Ledger& ledger, long round) {
    LedgerDelta delta;
    std::vector<Uuid> old;
    std::set<Uuid> batches;
    for (const auto& t : ledger.transactions) {
        old.push_back(t.id);
        if (t.batchID)
            batches.insert(*t.batchID);
    }
    delta.deletedSourceBatches.assign(batches.begin(), batches.end());
    for (const auto& id : old) {
        ledger.transactions.erase(id);
        delta.remove(RecordKind::transaction, id);
    }
    const std::string note = std::to_string(round);
    delta.merge(testing::importLines(ledger, kImportedLines, note, "round " + note));
    store.save(delta, ledger);
    // A save straight into the file leaves it counted as changed.
    ledger = store.load();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 && !(argc == 3 && std::string_view(argv[2]) == "imports"))
        return 2;
    const bool imports = argc == 3;
    LedgerStore store(argv[1]);
    store.allowDirectWrites(imports);
    Ledger ledger = store.load();
    for (long round = noteOf(ledger) + 1;; ++round) {
        if (imports)
            importInPlaceOfTheLast(store, ledger, round);
        else
            noteEveryTransaction(store, ledger, round);
        std::printf("%ld\n", round);
        std::fflush(stdout);
    }
}
