#include "core/import/layout_file.h"

#include <sys/stat.h>

#include <string>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "core/model/ledger.h"
#include "core/model/record_json.h"
#include "core/model/uuid.h"
#include "core/operations/entry_error.h"
#include "core/operations/upsert_profile.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::TempFolder;

constexpr std::string_view kUnavailable = "This transaction can no longer be changed.";

ImportProfile simple() {
    return ImportProfile{
        .id = "custom-1",
        .name = "Café \"A\"",
        .accountType = AccountType::checking,
        .requiredHeaders = {"Date", "Memo", "Amount"},
        .dateColumn = "Date",
        .descriptionColumn = "Memo",
        .amountColumn = "Amount",
        .fileNameHints = std::vector<std::string>{},
    };
}

// The record's own JSON with some fields replaced, as text.
std::string layoutText(const ImportProfile& profile, const boost::json::object& changes = {}) {
    auto object = record_json::toJSON(profile).as_object();
    for (const auto& [key, value] : changes)
        object[key] = value;
    return boost::json::serialize(object);
}

// The message of whatever importLayout throws, and whether it was an EntryError.
struct Refusal {
    bool entryError = false;
    std::string message;
};
Refusal refusalOf(std::string_view bytes) {
    try {
        (void)importLayout(bytes);
    } catch (const EntryError& error) {
        return {true, error.what()};
    } catch (const std::exception& error) {
        return {false, error.what()};
    }
    return {false, "imported"};
}

TEST(ExportLayout, WritesSortedKeysOnePerLine) {
    EXPECT_EQ(exportLayout(simple()),
              "{\n"
              "  \"accountType\" : \"checking\",\n"
              "  \"amountColumn\" : \"Amount\",\n"
              "  \"dateColumn\" : \"Date\",\n"
              "  \"descriptionColumn\" : \"Memo\",\n"
              "  \"fileNameHints\" : [],\n"
              "  \"forbiddenHeaders\" : [],\n"
              "  \"hasHeader\" : true,\n"
              "  \"headerlessColumns\" : [],\n"
              "  \"headerlessShape\" : \"none\",\n"
              "  \"id\" : \"custom-1\",\n"
              "  \"isBuiltIn\" : false,\n"
              "  \"name\" : \"Café \\\"A\\\"\",\n"
              "  \"pendingValues\" : [],\n"
              "  \"requiredHeaders\" : [\n"
              "    \"Date\",\n"
              "    \"Memo\",\n"
              "    \"Amount\"\n"
              "  ],\n"
              "  \"signConvention\" : \"positiveIsMoneyIn\"\n"
              "}\n");
}

// A taught European layout lost its number style on the way through a
// layout file, and read "12,50" as a refusal on the other computer.
TEST(ExportLayout, KeepsHowTheLayoutReadsNumbersAndLeavesOldFilesAsTheyWere) {
    ImportProfile european = simple();
    european.numberStyle = NumberStyle::decimalComma;
    european.signMarkerColumn = "S/H";
    european.moneyOutMarkers = std::vector<std::string>{"S"};
    const auto text = exportLayout(european);
    EXPECT_NE(text.find("  \"moneyOutMarkers\" : [\n    \"S\"\n  ],\n"), std::string::npos);
    EXPECT_NE(text.find("  \"numberStyle\" : \"decimalComma\",\n"), std::string::npos);
    EXPECT_NE(text.find("  \"signMarkerColumn\" : \"S/H\"\n"), std::string::npos);
    const auto imported = importLayout(text);
    EXPECT_EQ(imported.numberStyle, NumberStyle::decimalComma);
    EXPECT_EQ(imported.signMarkerColumn, "S/H");
    EXPECT_EQ(imported.moneyOutMarkers, std::vector<std::string>{"S"});

    // A file written before the style was kept reads as a decimal point.
    const auto old = importLayout(layoutText(simple()));
    EXPECT_EQ(old.numberStyle, std::nullopt);
    EXPECT_EQ(old.signMarkerColumn, std::nullopt);
    EXPECT_EQ(old.moneyOutMarkers, std::nullopt);
    // A style this program doesn't know is no layout at all.
    EXPECT_FALSE(refusalOf(layoutText(simple(), {{"numberStyle", "decimalDot"}})).entryError);
    EXPECT_NE(refusalOf(layoutText(simple(), {{"numberStyle", "decimalDot"}})).message, "imported");
}

