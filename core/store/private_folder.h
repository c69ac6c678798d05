#pragma once

// Folders and files that hold private financial data: the data folder, its
// backups, and the temporary files a copy is written under before it takes
// its name. Nobody but the person who owns them may read them.

#include <filesystem>
#include <string_view>

namespace copperwick {

// Creates `folder` and any missing parents with permissions 0700. A folder
// that already exists is made 0700 too when it is the person's own, unless it
// is a shared place with the sticky bit, such as /tmp given on the command
// line. Throws FileError in plain words.
void createPrivateFolder(const std::filesystem::path& folder);

// Makes an existing file of the person's 0600; anything else is left alone.
void makeFilePrivate(const std::filesystem::path& file);

// Forces a file's or folder's content to the disk. False when it couldn't.
bool syncPath(const std::filesystem::path& path);

// A new, empty file of mode 0600 under a name nobody else has, in `folder`:
// "." + `stem` + "-" + random + ".partial". It is held with an advisory lock
// while the object lives, so that removeAbandonedFiles never takes a copy
// another program is still writing, and it is removed at the end unless
// published. Throws FileError. Not copyable.
class TemporaryFile {
  public:
    TemporaryFile(const std::filesystem::path& folder, std::string_view stem);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

    // Syncs the file, then gives it `target`'s name, replacing what is there,
    // and syncs the folder. Throws FileError; the temporary stays for the
    // destructor to remove.
    void replace(const std::filesystem::path& target);
    // Like replace, but never over an existing name: false when `target` is
    // taken, and the temporary stays.
    [[nodiscard]] bool publishAs(const std::filesystem::path& target);

  private:
    std::filesystem::path m_path;
    int m_lock = -1;
    bool m_published = false;
};

// Removes what writers killed halfway left in `folder`: ".…partial" files and
// the journals SQLite kept beside them, unless another program still holds
// them. Failures are passed over.
void removeAbandonedFiles(const std::filesystem::path& folder);

}  // namespace copperwick
