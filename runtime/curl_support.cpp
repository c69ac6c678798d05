#include "runtime/curl_support.h"

#include <mutex>
#include <string>

#include <sys/socket.h>

namespace copperwick::curl_support {

void initialiseOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
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
    return List(curl_slist_append(nullptr, pin.c_str()));
}

}  // namespace copperwick::curl_support
