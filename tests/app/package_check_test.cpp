#include "app/shell/package_check.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include "copperwick_version.h"
#include "tests/support/process.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::TempFolder;

TEST(PackageCheck, RunsTheDemoThroughEveryScreen) {
    // The self-check said nothing of a screen that failed to show, and left
    // no picture to look at.
    TempFolder temp;
    testing::ProcessOptions options;
    options.environment = {{"XDG_DATA_HOME", (temp / "data").string()},
                           {"XDG_CONFIG_HOME", (temp / "config").string()},
                           {"QT_QPA_PLATFORM", "offscreen"}};
    // A clean system's smoke test names a folder that isn't there yet; the
    // check used to fail for want of it.
    const auto resultFile = temp / "check" / "check.json";
    const auto result =
        testing::runProcess({COPPERWICK_APP_EXECUTABLE, "--check-package", resultFile.string()},
                            temp.path(), options, std::chrono::seconds(60));
    ASSERT_TRUE(result.exited) << result.err;
    EXPECT_EQ(result.code, 0) << result.err << testing::readFile(resultFile);

    const auto document =
        QJsonDocument::fromJson(QByteArray::fromStdString(testing::readFile(resultFile)));
    const QJsonObject root = document.object();
    EXPECT_TRUE(root["ok"].toBool());
    EXPECT_EQ(root["version"].toString().toStdString(), COPPERWICK_VERSION);
    QStringList names;
    for (const auto check : root["checks"].toArray()) {
        names << check.toObject()["name"].toString();
        EXPECT_TRUE(check.toObject()["ok"].toBool())
            << check.toObject()["detail"].toString().toStdString();
    }
    for (const char* name : {"window title", "sidebar rows", "demo workspace", "review count",
                             "section import", "section settings", "undo"})
        EXPECT_TRUE(names.contains(QString::fromUtf8(name))) << name;
    const QJsonArray screenshots = root["screenshots"].toArray();
    ASSERT_EQ(screenshots.size(), 8);
    EXPECT_EQ(screenshots[0].toString().toStdString(),
              (temp / "check" / "check-import.png").string());
    for (const auto picture : screenshots)
        EXPECT_TRUE(std::filesystem::file_size(picture.toString().toStdString()) > 1000);
    // The demo lived in a folder of its own, and took it away again.
    EXPECT_FALSE(std::filesystem::exists(temp / "data" / "Copperwick"));
}

}  // namespace
}  // namespace copperwick
