#include "core/presentation/merchant_icons.h"

#include <thread>
#include <unordered_set>

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;
using Tone = MerchantIconDescriptor::Tone;
using testing::TempFolder;
using testing::writeFile;

constexpr auto kExpense = TransactionKind::expense;
constexpr auto kIncome = TransactionKind::income;
constexpr auto kTransfer = TransactionKind::transfer;

// A bundle laid out as installed: the two folders, each with its catalog.
class Bundle {
  public:
    Bundle(const std::string& prepared, const std::string& brands) {
        fs::create_directories(path() / "PreparedMerchantIcons");
        fs::create_directories(path() / "MerchantIcons");
        writeFile(path() / "PreparedMerchantIcons" / "catalog.json", prepared);
        writeFile(path() / "MerchantIcons" / "catalog.json", brands);
    }

    [[nodiscard]] fs::path path() const {
        return m_temp.path() / "Copperwick_CopperwickCore.bundle";
    }

  private:
    TempFolder m_temp;
};

const char* const kPrepared = R"([
    {"asset": "prepared-university", "names": ["State University Bursar"]},
    {"asset": "prepared-diploma", "names": ["Parchment", "Shared Name"]}
])";

const char* const kBrands = R"([
    {"asset": "target", "names": ["Target", "TARGET.COM"]},
    {"asset": "trader-joes", "names": ["Trader Joe’s"]},
    {"asset": "shared-brand", "names": ["shared name"]},
    {"asset": "venmo-lookalike", "names": ["Venmo"]}
])";

std::optional<std::string> logoOf(const MerchantIconCatalog& catalog, std::string_view name,
                                  std::optional<TransactionKind> kind = kExpense) {
    return catalog.descriptor(name, std::nullopt, kind).logo;
}

TEST(MerchantIconCatalog, FoldsCaseDiacriticsQuotesAndSpaces) {
    EXPECT_EQ(MerchantIconCatalog::fold("Café"), "cafe");
    // "é" as "e" and a combining accent folds the same as the single letter.
    EXPECT_EQ(MerchantIconCatalog::fold("CAFE\u0301"), "cafe");
    EXPECT_EQ(MerchantIconCatalog::fold("  Trader\t Joe’s\n"), "trader joe's");
    EXPECT_EQ(MerchantIconCatalog::fold("Crème Brûlée"), "creme brulee");
    // Decomposing to find the accents must not leave Hangul in pieces.
    EXPECT_EQ(MerchantIconCatalog::fold("한국 Mart"), "한국 mart");
    EXPECT_EQ(MerchantIconCatalog::fold(""), "");
    EXPECT_EQ(MerchantIconCatalog::fold(" \t "), "");
}

TEST(MerchantIconCatalog, InitialsAreTheFirstCharactersOfTwoWords) {
    const MerchantIconCatalog catalog(std::nullopt);
    const auto initials = [&catalog](std::string_view name) {
        return catalog.descriptor(name, std::nullopt, std::nullopt).initials;
    };
    EXPECT_EQ(initials("blue bottle coffee"), "BB");
    EXPECT_EQ(initials("7-Eleven"), "7E");
    EXPECT_EQ(initials("Joe's"), "JS");
    EXPECT_EQ(initials("  --Netflix--  "), "N");
    EXPECT_EQ(initials("!!! ***"), "?");
    EXPECT_EQ(initials(""), "?");
    // A letter is what a person sees: not the first byte of "É", nor an "e"
    // without the accent that follows it.
    EXPECT_EQ(initials("école normale"), "ÉN");
    EXPECT_EQ(initials("e\u0301cole normale"), "E\u0301N");
    EXPECT_EQ(initials("ßtudio"), "SS");
}

