#include "core/import/csv_reader.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

using namespace std::string_literals;

// One record per line: "line [field][field] {raw}", line breaks in a field
// shown as \n so the whole parse compares as one string.
std::string describe(const std::vector<CSVRecord>& records) {
    std::string out;
    for (const auto& record : records) {
        if (!out.empty())
            out += '\n';
        out += std::to_string(record.line) + ' ';
        for (const auto& field : record.fields) {
            out += '[';
            for (const char c : field)
                out += c == '\n' ? "\\n"s : std::string(1, c);
            out += ']';
        }
        out += " {" + record.rawText + '}';
    }
    return out;
}

std::string parsed(std::string_view text, char32_t delimiter = U',') {
    return describe(CSVReader::parse(text, delimiter));
}

std::string decoded(std::string_view bytes) {
    const auto result = CSVReader::decode(bytes);
    if (const auto* error = std::get_if<CSVReaderError>(&result))
        return *error == CSVReaderError::empty ? "<empty>" : "<unreadable>";
    return std::get<std::string>(result);
}

std::string utf16le(std::u16string_view units) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string utf16be(std::u16string_view units) {
    std::string bytes = "\xFE\xFF";
    for (const char16_t unit : units) {
        bytes += static_cast<char>(unit >> 8);
        bytes += static_cast<char>(unit & 0xFF);
    }
    return bytes;
}

struct DecodeCase {
    std::string_view what;
    std::string bytes;
    std::string text;
};

