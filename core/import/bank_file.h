#pragma once

// Reading the bytes of a bank file a person named, before any analysis.
//
// Only a regular file is read. A pipe would block the reader for as long as
// nobody writes to it, a device such as /dev/zero never ends, and a folder
// has no bytes at all; each is refused instead. The file is opened without
// waiting and looked at again once open, so a name swapped for something
// else in between is caught. A file above kLargestBankFileBytes is refused
// before it is read: twenty years of daily lines come to under 10 MB, so
// anything that large isn't a bank export. Safe on any thread.

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>

namespace copperwick {

inline constexpr std::uintmax_t kLargestBankFileBytes = 64u * 1024u * 1024u;

// Why a bank file's bytes couldn't be had; the caller words it.
struct BankFileProblem {
    enum class Case {
        missing,         // nothing has that name
        notAllowed,      // the file or a folder on the way may not be read
        folder,          // a folder, not a file
        notRegularFile,  // a device, a pipe or a socket
        tooLarge,        // above kLargestBankFileBytes
        unreadable,      // the system failed to read it; `systemError` says how
    };
    Case kind = Case::unreadable;
    int systemError = 0;  // errno for `unreadable`

    friend bool operator==(const BankFileProblem&, const BankFileProblem&) = default;
};

// The file's whole contents, or why they couldn't be read.
[[nodiscard]] std::variant<std::string, BankFileProblem> readBankFile(
    const std::filesystem::path& file);

}  // namespace copperwick
