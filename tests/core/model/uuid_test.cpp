#include "core/model/uuid.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/model/text.h"

namespace copperwick {
namespace {

TEST(Uuid, ParsesAnyCaseAndWritesUpperCase) {
    const auto lower = Uuid::parse("0b3c9e2a-7d41-4f6e-8c5b-2a1d0e9f8c7b");
    ASSERT_TRUE(lower);
    EXPECT_EQ(lower->text(), "0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B");
    EXPECT_EQ(Uuid::parse(lower->text()), lower);
    for (const char* bad :
         {"", "0B3C9E2A7D414F6E8C5B2A1D0E9F8C7B", "0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7",
          "0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7BA", "0B3C9E2A_7D41-4F6E-8C5B-2A1D0E9F8C7B",
          "GB3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B", "{B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7}"}) {
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
    }
}

TEST(Uuid, RandomIdsAreVersionFourAndDistinct) {
    std::set<Uuid> seen;
    for (int i = 0; i < 1000; ++i) {
        const auto id = Uuid::random();
        EXPECT_EQ(id.text()[14], '4');
        EXPECT_TRUE(std::string("89AB").find(id.text()[19]) != std::string::npos);
        seen.insert(id);
    }
    EXPECT_EQ(seen.size(), 1000u);
}

// Far more than one millisecond's 4,096: the count carries into the time.
TEST(Uuid, TimeOrderedIdsAreVersionSevenAndRiseInTheOrderTheyWereMade) {
    const auto before = std::chrono::duration_cast<std::chrono::milliseconds>(
                            std::chrono::system_clock::now().time_since_epoch())
                            .count();
    std::vector<Uuid> ids;
    for (int i = 0; i < 20'000; ++i)
        ids.push_back(Uuid::timeOrdered());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const std::string text = ids[i].text();
        ASSERT_EQ(text[14], '7') << text;
        ASSERT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
        ASSERT_EQ(Uuid::parse(text), ids[i]);
        if (i > 0) {
            ASSERT_LT(ids[i - 1].text(), text);
        }
    }
    // The first six bytes are the time the first id was made.
    int64_t millis = 0;
    for (int i = 0; i < 6; ++i)
        millis = (millis << 8) | ids.front().bytes()[static_cast<std::size_t>(i)];
    EXPECT_GE(millis, before);
    EXPECT_LT(millis, before + 60'000);
}

// Ids are drawn from a pool of random bytes; a child made by fork() must not
// hand out the ids its parent is about to.
TEST(Uuid, AForkedChildDrawsIdsOfItsOwn) {
    (void)Uuid::random();  // the pool is full now
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string text = Uuid::random().text();
        (void)!::write(pipe[1], text.data(), text.size());
        ::_exit(0);
    }
    ::close(pipe[1]);
    std::string fromChild(36, '\0');
    const auto got = ::read(pipe[0], fromChild.data(), fromChild.size());
    ::close(pipe[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_EQ(got, 36);
    EXPECT_NE(fromChild, Uuid::random().text());
}

TEST(Uuid, OrderOfValuesIsOrderOfText) {
    std::vector<Uuid> ids;
    for (int i = 0; i < 200; ++i)
        ids.push_back(Uuid::random());
    std::sort(ids.begin(), ids.end());
    for (std::size_t i = 1; i < ids.size(); ++i)
        EXPECT_LT(ids[i - 1].text(), ids[i].text());
}

TEST(Text, TrimsUnicodeSpaceButKeepsInnerText) {
    EXPECT_EQ(text::trimmed(" \t\n Acme \r\n"), "Acme");
    EXPECT_EQ(text::trimmed("\xC2\xA0"
                            "Acme Co"
                            "\xE2\x80\x83"),
              "Acme Co");  // no-break and em space
    EXPECT_EQ(text::trimmed("   "), "");
    EXPECT_EQ(text::trimmed("\xFF x \xFF"), "\xFF x \xFF");  // invalid bytes are not space
    EXPECT_EQ(text::trimmedSpaces(" \t3/14/26\n "), "3/14/26\n");
}

TEST(Text, CaseMappingUsesNoLocale) {
    EXPECT_EQ(text::uppercased("café straße"), "CAFÉ STRASSE");
    EXPECT_EQ(text::lowercased("İSTANBUL"), "i̇stanbul");  // root locale: dotted I keeps its dot
    EXPECT_EQ(text::uppercased("istanbul"), "ISTANBUL");  // never the Turkish dotted capital
    EXPECT_TRUE(text::equalsIgnoringCase("Crème Brûlée", "CRÈME BRÛLÉE"));
    EXPECT_FALSE(text::equalsIgnoringCase("Acme", "Acme "));
}

}  // namespace
}  // namespace copperwick
