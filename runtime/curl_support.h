#pragma once

// What the program's two HTTP clients, the local model's and the updater's,
// do with libcurl alike: load it, own its handles, and keep a connection
// meant for this computer on it, whatever a resolver, a proxy or a redirect
// would make of the address.
//
// libcurl is opened on first use rather than linked: it brings some thirty
// libraries of its own, and loading them at start-up would cost every
// command several milliseconds for a connection most of them never make.

#include <functional>
#include <memory>

#include <curl/curl.h>

#include "runtime/loopback_endpoint.h"

namespace copperwick::curl_support {

// The calls the clients make, as libcurl's own functions.
struct Library {
    CURL* (*easyInit)();
    void (*easyCleanup)(CURL*);
    CURLcode (*easySetopt)(CURL*, CURLoption, ...);
    CURLcode (*easyPerform)(CURL*);
    CURLcode (*easyGetinfo)(CURL*, CURLINFO, ...);
    const char* (*easyStrerror)(CURLcode);
    curl_slist* (*slistAppend)(curl_slist*, const char*);
    void (*slistFreeAll)(curl_slist*);
};

// libcurl, loaded and given its global set-up once per process by whichever
// thread asks first. Null when this computer has no libcurl to load.
[[nodiscard]] const Library* library();

// Why there is no connection when library() is null, in the words a
// client's failure carries.
inline constexpr const char* kNotLoaded = "libcurl couldn't be loaded";

struct HandleDeleter {
    void operator()(CURL* handle) const { library()->easyCleanup(handle); }
};
struct ListDeleter {
    void operator()(curl_slist* list) const { library()->slistFreeAll(list); }
};
using Handle = std::unique_ptr<CURL, HandleDeleter>;
using List = std::unique_ptr<curl_slist, ListDeleter>;

// A list grown by one entry; the old one is taken over, and kept when the
// entry can't be added.
[[nodiscard]] List appended(List list, const char* entry);

template <typename Value>
[[nodiscard]] bool set(CURL* handle, CURLoption option, Value value) {
    return library()->easySetopt(handle, option, value) == CURLE_OK;
}

// The answer of a transfer-progress callback: non-zero stops the transfer.
[[nodiscard]] int stopWhenCancelled(const std::function<bool()>& cancelled);

// Opens a socket only to this computer; anywhere else sets `refused` and
// opens nothing. For CURLOPT_OPENSOCKETFUNCTION, the last word on where a
// connection goes.
[[nodiscard]] curl_socket_t openLoopbackSocket(const curl_sockaddr& address, bool& refused);

// For "localhost", the resolver's answer given in advance (CURLOPT_RESOLVE):
// the loopback addresses alone. Empty for an address written as numbers.
[[nodiscard]] List pinToLoopback(const LoopbackEndpoint& endpoint);

}  // namespace copperwick::curl_support
