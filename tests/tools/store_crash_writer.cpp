// Saves large deltas to a data file in a loop until it is killed.
//
//   store_crash_writer FILE
//
// Every transaction of the file gets the next round number as its note, in
// one delta per round; after each save returns, the round is printed on its
// own line. The crash-safety test kills this process at random moments and
// checks that the file holds one whole round, never a mix.

#include <cstdio>
#include <string>

#include "core/store/ledger_store.h"

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    copperwick::LedgerStore store(argv[1]);
    copperwick::Ledger ledger = store.load();
    long round = 0;
    if (!ledger.transactions.empty())
        round = std::stol(ledger.transactions.begin()->note);
    for (;;) {
        ++round;
        copperwick::LedgerDelta delta;
        const std::string note = std::to_string(round);
        std::vector<copperwick::Uuid> ids;
        for (const auto& t : ledger.transactions)
            ids.push_back(t.id);
        for (const auto& id : ids) {
            ledger.transactions.update(id,
                                       [&](copperwick::LedgerTransaction& t) { t.note = note; });
            delta.change(copperwick::RecordKind::transaction, id);
        }
        store.save(delta, ledger);
        std::printf("%ld\n", round);
        std::fflush(stdout);
    }
}
