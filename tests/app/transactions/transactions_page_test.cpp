#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QTimer>

#include "app/import/account_freshness_view.h"
#include "app/review/review_group_card.h"
#include "core/operations/classification.h"
#include "core/reports/csv_export.h"
#include "core/review/review_queue.h"
#include "tests/app/transactions/transactions_fixture.h"

namespace copperwick::testing {
namespace {

std::set<Uuid> asSet(const std::vector<Uuid>& ids) {
    return {ids.begin(), ids.end()};
}

class TransactionsPageTest : public TransactionsScreenTest {
  protected:
    void SetUp() override { openWorkspace(); }
};

// On a narrow window the people button was cut short and the search field
// lay over the Filter menu: the bar now falls back to two rows.
TEST_F(TransactionsPageTest, FilterBarTakesTwoRowsRatherThanCuttingAControl) {
    page().periodBox()->setCurrentIndex(
        page().periodBox()->findData(static_cast<int>(PeriodChoice::custom)));
    const std::vector<QWidget*> controls{page().searchField(),    page().customStartField(),
                                         page().customEndField(), page().filterBox(),
                                         page().accountBox(),     page().periodBox(),
                                         page().peopleButton()};
    const auto placeOf = [&](QWidget* control) {
        return QRect(control->mapTo(&page(), QPoint(0, 0)), control->size());
    };
    for (const int width : {520, 700, 1300}) {
        page().resize(width, 700);
        QApplication::processEvents();
        QApplication::processEvents();
        for (std::size_t i = 0; i < controls.size(); ++i) {
            const QRect place = placeOf(controls[i]);
            EXPECT_LE(place.right(), page().width()) << width;
            for (std::size_t j = i + 1; j < controls.size(); ++j)
                EXPECT_FALSE(place.intersects(placeOf(controls[j])))
                    << controls[i]->accessibleName().toStdString() << " over "
                    << controls[j]->accessibleName().toStdString() << " at " << width;
        }
        EXPECT_GE(page().peopleButton()->width(), page().peopleButton()->sizeHint().width())
            << width;
    }
    EXPECT_EQ(placeOf(page().searchField()).top(), placeOf(page().peopleButton()).top())
        << "a wide window keeps one row";
    page().resize(520, 700);
    QApplication::processEvents();
    QApplication::processEvents();
    EXPECT_LT(placeOf(page().searchField()).top(), placeOf(page().peopleButton()).top());
}

// A removed line must not count anywhere but under "Removed"; every other
// filter keeps it out, and "Removed" keeps nothing else.
TEST_F(TransactionsPageTest, ShowsARemovedLineOnlyUnderRemoved) {
    const Uuid kept = addLine("CORNER BAKERY", -800);
    const Uuid removed = addLine("ZELLE TO ANA", -2500);
    change([&](Ledger& copy, LedgerDelta& delta) {
        delta.merge(setVoided(copy, {removed}, true, "Remove", runtime().now()));
    });
    for (const char* words : {"All transactions", "Needs review", "Spending", "Zelle", "Pending",
                              "Manual entries", "Transfers", "Income", "Filed by Local AI"}) {
        chooseFilter(QString::fromUtf8(words));
        EXPECT_FALSE(asSet(shownIds()).contains(removed)) << words;
    }
    chooseFilter(QStringLiteral("Removed"));
    EXPECT_EQ(shownIds(), std::vector<Uuid>{removed});
    chooseFilter(QStringLiteral("All transactions"));
    EXPECT_EQ(shownIds(), std::vector<Uuid>{kept});
}

// The search, the filter and the account must keep exactly what the core
// query keeps for the same options, in the same order, so that the screen
// and `copperwick transactions` never list different lines.
TEST_F(TransactionsPageTest, SearchAndFilterKeepWhatTheQueryKeeps) {
    const Uuid savings = addAccount("Savings");
    addLine("BLUE BOTTLE COFFEE", -650, day(2026, 3, 1));
    addLine("BLUE BOTTLE COFFEE", -700, day(2026, 3, 4));
    addLine("BLUE APRON REFUND", 1200, day(2026, 3, 2));
    addLine("BLUE BOTTLE COFFEE", -800, day(2026, 3, 3), savings);
    const Uuid noted = addLine("CORNER BAKERY", -900, day(2026, 2, 27));
    change([&](Ledger& copy, LedgerDelta& delta) {
        delta.merge(setNote(copy, "blue cake for Ana", noted, runtime().now()));
    });

    QTest::keyClicks(page().searchField(), "  Blue ");
    TransactionQuery query{.currency = "USD", .search = "blue"};
    std::vector<const LedgerTransaction*> lines = query.select(ledger());
    sortTransactions(lines, ledger(), {});
    std::vector<Uuid> expected;
    for (const LedgerTransaction* line : lines)
        expected.push_back(line->id);
    ASSERT_EQ(expected.size(), 5u);
    EXPECT_EQ(shownIds(), expected);

    page().accountBox()->setCurrentIndex(page().accountBox()->findText("Savings"));
    EXPECT_EQ(shownIds().size(), 1u);
    page().accountBox()->setCurrentIndex(0);
    chooseFilter(QStringLiteral("Income"));
    // Nothing is filed yet: the refund is still unknown, so no income.
    EXPECT_TRUE(shownIds().empty());

    // The "Clear search" action empties the field and brings every line back.
    chooseFilter(QStringLiteral("All transactions"));
    QAction* clear = nullptr;
    for (QAction* action : page().searchField()->actions()) {
        if (action->text() == "Clear search")
            clear = action;
    }
    ASSERT_TRUE(clear && clear->isVisible());
    clear->trigger();
    EXPECT_TRUE(page().searchField()->text().isEmpty());
    EXPECT_EQ(shownIds().size(), 5u);
    EXPECT_EQ(page().footerLabel()->text(),
              QStringLiteral("5 transactions \u00B7 money in $12.00 \u00B7 money out $30.50"));
}

// A list opened from Review or from an account's freshness shows just those
// lines, under a banner with their count, whatever the period; Show All
// goes back to every line.
TEST_F(TransactionsPageTest, ShowsTheLinesAListWasOpenedForUntilShowAll) {
    const Uuid savings = addAccount("Savings");
    const Uuid waiting = addLine("MYSTERY SHOP 42", -1500, day(2019, 1, 5));
    addLine("MYSTERY SHOP 42", -1600, day(2026, 3, 5), savings);
    addLine("CORNER BAKERY", -800);
    page().periodBox()->setCurrentIndex(
        page().periodBox()->findData(static_cast<int>(PeriodChoice::thisMonth)));

    const std::vector<ReviewGroup> groups = ReviewQueue::groups(ledger());
    const auto group = std::find_if(groups.begin(), groups.end(), [](const ReviewGroup& g) {
        return g.transactionIDs.size() == 2;
    });
    ASSERT_NE(group, groups.end());
    app::ReviewGroupCard card(runtime(), *group, true, nullptr);
    card.showTransactionsButton()->click();
    EXPECT_EQ(runtime().section(), AppSection::transactions);
    EXPECT_TRUE(page().focusBanner()->isVisible());
    EXPECT_EQ(asSet(shownIds()), asSet(group->transactionIDs));
    EXPECT_TRUE(page().focusLabel()->text().startsWith("Showing 2 transactions:"))
        << page().focusLabel()->text().toStdString();
    EXPECT_TRUE(asSet(shownIds()).contains(waiting));

    app::AccountFreshnessView freshness(*workspace.bridge);
    freshness.showInTransactions(savings);
    EXPECT_EQ(shownIds().size(), 1u);
    EXPECT_EQ(page().focusLabel()->text(), "Showing 1 transactions: Savings");

    QTest::mouseClick(page().showAllButton(), Qt::LeftButton);
    EXPECT_FALSE(runtime().transactionsFocus().has_value());
    EXPECT_FALSE(page().focusBanner()->isVisible());
    page().periodBox()->setCurrentIndex(
        page().periodBox()->findData(static_cast<int>(PeriodChoice::allTime)));
    EXPECT_EQ(shownIds().size(), 3u);
}

// Several lines chosen: the inspector adds them up and offers the actions
// for all of them at once.
TEST_F(TransactionsPageTest, SumsSeveralChosenLines) {
    const Uuid a = addLine("CORNER BAKERY", -800);
    const Uuid b = addLine("BLUE BOTTLE COFFEE", -650);
    const Uuid c = addLine("PAYROLL ACME", 250000);
    shownIds();
    EXPECT_TRUE(page().inspector()->shownText().contains("No selection"));
    page().selectLines({a, b, c});
    const QString shown = page().inspector()->shownText();
    EXPECT_TRUE(shown.contains("3 selected")) << shown.toStdString();
    EXPECT_TRUE(shown.contains("Total"));
    EXPECT_TRUE(shown.contains("$2,485.50")) << shown.toStdString();
    EXPECT_TRUE(shown.contains("Use the actions below, or right-click in the table."));

    QPushButton* remove = page().inspector()->button("Remove from Records");
    ASSERT_NE(remove, nullptr);
    remove->click();
    EXPECT_TRUE(line(a).voided && line(b).voided && line(c).voided);
    EXPECT_EQ(ledger().undoLabel(), "Remove");
    EXPECT_TRUE(shownIds().empty());
}

// "Back to Automatic Matching" on a line set by hand: a merchant the
// matcher knows files it automatically again; bank text nobody knows goes
// back to waiting for review.
TEST_F(TransactionsPageTest, BackToAutomaticMatchingLetsTheMatcherDecideAgain) {
    const Uuid known = addLine("STARBUCKS STORE 1234", -550);
    const Uuid unknown = addLine("XQZ TRADING 99", -1200);
    change([&](Ledger& copy, LedgerDelta& delta) {
        delta.merge(classify(copy,
                             {.ids = {known, unknown},
                              .merchantName = std::nullopt,
                              .kind = TransactionKind::expense,
                              .categoryID = categoryNamed("Shopping"),
                              .remember = false,
                              .label = "Set category"},
                             runtime().now()));
    });
    ASSERT_EQ(line(known).review, ReviewState::confirmed);
    shownIds();
    for (const Uuid& id : {known, unknown}) {
        page().selectLines({id});
        QPushButton* reset = page().inspector()->button("Back to Automatic Matching");
        ASSERT_NE(reset, nullptr);
        QTest::mouseClick(reset, Qt::LeftButton);
    }
    EXPECT_EQ(line(known).review, ReviewState::automatic);
    EXPECT_EQ(line(known).categoryID, categoryNamed("Dining"));
    EXPECT_TRUE(isWaiting(line(unknown).review));
    EXPECT_EQ(ledger().undoLabel(), "Reset to automatic");
}

// A note saved on one line must redraw that row alone: a reset of the
// whole table would throw away the scroll position and the selection on a
// long list.
TEST_F(TransactionsPageTest, ANoteRedrawsOnlyItsOwnRow) {
    addLine("CORNER BAKERY", -800);
    const Uuid noted = addLine("BLUE BOTTLE COFFEE", -650, day(2026, 3, 3));
    addLine("PAYROLL ACME", 250000, day(2026, 3, 4));
    shownIds();
    page().selectLines({noted});
    QSignalSpy resets(page().model(), &QAbstractItemModel::modelReset);
    QSignalSpy changes(page().model(), &QAbstractItemModel::dataChanged);
    page().inspector()->noteField()->setFocus();
    QTest::keyClicks(page().inspector()->noteField(), "for the office");
    QTest::keyClick(page().inspector()->noteField(), Qt::Key_Return);
    EXPECT_EQ(line(noted).note, "for the office");
    // The panel was made again; the keyboard is still on the note.
    EXPECT_EQ(QApplication::focusWidget(), page().inspector()->noteField());
    EXPECT_EQ(resets.count(), 0);
    ASSERT_EQ(changes.count(), 1);
    const int row = page().model()->rowOf(noted);
    EXPECT_EQ(changes.front().at(0).value<QModelIndex>().row(), row);
    EXPECT_EQ(changes.front().at(1).value<QModelIndex>().row(), row);
    EXPECT_EQ(page().inspector()->selection(), std::vector<Uuid>{noted});

    // A line added by another change is a new row: the query runs again.
    addLine("NEW SHOP", -100, day(2026, 3, 5));
    EXPECT_EQ(shownIds().size(), 4u);
}

// A filing made in the inspector must leave a list it no longer belongs to.
TEST_F(TransactionsPageTest, ALineFiledInTheInspectorLeavesNeedsReview) {
    const Uuid waiting = addLine("XQZ TRADING 99", -1200);
    chooseFilter(QStringLiteral("Needs review"));
    ASSERT_EQ(shownIds(), std::vector<Uuid>{waiting});
    page().selectLines({waiting});
    app::TransactionInspector* inspector = page().inspector();
    inspector->categoryBox()->setCurrentIndex(inspector->categoryBox()->findText("Shopping"));
    QTest::mouseClick(inspector->saveFilingButton(), Qt::LeftButton);
    EXPECT_EQ(line(waiting).review, ReviewState::confirmed);
    EXPECT_EQ(line(waiting).categoryID, categoryNamed("Shopping"));
    EXPECT_TRUE(shownIds().empty());
}

// On a long history the query runs beside the window; a later request
// overtakes an earlier one, whose rows never show.
TEST_F(TransactionsPageTest, ShowsOnlyTheNewestReadingFromTheBackground) {
    addLine("CORNER BAKERY", -800);
    addLine("BLUE BOTTLE COFFEE", -650);
    shownIds();
    page().model()->setInBackgroundFrom(0);
    QSignalSpy reads(page().model(), &app::TransactionTableModel::rowsRead);
    QTest::keyClicks(page().searchField(), "corner");
    EXPECT_TRUE(page().model()->isReading());
    EXPECT_EQ(shownIds().size(), 1u);
    EXPECT_EQ(reads.count(), 1);
}

// The export holds the lines shown, as the core writes them; a folder that
// isn't there gives the failure's words and writes nothing.
TEST_F(TransactionsPageTest, ExportsTheShownLinesAndSaysWhyItCouldNot) {
    addLine("CORNER BAKERY", -800);
    addLine("=HYPERLINK(1)", -650);
    addLine("PAYROLL ACME", 250000);
    QTest::keyClicks(page().searchField(), "a");
    const std::vector<Uuid> shown = shownIds();
    ASSERT_EQ(shown.size(), 2u);
    QString offered;
    std::filesystem::path target = workspace.temp / "out.csv";
    page().setSaveFilePanel([&](QWidget*, const QString& name) {
        offered = name;
        return std::optional(target);
    });
    QTest::mouseClick(page().exportButton(), Qt::LeftButton);
    EXPECT_EQ(offered, "Copperwick transactions.csv");
    std::ifstream file(target);
    std::stringstream written;
    written << file.rdbuf();
    EXPECT_EQ(written.str(), CSVExport::transactions(shown, ledger()));
    EXPECT_EQ(runtime().statusMessage(), "Saved out.csv");

    target = workspace.temp / "no such folder" / "out.csv";
    QTest::mouseClick(page().exportButton(), Qt::LeftButton);
    ASSERT_TRUE(runtime().errorMessage().has_value());
    EXPECT_TRUE(runtime().errorMessage()->starts_with("Couldn't save the file: "))
        << *runtime().errorMessage();
    EXPECT_FALSE(std::filesystem::exists(target));
}

// A click on a column's header sorts by it, as the core sorts; a second
// click turns the order round. Equal amounts keep one order by their ids.
TEST_F(TransactionsPageTest, SortsByTheClickedColumnAsTheCoreSorts) {
    addLine("CORNER BAKERY", -800, day(2026, 3, 1));
    addLine("BLUE BOTTLE COFFEE", -800, day(2026, 3, 2));
    addLine("PAYROLL ACME", 250000, day(2026, 3, 3));
    addLine("ATM WITHDRAWAL", -6000, day(2026, 3, 4));
    shownIds();
    QHeaderView* header = page().table()->horizontalHeader();
    const auto clickHeader = [&](int column) {
        QTest::mouseClick(
            header->viewport(), Qt::LeftButton, {},
            QPoint(header->sectionViewportPosition(column) + 10, header->height() / 2));
    };
    const auto expected = [&](TransactionSort sort) {
        std::vector<const LedgerTransaction*> lines =
            TransactionQuery{.currency = "USD"}.select(ledger());
        sortTransactions(lines, ledger(), sort);
        std::vector<Uuid> ids;
        for (const LedgerTransaction* line : lines)
            ids.push_back(line->id);
        return ids;
    };
    clickHeader(app::TransactionTableModel::amountColumn);
    const TransactionSort byAmount{.column = TransactionColumn::amount,
                                   .ascending = page().model()->sortOrder().ascending};
    EXPECT_EQ(page().model()->sortOrder().column, TransactionColumn::amount);
    EXPECT_EQ(shownIds(), expected(byAmount));
    clickHeader(app::TransactionTableModel::amountColumn);
    EXPECT_NE(page().model()->sortOrder().ascending, byAmount.ascending);
    EXPECT_EQ(shownIds(), expected(page().model()->sortOrder()));
    clickHeader(app::TransactionTableModel::merchantColumn);
    EXPECT_EQ(shownIds(), expected(page().model()->sortOrder()));
}

// Payments through a service are counted as sent and received, not as
// money in and out.
TEST_F(TransactionsPageTest, CountsServicePaymentsAsSentAndReceived) {
    addLine("ZELLE TO ANA SMITH", -2500);
    addLine("ZELLE FROM BEN JONES", 4000);
    addLine("VENMO PAYMENT", -1000);
    chooseFilter(QStringLiteral("Zelle"));
    EXPECT_EQ(shownIds().size(), 2u);
    EXPECT_EQ(page().footerLabel()->text(),
              QStringLiteral("2 transactions \u00B7 sent $25.00 \u00B7 received $40.00"));
    QComboBox* box = page().filterBox();
    box->setCurrentIndex(box->findText("Venmo"));
    EXPECT_EQ(shownIds().size(), 1u);
    EXPECT_EQ(page().footerLabel()->text(),
              QStringLiteral("1 transactions \u00B7 sent $10.00 \u00B7 received $0.00"));
}

// The context menu acts on the chosen lines; the details can be put away
// and brought back.
TEST_F(TransactionsPageTest, TheContextMenuActsOnTheChosenLines) {
    const Uuid a = addLine("CORNER BAKERY", -800);
    const Uuid b = addLine("BLUE BOTTLE COFFEE", -650);
    shownIds();
    page().selectLines({a, b});
    QStringList offered;
    QTimer::singleShot(50, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        for (QAction* action : menu->actions())
            offered.append(action->text());
        for (QAction* action : menu->actions()) {
            if (action->text() == "Mark as Transfer")
                action->trigger();
        }
        menu->close();
    });
    const QRect row =
        page().table()->visualRect(page().model()->index(page().model()->rowOf(a), 1));
    Q_EMIT page().table()->customContextMenuRequested(row.center());
    EXPECT_EQ(offered, (QStringList{"Assign Spending To", "Set Spending Category",
                                    "Set Income Category", "Mark as Transfer", "",
                                    "Back to Automatic Matching", "Remove from Records"}));
    EXPECT_EQ(line(a).kind, TransactionKind::transfer);
    EXPECT_EQ(line(b).kind, TransactionKind::transfer);
    EXPECT_EQ(ledger().undoLabel(), "Mark as transfer");

