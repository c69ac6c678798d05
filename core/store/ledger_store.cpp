#include "core/store/ledger_store.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/model/record_json.h"
#include "core/model/text.h"
#include "core/model/transaction_reader.h"
#include "core/store/backup_manager.h"
#include "core/store/gathered_writes.h"
#include "core/store/private_folder.h"

namespace copperwick {

namespace {

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS records ("
    "kind TEXT NOT NULL, id TEXT NOT NULL, data BLOB NOT NULL, PRIMARY KEY (kind, id)) WITHOUT "
    "ROWID;"
    "CREATE TABLE IF NOT EXISTS source_lines ("
    "batch_id TEXT NOT NULL, line INTEGER NOT NULL, text TEXT NOT NULL, PRIMARY KEY (batch_id, "
    "line)) WITHOUT ROWID;"
    "PRAGMA user_version = 1;";

constexpr const char* kClosed = "database is closed";
// A save finds the pages it changes through a mapping of the file, straight
// from the kernel's cache, rather than copying each into SQLite's small page
// cache: a tenth of a large review decision's time. A load reads every page
// once, so it copies them; mapped, the whole file would count against the
// program's memory. (A disk that fails under a mapping stops the program
// rather than failing the save, which loses nothing the log doesn't hold.)
constexpr const char* kMappedReads = "PRAGMA mmap_size = 1073741824";
constexpr const char* kCopiedReads = "PRAGMA mmap_size = 0";
constexpr const char* kNotUTF8 =
    "some of its text isn't valid UTF-8, and it couldn't be read back. Nothing was saved.";

// One prepared statement, finalised on every path out.
class Statement {
  public:
    Statement(sqlite3* db, const char* sql) : m_db(db) {
        if (sqlite3_prepare_v2(db, sql, -1, &m_statement, nullptr) != SQLITE_OK) {
            throw StoreError::sql(sqlite3_errmsg(db));
        }
    }
    ~Statement() { sqlite3_finalize(m_statement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    Statement& bind(int index, std::string_view text) {
        check(sqlite3_bind_text(m_statement, index, text.data(), static_cast<int>(text.size()),
                                SQLITE_TRANSIENT));
        return *this;
    }
    // Without SQLite's own copy (a whole ledger's records, on a large import):
    // `bytes` must stay as they are until run().
    Statement& bindBlobInPlace(int index, std::string_view bytes) {
        check(sqlite3_bind_blob(m_statement, index, bytes.data(), static_cast<int>(bytes.size()),
                                SQLITE_STATIC));
        return *this;
    }
    Statement& bind(int index, int64_t value) {
        check(sqlite3_bind_int64(m_statement, index, value));
        return *this;
    }
    // One row more? Throws on anything but a row or the end.
    bool step() {
        const int result = sqlite3_step(m_statement);
        if (result == SQLITE_ROW)
            return true;
        if (result == SQLITE_DONE)
            return false;
        throw StoreError::sql(sqlite3_errmsg(m_db));
    }
    // For statements that return no rows.
    void run() {
        if (sqlite3_step(m_statement) != SQLITE_DONE)
            throw StoreError::sql(sqlite3_errmsg(m_db));
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
    sqlite3_stmt* get() const { return m_statement; }

  private:
    void check(int result) const {
        if (result != SQLITE_OK)
            throw StoreError::sql(sqlite3_errmsg(m_db));
    }

    sqlite3* m_db;
    sqlite3_stmt* m_statement = nullptr;
};

void execute(sqlite3* db, const char* sql) {
    if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw StoreError::sql(sqlite3_errmsg(db));
}

std::string_view columnBytes(sqlite3_stmt* statement, int column) {
    const void* data = sqlite3_column_blob(statement, column);
    const int size = sqlite3_column_bytes(statement, column);
    if (!data || size <= 0)
        return {};
    return {static_cast<const char*>(data), static_cast<std::size_t>(size)};
}

// The rows of one batch, kept end to end in one buffer: a hundred thousand
// small allocations would cost more than reading them.
class RowBatch {
  public:
    void add(std::string_view bytes) {
        m_ends.push_back(m_bytes.size() + bytes.size());
        m_bytes.append(bytes);
    }
    void clear() {
        m_bytes.clear();
        m_ends.clear();
    }
    [[nodiscard]] std::size_t size() const { return m_ends.size(); }
    [[nodiscard]] std::string_view row(std::size_t i) const {
        const std::size_t begin = i == 0 ? 0 : m_ends[i - 1];
        return std::string_view(m_bytes).substr(begin, m_ends[i] - begin);
    }

  private:
    std::string m_bytes;
    std::vector<std::size_t> m_ends;
};

// Threads a load may start beside its own: one per further core, up to three.
std::size_t helperThreads() {
    return std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()) - 1, 3);
}

// One stored record, already shared so that the allocation happens on the
// thread that decodes. Null when the row is unreadable.
template <typename T>
std::shared_ptr<const T> decodeShared(std::string_view row) {
    if constexpr (std::is_same_v<T, LedgerTransaction>) {
        auto record = std::make_shared<LedgerTransaction>();
        if (detail::readFlatTransaction(row, *record))
            return record;
        auto decoded = record_json::decode<LedgerTransaction>(row);
        if (!decoded)
            return nullptr;
        *record = std::move(*decoded.value);
        return record;
    } else {
        auto decoded = record_json::decode<T>(row);
        if (!decoded)
            return nullptr;
        return std::make_shared<const T>(std::move(*decoded.value));
    }
}

// Row decoders, each giving what the ledger keeps of a readable row, or
// nothing. Records of the arrays are kept as values.
template <typename T>
std::optional<T> decodeValue(std::string_view row) {
    return record_json::decode<T>(row).value;
}

// Records of the maps are kept shared, with the key they are filed under; the
// key is read on the decoding thread, while the record is in that core's cache.
template <typename T, typename KeyOf>
auto decodeKeyed(KeyOf keyOf) {
    using Key = std::remove_cvref_t<std::invoke_result_t<KeyOf, const T&>>;
    return
        [keyOf](std::string_view row) -> std::optional<std::pair<Key, std::shared_ptr<const T>>> {
            auto record = decodeShared<T>(row);
            if (!record)
                return std::nullopt;
            Key key = keyOf(*record);
            return std::pair{std::move(key), std::move(record)};
        };
}

template <typename Decode>
using DecodedEntry = typename std::invoke_result_t<Decode&, std::string_view>::value_type;

// Decoding is most of a load, and SQLite can only be stepped from one thread.
// So the loading thread reads rows in batches while helpers decode them, and
// the batches are gathered in row order by whichever thread finishes the one
// at the front; only one thread at a time holds that turn. The reader decodes
// too, when enough batches wait and when the rows run out, so that no core
// idles while there is work.
template <typename Decode>
class DecodePipeline {
  public:
    using Entry = DecodedEntry<Decode>;
    struct Batch {
        RowBatch rows;
        std::vector<std::optional<Entry>> entries;  // empty for an unreadable row
        bool decoded = false;
    };

    DecodePipeline(std::size_t helpers, Decode& decode, std::vector<Entry>& gathered,
                   int& unreadable)
        : m_decode(decode), m_gathered(gathered), m_unreadable(unreadable) {
        try {
            for (std::size_t i = 0; i < helpers; ++i)
                m_helpers.emplace_back([this] { help(); });
        } catch (const std::system_error&) {
            // Fewer helpers only make the load slower; the reader decodes what they don't.
        }
    }
    ~DecodePipeline() {
        {
            std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_work.notify_all();
        for (auto& helper : m_helpers)
            helper.join();
    }
    DecodePipeline(const DecodePipeline&) = delete;
    DecodePipeline& operator=(const DecodePipeline&) = delete;

    // A batch to fill, with the buffers of one already gathered.
    [[nodiscard]] std::unique_ptr<Batch> emptyBatch() {
        std::lock_guard lock(m_mutex);
        if (m_spare.empty())
            return std::make_unique<Batch>();
        auto batch = std::move(m_spare.back());
        m_spare.pop_back();
        return batch;
    }

    // Queues a filled batch; decodes one here when more than a few wait.
    void submit(std::unique_ptr<Batch> batch) {
        constexpr std::size_t kMostWaiting = 4;
        std::unique_lock lock(m_mutex);
        m_queue.push_back(std::move(batch));
        m_work.notify_one();
        if (m_queue.size() - m_claimed > kMostWaiting && !m_failure) {
            decodeNext(lock);
            gather(lock);
        }
    }

    // Works beside the helpers until every batch is gathered.
    void finish() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            if (m_failure)
                std::rethrow_exception(m_failure);
            if (m_claimed < m_queue.size()) {
                decodeNext(lock);
                gather(lock);
            } else if (m_queue.empty() && !m_gathering) {
                return;
            } else {
                m_progress.wait(lock);
            }
        }
    }

  private:
    // Decodes the oldest batch nobody has claimed, unlocked.
    void decodeNext(std::unique_lock<std::mutex>& lock) {
        Batch& batch = *m_queue[m_claimed++];
        lock.unlock();
        try {
            batch.entries.resize(batch.rows.size());
            for (std::size_t i = 0; i < batch.rows.size(); ++i)
                batch.entries[i] = m_decode(batch.rows.row(i));
        } catch (...) {
            lock.lock();
            fail(std::current_exception());
            return;
        }
        lock.lock();
        batch.decoded = true;
    }

    // Gathers the decoded batches at the front of the queue, unless another
    // thread is already doing so (it will gather this one's too).
    void gather(std::unique_lock<std::mutex>& lock) {
        if (m_gathering)
            return;
        m_gathering = true;
        while (!m_failure && !m_queue.empty() && m_queue.front()->decoded) {
            auto batch = std::move(m_queue.front());
            m_queue.pop_front();
            --m_claimed;
            lock.unlock();
            try {
                for (auto& entry : batch->entries) {
                    if (entry) {
                        m_gathered.push_back(std::move(*entry));
                    } else {
                        ++m_unreadable;
                    }
                }
            } catch (...) {
                lock.lock();
                fail(std::current_exception());
                break;
            }
            batch->rows.clear();
            batch->entries.clear();
            batch->decoded = false;
            lock.lock();
            m_spare.push_back(std::move(batch));
        }
        m_gathering = false;
        m_progress.notify_all();
    }

    void fail(std::exception_ptr failure) {
        if (!m_failure)
            m_failure = std::move(failure);
        m_progress.notify_all();
    }

    void help() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_work.wait(lock, [&] { return m_stopping || m_claimed < m_queue.size(); });
            if (m_stopping || m_failure)
                return;
            decodeNext(lock);
            gather(lock);
        }
    }

