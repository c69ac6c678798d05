#include "core/matching/merchant_text.h"

#include <string>
#include <string_view>
#include <thread>
#include <unordered_set>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>

namespace copperwick {
namespace {

// The derived views of one description on one line, so that a table row
// shows every field at once: "core | via | counterpart | key".
std::string describe(const MerchantText& text) {
    return text.core + " | " + text.via.value_or("-") + " | " + text.counterpart.value_or("-") +
           " | " + text.key;
}

struct Case {
    std::string_view raw;
    std::string_view expected;
};

void expectDescriptions(std::initializer_list<Case> cases) {
    for (const auto& [raw, expected] : cases)
        EXPECT_EQ(describe(MerchantText(raw)), expected) << raw;
}

TEST(MerchantText, ReadsABankLineDownToTheMerchant) {
    const MerchantText text(
        "Purchase authorized on 03/14 SQ *Blue Bottle #1234 Oakland CA Card 1234");
    EXPECT_EQ(text.normalized,
              "PURCHASE AUTHORIZED ON 03/14 SQ *BLUE BOTTLE #1234 OAKLAND CA CARD 1234");
    EXPECT_EQ(text.core, "SQ *BLUE BOTTLE #1234 OAKLAND CA");
    EXPECT_FALSE(text.via);
    EXPECT_FALSE(text.counterpart);
    EXPECT_EQ(text.key, "BLUE BOTTLE");
    EXPECT_EQ(text.displayName(), "Blue Bottle");
}

TEST(MerchantText, NormalizeCollapsesEveryKindOfBlankAndUpperCasesFully) {
    EXPECT_EQ(MerchantText::normalize("  Blue\u00A0Bottle\t\r\ncoffee \u2003 co  "),
              "BLUE BOTTLE COFFEE CO");
    EXPECT_EQ(MerchantText::normalize("straße café"), "STRASSE CAFÉ");
    EXPECT_EQ(MerchantText::normalize(" \t\n\u00A0"), "");
    EXPECT_EQ(MerchantText::normalize(""), "");
}

TEST(MerchantText, PaymentServiceNamesTheParty) {
    expectDescriptions({
        {"PAYPAL *SPOTIFY", "PAYPAL *SPOTIFY | PayPal | SPOTIFY | SPOTIFY"},
        {"PP*EBAY SELLER", "PP*EBAY SELLER | PayPal | EBAY SELLER | EBAY SELLER"},
        {"PAYPAL INST XFER NETFLIX.COM",
         "PAYPAL INST XFER NETFLIX.COM | PayPal | NETFLIX.COM | NETFLIX"},
        {"VENMO *JOHN SMITH", "VENMO *JOHN SMITH | Venmo | JOHN SMITH | JOHN SMITH"},
        {"VENMO CASHOUT ACME", "VENMO CASHOUT ACME | Venmo | ACME | ACME"},
        {"SQC*JANE DOE", "SQC*JANE DOE | Cash App | JANE DOE | JANE DOE"},
        {"CASH APP*JANE DOE", "CASH APP*JANE DOE | Cash App | JANE DOE | JANE DOE"},
        {"ZELLE TO JOHN SMITH", "ZELLE TO JOHN SMITH | Zelle | JOHN SMITH | JOHN SMITH"},
        {"Zelle payment from Jane Doe 88271234",
         "ZELLE PAYMENT FROM JANE DOE 88271234 | Zelle | JANE DOE 88271234 | JANE DOE"},
        {"GOOGLE *YouTube", "GOOGLE *YOUTUBE | Google | YOUTUBE | YOUTUBE"},
        {"APPLE CASH SENT TO MOM", "APPLE CASH SENT TO MOM | Apple Cash | MOM | MOM"},
        {"APPLE CASH RECEIVED BOB", "APPLE CASH RECEIVED BOB | Apple Cash | BOB | BOB"},
    });
}

TEST(MerchantText, PaymentServiceNeedsAPartyBehindIt) {
    expectDescriptions({
        {"ZELLE TO", "ZELLE TO | - | - | ZELLE TO"},
        {"ZELLE TOJOHN", "ZELLE TOJOHN | - | - | ZELLE TOJOHN"},
        {"PAYPAL", "PAYPAL | - | - | PAYPAL"},
        {"MY PAYPAL *SPOTIFY", "MY PAYPAL *SPOTIFY | - | - | MY PAYPAL SPOTIFY"},
    });
}

TEST(MerchantText, CounterpartKeepsItsFacilitatorButTheKeyDoesNot) {
    expectDescriptions({
        {"VENMO *TST* JOE'S BAR", "VENMO *TST* JOE'S BAR | Venmo | TST* JOE'S BAR | JOES BAR"},
        {"PAYPAL *SQ *", "PAYPAL *SQ * | PayPal | SQ * | SQ"},
    });
}

TEST(MerchantText, FacilitatorStaysInCoreAndLeavesTheKey) {
    expectDescriptions({
        {"SQ *BLUE BOTTLE", "SQ *BLUE BOTTLE | - | - | BLUE BOTTLE"},
        {"TST* JOE'S PIZZA", "TST* JOE'S PIZZA | - | - | JOES PIZZA"},
        {"TOAST *SUSHI ZONE", "TOAST *SUSHI ZONE | - | - | SUSHI ZONE"},
        {"SP ACME GOODS", "SP ACME GOODS | - | - | ACME GOODS"},
        // Shopify's prefix needs a name right behind it.
        {"SP -ACME", "SP -ACME | - | - | SP ACME"},
        // A facilitator alone is all there is to go on.
        {"SQ *", "SQ * | - | - | SQ"},
        // A facilitator is only a prefix.
        {"JOE SQ *PIZZA", "JOE SQ *PIZZA | - | - | JOE SQ PIZZA"},
    });
}

TEST(MerchantText, LeadingWrappersComeOffAtMostThreeDeep) {
    expectDescriptions({
        {"POS DEBIT POS PURCHASE ACH DEBIT APPLE PAY STORE",
         "APPLE PAY STORE | - | - | APPLE PAY STORE"},
        {"POS POS POS POS SHELL", "POS SHELL | - | - | POS SHELL"},
        {"POS POS POS SHELL", "SHELL | - | - | SHELL"},
        // Both kinds come off in the same pass.
        {"PURCHASE AUTHORIZED ON 03/14 POS POS POS POS SHELL", "POS SHELL | - | - | POS SHELL"},
        {"RECURRING PAYMENT AUTHORIZED ON 1/5 NETFLIX.COM", "NETFLIX.COM | - | - | NETFLIX"},
        {"DBT CRD 1234 SHELL OIL", "SHELL OIL | - | - | SHELL OIL"},
        {"CHECKCARD 0314 SHELL OIL", "SHELL OIL | - | - | SHELL OIL"},
        {"CHECK CARD SHELL OIL", "SHELL OIL | - | - | SHELL OIL"},
        {"POS - SHELL OIL", "SHELL OIL | - | - | SHELL OIL"},
        {"APL*PAY SHELL OIL", "SHELL OIL | - | - | SHELL OIL"},
        // Only at the start of the text.
        {"SHELL POS DEBIT", "SHELL POS DEBIT | - | - | SHELL POS DEBIT"},
    });
}

TEST(MerchantText, TrailingWrappersComeOffInOrder) {
    expectDescriptions({
        {"AMAZON MKTPLACE S123456789 CARD 4321", "AMAZON MKTPLACE | - | - | AMAZON MKTPLACE"},
        {"AMAZON MKTPLACE P1234567890 CARD 4321", "AMAZON MKTPLACE | - | - | AMAZON MKTPLACE"},
        // Eight digits are too few for a reference; only the card goes.
        {"ACME S12345678 CARD 4321", "ACME S12345678 | - | - | ACME"},
        // The card goes first, and then the date is at the end.
        {"NETFLIX.COM ON 03/14 CARD 5678", "NETFLIX.COM | - | - | NETFLIX"},
        {"ACME INSURANCE PPD ID: 1234567890", "ACME INSURANCE | - | - | ACME INSURANCE"},
        {"GUSTO PAYROLL WEB ID:9876", "GUSTO PAYROLL | - | - | GUSTO PAYROLL"},
        {"LYFT ON 3/14/2026 RIDE", "LYFT | - | - | LYFT"},
    });
}

TEST(MerchantText, StripWrappersNeverEmptiesAText) {
    EXPECT_EQ(MerchantText::stripWrappers("POS "), "POS");
    EXPECT_EQ(MerchantText::stripWrappers(" CARD 1234"), "CARD 1234");
    EXPECT_EQ(MerchantText::stripWrappers(" ON 03/14"), "ON 03/14");
    EXPECT_EQ(MerchantText::stripWrappers("CARD 1234"), "CARD 1234");
    EXPECT_EQ(MerchantText::stripWrappers(""), "");
}

TEST(MerchantText, KeyCutsReferenceNoiseFromTheSecondWordOn) {
    const struct {
        std::string_view text;
        std::string_view key;
    } cases[] = {
        {"1800FLOWERS 0021", "1800FLOWERS"},
        {"SHOP #A BC", "SHOP"},
        {"SHOP A1B2C3D4", "SHOP"},
        {"SHOP 123", "SHOP"},
        {"SHOP 12A3", "SHOP 12A3"},
        {"SHOP 12", "SHOP 12"},
        {"SHOP AB12CD", "SHOP"},
        {"SHOP AB12C", "SHOP AB12C"},
        {"SHOP ABCDEFGHI1", "SHOP"},
        {"SHOP ABCDEFGH1", "SHOP ABCDEFGH1"},
        {"SHOP A/B", "SHOP"},
        {"SHOP WWW.ACME", "SHOP"},
        {"SHOP A.B", "SHOP A B"},
        // Characters, not bytes nor UTF-16 units, are counted.
        {"SHOP ABÉ12", "SHOP AB 12"},
        {"SHOP 😀😀😀😀😀😀😀😀1", "SHOP 1"},
        // Everything behind the first noise goes with it.
        {"BLUE BOTTLE #1234 OAKLAND CA", "BLUE BOTTLE"},
        {"AMZN MKTP US*2K3AB1CD0", "AMZN MKTP"},
        {"AMAZON.COM*MK1234 AMZN.COM/BILL WA", "AMAZON"},
        {"ABC*DEF", "ABC DEF"},
    };
    for (const auto& [text, key] : cases)
        EXPECT_EQ(MerchantText::makeKey(text), key) << text;
}

TEST(MerchantText, KeyDropsACountryThenAStateOnlyFromThreeWords) {
    const struct {
        std::string_view text;
        std::string_view key;
    } cases[] = {
        {"HOME DEPOT US", "HOME DEPOT"},
        {"DEPOT US", "DEPOT US"},
        {"THE HOME DEPOT USA", "THE HOME DEPOT"},
        {"CVS CA", "CVS CA"},
        {"WALGREENS STORE SEATTLE WA", "WALGREENS STORE SEATTLE"},
        {"TARGET STORE CA US", "TARGET STORE"},
        {"TARGET STORE US CA", "TARGET STORE US"},
        {"TARGET US CA", "TARGET US"},
        {"ACME STORE PR", "ACME STORE"},
        {"ACME STORE ZZ", "ACME STORE ZZ"},
        {"ACME STORE UK", "ACME STORE UK"},
    };
    for (const auto& [text, key] : cases)
        EXPECT_EQ(MerchantText::makeKey(text), key) << text;
}

TEST(MerchantText, KeyKeepsOnlyLettersDigitsAndAmpersands) {
    const struct {
        std::string_view text;
        std::string_view key;
    } cases[] = {
        {"MCDONALD'S", "MCDONALDS"},
        {"MCDONALD\u2019S", "MCDONALDS"},
        {"AT&T", "AT&T"},
        {"H-E-B", "H E B"},
        {"ACME.COM", "ACME"},
        {"ACME.NET BILLING", "ACME BILLING"},
        {"ACME.COM.AU", "ACME AU"},
        {"ACME.COMPANY", "ACME COMPANY"},
        {"SHOP ACME.COM BILLING", "SHOP"},
        {"CAFÉ  NOIR", "CAF NOIR"},
        {"*** --- !!!", ""},
        {"", ""},
    };
    for (const auto& [text, key] : cases)
        EXPECT_EQ(MerchantText::makeKey(text), key) << text;
}

TEST(MerchantText, KeyFallsBackToTheLettersOfTheDescription) {
    expectDescriptions({
        {"1234 5678", "1234 5678 | - | - | 1234"},
        {"*** --- !!!", "*** --- !!! | - | - | "},
        {"", " | - | - | "},
        // Every word of the key is noise, but the description has letters.
        {"--- #12AB", "--- #12AB | - | - | AB"},
        {"PAYPAL *---", "PAYPAL *--- | PayPal | --- | PAYPAL"},
    });
}

TEST(MerchantText, TitleCaseKeepsOnlyShortInitialisms) {
    const struct {
        std::string_view text;
        std::string_view title;
    } cases[] = {
        {"BLUE BOTTLE", "Blue Bottle"},
        {"CVS KFC BBQ TJ X", "CVS KFC BBQ TJ X"},
        {"ATM", "Atm"},
        {"MY", "My"},
        {"CVSX", "Cvsx"},
        {"7ELEVEN", "7eleven"},
        {"AT&T", "At&t"},
        {"cvs", "Cvs"},
        {"  BLUE   BOTTLE ", "Blue Bottle"},
        {"ÉCOLE ÑANDÚ", "École Ñandú"},
        {"", ""},
    };
    for (const auto& [text, title] : cases)
        EXPECT_EQ(MerchantText::titleCase(text), title) << text;
    EXPECT_EQ(MerchantText("CVS/PHARMACY #1234").displayName(), "CVS Pharmacy");
}

TEST(MerchantText, PaymentServicesHaveOneCaptureEach) {
    const auto& services = MerchantText::paymentServices();
    std::string names;
    for (const auto& service : services) {
        names += service.name + ";";
        ASSERT_NE(service.regex, nullptr) << service.name;
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(service.regex->matcher(status));
        ASSERT_TRUE(U_SUCCESS(status)) << service.name;
        EXPECT_EQ(matcher->groupCount(), 1) << service.name;
    }
    EXPECT_EQ(names, "PayPal;Venmo;Cash App;Zelle;Google;Apple Cash;");
}

TEST(MerchantText, EqualTextsAreOneSetElement) {
    std::unordered_set<MerchantText> texts{
        MerchantText("PAYPAL *SPOTIFY"), MerchantText("paypal  *spotify"), MerchantText("SPOTIFY")};
    EXPECT_EQ(texts.size(), 2u);
    EXPECT_NE(MerchantText("PAYPAL *SPOTIFY"), MerchantText("PP *SPOTIFY"));
}

TEST(MerchantText, ThreadsReadDescriptionsWithoutSharingMatchState) {
    const std::vector<std::string> raws = {
        "Purchase authorized on 03/14 SQ *Blue Bottle #1234 Oakland CA Card 1234",
        "PAYPAL *SPOTIFY",
        "POS DEBIT POS PURCHASE ACH DEBIT APPLE PAY STORE",
        "AMAZON.COM*MK1234 AMZN.COM/BILL WA",
        "Zelle payment from Jane Doe 88271234",
        "ACME INSURANCE PPD ID: 1234567890",
    };
    std::vector<MerchantText> expected;
    for (const auto& raw : raws)
        expected.emplace_back(raw);

    std::vector<int> mismatches(4, 0);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < mismatches.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 300; ++round) {
                for (std::size_t i = 0; i < raws.size(); ++i) {
                    const auto at = (i + t) % raws.size();
                    mismatches[t] += MerchantText(raws[at]) != expected[at];
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(mismatches, std::vector<int>(mismatches.size(), 0));
}

}  // namespace
}  // namespace copperwick

namespace copperwick {
namespace {

// The ASCII shortcut of normalize must read every byte as the general path does.
TEST(MerchantTextNormalize, AsciiShortcutAgreesWithTheGeneralPath) {
    std::string every;
    for (int c = 1; c < 0x80; ++c)
        every += static_cast<char>(c);
    for (const std::string& text :
         {every, std::string(" \t lower  case\r\n\x0b\x0c end "), std::string("a\x1f b")}) {
        const std::string general = MerchantText::normalize(text + " \u00E9");
        EXPECT_EQ(MerchantText::normalize(text) + " \u00C9", general) << text;
    }
}

}  // namespace
}  // namespace copperwick
