// The floor under opening a data file: every stored record read straight out
// of SQLite, bytes only, nothing decoded. bench-compare runs it beside
// `copperwick info` on the same file.
//
//   raw_sqlite_read FILE

#include <cstdint>
#include <cstdio>

#include <sqlite3.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: raw_sqlite_read FILE\n");
        return 2;
    }
    sqlite3* db = nullptr;
    if (sqlite3_open_v2(argv[1], &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "can't open %s\n", argv[1]);
        sqlite3_close(db);
        return 1;
    }
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT kind, id, data FROM records", -1, &statement, nullptr) !=
        SQLITE_OK) {
        std::fprintf(stderr, "%s\n", sqlite3_errmsg(db));
        sqlite3_close(db);
        return 1;
    }
    int64_t rows = 0;
    int64_t bytes = 0;
    // The sum keeps the reads from being optimised away.
    unsigned checksum = 0;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        const auto* data = static_cast<const unsigned char*>(sqlite3_column_blob(statement, 2));
        const int size = sqlite3_column_bytes(statement, 2);
        for (int i = 0; i < size; i += 64)
            checksum += data[i];
        bytes += size;
        ++rows;
    }
    sqlite3_finalize(statement);
    sqlite3_close(db);
    std::printf("rows: %lld, bytes: %lld, checksum: %u\n", static_cast<long long>(rows),
                static_cast<long long>(bytes), checksum);
    return 0;
}