    Decode& m_decode;
    std::vector<Entry>& m_gathered;  // written by the thread that holds the turn
    int& m_unreadable;
    std::mutex m_mutex;
    std::condition_variable m_work;              // a batch waits to be decoded, or the load is over
    std::condition_variable m_progress;          // a batch was gathered, or something failed
    std::deque<std::unique_ptr<Batch>> m_queue;  // in row order; the first m_claimed are claimed
    std::size_t m_claimed = 0;
    bool m_gathering = false;
    std::exception_ptr m_failure;
    std::vector<std::unique_ptr<Batch>> m_spare;
    bool m_stopping = false;
    std::vector<std::thread> m_helpers;  // last: they start using the members above at once
};

// What `decode` makes of every row of one kind, in id order. A row that
// doesn't decode is counted and left in the file. Rows are taken in batches so
// that a large file never sits in memory twice over, and a kind that fits in
// one batch, as most do, is decoded where it is read.
template <typename Decode>
std::vector<DecodedEntry<Decode>> loadKind(sqlite3* db, RecordKind kind, int& unreadable,
                                           Decode decode) {
    constexpr std::size_t kBatchRows = 1024;
    Statement select(db, "SELECT data FROM records WHERE kind = ? ORDER BY id");
    select.bind(1, rawValue(kind));
    const auto fill = [&](RowBatch& rows) {
        while (rows.size() < kBatchRows) {
            if (!select.step())
                return false;
            const auto bytes = columnBytes(select.get(), 0);
            if (!bytes.empty())
                rows.add(bytes);
        }
        return true;
    };

    std::vector<DecodedEntry<Decode>> entries;
    RowBatch first;
    if (!fill(first)) {
        for (std::size_t i = 0; i < first.size(); ++i) {
            if (auto entry = decode(first.row(i))) {
                entries.push_back(std::move(*entry));
            } else {
                ++unreadable;
            }
        }
        return entries;
    }
    DecodePipeline<Decode> pipeline(helperThreads(), decode, entries, unreadable);
    auto batch = pipeline.emptyBatch();
    batch->rows = std::move(first);
    for (bool more = true; more;) {
        pipeline.submit(std::move(batch));
        batch = pipeline.emptyBatch();
        more = fill(batch->rows);
        if (!more && batch->rows.size() > 0)
            pipeline.submit(std::move(batch));
    }
    pipeline.finish();
    return entries;
}

// A ledger map from its records in row order. A large one is built on two
// threads, each filling half of the map's chunks.
template <typename K, typename V>
SharedMap<K, V> buildMap(std::vector<std::pair<K, std::shared_ptr<const V>>> records) {
    constexpr std::size_t kRecordsWorthAThread = 8192;
    using Builder = typename SharedMap<K, V>::Builder;
    const bool split = records.size() >= kRecordsWorthAThread && helperThreads() > 0;
    Builder builder(std::move(records));
    if (split) {
        constexpr std::size_t kHalf = Builder::kChunks / 2;
        std::exception_ptr failure;
        try {
            std::thread other([&] {
                try {
                    builder.fill(kHalf, Builder::kChunks);
                } catch (...) {
                    failure = std::current_exception();
                }
            });
            builder.fill(0, kHalf);
            other.join();
        } catch (const std::system_error&) {
            // No second thread: finish() fills what is left.
        }
        if (failure)
            std::rethrow_exception(failure);
    }
    return std::move(builder).finish();
}

template <typename T>
const T* findByID(const SharedVector<T>& records, const RecordID& id) {
    const auto uuid = id.uuid();
    if (!uuid)
        return nullptr;
    for (const auto& record : records) {
        if (record.id == *uuid)
            return &record;
    }
    return nullptr;
}

// The stored text of one record, or absent when the ledger no longer has it.
std::optional<std::string> encodeRecord(const Ledger& ledger, RecordKind kind, const RecordID& id) {
    const auto encoded = [](const auto* record) -> std::optional<std::string> {
        if (!record)
            return std::nullopt;
        return record_json::encode(*record);
    };
    switch (kind) {
        case RecordKind::person:
            return encoded(findByID(ledger.people, id));
        case RecordKind::account:
            return encoded(findByID(ledger.accounts, id));
        case RecordKind::category:
            return encoded(findByID(ledger.categories, id));
        case RecordKind::rule:
            return encoded(findByID(ledger.rules, id));
        case RecordKind::batch:
            return encoded(findByID(ledger.batches, id));
        case RecordKind::budget:
            return encoded(findByID(ledger.budgets, id));
        case RecordKind::change:
            return encoded(findByID(ledger.changes, id));
        case RecordKind::merchant: {
            const auto uuid = id.uuid();
            return encoded(uuid ? ledger.merchants.find(*uuid) : nullptr);
        }
        case RecordKind::transaction: {
            const auto uuid = id.uuid();
            return encoded(uuid ? ledger.transactions.find(*uuid) : nullptr);
        }
        case RecordKind::profile: {
            const std::string text = id.text();
            for (const auto& profile : ledger.profiles) {
                if (profile.id == text)
                    return record_json::encode(profile);
            }
            return std::nullopt;
        }
        case RecordKind::aiFiling:
            return encoded(ledger.aiFilings.find(id.text()));
        case RecordKind::settings:
            return record_json::encode(*ledger.settings);
    }
    return std::nullopt;
}

// The stored texts of a run of records, made a block ahead of the writes on
// a second thread: for a save of many records, making the JSON costs about
// half of what SQLite then does with it.
class EncodedBlocks {
  public:
    static constexpr std::size_t kBlock = 2048;

