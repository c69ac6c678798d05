#include "core/store/ledger_store.h"

#include <algorithm>
#include <thread>
#include <vector>

#include <sqlite3.h>

#include "core/model/record_json.h"
#include "core/store/backup_manager.h"
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
    Statement& bindBlob(int index, std::string_view bytes) {
        check(sqlite3_bind_blob(m_statement, index, bytes.data(), static_cast<int>(bytes.size()),
                                SQLITE_TRANSIENT));
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

// Decodes stored records, spreading large batches over the machine's cores:
// decoding is most of a load, and each record decodes on its own. Records
// come back already shared, so the allocation happens on the workers too.
// A null entry is a row that didn't decode.
template <typename T>
std::vector<std::shared_ptr<const T>> decodeAll(const RowBatch& rows) {
    std::vector<std::shared_ptr<const T>> decoded(rows.size());
    const auto decodeRange = [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            auto record = record_json::decode<T>(rows.row(i));
            if (record)
                decoded[i] = std::make_shared<const T>(std::move(*record.value));
        }
    };
    constexpr std::size_t kRowsWorthAThread = 2048;
    const std::size_t threads =
        std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()),
                              std::max<std::size_t>(1, rows.size() / kRowsWorthAThread));
    if (threads <= 1) {
        decodeRange(0, rows.size());
        return decoded;
    }
    std::vector<std::thread> workers;
    const std::size_t share = (rows.size() + threads - 1) / threads;
    for (std::size_t t = 1; t < threads; ++t) {
        workers.emplace_back(decodeRange, std::min(rows.size(), t * share),
                             std::min(rows.size(), (t + 1) * share));
    }
    decodeRange(0, std::min(rows.size(), share));
    for (auto& worker : workers)
        worker.join();
    return decoded;
}

// Reads every row of one kind, handing each decoded record to `add` in id
// order. A row that doesn't decode is counted and left in the file. Rows are
// taken in batches so that a large file never sits in memory twice over.
template <typename T, typename Add>
void loadKind(sqlite3* db, RecordKind kind, int& unreadable, Add&& add) {
    constexpr std::size_t kBatchRows = 16384;
    Statement select(db, "SELECT data FROM records WHERE kind = ? ORDER BY id");
    select.bind(1, rawValue(kind));
    RowBatch rows;
    bool more = true;
    while (more) {
        rows.clear();
        while (rows.size() < kBatchRows && (more = select.step())) {
            const auto bytes = columnBytes(select.get(), 0);
            if (!bytes.empty())
                rows.add(bytes);
        }
        for (auto& record : decodeAll<T>(rows)) {
            if (record) {
                add(std::move(record));
            } else {
                ++unreadable;
            }
        }
    }
}

template <typename T>
const T* findByID(const SharedVector<T>& records, const std::string& id) {
    const auto uuid = Uuid::parse(id);
    if (!uuid)
        return nullptr;
    for (const auto& record : records) {
        if (record.id == *uuid)
            return &record;
    }
    return nullptr;
}

// The stored text of one record, or absent when the ledger no longer has it.
std::optional<std::string> encodeRecord(const Ledger& ledger, RecordKind kind,
                                        const std::string& id) {
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
            const auto uuid = Uuid::parse(id);
            return encoded(uuid ? ledger.merchants.find(*uuid) : nullptr);
        }
        case RecordKind::transaction: {
            const auto uuid = Uuid::parse(id);
            return encoded(uuid ? ledger.transactions.find(*uuid) : nullptr);
        }
        case RecordKind::profile: {
            for (const auto& profile : ledger.profiles) {
                if (profile.id == id)
                    return record_json::encode(profile);
            }
            return std::nullopt;
        }
        case RecordKind::aiFiling:
            return encoded(ledger.aiFilings.find(id));
        case RecordKind::settings:
            return record_json::encode(*ledger.settings);
    }
    return std::nullopt;
}

template <typename T, typename Less>
SharedVector<T> sorted(std::vector<T> items, Less less) {
    std::stable_sort(items.begin(), items.end(), less);
    return SharedVector<T>(std::move(items));
}

}  // namespace

