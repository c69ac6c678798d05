#pragma once

// The address of the local model server, held to the one rule that keeps the
// ledger on this computer: plain http to a loopback host. "localhost", an
// IPv4 address in 127.0.0.0/8 written as four plain decimal numbers, or
// "[::1]", with an optional port and path; nothing else. No user name, query
// or fragment (each a way to smuggle another host past a careless reader),
// no other spelling of an address (octal, hexadecimal, fewer than four parts,
// IPv4 inside IPv6), no trailing dot. The gateway builds every URL from the
// parsed parts, never from the text a person typed.
//
// A value: copyable, and safe on any thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sockaddr;

namespace copperwick {

struct LoopbackEndpoint {
    // "localhost", "127.0.0.1" and the like, or "[::1]" with its brackets.
    std::string host;
    int port = 80;
    // "" or a path beginning with "/" and not ending with one: "/v1".
    std::string path;

    // Absent for anything but an http address of this computer.
    [[nodiscard]] static std::optional<LoopbackEndpoint> parse(std::string_view text);

    // "http://127.0.0.1:8080/v1": the address as stored and shown.
    [[nodiscard]] std::string text() const;
    // The address of one of the server's routes: url("/models").
    [[nodiscard]] std::string url(std::string_view route) const;
    // Whether the host is a name that a resolver must turn into an address.
    [[nodiscard]] bool isName() const { return host == "localhost"; }

    friend bool operator==(const LoopbackEndpoint&, const LoopbackEndpoint&) = default;
};

// Whether a socket address is one of this computer's own: 127.0.0.0/8 or ::1.
// The last check before a connection opens, whatever the address came from.
[[nodiscard]] bool isLoopbackAddress(const sockaddr* address);

}  // namespace copperwick