    EncodedBlocks(const Ledger& ledger, RecordKind kind, const std::vector<RecordID>& ids)
        : m_ledger(ledger), m_kind(kind), m_ids(ids) {
        if (m_ids.size() > kBlock)
            m_next = std::async(std::launch::async, [this] { return encode(0); });
    }
    EncodedBlocks(const EncodedBlocks&) = delete;
    EncodedBlocks& operator=(const EncodedBlocks&) = delete;

    // The text of each id from `first` on, in blocks, while there are any.
    std::vector<std::optional<std::string>> take(std::size_t first) {
        if (!m_next.valid())
            return encode(first);
        auto block = m_next.get();
        if (first + kBlock < m_ids.size())
            m_next = std::async(std::launch::async,
                                [this, next = first + kBlock] { return encode(next); });
        return block;
    }

  private:
    std::vector<std::optional<std::string>> encode(std::size_t first) const {
        const std::size_t last = std::min(m_ids.size(), first + kBlock);
        std::vector<std::optional<std::string>> texts;
        texts.reserve(last - first);
        for (std::size_t i = first; i < last; ++i)
            texts.push_back(encodeRecord(m_ledger, m_kind, m_ids[i]));
        return texts;
    }

    const Ledger& m_ledger;
    RecordKind m_kind;
    const std::vector<RecordID>& m_ids;
    // Waited for by its destructor, before the ids it reads go.
    std::future<std::vector<std::optional<std::string>>> m_next;
};

// Pages in the log past which it is copied back: SQLite's own default.
constexpr int kCopyBackPages = 1000;

// Sets the connection's journal mode and says the one it has after: the old
// one when SQLite couldn't change it.
std::string journalMode(sqlite3* db, const char* mode) {
    sqlite3_stmt* statement = nullptr;
    const std::string sql = std::string("PRAGMA journal_mode = ") + mode;
    std::string result;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
        sqlite3_step(statement) == SQLITE_ROW) {
        if (const unsigned char* text = sqlite3_column_text(statement, 0))
            result = reinterpret_cast<const char*>(text);
    }
    sqlite3_finalize(statement);
    return result;
}

}  // namespace

