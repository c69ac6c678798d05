// The screen tests run in one QApplication for the whole program, offscreen,
// with the home folder and every XDG folder in a temporary folder of their
// own, so that nothing a screen does can reach the person's own files. A test
// program with a main of its own that already made the application keeps it.

#include <cstdlib>
#include <filesystem>
#include <memory>

#include <QApplication>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace {

class QtEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        if (QCoreApplication::instance())
            return;
        m_home = std::make_unique<copperwick::testing::TempFolder>();
        for (const char* name :
             {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
            const auto folder = *m_home / name;
            std::filesystem::create_directories(folder);
            std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
            setenv(name, folder.c_str(), 1);
        }
        setenv("HOME", m_home->path().c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        m_application = std::make_unique<QApplication>(m_argc, m_argv);
    }

    void TearDown() override {
        m_application.reset();
        m_home.reset();
    }

  private:
    int m_argc = 1;
    char m_name[16] = "app_rules_tests";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<copperwick::testing::TempFolder> m_home;
    std::unique_ptr<QApplication> m_application;
};

[[maybe_unused]] const auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace
