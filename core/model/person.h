#pragma once

// A member of the household.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/uuid.h"

namespace copperwick {

struct Person {
    Uuid id;
    std::string name;
    std::vector<std::string> bankNames;  // the forms of the name that banks print
    std::optional<int64_t> monthlyAllowance;

    friend bool operator==(const Person&, const Person&) = default;
};

}  // namespace copperwick
