#include "core/reports/report.h"

#include "core/model/checked.h"

namespace copperwick {

int64_t MonthLine::net() const {
    return checked::sub(income, spending);
}

int64_t Report::savings() const {
    return checked::sub(income, spending);
}

int64_t Report::incomeWithoutGifts() const {
    return checked::sub(income, giftsReceived);
}

std::optional<int64_t> Report::savingsRateTenths() const {
    if (income < 1)
        return std::nullopt;
    return detail::roundedQuotient(checked::mul(savings(), 1000), income);
}

namespace detail {

int64_t roundedQuotient(int64_t numerator, int64_t denominator) {
    if (numerator >= 0)
        return checked::add(numerator, denominator / 2) / denominator;
    return -(checked::add(checked::neg(numerator), denominator / 2) / denominator);
}

}  // namespace detail

}  // namespace copperwick
