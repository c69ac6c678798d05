#include "core/import/bank_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace copperwick {

namespace {

BankFileProblem problemOf(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return {BankFileProblem::Case::missing};
        case EACCES:
        case EPERM:
            return {BankFileProblem::Case::notAllowed};
        case EISDIR:
            return {BankFileProblem::Case::folder};
        default:
            return {BankFileProblem::Case::unreadable, error};
    }
}

// Only a regular file of a bank's size passes.
std::optional<BankFileProblem> refusalOf(const struct stat& status) {
    if (S_ISDIR(status.st_mode))
        return BankFileProblem{BankFileProblem::Case::folder};
    if (!S_ISREG(status.st_mode))
        return BankFileProblem{BankFileProblem::Case::notRegularFile};
    if (static_cast<std::uintmax_t>(status.st_size) > kLargestBankFileBytes)
        return BankFileProblem{BankFileProblem::Case::tooLarge};
    return std::nullopt;
}

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const { return m_descriptor; }

  private:
    int m_descriptor;
};

}  // namespace

std::variant<std::string, BankFileProblem> readBankFile(const std::filesystem::path& file) {
    // A look before opening: opening some devices does something by itself.
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0)
        return problemOf(errno);
    if (auto refusal = refusalOf(status))
        return *refusal;

    // Without waiting: a pipe put in the file's place must not hang the open.
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (descriptor.get() < 0)
        return problemOf(errno);
    // What was opened is what is read, whatever the name points at by now.
    if (::fstat(descriptor.get(), &status) != 0)
        return problemOf(errno);
    if (auto refusal = refusalOf(status))
        return *refusal;

    // The size is a hint: a file still being written may grow while it is
    // read, and the limit holds for what is actually read.
    std::string bytes;
    bytes.resize(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size()) {
            if (bytes.size() > kLargestBankFileBytes)
                return BankFileProblem{BankFileProblem::Case::tooLarge};
            bytes.resize(std::min<std::size_t>(bytes.size() * 2, kLargestBankFileBytes + 1));
        }
        const ssize_t got = ::read(descriptor.get(), bytes.data() + filled, bytes.size() - filled);
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return problemOf(errno);
        }
        if (got == 0)
            break;
        filled += static_cast<std::size_t>(got);
    }
    if (filled > kLargestBankFileBytes)
        return BankFileProblem{BankFileProblem::Case::tooLarge};
    bytes.resize(filled);
    return bytes;
}

}  // namespace copperwick
