#include "core/model/transaction_reader.h"

#include <array>
#include <random>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "core/model/record_json.h"
#include "tests/support/random_records.h"

namespace copperwick {
namespace {

// The reader every other record goes through, for comparison.
std::optional<LedgerTransaction> readThroughTree(const std::string& text) {
    boost::json::error_code ec;
    const auto value = boost::json::parse(text, ec);
    if (ec)
        return std::nullopt;
    return record_json::fromJSON<LedgerTransaction>(value).value;
}

using testing::awkwardText;
using testing::randomFlatTransaction;

TEST(TransactionReader, ReadsEveryFlatRecordAsTheTreeReaderDoes) {
    std::mt19937 random(7);
    const std::array<std::optional<SpendingAssignment>, 4> assignments{
        std::nullopt, SpendingAssignment::unassigned(), SpendingAssignment::shared(),
        SpendingAssignment::person(*Uuid::parse("5A1F6C3E-2B4D-4E8F-9A0B-1C2D3E4F5A6B"))};
    for (int i = 0; i < 500; ++i) {
        auto t = randomFlatTransaction(random);
        // Every imported line carries the assignment it inherited.
        t.inheritedAssignment = assignments[static_cast<std::size_t>(i) % 4];
        t.spendingAssignment = assignments[static_cast<std::size_t>(i / 4) % 4];
        const auto text = record_json::encode(t);
        const auto flat = detail::readFlatTransaction(text);
        ASSERT_TRUE(flat) << text;
        EXPECT_EQ(*flat, t) << text;
    }
}

TEST(TransactionReader, LeavesNestedRecordsToTheTreeReader) {
    std::mt19937 random(11);
    auto t = randomFlatTransaction(random);
    t.splits = {
        TransactionSplit{.id = Uuid::random(), .categoryID = Uuid::random(), .amount = t.amount}};
    const auto text = record_json::encode(t);
    EXPECT_FALSE(detail::readFlatTransaction(text));
    const auto decoded = record_json::decode<LedgerTransaction>(text);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded.value, t);
}

// A row as the encoder writes it, with one piece of its text replaced.
std::string edited(const std::string& from, const std::string& to) {
    LedgerTransaction t{.id = *Uuid::parse("0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B"),
                        .accountID = *Uuid::parse("5A1F6C3E-2B4D-4E8F-9A0B-1C2D3E4F5A6B"),
                        .sourceLine = 7,
                        .date = *LocalDate::make(2024, 3, 9),
                        .amount = -1234,
                        .rawDescription = "TRADER JOES",
                        .fingerprint = "fp",
                        .occurrence = 1};
    t.note = "n";
    std::string text = record_json::encode(t);
    const auto at = text.find(from);
    if (at == std::string::npos)
        ADD_FAILURE() << "no " << from << " in " << text;
    else
        text.replace(at, from.size(), to);
    return text;
}

// Rows no encoder of ours writes but a JSON parser reads, or refuses. Each says
// which way it should go: read quickly, handed to the tree reader, or refused by
// both. Whatever the way, the record must be the tree reader's.
TEST(TransactionReader, TakesOnlyWhatTheTreeReaderReadsTheSame) {
    enum Way { quick, handedOn, refused };
    struct Case {
        std::string from, to;
        Way way;
    };
    const std::vector<Case> cases{
        // Spellings of the same values.
        {"{", " \n{ ", quick},
        {R"(,"amount":)", "\t,\r\n\"amount\" : ", quick},
        {R"("id")", R"("\u0069d")", quick},
        {"0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B", "0b3c9e2a-7d41-4f6e-8c5b-2a1d0e9f8c7b", quick},
        {R"("note":"n")", R"("note":"q\"b\\s\/\b\f\n\r\t\u00e9\u20AC\ud83d\ude00\u0000")", quick},
        {R"("note":"n")", "\"note\":\"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF\"",
         quick},
        {"-1234", "9223372036854775807", quick},
        {"-1234", "-9223372036854775808", quick},
        {"-1234", "0", quick},
        {"0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B", R"(\u0030B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B)",
         quick},
        {"2024-03-09", R"(2024\u002D03-09)", quick},
        {"2024-03-09", "2024-3-9", quick},
        {"2024-03-09", "2024-02-29", quick},
        {R"("note":"n")", R"("note":"n","postedDate":null,"mood":"fine","x":true,"y":null,"z":-5)",
         quick},
        {R"("note":"n")",
         R"("externalID":"e","note":"n","batchID":"0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B")", quick},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"unassigned":{}})", quick},
        {R"("note":"n")", R"("note":"n","spendingAssignment" : { "shared" : { } } )", quick},
        {R"("note":"n")",
         R"("note":"n","spendingAssignment":{"person":{"_0":"5A1F6C3E-2B4D-4E8F-9A0B-1C2D3E4F5A6B"}})",
         quick},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"shared":{}})", quick},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":null)", quick},
        // Readable, but left to the tree reader.
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"shared":{"x":1}})", handedOn},
        {R"("note":"n")", R"("note":"n","mood":1.5)", handedOn},
        {R"("note":"n")", R"("note":"n","mood":{"a":[1]})", handedOn},
        {R"("note":"n")", R"("note":"n","mood":[])", handedOn},
        {R"("note":"n")", R"("note":"n","suggestion":null)", handedOn},
        {R"("note":"n")", R"("note":"n","mood":123456789012345678901234)", handedOn},
        {"-1234", "-0", handedOn},
        // Refused by both.
        {R"("note":"n")", R"("note":null)", refused},
        {"-1234", "9223372036854775808", refused},
        {"-1234", "-9223372036854775809", refused},
        {"-1234", "-1234.0", refused},
        {"-1234", "-1e3", refused},
        {"-1234", "-01234", refused},
        {"-1234", "\"-1234\"", refused},
        {R"("voided":false)", R"("voided":"false")", refused},
        {R"("voided":false)", R"("voided":0)", refused},
        {R"("note":"n")", R"("note":5)", refused},
        {R"("status":"posted")", R"("status":"Posted")", refused},
        {"2024-03-09", "2023-02-29", refused},
        {"0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B", "0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7G", refused},
        {"0B3C9E2A-7D41-4F6E-8C5B-2A1D0E9F8C7B", "0B3C9E2A7D41-4F6E-8C5B-2A1D0E9F8C7B-", refused},
        {R"("note":"n")", R"("note":"\ud83d")", refused},
        {R"("note":"n")", R"("note":"\ude00")", refused},
        {R"("note":"n")", R"("note":"\ud83d\u0041")", refused},
        {R"("note":"n")", R"("note":"\x")", refused},
        {R"("note":"n")", R"("note":"\u00G0")", refused},
        {R"("note":"n")", "\"note\":\"\x01\"", refused},
        {R"("note":"n")", "\"note\":\"\xC0\xAF\"", refused},
        {R"("note":"n")", "\"note\":\"\xED\xA0\x80\"", refused},
        {R"("note":"n")", "\"note\":\"\xF4\x90\x80\x80\"", refused},
        {R"("note":"n")", "\"note\":\"\xE2\x82\"", refused},
        {R"("note":"n")", "\"note\":\"\x80\"", refused},
        {R"("note":"n")", "\"\xFF\":1,\"note\":\"n\"", refused},
        {R"("note":"n"})", R"("note":"n",})", refused},
        {R"("note":"n"})", R"("note":"n"}x)", refused},
        {R"("note":"n"})", R"("note":"n"}{})", refused},
        {R"("note":"n"})", R"("note":"n")", refused},
        {R"("note":"n"})", R"("note":"n)", refused},
        {R"(,"note":"n")", "", refused},
        {"{", "\xEF\xBB\xBF{", refused},
        {"{", "[{", refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{})", refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"nobody":{}})", refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"shared":{},"unassigned":{}})",
         refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"person":{}})", refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"person":{"_0":"nobody"}})",
         refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":{"shared":[]})", refused},
        {R"("note":"n")", R"("note":"n","inheritedAssignment":"shared")", refused},
    };
    for (const auto& c : cases) {
        const std::string text = edited(c.from, c.to);
        SCOPED_TRACE(text);
        const auto quickly = detail::readFlatTransaction(text);
        const auto tree = readThroughTree(text);
        EXPECT_EQ(quickly.has_value(), c.way == quick);
        EXPECT_EQ(tree.has_value(), c.way != refused);
        if (quickly && tree) {
            EXPECT_EQ(*quickly, *tree);
        }
        const auto decoded = record_json::decode<LedgerTransaction>(text);
        EXPECT_EQ(decoded.value, tree);
    }
}

