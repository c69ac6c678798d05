#include "core/store/gathered_writes.h"

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

sqlite3* openWith(const std::filesystem::path& file, const char* vfs) {
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, vfs),
              SQLITE_OK);
    sqlite3_busy_timeout(db, 5000);
    return db;
}

void run(sqlite3* db, const std::string& sql) {
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error), SQLITE_OK)
        << sql << ": " << (error ? error : "");
    sqlite3_free(error);
}

std::string text(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr), SQLITE_OK) << sql;
    std::string value;
    if (sqlite3_step(statement) == SQLITE_ROW) {
        if (const unsigned char* column = sqlite3_column_text(statement, 0))
            value = reinterpret_cast<const char*>(column);
    }
    sqlite3_finalize(statement);
    return value;
}

// A digest of every byte of every row, so a page that never reached the file
// shows.
constexpr const char* kDigest =
    "SELECT count(*) || ':' || total(length(v)) || ':' || "
    "total(k * unicode(substr(v, 1 + k % 300, 1))) || ':' || "
    "total(k * unicode(substr(v, length(v) - k % 300, 1))) FROM t";

struct Layout {
    const char* journal;
    int pageSize;
};

TEST(GatheredWrites, WhatIsWrittenThroughItIsWhatEveryConnectionReads) {
    // Appends and changes spread through the file, a rollback, and pages as
    // large as a whole gathered run.
    for (const Layout layout : {Layout{"DELETE", 4096}, Layout{"TRUNCATE", 4096},
                                Layout{"WAL", 4096}, Layout{"WAL", 65536}}) {
        SCOPED_TRACE(std::string(layout.journal) + " " + std::to_string(layout.pageSize));
        testing::TempFolder temp;
        const auto file = temp / "gathered.sqlite";
        sqlite3* writer = openWith(file, detail::gatheredWritesVFS());
        run(writer, "PRAGMA page_size = " + std::to_string(layout.pageSize));
        run(writer, "PRAGMA synchronous = FULL");
        run(writer, std::string("PRAGMA journal_mode = ") + layout.journal);
        run(writer, "PRAGMA cache_size = 20");  // spills pages before each commit
        run(writer, "CREATE TABLE t (k INTEGER PRIMARY KEY, v TEXT NOT NULL)");
        sqlite3* reader = openWith(file, nullptr);

        for (int round = 1; round <= 4; ++round) {
            const std::string mark = std::to_string(round);
            run(writer, "BEGIN");
            run(writer,
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 700) "
                "INSERT INTO t (v) SELECT printf('%.*c', 300 + i % 500, char(65 + (i + " +
                    mark + ") % 26)) FROM n");
            run(writer, "UPDATE t SET v = v || '" + mark + "' WHERE k % 7 = " + mark);
            run(writer, "COMMIT");
            EXPECT_EQ(text(reader, kDigest), text(writer, kDigest)) << "round " << round;
        }

        const std::string before = text(writer, kDigest);
        run(writer, "BEGIN");
        run(writer, "UPDATE t SET v = 'gone' WHERE k % 3 = 0");
        run(writer, "DELETE FROM t WHERE k % 5 = 0");
        run(writer, "ROLLBACK");
        EXPECT_EQ(text(writer, kDigest), before);
        EXPECT_EQ(text(reader, kDigest), before);

        sqlite3_close(reader);
        EXPECT_EQ(sqlite3_close(writer), SQLITE_OK);
        sqlite3* check = openWith(file, nullptr);
        EXPECT_EQ(text(check, "PRAGMA integrity_check"), "ok");
        EXPECT_EQ(text(check, kDigest), before);
        sqlite3_close(check);
    }
}

TEST(GatheredWrites, ACallOnTheFileRightAfterAWriteSeesIt) {
    // SQLite reads back a page it spilled a moment ago, and sizes the file
    // it has just grown; neither may find the bytes still gathered.
    testing::TempFolder temp;
    sqlite3_vfs* vfs = sqlite3_vfs_find(detail::gatheredWritesVFS());
    ASSERT_NE(vfs, nullptr);
    // A log's mode is taken from its data file's, so the data file is there first.
    const std::string data = (temp / "pages.sqlite").string();
    testing::writeFile(data, "");
    for (const auto& [suffix, flags] :
         {std::pair{"", SQLITE_OPEN_MAIN_DB}, std::pair{"-wal", SQLITE_OPEN_WAL}}) {
        // As SQLite passes names: followed by its (here no) parameters.
        const std::string name = data + suffix + std::string(4, '\0');
        std::vector<unsigned char> space(static_cast<std::size_t>(vfs->szOsFile));
        auto* file = reinterpret_cast<sqlite3_file*>(space.data());
        int opened = 0;
        ASSERT_EQ(vfs->xOpen(vfs, name.c_str(), file,
                             flags | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, &opened),
                  SQLITE_OK)
            << suffix;
        const std::string header(24, 'h');
        const std::string page(4096, 'p');
        ASSERT_EQ(file->pMethods->xWrite(file, header.data(), 24, 0), SQLITE_OK);
        ASSERT_EQ(file->pMethods->xWrite(file, page.data(), 4096, 24), SQLITE_OK);
        char back[4120] = {};
        ASSERT_EQ(file->pMethods->xRead(file, back, 4120, 0), SQLITE_OK);
        EXPECT_EQ(std::string(back, 4120), header + page);

        // Past a whole run, and a write elsewhere in the file.
        for (int i = 0; i < 40; ++i) {
            ASSERT_EQ(file->pMethods->xWrite(file, page.data(), 4096, 4120 + i * 4096LL),
                      SQLITE_OK);
        }
        ASSERT_EQ(file->pMethods->xWrite(file, header.data(), 24, 4120), SQLITE_OK);
        sqlite3_int64 size = 0;
        ASSERT_EQ(file->pMethods->xFileSize(file, &size), SQLITE_OK);
        EXPECT_EQ(size, 4120 + 40 * 4096);
        ASSERT_EQ(file->pMethods->xRead(file, back, 24, 4120), SQLITE_OK);
        EXPECT_EQ(std::string(back, 24), header);
        ASSERT_EQ(file->pMethods->xRead(file, back, 8, 4120 + 40 * 4096 - 8), SQLITE_OK);
        EXPECT_EQ(std::string(back, 8), std::string(8, 'p'));
        EXPECT_EQ(file->pMethods->xClose(file), SQLITE_OK);
    }
}

}  // namespace
}  // namespace copperwick
