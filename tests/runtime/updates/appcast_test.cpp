// The update feed as read: which items can be offered, which version is
// newest, and feeds that must never get as far as a download.

#include "runtime/updates/appcast.h"

#include <gtest/gtest.h>

#include "runtime/updates/update_transfer.h"
#include "runtime/updates/update_version.h"
#include "tests/support/update_feed_server.h"

namespace copperwick {
namespace {

using testing::FeedItem;
using testing::feedXML;

FeedItem item(const std::string& version) {
    return {.version = version,
            .url = "https://updates.example.com/copperwick-" + version + ".deb",
            .length = 1000,
            .signature = "c2lnbmF0dXJl"};
}

std::vector<std::string> versions(const Appcast& appcast) {
    std::vector<std::string> found;
    for (const auto& each : appcast.items)
        found.push_back(each.version);
    return found;
}

TEST(UpdateVersion, ComparesPartByPartAsNumbers) {
    EXPECT_TRUE(update_version::isNewer("1.10", "1.9"));
    EXPECT_TRUE(update_version::isNewer("0.2.0", "0.1.9"));
    EXPECT_TRUE(update_version::isNewer("1.0.1", "1"));
    EXPECT_FALSE(update_version::isNewer("1.0.0", "1"));
    EXPECT_FALSE(update_version::isNewer("1.2", "1.2.0"));
    EXPECT_FALSE(update_version::isNewer("0.9.9", "1.0"));
    for (const char* refused : {"", "1.", ".1", "1..2", "1.2a", "v1.2", "-1", "1.2-1", " 1.2",
                                "1234567890", "1.2.3.4.5.6.7.8.9"}) {
        EXPECT_EQ(update_version::parse(refused), std::nullopt) << refused;
        EXPECT_FALSE(update_version::isNewer(refused, "0.1")) << refused;
    }
    EXPECT_FALSE(update_version::isNewer("2.0", "not a version"));
}

TEST(Appcast, ReadsEachItemByNamespaceWhateverThePrefix) {
    const std::string xml =
        "<?xml version=\"1.0\"?>"
        "<rss version=\"2.0\" xmlns:s=\"http://www.andymatuschak.org/xml-namespaces/sparkle\">"
        "<channel><item>"
        "<title> Copperwick 0.3 </title><description>Faster imports.</description>"
        "<s:version>9.9.9</s:version>"
        "<enclosure url=\"https://example.com/c.deb\" length=\"4812\" "
        "type=\"application/vnd.debian.binary-package\" s:version=\"0.3.0\" "
        "s:shortVersionString=\"0.3\" s:edSignature=\"AAAA\"/>"
        "</item><item>"
        "<enclosure url=\"https://example.com/d.deb\" length=\"10\" "
        "type=\"application/vnd.debian.binary-package\"/>"
        "<s:version>0.4.0</s:version><s:edSignature>BBBB</s:edSignature>"
        "</item></channel></rss>";
    const auto appcast = Appcast::parse(xml);
    ASSERT_TRUE(appcast);
    ASSERT_EQ(appcast->items.size(), 2u);
    const AppcastItem& first = appcast->items[0];
    EXPECT_EQ(first.title, "Copperwick 0.3");
    EXPECT_EQ(first.description, "Faster imports.");
    EXPECT_EQ(first.url, "https://example.com/c.deb");
    EXPECT_EQ(first.length, 4812u);
    EXPECT_EQ(first.version, "0.3.0") << "the enclosure's attribute wins over the element";
    EXPECT_EQ(first.displayVersion(), "0.3");
    EXPECT_EQ(first.signature, "AAAA");
    EXPECT_EQ(appcast->items[1].version, "0.4.0");
    EXPECT_EQ(appcast->items[1].signature, "BBBB");
}

TEST(Appcast, LeavesOutItemsThatCantBeOffered) {
    FeedItem plain = item("0.2.0");
    plain.url = "http://updates.example.com/copperwick.deb";
    FeedItem rpm = item("0.3.0");
    rpm.type = "application/x-rpm";
    FeedItem unsigned_ = item("0.4.0");
    unsigned_.signature = "";
    FeedItem empty = item("0.5.0");
    empty.length = 0;
    FeedItem oddVersion = item("0.6.0-beta");
    const auto appcast =
        Appcast::parse(feedXML({plain, rpm, unsigned_, empty, oddVersion, item("0.7.0")}));
    ASSERT_TRUE(appcast);
    EXPECT_EQ(versions(*appcast), std::vector<std::string>{"0.7.0"});
}

TEST(Appcast, OffersTheNewestAfterTheRunningVersionAndNeverTheSameOrOlder) {
    const auto appcast =
        Appcast::parse(feedXML({item("1.1.0"), item("1.3.0"), item("1.2.0"), item("0.9.0")}));
    ASSERT_TRUE(appcast);
    EXPECT_EQ(appcast->newestAfter("1.0.0")->version, "1.3.0");
    EXPECT_EQ(appcast->newestAfter("1.2.5")->version, "1.3.0");
    EXPECT_EQ(appcast->newestAfter("1.3.0"), std::nullopt);
    EXPECT_EQ(appcast->newestAfter("1.3"), std::nullopt);
    EXPECT_EQ(appcast->newestAfter("2.0"), std::nullopt);
}

TEST(Appcast, AFeedThatIsntAnRSSDocumentIsNoFeed) {
    for (const std::string& text :
         {std::string("this is not XML at all"), std::string("<html><body>Moved</body></html>"),
          std::string("<rss><channel><item></channel></rss>"), std::string(),
          feedXML({item("1.0")}).substr(0, 200)}) {
        EXPECT_EQ(Appcast::parse(text), std::nullopt) << text;
    }
    EXPECT_NE(Appcast::parse("<rss version=\"2.0\"/>"), std::nullopt);
    EXPECT_EQ(Appcast::parse(std::string(Appcast::kMaxFeedBytes + 1, ' ')), std::nullopt);
}

// A feed declaring entities that expand to gigabytes held the checker's
// thread and memory until the program was killed.
TEST(Appcast, RefusesADocumentTypeBeforeAnyEntityIsExpanded) {
    const std::string laughs =
        "<?xml version=\"1.0\"?><!DOCTYPE rss [<!ENTITY a \"aaaaaaaaaa\">"
        "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
        "<rss><channel><item><title>&c;</title></item></channel></rss>";
    EXPECT_EQ(Appcast::parse(laughs), std::nullopt);
}

TEST(UpdateTransfer, FetchesOnlyOverHttpsOrFromThisComputer) {
    for (const char* allowed : {"https://updates.example.com/appcast.xml", "HTTPS://example.com",
                                "https://[2001:db8::1]/a", "http://127.0.0.1:8080/appcast.xml",
                                "http://localhost/appcast.xml", "http://[::1]:81"}) {
        EXPECT_TRUE(UpdateTransfer::isAllowedAddress(allowed)) << allowed;
    }
    for (const char* refused :
         {"http://updates.example.com/appcast.xml", "http://localhost.example.com/a",
          "http://127.0.0.1@example.com/", "https://user@example.com/appcast.xml", "https://",
          "https:///appcast.xml", "ftp://example.com/a.deb", "file:///tmp/a.deb",
          "https://example.com/a b.deb", "", "http://0x7f.0.0.1/"}) {
        EXPECT_FALSE(UpdateTransfer::isAllowedAddress(refused)) << refused;
    }
}

}  // namespace
}  // namespace copperwick