// A key written twice is something only the tree reader may settle.
TEST(TransactionReader, LeavesRepeatedKeysToTheTreeReader) {
    for (const std::string extra : {R"("note":"m")", R"("note":null)", R"("sourceLine":8)"}) {
        const std::string text = edited(R"("note":"n")", R"("note":"n",)" + extra);
        EXPECT_FALSE(detail::readFlatTransaction(text)) << text;
        EXPECT_EQ(record_json::decode<LedgerTransaction>(text).value, readThroughTree(text));
    }
}

// Text is where the quick reader does its own JSON work: escapes, UTF-8 and
// the word-at-a-time scan. Any bytes at all in a string must come out as the
// tree reader has them, or be declined.
TEST(TransactionReader, ReadsArbitraryTextAsTheTreeReaderDoes) {
    std::mt19937 random(17);
    const std::vector<std::string> pieces{"a",
                                          "Z",
                                          " ",
                                          "\"",
                                          "\\",
                                          "/",
                                          "\\\"",
                                          "\\\\",
                                          "\\/",
                                          "\\b",
                                          "\\n",
                                          "\\u00e9",
                                          "\\u0000",
                                          "\\uD83D",
                                          "\\uDE00",
                                          "\\ud83d\\ude00",
                                          "\xC3\xA9",
                                          "\xE2\x82\xAC",
                                          "\xF0\x9F\x98\x80",
                                          "\xC3",
                                          "\xA9",
                                          "\xED\xA0\x80",
                                          "\xF8",
                                          "\x7F",
                                          "\x1F",
                                          "\t",
                                          "0123456",
                                          "abcdefgh"};
    int quick = 0;
    for (int i = 0; i < 3000; ++i) {
        std::string note;
        const auto count = random() % 24;
        for (unsigned j = 0; j < count; ++j)
            note += pieces[random() % pieces.size()];
        const std::string text = edited(R"("note":"n")", "\"note\":\"" + note + "\"");
        const auto quickly = detail::readFlatTransaction(text);
        const auto tree = readThroughTree(text);
        if (quickly) {
            ++quick;
            ASSERT_TRUE(tree) << "only the quick reader accepted: " << text;
            ASSERT_EQ(*quickly, *tree) << text;
        }
    }
    EXPECT_GT(quick, 300) << "the quick reader declined nearly everything";
}