// Copies the write-ahead log back into the data file, on request, on a thread
// and a connection of its own. A save's commit is durable before it asks (the
// log is synced at commit), and a copy cut short by a crash is redone from the
// log at the next open, so nothing here bears on what a save keeps.
class detail::LogCopier {
  public:
    explicit LogCopier(std::filesystem::path file) : m_file(std::move(file)) {}
    ~LogCopier() { stop(); }
    LogCopier(const LogCopier&) = delete;
    LogCopier& operator=(const LogCopier&) = delete;

    // Asks for a copy and returns at once. False when no thread can be had,
    // and the caller copies for itself.
    bool request() {
        std::lock_guard lock(m_mutex);
        if (m_stopping)
            return true;  // closing: the last connection's close copies what is left
        if (!m_thread.joinable()) {
            try {
                m_thread = std::thread([this] { run(); });
            } catch (const std::system_error&) {
                return false;
            }
        }
        m_requested = true;
        m_wake.notify_one();
        return true;
    }

    // Waits for a copy under way; nothing is copied after this.
    void stop() {
        {
            std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_wake.notify_one();
        if (m_thread.joinable())
            m_thread.join();
    }

    // Waits for a copy under way and closes the copier's connection, so that
    // the store's own is the only one; the next request starts it again.
    void pause() {
        stop();
        std::lock_guard lock(m_mutex);
        m_stopping = false;
        m_requested = false;
    }

  private:
    void run() {
        sqlite3* db = nullptr;
        const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX;
        if (sqlite3_open_v2(m_file.c_str(), &db, flags, nullptr) == SQLITE_OK)
            sqlite3_exec(db, "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr);
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_wake.wait(lock, [&] { return m_requested || m_stopping; });
            if (m_stopping)
                break;
            m_requested = false;
            lock.unlock();
            // Passive: never waits for the store's own reads or writes. What
            // it can't copy now is copied at the next request or at close.
            if (db)
                sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
            lock.lock();
        }
        lock.unlock();
        sqlite3_close_v2(db);
    }

    std::filesystem::path m_file;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_requested = false;
    bool m_stopping = false;
    std::thread m_thread;  // started at the first request
};

namespace {

// Called after every commit of the store's connection, in place of SQLite's
// own automatic checkpoint.
int afterCommit(void* copier, sqlite3* db, const char* /*schema*/, int pages) {
    if (pages >= kCopyBackPages && !static_cast<detail::LogCopier*>(copier)->request())
        sqlite3_wal_checkpoint_v2(db, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
    return SQLITE_OK;
}

template <typename T, typename Less>
SharedVector<T> sorted(std::vector<T> items, Less less) {
    std::stable_sort(items.begin(), items.end(), less);
    return SharedVector<T>(std::move(items));
}

// (device, inode) of the file under `path`; (0, 0) when there is none.
std::pair<uint64_t, uint64_t> fileIdentity(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0)
        return {0, 0};
    return {static_cast<uint64_t>(status.st_dev), static_cast<uint64_t>(status.st_ino)};
}

bool isMissingOrEmpty(const std::filesystem::path& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) != 0 || status.st_size == 0;
}

// A data file that is gone while backups of it remain was lost, by a crash or
// by hand; starting an empty ledger in its place would hide that.
void refuseLostFile(const std::filesystem::path& file) {
    if (!isMissingOrEmpty(file))
        return;
    const BackupManager backups(file.parent_path() / "Backups");
    if (backups.list().empty())
        return;
    throw StoreError::open("the file " + file.string() +
                           " is missing or empty, but the Backups folder beside it has copies. "
                           "Restore the newest backup to carry on where you left off, or move "
                           "the Backups folder away to start a new ledger.");
}

// Made before SQLite opens it, so that the file is private from its first byte.
void createPrivateFile(const std::filesystem::path& file) {
    const int descriptor =
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor >= 0)
        ::close(descriptor);
}

