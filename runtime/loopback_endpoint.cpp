#include "runtime/loopback_endpoint.h"

#include <cstring>

#include <netinet/in.h>
#include <sys/socket.h>

#include "core/model/text.h"

namespace copperwick {

namespace {

// Longer than any address a person types for a server on their own computer.
constexpr std::size_t kLongestAddress = 200;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// ASCII alone: Unicode case mapping would let look-alike letters through
// (the Kelvin sign lower-cases to "k").
std::string asciiLowercased(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lowered;
}

// Printable ASCII without blanks: the only bytes an address may hold.
bool isPlainASCII(std::string_view text) {
    for (const char c : text) {
        if (c <= ' ' || c > '~')
            return false;
    }
    return true;
}

// A whole decimal number of at most `digits` digits with no sign, no
// leading zero (which some readers take as octal) and nothing around it.
std::optional<int> plainNumber(std::string_view text, std::size_t digits) {
    if (text.empty() || text.size() > digits || (text.size() > 1 && text[0] == '0'))
        return std::nullopt;
    int value = 0;
    for (const char c : text) {
        if (!isDigit(c))
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

// "127.0.0.1" through "127.255.255.255", written plainly.
bool isLoopbackIPv4(std::string_view host) {
    const auto parts = text::splitKeepingEmpty(host, '.');
    if (parts.size() != 4)
        return false;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto value = plainNumber(parts[i], 3);
        if (!value || *value > 255 || (i == 0 && *value != 127))
            return false;
    }
    return true;
}

// Only what a server's path needs; "%" would let an escaped "/" or "@" in.
bool isPathCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '-' || c == '.' ||
           c == '_' || c == '~' || c == '/';
}

std::optional<std::string> cleanPath(std::string_view path) {
    while (!path.empty() && path.back() == '/')
        path.remove_suffix(1);
    for (const char c : path) {
        if (!isPathCharacter(c))
            return std::nullopt;
    }
    for (const auto segment : text::splitKeepingEmpty(path, '/')) {
        if (segment == "." || segment == "..")
            return std::nullopt;
    }
    return std::string(path);
}

}  // namespace

std::optional<LoopbackEndpoint> LoopbackEndpoint::parse(std::string_view text) {
    text = text::trimmedWhitespace(text);
    constexpr std::string_view kScheme = "http://";
    if (text.size() > kLongestAddress || text.size() <= kScheme.size() || !isPlainASCII(text) ||
        asciiLowercased(text.substr(0, kScheme.size())) != kScheme)
        return std::nullopt;
    std::string_view rest = text.substr(kScheme.size());
    const auto slash = rest.find('/');
    const std::string_view authority = rest.substr(0, slash);
    const std::string_view path = slash == std::string_view::npos ? "" : rest.substr(slash);

    LoopbackEndpoint endpoint;
    std::string_view portText;
    bool hasPort = false;
    if (!authority.empty() && authority.front() == '[') {
        const auto close = authority.find(']');
        if (close == std::string_view::npos || authority.substr(0, close + 1) != "[::1]")
            return std::nullopt;
        endpoint.host = "[::1]";
        const std::string_view after = authority.substr(close + 1);
        if (!after.empty()) {
            if (after.front() != ':')
                return std::nullopt;
            hasPort = true;
            portText = after.substr(1);
        }
    } else {
        const auto colon = authority.find(':');
        const std::string host = asciiLowercased(authority.substr(0, colon));
        if (host != "localhost" && !isLoopbackIPv4(host))
            return std::nullopt;
        endpoint.host = host;
        if (colon != std::string_view::npos) {
            hasPort = true;
            portText = authority.substr(colon + 1);
        }
    }
    if (hasPort) {
        const auto port = plainNumber(portText, 5);
        if (!port || *port < 1 || *port > 65535)
            return std::nullopt;
        endpoint.port = *port;
    }
    const auto cleaned = cleanPath(path);
    if (!cleaned)
        return std::nullopt;
    endpoint.path = *cleaned;
    return endpoint;
}

std::string LoopbackEndpoint::text() const {
    return "http://" + host + ":" + std::to_string(port) + path;
}

std::string LoopbackEndpoint::url(std::string_view route) const {
    return text() + std::string(route);
}

bool isLoopbackAddress(const sockaddr* address) {
    if (!address)
        return false;
    if (address->sa_family == AF_INET) {
        sockaddr_in ipv4{};
        std::memcpy(&ipv4, address, sizeof ipv4);
        return (ntohl(ipv4.sin_addr.s_addr) >> 24) == 127;
    }
    if (address->sa_family == AF_INET6) {
        sockaddr_in6 ipv6{};
        std::memcpy(&ipv6, address, sizeof ipv6);
        return std::memcmp(&ipv6.sin6_addr, &in6addr_loopback, sizeof ipv6.sin6_addr) == 0;
    }
    return false;
}

}  // namespace copperwick