// Whatever damage a row has, the quick reader never accepts what the tree
// reader refuses, nor reads it differently.
TEST(TransactionReader, NeverDisagreesWithTheTreeReaderOnDamagedRows) {
    std::mt19937 random(13);
    const std::string alphabet = "{}[]\":,0123456789-.eE tfnul\\abcXYZ";
    int accepted = 0;
    for (int i = 0; i < 4000; ++i) {
        std::string text = record_json::encode(randomFlatTransaction(random));
        const auto edits = 1 + random() % 3;
        for (unsigned e = 0; e < edits; ++e) {
            const auto at = random() % text.size();
            switch (random() % 3) {
                case 0:
                    text[at] = alphabet[random() % alphabet.size()];
                    break;
                case 1:
                    text.erase(at, 1 + random() % 8);
                    break;
                default:
                    text.insert(at, 1, alphabet[random() % alphabet.size()]);
                    break;
            }
            if (text.empty())
                text = "{}";
        }
        const auto flat = detail::readFlatTransaction(text);
        if (!flat)
            continue;
        ++accepted;
        const auto tree = readThroughTree(text);
        ASSERT_TRUE(tree) << "only the quick reader accepted: " << text;
        ASSERT_EQ(*flat, *tree) << text;
    }
    EXPECT_GT(accepted, 0) << "no damaged row survived; the comparison proved nothing";
}

}  // namespace
}  // namespace copperwick
