#include "app/shell/desktop_icon.h"

#include <sys/stat.h>

#include <QImage>

#include <gtest/gtest.h>

#include "runtime/preferences.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::ProcessResult;
using testing::readFile;
using testing::TempFolder;

// The real copperwick-app, with its XDG folders in `temp`.
ProcessResult showIcon(const TempFolder& temp, const std::string& value) {
    testing::ProcessOptions options;
    options.environment = {{"XDG_DATA_HOME", (temp / "data").string()},
                           {"XDG_CONFIG_HOME", (temp / "config").string()}};
    return testing::runProcess({COPPERWICK_APP_EXECUTABLE, "--show-finder-icon", value},
                               temp.path(), options, std::chrono::seconds(30));
}

std::optional<std::string> shownKey(const TempFolder& temp) {
    return Preferences(Preferences::liveFile(temp / "config" / "Copperwick"))
        .stringValue(preference_keys::appearanceFinderIconShown);
}

TEST(DesktopIcon, RefusesAnUnknownSkinWithStatusTwo) {
    // A misspelt skin fell through to a window instead of saying what was wrong.
    TempFolder temp;
    const auto result = showIcon(temp, "ocean");
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err, "Unknown skin ocean\n");
    EXPECT_FALSE(std::filesystem::exists(temp / "data"));
    EXPECT_FALSE(shownKey(temp));
}

TEST(DesktopIcon, ShowsTheSkinOnceAndNoneTakesItAway) {
    // Asking again for the skin already shown wrote the entry again, and
    // "none" left the old icon named in the desktop entry.
    TempFolder temp;
    const auto entry = temp / "data" / "applications" / "copperwick.desktop";
    const auto icon =
        temp / "data" / "icons" / "hicolor" / "256x256" / "apps" / "copperwick-sky.png";

    auto result = showIcon(temp, "sky");
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(QImage(QString::fromStdString(icon.string())).size(), QSize(256, 256));
    const std::string text = readFile(entry);
    EXPECT_NE(text.find("[Desktop Entry]\n"), std::string::npos);
    EXPECT_NE(text.find("\nIcon=" + icon.string() + "\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nExec=" COPPERWICK_APP_EXECUTABLE " %F\n"), std::string::npos) << text;
    EXPECT_EQ(shownKey(temp), "sky");

    struct stat before {};
    ASSERT_EQ(::stat(entry.c_str(), &before), 0);
    result = showIcon(temp, "sky");
    ASSERT_EQ(result.code, 0) << result.err;
    struct stat after {};
    ASSERT_EQ(::stat(entry.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino) << "the entry was written again";

    // Another skin replaces the one Icon line.
    ASSERT_EQ(showIcon(temp, "bordeaux").code, 0);
    const std::string replaced = readFile(entry);
    EXPECT_EQ(replaced.find("copperwick-sky.png"), std::string::npos) << replaced;
    EXPECT_NE(replaced.find("copperwick-bordeaux.png"), std::string::npos) << replaced;
    EXPECT_EQ(shownKey(temp), "bordeaux");

    result = showIcon(temp, "none");
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string cleared = readFile(entry);
    EXPECT_EQ(cleared.find("Icon="), std::string::npos) << cleared;
    EXPECT_NE(cleared.find("Name=Copperwick\n"), std::string::npos);
    EXPECT_FALSE(shownKey(temp));
}

TEST(DesktopIcon, KeepsWhatElseThePersonsEntrySays) {
    // Showing an icon replaced a person's own desktop entry with a new one.
    TempFolder temp;
    const auto entry = temp / "data" / "applications" / "copperwick.desktop";
    std::filesystem::create_directories(entry.parent_path());
    testing::writeFile(entry,
                       "[Desktop Entry]\nName=Budget\nIcon=old-icon\nExec=/opt/cw/copperwick-app\n"
                       "[Desktop Action Demo]\nName=Demo\nIcon=demo-icon\n");
    ASSERT_EQ(showIcon(temp, "slate").code, 0);
    const std::string text = readFile(entry);
    EXPECT_EQ(
        text,
        "[Desktop Entry]\nName=Budget\nIcon=" +
            (temp / "data" / "icons" / "hicolor" / "256x256" / "apps" / "copperwick-slate.png")
                .string() +
            "\nExec=/opt/cw/copperwick-app\n[Desktop Action Demo]\nName=Demo\nIcon=demo-icon\n");
}

TEST(DesktopIcon, FailsWithStatusOneWhenNothingCanBeWritten) {
    // A data folder that can't be written to still reported success.
    TempFolder temp;
    testing::writeFile(temp / "data", "a file where the folder should be");
    const auto result = showIcon(temp, "forest");
    EXPECT_EQ(result.code, 1);
    EXPECT_FALSE(shownKey(temp));
}

}  // namespace
}  // namespace copperwick
