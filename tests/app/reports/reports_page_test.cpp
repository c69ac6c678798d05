#include <algorithm>
#include <fstream>
#include <sstream>

#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QTest>

#include "core/model/money.h"
#include "core/reports/csv_export.h"
#include "core/reports/figure_drill_downs.h"
#include "tests/app/reports/reports_fixture.h"
#include "tests/app/screen_audit.h"
#include "tests/support/run_command.h"

namespace copperwick::app::testing {

using copperwick::testing::waitUntil;

namespace {

QString usd(int64_t cents, bool plus = false) {
    return QString::fromStdString(Money::format(cents, "USD", false, plus));
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// The filter the command line's `report` makes for a named period and
// nobody chosen, which the screen's untouched choices must equal.
ReportFilter commandLineFilter(const Ledger& ledger, PeriodChoice choice, LocalDate today) {
    return ReportFilter(span(choice, ledger, today, today, today), {}, {},
                        ledger.settings->reportCurrency, std::nullopt, false, false,
                        PeopleMode::assigned);
}

// `copperwick report --json` on the workspace's data folder.
QJsonObject reportJSON(const std::filesystem::path& dataFolder, std::vector<std::string> options) {
    std::vector<std::string> arguments{"--data-dir", dataFolder.string(), "--json", "report"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto result = copperwick::testing::runCommand(arguments);
    EXPECT_EQ(result.code, 0) << result.err;
    return QJsonDocument::fromJson(QByteArray::fromStdString(result.out)).object();
}

QString usdOf(const QJsonValue& cents) {
    return usd(cents.toInteger());
}

// Every figure the screen shows of `json`'s report, to the cent.
void expectFiguresOf(ReportsPage& page, const QJsonObject& json) {
    const QJsonObject report = json[QStringLiteral("report")].toObject();
    page.setTab(ReportTab::overview);
    EXPECT_EQ(page.tile(QStringLiteral("Spending"))->figure(),
              usdOf(report[QStringLiteral("spending")]));
    EXPECT_EQ(page.tile(QStringLiteral("Net cash flow"))->figure(),
              usdOf(report[QStringLiteral("savings")]));
    EXPECT_EQ(page.tile(QStringLiteral("Income"))->figure(),
              usd(report[QStringLiteral("income")].toInteger() -
                  report[QStringLiteral("giftsReceived")].toInteger()));
    page.setTab(ReportTab::categories);
    const QJsonArray changes =
        json[QStringLiteral("comparison")][QStringLiteral("categoryChanges")].toArray();
    const auto categoryRows = page.rows();
    ASSERT_EQ(categoryRows.size(), static_cast<std::size_t>(changes.size()));
    for (qsizetype i = 0; i < changes.size(); ++i) {
        const QJsonObject line = changes[i].toObject();
        const auto cells = categoryRows[static_cast<std::size_t>(i)]->cells();
        EXPECT_EQ(cells[0], line[QStringLiteral("name")].toString());
        EXPECT_EQ(cells[1], usdOf(line[QStringLiteral("current")]));
        EXPECT_EQ(cells[2], usdOf(line[QStringLiteral("previous")]));
    }
    page.setTab(ReportTab::merchants);
    const QJsonArray merchants = report[QStringLiteral("topMerchants")].toArray();
    const auto merchantRows = page.rows();
    ASSERT_EQ(merchantRows.size(), static_cast<std::size_t>(merchants.size()));
    for (qsizetype i = 0; i < merchants.size(); ++i) {
        const QJsonObject line = merchants[i].toObject();
        const auto cells = merchantRows[static_cast<std::size_t>(i)]->cells();
        EXPECT_EQ(cells[0], line[QStringLiteral("name")].toString());
        EXPECT_EQ(cells[1], usdOf(line[QStringLiteral("amount")]));
    }
    page.setTab(ReportTab::income);
    const QJsonArray sources = report[QStringLiteral("incomeSources")].toArray();
    const auto incomeRows = page.rows();
    if (sources.isEmpty()) {
        EXPECT_TRUE(incomeRows.empty());
        return;
    }
    // The sources, then their total.
    ASSERT_EQ(incomeRows.size(), static_cast<std::size_t>(sources.size()) + 1);
    for (qsizetype i = 0; i < sources.size(); ++i)
        EXPECT_EQ(incomeRows[static_cast<std::size_t>(i)]->cells()[1],
                  usdOf(sources[i].toObject()[QStringLiteral("amount")]));
    EXPECT_EQ(incomeRows.back()->cells()[1], usdOf(report[QStringLiteral("income")]));
}

}  // namespace

// The screen shows what `copperwick report --json` says for the same
// choices: the whole household over three months, and one person with
// shared spending over the year.
TEST_F(ReportsScreenTest, FiguresMatchTheCommandLinesJSON) {
    fillHousehold();
    const auto folder = m_workspace.temp / "Copperwick";
    choosePeriod(PeriodChoice::last3Months);
    expectFiguresOf(page(), reportJSON(folder, {"--period", "last3Months"}));

    choosePeriod(PeriodChoice::last12Months);
    PeopleScope benAndShared;
    benAndShared.personIDs = {ben};
    benAndShared.wholeHousehold = false;
    benAndShared.includeShared = true;
    page().setPeople(benAndShared);
    const QJsonObject json =
        reportJSON(folder, {"--period", "last12Months", "--people", "Ben", "--include-shared"});
    EXPECT_EQ(json[QStringLiteral("report")][QStringLiteral("scopeLabel")].toString(),
              page().peoplePicker()->button()->text());
    expectFiguresOf(page(), json);
}

// The tiles and rows show the report's own figures, to the cent, for the
// whole household and for one person with shared spending.
TEST_F(ReportsScreenTest, FiguresAreTheReportsOwn) {
    fillHousehold();
    choosePeriod(PeriodChoice::last3Months);
    ASSERT_TRUE(page().shown());
    const ReportFilter household =
        commandLineFilter(ledger(), PeriodChoice::last3Months, runtime().today());
    EXPECT_EQ(page().filter(), household);
    const Report expected = runtime().buildReportBundle(household).report();
    EXPECT_EQ(page().tile("Income")->figure(), usd(expected.incomeWithoutGifts()));
    EXPECT_EQ(page().tile("Spending")->figure(), usd(expected.spending));
    EXPECT_EQ(page().tile("Net cash flow")->figure(), usd(expected.savings()));
    EXPECT_EQ(page().tile("Income")->caption(), QStringLiteral("1 sources"));
    EXPECT_EQ(expected.spending, 3 * (4550 + 1599) + 12445 + 12545 + 12645 - 2000);

    page().setTab(ReportTab::merchants);
    const auto merchantRows = page().rows();
    ASSERT_EQ(merchantRows.size(), expected.topMerchants.size());
    for (std::size_t i = 0; i < merchantRows.size(); ++i) {
        EXPECT_EQ(merchantRows[i]->cells()[0],
                  QString::fromStdString(expected.topMerchants[i].name));
        EXPECT_EQ(merchantRows[i]->cells()[1], usd(expected.topMerchants[i].amount));
    }

    PeopleScope benAndShared;
    benAndShared.personIDs = {ben};
    benAndShared.wholeHousehold = false;
    benAndShared.includeShared = true;
    page().setPeople(benAndShared);
    const ReportFilter person(household.span, {ben}, {}, "USD", false, true, false,
                              PeopleMode::assigned);
    EXPECT_EQ(page().filter(), person);
    const ReportBundle bundle = runtime().buildReportBundle(person);
    EXPECT_EQ(page().shown()->report().spending, bundle.report().spending);
    page().setTab(ReportTab::categories);
    const auto categoryRows = page().rows();
    ASSERT_EQ(categoryRows.size(), bundle.comparison.categoryChanges.size());
    for (std::size_t i = 0; i < categoryRows.size(); ++i) {
        const CategoryChange& line = bundle.comparison.categoryChanges[i];
        EXPECT_EQ(categoryRows[i]->cells()[1], usd(line.current)) << line.name;
        EXPECT_EQ(categoryRows[i]->cells()[2], usd(line.previous)) << line.name;
    }
    page().setTab(ReportTab::overview);
    EXPECT_EQ(page().tile("Spending")->figure(), usd(bundle.report().spending));
    EXPECT_EQ(page().peoplePicker()->button()->text(), QStringLiteral("Ben + Shared household"));
    // Ben's scope is short of the household: its context shows.
    EXPECT_TRUE(page().tabTexts().contains(QStringLiteral("Household context")));
}

// A drill-down comes to exactly its tile, and Open in Transactions shows
// exactly its lines.
TEST_F(ReportsScreenTest, DrillDownComesToItsTile) {
    fillHousehold();
    choosePeriod(PeriodChoice::last3Months);
    const Report& report = page().shown()->report();
    page().tile("Spending")->click();
    DrillDownSheet* sheet = page().drillDownSheet();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(-sheet->net(), report.spending);
    EXPECT_EQ(sheet->countLabel()->text(), QString::number(sheet->drillDown().ids.size()) +
                                               QStringLiteral(" transactions \u00B7 net ") +
                                               usd(-report.spending));
    EXPECT_EQ(sheet->table()->model()->rowCount(), static_cast<int>(sheet->drillDown().ids.size()));
    const std::set<Uuid> ids(sheet->drillDown().ids.begin(), sheet->drillDown().ids.end());
    QTest::keyClick(sheet, Qt::Key_Return);
    ASSERT_TRUE(runtime().transactionsFocus());
    EXPECT_EQ(runtime().transactionsFocus()->ids, ids);
    EXPECT_EQ(runtime().transactionsFocus()->title, "Spending");
    EXPECT_EQ(runtime().section(), AppSection::transactions);

    page().tile("Income")->click();
    ASSERT_TRUE(page().drillDownSheet());
    EXPECT_EQ(page().drillDownSheet()->net(), report.incomeWithoutGifts());
    page().drillDownSheet()->reject();
    page().tile("Net cash flow")->click();
    EXPECT_EQ(page().drillDownSheet()->net(), report.savings());
    page().drillDownSheet()->reject();

    // A month of the trend comes to that month's net.
    page().setTab(ReportTab::trends);
    const MonthLine& last = page().shown()->trend.months.back();
    page().rows().back()->click();
    EXPECT_EQ(page().drillDownSheet()->net(), last.net());
}

// A category's transactions summed whole lines, so a line split between
// Groceries and Shopping counted in full under each and the drill-down's net
// didn't match the figure on the category's row.
TEST_F(ReportsScreenTest, CategoryDrillDownCountsASplitLineByItsPart) {
    fillHousehold();
    const Uuid split = addLine(checking, runtime().today().firstOfMonth().addingDays(5), -10000,
                               "BIG BOX STORE", TransactionKind::expense);
    change([&](Ledger& copy, LedgerDelta& delta) {
        LedgerTransaction line = *copy.transaction(split);
        line.splits = std::vector<TransactionSplit>{
            {.id = Uuid::random(), .categoryID = categoryID("Groceries"), .amount = -6500},
            {.id = Uuid::random(), .categoryID = categoryID("Shopping"), .amount = -3500}};
        copy.transactions.set(line.id, line);
        delta.change(RecordKind::transaction, line.id);
    });
    choosePeriod(PeriodChoice::thisMonth);
    const Report& report = page().shown()->report();
    for (const std::string name : {"Groceries", "Shopping"}) {
        SCOPED_TRACE(name);
        const auto line = std::find_if(report.categories.begin(), report.categories.end(),
                                       [&](const CategoryLine& c) { return c.name == name; });
        ASSERT_NE(line, report.categories.end());
        // From the Overview's row and from the Categories tab's, by keyboard.
        for (const ReportTab tab : {ReportTab::overview, ReportTab::categories}) {
            page().setTab(tab);
            const auto rows = page().rows();
            const auto row = std::find_if(rows.begin(), rows.end(), [&](FigureRow* r) {
                return r->cells()[0] == QString::fromStdString(name);
            });
            ASSERT_NE(row, rows.end());
            EXPECT_EQ((*row)->cells()[1], usd(line->amount));
            (*row)->setFocus();
            QTest::keyClick(*row, Qt::Key_Return);
            DrillDownSheet* sheet = page().drillDownSheet();
            ASSERT_TRUE(sheet);
            EXPECT_EQ(-sheet->net(), line->amount);
            EXPECT_TRUE(sheet->countLabel()->text().endsWith(usd(-line->amount)));
            sheet->reject();
            ASSERT_TRUE(waitUntil([&] { return !page().drillDownSheet(); }));
        }
    }
    EXPECT_EQ(FigureDrillDowns::categoryNet({split}, ledger(), categoryID("Shopping")), -3500);
}

// Gifts received are told apart from income: the Income tile and its
// transactions leave them out, and their own tile has them.
TEST_F(ReportsScreenTest, GiftsHaveTheirOwnTile) {
    fillHousehold();
    Uuid giftsID;
    change([&](Ledger& copy, LedgerDelta& delta) {
        LedgerCategory gifts{.id = Uuid::random(),
                             .name = "Gifts received",
                             .group = CategoryGroup::income,
                             .colorIndex = 4};
        giftsID = gifts.id;
        copy.categories.push_back(gifts);
        delta.change(RecordKind::category, gifts.id);
    });
    addLine(checking, runtime().today().firstOfMonth(), 5000, "ZELLE FROM GRANDMA",
            TransactionKind::income, "Gifts received");
    choosePeriod(PeriodChoice::thisMonth);
    const Report& report = page().shown()->report();
    ASSERT_EQ(report.giftsReceived, 5000);
    page().tile("Income")->click();
    EXPECT_EQ(page().drillDownSheet()->net(), 250000);
    page().drillDownSheet()->reject();
    page().tile("Gifts received")->click();
    EXPECT_EQ(page().drillDownSheet()->net(), 5000);
    EXPECT_EQ(page().tile("Gifts received")->caption(), QStringLiteral("Counted in net cash flow"));
}

// A change of period builds anew, a save builds anew, and asking again
// with nothing changed builds nothing.
TEST_F(ReportsScreenTest, BuildsOncePerInputs) {
    fillHousehold();
    page();
    const int first = page().buildCount();
    choosePeriod(PeriodChoice::lastMonth);
    EXPECT_EQ(page().buildCount(), first + 1);
    // The same period chosen again, and the tabs walked: nothing to build.
    choosePeriod(PeriodChoice::lastMonth);
    page().setTab(ReportTab::trends);
    page().setTab(ReportTab::overview);
    EXPECT_EQ(page().buildCount(), first + 1);

    const int64_t before = page().shown()->report().spending;
    addLine(checking, runtime().today().firstOfMonth().addingMonths(-1), -1000, "HARDWARE STORE",
            TransactionKind::expense, "Shopping");
    EXPECT_EQ(page().buildCount(), first + 2);
    EXPECT_EQ(page().shown()->report().spending, before + 1000);
    EXPECT_EQ(page().tile("Spending")->figure(), usd(before + 1000));
}

// On a long ledger the build runs beside the window, the figures shown
// stay until it is back, and of two quick choices the later one wins.
TEST_F(ReportsScreenTest, NewestBuildWinsInTheBackground) {
    fillHousehold();
    page().setBuildInBackgroundFrom(0);
    choosePeriod(PeriodChoice::lastMonth);
    choosePeriod(PeriodChoice::last12Months);
    EXPECT_TRUE(page().isBuilding());
    ASSERT_TRUE(waitUntil([&] { return !page().isBuilding(); }));
    EXPECT_EQ(page().shown()->report().filter.span,
              span(PeriodChoice::last12Months, ledger(), runtime().today(), runtime().today(),
                   runtime().today()));
}

// Budgets count each month a period touches, and say so.
TEST_F(ReportsScreenTest, BudgetsSayHowTheyAreMultiplied) {
    fillHousehold();
    change([&](Ledger& copy, LedgerDelta& delta) {
        delta.merge(setBudget(copy, categoryID("Dining"), 20000));
    });
    page().setTab(ReportTab::budgets);
    choosePeriod(PeriodChoice::last3Months);
    EXPECT_TRUE(page().tabTexts().contains(QStringLiteral(
        "Budgets are monthly; this period covers 3 months, so each budget is multiplied by 3.")));
    const auto rows = page().rows();
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0]->cells()[0], QStringLiteral("Dining"));
    EXPECT_EQ(rows[0]->cells()[1],
              QString::fromStdString(page().shown()->bundle.budgets[0].summary()));
    EXPECT_EQ(page().shown()->bundle.budgets[0].budgeted, 60000);

