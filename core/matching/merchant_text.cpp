#include "core/matching/merchant_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "core/model/text.h"

namespace copperwick {

namespace {

// The patterns run on UTF-16: a description is converted once and stays in
// that form until its key is built. Every pattern runs with no options, since
// the text is already upper case.

// A wrapper pattern and a piece of text that every one of its matches holds.
// Most descriptions don't hold it, and looking for it costs far less than
// trying the pattern at every blank.
struct WrapperSource {
    const char16_t* pattern;
    std::u16string_view mustHold;
};

constexpr std::array<WrapperSource, 2> kLeadingWrappers = {{
    {uR"re(^(PURCHASE|PURCHASE INTL|RECURRING PAYMENT|PURCHASE RETURN|RETURN OF PURCHASE|REFUND|MONEY TRANSFER) AUTHORIZED ON \d{1,2}/\d{1,2} )re",
     u" AUTHORIZED ON "},
    {uR"re(^(POS PURCHASE|POS DEBIT|POS|DEBIT CARD PURCHASE|DEBIT CARD|DEBIT PURCHASE|DBT CRD \d{4}|CHECKCARD( \d{4})?|CHECK CARD( \d{4})?|VISA DDA PUR|ACH DEBIT|ACH CREDIT|APLPAY|APL\*PAY|APPLE PAY)( -)? )re",
     u" "},
}};

constexpr std::array<WrapperSource, 4> kTrailingWrappers = {{
    {uR"re( [SP]\d{9,} CARD \d{4}$)re", u" CARD "},
    {uR"re( CARD \d{4}$)re", u" CARD "},
    {uR"re( ON \d{1,2}/\d{1,2}\b.*$)re", u" ON "},
    {uR"re( (WEB|PPD|CCD|TEL|IAT) ID: ?\S*$)re", u" ID:"},
}};

constexpr const char16_t* kFacilitator =
    uR"re(^(SQ|TST|SPO|PY|PAR|FSP|BT|CKO|SMP|LS|POY|CLR|SAQ|TOAST|SUMUP|ZTL|HLU|EB) ?\* ?)re";
constexpr const char16_t* kShopify = uR"re(^SP (?=[A-Z0-9]))re";
constexpr const char16_t* kReferenceCode = uR"re(\*[A-Z0-9]*[0-9][A-Z0-9]*.*$)re";
constexpr const char16_t* kDomainSuffix = uR"re(\.(COM|NET|ORG|CO|IO|US)\b)re";
constexpr const char16_t* kWebAddress = uR"re(/|\.[A-Z]{2,})re";

struct ServiceSource {
    const char* name;
    const char16_t* pattern;
};

constexpr std::array<ServiceSource, 6> kPaymentServices = {{
    {"PayPal", uR"re(^(?:PAYPAL ?\*|PP ?\*|PAYPAL INST XFER |PAYPAL TRANSFER )(.+)$)re"},
    {"Venmo", uR"re(^(?:VENMO ?\*|VENMO PAYMENT |VENMO CASHOUT )(.+)$)re"},
    {"Cash App", uR"re(^(?:SQC ?\*|CASH APP ?\*)(.+)$)re"},
    {"Zelle", uR"re(^ZELLE (?:PAYMENT |TRANSFER )?(?:TO|FROM) (.+)$)re"},
    {"Google", uR"re(^GOOGLE ?\*(.+)$)re"},
    {"Apple Cash", uR"re(^APPLE CASH (?:SENT|RECEIVED|TRANSFER) (?:TO |FROM )?(.+)$)re"},
}};

constexpr std::array<std::string_view, 52> kStateCodes = {
    "AL", "AK", "AZ", "AR", "CA", "CO", "CT", "DE", "FL", "GA", "HI", "ID", "IL",
    "IN", "IA", "KS", "KY", "LA", "ME", "MD", "MA", "MI", "MN", "MS", "MO", "MT",
    "NE", "NV", "NH", "NJ", "NM", "NY", "NC", "ND", "OH", "OK", "OR", "PA", "RI",
    "SC", "SD", "TN", "TX", "UT", "VT", "VA", "WA", "WV", "WI", "WY", "DC", "PR",
};

// A stack of more wrappers than this is more likely part of the name.
constexpr int kMaxWrapperPasses = 3;

using Pattern = std::unique_ptr<icu::RegexPattern>;

// A pattern that doesn't compile is a fault in this file, found by any test.
Pattern compile(const char16_t* source) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    Pattern pattern(icu::RegexPattern::compile(icu::UnicodeString(source), 0, where, status));
    if (U_FAILURE(status) || !pattern) {
        std::string text;
        icu::UnicodeString(source).toUTF8String(text);
        std::fprintf(stderr, "copperwick: pattern %s doesn't compile at offset %d: %s\n",
                     text.c_str(), where.offset, u_errorName(status));
        std::abort();
    }
    return pattern;
}

struct Patterns {
    std::array<Pattern, kLeadingWrappers.size()> leading;
    std::array<Pattern, kTrailingWrappers.size()> trailing;
    Pattern facilitator = compile(kFacilitator);
    Pattern shopify = compile(kShopify);
    Pattern referenceCode = compile(kReferenceCode);
    Pattern domainSuffix = compile(kDomainSuffix);
    Pattern webAddress = compile(kWebAddress);
    std::array<Pattern, kPaymentServices.size()> serviceOwners;
    std::vector<MerchantText::PaymentService> services;