TEST(CSVReaderDecode, PicksTheEncodingAndDropsOneByteOrderMark) {
    const std::vector<DecodeCase> cases = {
        {"no bytes at all", "", "<empty>"},
        {"UTF-8 mark must not stick to the first header",
         "\xEF\xBB\xBF"
         "Date,Amount",
         "Date,Amount"},
        {"only the first mark is dropped", "\xEF\xBB\xBF\xEF\xBB\xBFx", "\xEF\xBB\xBFx"},
        {"a mark in the middle stays", "a\xEF\xBB\xBF", "a\xEF\xBB\xBF"},
        {"UTF-8 passes through", "Caf\xC3\xA9,\xF0\x9F\x98\x80", "Caf\xC3\xA9,\xF0\x9F\x98\x80"},
        {"UTF-16LE by its mark", utf16le(u"D\u00E9bit,1"),
         "D\xC3\xA9"
         "bit,1"},
        {"UTF-16BE by its mark", utf16be(u"D\u00E9bit,1"),
         "D\xC3\xA9"
         "bit,1"},
        {"UTF-16 surrogate pair", utf16le(u"\U0001F600"), "\xF0\x9F\x98\x80"},
        {"UTF-16 mark alone is an empty text", "\xFF\xFE", ""},
        {"UTF-16 mark dropped once", utf16le(u"\uFEFFx"), "\xEF\xBB\xBFx"},
        {"lone FF goes to 1252", "\xFF", "\xC3\xBF"},
        {"1252 accents and euro", "Caf\xE9 \x80", "Caf\xC3\xA9 \xE2\x82\xAC"},
        {"odd byte after FF FE falls through to 1252", "\xFF\xFE\x41",
         "\xC3\xBF\xC3\xBE"
         "A"},
        {"unpaired UTF-16 surrogate is refused, not replaced", "\xFF\xFE\x00\xD8"s,
         "\xC3\xBF\xC3\xBE"s + '\0' + "\xC3\x98"},
        {"odd byte after FE FF falls through to 1252", "\xFE\xFF\x41",
         "\xC3\xBE\xC3\xBF"
         "A"},
        {"overlong UTF-8 is not read as a slash", "\xC0\xAF", "\xC3\x80\xC2\xAF"},
        {"UTF-8 surrogate is not accepted", "\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},
        {"truncated UTF-8 at the end", "ab\xC3", "ab\xC3\x83"},
        {"UTF-8 past U+10FFFF, then undefined 1252 byte", "\xF4\x90\x80\x80", "<unreadable>"},
        {"undefined 1252 byte 81", "a\x81", "<unreadable>"},
        {"undefined 1252 byte 8D", "\x8D", "<unreadable>"},
        {"undefined 1252 byte 8F", "\x8F", "<unreadable>"},
        {"undefined 1252 byte 90", "\x90", "<unreadable>"},
        {"undefined 1252 byte 9D", "\x9D", "<unreadable>"},
        {"defined neighbour 9F", "\x9F", "\xC5\xB8"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(decoded(c.bytes), c.text) << c.what;
}

TEST(CSVReaderDecode, SurrogatePairsSurviveLargeUtf16Files) {
    // Large enough that the converter's output is handed over in pieces and a
    // pair can straddle two of them; the odd prefix shifts every boundary.
    std::u16string units = u"x";
    std::string expected = "x";
    for (int i = 0; i < 100'000; ++i) {
        units += u"\U0001F600";
        expected += "\xF0\x9F\x98\x80";
    }
    EXPECT_EQ(decoded(utf16le(units)), expected);
    EXPECT_EQ(decoded(utf16be(units)), expected);
}

TEST(CSVReaderDecode, LargeWindows1252FileIsReadWhole) {
    std::string bytes;
    std::string expected;
    for (int i = 0; i < 50'000; ++i) {
        bytes += "Caf\xE9,\x80;";
        expected += "Caf\xC3\xA9,\xE2\x82\xAC;";
    }
    EXPECT_EQ(decoded(bytes), expected);
    bytes += '\x81';
    EXPECT_EQ(decoded(bytes), "<unreadable>");
}

struct DelimiterCase {
    std::string_view what;
    std::string text;
    char32_t delimiter;
};

std::string lines(std::string_view line, int count, std::string_view ending = "\n") {
    std::string out;
    for (int i = 0; i < count; ++i) {
        out += line;
        out += ending;
    }
    return out;
}

TEST(CSVReaderDetectDelimiter, CountsOutsideQuotesOverTwentyLines) {
    // More commas than the twenty lines above them hold semicolons.
    const std::string manyCommas(41, ',');
    const std::vector<DelimiterCase> cases = {
        {"empty text", "", U','},
        {"no candidate", "abc\ndef", U','},
        {"semicolons", "a;b;c\n1;2;3", U';'},
        {"tabs", "a\tb\n1\t2", U'\t'},
        {"comma wins a tie with semicolon", "a,b;c", U','},
        {"comma wins a tie with tab", "a,b\tc", U','},
        {"tab wins a tie with semicolon", "a\tb;c", U'\t'},
        {"semicolon must beat tab, not just comma", "a\tb\tc\td;e;f,g", U'\t'},
        {"quoted delimiters are not counted", "\"1,2,3\";x;y", U';'},
        {"doubled quote leaves the flag as it was", "\"a\"\"b,c,d\";x", U';'},
        {"line 21 is never scanned", lines("a;b;c", 20) + manyCommas, U';'},
        {"CRLF ends lines too", lines("a;b;c", 20, "\r\n") + manyCommas, U';'},
        {"line 20 is still scanned", lines("a,b", 19) + std::string(20, ';'), U';'},
        {"bare CR files are scanned whole", lines("a;b;c", 20, "\r") + manyCommas, U','},
        {"LF inside quotes does not end the scan", "a;b;\"" + std::string(25, '\n') + "\",x,y,z",
         U','},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CSVReader::detectDelimiter(c.text), c.delimiter) << c.what;
}

struct ParseCase {
    std::string_view what;
    std::string text;
    std::string records;
};

TEST(CSVReaderParse, QuotesFollowTheStateMachine) {
    const std::vector<ParseCase> cases = {
        {"quoted delimiter does not split", "\"a,b\",c", "1 [a,b][c] {\"a,b\",c}"},
        {"doubled quote is one quote", "\"a\"\"b\"", "1 [a\"b] {\"a\"\"b\"}"},
        {"unclosed quote ends at end of text", "1,\"two", "1 [1][two] {1,\"two}"},
        {"empty quotes keep the record", "\"\"", "1 [] {\"\"}"},
        {"empty quotes and a final break", "\"\"\n", "1 [] {\"\"}"},
        {"blanks before the quote go, after it stay", "  \"x\"  ,y", "1 [x  ][y] {  \"x\"  ,y}"},
        {"quote after text is an ordinary character", "ab\"c,d", "1 [ab\"c][d] {ab\"c,d}"},
        {"text after closing quote joins the field", "\"abc\"def", "1 [abcdef] {\"abc\"def}"},
        {"a further quote after that is plain", "\"abc\"def\"g", "1 [abcdef\"g] {\"abc\"def\"g}"},
        {"later quotes in a closed field are plain", "\"a\"b\"c\",d",
         "1 [ab\"c\"][d] {\"a\"b\"c\",d}"},
        {"tab before the quote is dropped", "\t\"x\",y", "1 [x][y] {\t\"x\",y}"},
        {"no-break space before the quote is dropped", "\xC2\xA0\"x\"", "1 [x] {\xC2\xA0\"x\"}"},
        {"quoted field keeps its blanks", "\" a \",b", "1 [ a ][b] {\" a \",b}"},
        {"delimiter resets quotedness", "\"a\", b ", "1 [a][b] {\"a\", b }"},
        {"a quoted line break is text, so a later quote is plain", "\"\n\" \"y\"",
         "1 [\\n \"y\"] {\" \" \"y\"}"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parsed(c.text), c.records) << c.what;
}

TEST(CSVReaderParse, LineBreaksEndRecordsAndAreCountedAsLines) {
    const std::vector<ParseCase> cases = {
        {"empty text has no records", "", ""},
        {"a lone break is one blank record", "\n", "1 [] {}"},
        {"a final break makes no extra record", "a,b\n", "1 [a][b] {a,b}"},
        {"blank lines are kept and counted", "a\n\nb\n", "1 [a] {a}\n2 [] {}\n3 [b] {b}"},
        {"CRLF, CR and LF each end one line", "a\r\nb\rc\nd",
         "1 [a] {a}\n2 [b] {b}\n3 [c] {c}\n4 [d] {d}"},
        {"CR CR is two lines", "a\r\rb", "1 [a] {a}\n2 [] {}\n3 [b] {b}"},
        {"record spanning lines 3 to 5 starts on 3", "h\nx\n\"one\r\ntwo\nthree\",z\nnext",
         "1 [h] {h}\n2 [x] {x}\n3 [one\\ntwo\\nthree][z] {\"one two three\",z}\n6 [next] {next}"},
        {"a quoted CR is LF in the field", "\"a\rb\"\nc", "1 [a\\nb] {\"a b\"}\n3 [c] {c}"},
        {"open quote runs to the end across lines", "\"a\nb", "1 [a\\nb] {\"a b}"},
        {"open quote ending in a break", "x,\"a\n", "1 [x][a\\n] {x,\"a }"},
        {"only blanks is one empty field", "  \t", "1 [] {  \t}"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parsed(c.text), c.records) << c.what;
}

TEST(CSVReaderParse, TrimsUnquotedFieldsBySpaceSeparatorsAndTab) {
    const std::vector<ParseCase> cases = {
        {"blanks and tabs", " a\t, b ,,", "1 [a][b][][] { a\t, b ,,}"},
        {"no-break and ideographic spaces",
         "\xC2\xA0"
         "a\xE3\x80\x80,b",
         "1 [a][b] {\xC2\xA0"
         "a\xE3\x80\x80,b}"},
        {"zero-width space is not whitespace",
         "\xE2\x80\x8B"
         "a",
         "1 [\xE2\x80\x8B"
         "a] {\xE2\x80\x8B"
         "a}"},
        {"multi-byte text is untouched", "Caf\xC3\xA9,Zo\xC3\xAB,\xF0\x9F\x98\x80",
         "1 [Caf\xC3\xA9][Zo\xC3\xAB][\xF0\x9F\x98\x80] {Caf\xC3\xA9,Zo\xC3\xAB,\xF0\x9F\x98\x80}"},
        {"ill-formed bytes are kept, not trimmed", "\xC3 ,\xA0", "1 [\xC3][\xA0] {\xC3 ,\xA0}"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parsed(c.text), c.records) << c.what;
}

TEST(CSVReaderParse, SplitsOnTheGivenDelimiterOnly) {
    EXPECT_EQ(parsed("a\t\tb;c", U'\t'), "1 [a][][b;c] {a\t\tb;c}")
        << "trimming must not eat a tab that delimits";
    EXPECT_EQ(parsed("a;b,c", U';'), "1 [a][b,c] {a;b,c}");
    EXPECT_EQ(parsed("a,b", 0), "1 [a][b] {a,b}") << "no delimiter means comma";
    EXPECT_EQ(parsed("a\xC2\xA6"
                     "b",
                     U'\u00A6'),
              "1 [a][b] {a\xC2\xA6"
              "b}");
    EXPECT_EQ(parsed("\xC3\xA8\xC3\xA9x", U'\u00E9'), "1 [\xC3\xA8][x] {\xC3\xA8\xC3\xA9x}")
        << "a scalar sharing the delimiter's lead byte must not split";
    EXPECT_EQ(parsed("\"a|b\"|c", U'|'), "1 [a|b][c] {\"a|b\"|c}");
}

TEST(CSVReaderParse, LinesKeepCountingThroughALargeFile) {
    std::string text;
    for (int i = 0; i < 10'000; ++i)
        text += i % 100 == 0 ? "\"multi\nline\",x\r\n" : "2024-01-02, Coffee ,-3.50\n";
    const auto records = CSVReader::parse(text, U',');
    ASSERT_EQ(records.size(), 10'000u);
    EXPECT_EQ(records.back().line, 10'000 + 100);
    EXPECT_EQ(records.back().fields, (std::vector<std::string>{"2024-01-02", "Coffee", "-3.50"}));
    EXPECT_EQ(records[100].line, 102);
    EXPECT_EQ(records[100].rawText, "\"multi line\",x");
}

TEST(CSVReaderRecord, BlankMeansOnlySpaceSeparatorsAndTabs) {
    struct Case {
        std::vector<std::string> fields;
        bool blank;
    };
    const std::vector<Case> cases = {
        {{""}, true},       {{"", ""}, true}, {{" \t", "\xC2\xA0"}, true}, {{"\xE3\x80\x80"}, true},
        {{"", "x"}, false}, {{"\n"}, false},  {{"\xE2\x80\x8B"}, false},   {{"\xC3"}, false},
    };
    for (const auto& c : cases) {
        const CSVRecord record{.fields = c.fields};
        EXPECT_EQ(record.isBlank(), c.blank) << ::testing::PrintToString(c.fields);
    }
    EXPECT_TRUE(CSVReader::parse("\" \",\t", U',').front().isBlank())
        << "a quoted blank keeps its space but is still blank";
}

std::vector<CSVRecord> streamed(std::string_view text, bool reuseOneRecord) {
    CSVRecordStream stream(text, U',');
    std::vector<CSVRecord> records;
    CSVRecord reused;
    for (;;) {
        CSVRecord fresh;
        CSVRecord& record = reuseOneRecord ? reused : fresh;
        if (!stream.next(record))
            return records;
        records.push_back(record);
    }
}

TEST(CSVRecordStream, AReusedRecordCarriesNothingOver) {
    // Long, quoted and multi-line records ahead of short and blank ones: a
    // record that keeps its buffers must not keep fields, quotedness or raw
    // text from the one before.
    const std::string text = "\"a\nb\",\" c \",d,e,f\r\nx\n\n  y  ,\"\"\r\"p\"q\",r\nlast,\"open";
    const auto reused = streamed(text, true);
    EXPECT_EQ(describe(reused),
              "1 [a\\nb][ c ][d][e][f] {\"a b\",\" c \",d,e,f}\n"
              "3 [x] {x}\n"
              "4 [] {}\n"
              "5 [y][] {  y  ,\"\"}\n"
              "6 [pq\"][r] {\"p\"q\",r}\n"
              "7 [last][open] {last,\"open}");
    EXPECT_EQ(reused, streamed(text, false));
    EXPECT_EQ(reused, CSVReader::parse(text, U','));
}

TEST(CSVRecordStream, ACopyResumesFromTheSameRecordAndTheEndStays) {
    const std::string text = "h\n\"a\r\nb\",1\nc,2";
    CSVRecordStream stream(text, U',');
    CSVRecord record;
    ASSERT_TRUE(stream.next(record));
    CSVRecordStream copy = stream;
    for (auto* reader : {&stream, &copy}) {
        std::vector<CSVRecord> rest;
        while (reader->next(record))
            rest.push_back(record);
        EXPECT_EQ(describe(rest), "2 [a\\nb][1] {\"a b\",1}\n4 [c][2] {c,2}");
        EXPECT_FALSE(reader->next(record)) << "a used-up stream stays used up";
    }
}

TEST(CSVReaderMaxRecords, CountsEveryLineEndingOnceAndIsNeverShort) {
    struct Case {
        std::string text;
        std::size_t bound;
    };
    const std::vector<Case> cases = {
        {"", 1},          {"a", 1},
        {"a\n", 2},       {"a\r\nb", 2},
        {"a\r\n\r\n", 3}, {"a\rb\rc", 3},
        {"a\r\rb", 3},    {"a\nb\rc\r\nd", 4},
        {"\r", 2},        {"\"x\ny\",z\nw", 3},  // two records, but the bound can't know quotes
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CSVReader::maxRecords(c.text), c.bound) << ::testing::PrintToString(c.text);
        EXPECT_GE(CSVReader::maxRecords(c.text), CSVReader::parse(c.text, U',').size());
    }
}

TEST(CSVReaderDecode, UTF8IsBorrowedAndConvertedTextOwned) {
    const std::string plain = "Date,Amount\n";
    const std::string marked = "\xEF\xBB\xBF" + plain;
    const auto borrowed = std::get<DecodedText>(CSVReader::decodeBorrowing(plain));
    EXPECT_EQ(borrowed.view().data(), plain.data());
    const auto unmarked = std::get<DecodedText>(CSVReader::decodeBorrowing(marked));
    EXPECT_EQ(unmarked.view().data(), marked.data() + 3);
    EXPECT_EQ(unmarked.view(), plain);

    // Short converted text lives inside the string itself; moving the value
    // must not leave the view behind.
    const std::string latin = "\xE9";
    auto converted = std::get<DecodedText>(CSVReader::decodeBorrowing(latin));
    const DecodedText moved = std::move(converted);
    EXPECT_EQ(moved.view(), "\xC3\xA9");
    const DecodedText copied = moved;
    EXPECT_EQ(copied.view(), "\xC3\xA9");
    EXPECT_NE(copied.view().data(), moved.view().data());
}

TEST(CSVReader, DecodedBomFileParsesToTheBareFirstHeader) {
    const auto text = std::get<std::string>(CSVReader::decode("\xEF\xBB\xBF\"Date\";Amount\r\n"));
    const auto records = CSVReader::parse(text, CSVReader::detectDelimiter(text));
    EXPECT_EQ(describe(records), "1 [Date][Amount] {\"Date\";Amount}");
}

}  // namespace
}  // namespace copperwick
