#include "runtime/model_http.h"

#include <algorithm>
#include <memory>

#include <curl/curl.h>

#include "runtime/curl_support.h"

namespace copperwick::ModelHttp {

namespace {

// A connection that can't be made on loopback in this time isn't coming.
constexpr std::chrono::milliseconds kConnectLimit{5'000};

using curl_support::Handle;
using curl_support::List;
using curl_support::set;

struct Exchange {
    const Request* request = nullptr;
    std::string body;
    bool overflowed = false;
    bool refusedAddress = false;
};

std::size_t receive(char* data, std::size_t size, std::size_t count, void* context) {
    auto* exchange = static_cast<Exchange*>(context);
    const std::size_t bytes = size * count;
    if (exchange->body.size() + bytes > exchange->request->maxBytes) {
        exchange->overflowed = true;
        return 0;  // curl stops with a write error
    }
    exchange->body.append(data, bytes);
    return bytes;
}

int progress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return curl_support::stopWhenCancelled(static_cast<Exchange*>(context)->request->cancelled);
}

// The last word on where a connection goes: whatever name or address led
// here, a socket to anywhere but this computer is never opened.
curl_socket_t openSocket(void* context, curlsocktype, curl_sockaddr* address) {
    return curl_support::openLoopbackSocket(*address,
                                            static_cast<Exchange*>(context)->refusedAddress);
}

}  // namespace

Reply send(const Request& request) {
    Reply reply;
    const curl_support::Library* library = curl_support::library();
    if (!library) {
        reply.detail = curl_support::kNotLoaded;
        return reply;
    }
    Handle handle(library->easyInit());
    if (!handle) {
        reply.detail = "the connection couldn't be set up";
        return reply;
    }
    CURL* curl = handle.get();
    Exchange exchange{.request = &request};
    const std::string url = request.endpoint.url(request.route);

    const List resolve = curl_support::pinToLoopback(request.endpoint);
    List headers = curl_support::appended(nullptr, "Accept: application/json");
    if (request.body) {
        headers = curl_support::appended(std::move(headers), "Content-Type: application/json");
        // Without this curl waits a second for a "100 Continue" on longer bodies.
        headers = curl_support::appended(std::move(headers), "Expect:");
    }
    const long limit = static_cast<long>(request.timeLimit.count());
    const long connectLimit = static_cast<long>(std::min(request.timeLimit, kConnectLimit).count());

    bool ready =
        set(curl, CURLOPT_URL, url.c_str()) && set(curl, CURLOPT_PROTOCOLS_STR, "http") &&
        set(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http") && set(curl, CURLOPT_FOLLOWLOCATION, 0L) &&
        // An empty proxy turns off the environment's too, and no
        // host is ever to be sent through one.
        set(curl, CURLOPT_PROXY, "") && set(curl, CURLOPT_NOPROXY, "*") &&
        set(curl, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED)) &&
        set(curl, CURLOPT_NOSIGNAL, 1L) && set(curl, CURLOPT_OPENSOCKETFUNCTION, openSocket) &&
        set(curl, CURLOPT_OPENSOCKETDATA, &exchange) &&
        set(curl, CURLOPT_TIMEOUT_MS, std::max(limit, 1L)) &&
        set(curl, CURLOPT_CONNECTTIMEOUT_MS, std::max(connectLimit, 1L)) &&
        set(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request.maxBytes)) &&
        set(curl, CURLOPT_WRITEFUNCTION, receive) && set(curl, CURLOPT_WRITEDATA, &exchange) &&
        set(curl, CURLOPT_NOPROGRESS, 0L) && set(curl, CURLOPT_XFERINFOFUNCTION, progress) &&
        set(curl, CURLOPT_XFERINFODATA, &exchange) &&
        set(curl, CURLOPT_HTTPHEADER, headers.get()) && set(curl, CURLOPT_USERAGENT, "Copperwick");
    if (resolve)
        ready = ready && set(curl, CURLOPT_RESOLVE, resolve.get());
    if (request.body) {
        ready =
            ready && set(curl, CURLOPT_POSTFIELDS, request.body->data()) &&
            set(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body->size()));
    }
    if (!ready) {
        reply.detail = "the connection couldn't be set up";
        return reply;
    }

    const CURLcode code = library->easyPerform(curl);
    using Outcome = Reply::Outcome;
    if (exchange.refusedAddress) {
        reply.outcome = Outcome::refused;
    } else if (exchange.overflowed || code == CURLE_FILESIZE_EXCEEDED) {
        reply.outcome = Outcome::tooLarge;
    } else if (code == CURLE_OK) {
        reply.outcome = Outcome::answered;
        library->easyGetinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
        reply.body = std::move(exchange.body);
    } else if (code == CURLE_ABORTED_BY_CALLBACK) {
        reply.outcome = Outcome::cancelled;
    } else if (code == CURLE_OPERATION_TIMEDOUT) {
        reply.outcome = Outcome::timedOut;
    } else if (code == CURLE_COULDNT_CONNECT || code == CURLE_COULDNT_RESOLVE_HOST) {
        reply.outcome = Outcome::unreachable;
    } else {
        reply.outcome = Outcome::failed;
        reply.detail = library->easyStrerror(code);
    }
    return reply;
}

}  // namespace copperwick::ModelHttp
