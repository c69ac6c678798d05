#pragma once

// Dated copies of the data file in a folder beside it, and the way back from
// one. A copy is a whole, compact SQLite file (VACUUM INTO), so it opens with
// the same code as the data file. Old copies are dropped by count alone.
//
// File names: "Copperwick-" + stamp + "-" + reason + ".sqlite", the stamp
// being the UTC instant as "yyyy-MM-dd-HHmmss" and the reason words joined by
// "-" ("daily", "before-import"). When a name is taken within the same second,
// "-2", "-3", ... follows the reason. The name is all there is to know about a
// copy; the date shown is the file's own modification date.
//
// A value type, freely copyable. makeBackup may run on any thread: the
// store's lock covers the copy. list, needsDailyBackup and restore touch only
// files and belong to the main thread; restore wants the store closed.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/instant.h"

namespace copperwick {

class LedgerStore;

class BackupManager {
  public:
    // One copy in the folder, as the Settings screen lists it.
    struct Info {
        std::filesystem::path url;
        // The file's modification date; kDistantPast when the system gives none.
        Instant date;
        // The file's size; 0 when unknown.
        int64_t bytes = 0;
        // Why it was made, in words: "daily", "before import", "daily 2";
        // "backup" for a name that carries none.
        std::string reason;

        friend bool operator==(const Info&, const Info&) = default;
    };

    static constexpr int kDefaultKeep = 30;
    // The date of a copy whose modification date can't be read (about year 1).
    static constexpr Instant kDistantPast{-63114076800.0};
    // How old the newest copy may get before launch makes a daily one.
    static constexpr double kDailyInterval = 72000.0;

    explicit BackupManager(std::filesystem::path folder, int keep = kDefaultKeep);

    [[nodiscard]] const std::filesystem::path& folder() const { return m_folder; }
    [[nodiscard]] int keep() const { return m_keep; }

    // Copies the open file of `store` into the folder (made with mode 0700
    // when missing), then drops the copies beyond `keep`. Returns the copy's
    // path. Throws FileError when the folder can't be made, StoreError when
    // the copy fails; nothing is dropped then.
    std::filesystem::path makeBackup(LedgerStore& store, std::string_view reason,
                                     Instant now) const;

    // The copies, newest first (equal dates: by file name, descending). An
    // unreadable or missing folder lists nothing.
    [[nodiscard]] std::vector<Info> list() const;

    // One file described as list() would, wherever it lies: for a copy named
    // on the command line. A name that isn't a copy's gives the reason "backup".
    [[nodiscard]] static Info info(const std::filesystem::path& file);

    // Whether there is no copy, or the newest is more than 20 hours older
    // than `now`. Any reason counts.
    [[nodiscard]] bool needsDailyBackup(Instant now) const;

    // Puts `backup` in place of `dataFile`, whose store must be closed. The
    // previous file stays beside it as "<stem>.replaced.sqlite" until the next
    // restore; its -wal and -shm files are removed. A backup that isn't a
    // sound Copperwick file is refused with StoreError::open before anything
    // is touched. Throws FileError when the data file can't be moved away
    // (it stays in place) or the copy can't be made (the path is left empty).
    static void restore(const std::filesystem::path& backup, const std::filesystem::path& dataFile);

    // `instant` in UTC as "yyyy-MM-dd-HHmmss", whole seconds.
    [[nodiscard]] static std::string stamp(Instant instant);

  private:
    void prune() const;

    std::filesystem::path m_folder;
    int m_keep = kDefaultKeep;
};

}  // namespace copperwick
