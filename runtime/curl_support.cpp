#include "runtime/curl_support.h"

#include <optional>
#include <string>

#include <dlfcn.h>
#include <sys/socket.h>

namespace copperwick::curl_support {

namespace {

template <typename Function>
bool resolve(void* handle, const char* name, Function& function) {
    function = reinterpret_cast<Function>(::dlsym(handle, name));
    return function != nullptr;
}

std::optional<Library> load() {
    // The name the package's library is installed under; never a bare
    // "libcurl.so", which only the development package provides.
    void* handle = ::dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return std::nullopt;
    Library curl{};
    CURLcode (*globalInit)(long) = nullptr;
    const bool complete = resolve(handle, "curl_global_init", globalInit) &&
                          resolve(handle, "curl_easy_init", curl.easyInit) &&
                          resolve(handle, "curl_easy_cleanup", curl.easyCleanup) &&
                          resolve(handle, "curl_easy_setopt", curl.easySetopt) &&
                          resolve(handle, "curl_easy_perform", curl.easyPerform) &&
                          resolve(handle, "curl_easy_getinfo", curl.easyGetinfo) &&
                          resolve(handle, "curl_easy_strerror", curl.easyStrerror) &&
                          resolve(handle, "curl_slist_append", curl.slistAppend) &&
                          resolve(handle, "curl_slist_free_all", curl.slistFreeAll);
    if (!complete || globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
        ::dlclose(handle);
        return std::nullopt;
    }
    // Kept open for the life of the process, as a linked library would be.
    return curl;
}

}  // namespace

const Library* library() {
    static const std::optional<Library> loaded = load();
    return loaded ? &*loaded : nullptr;
}

List appended(List list, const char* entry) {
    if (curl_slist* grown = library()->slistAppend(list.get(), entry)) {
        (void)list.release();
        return List(grown);
    }
    return list;
}

int stopWhenCancelled(const std::function<bool()>& cancelled) {
    return cancelled && cancelled() ? 1 : 0;
}

curl_socket_t openLoopbackSocket(const curl_sockaddr& address, bool& refused) {
    if (!isLoopbackAddress(&address.addr)) {
        refused = true;
        return CURL_SOCKET_BAD;
    }
    return ::socket(address.family, address.socktype, address.protocol);
}

List pinToLoopback(const LoopbackEndpoint& endpoint) {
    if (!endpoint.isName())
        return {};
    const std::string pin =
        endpoint.host + ":" + std::to_string(endpoint.port) + ":127.0.0.1,[::1]";
    return List(library()->slistAppend(nullptr, pin.c_str()));
}

}  // namespace copperwick::curl_support