TEST(MerchantIconCatalog, ZelleIsFoundAsAWordOnlyAndServicesByTheirNames) {
    const MerchantIconCatalog catalog(std::nullopt);
    EXPECT_EQ(logoOf(catalog, "Zelle Pay"), "zelle");
    EXPECT_EQ(logoOf(catalog, "ZELLEPAY"), "zelle");
    EXPECT_EQ(logoOf(catalog, "Payment via Zelle to Casey", kTransfer), "zelle");
    EXPECT_EQ(logoOf(catalog, "Zelleri"), std::nullopt);

    EXPECT_EQ(logoOf(catalog, "Venmo"), "venmo");
    EXPECT_EQ(logoOf(catalog, "cash  app"), "cashapp");
    EXPECT_EQ(logoOf(catalog, "PAYPAL"), "paypal");
    EXPECT_EQ(logoOf(catalog, "Apple Cash", kTransfer), "consumer-apple-cash");
    // The whole name, not a word of it.
    EXPECT_EQ(logoOf(catalog, "Venmo Reimbursement"), std::nullopt);
}

TEST(MerchantIconCatalog, SymbolsComeFromTheCategoryOrTheDirectory) {
    const MerchantIconCatalog catalog(std::nullopt);
    const auto expectBadge = [&catalog](std::string_view name,
                                        std::optional<std::string_view> category,
                                        std::optional<TransactionKind> kind,
                                        std::optional<std::string> symbol, Tone tone) {
        const MerchantIconDescriptor badge = catalog.descriptor(name, category, kind);
        EXPECT_EQ(badge.symbol, symbol) << name;
        EXPECT_EQ(badge.tone, tone) << name;
    };
    expectBadge("Corner Shop", "Groceries", kExpense, "basket.fill", Tone::sage);
    expectBadge("Corner Shop", "PERSONAL  CARE", kExpense, "sparkles", Tone::terracotta);
    expectBadge("Corner Shop", "Housing", std::nullopt, "house.fill", Tone::forest);
    // No category filed: the directory's category for the name, in any case.
    expectBadge("Safeway", std::nullopt, kExpense, "basket.fill", Tone::sage);
    expectBadge("SEPHORA", std::nullopt, kExpense, "sparkles", Tone::terracotta);
    // A filed category wins over the directory's.
    expectBadge("Safeway", "Travel", kExpense, "airplane", Tone::blue);
    // Categories without a symbol: the tone tells money in from the rest.
    expectBadge("Example Design Co", "Salary", kIncome, std::nullopt, Tone::forest);
    expectBadge("Example Design Co", "Salary", kExpense, std::nullopt, Tone::neutral);
    expectBadge("Petco", std::nullopt, kExpense, std::nullopt, Tone::neutral);
    expectBadge("Nobody Known", std::nullopt, std::nullopt, std::nullopt, Tone::neutral);
}

TEST(MerchantIconCatalog, TheDemoMerchantsHaveTheirOwnSymbols) {
    const MerchantIconCatalog catalog(std::nullopt);
    const std::array<std::pair<const char*, const char*>, 11> demo{{
        {"Example Activities", "star.fill"},
        {"Sample Books", "book.closed.fill"},
        {"Example Services", "briefcase.fill"},
        {"Sample Goods", "bag.fill"},
        {"Example Bus", "bus.fill"},
        {"Sample Transit", "tram.fill"},
        {"Example Kitchen", "fork.knife"},
        {"Sample Lunch", "takeoutbag.and.cup.and.straw.fill"},
        {"Example Café", "cup.and.saucer.fill"},
        {"Sample Market", "basket.fill"},
        {"Sample Property Rent", "house.fill"},
    }};
    for (const auto& [name, symbol] : demo) {
        // Their own symbol wins over whatever category they were filed under.
        EXPECT_EQ(catalog.descriptor(name, "Utilities", kExpense).symbol, symbol) << name;
    }
    EXPECT_EQ(catalog.descriptor("Example Bus", std::nullopt, kTransfer).symbol,
              "arrow.left.arrow.right");
}

