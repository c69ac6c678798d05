#include "runtime/ledger_reading.h"

#include <memory>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

LedgerDelta addPerson(Ledger& ledger, const std::string& name) {
    const Person person{Uuid::random(), name};
    ledger.people.push_back(person);
    LedgerDelta delta;
    delta.change(RecordKind::person, person.id);
    return delta;
}

struct Fixture {
    testing::TempFolder temp;
    std::shared_ptr<PlainQueue> queue = std::make_shared<PlainQueue>();
    std::unique_ptr<LedgerRuntime> runtime =
        std::make_unique<LedgerRuntime>(RuntimeOptions{.dataFolder = temp / "Copperwick",
                                                       .preferencesFolder = temp / "config",
                                                       .mainQueue = queue});
    std::vector<std::size_t> shown;

    std::unique_ptr<LedgerReading<std::size_t>> reading() {
        return std::make_unique<LedgerReading<std::size_t>>(
            *runtime, [](const Ledger& ledger, LocalDate) { return ledger.people.size(); },
            [this](std::size_t people) { shown.push_back(people); });
    }
};

TEST(LedgerReading, ShortHistoryIsShownAtOnceLongOneWhenItsNewestReadingIsBack) {
    Fixture f;
    auto reading = f.reading();
    reading->start();
    EXPECT_EQ(f.shown, std::vector<std::size_t>{0});
    EXPECT_FALSE(reading->isReading());

    reading->setInBackgroundFrom(0);
    reading->start();
    EXPECT_TRUE(reading->isReading());
    ASSERT_TRUE(f.runtime->apply([](Ledger& l) { return addPerson(l, "Dana"); }).saved);
    reading->start();
    f.queue->runUntil([&] { return !reading->isReading(); });
    f.queue->runPending();
    // The reading of the ledger before Dana came back too, and was too old to show.
    EXPECT_EQ(f.shown, (std::vector<std::size_t>{0, 1}));
}

TEST(LedgerReading, AReadingStillOutWhenItsScreenGoesIsNeverShown) {
    Fixture f;
    auto reading = f.reading();
    reading->setInBackgroundFrom(0);
    reading->start();
    reading.reset();
    f.queue->runPending();
    EXPECT_TRUE(f.shown.empty());
}

}  // namespace
}  // namespace copperwick
