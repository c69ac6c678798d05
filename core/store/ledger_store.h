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
// Saves go to the write-ahead log, synced at every commit. Copying the log
// back into the file (the checkpoint) is left to a thread of the store's own,
// on a connection of its own, once the log passes a thousand pages: a save of
// thousands of records returns when it is durable, not after writing every
// page a second time. close() waits for that thread.

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

    // Opens or creates the file (and its folder, mode 0700) and migrates it.
    // Throws StoreError, or FileError when the folder can't be made.
    explicit LedgerStore(std::filesystem::path file);
    ~LedgerStore();
    LedgerStore(const LedgerStore&) = delete;
    LedgerStore& operator=(const LedgerStore&) = delete;

    // Reads every record. Unreadable ones are counted and skipped (they stay
    // in the file); only SQL failures throw.
    [[nodiscard]] Ledger load();
    // Writes the records `delta` names, taking their content from `ledger`,
    // all or nothing. An empty delta returns at once.
    void save(const LedgerDelta& delta, const Ledger& ledger);
    // Writes every record of `ledger`; rows of records it no longer has stay.
    void saveAll(const Ledger& ledger);
    [[nodiscard]] bool isEmpty();

    // The raw text of one imported line; absent when missing or on any failure.
    [[nodiscard]] std::optional<std::string> sourceLine(const Uuid& batchID, int64_t line);
    void deleteAllSourceLines();

    // A consistent, compact copy of the open file (VACUUM INTO).
    void backup(const std::filesystem::path& target);

    // After this every operation fails with "database is closed".
    void close();

    // Whether `file` passes SQLite's quick check and has the records table.
    [[nodiscard]] static bool verify(const std::filesystem::path& file);

    [[nodiscard]] int unreadableRecords() const { return m_unreadableRecords; }
    [[nodiscard]] const std::filesystem::path& file() const { return m_file; }
    // The user_version the file had when it was opened (before migration).
    [[nodiscard]] int openedAtVersion() const { return m_openedAtVersion; }

  private:
    void migrate();
    [[nodiscard]] sqlite3* connection() const;

    std::filesystem::path m_file;
    sqlite3* m_db = nullptr;
    std::unique_ptr<detail::LogCopier> m_logCopier;
    mutable std::mutex m_mutex;
    int m_unreadableRecords = 0;
    int m_openedAtVersion = 0;
};

}  // namespace copperwick
