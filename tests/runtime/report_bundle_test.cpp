#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "core/reports/report_bundle.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::day;

TEST(LedgerRuntimeReports, TodayIsTheLedgersZoneAndTheBundleLeavesNoBuildCounted) {
    testing::TempFolder folder;
    // 2026-04-01 03:00 UTC is still March 31 in Los Angeles, the default zone.
    const Instant moment = Instant::fromUnixSeconds(1775012400.0);
    LedgerRuntime runtime(
        RuntimeOptions{.dataFolder = folder.path(), .clock = [moment] { return moment; }});
    ASSERT_TRUE(runtime.hasStore());
    EXPECT_EQ(runtime.today(), day(2026, 3, 31));

    const ReportFilter filter({day(2026, 3, 1), day(2026, 3, 31)}, {}, {}, "USD", std::nullopt,
                              false, false, PeopleMode::assigned);
    const ReportBundle bundle = runtime.buildReportBundle(filter);
    EXPECT_EQ(runtime.activeReportBuilds(), 0);
    EXPECT_EQ(bundle, ReportBundle::build(runtime.ledger(), filter, day(2026, 3, 31)));
    EXPECT_EQ(bundle.report().filter, filter);
}

TEST(LedgerRuntimeReports, APDFBuildIsCountedUntilItEndsHoweverItEnds) {
    testing::TempFolder folder;
    LedgerRuntime runtime(
        RuntimeOptions{.dataFolder = folder.path(), .preferencesFolder = folder / "preferences"});
    {
        std::optional<ActivityCount> building(runtime.countPDFBuild());
        EXPECT_EQ(runtime.activePDFBuilds(), 1);
        // Handed on to whatever finishes the build later, it still counts once.
        const ActivityCount handedOn(std::move(*building));
        building.reset();
        EXPECT_EQ(runtime.activePDFBuilds(), 1);
    }
    EXPECT_EQ(runtime.activePDFBuilds(), 0);
    try {
        const ActivityCount building = runtime.countPDFBuild();
        throw std::runtime_error("no room on the disk");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(runtime.activePDFBuilds(), 0) << "a failed build doesn't hold updates back";
}

}  // namespace
}  // namespace copperwick
