// Every command these tests run reads its preferences from a folder of the
// test run's own, never from the home folder: a local model set up there
// must never be asked about a test's ledger, and no test may change what a
// person set. Tests that need preferences of their own set the variable
// again and put it back.

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace copperwick::testing {
namespace {

class IsolatedPreferences : public ::testing::Environment {
  public:
    void SetUp() override {
        if (const char* before = std::getenv("XDG_CONFIG_HOME"))
            m_before = before;
        m_folder = std::make_unique<TempFolder>();
        ::setenv("XDG_CONFIG_HOME", (m_folder->path() / "config").c_str(), 1);
    }
    void TearDown() override {
        m_before ? ::setenv("XDG_CONFIG_HOME", m_before->c_str(), 1)
                 : ::unsetenv("XDG_CONFIG_HOME");
        m_folder.reset();
    }

  private:
    std::unique_ptr<TempFolder> m_folder;
    std::optional<std::string> m_before;
};

[[maybe_unused]] const auto* const kIsolated =
    ::testing::AddGlobalTestEnvironment(new IsolatedPreferences);

}  // namespace
}  // namespace copperwick::testing
