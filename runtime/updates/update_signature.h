#pragma once

// The ed25519 signatures of update packages, made and checked with
// libsodium: a detached signature over the whole file, written in base64
// (the standard alphabet, with padding), as the feed's sparkle:edSignature
// carries it. A public key is 32 bytes, a signing key 64 (libsodium's
// secret key: the seed followed by the public key), both kept in base64.
//
// Plain functions, safe on any thread.

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace copperwick::update_signature {

using PublicKey = std::array<unsigned char, 32>;

// Absent unless the text is exactly a 32-byte key in base64.
[[nodiscard]] std::optional<PublicKey> parsePublicKey(std::string_view base64);

// Whether `signature` (base64) is `key`'s signature of the whole of
// `file`. False for anything that can't be read or decoded: a file that
// isn't there, a signature of the wrong size.
[[nodiscard]] bool verifyFile(const std::filesystem::path& file, const PublicKey& key,
                              std::string_view signature);

struct KeyPair {
    std::string publicKey;  // base64
    std::string secretKey;  // base64
};

// A fresh key pair from the system's random source.
[[nodiscard]] KeyPair makeKeyPair();
// The public half of a signing key; absent when it isn't one.
[[nodiscard]] std::optional<std::string> publicKeyOf(std::string_view secretKey);
// The signature of the whole of `file`, in base64; absent when the key
// isn't one or the file can't be read.
[[nodiscard]] std::optional<std::string> signFile(const std::filesystem::path& file,
                                                  std::string_view secretKey);

}  // namespace copperwick::update_signature
