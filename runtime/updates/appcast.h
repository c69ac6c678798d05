#pragma once

// The update feed: an RSS 2.0 "appcast", one <item> per published version.
//
//   <rss version="2.0"
//        xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
//     <channel>
//       <title>Copperwick</title>
//       <item>
//         <title>Copperwick 0.2.0</title>
//         <description>What changed, in a sentence or two.</description>
//         <enclosure url="https://…/copperwick_0.2.0_amd64.deb" length="4812345"
//                    type="application/vnd.debian.binary-package"
//                    sparkle:version="0.2.0" sparkle:shortVersionString="0.2"
//                    sparkle:edSignature="base64 of the 64-byte ed25519 signature"/>
//       </item>
//     </channel>
//   </rss>
//
// The version, short version and signature may also stand as elements of the
// item (<sparkle:version>0.2.0</sparkle:version>); the enclosure's attribute
// wins. Attributes are matched by namespace, whatever prefix the feed uses.
// An item without an https or loopback address, a whole positive length, a
// version of dotted numbers and a signature, or of another type than a
// Debian package, is left out; it may be meant for another platform.
//
// A value; the parser keeps no state between calls and is safe on any thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace copperwick {

struct AppcastItem {
    std::string title;
    std::string description;
    std::string url;
    uint64_t length = 0;
    // sparkle:version, compared with the running version.
    std::string version;
    // sparkle:shortVersionString, when given: what a person reads.
    std::string shortVersion;
    std::string signature;

    // The version as a person reads it.
    [[nodiscard]] const std::string& displayVersion() const {
        return shortVersion.empty() ? version : shortVersion;
    }
    friend bool operator==(const AppcastItem&, const AppcastItem&) = default;
};

struct Appcast {
    static constexpr std::string_view kPackageType = "application/vnd.debian.binary-package";
    static constexpr std::string_view kSparkleNamespace =
        "http://www.andymatuschak.org/xml-namespaces/sparkle";
    // Larger than any feed of a few hundred versions.
    static constexpr std::size_t kMaxFeedBytes = 1 << 20;

    std::vector<AppcastItem> items;

    // Absent when the text isn't well-formed XML with an <rss> root, is
    // larger than kMaxFeedBytes, or declares a document type (which is
    // where entity tricks live; a feed needs none).
    [[nodiscard]] static std::optional<Appcast> parse(std::string_view xml);

    // The newest item strictly newer than `runningVersion`; the first of
    // equal versions in the feed's order. Absent when there is none: the
    // same or an older version is never offered.
    [[nodiscard]] std::optional<AppcastItem> newestAfter(std::string_view runningVersion) const;
};

}  // namespace copperwick