TEST(ExportLayout, DecodesBackToTheSameLayout) {
    ImportProfile full = simple();
    full.postedDateColumn = "Posted";
    full.statusColumn = "State";
    full.pendingValues = {"Pending", "P"};
    full.dateLayout = DateLayout::dayMonthYear;
    full.currency = "EUR";
    full.signConvention = SignConvention::positiveIsMoneyOut;
    for (const auto& profile : {simple(), full}) {
        const auto text = exportLayout(profile);
        const auto decoded = record_json::decode<ImportProfile>(text);
        ASSERT_TRUE(decoded) << decoded.error;
        EXPECT_EQ(*decoded.value, profile);
        EXPECT_EQ(exportLayout(*decoded.value), text);
    }
}

TEST(ImportLayout, GivesATaughtLayoutWithAWholeNewUuid) {
    ImportProfile file = simple();
    file.isBuiltIn = true;
    file.id = "wells-fargo";
    const auto text = layoutText(file);

    const auto first = importLayout(text);
    const auto second = importLayout(text);
    EXPECT_FALSE(first.isBuiltIn);
    ASSERT_EQ(first.id.rfind("custom-", 0), 0u) << first.id;
    const auto uuid = first.id.substr(7);
    EXPECT_TRUE(Uuid::parse(uuid).has_value()) << first.id;
    // Importing the same file twice keeps two layouts.
    EXPECT_NE(first.id, second.id);

    ImportProfile rest = first;
    rest.id = file.id;
    rest.isBuiltIn = true;
    EXPECT_EQ(rest, file);
}

// An imported layout's id was lower-cased, so it no longer read as the UUID it
// was made from, unlike every other id the system writes.
TEST(ImportLayout, KeepsTheUuidsOwnTextForm) {
    Ledger ledger = Ledger::starter();
    const auto imported = importLayout(layoutText(simple()));
    (void)upsertProfile(ledger, imported);
    ASSERT_EQ(ledger.profiles.size(), 1u);
    const std::string& id = ledger.profiles[0].id;
    const auto uuid = Uuid::parse(id.substr(7));
    ASSERT_TRUE(uuid) << id;
    EXPECT_EQ(id, "custom-" + uuid->text());
}

TEST(ImportLayout, EmptyHintListSurvivesDistinctFromNoHints) {
    EXPECT_EQ(importLayout(exportLayout(simple())).fileNameHints, std::vector<std::string>{});
    ImportProfile unhinted = simple();
    unhinted.fileNameHints.reset();
    EXPECT_EQ(importLayout(exportLayout(unhinted)).fileNameHints, std::nullopt);
}

