#include "core/reports/report_facts.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "core/model/checked.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/model/text.h"

namespace copperwick::ReportFacts {

namespace {

std::string dollars(int64_t cents) {
    return Money::format(cents, "USD");
}

// " (+12.5%)", " (no change)", or nothing when there was nothing before.
std::string changeNote(int64_t previous, int64_t current) {
    const std::optional<int64_t> tenths = Money::changeTenthsOfPercent(previous, current);
    if (!tenths)
        return {};
    if (*tenths == 0)
        return " (no change)";
    return " (" + Money::percentText(*tenths, true) + ")";
}

class Facts {
  public:
    void add(std::string text, std::vector<Uuid> ids = {}) {
        m_facts.push_back(
            {"F" + std::to_string(m_facts.size() + 1), std::move(text), std::move(ids)});
    }
    [[nodiscard]] std::vector<ReportFact> take() && { return std::move(m_facts); }

  private:
    std::vector<ReportFact> m_facts;
};

// A twelfth of a yearly charge and 52 twelfths of a weekly one, each charge
// truncated by itself.
int64_t monthlyTotal(const std::vector<RecurringCharge>& recurring) {
    int64_t total = 0;
    for (const RecurringCharge& charge : recurring) {
        if (!charge.isActive)
            continue;
        int64_t monthly = charge.typicalAmount;
        if (charge.cadence == Cadence::weekly)
            monthly = checked::mul(charge.typicalAmount, 52) / 12;
        else if (charge.cadence == Cadence::yearly)
            monthly = charge.typicalAmount / 12;
        total = checked::add(total, monthly);
    }
    return total;
}

std::vector<Uuid> idsOfCategory(const Report& report, const std::string& id) {
    for (const CategoryLine& line : report.categories) {
        if (line.id == id)
            return line.transactionIDs;
    }
    return {};
}

}  // namespace

std::vector<ReportFact> build(const ReportComparison& comparison,
                              const std::vector<RecurringCharge>& recurring,
                              const std::vector<UnusualCharge>& unusual) {
    const Report& current = comparison.current;
    const Report& previous = comparison.previous;
    const std::string spanLabel = current.filter.span.label();
    const std::string previousLabel = previous.filter.span.label();
    Facts facts;

    facts.add("Spending in " + spanLabel + " was " + dollars(current.spending) +
                  ", compared with " + dollars(previous.spending) + " in " + previousLabel +
                  changeNote(previous.spending, current.spending) + ".",
              current.includedIDs);
    facts.add("Income in " + spanLabel + " was " + dollars(current.income) + ", compared with " +
              dollars(previous.income) + " in " + previousLabel +
              changeNote(previous.income, current.income) + ".");
    if (const auto rate = current.savingsRateTenths())
        facts.add("Savings in " + spanLabel + " were " + dollars(current.savings()) + ", " +
                  Money::percentText(*rate) + " of income.");
    else
        facts.add("Savings in " + spanLabel + " were " + dollars(current.savings()) +
                  " (no income recorded, so no savings rate).");

    for (std::size_t i = 0; i < current.categories.size() && i < 5; ++i) {
        const CategoryLine& line = current.categories[i];
        facts.add("Spending on " + line.name + " in " + spanLabel + " was " + dollars(line.amount) +
                      " across " + std::to_string(line.count) + " transactions.",
                  line.transactionIDs);
    }

    const auto moves = [&](bool rose) {
        int told = 0;
        for (const CategoryChange& change : comparison.categoryChanges) {
            if (told == 3)
                break;
            const int64_t moved = change.change();
            if (rose ? moved < 1 : moved > -1)
                continue;
            std::string text = change.name + (rose ? " rose by " : " fell by ") +
                               dollars(rose ? moved : checked::neg(moved)) + " (from " +
                               dollars(change.previous) + " to " + dollars(change.current) + ")";
            if (const auto tenths = change.changeTenths())
                text += ", " + Money::percentText(*tenths, true);
            facts.add(text + ".", idsOfCategory(current, change.id));
            ++told;
        }
    };
    moves(true);
    moves(false);

    for (std::size_t i = 0; i < current.incomeSources.size() && i < 3; ++i) {
        const MerchantLine& source = current.incomeSources[i];
        facts.add(source.name + " received " + dollars(source.amount) + " over " +
                      std::to_string(source.count) + " transactions.",
                  source.transactionIDs);
    }

    int changed = 0;
    for (const RecurringCharge& charge : recurring) {
        if (changed == 3)
            break;
        if (!charge.isActive || !charge.priceChanged())
            continue;
        const std::size_t count = charge.transactionIDs.size();
        std::vector<Uuid> lastTwo(charge.transactionIDs.begin() + (count < 2 ? 0 : count - 2),
                                  charge.transactionIDs.end());
        facts.add("The " + text::lowercased(label(charge.cadence)) + " charge from " +
                      charge.merchantName + " changed from " + dollars(charge.previousAmount) +
                      " to " + dollars(charge.lastAmount) + ".",
                  std::move(lastTwo));
        ++changed;
    }
    const auto active = std::count_if(recurring.begin(), recurring.end(),
                                      [](const RecurringCharge& c) { return c.isActive; });
    if (active > 0)
        facts.add("There are " + std::to_string(active) + " active recurring charges, about " +
                  dollars(monthlyTotal(recurring)) + " a month in total.");

    for (std::size_t i = 0; i < unusual.size() && i < 3; ++i) {
        const UnusualCharge& charge = unusual[i];
        facts.add("On " + DateText::medium(charge.date) + ", " + charge.merchantName + " charged " +
                      dollars(charge.amount) + ". " + charge.reason,
                  {charge.transactionID});
    }

    if (current.unknownCount >= 1)
        facts.add(std::to_string(current.unknownCount) +
                      " transactions still need review and are not included in these totals.",
                  current.unknownIDs);
    return std::move(facts).take();
}

std::vector<std::string> texts(const std::vector<ReportFact>& facts) {
    std::vector<std::string> out;
    out.reserve(facts.size());
    for (const ReportFact& fact : facts)
        out.push_back(fact.text);
    return out;
}

}  // namespace copperwick::ReportFacts
