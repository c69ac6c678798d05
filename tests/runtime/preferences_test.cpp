#include "runtime/preferences.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <boost/json/parse.hpp>

#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;
namespace keys = preference_keys;

using testing::readFile;
using testing::TempFolder;
using testing::writeFile;

fs::perms modeOf(const fs::path& path) {
    return fs::status(path).permissions() & fs::perms::all;
}

// Sets an environment variable for one scope and puts the old value back.
class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const char* value) : m_name(name) {
        if (const char* old = std::getenv(name))
            m_old = old;
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedEnvironment() {
        if (m_old)
            setenv(m_name, m_old->c_str(), 1);
        else
            unsetenv(m_name);
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    const char* m_name;
    std::optional<std::string> m_old;
};

TEST(Preferences, ValuesSurviveIntoANewInstance) {
    TempFolder temp;
    const fs::path file = Preferences::liveFile(temp.path() / "Copperwick");
    {
        Preferences preferences(file);
        preferences.set(keys::aiEnabled, true);
        preferences.set(keys::aiAutoFile, false);
        // A string literal once chose the bool overload and was saved as true.
        preferences.set(keys::appearanceSkin, "copper");
        preferences.set(keys::archiveFolder, "/home/robin/Statements \"2026\"");
        preferences.set(keys::pdfReportStyle, "plain");
        preferences.remove(keys::pdfReportStyle);
        EXPECT_EQ(preferences.boolValue(keys::aiEnabled), true);
    }
    const Preferences reopened(file);
    EXPECT_EQ(reopened.boolValue(keys::aiEnabled), true);
    EXPECT_EQ(reopened.boolValue(keys::aiAutoFile), false) << "false must not read as absent";
    EXPECT_EQ(reopened.stringValue(keys::appearanceSkin), "copper");
    EXPECT_EQ(reopened.stringValue(keys::archiveFolder), "/home/robin/Statements \"2026\"");
    EXPECT_EQ(reopened.stringValue(keys::pdfReportStyle), std::nullopt);
    EXPECT_EQ(reopened.boolValue(keys::aiTidyNames), std::nullopt);
}

TEST(Preferences, FileAndFolderArePrivate) {
    TempFolder temp;
    const fs::path folder = temp.path() / "config" / "Copperwick";
    Preferences preferences(Preferences::liveFile(folder));
    preferences.set(keys::aiEnabled, true);
    EXPECT_EQ(modeOf(preferences.file()), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(modeOf(folder), fs::perms::owner_all);
    EXPECT_EQ(modeOf(temp.path() / "config"), fs::perms::owner_all);
    // The temporary file of an atomic write is gone.
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST(Preferences, ReadsNothingUntilFirstAskedAndWritesNothingOnReads) {
    TempFolder temp;
    const fs::path folder = temp.path() / "Copperwick";
    const Preferences preferences(Preferences::demoFile(folder));
    // Written after construction by someone else: a lazy reader still sees it.
    fs::create_directory(folder);
    writeFile(preferences.file(), R"({"Copperwick.aiEnabled": true})");
    EXPECT_EQ(preferences.boolValue(keys::aiEnabled), true);

    const Preferences elsewhere(Preferences::liveFile(temp.path() / "Missing"));
    EXPECT_EQ(elsewhere.stringValue(keys::appearanceMode), std::nullopt);
    EXPECT_FALSE(fs::exists(temp.path() / "Missing"));
}

TEST(Preferences, DamagedFileReadsEmptyAndIsReplacedByTheNextWrite) {
    TempFolder temp;
    for (const char* damaged :
         {"{\"Copperwick.aiEnabled\": tru", "[true]", "\"text\"", "", "\xFF"}) {
        const fs::path file = temp.path() / "preferences.json";
        writeFile(file, damaged);
        Preferences preferences(file);
        EXPECT_EQ(preferences.boolValue(keys::aiEnabled), std::nullopt) << damaged;
        preferences.set(keys::aiAutoSuggest, true);
        EXPECT_EQ(Preferences(file).boolValue(keys::aiAutoSuggest), true) << damaged;
        EXPECT_TRUE(boost::json::parse(readFile(file)).is_object()) << damaged;
    }
}

TEST(Preferences, KeysOfOtherBuildsSurviveAWrite) {
    TempFolder temp;
    const fs::path file = temp.path() / "preferences.json";
    writeFile(file, R"({"Copperwick.future.v9": {"a": [1, 2]}, "Copperwick.aiModel": "small"})");
    Preferences preferences(file);
    preferences.set(keys::aiEnabled, false);
    preferences.remove(keys::aiModel);
    const auto written = boost::json::parse(readFile(file));
    EXPECT_EQ(written, boost::json::parse(R"({"Copperwick.future.v9": {"a": [1, 2]},
                                              "Copperwick.aiEnabled": false})"));
}

TEST(Preferences, WriteDoesNotUndoAnotherInstancesChangeToOtherKeys) {
    TempFolder temp;
    const fs::path file = temp.path() / "preferences.json";
    Preferences first(file);
    Preferences second(file);
    EXPECT_EQ(first.boolValue(keys::aiEnabled), std::nullopt);  // caches the empty file
    second.set(keys::appearanceMode, "dark");
    first.set(keys::aiEnabled, true);
    const Preferences reopened(file);
    EXPECT_EQ(reopened.stringValue(keys::appearanceMode), "dark");
    EXPECT_EQ(reopened.boolValue(keys::aiEnabled), true);
}

TEST(Preferences, ValueOfTheWrongTypeReadsAsAbsent) {
    TempFolder temp;
    const fs::path file = temp.path() / "preferences.json";
    writeFile(file, R"({"Copperwick.aiEnabled": "yes", "Copperwick.appearance.skin.v1": true,
                        "Copperwick.aiAutoFile": 1, "Copperwick.appearance.mode.v1": null})");
    const Preferences preferences(file);
    EXPECT_EQ(preferences.boolValue(keys::aiEnabled), std::nullopt);
    EXPECT_EQ(preferences.stringValue(keys::appearanceSkin), std::nullopt);
    EXPECT_EQ(preferences.boolValue(keys::aiAutoFile), std::nullopt);
    EXPECT_EQ(preferences.stringValue(keys::appearanceMode), std::nullopt);
    // The key itself reads by its own type.
    EXPECT_EQ(preferences.stringValue(keys::aiEnabled), "yes");
}

TEST(Preferences, StandardFolderFollowsXdgAndIgnoresRelativePaths) {
    {
        const ScopedEnvironment config("XDG_CONFIG_HOME", "/srv/robin/config");
        EXPECT_EQ(Preferences::standardFolder(), fs::path("/srv/robin/config/Copperwick"));
    }
    const ScopedEnvironment home("HOME", "/srv/robin");
    for (const char* ignored : {"relative/config", "", static_cast<const char*>(nullptr)}) {
        const ScopedEnvironment config("XDG_CONFIG_HOME", ignored);
        EXPECT_EQ(Preferences::standardFolder(), fs::path("/srv/robin/.config/Copperwick"))
            << (ignored ? ignored : "unset");
    }
    EXPECT_EQ(Preferences::liveFile("/c"), fs::path("/c/preferences.json"));
    EXPECT_EQ(Preferences::demoFile("/c"), fs::path("/c/Copperwick.Demo.json"));
}

}  // namespace
}  // namespace copperwick
