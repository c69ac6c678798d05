#include "core/store/backup_manager.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <fstream>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "core/model/local_date.h"
#include "core/model/text.h"
#include "core/store/ledger_store.h"
#include "core/store/private_folder.h"
#include "core/store/store_error.h"

namespace copperwick {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefix = "Copperwick-";
constexpr std::string_view kExtension = ".sqlite";
// Stamps keep four-digit years: 0001-01-01 to 9999-12-31 23:59:59, in Unix seconds.
constexpr int64_t kEarliestStampSeconds = -62135596800;
constexpr int64_t kLatestStampSeconds = 253402300799;

bool isBackupName(const std::string& name) {
    return name.starts_with(kPrefix) && name.ends_with(kExtension);
}

// The words after the stamp: "Copperwick-2026-03-09-141502-before-import-2"
// gives "before import 2". A name too short to hold a stamp and a reason is
// just a "backup".
std::string reasonFromStem(std::string_view stem) {
    const auto pieces = text::splitDroppingEmpty(stem, "-");
    if (pieces.size() < 6)
        return "backup";
    std::string reason;
    for (std::size_t i = 5; i < pieces.size(); ++i) {
        if (!reason.empty())
            reason += ' ';
        reason += pieces[i];
    }
    return reason;
}

Instant modificationDate(const fs::path& file) {
    std::error_code error;
    const auto written = fs::last_write_time(file, error);
    if (error)
        return BackupManager::kDistantPast;
    const auto system = std::chrono::file_clock::to_sys(written);
    return Instant::fromUnixSeconds(
        std::chrono::duration<double>(system.time_since_epoch()).count());
}

constexpr std::string_view kDamagedBackup =
    "The backup file is damaged or isn't an Copperwick backup.";

// Whether a freshly written SQLite file holds every page its header counts:
// a copy cut short shows fewer bytes than that.
bool looksWhole(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::array<unsigned char, 100> header{};
    if (!in.read(reinterpret_cast<char*>(header.data()), header.size()))
        return false;
    if (std::string_view(reinterpret_cast<const char*>(header.data()), 16) !=
        std::string_view("SQLite format 3\0", 16)) {
        return false;
    }
    const auto read32 = [&](std::size_t at) {
        return (uint32_t{header[at]} << 24) | (uint32_t{header[at + 1]} << 16) |
               (uint32_t{header[at + 2]} << 8) | uint32_t{header[at + 3]};
    };
    uint64_t pageSize = (uint64_t{header[16]} << 8) | header[17];
    if (pageSize == 1)
        pageSize = 65536;
    const uint64_t pages = read32(28);
    std::error_code error;
    const auto size = fs::file_size(file, error);
    return !error && pages > 0 && size == pages * pageSize;
}

bool isTaken(const fs::path& path) {
    std::error_code error;
    // A dangling link still blocks the name: VACUUM INTO would write through it.
    return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

}  // namespace

BackupManager::BackupManager(fs::path folder, int keep)
    : m_folder(std::move(folder)), m_keep(keep) {}

fs::path BackupManager::makeBackup(LedgerStore& store, std::string_view reason, Instant now) const {
    createPrivateFolder(m_folder);
    removeAbandonedFiles(m_folder);
    const std::string base = std::string(kPrefix) + stamp(now) + "-" + std::string(reason);
    // Written under a hidden name and named only once whole and on the disk:
    // a copy cut short by a crash or a full disk is never listed, nor counted
    // when old copies are dropped.
    TemporaryFile copy(m_folder, base);
    store.backup(copy.path());
    if (!looksWhole(copy.path()))
        throw StoreError::sql("the backup copy came out incomplete");
    fs::path url = m_folder / (base + std::string(kExtension));
    for (int n = 2; isTaken(url) || !copy.publishAs(url); ++n)
        url = m_folder / fmt::format("{}-{}{}", base, n, kExtension);
    prune();
    return url;
}

std::vector<BackupManager::Info> BackupManager::list() const {
    std::vector<Info> infos;
    std::error_code error;
    fs::directory_iterator it(m_folder, error);
    // A folder that can't be read lists nothing, so the next launch tries a fresh copy.
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const fs::directory_entry& entry = *it;
        const std::string name = entry.path().filename().string();
        if (name.starts_with('.') || !isBackupName(name))
            continue;
        std::error_code typeError;
        if (!entry.is_regular_file(typeError))
            continue;
        infos.push_back(info(entry.path()));
    }
    // Copies made within the clock's resolution share a date; the name (its
    // stamp, then its number) keeps the order, and so the pruning, stable.
    std::sort(infos.begin(), infos.end(), [](const Info& a, const Info& b) {
        if (a.date != b.date)
            return a.date > b.date;
        return a.url.filename() > b.url.filename();
    });
    return infos;
}

