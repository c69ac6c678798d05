#pragma once

// Fetching the update feed and its packages: https to anywhere, and plain
// http only to this computer (a loopback address, held to the same rule as
// the local model server's), which is where tests serve a feed. A redirect
// is followed only from https to https; a plain http address follows none.
// Certificates are checked as the system's libcurl checks them. Each
// transfer is held to a size limit and two time limits, and stops when
// asked; a reply that runs over is cut off, never read to its end.
//
// Blocking, for a worker thread; any number may run at once.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace copperwick::UpdateTransfer {

struct Request {
    std::string url;
    std::chrono::milliseconds connectLimit{15'000};
    // For the whole transfer, connection included.
    std::chrono::milliseconds timeLimit{60'000};
    uint64_t maxBytes = 1 << 20;
    // Asked while the transfer runs; true stops it.
    std::function<bool()> cancelled;
};

struct Outcome {
    enum class Kind {
        done,         // a 200 reply, whole
        refused,      // the address (or a redirect's) isn't https or this computer
        unreachable,  // no connection to the server
        timedOut,
        cancelled,
        tooLarge,   // the reply ran past maxBytes
        httpError,  // the server answered with `status`
        failed,     // anything else; `detail` says what
    };
    Kind kind = Kind::failed;
    long status = 0;
    std::string detail;
};

// Whether `url` may be fetched at all: https with a host, or http to this
// computer as LoopbackEndpoint reads it. Printable ASCII only.
[[nodiscard]] bool isAllowedAddress(std::string_view url);

// The reply's body into `body`.
[[nodiscard]] Outcome fetch(const Request& request, std::string& body);
// The reply's body into `file`, made afresh with mode 0600. Whatever the
// outcome, the caller decides what becomes of the file.
[[nodiscard]] Outcome download(const Request& request, const std::filesystem::path& file);

}  // namespace copperwick::UpdateTransfer
