#pragma once

// One HTTP exchange with the local model server, and nothing that could
// carry it off this computer: plain http only, no redirects followed, no
// proxy (the environment's http_proxy and the like are ignored), "localhost"
// pinned to the loopback addresses rather than asked of a resolver, and every
// socket's address checked to be a loopback one before it connects. What
// comes back is held to a size limit and a time limit; a reply that runs
// over either is cut off, never read to its end.
//
// Blocking, for a worker thread; any number may run at once on different
// threads, since each exchange has its own connection.

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "runtime/loopback_endpoint.h"

namespace copperwick::ModelHttp {

struct Request {
    LoopbackEndpoint endpoint;
    std::string route;                // "/models", "/chat/completions"
    std::optional<std::string> body;  // a JSON body to POST; absent for a GET
    std::chrono::milliseconds timeLimit{10'000};
    std::size_t maxBytes = 1 << 20;
    // Asked while the exchange runs; true stops it.
    std::function<bool()> cancelled;
};

struct Reply {
    enum class Outcome {
        answered,     // `status` and `body` hold the server's reply
        unreachable,  // nothing listens at the address
        timedOut,     // no whole reply within the time limit
        cancelled,
        tooLarge,  // the reply ran past maxBytes
        refused,   // the connection would have left this computer
        failed,    // anything else; `detail` says what
    };

    Outcome outcome = Outcome::failed;
    long status = 0;
    std::string body;
    std::string detail;
};

[[nodiscard]] Reply send(const Request& request);

}  // namespace copperwick::ModelHttp
