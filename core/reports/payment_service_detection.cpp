#include "core/reports/payment_service_detection.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <unicode/regex.h>

#include "core/matching/merchant_text.h"
#include "core/model/text.h"

namespace copperwick {

namespace {

struct ServicePattern {
    PaymentService service;
    const char16_t* source;
};

// Tried in this order on the normalized text; the first match anywhere decides.
constexpr std::array<ServicePattern, 5> kPatterns{{
    {PaymentService::zelle, uR"re(\bZELLE(?:PAY)?\b)re"},
    {PaymentService::venmo, uR"re(^VENMO\b)re"},
    {PaymentService::cashApp, uR"re(^(?:CASH APP\b|CASHAPP\b|SQC\s*\*))re"},
    {PaymentService::paypal, uR"re(^(?:PAYPAL\b|PP\s*\*))re"},
    {PaymentService::appleCash, uR"re(^APPLE CASH\b)re"},
}};

// Never destroyed: a report may still be built on a worker while the process exits.
const std::array<std::unique_ptr<icu::RegexPattern>, kPatterns.size()>& patterns() {
    static const auto& compiled = *[] {
        auto* all = new std::array<std::unique_ptr<icu::RegexPattern>, kPatterns.size()>;
        for (std::size_t i = 0; i < kPatterns.size(); ++i) {
            UErrorCode status = U_ZERO_ERROR;
            UParseError where{};
            (*all)[i].reset(icu::RegexPattern::compile(icu::UnicodeString(kPatterns[i].source), 0,
                                                       where, status));
            if (U_FAILURE(status)) {
                std::fprintf(stderr, "copperwick: service pattern %zu doesn't compile: %s\n", i,
                             u_errorName(status));
                std::abort();
            }
        }
        return all;
    }();
    return compiled;
}

std::optional<PaymentService> serviceNamed(std::string_view via) {
    for (const auto& [service, raw] : EnumTraits<PaymentService>::cases) {
        if (name(service) == via)
            return service;
    }
    return std::nullopt;  // "Google" carries payments but isn't tracked
}

char asciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Whether `upperNeedle` stands at `at`, letters compared in upper case.
bool standsAt(std::string_view text, std::size_t at, std::string_view upperNeedle) {
    if (text.size() - at < upperNeedle.size())
        return false;
    for (std::size_t j = 0; j < upperNeedle.size(); ++j) {
        if (asciiUpper(text[at + j]) != upperNeedle[j])
            return false;
    }
    return true;
}

// Wider than white space: whatever normalizing may turn into a blank.
bool maySeparateWords(char c) {
    return static_cast<unsigned char>(c) <= ' ';
}

// "PP" then white space then "*", at `at`.
bool payPalStarAt(std::string_view text, std::size_t at) {
    if (!standsAt(text, at, "PP"))
        return false;
    std::size_t j = at + 2;
    while (j < text.size() && maySeparateWords(text[j]))
        ++j;
    return j < text.size() && text[j] == '*';
}

}  // namespace

bool surelyNamesNoService(std::string_view text) {
    // One pass over the text: every report reads every line's text here.
    // Every service reading needs one of these words, or PayPal's "PP *";
    // "CASH" covers Cash App and Apple Cash.
    for (std::size_t i = 0; i < text.size(); ++i) {
        // Upper-casing outside ASCII can make these letters ("ſ" becomes
        // "S"), so such text is always read in full.
        if (static_cast<unsigned char>(text[i]) >= 0x80)
            return false;
        bool names = false;
        switch (asciiUpper(text[i])) {
            case 'Z':
                names = standsAt(text, i, "ZELLE");
                break;
            case 'V':
                names = standsAt(text, i, "VENMO");
                break;
            case 'S':
                names = standsAt(text, i, "SQC");
                break;
            case 'C':
                names = standsAt(text, i, "CASH");
                break;
            case 'P':
                names = standsAt(text, i, "PAYPAL") || payPalStarAt(text, i);
                break;
            default:
                break;
        }
        if (names)
            return false;
    }
    return true;
}

std::optional<PaymentService> detectPaymentService(std::string_view text) {
    if (surelyNamesNoService(text))
        return std::nullopt;
    const MerchantText reading(text);
    if (reading.via) {
        if (const auto service = serviceNamed(*reading.via))
            return service;
    }
    const icu::UnicodeString normalized = text::toUnicode(reading.normalized);
    for (std::size_t i = 0; i < kPatterns.size(); ++i) {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(patterns()[i]->matcher(normalized, status));
        if (U_SUCCESS(status) && matcher->find())
            return kPatterns[i].service;
    }
    return std::nullopt;
}

bool requiresPurpose(std::string_view text) {
    const auto service = detectPaymentService(text);
    return service && *service != PaymentService::paypal;
}

}  // namespace copperwick
