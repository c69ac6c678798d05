#include "core/store/gathered_log.h"

#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

#include <sqlite3.h>

namespace copperwick::detail {

namespace {

constexpr const char* kName = "copperwick-gathered-log";
// Large enough that a write costs its bytes rather than its call. The
// platform's file takes no more than 128 KiB in one write: it keeps only the
// low 17 bits of the length, and a longer write comes up short and reads as
// a full disk.
constexpr std::size_t kGatherBytes = std::size_t{64} << 10;

sqlite3_vfs* platformVFS(sqlite3_vfs* vfs) {
    return static_cast<sqlite3_vfs*>(vfs->pAppData);
}

// A log file: the platform's file, opened in the same allocation just past
// this, and the run of bytes written to it since the last flush.
struct LogFile {
    sqlite3_file base;
    sqlite3_file* file = nullptr;
    sqlite3_int64 start = 0;
    std::vector<unsigned char> gathered;
};

constexpr std::size_t kFileOffset = (sizeof(LogFile) + alignof(std::max_align_t) - 1) /
                                    alignof(std::max_align_t) * alignof(std::max_align_t);

LogFile* logOf(sqlite3_file* file) {
    return reinterpret_cast<LogFile*>(file);
}

int flush(LogFile* log) {
    if (log->gathered.empty())
        return SQLITE_OK;
    const int result = log->file->pMethods->xWrite(
        log->file, log->gathered.data(), static_cast<int>(log->gathered.size()), log->start);
    log->gathered.clear();
    return result;
}

int logClose(sqlite3_file* file) {
    LogFile* log = logOf(file);
    const int flushed = flush(log);
    const int closed = log->file->pMethods->xClose(log->file);
    log->~LogFile();
    return flushed != SQLITE_OK ? flushed : closed;
}

int logRead(sqlite3_file* file, void* data, int amount, sqlite3_int64 offset) {
    LogFile* log = logOf(file);
    if (const int result = flush(log); result != SQLITE_OK)
        return result;
    return log->file->pMethods->xRead(log->file, data, amount, offset);
}

int logWrite(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset) {
    LogFile* log = logOf(file);
    const auto size = static_cast<std::size_t>(amount);
    const bool follows = offset == log->start + static_cast<sqlite3_int64>(log->gathered.size());
    if (!log->gathered.empty() && (!follows || log->gathered.size() + size > kGatherBytes)) {
        if (const int result = flush(log); result != SQLITE_OK)
            return result;
    }
    if (size > kGatherBytes)
        return log->file->pMethods->xWrite(log->file, data, amount, offset);
    if (log->gathered.empty()) {
        log->gathered.reserve(kGatherBytes);
        log->start = offset;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    log->gathered.insert(log->gathered.end(), bytes, bytes + size);
    return SQLITE_OK;
}

int logTruncate(sqlite3_file* file, sqlite3_int64 size) {
    LogFile* log = logOf(file);
    if (const int result = flush(log); result != SQLITE_OK)
        return result;
    return log->file->pMethods->xTruncate(log->file, size);
}

int logSync(sqlite3_file* file, int flags) {
    LogFile* log = logOf(file);
    if (const int result = flush(log); result != SQLITE_OK)
        return result;
    return log->file->pMethods->xSync(log->file, flags);
}

int logFileSize(sqlite3_file* file, sqlite3_int64* size) {
    LogFile* log = logOf(file);
    if (const int result = flush(log); result != SQLITE_OK)
        return result;
    return log->file->pMethods->xFileSize(log->file, size);
}

int logLock(sqlite3_file* file, int level) {
    return logOf(file)->file->pMethods->xLock(logOf(file)->file, level);
}

int logUnlock(sqlite3_file* file, int level) {
    return logOf(file)->file->pMethods->xUnlock(logOf(file)->file, level);
}

int logCheckReservedLock(sqlite3_file* file, int* held) {
    return logOf(file)->file->pMethods->xCheckReservedLock(logOf(file)->file, held);
}

int logFileControl(sqlite3_file* file, int operation, void* argument) {
    LogFile* log = logOf(file);
    // Some look at or change the file itself (its size, its name, its
    // descriptor); none is frequent.
    if (const int result = flush(log); result != SQLITE_OK)
        return result;
    return log->file->pMethods->xFileControl(log->file, operation, argument);
}

int logSectorSize(sqlite3_file* file) {
    return logOf(file)->file->pMethods->xSectorSize(logOf(file)->file);
}

int logDeviceCharacteristics(sqlite3_file* file) {
    return logOf(file)->file->pMethods->xDeviceCharacteristics(logOf(file)->file);
}

// Version 1: SQLite maps, and shares memory through, the data file alone.
const sqlite3_io_methods kLogMethods = {
    1,
    logClose,
    logRead,
    logWrite,
    logTruncate,
    logSync,
    logFileSize,
    logLock,
    logUnlock,
    logCheckReservedLock,
    logFileControl,
    logSectorSize,
    logDeviceCharacteristics,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

int openFile(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags,
             int* outFlags) {
    sqlite3_vfs* platform = platformVFS(vfs);
    if ((flags & SQLITE_OPEN_WAL) == 0)
        return platform->xOpen(platform, name, file, flags, outFlags);
    auto* log = new (file) LogFile{};
    log->base.pMethods = nullptr;
    log->file =
        reinterpret_cast<sqlite3_file*>(reinterpret_cast<unsigned char*>(file) + kFileOffset);
    std::memset(log->file, 0, static_cast<std::size_t>(platform->szOsFile));
    const int result = platform->xOpen(platform, name, log->file, flags, outFlags);
    if (result != SQLITE_OK) {
        if (log->file->pMethods)
            log->file->pMethods->xClose(log->file);
        log->~LogFile();
        file->pMethods = nullptr;
        return result;
    }
    log->base.pMethods = &kLogMethods;
    return SQLITE_OK;
}

// Everything but opening is the platform's.
int deleteFile(sqlite3_vfs* vfs, const char* name, int syncDirectory) {
    return platformVFS(vfs)->xDelete(platformVFS(vfs), name, syncDirectory);
}
int accessFile(sqlite3_vfs* vfs, const char* name, int flags, int* result) {
    return platformVFS(vfs)->xAccess(platformVFS(vfs), name, flags, result);
}
int fullPathname(sqlite3_vfs* vfs, const char* name, int size, char* out) {
    return platformVFS(vfs)->xFullPathname(platformVFS(vfs), name, size, out);
}
void* dlOpen(sqlite3_vfs* vfs, const char* name) {
    return platformVFS(vfs)->xDlOpen(platformVFS(vfs), name);
}
void dlError(sqlite3_vfs* vfs, int size, char* out) {
    platformVFS(vfs)->xDlError(platformVFS(vfs), size, out);
}
void (*dlSym(sqlite3_vfs* vfs, void* library, const char* symbol))(void) {
    return platformVFS(vfs)->xDlSym(platformVFS(vfs), library, symbol);
}
void dlClose(sqlite3_vfs* vfs, void* library) {
    platformVFS(vfs)->xDlClose(platformVFS(vfs), library);
}
int randomness(sqlite3_vfs* vfs, int size, char* out) {
    return platformVFS(vfs)->xRandomness(platformVFS(vfs), size, out);
}
int sleepFor(sqlite3_vfs* vfs, int microseconds) {
    return platformVFS(vfs)->xSleep(platformVFS(vfs), microseconds);
}
int currentTime(sqlite3_vfs* vfs, double* now) {
    return platformVFS(vfs)->xCurrentTime(platformVFS(vfs), now);
}
int lastError(sqlite3_vfs* vfs, int size, char* out) {
    return platformVFS(vfs)->xGetLastError(platformVFS(vfs), size, out);
}
int currentTimeInt64(sqlite3_vfs* vfs, sqlite3_int64* now) {
    return platformVFS(vfs)->xCurrentTimeInt64(platformVFS(vfs), now);
}

sqlite3_vfs* registered() {
    sqlite3_vfs* platform = sqlite3_vfs_find(nullptr);
    if (!platform)
        return nullptr;
    static sqlite3_vfs vfs{};
    vfs.iVersion = 2;
    vfs.szOsFile = static_cast<int>(kFileOffset) + platform->szOsFile;
    vfs.mxPathname = platform->mxPathname;
    vfs.zName = kName;
    vfs.pAppData = platform;
    vfs.xOpen = openFile;
    vfs.xDelete = deleteFile;
    vfs.xAccess = accessFile;
    vfs.xFullPathname = fullPathname;
    vfs.xDlOpen = dlOpen;
    vfs.xDlError = dlError;
    vfs.xDlSym = dlSym;
    vfs.xDlClose = dlClose;
    vfs.xRandomness = randomness;
    vfs.xSleep = sleepFor;
    vfs.xCurrentTime = currentTime;
    vfs.xGetLastError = lastError;
    vfs.xCurrentTimeInt64 = currentTimeInt64;
    if (sqlite3_vfs_register(&vfs, 0) != SQLITE_OK)
        return nullptr;
    return &vfs;
}

}  // namespace

const char* gatheredLogVFS() {
    // Registered once, by whichever thread opens a file first. Without it,
    // files open the platform's way and only lose the gathering.
    static sqlite3_vfs* const vfs = registered();
    return vfs ? kName : nullptr;
}

}  // namespace copperwick::detail
