// The application's tests run in one QApplication per process, offscreen,
// with every XDG folder and the home folder in a temporary folder of their
// own, so that nothing a window does can reach the person's own files.

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <QApplication>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

int main(int argc, char** argv) {
    copperwick::testing::TempFolder home;
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
        const auto folder = home / name;
        std::filesystem::create_directories(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        setenv(name, folder.c_str(), 1);
    }
    setenv("HOME", home.path().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 0);

    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests for CTest needs no application (nor its start-up).
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