    Patterns() {
        for (std::size_t i = 0; i < leading.size(); ++i)
            leading[i] = compile(kLeadingWrappers[i].pattern);
        for (std::size_t i = 0; i < trailing.size(); ++i)
            trailing[i] = compile(kTrailingWrappers[i].pattern);
        for (std::size_t i = 0; i < serviceOwners.size(); ++i) {
            serviceOwners[i] = compile(kPaymentServices[i].pattern);
            services.push_back({kPaymentServices[i].name, serviceOwners[i].get()});
        }
    }
};

// Never destroyed: a worker thread may still be matching while the process exits.
const Patterns& patterns() {
    static const Patterns& instance = *new Patterns;
    return instance;
}

using Matcher = std::unique_ptr<icu::RegexMatcher>;

Matcher matcherFor(const icu::RegexPattern& pattern) {
    UErrorCode status = U_ZERO_ERROR;
    Matcher matcher(pattern.matcher(status));
    if (U_FAILURE(status) || !matcher) {
        std::fprintf(stderr, "copperwick: no regular expression matcher: %s\n",
                     u_errorName(status));
        std::abort();
    }
    return matcher;
}

// A matcher carries the state of one match, so each thread keeps its own set
// over the shared patterns instead of building one per description.
struct Matchers {
    std::array<Matcher, kLeadingWrappers.size()> leading;
    std::array<Matcher, kTrailingWrappers.size()> trailing;
    Matcher facilitator;
    Matcher shopify;
    Matcher referenceCode;
    Matcher domainSuffix;
    Matcher webAddress;
    std::array<Matcher, kPaymentServices.size()> services;

