#include <gtest/gtest.h>

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

}  // namespace
}  // namespace copperwick
