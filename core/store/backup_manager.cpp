#include "core/store/backup_manager.h"

#include <algorithm>
#include <chrono>
#include <cmath>
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
    const std::string base = std::string(kPrefix) + stamp(now) + "-" + std::string(reason);
    fs::path url = m_folder / (base + std::string(kExtension));
    for (int n = 2; isTaken(url); ++n)
        url = m_folder / fmt::format("{}-{}{}", base, n, kExtension);
    store.backup(url);
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
        throw StoreError::open("The backup file is damaged or isn't an Copperwick backup.");

    const fs::path side = dataFile.parent_path() / (dataFile.stem().string() + ".replaced.sqlite");
    std::error_code ignored;
    fs::remove(side, ignored);

    std::error_code error;
    if (isTaken(dataFile)) {
        fs::rename(dataFile, side, error);
        if (error) {
            throw FileError("Copperwick couldn't move its data file " + dataFile.string() +
                            " aside to " + side.string() + ": " + error.message());
        }
    }
    // A stale write-ahead log would be replayed into the restored copy.
    fs::remove(dataFile.string() + "-wal", ignored);
    fs::remove(dataFile.string() + "-shm", ignored);

    fs::copy_file(backup, dataFile, error);
    if (error) {
        // Leave the path empty rather than half a file: the next open starts afresh,
        // and the replaced file is still beside it.
        fs::remove(dataFile, ignored);
        throw FileError("Copperwick couldn't copy the backup " + backup.string() + " to " +
                        dataFile.string() + ": " + error.message());
    }
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
