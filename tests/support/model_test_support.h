#pragma once

// What tests of Local AI share beside the fake server: time limits short
// enough for a test, a prompt's labelled line, an environment variable set
// for one test only, and a file no layout fits with the model's reading of it.

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json.hpp>

#include "runtime/on_device_model.h"

namespace copperwick::testing {

// Long enough for any answer of the fake server, short enough that a
// server which never answers fails the test in seconds.
inline ModelLimits quickLimits() {
    using namespace std::chrono_literals;
    ModelLimits limits;
    for (auto* limit : {&limits.guessMerchant, &limits.tidyName, &limits.proposeLayout,
                        &limits.explain, &limits.writeNarrative, &limits.answer})
        *limit = 5s;
    limits.availability = 2s;
    return limits;
}

// The line of a prompt that begins with `label`, without the label.
inline std::string lineOf(const std::string& prompt, const std::string& label) {
    const auto start = prompt.find(label);
    if (start == std::string::npos)
        return {};
    const auto end = prompt.find('\n', start);
    return prompt.substr(start + label.size(),
                         end == std::string::npos ? end : end - start - label.size());
}

// Sets an environment variable for one test and puts it back after.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const std::string& value) : m_name(name) {
        if (const char* old = std::getenv(name))
            m_old = old;
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() { m_old ? ::setenv(m_name, m_old->c_str(), 1) : ::unsetenv(m_name); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    const char* m_name;
    std::optional<std::string> m_old;
};

// Columns nobody recognises, nor Copperwick's own reading: "Sum" next to
// "Left" leaves it two amounts to choose from.
inline constexpr std::string_view kOddFile =
    "Booked;Text;Sum;Left\n"
    "2026-03-01;COFFEE SHOP;-4.50;100.00\n"
    "2026-03-02;GROCER;-30.10;69.90\n"
    "2026-03-03;PAYROLL;1000.00;1069.90\n"
    "2026-03-04;BOOKS;-12.00;1057.90\n"
    "2026-03-05;GAS;-40.00;1017.90\n"
    "2026-03-06;LUNCH;-9.99;1007.91\n";

// The model's reading of such a file, with its amounts in `amountColumn`.
inline boost::json::object layoutDraft(int amountColumn) {
    return {{"headerRow", 1},
            {"dateColumn", 1},
            {"descriptionColumn", 2},
            {"amountColumn", amountColumn},
            {"moneyOutColumn", 0},
            {"moneyInColumn", 0},
            {"postedDateColumn", 0},
            {"statusColumn", 0},
            {"purchasesArePositive", false},
            {"bankName", "Odd Bank"},
            {"accountType", "checking"}};
}

}  // namespace copperwick::testing
