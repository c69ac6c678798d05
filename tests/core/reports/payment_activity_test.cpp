#include "core/reports/payment_activity.h"

#include <gtest/gtest.h>

#include "core/reports/payment_service_detection.h"
#include "core/reports/zelle_activity.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

TEST(PaymentServiceDetectionTest, ReadsTheServiceFromBankText) {
    EXPECT_EQ(detectPaymentService("ZELLE TO JANE DOE"), PaymentService::zelle);
    EXPECT_EQ(detectPaymentService("Zelle payment to Sam Rivera JPM99ab12cd"),
              PaymentService::zelle);
    EXPECT_EQ(detectPaymentService("BANK ZELLEPAY 123"), PaymentService::zelle)
        << "the service's own words, without a payment-service reading";
    EXPECT_EQ(detectPaymentService("GOOGLE *PLAY"), std::nullopt) << "Google isn't tracked";
    EXPECT_EQ(detectPaymentService("SQC*JOHN"), PaymentService::cashApp);
    EXPECT_EQ(detectPaymentService("PP*SHOP"), PaymentService::paypal);
    EXPECT_EQ(detectPaymentService("pp  \t*shop"), PaymentService::paypal);
    EXPECT_EQ(detectPaymentService("VENMO PAYMENT MORGAN DEMO"), PaymentService::venmo);
    EXPECT_EQ(detectPaymentService("MY VENMO"), std::nullopt) << "only Zelle is found anywhere";
    EXPECT_EQ(detectPaymentService("CASHAPP TRANSFER"), PaymentService::cashApp);
    EXPECT_EQ(detectPaymentService("APPLE CASH SENT TO JAMIE DEMO"), PaymentService::appleCash);
    EXPECT_EQ(detectPaymentService("CASH WITHDRAWAL"), std::nullopt);
    EXPECT_EQ(detectPaymentService("ZELLERI SHOES"), std::nullopt);
    EXPECT_EQ(detectPaymentService("ſqc*john"), PaymentService::cashApp)
        << "upper-casing outside ASCII still reaches the service's letters";
}

TEST(PaymentServiceDetectionTest, OnlyPersonToPersonServicesAskForAPurpose) {
    EXPECT_TRUE(requiresPurpose("ZELLE TO JANE DOE"));
    EXPECT_TRUE(requiresPurpose("VENMO *MORGAN"));
    EXPECT_FALSE(requiresPurpose("PAYPAL *SHOP")) << "a business usually stands behind PayPal";
    EXPECT_FALSE(requiresPurpose("GROCERY OUTLET"));
}

TEST(PaymentServiceDetectionTest, TheQuickTestNeverHidesAService) {
    for (const auto* text : {"ZELLE TO JANE DOE", "BANK ZELLEPAY 123", "SQC*JOHN", "PP *SHOP",
                             "VENMO", "PAYPAL INST XFER", "APPLE CASH SENT", "CASH APP*X"})
        EXPECT_FALSE(surelyNamesNoService(text)) << text;
    EXPECT_TRUE(surelyNamesNoService("SAFEWAY #123"));
    EXPECT_TRUE(surelyNamesNoService("SHOPPING APPLE STORE"));
}

TEST(ZelleTextTest, IsZelleNeedsThePaymentServiceReading) {
    EXPECT_TRUE(ZelleActivity::isZelle("ZELLE TO JANE DOE"));
    EXPECT_FALSE(ZelleActivity::isZelle("BANK ZELLEPAY 123"));
    EXPECT_FALSE(ZelleActivity::isZelle("VENMO *JANE"));
}

class PaymentActivityTest : public ::testing::Test {
  protected:
    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    DateSpan march{day(2026, 3, 1), day(2026, 3, 31)};

