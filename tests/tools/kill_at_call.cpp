// Preloaded into a command to stop it dead at a chosen call that makes data
// durable or moves it: fsync, fdatasync, rename, link, unlink, remove. The
// crash test counts the calls of a clean run, then kills a run just before
// each of them in turn.
//
//   COPPERWICK_KILL_AT=N          SIGKILL before the Nth such call (1-based)
//   COPPERWICK_COUNT_FILE=PATH    the number of calls made, written at exit

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {

std::atomic<long> g_calls{0};

long killAt() {
    static const long value = [] {
        const char* text = std::getenv("COPPERWICK_KILL_AT");
        return text ? std::atol(text) : 0L;
    }();
    return value;
}

void checkpoint() {
    const long call = ++g_calls;
    if (call == killAt())
        ::raise(SIGKILL);
}

template <typename F>
F next(const char* name) {
    return reinterpret_cast<F>(::dlsym(RTLD_NEXT, name));
}

struct CountWriter {
    ~CountWriter() {
        const char* path = std::getenv("COPPERWICK_COUNT_FILE");
        if (!path)
            return;
        if (FILE* file = std::fopen(path, "w")) {
            std::fprintf(file, "%ld\n", g_calls.load());
            std::fclose(file);
        }
    }
} g_countWriter;

}  // namespace

extern "C" {

int fsync(int descriptor) {
    checkpoint();
    static const auto real = next<int (*)(int)>("fsync");
    return real(descriptor);
}

int fdatasync(int descriptor) {
    checkpoint();
    static const auto real = next<int (*)(int)>("fdatasync");
    return real(descriptor);
}

int rename(const char* from, const char* to) {
    checkpoint();
    static const auto real = next<int (*)(const char*, const char*)>("rename");
    return real(from, to);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    checkpoint();
    static const auto real = next<int (*)(int, const char*, int, const char*)>("renameat");
    return real(fromFolder, from, toFolder, to);
}

int link(const char* from, const char* to) {
    checkpoint();
    static const auto real = next<int (*)(const char*, const char*)>("link");
    return real(from, to);
}

int unlink(const char* path) {
    checkpoint();
    static const auto real = next<int (*)(const char*)>("unlink");
    return real(path);
}

int unlinkat(int folder, const char* path, int flags) {
    checkpoint();
    static const auto real = next<int (*)(int, const char*, int)>("unlinkat");
    return real(folder, path, flags);
}

int remove(const char* path) {
    checkpoint();
    static const auto real = next<int (*)(const char*)>("remove");
    return real(path);
}

}  // extern "C"
