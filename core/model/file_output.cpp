#include "core/model/file_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <vector>

namespace copperwick {

namespace {

namespace fs = std::filesystem;

std::string folderText(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path().string() : std::string("this folder");
}

// The system's failure in words about this file; the system's own text for
// the rare ones, which are already plain enough ("Input/output error").
std::string reasonFor(int error, const fs::path& file) {
    switch (error) {
        case ENOENT:
            return "The folder " + folderText(file) + " doesn't exist.";
        case ENOTDIR:
            return "The way to " + file.string() + " goes through something that isn't a folder.";
        case EACCES:
        case EPERM:
            return "Copperwick isn't allowed to write in " + folderText(file) + ".";
        case EROFS:
            return folderText(file) + " is on a disk that can't be written to.";
        case ENOSPC:
        case EDQUOT:
            return "There isn't enough room on the disk for " + file.string() + ".";
        case EFBIG:
            return "The file is larger than this system allows.";
        case ENAMETOOLONG:
            return "The name " + file.string() + " is too long.";
        case EISDIR:
            return file.string() + " is a folder, not a file.";
        default:
            return std::generic_category().message(error) + ".";
    }
}

// What stands at the name now: absent for nothing (a new name) or a regular
// file, either of which may be written; otherwise the refusal.
enum class Target {
    absent,
    regularFile,
    refused,
};

Target inspect(const fs::path& file, std::string& refusal) {
    struct stat status {};
    if (::lstat(file.c_str(), &status) != 0) {
        if (errno == ENOENT && !file.filename().empty())
            return Target::absent;
        refusal = reasonFor(errno, file);
        return Target::refused;
    }
    if (S_ISREG(status.st_mode))
        return Target::regularFile;
    refusal = S_ISDIR(status.st_mode) ? file.string() + " is a folder, not a file."
                                      : file.string() + " isn't a regular file.";
    return Target::refused;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// The temporary file beside the target; removed unless it became the target.
class Temporary {
  public:
    explicit Temporary(const fs::path& file) {
        // Built piece by piece: GCC 12 misreads `"." + string` as an overlapping copy.
        std::string name = ".";
        name += file.filename().string();
        name += ".XXXXXX";
        const std::string pattern = (file.parent_path() / name).string();
        m_path.assign(pattern.begin(), pattern.end());
        m_path.push_back('\0');
        m_descriptor = ::mkostemp(m_path.data(), O_CLOEXEC);
        m_made = m_descriptor >= 0;
    }
    ~Temporary() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        if (m_made && !m_kept)
            ::unlink(m_path.data());
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    [[nodiscard]] const char* path() const { return m_path.data(); }
    // Closing may report a write the disk refused late (NFS, quotas).
    [[nodiscard]] bool close() {
        const int result = ::close(m_descriptor);
        m_descriptor = -1;
        return result == 0;
    }
    void keep() { m_kept = true; }

  private:
    std::vector<char> m_path;
    int m_descriptor = -1;
    bool m_made = false;
    bool m_kept = false;
};

// Puts the temporary in place. Over a regular file a plain rename does; onto
// a new name the rename refuses to go over anything that appeared meanwhile,
// and what appeared is looked at again.
std::optional<std::string> moveIntoPlace(const char* temporary, const fs::path& file,
                                         Target target) {
    std::string refusal;
    if (target == Target::absent) {
        if (::renameat2(AT_FDCWD, temporary, AT_FDCWD, file.c_str(), RENAME_NOREPLACE) == 0)
            return std::nullopt;
        // EINVAL: a file system that can't promise it; then as for an existing file.
        if (errno != EEXIST && errno != EINVAL && errno != ENOSYS)
            return reasonFor(errno, file);
        if (inspect(file, refusal) == Target::refused)
            return refusal;
    }
    if (::rename(temporary, file.c_str()) != 0)
        return reasonFor(errno, file);
    return std::nullopt;
}

// Makes the rename itself last; failing here loses nothing already written.
void syncFolder(const fs::path& file) {
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

}  // namespace

std::optional<std::string> saveFile(const fs::path& file, std::string_view bytes,
                                    FileAccess access) {
    std::string refusal;
    if (inspect(file, refusal) == Target::refused)
        return refusal;

    Temporary temporary(file);
    if (temporary.descriptor() < 0)
        return reasonFor(errno, file);
    // Set outright rather than left to the umask.
    const mode_t mode =
        access == FileAccess::ownerOnly ? S_IRUSR | S_IWUSR : S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
    if (::fchmod(temporary.descriptor(), mode) != 0 || !writeAll(temporary.descriptor(), bytes) ||
        ::fsync(temporary.descriptor()) != 0) {
        return reasonFor(errno, file);
    }
    if (!temporary.close())
        return reasonFor(errno, file);

    // The name may have changed hands while the bytes were written.
    const Target target = inspect(file, refusal);
    if (target == Target::refused)
        return refusal;
    if (auto problem = moveIntoPlace(temporary.path(), file, target))
        return problem;
    temporary.keep();
    syncFolder(file);
    return std::nullopt;
}

}  // namespace copperwick