    choosePeriod(PeriodChoice::lastMonth);
    for (const QString& text : page().tabTexts())
        EXPECT_FALSE(text.startsWith(QStringLiteral("Budgets are monthly"))) << text.toStdString();

    choosePeriod(PeriodChoice::custom);
    const LocalDate today = runtime().today();
    page().fromDate()->setDate(QDate(today.year, today.month, 1).addMonths(-2).addDays(9));
    page().toDate()->setDate(QDate(today.year, today.month, 1).addDays(-5));
    EXPECT_TRUE(page().tabTexts().contains(QStringLiteral(
        "This period doesn't cover whole months, so budgets count each month it touches in "
        "full.")));

    PeopleScope ana_;
    ana_.personIDs = {ana};
    page().setPeople(ana_);
    EXPECT_TRUE(page().tabTexts().contains(QStringLiteral("Household category budgets")));
}

// A ledger with nothing in it reads as empty, tab by tab, never as an error.
TEST_F(ReportsScreenTest, EmptyLedgerShowsEmptyTexts) {
    page();
    ASSERT_TRUE(page().shown());
    const auto has = [&](ReportTab tab, const QString& text) {
        page().setTab(tab);
        EXPECT_TRUE(page().tabTexts().contains(text)) << text.toStdString();
    };
    has(ReportTab::overview, QStringLiteral("Choose another period or import a bank file."));
    has(ReportTab::overview, QStringLiteral("No earlier period to compare"));
    has(ReportTab::overview, QStringLiteral("No income recorded"));
    has(ReportTab::merchants, QStringLiteral("No spending in this period."));
    has(ReportTab::income,
        QStringLiteral("No income in this period. Paychecks are recognized automatically; other "
                       "deposits wait in Review until you say what they are."));
    has(ReportTab::budgets, QStringLiteral("No budgets yet. Set monthly amounts below."));
    has(ReportTab::recurring,
        QStringLiteral("None found yet. A charge counts as recurring after at least three "
                       "similar charges on a regular schedule."));
    has(ReportTab::recurring,
        QStringLiteral("Nothing stands out: no charge was at least three times its merchant's "
                       "usual amount, and no first-time charge was over $200."));
    EXPECT_FALSE(runtime().errorMessage());
}

// The exports write core's CSV and say so; a folder that isn't there is
// told as a failure, and nothing is written.
TEST_F(ReportsScreenTest, ExportsSaveOrSayWhyNot) {
    fillHousehold();
    choosePeriod(PeriodChoice::last3Months);
    QString offered;
    const auto target = m_workspace.temp / "summary.csv";
    page().setFileChooser([&](const QString&, const QString& name) {
        offered = name;
        return QString::fromStdString(target.string());
    });
    page().exportSummary();
    EXPECT_EQ(runtime().statusMessage(), std::optional<std::string>("Saved summary.csv"));
    const ReportBundle& bundle = page().shown()->bundle;
    EXPECT_EQ(readFile(target), CSVExport::reportSummary(bundle.report(), bundle.payments));

    page().exportTransactions();
    EXPECT_TRUE(offered.endsWith(QStringLiteral(" transactions.csv"))) << offered.toStdString();
    EXPECT_EQ(readFile(target), CSVExport::transactions(bundle.report().includedIDs, ledger()));

    const auto nowhere = m_workspace.temp / "missing" / "report.csv";
    page().setFileChooser(
        [&](const QString&, const QString&) { return QString::fromStdString(nowhere.string()); });
    page().exportSummary();
    ASSERT_TRUE(runtime().errorMessage());
    EXPECT_TRUE(runtime().errorMessage()->starts_with("Couldn't save the file: "))
        << *runtime().errorMessage();
    EXPECT_FALSE(std::filesystem::exists(nowhere));

    // Cancelling the dialog says nothing.
    runtime().setStatusMessage(std::nullopt);
    page().setFileChooser([](const QString&, const QString&) { return QString(); });
    page().exportTransactions();
    EXPECT_FALSE(runtime().statusMessage());
}

// The keyboard walks the tabs with the arrows and opens a figure with Space.
TEST_F(ReportsScreenTest, KeyboardRoadThroughTheTabs) {
    fillHousehold();
    choosePeriod(PeriodChoice::last3Months);
    page().tabBar()->setFocus();
    for (ReportTab expected : {ReportTab::categories, ReportTab::merchants, ReportTab::trends,
                               ReportTab::income, ReportTab::budgets, ReportTab::recurring}) {
        QTest::keyClick(page().tabBar(), Qt::Key_Right);
        EXPECT_EQ(page().tab(), expected);
    }
    page().setTab(ReportTab::merchants);
    page().tabBar()->setFocus();
    QTest::keyClick(page().tabBar(), Qt::Key_Tab);
    FigureRow* first = page().rows().front();
    EXPECT_EQ(QApplication::focusWidget(), first)
        << QApplication::focusWidget()->metaObject()->className() << " "
        << QApplication::focusWidget()->accessibleName().toStdString();
    QTest::keyClick(first, Qt::Key_Space);
    ASSERT_TRUE(page().drillDownSheet());
    EXPECT_EQ(page().drillDownSheet()->drillDown().title,
              page().shown()->report().topMerchants.front().name);
    QTest::keyClick(page().drillDownSheet(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return !page().drillDownSheet(); }));
    EXPECT_FALSE(runtime().transactionsFocus());
}