    [[nodiscard]] ReportFilter filter() const {
        return ReportFilter(march, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
    }

    Uuid payment(std::string text, int64_t amount, TransactionKind kind,
                 LocalDate date = day(2026, 3, 10)) {
        const auto id = builder.transaction(checking, std::move(text), amount, date);
        builder.change(id, [&](LedgerTransaction& t) { t.kind = kind; });
        return id;
    }

    void track(std::vector<PaymentService> services) {
        auto settings = *builder.ledger().settings;
        settings.paymentServices = std::move(services);
        builder.ledger().settings = settings;
    }

    void addPerson(std::string name, std::vector<std::string> bankNames) {
        builder.ledger().people.push_back(Person{
            .id = Uuid::random(), .name = std::move(name), .bankNames = std::move(bankNames)});
    }
};

TEST_F(PaymentActivityTest, LinesPerServiceAndPersonWithHowEachWasCounted) {
    track({PaymentService::zelle, PaymentService::venmo});
    const auto dinner = payment("ZELLE TO JANE DOE", -4500, TransactionKind::expense);
    builder.change(dinner,
                   [&](LedgerTransaction& t) { t.categoryID = builder.category("Dining"); });
    const auto back = payment("ZELLE FROM JANE DOE", 2000, TransactionKind::expense);
    builder.change(back, [&](LedgerTransaction& t) { t.categoryID = builder.category("Dining"); });
    payment("VENMO *MORGAN", 1000, TransactionKind::unknown);
    payment("CASH APP*TAYLOR", -700, TransactionKind::expense);  // not tracked
    payment("SAFEWAY", -1200, TransactionKind::expense);

    const auto activity = PaymentActivity::build(builder.ledger(), filter());
    ASSERT_EQ(activity.lines.size(), 2u) << "one Zelle identity both ways, and one Venmo";
    EXPECT_EQ(activity.sent, 4500);
    EXPECT_EQ(activity.received, 3000);
    EXPECT_EQ(activity.net(), -1500);
    EXPECT_EQ(activity.transactionIDs.size(), 3u);
    const auto& biggest = activity.lines.front();
    EXPECT_EQ(biggest.service, PaymentService::zelle);
    EXPECT_EQ(biggest.sent, 4500);
    EXPECT_EQ(biggest.received, 2000);
    EXPECT_EQ(biggest.howCounted,
              (std::vector<std::string>{"Paying back: Dining", "Spending: Dining"}));
    EXPECT_TRUE(biggest.id.starts_with("zelle:"));
    EXPECT_EQ(activity.lines.back().howCounted, std::vector<std::string>{"Needs review"});
}

TEST_F(PaymentActivityTest, NoTrackedServicesMeansNoActivityButZelleStillCounts) {
    track({});
    payment("ZELLE TO JANE DOE", -4500, TransactionKind::expense);
    EXPECT_TRUE(PaymentActivity::build(builder.ledger(), filter()).lines.empty());
    EXPECT_EQ(ZelleActivity::build(builder.ledger(), filter()).lines.size(), 1u);
}

TEST_F(PaymentActivityTest, PendingVoidedSupersededAndOutsideThePeriodCountNowhere) {
    addPerson("Alex", {"ALEX SAMPLE"});
    const auto pending = payment("ZELLE TO ALEX SAMPLE", -100, TransactionKind::transfer);
    builder.change(pending, [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
    const auto voided = payment("ZELLE TO ALEX SAMPLE", -200, TransactionKind::transfer);
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    const auto replaced = payment("ZELLE TO ALEX SAMPLE", -300, TransactionKind::transfer);
    builder.change(replaced, [](LedgerTransaction& t) { t.supersededBy = Uuid::random(); });
    payment("ZELLE TO ALEX SAMPLE", -400, TransactionKind::transfer, day(2026, 4, 1));

    EXPECT_TRUE(PaymentActivity::build(builder.ledger(), filter()).lines.empty());
    const auto zelle = ZelleActivity::build(builder.ledger(), filter());
    EXPECT_TRUE(zelle.lines.empty());
    EXPECT_TRUE(zelle.household.isEmpty());
}

TEST_F(PaymentActivityTest, HouseholdMoneyIsATransferNamingAMember) {
    addPerson("Alex", {"AL", "Alex Sample"});
    addPerson("Sam", {});
    EXPECT_EQ(ZelleActivity::householdPhrases(builder.ledger()),
              std::vector<std::string>{"ALEX SAMPLE"})
        << "names under four characters would match too much";

    const auto plain = payment("ONLINE TRANSFER TO ALEX SAMPLE", -50000, TransactionKind::transfer);
    const auto viaZelle = payment("ZELLE FROM ALEX SAMPLE", 2500, TransactionKind::transfer);
    payment("ONLINE TRANSFER TO ALEX SAMPLE", -100, TransactionKind::expense);  // not a transfer
    payment("ZELLE TO ALEXANDRA SAMPLES", -300, TransactionKind::transfer);     // not a member

    const auto zelle = ZelleActivity::build(builder.ledger(), filter());
    EXPECT_EQ(zelle.household.sent, 50000);
    EXPECT_EQ(zelle.household.sentIDs, std::vector<Uuid>{plain});
    EXPECT_EQ(zelle.household.received, 2500);
    EXPECT_EQ(zelle.household.receivedIDs, std::vector<Uuid>{viaZelle});
    ASSERT_EQ(zelle.lines.size(), 2u) << "the plain transfer is household money only";
    const auto member = std::find_if(zelle.lines.begin(), zelle.lines.end(),
                                     [](const ZelleLine& line) { return line.received == 2500; });
    ASSERT_NE(member, zelle.lines.end());
    EXPECT_EQ(member->howCounted, std::vector<std::string>{"Household, not counted"});
    const auto other = std::find_if(zelle.lines.begin(), zelle.lines.end(),
                                    [](const ZelleLine& line) { return line.sent == 300; });
    ASSERT_NE(other, zelle.lines.end());
    EXPECT_EQ(other->howCounted, std::vector<std::string>{"Not counted"});
}

// "Zoë" took four bytes for its three letters, so the short name counted as a
// household phrase and any text with "ZOË" in it became household money.
TEST_F(PaymentActivityTest, HouseholdPhrasesCountLettersNotBytes) {
    addPerson("Zoë", {"Zoë", "Zoe\u0308", "Zoë R"});
    EXPECT_EQ(ZelleActivity::householdPhrases(builder.ledger()),
              std::vector<std::string>{"ZO\u00CB R"})
        << "three letters are too few, composed or not";
    payment("ZELLE TO ZO\u00CB", -2000, TransactionKind::transfer);
    EXPECT_TRUE(ZelleActivity::build(builder.ledger(), filter()).household.isEmpty());
}

TEST_F(PaymentActivityTest, TreatmentWordsByKind) {
    const auto& ledger = builder.ledger();
    const auto gifts = builder.category("Gifts & Donations");
    LedgerTransaction line{.id = Uuid::random(), .accountID = checking, .amount = 500};
    line.kind = TransactionKind::expense;
    line.categoryID = gifts;
    EXPECT_EQ(ZelleActivity::treatment(line, ledger, false), "Paying back: Gifts & Donations");
    line.amount = -500;
    line.categoryID.reset();
    EXPECT_EQ(ZelleActivity::treatment(line, ledger, false), "Spending");
    line.kind = TransactionKind::income;
    EXPECT_EQ(ZelleActivity::treatment(line, ledger, false), "Income");
    line.kind = TransactionKind::transfer;
    EXPECT_EQ(ZelleActivity::treatment(line, ledger, true), "Household, not counted");
    line.kind = TransactionKind::unknown;
    EXPECT_EQ(ZelleActivity::treatment(line, ledger, false), "Needs review");

    LedgerCategory received{
        .id = Uuid::random(), .name = "GIFTS RECEIVED", .group = CategoryGroup::income};
    builder.ledger().categories.push_back(received);
    line.kind = TransactionKind::income;
    line.categoryID = received.id;
    EXPECT_EQ(ZelleActivity::treatment(line, builder.ledger(), false), "Gift received");
}

TEST_F(PaymentActivityTest, EqualVolumesBreakTiesByIdInActivityAndByNameInZelle) {
    const auto zara = builder.merchant("Zara Example");
    const auto abe = builder.merchant("Abe Example");
    const auto first = payment("ZELLE TO ZARA EXAMPLE", -1000, TransactionKind::expense);
    builder.change(first, [&](LedgerTransaction& t) { t.merchantID = zara; });
    const auto second = payment("ZELLE TO ABE EXAMPLE", -1000, TransactionKind::expense);
    builder.change(second, [&](LedgerTransaction& t) { t.merchantID = abe; });

    const auto zelle = ZelleActivity::build(builder.ledger(), filter());
    ASSERT_EQ(zelle.lines.size(), 2u);
    EXPECT_EQ(zelle.lines[0].name, "Abe Example");

    const auto activity = PaymentActivity::build(builder.ledger(), filter());
    ASSERT_EQ(activity.lines.size(), 2u);
    EXPECT_LT(activity.lines[0].id, activity.lines[1].id);
    EXPECT_EQ(activity.lines[0].id, "zelle:" + std::min(zara.text(), abe.text()));
}

TEST_F(PaymentActivityTest, ThePanelListsTheBiggestTwelveAndCountsTheRest) {
    const std::vector<std::string> names{"ADAMS", "BAKER", "CLARK", "DAVIS", "EVANS",
                                         "FLINT", "GRANT", "HAYES", "IRWIN", "JONES",
                                         "KEANE", "LOPEZ", "MOORE"};
    // The thirteenth is the smallest, so it is the one a panel of twelve leaves out.
    for (std::size_t i = 0; i < 12; ++i)
        payment("ZELLE TO JAMIE " + names[i], -100 * static_cast<int64_t>(i + 2),
                TransactionKind::expense);
    auto activity = PaymentActivity::build(builder.ledger(), filter());
    ASSERT_EQ(activity.lines.size(), 12u);
    EXPECT_EQ(activity.panelLines().size(), 12u);
    EXPECT_EQ(activity.allNamesNote(), std::nullopt) << "twelve lines are all listed";

    payment("ZELLE TO JAMIE " + names[12], -100, TransactionKind::expense);
    activity = PaymentActivity::build(builder.ledger(), filter());
    ASSERT_EQ(activity.lines.size(), 13u);
    const auto shown = activity.panelLines();
    ASSERT_EQ(shown.size(), 12u);
    EXPECT_EQ(shown.front().sent, 1300);
    EXPECT_EQ(shown.back().sent, 200);
    EXPECT_EQ(activity.allNamesNote(), "Use Show in Transactions to see all 13 names.");

    EXPECT_TRUE(PaymentActivity{}.panelLines().empty());
    EXPECT_EQ(PaymentActivity{}.allNamesNote(), std::nullopt);
}

TEST_F(PaymentActivityTest, ZelleLinesTakeTheLatestNameAndRunByDate) {
    const auto earlier =
        payment("ZELLE TO JANE DOE", -100, TransactionKind::unknown, day(2026, 3, 2));
    const auto later =
        payment("ZELLE TO JANE DOE", -200, TransactionKind::unknown, day(2026, 3, 20));
    const auto zelle = ZelleActivity::build(builder.ledger(), filter());
    ASSERT_EQ(zelle.lines.size(), 1u);
    EXPECT_EQ(zelle.lines[0].count, 2);
    EXPECT_EQ(zelle.lines[0].transactionIDs, (std::vector<Uuid>{earlier, later}));
    EXPECT_EQ(zelle.sent, 300);
}

}  // namespace
}  // namespace copperwick
