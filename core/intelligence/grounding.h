#pragma once

// The rule that keeps the model's figures honest: a sentence of its making
// reaches a person only when every amount and percentage in it stands in
// text the program wrote itself (report facts, lookup answers, the facts of
// a charge). Minus signs aren't read, so a figure may be told as money in or
// out; rounding to whole dollars or whole percents is allowed, anything
// written to the cent or the tenth must be a copy. Bare numbers without "$"
// or "%" (dates, counts, years) are never figures here.
//
// Pure functions of their arguments, safe on any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/reports/report_facts.h"

namespace copperwick {

// A bullet of a summary that passed the check, with the facts it cites.
struct GroundedBullet {
    int id = 0;  // its place among the accepted bullets, from 0
    std::string text;
    std::vector<ReportFact> facts;

    friend bool operator==(const GroundedBullet&, const GroundedBullet&) = default;
};

namespace Grounding {

struct Number {
    enum class Kind {
        money,    // written with "$"; `value` in cents
        percent,  // written with "%"; `value` in tenths of a percent
    };

    Kind kind = Kind::money;
    int64_t value = 0;
    // Written with cents or with a decimal: then only an exact copy matches.
    bool precise = false;

    [[nodiscard]] static Number money(int64_t cents, bool hadCents) {
        return {.kind = Kind::money, .value = cents, .precise = hadCents};
    }
    [[nodiscard]] static Number percent(int64_t tenths, bool hadDecimal) {
        return {.kind = Kind::percent, .value = tenths, .precise = hadDecimal};
    }

    friend bool operator==(const Number&, const Number&) = default;
};

// A bullet as the model wrote it: its sentence and the ids of the facts it
// says it uses.
struct Bullet {
    std::string text;
    std::vector<std::string> factIDs;
};

// Every "$" amount and "%" figure, left to right. "$1,204.50" is 120450
// cents with cents, "$5" 500 without, "$5.129" 512 (further digits are
// dropped, not rounded); "12.5%" is 125 tenths with a decimal; "1,234%" and
// "50 %" are nothing.
[[nodiscard]] std::vector<Number> numbers(std::string_view text);

// Whether each figure of `text` matches one of the sources' figures of the
// same kind: exactly when written precisely, else within 50 cents or half a
// percent. A text without figures is grounded, with no sources too.
[[nodiscard]] bool isGrounded(std::string_view text, const std::vector<std::string>& sources);

// The bullets worth showing, in order: trimmed, at most 400 characters,
// citing at least one fact that exists (ids in any case), and grounded in
// exactly the facts they cite. The rest are dropped without a word.
[[nodiscard]] std::vector<GroundedBullet> checkBullets(const std::vector<Bullet>& bullets,
                                                       const std::vector<ReportFact>& facts);

}  // namespace Grounding

}  // namespace copperwick