// A note's answer is stored and the note goes; the screen is named and
// laid out whole.
TEST_F(ReportsScreenTest, NotesAnswerAndScreenAudit) {
    fillHousehold();
    choosePeriod(PeriodChoice::thisMonth);
    const auto& notes = page().shown()->report().notes;
    const bool partial = std::any_of(notes.begin(), notes.end(),
                                     [](const DataNote& note) { return note.id == "partial"; });
    if (partial) {
        auto* dismiss = [&]() -> QPushButton* {
            for (auto* button : page().notesCard()->findChildren<QPushButton*>()) {
                if (button->text() == QStringLiteral("Dismiss") && button->isVisible())
                    return button;
            }
            return nullptr;
        }();
        ASSERT_TRUE(dismiss);
        dismiss->click();
        ASSERT_TRUE(waitUntil([&] {
            const auto& now = page().shown()->report().notes;
            return std::none_of(now.begin(), now.end(),
                                [](const DataNote& note) { return note.id == "partial"; });
        }));
        EXPECT_FALSE(ledger().settings->dismissedNotes.empty());
    }
    for (ReportTab tab : kReportTabs) {
        page().setTab(tab);
        EXPECT_EQ(copperwick::testing::misnamedControls(&page()), QStringList())
            << tabLabel(tab).toStdString();
    }
    page().resize(1000, 700);
    page().setTab(ReportTab::overview);
    QTest::qWait(20);
    EXPECT_EQ(copperwick::testing::layoutFaults(&page()), QStringList());
}

}  // namespace copperwick::app::testing