LedgerStore::LedgerStore(std::filesystem::path file) : m_file(std::move(file)) {
    createPrivateFolder(m_file.parent_path());

    sqlite3* db = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    if (sqlite3_open_v2(m_file.c_str(), &db, flags, nullptr) != SQLITE_OK) {
        std::string detail = db ? sqlite3_errmsg(db) : "unknown error";
        sqlite3_close(db);
        throw StoreError::open(std::move(detail));
    }
    m_db = db;
    try {
        // Durability over speed: a saved change must survive a power cut.
        execute(m_db, "PRAGMA journal_mode = WAL");
        execute(m_db, "PRAGMA synchronous = FULL");
        migrate();
    } catch (...) {
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
    if (version == 0)
        execute(m_db, kSchema);
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
    m_unreadableRecords = 0;
    int unreadable = 0;
    Ledger ledger;

    std::vector<Person> people;
    std::vector<Account> accounts;
    std::vector<LedgerCategory> categories;
    std::vector<Rule> rules;
    std::vector<ImportBatch> batches;
    std::vector<Budget> budgets;
    std::vector<ImportProfile> profiles;
    std::vector<ChangeSet> changes;
    const auto into = [](auto& items) {
        return [&items](auto&& record) { items.push_back(*record); };
    };

    loadKind<Person>(db, RecordKind::person, unreadable, into(people));
    loadKind<Account>(db, RecordKind::account, unreadable, into(accounts));
    loadKind<LedgerCategory>(db, RecordKind::category, unreadable, into(categories));
    loadKind<Rule>(db, RecordKind::rule, unreadable, into(rules));
    // Keys are copied out before the record is handed over: argument order is unspecified.
    loadKind<Merchant>(db, RecordKind::merchant, unreadable, [&](auto&& m) {
        const Uuid id = m->id;
        ledger.merchants.setShared(id, std::move(m));
    });
    loadKind<LedgerTransaction>(db, RecordKind::transaction, unreadable, [&](auto&& t) {
        const Uuid id = t->id;
        ledger.transactions.setShared(id, std::move(t));
    });
    loadKind<ImportBatch>(db, RecordKind::batch, unreadable, into(batches));
    loadKind<Budget>(db, RecordKind::budget, unreadable, into(budgets));
    loadKind<ImportProfile>(db, RecordKind::profile, unreadable, into(profiles));
    loadKind<ChangeSet>(db, RecordKind::change, unreadable, into(changes));
    loadKind<AIFiling>(db, RecordKind::aiFiling, unreadable, [&](auto&& f) {
        const std::string key = f->key;
        ledger.aiFilings.setShared(key, std::move(f));
    });
    loadKind<LedgerSettings>(db, RecordKind::settings, unreadable,
                             [&](auto&& s) { ledger.settings = *s; });

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
    execute(db, "BEGIN IMMEDIATE");
    try {
        Statement insert(db, "INSERT OR REPLACE INTO records (kind, id, data) VALUES (?, ?, ?)");
        Statement remove(db, "DELETE FROM records WHERE kind = ? AND id = ?");
        const auto removeRow = [&](RecordKind kind, const std::string& id) {
            remove.bind(1, rawValue(kind)).bind(2, id).run();
        };
        for (const RecordKind kind : allCases<RecordKind>()) {
            // std::set keeps the ids sorted, which is the order rows are written in.
            if (const auto it = delta.changed.find(kind); it != delta.changed.end()) {
                for (const auto& id : it->second) {
                    if (const auto data = encodeRecord(ledger, kind, id)) {
                        insert.bind(1, rawValue(kind)).bind(2, id).bindBlob(3, *data).run();
                    } else {
                        removeRow(kind, id);  // changed, then removed within one operation
                    }
                }
            }
            if (const auto it = delta.deleted.find(kind); it != delta.deleted.end()) {
                for (const auto& id : it->second)
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

void LedgerStore::backup(const std::filesystem::path& target) {
    std::lock_guard lock(m_mutex);
    Statement vacuum(connection(), "VACUUM INTO ?");
    vacuum.bind(1, target.string()).run();
}

void LedgerStore::close() {
    std::lock_guard lock(m_mutex);
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

}  // namespace copperwick
