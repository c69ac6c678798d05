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
// A copy is written under a hidden ".…partial" name, synced and checked, and
// only then given its name; what a crash leaves halfway is removed later.
//
// A value type, freely copyable. makeBackup may run on any thread: the
// store's lock covers the copy. list, needsDailyBackup and restore belong to
// the main thread; restore wants this program's store closed, while other
// programs may keep the file open.

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

    // Puts `backup` in place of `dataFile`. The backup is checked, copied
    // whole beside the data file and checked again; the data file's current
    // content is kept beside it as "<stem>.replaced.sqlite" until the next
    // restore; then the copy replaces the content in one transaction of the
    // data file's log (or, when there is no sound data file, takes its name).
    // A crash at any moment leaves the old ledger or the new one, never none,
    // and a program with the file open sees the change like any save. A
    // backup that isn't a sound Copperwick file is refused with
    // StoreError::open before anything is touched. Throws FileError when a
    // copy can't be written; the data file then stands as before.
    static void restore(const std::filesystem::path& backup, const std::filesystem::path& dataFile);

    // `instant` in UTC as "yyyy-MM-dd-HHmmss", whole seconds.
    [[nodiscard]] static std::string stamp(Instant instant);

  private:
    void prune() const;

    std::filesystem::path m_folder;
    int m_keep = kDefaultKeep;
};

}  // namespace copperwick
