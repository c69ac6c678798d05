#pragma once

// What the program's two HTTP clients, the local model's and the updater's,
// do with libcurl alike: set it up once, own its handles, and keep a
// connection meant for this computer on it, whatever a resolver, a proxy or
// a redirect would make of the address.

#include <functional>
#include <memory>

#include <curl/curl.h>

#include "runtime/loopback_endpoint.h"

namespace copperwick::curl_support {

// libcurl's global set-up, once per process, from whichever thread asks first.
void initialiseOnce();

struct HandleDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Handle = std::unique_ptr<CURL, HandleDeleter>;
using List = std::unique_ptr<curl_slist, ListDeleter>;

template <typename Value>
[[nodiscard]] bool set(CURL* handle, CURLoption option, Value value) {
    return curl_easy_setopt(handle, option, value) == CURLE_OK;
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