    explicit Matchers(const Patterns& p)
        : facilitator(matcherFor(*p.facilitator)),
          shopify(matcherFor(*p.shopify)),
          referenceCode(matcherFor(*p.referenceCode)),
          domainSuffix(matcherFor(*p.domainSuffix)),
          webAddress(matcherFor(*p.webAddress)) {
        for (std::size_t i = 0; i < leading.size(); ++i)
            leading[i] = matcherFor(*p.leading[i]);
        for (std::size_t i = 0; i < trailing.size(); ++i)
            trailing[i] = matcherFor(*p.trailing[i]);
        for (std::size_t i = 0; i < services.size(); ++i)
            services[i] = matcherFor(*p.services[i].regex);
    }
};

Matchers& matchers() {
    thread_local Matchers instance(patterns());
    return instance;
}

// `text` less every match, in `out`. False, with `out` untouched, when there
// was no match: the common case costs no copy.
bool removeMatches(icu::RegexMatcher& matcher, const icu::UnicodeString& text,
                   icu::UnicodeString& out) {
    matcher.reset(text);
    if (!matcher.find())
        return false;
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString rest;
    int32_t kept = 0;
    do {
        const int32_t start = matcher.start(status);
        rest.append(text, kept, start - kept);
        kept = matcher.end(status);
    } while (matcher.find());
    rest.append(text, kept, text.length() - kept);
    out = std::move(rest);
    return true;
}

bool isSpaceOrTab(char16_t c) {
    return c == u' ' || c == u'\t';
}

icu::UnicodeString trimmedSpaces(const icu::UnicodeString& text) {
    int32_t start = 0;
    int32_t end = text.length();
    while (start < end && isSpaceOrTab(text.charAt(start)))
        ++start;
    while (end > start && isSpaceOrTab(text.charAt(end - 1)))
        --end;
    if (start == 0 && end == text.length())
        return text;
    return icu::UnicodeString(text, start, end - start);
}

// `text` less every match of one wrapper, taken only when something is left.
bool removeWrapper(icu::RegexMatcher& matcher, std::u16string_view mustHold,
                   icu::UnicodeString& text) {
    if (text.indexOf(mustHold.data(), static_cast<int32_t>(mustHold.size()), 0) < 0)
        return false;
    icu::UnicodeString stripped;
    if (!removeMatches(matcher, text, stripped) || stripped.isEmpty())
        return false;
    text = std::move(stripped);
    return true;
}

icu::UnicodeString stripWrappers16(icu::UnicodeString text) {
    auto& m = matchers();
    for (int pass = 0; pass < kMaxWrapperPasses; ++pass) {
        bool changed = false;
        for (std::size_t i = 0; i < m.leading.size(); ++i)
            changed |= removeWrapper(*m.leading[i], kLeadingWrappers[i].mustHold, text);
        if (!changed)
            break;
    }
    for (std::size_t i = 0; i < m.trailing.size(); ++i)
        removeWrapper(*m.trailing[i], kTrailingWrappers[i].mustHold, text);
    return trimmedSpaces(text);
}

// "SQ *BLUE BOTTLE" as "BLUE BOTTLE": the point-of-sale provider is not the
// merchant. Left alone when nothing would remain.
icu::UnicodeString stripFacilitator(const icu::UnicodeString& input) {
    auto& m = matchers();
    icu::UnicodeString text = input;
    icu::UnicodeString stripped;
    // Both patterns are anchored and hold a fixed piece of text; checking for
    // it first spares most descriptions two pattern runs.
    if (text.indexOf(u'*') >= 0 && removeMatches(*m.facilitator, text, stripped))
        text = std::move(stripped);
    if (text.startsWith(u"SP ", 3) && removeMatches(*m.shopify, text, stripped))
        text = std::move(stripped);
    text = trimmedSpaces(text);
    return text.isEmpty() ? input : text;
}

bool isDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

bool isCapital(char16_t c) {
    return c >= u'A' && c <= u'Z';
}

// Store numbers, card digits, dates, web addresses: what follows the name in
// bank text and changes from one purchase to the next.
bool isReferenceToken(const icu::UnicodeString& token) {
    if (token.charAt(0) == u'#')
        return true;
    int digits = 0;
    int letters = 0;
    int length = 0;
    bool mayBeAddress = false;
    for (int32_t i = 0; i < token.length(); ++i) {
        const char16_t c = token.charAt(i);
        digits += isDigit(c);
        letters += isCapital(c);
        length += !U16_IS_TRAIL(c);
        mayBeAddress = mayBeAddress || c == u'/' || c == u'.';
    }
    if (digits >= 4 || (digits == 3 && letters == 0))
        return true;
    if (digits >= 2 && letters >= 1 && length > 5)
        return true;
    if (digits >= 1 && length > 9)
        return true;
    if (!mayBeAddress)
        return false;
    auto& webAddress = *matchers().webAddress;
    webAddress.reset(token);
    return webAddress.find();
}

// The key's words as they are found, remembering where the last two begin so
// that a trailing country or state can be dropped without a list of words.
class KeyWords {
  public:
    void add(char16_t c) {
        if (!m_inWord) {
            if (!m_text.empty())
                m_text.push_back(' ');
            m_previousStart = m_lastStart;
            m_lastStart = m_text.size();
            ++m_count;
            m_inWord = true;
        }
        m_text.push_back(static_cast<char>(c));
    }