BackupManager::Info BackupManager::info(const fs::path& file) {
    std::error_code sizeError;
    const auto size = fs::file_size(file, sizeError);
    return Info{
        .url = file,
        .date = modificationDate(file),
        .bytes = sizeError ? 0 : static_cast<int64_t>(size),
        .reason = reasonFromStem(file.stem().string()),
    };
}

bool BackupManager::needsDailyBackup(Instant now) const {
    const auto infos = list();
    if (infos.empty())
        return true;
    return now.secondsSinceReference - infos.front().date.secondsSinceReference > kDailyInterval;
}

void BackupManager::prune() const {
    const auto infos = list();
    const auto keep = static_cast<std::size_t>(std::max(m_keep, 0));
    for (std::size_t i = keep; i < infos.size(); ++i) {
        // One stubborn file mustn't stop a backup; the next prune tries again.
        std::error_code error;
        fs::remove(infos[i].url, error);
    }
}

void BackupManager::restore(const fs::path& backup, const fs::path& dataFile) {
    if (!LedgerStore::verify(backup))
        throw StoreError::open(std::string(kDamagedBackup));
    const fs::path folder = dataFile.parent_path();
    createPrivateFolder(folder);
    removeAbandonedFiles(folder);
    const std::string name = dataFile.filename().string();

    // A whole, checked copy of the backup beside the data file first: the
    // data file is touched only once there is something sound to put there.
    TemporaryFile copy(folder, name + ".restore");
    LedgerStore::copyFile(backup, copy.path());
    if (!syncPath(copy.path()) || !LedgerStore::verify(copy.path()))
        throw StoreError::open(std::string(kDamagedBackup));

    // The file being replaced stays beside it, under the side name.
    const fs::path side = folder / (dataFile.stem().string() + ".replaced.sqlite");
    if (isTaken(dataFile)) {
        TemporaryFile kept(folder, side.filename().string());
        try {
            LedgerStore::copyFile(dataFile, kept.path());
        } catch (const StoreError&) {
            // A damaged file is kept byte for byte.
            std::error_code error;
            fs::copy_file(dataFile, kept.path(), fs::copy_options::overwrite_existing, error);
            if (error) {
                throw FileError("Copperwick couldn't keep a copy of its data file " +
                                dataFile.string() + " at " + side.string() + ": " +
                                error.message());
            }
        }
        kept.replace(side);
    }

    // In place, in one transaction of the data file's own log, so that a
    // crash leaves the old ledger or the new one, and a program that has the
    // file open sees the restore like any other save.
    if (LedgerStore::replaceContents(dataFile, copy.path()))
        return;
    // Nothing there that SQLite can write to: the copy takes the name. A
    // stale log or journal must not be replayed into it.
    std::error_code ignored;
    fs::remove(dataFile.string() + "-wal", ignored);
    fs::remove(dataFile.string() + "-journal", ignored);
    fs::remove(dataFile.string() + "-shm", ignored);
    copy.replace(dataFile);
}

std::string BackupManager::stamp(Instant instant) {
    const double unix = instant.unixSeconds();
    // Whole seconds, rounded down, so that 14:15:02.9 is still 141502.
    int64_t seconds = 0;
    if (std::isfinite(unix)) {
        seconds = static_cast<int64_t>(std::clamp(std::floor(unix),
                                                  static_cast<double>(kEarliestStampSeconds),
                                                  static_cast<double>(kLatestStampSeconds)));
    }
    const int64_t secondsPerDay = 86400;
    int64_t days = seconds / secondsPerDay;
    int64_t secondOfDay = seconds % secondsPerDay;
    if (secondOfDay < 0) {
        secondOfDay += secondsPerDay;
        --days;
    }
    const LocalDate date = LocalDate::fromDayNumber(days);
    return fmt::format("{:04}-{:02}-{:02}-{:02}{:02}{:02}", date.year, date.month, date.day,
                       secondOfDay / 3600, secondOfDay / 60 % 60, secondOfDay % 60);
}

}  // namespace copperwick
