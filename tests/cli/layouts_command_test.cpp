#include <string>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "core/import/layout_file.h"
#include "core/model/record_json.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::CommandResult;
using testing::TempFolder;
constexpr auto runWith = testing::runCommand;

constexpr std::string_view kLayout = R"({
  "id": "custom-from-elsewhere", "name": "Credit union", "accountType": "savings",
  "hasHeader": true, "requiredHeaders": ["Booked", "Payee", "Amount"],
  "forbiddenHeaders": [], "headerlessColumns": [], "headerlessShape": "none",
  "dateColumn": "Booked", "descriptionColumn": "Payee", "amountColumn": "Amount",
  "signConvention": "positiveIsMoneyOut", "pendingValues": [], "isBuiltIn": true
})";

class LayoutsCommand : public ::testing::Test {
  protected:
    CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (m_temp / "data").string()});
        return runWith(arguments);
    }
    boost::json::array listed() {
        const auto result = run({"--json", "layouts", "list"});
        EXPECT_EQ(result.code, 0) << result.err;
        return boost::json::parse(result.out).as_array();
    }
    std::string file(const std::string& name, std::string_view contents) {
        const auto path = m_temp / name;
        testing::writeFile(path, std::string(contents));
        return path.string();
    }

    TempFolder m_temp;
};

TEST_F(LayoutsCommand, ListShowsTheBuiltInLayoutsOfANewLedger) {
    const auto layouts = listed();
    ASSERT_EQ(layouts.size(), 16u);
    const auto& first = layouts[0].as_object();
    EXPECT_EQ(first.at("id").as_string(), "chase-checking");
    EXPECT_EQ(first.at("name").as_string(), "Chase checking or savings");
    EXPECT_EQ(first.at("accountType").as_string(), "checking");
    EXPECT_TRUE(first.at("isBuiltIn").as_bool());
    // Wells Fargo serves several account types, so it names none.
    EXPECT_FALSE(layouts[5].as_object().contains("accountType"));

    const auto text = run({"layouts", "list"});
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_EQ(text.out.substr(0, text.out.find('\n')),
              "chase-checking \u00B7 Chase checking or savings \u00B7 built in");
}

TEST_F(LayoutsCommand, ImportedLayoutIsKeptAsTaughtAndListedFirst) {
    const auto imported = run({"layouts", "import", file("union.json", kLayout)});
    ASSERT_EQ(imported.code, 0) << imported.err;
    EXPECT_EQ(imported.out, "Imported the layout \u201CCredit union\u201D.\n");

    const auto layouts = listed();
    ASSERT_EQ(layouts.size(), 17u);
    const auto& taught = layouts[0].as_object();
    const std::string id(taught.at("id").as_string());
    EXPECT_EQ(id.rfind("custom-", 0), 0u);
    EXPECT_NE(id, "custom-from-elsewhere");
    EXPECT_FALSE(taught.at("isBuiltIn").as_bool());
    EXPECT_EQ(taught.at("accountType").as_string(), "savings");

    const auto text = run({"layouts", "list"});
    EXPECT_EQ(text.out.substr(0, text.out.find('\n')), id + " \u00B7 Credit union \u00B7 taught");

    // A second import of the same file is a second layout.
    ASSERT_EQ(run({"layouts", "import", (m_temp / "union.json").string()}).code, 0);
    EXPECT_EQ(listed().size(), 18u);
}

TEST_F(LayoutsCommand, ExportWritesWhatImportReads) {
    ASSERT_EQ(run({"layouts", "import", file("union.json", kLayout)}).code, 0);
    const std::string id(listed()[0].as_object().at("id").as_string());

    const auto target = m_temp / "Credit union.json";
    const auto exported = run({"layouts", "export", id, target.string()});
    ASSERT_EQ(exported.code, 0) << exported.err;
    EXPECT_EQ(exported.out, "Saved Credit union.json.\n");

    const auto text = testing::readFile(target);
    const auto decoded = record_json::decode<ImportProfile>(text);
    ASSERT_TRUE(decoded) << decoded.error;
    EXPECT_EQ(decoded.value->id, id);
    EXPECT_EQ(text, exportLayout(*decoded.value));
    EXPECT_EQ(decoded.value->signConvention, SignConvention::positiveIsMoneyOut);
}

TEST_F(LayoutsCommand, ExportRefusesBuiltInAndUnknownLayouts) {
    for (const std::string id : {"wells-fargo", "custom-nothing"}) {
        const auto target = m_temp / (id + ".json");
        const auto result = run({"layouts", "export", id, target.string()});
        EXPECT_EQ(result.code, 1) << id;
        EXPECT_TRUE(result.out.empty()) << result.out;
        EXPECT_NE(result.err.find(id), std::string::npos) << result.err;
        EXPECT_FALSE(std::filesystem::exists(target)) << id;
    }
}

TEST_F(LayoutsCommand, ExportIntoAMissingFolderSaysWhy) {
    ASSERT_EQ(run({"layouts", "import", file("union.json", kLayout)}).code, 0);
    const std::string id(listed()[0].as_object().at("id").as_string());
    const auto result =
        run({"layouts", "export", id, (m_temp / "missing" / "layout.json").string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Couldn't save the file: The folder " + (m_temp / "missing").string() +
                              " doesn't exist.\n");
}

TEST_F(LayoutsCommand, RefusedImportChangesNothing) {
    std::string noAmount(kLayout);
    const std::string amountKey = "\"amountColumn\"";
    noAmount.replace(noAmount.find(amountKey), amountKey.size(), "\"checkNumberColumn\"");
    const auto invalid = run({"layouts", "import", file("bad.json", noAmount)});
    EXPECT_EQ(invalid.code, 1);
    EXPECT_EQ(invalid.err,
              "Could not import that saved layout: This transaction can no longer be changed.\n");

    const auto garbage = run({"layouts", "import", file("notes.json", "dear diary")});
    EXPECT_EQ(garbage.code, 1);
    EXPECT_EQ(garbage.err.rfind("Could not import that saved layout: Not valid JSON", 0), 0u)
        << garbage.err;

    EXPECT_EQ(listed().size(), 16u);
}

}  // namespace
}  // namespace copperwick::cli