    void breakWord() { m_inWord = false; }

    std::string finish() && {
        if (m_count >= 3 && (lastWord() == "USA" || lastWord() == "US"))
            dropLastWord();
        if (m_count >= 3 &&
            std::find(kStateCodes.begin(), kStateCodes.end(), lastWord()) != kStateCodes.end())
            dropLastWord();
        return std::move(m_text);
    }

  private:
    std::string_view lastWord() const { return std::string_view(m_text).substr(m_lastStart); }

    // Only ever called twice, and the second time the word before is the last.
    void dropLastWord() {
        m_text.resize(m_lastStart - 1);
        m_lastStart = m_previousStart;
        --m_count;
    }

    std::string m_text;
    std::size_t m_lastStart = 0;
    std::size_t m_previousStart = 0;
    int m_count = 0;
    bool m_inWord = false;
};

void addKeyWords(const icu::UnicodeString& token, KeyWords& words) {
    const icu::UnicodeString* source = &token;
    icu::UnicodeString withoutDomain;
    if (token.indexOf(u'.') >= 0 && removeMatches(*matchers().domainSuffix, token, withoutDomain))
        source = &withoutDomain;
    for (int32_t i = 0; i < source->length(); ++i) {
        const char16_t c = source->charAt(i);
        if (isCapital(c) || isDigit(c) || c == u'&')
            words.add(c);
        else if (c != u'\'' && c != u'\u2019')  // "JOE'S" is "JOES", not "JOE S"
            words.breakWord();
    }
    words.breakWord();
}

std::string makeKey16(const icu::UnicodeString& text) {
    const icu::UnicodeString* source = &text;
    icu::UnicodeString withoutCode;
    if (removeMatches(*matchers().referenceCode, text, withoutCode))
        source = &withoutCode;

    KeyWords words;
    const char16_t* units = source->getBuffer();
    const int32_t length = source->length();
    bool first = true;
    for (int32_t start = 0; start < length;) {
        if (units[start] == u' ') {
            ++start;
            continue;
        }
        int32_t end = start;
        while (end < length && units[end] != u' ')
            ++end;
        const icu::UnicodeString token(false, units + start, end - start);
        // The first word is the name itself even when it looks like a number:
        // "1800FLOWERS 0021".
        if (!first && isReferenceToken(token))
            break;
        addKeyWords(token, words);
        first = false;
        start = end;
    }
    return std::move(words).finish();
}

// A last resort for a description whose every word was cut as noise.
std::string lettersOnly(std::string_view text) {
    std::string out;
    bool inWord = false;
    for (const char c : text) {
        if (c >= 'A' && c <= 'Z') {
            if (!inWord && !out.empty())
                out.push_back(' ');
            out.push_back(c);
            inWord = true;
        } else {
            inWord = false;
        }
    }
    return out;
}

bool separatesWords(UChar32 c) {
    if (c < 0x80)
        return c == ' ' || (c >= 0x09 && c <= 0x0D);
    if (c == 0xA0 || c == 0x09 || c == 0x0A || c == 0x0B || c == 0x0C || c == 0x0D || c == 0x85)
        return true;
    const auto type = u_charType(c);
    return type == U_SPACE_SEPARATOR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR;
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Short all-capital words without a vowel are initials: "CVS", "KFC", "BBQ".
bool isInitialism(std::string_view word) {
    if (word.size() > 3)
        return false;
    return std::all_of(word.begin(), word.end(), [](char c) {
        return c >= 'A' && c <= 'Z' && std::string_view("AEIOUY").find(c) == std::string_view::npos;
    });
}

void appendTitleCased(std::string_view word, std::string& out) {
    if (isInitialism(word)) {
        out.append(word);
        return;
    }
    if (isAscii(word)) {
        out.push_back(word[0] >= 'a' && word[0] <= 'z' ? static_cast<char>(word[0] - 'a' + 'A')
                                                       : word[0]);
        for (const char c : word.substr(1))
            out.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
        return;
    }
    int32_t firstLength = 0;
    U8_FWD_1(reinterpret_cast<const uint8_t*>(word.data()), firstLength,
             static_cast<int32_t>(word.size()));
    const auto split = static_cast<std::size_t>(firstLength);
    out.append(text::uppercased(word.substr(0, split)));
    out.append(text::lowercased(word.substr(split)));
}

}  // namespace

MerchantText::MerchantText(std::string_view raw) : normalized(normalize(raw)) {
    const icu::UnicodeString whole = text::toUnicode(normalized);
    const icu::UnicodeString stripped = stripWrappers16(whole);
    // Stripping only ever removes, so an equal length means nothing went.
    core = stripped.length() == whole.length() ? normalized : text::toUTF8(stripped);

    icu::UnicodeString working = stripFacilitator(stripped);
    auto& services = matchers().services;
    for (std::size_t i = 0; i < services.size(); ++i) {
        auto& service = *services[i];
        service.reset(working);
        if (!service.find())
            continue;
        // The first service that matches decides, even when it names nobody.
        UErrorCode status = U_ZERO_ERROR;
        const icu::UnicodeString party = trimmedSpaces(service.group(1, status));
        if (U_SUCCESS(status) && !party.isEmpty()) {
            via = paymentServices()[i].name;
            counterpart = text::toUTF8(party);
            working = stripFacilitator(party);
        }
        break;
    }

    key = makeKey16(working);
    if (key.empty())
        key = lettersOnly(normalized);
}

std::string MerchantText::normalize(std::string_view text) {
    // Bank text is nearly always ASCII: one pass and one allocation then,
    // which matters to callers that read a whole ledger's descriptions.
    if (isAscii(text)) {
        std::string out;
        out.reserve(text.size());
        bool pendingSpace = false;
        for (const char c : text) {
            if (separatesWords(static_cast<unsigned char>(c))) {
                pendingSpace = !out.empty();
                continue;
            }
            if (pendingSpace)
                out.push_back(' ');
            pendingSpace = false;
            out.push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
        }
        return out;
    }
    const std::string upper = text::uppercased(text);
    const auto* bytes = reinterpret_cast<const uint8_t*>(upper.data());
    const auto length = static_cast<int32_t>(upper.size());
    std::string out;
    out.reserve(upper.size());
    bool pendingSpace = false;
    for (int32_t i = 0; i < length;) {
        const int32_t start = i;
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c >= 0 && separatesWords(c)) {
            pendingSpace = !out.empty();
            continue;
        }
        if (pendingSpace)
            out.push_back(' ');
        pendingSpace = false;
        out.append(upper, static_cast<std::size_t>(start), static_cast<std::size_t>(i - start));
    }
    return out;
}

