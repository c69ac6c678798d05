#include "core/store/gathered_writes.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <vector>

#include <sqlite3.h>

namespace copperwick::detail {

namespace {

constexpr const char* kName = "copperwick-gathered-writes";
// Large enough that a write costs its bytes rather than its call. The
// platform's file takes no more than 128 KiB in one write: it keeps only the
// low 17 bits of the length, and a longer write comes up short and reads as
// a full disk.
constexpr std::size_t kGatherBytes = std::size_t{64} << 10;

sqlite3_vfs* platformVFS(sqlite3_vfs* vfs) {
    return static_cast<sqlite3_vfs*>(vfs->pAppData);
}

// A data file or log: the platform's file, opened in the same allocation
// just past this, and the run of bytes written to it since the last flush.
struct GatheredFile {
    sqlite3_file base;
    sqlite3_file* file = nullptr;
    sqlite3_int64 start = 0;
    std::vector<unsigned char> gathered;
};

constexpr std::size_t kFileOffset = (sizeof(GatheredFile) + alignof(std::max_align_t) - 1) /
                                    alignof(std::max_align_t) * alignof(std::max_align_t);

GatheredFile* gatheredOf(sqlite3_file* file) {
    return reinterpret_cast<GatheredFile*>(file);
}

int flush(GatheredFile* gathered) {
    if (gathered->gathered.empty())
        return SQLITE_OK;
    const int result = gathered->file->pMethods->xWrite(gathered->file, gathered->gathered.data(),
                                                        static_cast<int>(gathered->gathered.size()),
                                                        gathered->start);
    gathered->gathered.clear();
    return result;
}

// Every call but a write (and the two that describe the device) passes what
// is gathered to the file first, then goes to the platform's file.
template <auto Method, typename... Arguments>
int flushedThen(sqlite3_file* file, Arguments... arguments) {
    GatheredFile* gathered = gatheredOf(file);
    if (const int result = flush(gathered); result != SQLITE_OK)
        return result;
    return (gathered->file->pMethods->*Method)(gathered->file, arguments...);
}

int closeFile(sqlite3_file* file) {
    GatheredFile* gathered = gatheredOf(file);
    const int flushed = flush(gathered);
    const int closed = gathered->file->pMethods->xClose(gathered->file);
    gathered->~GatheredFile();
    return flushed != SQLITE_OK ? flushed : closed;
}

int writeFile(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset) {
    GatheredFile* gathered = gatheredOf(file);
    auto& run = gathered->gathered;
    const auto size = static_cast<std::size_t>(amount);
    const bool follows = offset == gathered->start + static_cast<sqlite3_int64>(run.size());
    if (!run.empty() && (!follows || run.size() + size > kGatherBytes)) {
        if (const int result = flush(gathered); result != SQLITE_OK)
            return result;
    }
    if (size > kGatherBytes)
        return gathered->file->pMethods->xWrite(gathered->file, data, amount, offset);
    if (run.empty()) {
        run.reserve(kGatherBytes);
        gathered->start = offset;
    }
    const auto* bytes = static_cast<const unsigned char*>(data);
    run.insert(run.end(), bytes, bytes + size);
    return SQLITE_OK;
}

int sectorSize(sqlite3_file* file) {
    return gatheredOf(file)->file->pMethods->xSectorSize(gatheredOf(file)->file);
}

int deviceCharacteristics(sqlite3_file* file) {
    return gatheredOf(file)->file->pMethods->xDeviceCharacteristics(gatheredOf(file)->file);
}

void shmBarrier(sqlite3_file* file) {
    GatheredFile* gathered = gatheredOf(file);
    (void)flush(gathered);  // a failed write comes back at the next call that can say so
    gathered->file->pMethods->xShmBarrier(gathered->file);
}

int unfetch(sqlite3_file* file, sqlite3_int64 offset, void* page) {
    return gatheredOf(file)->file->pMethods->xUnfetch(gatheredOf(file)->file, offset, page);
}

// Only the methods of the platform file's own version are offered: SQLite
// looks at the version before it asks for shared memory or a mapping.
constexpr sqlite3_io_methods methodsOfVersion(int version) {
    using M = sqlite3_io_methods;
    sqlite3_io_methods methods{};
    methods.iVersion = version;
    methods.xClose = closeFile;
    methods.xRead = flushedThen<&M::xRead, void*, int, sqlite3_int64>;
    methods.xWrite = writeFile;
    methods.xTruncate = flushedThen<&M::xTruncate, sqlite3_int64>;
    methods.xSync = flushedThen<&M::xSync, int>;
    methods.xFileSize = flushedThen<&M::xFileSize, sqlite3_int64*>;
    methods.xLock = flushedThen<&M::xLock, int>;
    methods.xUnlock = flushedThen<&M::xUnlock, int>;
    methods.xCheckReservedLock = flushedThen<&M::xCheckReservedLock, int*>;
    methods.xFileControl = flushedThen<&M::xFileControl, int, void*>;
    methods.xSectorSize = sectorSize;
    methods.xDeviceCharacteristics = deviceCharacteristics;
    if (version >= 2) {
        methods.xShmMap = flushedThen<&M::xShmMap, int, int, int, void volatile**>;
        methods.xShmLock = flushedThen<&M::xShmLock, int, int, int>;
        methods.xShmBarrier = shmBarrier;
        methods.xShmUnmap = flushedThen<&M::xShmUnmap, int>;
    }
    if (version >= 3) {
        methods.xFetch = flushedThen<&M::xFetch, sqlite3_int64, int, void**>;
        methods.xUnfetch = unfetch;
    }
    return methods;
}

constexpr sqlite3_io_methods kMethods[] = {methodsOfVersion(1), methodsOfVersion(2),
                                           methodsOfVersion(3)};

int openFile(sqlite3_vfs* vfs, sqlite3_filename name, sqlite3_file* file, int flags,
             int* outFlags) {
    sqlite3_vfs* platform = platformVFS(vfs);
    if ((flags & (SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_WAL)) == 0)
        return platform->xOpen(platform, name, file, flags, outFlags);
    auto* gathered = new (file) GatheredFile{};
    gathered->file =
        reinterpret_cast<sqlite3_file*>(reinterpret_cast<unsigned char*>(file) + kFileOffset);
    std::memset(gathered->file, 0, static_cast<std::size_t>(platform->szOsFile));
    const int result = platform->xOpen(platform, name, gathered->file, flags, outFlags);
    if (result != SQLITE_OK || !gathered->file->pMethods) {
        if (gathered->file->pMethods)
            gathered->file->pMethods->xClose(gathered->file);
        gathered->~GatheredFile();
        file->pMethods = nullptr;
        return result != SQLITE_OK ? result : SQLITE_CANTOPEN;
    }
    const int version = std::clamp(gathered->file->pMethods->iVersion, 1, 3);
    gathered->base.pMethods = &kMethods[version - 1];
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
    if (!platform || platform->iVersion < 2)
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

const char* gatheredWritesVFS() {
    // Registered once, by whichever thread opens a file first.
    static sqlite3_vfs* const vfs = registered();
    return vfs ? kName : nullptr;
}

}  // namespace copperwick::detail
