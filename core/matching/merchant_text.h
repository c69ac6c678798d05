#pragma once

// What one line of bank text means, as text: the views of a raw description
// on which all matching rests. `normalized` is what patterns and phrases run
// against; `key` is a merchant's identity across the system: learned, grouped
// and compared. Pure functions; the compiled patterns are built once and
// shared read-only, so everything here is safe on any thread.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class RegexPattern;
U_NAMESPACE_END

namespace copperwick {

// A value: copyable, equatable and hashable over all five fields.
struct MerchantText {
    // A service that carries a payment for somebody else. `regex` has one
    // capture group, the party behind the payment, and is shared read-only.
    struct PaymentService {
        std::string name;
        const icu::RegexPattern* regex = nullptr;
    };

    std::string normalized;  // upper-cased, white space collapsed; nothing removed
    std::string core;        // less the bank's wrappers; a facilitator prefix ("SQ *") stays
    std::optional<std::string> via;          // the payment service that carried it
    std::optional<std::string> counterpart;  // the party behind that service
    std::string key;  // empty only when the description holds no letter at all

    MerchantText() = default;
    explicit MerchantText(std::string_view raw);

    [[nodiscard]] std::string displayName() const { return titleCase(key); }

    // Upper-cased (Unicode, no locale), split on white space, line breaks and
    // no-break spaces, joined by single spaces.
    [[nodiscard]] static std::string normalize(std::string_view text);
    // Normalized text less the bank's leading and trailing wrappers ("POS
    // PURCHASE ", " CARD 1234"). Never empties a text that wasn't empty.
    [[nodiscard]] static std::string stripWrappers(std::string_view normalized);
    // The merchant key of a text without the bank's wrappers: reference
    // codes, store numbers, web suffixes and a trailing country or state cut
    // off; only "A"-"Z", "0"-"9" and "&" in words joined by single spaces.
    [[nodiscard]] static std::string makeKey(std::string_view text);
    // A word of bank text that changes from one purchase to the next: a store
    // number, card digits, a date, a web address.
    [[nodiscard]] static bool isReferenceToken(std::string_view word);
    // "BLUE BOTTLE" as "Blue Bottle"; short all-consonant words ("CVS") stay.
    [[nodiscard]] static std::string titleCase(std::string_view text);
    // Tried in this order; the first whose pattern matches decides `via`.
    [[nodiscard]] static const std::vector<PaymentService>& paymentServices();

    friend bool operator==(const MerchantText&, const MerchantText&) = default;
};

}  // namespace copperwick

template <>
struct std::hash<copperwick::MerchantText> {
    [[nodiscard]] std::size_t operator()(const copperwick::MerchantText& text) const noexcept;
};