// A save that wrote straight into the file and was stopped can leave a
// journal that holds nothing to roll back: an empty one, when it stopped
// between its commit and the return to the log, or one whose header was never
// finished (SQLite writes its first byte last, after the pages beside it are
// on the disk), when it stopped before its first sync. SQLite passes over
// both and leaves them lying beside the file. Any other journal was rolled
// back before the log was opened, and once the file is on its log, with this
// connection reading it, nobody else can be writing one.
void removeSpentJournal(const std::filesystem::path& file) {
    const std::string journal = file.string() + "-journal";
    const int descriptor = ::open(journal.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0)
        return;
    struct stat status {};
    unsigned char first = 0;
    const bool spent =
        ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
        (status.st_size == 0 || (::pread(descriptor, &first, 1, 0) == 1 && first == 0));
    ::close(descriptor);
    if (spent)
        ::unlink(journal.c_str());
}

void beginWriting(sqlite3* db) {
    const int result = sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    if (result == SQLITE_BUSY || result == SQLITE_LOCKED)
        throw StoreError::busy();
    if (result != SQLITE_OK)
        throw StoreError::sql(sqlite3_errmsg(db));
}

}  // namespace

LedgerStore::LedgerStore(std::filesystem::path file) : m_file(std::move(file)) {
    createPrivateFolder(m_file.parent_path());
    refuseLostFile(m_file);
    createPrivateFile(m_file);

    sqlite3* db = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    // Its writes are gathered into large ones: an import or a review
    // decision writes thousands of pages.
    if (sqlite3_open_v2(m_file.c_str(), &db, flags, detail::gatheredWritesVFS()) != SQLITE_OK) {
        std::string detail = db ? sqlite3_errmsg(db) : "unknown error";
        sqlite3_close(db);
        throw StoreError::open(std::move(detail));
    }
    m_db = db;
    try {
        // Another program's save holds the lock for a moment; wait it out
        // rather than fail at once.
        sqlite3_busy_timeout(m_db, kLockWaitMilliseconds);
        // Switching a new file to its log, and making its tables, want the
        // file to themselves; SQLite refuses rather than waits when another
        // program opening the same new file at the same moment holds it. So
        // the first steps are tried again, briefly, until they have it.
        const auto deadline =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(kLockWaitMilliseconds);
        for (;;) {
            try {
                // Durability over speed: a saved change must survive a power
                // cut. Gathered writes count on it too.
                execute(m_db, "PRAGMA synchronous = FULL");
                execute(m_db, "PRAGMA journal_mode = WAL");
                migrate();
                break;
            } catch (const StoreError&) {
                const int code = sqlite3_errcode(m_db) & 0xff;
                if ((code != SQLITE_BUSY && code != SQLITE_LOCKED) ||
                    std::chrono::steady_clock::now() > deadline) {
                    throw;
                }
                sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
        }
        removeSpentJournal(m_file);
        m_logCopier = std::make_unique<detail::LogCopier>(m_file);
        sqlite3_wal_hook(m_db, afterCommit, m_logCopier.get());
        m_knownVersion = dataVersion(m_db);
        const auto identity = fileIdentity(m_file);
        m_device = identity.first;
        m_inode = identity.second;
        // SQLite gives its log the data file's mode; older files may have
        // both open to everyone.
        for (const char* suffix : {"", "-wal", "-shm"})
            makeFilePrivate(m_file.string() + suffix);
    } catch (...) {
        m_logCopier.reset();
        sqlite3_close(m_db);
        m_db = nullptr;
        throw;
    }
}

LedgerStore::~LedgerStore() {
    close();
}

void LedgerStore::migrate() {
    int version = 0;
    {
        Statement pragma(m_db, "PRAGMA user_version");
        if (pragma.step())
            version = sqlite3_column_int(pragma.get(), 0);
    }
    m_openedAtVersion = version;
    if (version > kFormatVersion)
        throw StoreError::newerVersion(version);
    if (version == 0) {
        // The tables and the format number in one transaction, so that
        // another program opening the same new file never sees the one
        // without the other (and takes it for a file of format 1).
        beginWriting(m_db);
        try {
            bool stillNew = true;
            {
                Statement again(m_db, "PRAGMA user_version");
                stillNew = !again.step() || sqlite3_column_int(again.get(), 0) == 0;
            }
            if (stillNew) {
                execute(m_db, kSchema);
                execute(m_db, "PRAGMA user_version = 2");
            }
            execute(m_db, "COMMIT");
        } catch (...) {
            sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
        return;
    }
    // Format 2 changed only what may stand inside the JSON; the migration is a
    // safety copy and the new number.
    if (version == 1) {
        BackupManager(m_file.parent_path() / "Backups")
            .makeBackup(*this, "before-format-2", Instant::now());
    }
    if (version < kFormatVersion)
        execute(m_db, "PRAGMA user_version = 2");
}

sqlite3* LedgerStore::connection() const {
    if (!m_db)
        throw StoreError::sql(kClosed);
    return m_db;
}

Ledger LedgerStore::load() {
    std::lock_guard lock(m_mutex);
    sqlite3* db = connection();
    // One read transaction: every kind comes from the same committed state,
    // whatever another program saves meanwhile, and data_version names it.
    execute(db, kCopiedReads);
    execute(db, "BEGIN");
    try {
        Ledger ledger = loadRecords(db);
        m_knownVersion = dataVersion(db);
        execute(db, "COMMIT");
        execute(db, kMappedReads);
        return ledger;
    } catch (...) {
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        sqlite3_exec(db, kMappedReads, nullptr, nullptr, nullptr);
        throw;
    }
}

Ledger LedgerStore::loadRecords(sqlite3* db) {
    m_unreadableRecords = 0;
    int unreadable = 0;
    Ledger ledger;

    auto people = loadKind(db, RecordKind::person, unreadable, decodeValue<Person>);
    auto accounts = loadKind(db, RecordKind::account, unreadable, decodeValue<Account>);
    auto categories = loadKind(db, RecordKind::category, unreadable, decodeValue<LedgerCategory>);
    auto rules = loadKind(db, RecordKind::rule, unreadable, decodeValue<Rule>);
    const auto byID = [](const auto& record) { return record.id; };
    ledger.merchants =
        buildMap(loadKind(db, RecordKind::merchant, unreadable, decodeKeyed<Merchant>(byID)));
    ledger.transactions = buildMap(
        loadKind(db, RecordKind::transaction, unreadable, decodeKeyed<LedgerTransaction>(byID)));
    auto batches = loadKind(db, RecordKind::batch, unreadable, decodeValue<ImportBatch>);
    auto budgets = loadKind(db, RecordKind::budget, unreadable, decodeValue<Budget>);
    auto profiles = loadKind(db, RecordKind::profile, unreadable, decodeValue<ImportProfile>);
    auto changes = loadKind(db, RecordKind::change, unreadable, decodeValue<ChangeSet>);
    ledger.aiFilings = buildMap(
        loadKind(db, RecordKind::aiFiling, unreadable,
                 decodeKeyed<AIFiling>([](const AIFiling& filing) { return filing.key; })));
    auto settings = loadKind(db, RecordKind::settings, unreadable, decodeValue<LedgerSettings>);
    m_loadFoundRecords = unreadable > 0 || !people.empty() || !accounts.empty() ||
                         !categories.empty() || !rules.empty() || !ledger.merchants.empty() ||
                         !ledger.transactions.empty() || !batches.empty() || !budgets.empty() ||
                         !profiles.empty() || !changes.empty() || !ledger.aiFilings.empty() ||
                         !settings.empty();
    if (!settings.empty())
        ledger.settings = std::move(settings.back());

    const auto byName = [](const auto& a, const auto& b) { return a.name < b.name; };
    ledger.people = sorted(std::move(people), byName);
    ledger.accounts = sorted(std::move(accounts), byName);
    ledger.categories =
        sorted(std::move(categories), [](const LedgerCategory& a, const LedgerCategory& b) {
            if (a.group != b.group)
                return a.group == CategoryGroup::expense;
            if (a.colorIndex != b.colorIndex)
                return a.colorIndex < b.colorIndex;
            return a.name < b.name;
        });
    ledger.batches = sorted(std::move(batches), [](const ImportBatch& a, const ImportBatch& b) {
        return a.importedAt < b.importedAt;
    });
    ledger.changes = sorted(std::move(changes),
                            [](const ChangeSet& a, const ChangeSet& b) { return a.date < b.date; });
    ledger.rules = SharedVector<Rule>(std::move(rules));
    ledger.budgets = SharedVector<Budget>(std::move(budgets));
    ledger.profiles = SharedVector<ImportProfile>(std::move(profiles));

    // A brand-new file; one that lost only its categories is left as it is.
    if (ledger.categories.empty() && ledger.transactions.empty() && ledger.accounts.empty()) {
        ledger.categories = SharedVector<LedgerCategory>(LedgerCategory::defaults());
    }
    m_unreadableRecords = unreadable;
    return ledger;
}

void LedgerStore::save(const LedgerDelta& delta, const Ledger& ledger) {
    if (delta.isEmpty())
        return;
    std::lock_guard lock(m_mutex);
    sqlite3* db = connection();
    if (!m_directWrites || delta.sourceLines.size() < kDirectWriteLines || !leaveLog(db)) {
        write(db, delta, ledger);
        return;
    }
    try {
        write(db, delta, ledger);
    } catch (...) {
        returnToLog(db);
        throw;
    }
    returnToLog(db);
}

bool LedgerStore::leaveLog(sqlite3* db) {
    m_logCopier->pause();
    if (sqlite3_exec(db, "PRAGMA locking_mode = EXCLUSIVE", nullptr, nullptr, nullptr) != SQLITE_OK)
        return false;
    // Asked once, not waited for: a program that has the file open keeps it
    // on its log, and this save goes there too.
    sqlite3_busy_timeout(db, 0);
    bool alone = false;
    bool left = false;
    try {
        // In exclusive locking, the first write transaction takes the whole
        // file and keeps it; it fails at once while any other connection has
        // it open.
        if (sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK) {
            // Checked while the file is held: SQLite counts the switch below
            // as a change, and from here on nobody else can make one. A file
            // that changed goes through the log, whose own check turns the
            // save away.
            alone = dataVersion(db) == m_knownVersion && !replaced();
            if (sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
                sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
                alone = false;
            }
        }
        // TRUNCATE: the commit empties the journal and syncs it, rather than
        // deleting it, which a power cut could undo.
        left = alone && journalMode(db, "TRUNCATE") == "truncate";
        if (left)
            m_knownVersion = dataVersion(db);
    } catch (const StoreError&) {
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        if (left)
            returnToLog(db);
        left = false;
    }
    sqlite3_busy_timeout(db, kLockWaitMilliseconds);
    if (!left)
        sqlite3_exec(db, "PRAGMA locking_mode = NORMAL", nullptr, nullptr, nullptr);
    return left;
}

void LedgerStore::returnToLog(sqlite3* db) {
    // Normal locking from the next statement on; the file stays this
    // connection's alone until the log is back.
    sqlite3_exec(db, "PRAGMA locking_mode = NORMAL", nullptr, nullptr, nullptr);
    // Through DELETE, which removes the emptied journal; WAL alone would leave it.
    (void)journalMode(db, "DELETE");
    (void)journalMode(db, "WAL");
    // SQLite counts its own return to the log as a change by another
    // connection, and can't tell it from a save by a program that opened the
    // file the moment it was let go. So the file counts as changed: the next
    // save, or the next look, reads it again.
    m_knownVersion = kVersionUnknown;
}

void LedgerStore::write(sqlite3* db, const LedgerDelta& delta, const Ledger& ledger) {
    beginWriting(db);
    try {
        // Under the write lock, so nobody can slip in between check and write.
        if (dataVersion(db) != m_knownVersion || replaced())
            throw StoreError::changedElsewhere();
        Statement insert(db, "INSERT OR REPLACE INTO records (kind, id, data) VALUES (?, ?, ?)");
        Statement remove(db, "DELETE FROM records WHERE kind = ? AND id = ?");
        const auto removeRow = [&](RecordKind kind, const RecordID& id) {
            remove.bind(1, rawValue(kind)).bind(2, id.text()).run();
        };
        for (const RecordKind kind : allCases<RecordKind>()) {
            // Rows go in in key order: the table's B-tree then grows at its end.
            if (const auto it = delta.changed.find(kind); it != delta.changed.end()) {
                const auto ids = it->second.sorted();
                EncodedBlocks encoded(ledger, kind, ids);
                for (std::size_t first = 0; first < ids.size(); first += EncodedBlocks::kBlock) {
                    const auto block = encoded.take(first);
                    for (std::size_t i = 0; i < block.size(); ++i) {
                        const RecordID& id = ids[first + i];
                        if (const auto& data = block[i]) {
                            // JSON can't carry it, so the record would never load again.
                            if (!text::isValidUTF8(*data))
                                throw StoreError::sql(kNotUTF8);
                            insert.bind(1, rawValue(kind))
                                .bind(2, id.text())
                                .bindBlobInPlace(3, *data)
                                .run();
                        } else {
                            removeRow(kind, id);  // changed, then removed within one operation
                        }
                    }
                }
            }
            if (const auto it = delta.deleted.find(kind); it != delta.deleted.end()) {
                for (const auto& id : it->second.sorted())
                    removeRow(kind, id);
            }
        }
        if (!delta.deletedSourceBatches.empty()) {
            Statement removeLines(db, "DELETE FROM source_lines WHERE batch_id = ?");
            for (const auto& batch : delta.deletedSourceBatches)
                removeLines.bind(1, batch.text()).run();
        }
        if (!delta.sourceLines.empty()) {
            Statement insertLine(
                db, "INSERT OR REPLACE INTO source_lines (batch_id, line, text) VALUES (?, ?, ?)");
            for (const auto& line : delta.sourceLines) {
                insertLine.bind(1, line.batchID.text()).bind(2, line.line).bind(3, line.text).run();
            }
        }
        execute(db, "COMMIT");
    } catch (...) {
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

void LedgerStore::saveAll(const Ledger& ledger) {
    LedgerDelta delta;
    const auto name = [&delta](RecordKind kind, const auto& records) {
        for (const auto& record : records)
            delta.change(kind, record.id);
    };
    name(RecordKind::person, ledger.people);
    name(RecordKind::account, ledger.accounts);
    name(RecordKind::category, ledger.categories);
    name(RecordKind::merchant, ledger.merchants);
    name(RecordKind::rule, ledger.rules);
    name(RecordKind::transaction, ledger.transactions);
    name(RecordKind::batch, ledger.batches);
    name(RecordKind::budget, ledger.budgets);
    name(RecordKind::change, ledger.changes);
    name(RecordKind::profile, ledger.profiles);
    for (const auto& filing : ledger.aiFilings)
        delta.change(RecordKind::aiFiling, filing.key);
    delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    save(delta, ledger);
}

bool LedgerStore::isEmpty() {
    std::lock_guard lock(m_mutex);
    Statement count(connection(), "SELECT COUNT(*) FROM records");
    return !count.step() || sqlite3_column_int64(count.get(), 0) == 0;
}

bool LedgerStore::changedOnDisk() {
    std::lock_guard lock(m_mutex);
    if (!m_db)
        return false;
    try {
        return dataVersion(m_db) != m_knownVersion || replaced();
    } catch (const StoreError&) {
        return false;  // asked again at the next look
    }
}

bool LedgerStore::replaced() const {
    return fileIdentity(m_file) != std::pair{m_device, m_inode};
}

int64_t LedgerStore::dataVersion(sqlite3* db) const {
    Statement pragma(db, "PRAGMA data_version");
    if (!pragma.step())
        throw StoreError::sql(sqlite3_errmsg(db));
    return sqlite3_column_int64(pragma.get(), 0);
}

std::optional<std::string> LedgerStore::sourceLine(const Uuid& batchID, int64_t line) {
    std::lock_guard lock(m_mutex);
    if (!m_db)
        return std::nullopt;
    try {
        Statement select(m_db, "SELECT text FROM source_lines WHERE batch_id = ? AND line = ?");
        select.bind(1, batchID.text()).bind(2, line);
        if (!select.step())
            return std::nullopt;
        return std::string(columnBytes(select.get(), 0));
    } catch (const StoreError&) {
        return std::nullopt;  // the raw line is a convenience, never an error
    }
}

void LedgerStore::deleteAllSourceLines() {
    std::lock_guard lock(m_mutex);
    execute(connection(), "DELETE FROM source_lines");
}

void LedgerStore::close() {
    std::lock_guard lock(m_mutex);
    // First, so that the store's own connection is the last one and its
    // close copies back what is left and removes the log.
    if (m_logCopier)
        m_logCopier->stop();
    if (m_db)
        sqlite3_close_v2(m_db);
    m_db = nullptr;
}

bool LedgerStore::verify(const std::filesystem::path& file) {
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        return false;
    }
    bool ok = false;
    try {
        Statement check(db, "PRAGMA quick_check");
        ok = check.step() && columnBytes(check.get(), 0) == "ok";
        if (ok) {
            Statement count(db, "SELECT COUNT(*) FROM records");
            ok = count.step();
        }
    } catch (const StoreError&) {
        ok = false;
    }
    sqlite3_close(db);
    return ok;
}

namespace {

// A connection of its own, closed on every path out.
class Connection {
  public:
    Connection(const std::filesystem::path& file, int flags) {
        if (sqlite3_open_v2(file.c_str(), &m_db, flags, nullptr) != SQLITE_OK) {
            m_detail = m_db ? sqlite3_errmsg(m_db) : "unknown error";
            sqlite3_close(m_db);
            m_db = nullptr;
            return;
        }
        sqlite3_busy_timeout(m_db, LedgerStore::kLockWaitMilliseconds);
    }
    ~Connection() { sqlite3_close_v2(m_db); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    [[nodiscard]] sqlite3* get() const { return m_db; }
    [[nodiscard]] const std::string& detail() const { return m_detail; }

  private:
    sqlite3* m_db = nullptr;
    std::string m_detail;
};

// The database's page size, or absent when it isn't one.
std::optional<int64_t> pageSize(sqlite3* db) {
    try {
        Statement pragma(db, "PRAGMA page_size");
        if (pragma.step())
            return sqlite3_column_int64(pragma.get(), 0);
    } catch (const StoreError&) {
    }
    return std::nullopt;
}

}  // namespace

void LedgerStore::copyFile(const std::filesystem::path& source,
                           const std::filesystem::path& target) {
    const Connection from(source, SQLITE_OPEN_READWRITE);
    if (!from.get())
        throw StoreError::open(from.detail());
    try {
        Statement vacuum(from.get(), "VACUUM INTO ?");
        vacuum.bind(1, target.string()).run();
    } catch (const StoreError& error) {
        throw StoreError::open(error.detail());
    }
}

bool LedgerStore::replaceContents(const std::filesystem::path& file,
                                  const std::filesystem::path& source) {
    if (isMissingOrEmpty(file))
        return false;
    const Connection to(file, SQLITE_OPEN_READWRITE);
    if (!to.get())
        return false;
    const auto targetPageSize = pageSize(to.get());
    if (!targetPageSize)
        return false;
    try {
        execute(to.get(), "PRAGMA journal_mode = WAL");
        execute(to.get(), "PRAGMA synchronous = FULL");
    } catch (const StoreError&) {
        return false;
    }
    {
        // A log can't change the page size, so the copy takes the file's.
        const Connection adjust(source, SQLITE_OPEN_READWRITE);
        if (!adjust.get())
            throw StoreError::open(adjust.detail());
        if (pageSize(adjust.get()) != targetPageSize) {
            execute(adjust.get(),
                    ("PRAGMA page_size = " + std::to_string(*targetPageSize)).c_str());
            execute(adjust.get(), "VACUUM");
        }
    }
    const Connection from(source, SQLITE_OPEN_READONLY);
    if (!from.get())
        throw StoreError::open(from.detail());
    sqlite3_backup* copy = sqlite3_backup_init(to.get(), "main", from.get(), "main");
    if (!copy)
        throw StoreError::sql(sqlite3_errmsg(to.get()));
    // All pages in one step: one transaction, so all or nothing.
    const int stepped = sqlite3_backup_step(copy, -1);
    const int finished = sqlite3_backup_finish(copy);
    if (stepped == SQLITE_BUSY || stepped == SQLITE_LOCKED)
        throw StoreError::busy();
    if (stepped != SQLITE_DONE || finished != SQLITE_OK)
        throw StoreError::sql(sqlite3_errmsg(to.get()));
    return true;
}

void LedgerStore::backup(const std::filesystem::path& target) {
    std::lock_guard lock(m_mutex);
    // Pages copied as they stand rather than a rebuilt file (VACUUM INTO):
    // a copy before every import of a long history must cost little. The
    // copy keeps no journal of its own and isn't synced page by page; it is
    // a new file nobody reads until the caller has synced it whole and
    // named it.
    const Connection to(target, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOFOLLOW);
    if (!to.get())
        throw StoreError::open(to.detail());
    execute(to.get(), "PRAGMA journal_mode = OFF");
    execute(to.get(), "PRAGMA synchronous = OFF");
    sqlite3_backup* copy = sqlite3_backup_init(to.get(), "main", connection(), "main");
    if (!copy)
        throw StoreError::sql(sqlite3_errmsg(to.get()));
    const int stepped = sqlite3_backup_step(copy, -1);
    const int finished = sqlite3_backup_finish(copy);
    if (stepped != SQLITE_DONE || finished != SQLITE_OK)
        throw StoreError::sql(sqlite3_errmsg(to.get()));
    // The live file's header says it keeps a log; a copy on its own doesn't,
    // so that it opens read-only anywhere, as a copy made by VACUUM does.
    execute(to.get(), "PRAGMA journal_mode = DELETE");
}

}  // namespace copperwick