namespace copperwick::app::testing {

// A budget typed in its row is kept as an amount, and a word is refused in
// the budget's own words; the savings goal likewise.
TEST_F(ReportsScreenTest, BudgetsAndTheGoalAreTypedInTheBudgetsTab) {
    fillHousehold();
    choosePeriod(PeriodChoice::lastMonth);
    page().setTab(ReportTab::budgets);
    const auto fieldFor = [&](const QString& name) -> QLineEdit* {
        for (auto* field : page().tabContent()->findChildren<QLineEdit*>()) {
            if (field->accessibleName() == name && field->isVisible())
                return field;
        }
        return nullptr;
    };
    QLineEdit* dining = fieldFor(QStringLiteral("Dining"));
    ASSERT_TRUE(dining);
    dining->setFocus();
    QTest::keyClicks(dining, QStringLiteral("abc"));
    QTest::keyClick(dining, Qt::Key_Return);
    EXPECT_EQ(runtime().errorMessage(),
              std::optional<std::string>(
                  "\u201Cabc\u201D isn't an amount. Use a number like 250 or 250.00."));
    EXPECT_FALSE(monthlyBudget(ledger(), categoryID("Dining")));

    dining = fieldFor(QStringLiteral("Dining"));
    dining->clear();
    QTest::keyClicks(dining, QStringLiteral("250"));
    QTest::keyClick(dining, Qt::Key_Return);
    EXPECT_EQ(monthlyBudget(ledger(), categoryID("Dining")), 25000);
    EXPECT_EQ(fieldFor(QStringLiteral("Dining"))->text(), QStringLiteral("250.00"));
    ASSERT_EQ(page().rows().size(), 1U);
    EXPECT_EQ(page().rows()[0]->cells()[1],
              QString::fromStdString(page().shown()->bundle.budgets[0].summary()));

    runtime().setErrorMessage(std::nullopt);
    QLineEdit* goal = fieldFor(QStringLiteral("Optional monthly amount"));
    ASSERT_TRUE(goal);
    QTest::keyClicks(goal, QStringLiteral("900000000.01"));
    QTest::keyClick(goal, Qt::Key_Return);
    EXPECT_EQ(runtime().errorMessage(),
              std::optional<std::string>("Enter a positive monthly goal, or leave it empty."));
    EXPECT_FALSE(ledger().settings->monthlySavingsGoal);
    goal = fieldFor(QStringLiteral("Optional monthly amount"));
    goal->clear();
    QTest::keyClicks(goal, QStringLiteral("500"));
    QTest::keyClick(goal, Qt::Key_Return);
    EXPECT_EQ(ledger().settings->monthlySavingsGoal, 50000);
    // A whole month of the whole household in the goal's currency: the card shows.
    page().setTab(ReportTab::overview);
    ASSERT_TRUE(page().shown()->bundle.savingsGoal);
    EXPECT_TRUE(page().tabTexts().contains(
        QString::fromStdString(page().shown()->bundle.savingsGoal->title())));
}

}  // namespace copperwick::app::testing
