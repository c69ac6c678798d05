#include "core/import/file_analysis.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/import/import_analyzer.h"
#include "core/matching/merchant_text.h"

namespace copperwick {
namespace {

std::string show(std::optional<std::string_view> text) {
    return text ? "\"" + std::string(*text) + "\"" : "absent";
}

// Every text of a row, absent ones told apart from empty ones.
std::string describe(const ParsedRow& row) {
    std::ostringstream out;
    out << "raw " << show(row.rawText()) << ", description " << show(row.description())
        << ", merchant " << show(row.bankMerchant()) << ", category " << show(row.bankCategory())
        << ", check " << show(row.checkNumber()) << ", card " << show(row.cardIdentifier())
        << ", id " << show(row.externalID()) << ", normalized "
        << show(row.normalizedDescription());
    return out.str();
}

std::string describe(const ParsedRow::Texts& texts) {
    std::ostringstream out;
    out << "raw " << show(texts.rawText) << ", description " << show(texts.description)
        << ", merchant " << show(texts.bankMerchant) << ", category " << show(texts.bankCategory)
        << ", check " << show(texts.checkNumber) << ", card " << show(texts.cardIdentifier)
        << ", id " << show(texts.externalID) << ", normalized "
        << show(MerchantText::normalize(texts.description));
    return out.str();
}

ParsedRow rowWith(const ParsedRow::Texts& texts) {
    ParsedRow row;
    row.date = *LocalDate::make(2026, 3, 9);
    row.amount = -4512;
    row.setTexts(texts);
    return row;
}

TEST(ParsedRow, TextsReadBackAsTheyWereSet) {
    const std::string longText(20'000, 'x');
    const std::string longRaw = std::string(300, ',') + "FAR OUT";
    const std::vector<ParsedRow::Texts> cases = {
        // Every column standing in the raw text, the normalized description too.
        {.rawText = "03/09/2026,TRADER JOES,Groceries,1042,tx1",
         .description = "TRADER JOES",
         .bankMerchant = "TRADER JOES",
         .bankCategory = "Groceries",
         .checkNumber = "1042",
         .cardIdentifier = "Card ending 4421",
         .externalID = "tx1"},
        // Nothing standing in the raw text; a normalization that changes the text.
        {.rawText = "x",
         .description = "sq *blue  bottle",
         .bankMerchant = "Blue Bottle",
         .cardIdentifier = "Cardholder: DANA"},
        // Present but empty is not absent.
        {.rawText = "", .description = "", .bankMerchant = "", .externalID = ""},
        // Lengths and offsets that take more than one byte to write.
        {.rawText = longRaw,
         .description = longText,
         .bankCategory = "FAR OUT",
         .checkNumber = std::string_view(longRaw).substr(150, 130)},
        // The normalized text standing in the raw text, apart from the description.
        {.rawText = "a  b,A B", .description = "a  b"},
        {.rawText = "caf\xC3\xA9 \xC2\xA0x", .description = "caf\xC3\xA9 \xC2\xA0x"},
    };
    for (const auto& texts : cases) {
        const ParsedRow row = rowWith(texts);
        EXPECT_EQ(describe(row), describe(texts));
        EXPECT_EQ(row.fingerprint(),
                  ImportAnalyzer::fingerprint(row.date, row.amount, texts.description));
    }
}

TEST(ParsedRow, DefaultRowHasEmptyTextsAndAFingerprint) {
    const ParsedRow row;
    EXPECT_EQ(describe(row), describe(ParsedRow::Texts{}));
    EXPECT_EQ(row.fingerprint(), "1970-01-01|0|");
    ParsedRow given;
    given.setTexts({});
    EXPECT_EQ(row, given) << "no texts at all read as empty texts";
}

TEST(ParsedRow, CopiesOwnTheirTexts) {
    ParsedRow original =
        rowWith({.rawText = "a,b,c", .description = "b", .bankCategory = "c", .externalID = "z"});
    const std::string before = describe(original);
    ParsedRow copy = original;
    ParsedRow assigned;
    assigned = original;
    original.setTexts({.rawText = "other", .description = "other"});
    EXPECT_EQ(describe(copy), before);
    EXPECT_EQ(describe(assigned), before);

    ParsedRow& self = copy;
    copy = self;
    EXPECT_EQ(describe(copy), before);

    // Texts read from the row itself are still whole while the row replaces them.
    copy.setTexts({.rawText = copy.rawText(),
                   .description = copy.description(),
                   .bankCategory = copy.bankCategory(),
                   .externalID = copy.externalID()});
    EXPECT_EQ(describe(copy), before);

    const ParsedRow moved = std::move(assigned);
    EXPECT_EQ(describe(moved), before);
}

TEST(ParsedRow, EqualityComparesEveryValueAndText) {
    const ParsedRow::Texts texts{.rawText = "a,b", .description = "b", .bankMerchant = "a"};
    const ParsedRow row = rowWith(texts);
    EXPECT_EQ(row, rowWith(texts));

    auto other = row;
    other.occurrence = 2;
    EXPECT_NE(other, row);
    auto withoutMerchant = texts;
    withoutMerchant.bankMerchant.reset();
    EXPECT_NE(rowWith(withoutMerchant), row);
    withoutMerchant.bankMerchant = "";
    EXPECT_NE(rowWith(withoutMerchant), row) << "empty is not absent";
    auto otherRaw = texts;
    otherRaw.rawText = "a,b ";
    EXPECT_NE(rowWith(otherRaw), row);
}

}  // namespace
}  // namespace copperwick