    QTest::mouseClick(page().detailsButton(), Qt::LeftButton);
    EXPECT_FALSE(page().inspector()->isVisible());
    EXPECT_EQ(page().detailsButton()->text(), "Show Details");
    EXPECT_EQ(page().detailsButton()->toolTip(), "Show or hide transaction details");
    QTest::mouseClick(page().detailsButton(), Qt::LeftButton);
    EXPECT_TRUE(page().inspector()->isVisible());
    EXPECT_EQ(page().detailsButton()->text(), "Hide Details");
}

// Choosing a person keeps the lines assigned to them and drops the
// household's; the button names the people chosen.
TEST_F(TransactionsPageTest, NarrowsToThePeopleChosen) {
    const Person ana{.id = Uuid::random(), .name = "Ana", .bankNames = {}, .monthlyAllowance = {}};
    const Account card(Uuid::random(), "Ana's card", AccountType::creditCard, std::nullopt,
                       std::vector<Uuid>{ana.id});
    change([&](Ledger& copy, LedgerDelta& delta) {
        copy.people.push_back(ana);
        delta.change(RecordKind::person, ana.id);
        copy.accounts.push_back(card);
        delta.change(RecordKind::account, card.id);
    });
    const Uuid hers = addLine("BOOKSHOP", -1500, day(2026, 3, 2), card.id);
    addLine("CORNER BAKERY", -800);
    EXPECT_EQ(shownIds().size(), 2u);
    EXPECT_EQ(page().peopleButton()->text(), "Whole household");
    QAction* choice = nullptr;
    for (QAction* action : page().peopleButton()->menu()->actions()) {
        if (action->text() == "Ana")
            choice = action;
    }
    ASSERT_NE(choice, nullptr);
    choice->trigger();
    EXPECT_EQ(shownIds(), std::vector<Uuid>{hers});
    EXPECT_EQ(page().peopleButton()->text(), "Ana");
}

// "Custom…" asks for the first and last day; the list follows each day as
// soon as it reads as one, and the lines outside the days go.
TEST_F(TransactionsPageTest, ACustomPeriodKeepsTheDaysTyped) {
    addLine("JANUARY SHOP", -100, day(2026, 1, 15));
    const Uuid february = addLine("FEBRUARY SHOP", -200, day(2026, 2, 10));
    addLine("MARCH SHOP", -300, day(2026, 3, 5));
    QComboBox* period = page().periodBox();
    EXPECT_FALSE(page().customStartField()->isVisible());
    period->setCurrentIndex(period->findText(QStringLiteral("Custom\u2026")));
    ASSERT_TRUE(page().customStartField()->isVisible());
    page().customStartField()->setText("2026-02-01");
    page().customEndField()->clear();
    QTest::keyClicks(page().customEndField(), "2026-02-2");
    EXPECT_TRUE(shownIds().empty());
    QTest::keyClicks(page().customEndField(), "8");
    EXPECT_EQ(shownIds(), std::vector<Uuid>{february});
}

// In a narrow window the details float over the table when asked for, and
// go back beside it when the window widens.
TEST_F(TransactionsPageTest, TheDetailsFloatOverTheTableInANarrowWindow) {
    const Uuid id = addLine("CORNER BAKERY", -800);
    shownIds();
    page().selectLines({id});
    page().resize(app::TransactionsPage::kFloatBelow - 60, 700);
    settle();
    EXPECT_TRUE(page().detailsFloat());
    EXPECT_FALSE(page().inspector()->isVisible());
    EXPECT_EQ(page().detailsButton()->text(), "Show Details");
    QTest::mouseClick(page().detailsButton(), Qt::LeftButton);
    ASSERT_TRUE(page().inspector()->isVisible());
    const QRect table(page().table()->mapTo(&page(), QPoint()), page().table()->size());
    const QRect panel(page().inspector()->mapTo(&page(), QPoint()), page().inspector()->size());
    EXPECT_TRUE(table.intersects(panel));
    EXPECT_TRUE(page().inspector()->shownText().contains("CORNER BAKERY"));
    QTest::mouseClick(page().detailsButton(), Qt::LeftButton);
    EXPECT_FALSE(page().inspector()->isVisible());

    page().resize(1300, 900);
    settle();
    EXPECT_FALSE(page().detailsFloat());
    EXPECT_TRUE(page().inspector()->isVisible());
    EXPECT_EQ(page().detailsButton()->text(), "Hide Details");
    const QRect wideTable(page().table()->mapTo(&page(), QPoint()), page().table()->size());
    const QRect widePanel(page().inspector()->mapTo(&page(), QPoint()), page().inspector()->size());
    EXPECT_FALSE(wideTable.intersects(widePanel));
}

}  // namespace
}  // namespace copperwick::testing
