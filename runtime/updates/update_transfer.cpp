#include "runtime/updates/update_transfer.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

#include <curl/curl.h>

#include "copperwick_version.h"
#include "runtime/curl_support.h"
#include "runtime/loopback_endpoint.h"

namespace copperwick::UpdateTransfer {

namespace {

constexpr std::string_view kSecureScheme = "https://";
constexpr std::string_view kPlainScheme = "http://";
constexpr long kMostRedirects = 5;
// A transfer that gives nothing for this long has stalled, whatever its
// whole time limit still allows.
constexpr long kStalledSeconds = 60;

using curl_support::set;

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size())
        return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        char c = text[i];
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        if (c != prefix[i])
            return false;
    }
    return true;
}

bool isPrintableASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

// Where the bytes go: a string or a file, never past the limit.
struct Sink {
    const Request* request = nullptr;
    std::string* body = nullptr;
    int file = -1;
    uint64_t received = 0;
    bool overflowed = false;
    bool writeFailed = false;
    bool refusedAddress = false;
};

std::size_t receive(char* data, std::size_t size, std::size_t count, void* context) {
    auto* sink = static_cast<Sink*>(context);
    const std::size_t bytes = size * count;
    if (sink->received + bytes > sink->request->maxBytes) {
        sink->overflowed = true;
        return 0;  // curl stops with a write error
    }
    sink->received += bytes;
    if (sink->body) {
        sink->body->append(data, bytes);
        return bytes;
    }
    std::size_t written = 0;
    while (written < bytes) {
        const ssize_t step = ::write(sink->file, data + written, bytes - written);
        if (step < 0 && errno == EINTR)
            continue;
        if (step <= 0) {
            sink->writeFailed = true;
            return 0;
        }
        written += static_cast<std::size_t>(step);
    }
    return bytes;
}

int progress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    return curl_support::stopWhenCancelled(static_cast<Sink*>(context)->request->cancelled);
}

// For a plain http address: whatever name led here, a socket to anywhere
// but this computer is never opened.
curl_socket_t openLoopbackSocket(void* context, curlsocktype, curl_sockaddr* address) {
    return curl_support::openLoopbackSocket(*address, static_cast<Sink*>(context)->refusedAddress);
}

