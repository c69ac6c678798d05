#pragma once

// The data file: the records of one Ledger in one SQLite file.
//
// SQLite serves as a crash-safe key-value table of JSON records, nothing
// more; every query runs on the in-memory Ledger. The whole file is read once
// at open, and every change after that is written as a delta, in a single
// transaction, re-encoded from the ledger being saved.
//
// File format (user_version 2):
//   records(kind TEXT, id TEXT, data BLOB, PRIMARY KEY (kind, id)) WITHOUT ROWID
//     one row per record: kind is the RecordKind's raw text, id the record's
//     id text, data its JSON (record_json.h).
//   source_lines(batch_id TEXT, line INTEGER, text TEXT, PRIMARY KEY (batch_id, line)) WITHOUT
//   ROWID
//     the raw lines of imported files, erasable apart from the records.
//
// Thread safety: one mutex guards every operation on the connection for its
// whole length, so a store may be used from the main thread and background
// tasks alike. Not copyable: it owns the connection.
//
// Other programs: the desktop application and the command line may have one
// file open at once. A load reads every record in one read transaction, so it
// sees one committed state. A save takes the write lock (waiting up to
// kLockWait for another program's save to end) and then checks SQLite's
// data_version: when another connection committed since this store last
// loaded, nothing is written and StoreError::changedElsewhere is thrown, so
// the caller reads the file again and redoes its change on what is there now.
// A file replaced under its name (another build's restore, a person's copy)
// counts as changed too; replaced() tells the caller to open the store anew.
//
// Saves go to the write-ahead log, synced at every commit. Copying the log
// back into the file (the checkpoint) is left to a thread of the store's own,
// on a connection of its own, once the log passes a thousand pages: a save of
// thousands of records returns when it is durable, not after writing every
// page a second time. close() waits for that thread. An import's save, when
// allowed and nobody else has the file open, goes straight into the file
// instead, through a rollback journal (kDirectWriteLines).

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"
#include "core/store/store_error.h"

struct sqlite3;

namespace copperwick {

namespace detail {
class LogCopier;
}

class LedgerStore {
  public:
    // The user_version this build writes, and the highest it opens.
    static constexpr int kFormatVersion = 2;

    // How long a save waits for another program's write lock.
    static constexpr int kLockWaitMilliseconds = 10000;

    // Raw lines past which a save, an import's, writes straight into the
    // file rather than through the log, when the store allows it
    // (allowDirectWrites) and no other program has the file open. Its records
    // are new, and they go in at the ends of both tables: through the log each
    // of their pages would be written twice, once to the log and once when
    // the log is copied back; through a rollback journal a page that is new
    // needs no journal at all. Afterwards the file counts as changed
    // (changedOnDisk() is true, and the next save throws changedElsewhere),
    // which suits a program that ends after the save better than one that
    // would then read the whole file again.
    static constexpr std::size_t kDirectWriteLines = 2000;

    // Opens or creates the file (mode 0600, in a folder made private with
    // mode 0700) and migrates it. A file that is missing, or empty, while the
    // "Backups" folder beside it holds copies is not made anew: that is a
    // lost ledger, and StoreError::open says so. Throws StoreError, or
    // FileError when the folder can't be made.
    explicit LedgerStore(std::filesystem::path file);
    ~LedgerStore();
    LedgerStore(const LedgerStore&) = delete;
    LedgerStore& operator=(const LedgerStore&) = delete;

    // Reads every record. Unreadable ones are counted and skipped (they stay
    // in the file); only SQL failures throw.
    [[nodiscard]] Ledger load();
    // Writes the records `delta` names, taking their content from `ledger`,
    // all or nothing. An empty delta returns at once. Throws
    // StoreError::changedElsewhere, having written nothing, when another
    // program saved since the last load; StoreError::busy when its lock
    // outlasted kLockWaitMilliseconds; StoreError::sql when a record's text
    // isn't valid UTF-8, since it could never be read back.
    void save(const LedgerDelta& delta, const Ledger& ledger);
    // Lets a large import's save go straight into the file; off at first.
    void allowDirectWrites(bool allowed) { m_directWrites = allowed; }
    // Writes every record of `ledger`; rows of records it no longer has stay.
    void saveAll(const Ledger& ledger);
    [[nodiscard]] bool isEmpty();

    // Whether another program has saved to the file, or replaced it, since
    // the last load or save here: the cue to load again. Cheap enough to ask
    // every second. False once closed.
    [[nodiscard]] bool changedOnDisk();
    // Whether the file under the store's name is no longer the one it opened:
    // then only a new store sees what is there.
    [[nodiscard]] bool replaced() const;

    // The raw text of one imported line; absent when missing or on any failure.
    [[nodiscard]] std::optional<std::string> sourceLine(const Uuid& batchID, int64_t line);
    void deleteAllSourceLines();

    // A consistent, compact copy of the open file (VACUUM INTO).
    void backup(const std::filesystem::path& target);

    // After this every operation fails with "database is closed".
    void close();

    // Whether `file` passes SQLite's quick check and has the records table.
    [[nodiscard]] static bool verify(const std::filesystem::path& file);

    // A consistent, compact copy of the SQLite file `source` (read as it
    // stands, with its log) into `target`, which is empty or missing.
    // Throws StoreError::open when `source` can't be read as a database.
    static void copyFile(const std::filesystem::path& source, const std::filesystem::path& target);

    // Replaces every page of the data file `file` with those of the sound
    // file `source`, in one transaction of the data file's own log: a crash
    // leaves it as it was, and programs that have it open see the change as
    // they see any save. False, with nothing touched, when `file` isn't a
    // database that can be written (missing, damaged), and the caller puts a
    // copy in place by name instead. Throws StoreError when the copy fails.
    [[nodiscard]] static bool replaceContents(const std::filesystem::path& file,
                                              const std::filesystem::path& source);

    [[nodiscard]] int unreadableRecords() const { return m_unreadableRecords; }
    // Whether the last load met any record, readable or not. When it did, the
    // file isn't empty, and a runtime needn't count a table it has just read.
    [[nodiscard]] bool loadFoundRecords() const { return m_loadFoundRecords; }
    [[nodiscard]] const std::filesystem::path& file() const { return m_file; }
    // The user_version the file had when it was opened (before migration).
    [[nodiscard]] int openedAtVersion() const { return m_openedAtVersion; }

  private:
    void migrate();
    [[nodiscard]] Ledger loadRecords(sqlite3* db);
    [[nodiscard]] sqlite3* connection() const;
    // SQLite's count of commits by other connections, as this one last saw it.
    [[nodiscard]] int64_t dataVersion(sqlite3* db) const;
    void write(sqlite3* db, const LedgerDelta& delta, const Ledger& ledger);
    // Takes the file for this connection alone, holding it, and moves it off
    // its log to a rollback journal. False, still on the log, when another
    // connection has it open.
    [[nodiscard]] bool leaveLog(sqlite3* db);
    // Puts the file back on its log and lets it go.
    void returnToLog(sqlite3* db);

    static constexpr int64_t kVersionUnknown = -1;

    std::filesystem::path m_file;
    sqlite3* m_db = nullptr;
    std::unique_ptr<detail::LogCopier> m_logCopier;
    bool m_directWrites = false;
    mutable std::mutex m_mutex;
    int m_unreadableRecords = 0;
    bool m_loadFoundRecords = false;
    int m_openedAtVersion = 0;
    // data_version when the records were last loaded or saved here.
    int64_t m_knownVersion = 0;
    // The file's identity when opened.
    uint64_t m_device = 0;
    uint64_t m_inode = 0;
};

}  // namespace copperwick
