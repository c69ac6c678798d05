#pragma once

// Text as a terminal can show it safely. Bank files and typed names may hold
// control characters: printed raw, an escape sequence can recolour, retitle
// or rewrite the terminal, and a carriage return can make one line pass for
// another. Every text line the command writes, on standard output and
// standard error, goes through terminalSafe by way of TerminalSafeBuffer;
// JSON output is left to its serializer, which escapes control characters
// itself.

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace copperwick::cli {

// `text` with every control character written visibly: C0 controls other
// than tab and line feed, DEL and ESC as `\x1b`, C1 controls (U+0080 to
// U+009F) as `\u009b`, and each byte that isn't part of valid UTF-8 as U+FFFD.
// Line feeds stay: the command's own lines end with them.
[[nodiscard]] std::string terminalSafe(std::string_view text);

// Passes what is written through terminalSafe on to another stream. A
// character cut in two between writes waits for its other half. Not
// copyable; one per stream, used on one thread.
class TerminalSafeBuffer : public std::streambuf {
  public:
    explicit TerminalSafeBuffer(std::ostream& target) : m_target(target) {}
    ~TerminalSafeBuffer() override;
    TerminalSafeBuffer(const TerminalSafeBuffer&) = delete;
    TerminalSafeBuffer& operator=(const TerminalSafeBuffer&) = delete;

    // From now on, bytes go on unchanged (for JSON output).
    void passThrough() { m_passThrough = true; }

  protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

  private:
    // Writes what is held, all of it when `whole`, else up to a cut character.
    void emit(bool whole);

    std::ostream& m_target;
    std::string m_held;
    bool m_passThrough = false;
};

}  // namespace copperwick::cli