TEST(MerchantIconCatalog, ATransferNeverWearsACategorySymbol) {
    const Bundle bundle(kPrepared, kBrands);
    const MerchantIconCatalog catalog(bundle.path());
    const MerchantIconDescriptor badge = catalog.descriptor("Target", "Shopping", kTransfer);
    EXPECT_EQ(badge.symbol, "arrow.left.arrow.right");
    EXPECT_EQ(badge.tone, Tone::neutral);
    // A brand is no one's payment; a transfer shows a person or a purpose.
    EXPECT_EQ(badge.logo, "prepared-person-payment");
    EXPECT_EQ(logoOf(catalog, "Transcript request", kTransfer), "prepared-diploma");
    EXPECT_EQ(logoOf(catalog, "Parchment", kTransfer), "prepared-diploma");
    EXPECT_EQ(logoOf(catalog, "Casey Example", kTransfer), "prepared-person-payment");
    // Nor the symbol of the category the directory gives a name it knows.
    EXPECT_EQ(catalog.descriptor("Safeway", std::nullopt, kTransfer).symbol,
              "arrow.left.arrow.right");
}

TEST(MerchantIconCatalog, BrandsAreFoundPastAStoreNumber) {
    const Bundle bundle(kPrepared, kBrands);
    const MerchantIconCatalog catalog(bundle.path());
    EXPECT_EQ(logoOf(catalog, "Target Store #1234"), "target");
    EXPECT_EQ(logoOf(catalog, "TARGET STORE 0042"), "target");
    EXPECT_EQ(logoOf(catalog, "Target #12B"), "target");
    EXPECT_EQ(logoOf(catalog, "Target 00012345"), "target");
    EXPECT_EQ(logoOf(catalog, "target.com"), "target");
    EXPECT_EQ(logoOf(catalog, "TRADER JOE'S"), "trader-joes");
    // Two digits are part of a name ("Target 99"), not a branch.
    EXPECT_EQ(logoOf(catalog, "Target 99"), std::nullopt);
    EXPECT_EQ(logoOf(catalog, "Targeted Ads"), std::nullopt);
    // Only a trailing number is cut.
    EXPECT_EQ(logoOf(catalog, "Target #12 Downtown"), std::nullopt);

    // The prepared list comes first and keeps a name both lists claim.
    EXPECT_EQ(logoOf(catalog, "Shared Name"), "prepared-diploma");
    // A service's own mark beats a brand of the same name.
    EXPECT_EQ(logoOf(catalog, "Venmo"), "venmo");
    // Without a brand, the purpose of the payment.
    EXPECT_EQ(logoOf(catalog, "County Teacher Background  Check"),
              "prepared-teacher-background-check");
    EXPECT_EQ(logoOf(catalog, "Spring Donation Drive"), "prepared-donation");
    EXPECT_EQ(logoOf(catalog, "Universitya de Lisboa"), "prepared-university");
    EXPECT_EQ(logoOf(catalog, "State University Bursar"), "prepared-university");
}

TEST(MerchantIconCatalog, LogoFilesAreLookedForInTheirOwnFolder) {
    const Bundle bundle(kPrepared, kBrands);
    const MerchantIconCatalog catalog(bundle.path());
    EXPECT_EQ(catalog.logoURL("target"), std::nullopt);
    writeFile(bundle.path() / "MerchantIcons" / "target.png", "png");
    writeFile(bundle.path() / "PreparedMerchantIcons" / "prepared-diploma.png", "png");
    EXPECT_EQ(catalog.logoURL("target"), bundle.path() / "MerchantIcons" / "target.png");
    EXPECT_EQ(catalog.logoURL("prepared-diploma"),
              bundle.path() / "PreparedMerchantIcons" / "prepared-diploma.png");
    // A prepared asset is never taken from the brands' folder.
    writeFile(bundle.path() / "MerchantIcons" / "prepared-donation.png", "png");
    EXPECT_EQ(catalog.logoURL("prepared-donation"), std::nullopt);

    EXPECT_EQ(MerchantIconCatalog(std::nullopt).logoURL("target"), std::nullopt);
    EXPECT_EQ(MerchantIconCatalog(bundle.path() / "missing").logoURL("target"), std::nullopt);
}