std::string MerchantText::stripWrappers(std::string_view normalized) {
    return text::toUTF8(stripWrappers16(text::toUnicode(normalized)));
}

std::string MerchantText::makeKey(std::string_view text) {
    return makeKey16(text::toUnicode(text));
}

std::string MerchantText::titleCase(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const auto word : text::splitDroppingEmpty(text, " ")) {
        if (!out.empty())
            out.push_back(' ');
        appendTitleCased(word, out);
    }
    return out;
}

const std::vector<MerchantText::PaymentService>& MerchantText::paymentServices() {
    return patterns().services;
}

bool MerchantText::isReferenceToken(std::string_view word) {
    const auto token = icu::UnicodeString::fromUTF8(
        icu::StringPiece(word.data(), static_cast<int32_t>(word.size())));
    return !token.isEmpty() && copperwick::isReferenceToken(token);
}

}  // namespace copperwick

std::size_t std::hash<copperwick::MerchantText>::operator()(
    const copperwick::MerchantText& text) const noexcept {
    const std::hash<std::string_view> hashText;
    std::size_t seed = 0;
    const auto mix = [&seed](std::size_t value) {
        seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2);
    };
    mix(hashText(text.normalized));
    mix(hashText(text.core));
    mix(text.via ? hashText(*text.via) : 0x1);
    mix(text.counterpart ? hashText(*text.counterpart) : 0x2);
    mix(hashText(text.key));
    return seed;
}