Outcome transfer(const Request& request, Sink& sink) {
    Outcome outcome;
    if (!isAllowedAddress(request.url)) {
        outcome.kind = Outcome::Kind::refused;
        return outcome;
    }
    const curl_support::Library* library = curl_support::library();
    if (!library) {
        outcome.detail = curl_support::kNotLoaded;
        return outcome;
    }
    const curl_support::Handle handle(library->easyInit());
    if (!handle) {
        outcome.detail = "the connection couldn't be set up";
        return outcome;
    }
    CURL* curl = handle.get();
    const bool secure = startsWithIgnoringCase(request.url, kSecureScheme);
    // A loopback address is fetched as it was read, never as it was typed.
    const std::optional<LoopbackEndpoint> loopback =
        secure ? std::nullopt : LoopbackEndpoint::parse(request.url);
    const std::string url = loopback ? loopback->text() : request.url;
    const curl_support::List resolve =
        loopback ? curl_support::pinToLoopback(*loopback) : curl_support::List();
    const std::string agent = std::string("Copperwick/") + COPPERWICK_VERSION;
    const long limit = std::max(static_cast<long>(request.timeLimit.count()), 1L);
    const long connectLimit =
        std::max(static_cast<long>(std::min(request.connectLimit, request.timeLimit).count()), 1L);

    bool ready =
        set(curl, CURLOPT_URL, url.c_str()) &&
        set(curl, CURLOPT_PROTOCOLS_STR, secure ? "https" : "http") &&
        set(curl, CURLOPT_REDIR_PROTOCOLS_STR, "https") &&
        set(curl, CURLOPT_FOLLOWLOCATION, secure ? 1L : 0L) &&
        set(curl, CURLOPT_MAXREDIRS, kMostRedirects) &&
        set(curl, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED)) &&
        set(curl, CURLOPT_NOSIGNAL, 1L) && set(curl, CURLOPT_TIMEOUT_MS, limit) &&
        set(curl, CURLOPT_CONNECTTIMEOUT_MS, connectLimit) &&
        set(curl, CURLOPT_LOW_SPEED_LIMIT, 1L) &&
        set(curl, CURLOPT_LOW_SPEED_TIME, kStalledSeconds) &&
        set(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request.maxBytes)) &&
        set(curl, CURLOPT_WRITEFUNCTION, receive) && set(curl, CURLOPT_WRITEDATA, &sink) &&
        set(curl, CURLOPT_NOPROGRESS, 0L) && set(curl, CURLOPT_XFERINFOFUNCTION, progress) &&
        set(curl, CURLOPT_XFERINFODATA, &sink) && set(curl, CURLOPT_USERAGENT, agent.c_str());
    if (loopback) {
        // Nothing for this computer goes through a proxy.
        ready = ready && set(curl, CURLOPT_PROXY, "") && set(curl, CURLOPT_NOPROXY, "*") &&
                set(curl, CURLOPT_OPENSOCKETFUNCTION, openLoopbackSocket) &&
                set(curl, CURLOPT_OPENSOCKETDATA, &sink);
        if (resolve)
            ready = ready && set(curl, CURLOPT_RESOLVE, resolve.get());
    }
    if (!ready) {
        outcome.detail = "the connection couldn't be set up";
        return outcome;
    }

    const CURLcode code = library->easyPerform(curl);
    using Kind = Outcome::Kind;
    library->easyGetinfo(curl, CURLINFO_RESPONSE_CODE, &outcome.status);
    if (sink.refusedAddress || code == CURLE_UNSUPPORTED_PROTOCOL) {
        // A redirect to plain http lands here too.
        outcome.kind = Kind::refused;
    } else if (sink.overflowed || code == CURLE_FILESIZE_EXCEEDED) {
        outcome.kind = Kind::tooLarge;
    } else if (code == CURLE_OK) {
        outcome.kind = outcome.status == 200 ? Kind::done : Kind::httpError;
    } else if (code == CURLE_ABORTED_BY_CALLBACK) {
        outcome.kind = Kind::cancelled;
    } else if (code == CURLE_OPERATION_TIMEDOUT) {
        outcome.kind = Kind::timedOut;
    } else if (code == CURLE_COULDNT_CONNECT || code == CURLE_COULDNT_RESOLVE_HOST ||
               code == CURLE_COULDNT_RESOLVE_PROXY) {
        outcome.kind = Kind::unreachable;
    } else {
        outcome.kind = Kind::failed;
        outcome.detail =
            sink.writeFailed ? "the file couldn't be written" : library->easyStrerror(code);
    }
    return outcome;
}

}  // namespace

bool isAllowedAddress(std::string_view url) {
    if (url.size() > 2000 || !isPrintableASCII(url))
        return false;
    if (startsWithIgnoringCase(url, kSecureScheme)) {
        const std::string_view rest = url.substr(kSecureScheme.size());
        const auto end = rest.find_first_of("/?#");
        const std::string_view authority = rest.substr(0, end);
        // A host, and no user name in front of it to hide the real one.
        return !authority.empty() && authority.find('@') == std::string_view::npos &&
               authority.front() != ':';
    }
    return startsWithIgnoringCase(url, kPlainScheme) && LoopbackEndpoint::parse(url).has_value();
}

Outcome fetch(const Request& request, std::string& body) {
    body.clear();
    Sink sink{.request = &request, .body = &body};
    Outcome outcome = transfer(request, sink);
    if (outcome.kind != Outcome::Kind::done)
        body.clear();
    return outcome;
}

Outcome download(const Request& request, const std::filesystem::path& file) {
    const int descriptor =
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) {
        return Outcome{.kind = Outcome::Kind::failed, .detail = "the file couldn't be made"};
    }
    Sink sink{.request = &request, .file = descriptor};
    Outcome outcome = transfer(request, sink);
    const bool synced = ::fsync(descriptor) == 0;
    const bool closed = ::close(descriptor) == 0;
    if (outcome.kind == Outcome::Kind::done && (!synced || !closed)) {
        outcome.kind = Outcome::Kind::failed;
        outcome.detail = "the file couldn't be written";
    }
    return outcome;
}

}  // namespace copperwick::UpdateTransfer
