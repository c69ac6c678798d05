#include "core/intelligence/grounding.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

using Number = Grounding::Number;

// Figures as "$120450" / "$500~" (without cents) and "%123" / "%125~"
// (without a decimal), so one comparison shows the whole reading.
std::string read(std::string_view text) {
    std::string out;
    for (const auto& number : Grounding::numbers(text)) {
        if (!out.empty())
            out += " ";
        out += (number.kind == Number::Kind::money ? "$" : "%") + std::to_string(number.value) +
               (number.precise ? "" : "~");
    }
    return out;
}

TEST(Grounding, ReadsDollarsAndPercentsButNoBareNumbers) {
    EXPECT_EQ(read("You spent $1,204.50 (12.3%) on 3 May"), "$120450 %123");
    EXPECT_EQ(read("$5"), "$500~");
    EXPECT_EQ(read("$5."), "$500~") << "a point with no digit behind it";
    EXPECT_EQ(read("$5.1"), "$510");
    EXPECT_EQ(read("$5.129"), "$512") << "cut, not rounded";
    EXPECT_EQ(read("1,234%"), "");
    EXPECT_EQ(read("12.5%"), "%125");
    EXPECT_EQ(read("12.55%"), "%125");
    EXPECT_EQ(read("50 %"), "");
    EXPECT_EQ(read("50%"), "%500~");
    EXPECT_EQ(read("-$40.00 and \u2212$3"), "$4000 $300~") << "signs aren't read";
    EXPECT_EQ(read("$,5 $.50 $ 7"), "") << "no whole digits after the $";
    EXPECT_EQ(read("$1,234,567.89"), "$123456789");
    EXPECT_EQ(read("$1,2,3"), "$12300~");
    EXPECT_EQ(read("$12.34,56"), "$1234") << "a comma after the point ends the number";
    EXPECT_EQ(read("$12,"), "$1200~");
    EXPECT_EQ(read("in 2026, 14.5% of $3"), "%145 $300~");
    EXPECT_EQ(read("$5%"), "$500~") << "what the $ consumed isn't read again";
    EXPECT_EQ(read("v1.5.2%"), "") << "a digit behind a point starts nothing";
    EXPECT_EQ(read("Caf\u00e9 12% \u00e912%"), "%120~ %120~");
    EXPECT_EQ(read("$99999999999999999999999999 and 99999999999999999999999%"),
              "$999999999999999900~ %99999999999999990~")
        << "held far beyond any amount rather than overflowing";
}

TEST(Grounding, PreciseFiguresMustBeCopiesRoundedOnesMayRound) {
    const auto grounded = [](std::string_view claim, std::string source) {
        return Grounding::isGrounded(claim, {std::move(source)});
    };
    EXPECT_TRUE(grounded("about $100", "Spent $100.50."));
    EXPECT_FALSE(grounded("about $100", "Spent $100.51."));
    EXPECT_TRUE(grounded("about $101", "Spent $100.50."));
    EXPECT_FALSE(grounded("$100.00", "Spent $100.01."));
    EXPECT_TRUE(grounded("$1,235", "Spent $1,234.56."));
    EXPECT_TRUE(grounded("12%", "Up 12.5%."));
    EXPECT_FALSE(grounded("12%", "Up 12.6%."));
    EXPECT_FALSE(grounded("12.0%", "Up 12.1%."));
    EXPECT_TRUE(grounded("13%", "Up 12.5%."));
    EXPECT_FALSE(grounded("$12", "Up 12%.")) << "money never matches a percentage";
    EXPECT_FALSE(grounded("12%", "Spent $12."));
    EXPECT_TRUE(grounded("-$40.00", "Refund $40.00."));
    EXPECT_TRUE(grounded("$40.00", "A charge of \u2212$40.00."));
    EXPECT_TRUE(Grounding::isGrounded("Spending went down on 3 May.", {}));
    EXPECT_FALSE(Grounding::isGrounded("It was $3.", {}));
    EXPECT_TRUE(Grounding::isGrounded("$3 then $9.50", {"$9.50", "$3.20"}))
        << "figures may come from different sources";
    EXPECT_FALSE(Grounding::isGrounded("$3 then $9.51", {"$9.50", "$3.20"}))
        << "one unmatched figure is enough";
}

ReportFact fact(std::string id, std::string text) {
    return {.id = std::move(id), .text = std::move(text), .transactionIDs = {}};
}

TEST(Grounding, BulletsSurviveOnlyWithTheFactsTheyCite) {
    const std::vector<ReportFact> facts{fact("F1", "Spending in March 2026 was $1,500.00."),
                                        fact("F2", "Dining rose by $120.00, +40.0%.")};
    const std::string longest = "Spent about $1,500. " + std::string(380, 'x');
    ASSERT_EQ(longest.size(), 400u);
    const std::vector<Grounding::Bullet> bullets{
        {"  Spending was $1,500.00.\n", {"f1"}},
        {"Dining rose by $120.00.", {"F1"}},  // true, but not what F1 says
        {"Dining rose by 40%.", {" F99 ", "f2"}},
        {"Dining rose by 40%.", {"F99"}},
        {"Nothing cited.", {}},
        {" \n ", {"F1"}},
        {longest, {"F1"}},
        {longest + "x", {"F1"}},
        {"Both: $1,500 and $120.", {"F2", "F1"}},
    };
    const auto kept = Grounding::checkBullets(bullets, facts);
    std::vector<std::string> told;
    for (const auto& bullet : kept) {
        std::string line = std::to_string(bullet.id) + " " + bullet.text.substr(0, 30) + " <-";
        for (const auto& cited : bullet.facts)
            line += " " + cited.id;
        told.push_back(line);
    }
    EXPECT_EQ(told, (std::vector<std::string>{
                        "0 Spending was $1,500.00. <- F1",
                        "1 Dining rose by 40%. <- F2",
                        "2 Spent about $1,500. xxxxxxxxxx <- F1",
                        "3 Both: $1,500 and $120. <- F2 F1",
                    }));
}

TEST(Grounding, ASummaryWhoseBulletsAllFailKeepsNothing) {
    const std::vector<ReportFact> facts{fact("F1", "Income was $2,000.00.")};
    EXPECT_TRUE(Grounding::checkBullets(
                    {{"Income was $2,100.", {"F1"}}, {"Income was $2,000.01.", {"F1"}}}, facts)
                    .empty());
}

TEST(Grounding, ASummaryOfTheReportsOwnFacts) {
    const ReportFilter march(DateSpan(*LocalDate::make(2026, 3, 1), *LocalDate::make(2026, 3, 31)),
                             {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
    ReportComparison comparison{Report(march), Report(march.withSpan(march.span.previous())), {}};
    comparison.current.spending = 150000;
    comparison.previous.spending = 100000;
    comparison.current.income = 100000;
    const auto facts = ReportFacts::build(comparison, {}, {});
    const auto kept = Grounding::checkBullets(
        {{"Spending rose 50% to $1,500.00 in March.", {"F1"}},
         {"You saved nothing: savings were -$500.00, -50.0% of income.", {"F3"}},
         {"Spending rose 55% in March.", {"F1"}}},
        facts);
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[1].text, "You saved nothing: savings were -$500.00, -50.0% of income.")
        << "a figure the facts write with a minus sign is matched by its size";
    EXPECT_EQ(kept[1].facts, std::vector<ReportFact>{facts[2]});
}

}  // namespace
}  // namespace copperwick
