#pragma once

// Why the data file couldn't be opened or saved, in the words a person reads.
// Thrown by LedgerStore and BackupManager; the runtime catches it and shows
// what() in the message bar.

#include <stdexcept>
#include <string>

namespace copperwick {

class StoreError : public std::runtime_error {
  public:
    enum class Case {
        open,
        sql,
        newerVersion,
        // Another program saved to the file since this store read it; nothing
        // was written. The runtime reads the file again and redoes the change.
        changedElsewhere,
        // Another program held the file's write lock for longer than a save waits.
        busy,
    };

    // The file couldn't be opened; `detail` is SQLite's text, or ours.
    [[nodiscard]] static StoreError open(std::string detail);
    // A statement failed; `detail` is SQLite's text.
    [[nodiscard]] static StoreError sql(std::string detail);
    // The file was written by a build with a higher format number.
    [[nodiscard]] static StoreError newerVersion(int version);
    [[nodiscard]] static StoreError changedElsewhere();
    [[nodiscard]] static StoreError busy();

    [[nodiscard]] Case kind() const { return m_case; }
    [[nodiscard]] const std::string& detail() const { return m_detail; }
    [[nodiscard]] int version() const { return m_version; }

  private:
    StoreError(Case c, std::string detail, int version, const std::string& description)
        : std::runtime_error(description),
          m_case(c),
          m_detail(std::move(detail)),
          m_version(version) {}

    Case m_case;
    std::string m_detail;
    int m_version = 0;
};

// A folder or file operation failed; what() says which and why in plain words.
class FileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace copperwick
