// copperwick-sign-update: the signing key of a build's updates, and the
// feed's line for each package signed with it. For whoever publishes
// updates; never installed.
//
//   copperwick-sign-update generate-key KEY_FILE
//       Makes a key pair, keeps the signing key in KEY_FILE (mode 0600,
//       never over an existing file) and prints the public key, which the
//       build is configured with as COPPERWICK_UPDATE_PUBLIC_KEY.
//   copperwick-sign-update public-key KEY_FILE
//       Prints the public key of the signing key in KEY_FILE again.
//   copperwick-sign-update sign KEY_FILE PACKAGE VERSION URL
//       Signs the whole of PACKAGE and prints its <enclosure> line, for an
//       <item> of the feed, with URL where the package is published.

#include <sys/stat.h>

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/updates/appcast.h"
#include "runtime/updates/update_signature.h"
#include "runtime/updates/update_transfer.h"
#include "runtime/updates/update_version.h"

namespace {

using namespace copperwick;

constexpr std::string_view kUsage =
    "Usage:\n"
    "  copperwick-sign-update generate-key KEY_FILE\n"
    "  copperwick-sign-update public-key KEY_FILE\n"
    "  copperwick-sign-update sign KEY_FILE PACKAGE VERSION URL\n";

int fail(std::string_view message) {
    std::cerr << "copperwick-sign-update: " << message << '\n';
    return 1;
}

std::optional<std::string> readKey(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    return text;
}

// XML attribute text: the five characters that would end or break it.
std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

int generateKey(const std::filesystem::path& file) {
    const update_signature::KeyPair pair = update_signature::makeKeyPair();
    if (pair.secretKey.empty())
        return fail("libsodium couldn't be started.");
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return fail(errno == EEXIST ? file.string() + " exists already; it is never replaced."
                                    : file.string() + " couldn't be made: " + std::strerror(errno));
    const std::string text = pair.secretKey + "\n";
    const bool written =
        ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (::close(descriptor) != 0 || !written)
        return fail(file.string() + " couldn't be written.");
    std::cout << "The signing key is in " << file.string()
              << ". Keep it secret, and keep a copy: without it no update can be signed.\n"
              << "Public key: " << pair.publicKey << '\n'
              << "Configure the build with:\n"
              << "  -DCOPPERWICK_UPDATE_PUBLIC_KEY=" << pair.publicKey << '\n';
    return 0;
}

int publicKey(const std::filesystem::path& file) {
    const auto key = readKey(file);
    if (!key)
        return fail(file.string() + " couldn't be read.");
    const auto publicKey = update_signature::publicKeyOf(*key);
    if (!publicKey)
        return fail(file.string() + " doesn't hold a signing key.");
    std::cout << *publicKey << '\n';
    return 0;
}

int sign(const std::filesystem::path& keyFile, const std::filesystem::path& package,
         std::string_view version, std::string_view url) {
    if (!update_version::parse(version))
        return fail("The version must be whole numbers separated by dots, such as 0.2.0.");
    if (!UpdateTransfer::isAllowedAddress(url))
        return fail("The address must begin with https://.");
    const auto key = readKey(keyFile);
    if (!key)
        return fail(keyFile.string() + " couldn't be read.");
    std::error_code error;
    const auto length = std::filesystem::file_size(package, error);
    if (error || length == 0)
        return fail(package.string() + " couldn't be read, or is empty.");
    const auto signature = update_signature::signFile(package, *key);
    if (!signature)
        return fail("The package couldn't be signed: is " + keyFile.string() + " a signing key?");
    std::cout << "<enclosure url=\"" << escaped(url) << "\" length=\"" << length << "\" type=\""
              << Appcast::kPackageType << "\" sparkle:version=\"" << version
              << "\" sparkle:edSignature=\"" << *signature << "\"/>\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "generate-key" && argc == 3)
        return generateKey(argv[2]);
    if (command == "public-key" && argc == 3)
        return publicKey(argv[2]);
    if (command == "sign" && argc == 6)
        return sign(argv[2], argv[3], argv[4], argv[5]);
    std::cerr << kUsage;
    return command == "--help" ? 0 : 2;
}
