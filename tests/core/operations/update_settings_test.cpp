#include "core/operations/update_settings.h"

#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/operations/entry_error.h"
#include "core/operations/record_maintenance.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

std::string refusal(void (*enter)(std::string_view), std::string_view text) {
    try {
        enter(text);
    } catch (const EntryError& error) {
        return error.what();
    }
    return "accepted";
}

void enterGoal(std::string_view text) {
    (void)savingsGoalEntered(text);
}

void enterAllowance(std::string_view text) {
    (void)allowanceEntered(text);
}

// The settings command took any amount as a savings goal, past its limit and
// without its words, and clearing the goal dropped the currency it was set in.
TEST(SavingsGoal, TakesOnlyAPositiveGoalUpToItsLimitAndKeepsItsCurrency) {
    constexpr std::string_view kWords = "Enter a positive monthly goal, or leave it empty.";
    EXPECT_EQ(savingsGoalEntered(""), std::nullopt);
    EXPECT_EQ(savingsGoalEntered(" \t"), std::nullopt);
    EXPECT_EQ(savingsGoalEntered("0.01"), 1);
    EXPECT_EQ(savingsGoalEntered("$900,000,000.00"), kLargestSavingsGoal);
    for (const std::string_view text : {"0", "-5", "900000000.01", "abc", "1.234"})
        EXPECT_EQ(refusal(enterGoal, text), kWords) << text;

    Ledger ledger = Ledger::starter();
    ledger.settings.update([](LedgerSettings& settings) { settings.reportCurrency = "EUR"; });
    (void)setSavingsGoal(ledger, 50000);
    EXPECT_EQ(ledger.settings->monthlySavingsGoal, 50000);
    EXPECT_EQ(ledger.settings->monthlySavingsGoalCurrency, "EUR");

    ledger.settings.update([](LedgerSettings& settings) { settings.reportCurrency = "GBP"; });
    const auto cleared = setSavingsGoal(ledger, std::nullopt);
    EXPECT_TRUE(cleared.changes(RecordKind::settings));
    EXPECT_EQ(ledger.settings->monthlySavingsGoal, std::nullopt);
    EXPECT_EQ(ledger.settings->monthlySavingsGoalCurrency, "GBP") << "cleared, still in a currency";

    const Ledger before = ledger;
    EXPECT_THROW((void)setSavingsGoal(ledger, kLargestSavingsGoal + 1), EntryError);
    EXPECT_THROW((void)setSavingsGoal(ledger, 0), EntryError);
    EXPECT_EQ(*ledger.settings, *before.settings) << "a refused goal changes nothing";
}

// A refused allowance read "“-5” isn't an amount." instead of the allowance's
// own words.
TEST(Allowance, RefusesInItsOwnWordsButTakesZero) {
    constexpr std::string_view kWords = "Enter a positive monthly allowance, or leave it empty.";
    EXPECT_EQ(allowanceEntered(""), std::nullopt);
    EXPECT_EQ(allowanceEntered("0"), 0) << "zero passes in spite of the words";
    EXPECT_EQ(allowanceEntered("250"), 25000);
    for (const std::string_view text : {"-5", "abc", "1,23"})
        EXPECT_EQ(refusal(enterAllowance, text), kWords) << text;
}

// The goal's limit held only where a goal was typed; a change through the
// settings record could store any goal.
TEST(UpdateSettings, HoldsEveryChangedSettingToItsOneRule) {
    Ledger ledger = Ledger::starter();
    const auto change = [&](auto edit) {
        return testing::refusal([&] { return updateSettings(ledger, edit); });
    };
    EXPECT_EQ(change([](LedgerSettings& s) { s.monthlySavingsGoal = kLargestSavingsGoal + 1; }),
              "Enter a positive monthly goal, or leave it empty.");
    EXPECT_EQ(change([](LedgerSettings& s) { s.monthlySavingsGoal = 0; }),
              "Enter a positive monthly goal, or leave it empty.");
    EXPECT_EQ(change([](LedgerSettings& s) { s.timeZoneID = "Mars/Base"; }),
              "Choose a time zone the calendar knows, such as America/Los_Angeles.");
    EXPECT_EQ(change([](LedgerSettings& s) { s.reportCurrency = "Euro"; }),
              "A currency is three letters, such as USD.");
    EXPECT_EQ(*ledger.settings, *Ledger::starter().settings) << "refusals change nothing";

    EXPECT_EQ(change([](LedgerSettings& s) { s.monthlySavingsGoal = kLargestSavingsGoal; }),
              "accepted");
    EXPECT_EQ(change([](LedgerSettings& s) { s.timeZoneID = "Europe/Dublin"; }), "accepted");
}

// Only what a change touches is held to its rule: an older file with an odd
// time zone can still have its other settings changed.
TEST(UpdateSettings, LeavesASettingTheChangeDoesntTouchAsItIs) {
    Ledger ledger = Ledger::starter();
    ledger.settings.update([](LedgerSettings& settings) { settings.timeZoneID = "Mars/Base"; });
    (void)updateSettings(ledger, [](LedgerSettings& settings) { settings.keepSourceText = false; });
    EXPECT_FALSE(ledger.settings->keepSourceText);
    EXPECT_EQ(ledger.settings->timeZoneID, "Mars/Base");
}

TEST(UpdateSettings, ReadsTypedSettingsByTheSameRules) {
    EXPECT_EQ(timeZoneEntered(" Europe/Dublin "), "Europe/Dublin");
    EXPECT_EQ(testing::refusal([] { return timeZoneEntered("Mars/Base"); }),
              "There is no time zone called Mars/Base.");
    EXPECT_EQ(paymentServicesEntered("venmo, zelle,venmo"),
              (std::vector<PaymentService>{PaymentService::zelle, PaymentService::venmo}))
        << "once each, in the services' own order";
    EXPECT_TRUE(paymentServicesEntered("none").empty());
    EXPECT_EQ(testing::refusal([] { return paymentServicesEntered("zelle,carrier pigeon"); }),
              "There is no payment service called carrier pigeon; choose from zelle, venmo, "
              "cashApp, paypal, appleCash.");
}

}  // namespace
}  // namespace copperwick
