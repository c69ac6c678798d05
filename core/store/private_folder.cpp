#include "core/store/private_folder.h"

#include <array>
#include <cerrno>
#include <random>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/store/store_error.h"

namespace copperwick {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPartial = ".partial";

std::string errnoText(int error) {
    return std::generic_category().message(error);
}

std::string randomSuffix() {
    static constexpr std::string_view kDigits = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::random_device device;
    std::string suffix;
    for (int i = 0; i < 10; ++i)
        suffix += kDigits[device() % kDigits.size()];
    return suffix;
}

bool isOwnedByMe(const struct stat& status) {
    return status.st_uid == ::geteuid();
}

// A partial file, or one of the journals SQLite keeps beside it.
bool isAbandonedName(std::string_view name) {
    if (!name.starts_with('.'))
        return false;
    for (const std::string_view suffix : {"", "-journal", "-wal", "-shm"}) {
        if (name.size() > kPartial.size() + suffix.size() && name.ends_with(suffix) &&
            name.substr(0, name.size() - suffix.size()).ends_with(kPartial)) {
            return true;
        }
    }
    return false;
}

}  // namespace

void createPrivateFolder(const fs::path& folder) {
    if (folder.empty())
        return;
    std::vector<fs::path> missing;
    for (auto path = folder; !path.empty(); path = path.parent_path()) {
        std::error_code error;
        if (fs::exists(path, error))
            break;
        missing.push_back(path);
        if (path == path.parent_path())
            break;
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        // mkdir honours the umask, so set the mode again once the folder is there.
        if (::mkdir(it->c_str(), 0700) != 0 && errno != EEXIST) {
            throw FileError("Copperwick couldn't create the folder " + it->string() + ": " +
                            errnoText(errno));
        }
        ::chmod(it->c_str(), 0700);
    }
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw FileError("Copperwick couldn't use the folder " + folder.string() +
                        ": it isn't a folder");
    }
    // A folder made earlier by hand, or by a looser program, may be open to
    // every account on the machine.
    const bool shared = (status.st_mode & S_ISVTX) != 0;
    if (!shared && isOwnedByMe(status) && (status.st_mode & 077) != 0)
        ::chmod(folder.c_str(), 0700);
}

void makeFilePrivate(const fs::path& file) {
    struct stat status {};
    if (::lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || !isOwnedByMe(status))
        return;
    if ((status.st_mode & 077) != 0)
        ::chmod(file.c_str(), 0600);
}

bool syncPath(const fs::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

TemporaryFile::TemporaryFile(const fs::path& folder, std::string_view stem) {
    for (int attempt = 0; attempt < 16; ++attempt) {
        m_path = folder / ("." + std::string(stem) + "-" + randomSuffix() + std::string(kPartial));
        m_lock = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (m_lock >= 0)
            break;
        if (errno != EEXIST) {
            throw FileError("Copperwick couldn't create a file in " + folder.string() + ": " +
                            errnoText(errno));
        }
    }
    if (m_lock < 0)
        throw FileError("Copperwick couldn't create a file in " + folder.string() + ".");
    ::flock(m_lock, LOCK_EX);
}

TemporaryFile::~TemporaryFile() {
    if (!m_published) {
        std::error_code ignored;
        for (const std::string_view suffix : {"", "-journal", "-wal", "-shm"})
            fs::remove(m_path.string() + std::string(suffix), ignored);
    }
    if (m_lock >= 0)
        ::close(m_lock);
}

void TemporaryFile::replace(const fs::path& target) {
    if (::fsync(m_lock) != 0)
        throw FileError("Copperwick couldn't write " + target.string() + ": " + errnoText(errno));
    if (::rename(m_path.c_str(), target.c_str()) != 0) {
        throw FileError("Copperwick couldn't put " + target.string() +
                        " in place: " + errnoText(errno));
    }
    m_published = true;
    syncPath(target.parent_path());
}

bool TemporaryFile::publishAs(const fs::path& target) {
    if (::fsync(m_lock) != 0)
        throw FileError("Copperwick couldn't write " + target.string() + ": " + errnoText(errno));
    // A hard link can't take a name that is there already, so two programs
    // backing up in the same second never overwrite each other's copy.
    if (::link(m_path.c_str(), target.c_str()) == 0) {
        ::unlink(m_path.c_str());
    } else if (errno == EEXIST) {
        return false;
    } else {
        // File systems without hard links: check, then rename.
        struct stat status {};
        if (::lstat(target.c_str(), &status) == 0)
            return false;
        if (::rename(m_path.c_str(), target.c_str()) != 0) {
            throw FileError("Copperwick couldn't put " + target.string() +
                            " in place: " + errnoText(errno));
        }
    }
    m_published = true;
    syncPath(target.parent_path());
    return true;
}

void removeAbandonedFiles(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator it(folder, error);
    std::vector<fs::path> partials;
    std::vector<fs::path> journals;
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (!isAbandonedName(name))
            continue;
        (name.ends_with(kPartial) ? partials : journals).push_back(it->path());
    }
    for (const auto& partial : partials) {
        const int descriptor = ::open(partial.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        if (descriptor < 0)
            continue;
        // Held: another program is writing it right now.
        if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
            ::unlink(partial.c_str());
        ::close(descriptor);
    }
    for (const auto& journal : journals) {
        const std::string name = journal.string();
        const auto partial = name.substr(0, name.rfind(kPartial) + kPartial.size());
        std::error_code missing;
        if (!fs::exists(partial, missing))
            fs::remove(journal, missing);
    }
}

}  // namespace copperwick
