#include "core/model/amount_limits.h"

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {
namespace {

constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();

LedgerTransaction line(int64_t amount) {
    return LedgerTransaction{.id = Uuid::random(),
                             .accountID = Uuid::random(),
                             .date = *LocalDate::make(2026, 3, 9),
                             .amount = amount,
                             .rawDescription = "CORNER SHOP",
                             .fingerprint = "f"};
}

// The running sum is kept by differences for a small change and counted
// afresh for a large one; either way it must be the sum a whole count gives,
// up to the ceiling where it stops.
TEST(AmountLimits, AChangeOfAnySizeLeavesTheSumAWholeCountGives) {
    std::mt19937_64 random(20261125);
    const std::vector<int64_t> extremes{kMost, kLeast, kLeast + 1, kMost / 2, -(kMost / 3)};
    const auto amount = [&] {
        if (random() % 50 == 0)
            return extremes[random() % extremes.size()];
        return static_cast<int64_t>(random() % 2'000'000) - 1'000'000;
    };
    for (int round = 0; round < 200; ++round) {
        Ledger old;
        std::vector<Uuid> ids;
        const auto lines = 1 + random() % 60;
        for (std::size_t i = 0; i < lines; ++i) {
            const auto t = line(amount());
            ids.push_back(t.id);
            old.transactions.set(t.id, t);
        }
        Ledger updated = old;
        LedgerDelta delta;
        // From one line to several times the ledger's size.
        const auto changes = 1 + random() % (3 * lines);
        for (std::size_t i = 0; i < changes; ++i) {
            switch (random() % 3) {
                case 0: {
                    const auto t = line(amount());
                    updated.transactions.set(t.id, t);
                    delta.change(RecordKind::transaction, t.id);
                    break;
                }
                case 1: {
                    const Uuid id = ids[random() % ids.size()];
                    if (updated.transactions.update(
                            id, [&](LedgerTransaction& t) { t.amount = amount(); }))
                        delta.change(RecordKind::transaction, id);
                    break;
                }
                default: {
                    const Uuid id = ids[random() % ids.size()];
                    if (updated.transactions.erase(id))
                        delta.remove(RecordKind::transaction, id);
                    break;
                }
            }
        }
        const int64_t before = amount_limits::magnitude(old);
        EXPECT_EQ(amount_limits::magnitudeAfter(before, old, updated, delta),
                  amount_limits::magnitude(updated))
            << "round " << round << ", " << lines << " lines, " << changes << " changes";
    }
}

}  // namespace
}  // namespace copperwick
