#include "cli/terminal_text.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>
#include <unicode/utf8.h>

namespace copperwick::cli {

namespace {

constexpr std::string_view kReplacement = "\uFFFD";

// Plain ASCII text that needs no second look, which is nearly all of it.
bool isPlain(unsigned char byte) {
    return (byte >= 0x20 && byte < 0x7F) || byte == '\t' || byte == '\n';
}

bool isAllPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return isPlain(static_cast<unsigned char>(c)); });
}

// How many bytes the UTF-8 sequence that `lead` starts should have.
std::size_t sequenceLength(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    return 1;
}

// Where the character cut off by the end of `text` begins, or its size when
// the last character is whole.
std::size_t cutCharacter(std::string_view text) {
    const std::size_t lookBack = std::min<std::size_t>(3, text.size());
    for (std::size_t back = 1; back <= lookBack; ++back) {
        const std::size_t at = text.size() - back;
        const auto byte = static_cast<unsigned char>(text[at]);
        if ((byte & 0xC0) == 0x80)
            continue;  // a continuation byte: its lead is further back
        return sequenceLength(byte) > back ? at : text.size();
    }
    return text.size();
}

}  // namespace

std::string terminalSafe(std::string_view text) {
    if (isAllPlain(text))
        return std::string(text);
    std::string safe;
    safe.reserve(text.size() + 16);
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c = 0;
        U8_NEXT(bytes, i, length, c);
        if (c < 0) {
            safe += kReplacement;
        } else if (c == '\t' || c == '\n') {
            safe += static_cast<char>(c);
        } else if (c < 0x20 || c == 0x7F) {
            safe += fmt::format("\\x{:02x}", c);
        } else if (c >= 0x80 && c <= 0x9F) {
            safe += fmt::format("\\u{:04x}", c);
        } else {
            safe.append(
                text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
        }
    }
    return safe;
}

TerminalSafeBuffer::~TerminalSafeBuffer() {
    emit(true);
    m_target.flush();
}

TerminalSafeBuffer::int_type TerminalSafeBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    const char character = traits_type::to_char_type(c);
    xsputn(&character, 1);
    return c;
}

std::streamsize TerminalSafeBuffer::xsputn(const char* text, std::streamsize count) {
    const std::string_view piece(text, static_cast<std::size_t>(count));
    // Written on at once, unbuffered: lines keep their order against the other stream.
    if (m_held.empty() && (m_passThrough || isAllPlain(piece))) {
        m_target.write(text, count);
        return count;
    }
    m_held.append(piece);
    emit(false);
    return count;
}

int TerminalSafeBuffer::sync() {
    emit(false);
    m_target.flush();
    return m_target ? 0 : -1;
}

void TerminalSafeBuffer::emit(bool whole) {
    if (m_held.empty())
        return;
    if (m_passThrough) {
        m_target << m_held;
        m_held.clear();
        return;
    }
    const std::size_t cut = whole ? m_held.size() : cutCharacter(m_held);
    m_target << terminalSafe(std::string_view(m_held).substr(0, cut));
    m_held.erase(0, cut);
}

}  // namespace copperwick::cli
