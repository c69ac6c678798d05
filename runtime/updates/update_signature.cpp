#include "runtime/updates/update_signature.h"

#include <algorithm>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sodium.h>

namespace copperwick::update_signature {

namespace {

bool initialised() {
    static const bool ready = sodium_init() >= 0;
    return ready;
}

// The bytes of base64 text, when it decodes whole to exactly `size` bytes.
std::optional<std::vector<unsigned char>> decoded(std::string_view base64, std::size_t size) {
    std::vector<unsigned char> bytes(size + 3);
    std::size_t length = 0;
    const char* end = nullptr;
    if (sodium_base642bin(bytes.data(), bytes.size(), base64.data(), base64.size(), nullptr,
                          &length, &end, sodium_base64_VARIANT_ORIGINAL) != 0 ||
        end != base64.data() + base64.size() || length != size)
        return std::nullopt;
    bytes.resize(size);
    return bytes;
}

std::string encoded(const unsigned char* bytes, std::size_t size) {
    std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(), bytes, size, sodium_base64_VARIANT_ORIGINAL);
    text.resize(text.size() - 1);  // the terminating zero
    return text;
}

// A whole file, mapped read-only for as long as this lives: a package can
// run to hundreds of megabytes, and the signature covers all of it at once.
class MappedFile {
  public:
    explicit MappedFile(const std::filesystem::path& file) {
        const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        if (descriptor < 0)
            return;
        struct stat status {};
        if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
            void* mapped = ::mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ,
                                  MAP_PRIVATE, descriptor, 0);
            if (mapped != MAP_FAILED) {
                m_data = static_cast<const unsigned char*>(mapped);
                m_size = static_cast<std::size_t>(status.st_size);
            }
        }
        ::close(descriptor);
    }
    ~MappedFile() {
        if (m_data)
            ::munmap(const_cast<unsigned char*>(m_data), m_size);
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    [[nodiscard]] bool isOpen() const { return m_data != nullptr; }
    [[nodiscard]] const unsigned char* data() const { return m_data; }
    [[nodiscard]] std::size_t size() const { return m_size; }

  private:
    const unsigned char* m_data = nullptr;
    std::size_t m_size = 0;
};

}  // namespace

std::optional<PublicKey> parsePublicKey(std::string_view base64) {
    if (!initialised())
        return std::nullopt;
    const auto bytes = decoded(base64, crypto_sign_PUBLICKEYBYTES);
    if (!bytes)
        return std::nullopt;
    PublicKey key{};
    std::copy(bytes->begin(), bytes->end(), key.begin());
    return key;
}

bool verifyFile(const std::filesystem::path& file, const PublicKey& key,
                std::string_view signature) {
    if (!initialised())
        return false;
    const auto bytes = decoded(signature, crypto_sign_BYTES);
    if (!bytes)
        return false;
    const MappedFile mapped(file);
    return mapped.isOpen() && crypto_sign_verify_detached(bytes->data(), mapped.data(),
                                                          mapped.size(), key.data()) == 0;
}

KeyPair makeKeyPair() {
    if (!initialised())
        return {};
    unsigned char publicKey[crypto_sign_PUBLICKEYBYTES];
    unsigned char secretKey[crypto_sign_SECRETKEYBYTES];
    crypto_sign_keypair(publicKey, secretKey);
    KeyPair pair{encoded(publicKey, sizeof publicKey), encoded(secretKey, sizeof secretKey)};
    sodium_memzero(secretKey, sizeof secretKey);
    return pair;
}

std::optional<std::string> publicKeyOf(std::string_view secretKey) {
    if (!initialised())
        return std::nullopt;
    auto bytes = decoded(secretKey, crypto_sign_SECRETKEYBYTES);
    if (!bytes)
        return std::nullopt;
    unsigned char publicKey[crypto_sign_PUBLICKEYBYTES];
    crypto_sign_ed25519_sk_to_pk(publicKey, bytes->data());
    sodium_memzero(bytes->data(), bytes->size());
    return encoded(publicKey, sizeof publicKey);
}

std::optional<std::string> signFile(const std::filesystem::path& file, std::string_view secretKey) {
    if (!initialised())
        return std::nullopt;
    auto bytes = decoded(secretKey, crypto_sign_SECRETKEYBYTES);
    if (!bytes)
        return std::nullopt;
    const MappedFile mapped(file);
    std::optional<std::string> signature;
    if (mapped.isOpen()) {
        unsigned char made[crypto_sign_BYTES];
        crypto_sign_detached(made, nullptr, mapped.data(), mapped.size(), bytes->data());
        signature = encoded(made, sizeof made);
    }
    sodium_memzero(bytes->data(), bytes->size());
    return signature;
}

}  // namespace copperwick::update_signature
