#pragma once

// A fresh folder under the system's temporary directory, removed with
// everything in it when the test ends. Tests never touch the home folder.

#include <filesystem>
#include <fstream>
#include <string>

#include "core/model/uuid.h"

namespace copperwick::testing {

class TempFolder {
  public:
    TempFolder()
        : m_path(std::filesystem::temp_directory_path() /
                 ("copperwick-test-" + Uuid::random().text())) {
        std::filesystem::create_directories(m_path);
    }
    ~TempFolder() {
        std::error_code ignored;
        // A test may have left a read-only folder behind; open it up first.
        for (auto it = std::filesystem::recursive_directory_iterator(m_path, ignored);
             it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
        }
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return m_path / name;
    }

  private:
    std::filesystem::path m_path;
};

inline void writeFile(const std::filesystem::path& file, const std::string& contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

inline std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace copperwick::testing