TEST(ImportLayout, RefusesFilesOverAMillionBytes) {
    const std::string text = layoutText(simple());
    const auto padded = [&](std::size_t size) {
        return text + std::string(size - text.size(), ' ');
    };
    EXPECT_NO_THROW((void)importLayout(padded(999'999)));
    EXPECT_NO_THROW((void)importLayout(padded(1'000'000)));
    const auto refusal = refusalOf(padded(1'000'001));
    EXPECT_TRUE(refusal.entryError);
    EXPECT_EQ(refusal.message, kUnavailable);
}

TEST(ImportLayout, DecodingFailuresReportTheDecodersOwnWords) {
    auto object = record_json::toJSON(simple()).as_object();
    object.erase("dateColumn");
    const std::string missingKey = boost::json::serialize(object);
    for (const std::string& bytes :
         {std::string("not a layout"), missingKey,
          layoutText(simple(), {{"signConvention", "negativeIsMoneyOut"}}),
          layoutText(simple(), {{"headerlessShape", "chase"}})}) {
        const auto refusal = refusalOf(bytes);
        EXPECT_FALSE(refusal.entryError) << bytes;
        const auto decoded = record_json::decode<ImportProfile>(bytes);
        ASSERT_FALSE(decoded.error.empty()) << bytes;
        EXPECT_EQ(refusal.message, decoded.error);
    }
    EXPECT_NO_THROW((void)importLayout(layoutText(simple(), {{"madeBy", "another build"}})));
}

TEST(ImportLayout, RefusesLayoutsThatCouldNeverReadAFile) {
    ImportProfile debitOnly = simple();
    debitOnly.amountColumn.reset();
    debitOnly.debitColumn = "Out";
    ImportProfile noHeaders = simple();
    noHeaders.requiredHeaders.clear();
    for (const auto& bytes :
         {layoutText(simple(), {{"name", ""}}), layoutText(simple(), {{"dateColumn", ""}}),
          layoutText(simple(), {{"descriptionColumn", ""}}), layoutText(debitOnly),
          layoutText(noHeaders)}) {
        const auto refusal = refusalOf(bytes);
        EXPECT_TRUE(refusal.entryError) << bytes;
        EXPECT_EQ(refusal.message, kUnavailable) << bytes;
    }
}

TEST(ImportLayout, AcceptsTheUnusualButWorkableLayouts) {
    {
        // Only a headerless shape can use it, but it is not refused.
        ImportProfile headerless = simple();
        headerless.hasHeader = false;
        headerless.requiredHeaders.clear();
        EXPECT_FALSE(importLayout(layoutText(headerless)).hasHeader);
    }
    {
        ImportProfile split = simple();
        split.amountColumn.reset();
        split.debitColumn = "Out";
        split.creditColumn = "In";
        EXPECT_EQ(importLayout(layoutText(split)).creditColumn, "In");
    }
    {
        ImportProfile both = simple();
        both.debitColumn = "Out";
        EXPECT_EQ(importLayout(layoutText(both)).amountColumn, "Amount");
    }
}

TEST(ImportRefusal, PutsTheReasonAfterTheColon) {
    EXPECT_EQ(importRefusal(EntryError(EntryError::Case::unavailable)),
              "Could not import that saved layout: This transaction can no longer be changed.");
    EXPECT_EQ(importRefusal(std::runtime_error("Not valid JSON: syntax error")),
              "Could not import that saved layout: Not valid JSON: syntax error");
}

TEST(LayoutFiles, WriteReplacesTheFileAndLeavesNothingElse) {
    TempFolder temp;
    const auto file = temp / "My bank.json";
    testing::writeFile(file, "old contents");
    writeLayoutFile(file, simple());

    EXPECT_EQ(testing::readFile(file), exportLayout(simple()));
    int entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(temp.path()))
        ++entries;
    EXPECT_EQ(entries, 1);
    struct stat info {};
    ASSERT_EQ(::stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0644u);

    const auto read = readLayoutFile(file);
    EXPECT_EQ(read.name, simple().name);
    EXPECT_NE(read.id, simple().id);
}

TEST(LayoutFiles, FailuresSayWhyInPlainWords) {
    TempFolder temp;
    try {
        writeLayoutFile(temp / "missing" / "layout.json", simple());
        FAIL() << "wrote into a missing folder";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "The folder " + (temp / "missing").string() + " doesn't exist.");
    }
    try {
        (void)readLayoutFile(temp / "absent.json");
        FAIL() << "read a missing file";
    } catch (const EntryError&) {
        FAIL() << "a missing file is not a refused layout";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "No such file or directory");
    }
}

TEST(LayoutFiles, FileOverTheLimitIsRefusedLikeAnInvalidLayout) {
    TempFolder temp;
    const auto file = temp / "huge.json";
    testing::writeFile(file, layoutText(simple()));
    std::filesystem::resize_file(file, kMaximumLayoutFileBytes + 1);
    EXPECT_THROW((void)readLayoutFile(file), EntryError);
}

}  // namespace
}  // namespace copperwick