TEST(MerchantIconCatalog, ABrokenCatalogMeansNoBrandsNotAnError) {
    const std::array<const char*, 5> broken{
        "not json at all",
        R"({"asset": "target", "names": ["Target"]})",
        R"([{"asset": "target", "names": ["Target"]}, {"asset": "walmart"}])",
        R"([{"asset": "target", "names": ["Target", 7]}])",
        "",
    };
    for (const char* brands : broken) {
        const Bundle bundle(kPrepared, brands);
        const MerchantIconCatalog catalog(bundle.path());
        EXPECT_EQ(logoOf(catalog, "Target"), std::nullopt) << brands;
        // The other list is read all the same.
        EXPECT_EQ(logoOf(catalog, "Parchment"), "prepared-diploma") << brands;
    }
    {
        TempFolder empty;
        const MerchantIconCatalog catalog(empty.path());
        EXPECT_EQ(logoOf(catalog, "Target"), std::nullopt);
        EXPECT_EQ(catalog.descriptor("Target", std::nullopt, kExpense).symbol, "bag.fill");
    }
}

TEST(MerchantIconCatalog, ATransactionIsNamedAsReportsNameIt) {
    testing::LedgerBuilder builder;
    const Uuid account = builder.account("Checking");
    const Uuid merchant = builder.merchant("Trader Joe's", "Groceries");
    const Uuid filed = builder.transaction(account, "TRADER JOE S #552 OAKLAND CA", -4210);
    builder.change(filed, [&](LedgerTransaction& t) {
        t.merchantID = merchant;
        t.categoryID = builder.category("Dining");
        t.kind = kExpense;
    });
    const Uuid unfiled = builder.transaction(account, "POS PURCHASE BLUE BOTTLE COFFEE 0042", -650);
    const Uuid transfer = builder.transaction(account, "ONLINE TRANSFER TO SAVINGS", -10000);
    builder.change(transfer, [&](LedgerTransaction& t) {
        t.kind = kTransfer;
        t.categoryID = builder.category("Dining");
    });

    const Bundle bundle(kPrepared, kBrands);
    const MerchantIconCatalog catalog(bundle.path());
    const Ledger& ledger = builder.ledger();

    const MerchantIconDescriptor joes = catalog.descriptor(*ledger.transaction(filed), ledger);
    EXPECT_EQ(joes.logo, "trader-joes");
    EXPECT_EQ(joes.initials, "TJ");
    // The transaction's own category, not its merchant's.
    EXPECT_EQ(joes.symbol, "fork.knife");

    const MerchantIconDescriptor coffee = catalog.descriptor(*ledger.transaction(unfiled), ledger);
    EXPECT_EQ(coffee.initials, "BB");
    EXPECT_EQ(coffee.symbol, std::nullopt);
    EXPECT_EQ(coffee.logo, std::nullopt);

    const MerchantIconDescriptor moved = catalog.descriptor(*ledger.transaction(transfer), ledger);
    EXPECT_EQ(moved.symbol, "arrow.left.arrow.right");
    EXPECT_EQ(moved.logo, "prepared-person-payment");

    // Equal badges are one badge to a cache of drawn images.
    const std::unordered_set<MerchantIconDescriptor> drawn{joes, coffee, moved, joes};
    EXPECT_EQ(drawn.size(), 3u);
}

TEST(MerchantIconCatalog, TheSharedCatalogIsLoadedOnceWhoeverAsksFirst) {
    std::array<const MerchantIconCatalog*, 4> seen{};
    {
        std::vector<std::jthread> threads;
        for (auto& slot : seen)
            threads.emplace_back([&slot] { slot = &MerchantIconCatalog::shared(); });
    }
    for (const MerchantIconCatalog* catalog : seen)
        EXPECT_EQ(catalog, &MerchantIconCatalog::shared());
    EXPECT_EQ(MerchantIconCatalog::shared().descriptor("Zelle Pay", std::nullopt, kTransfer).logo,
              "zelle");
}

}  // namespace
}  // namespace copperwick
