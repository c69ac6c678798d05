#pragma once

// A monthly budget for one category.

#include <cstdint>

#include "core/model/uuid.h"

namespace copperwick {

struct Budget {
    Uuid id;
    Uuid categoryID;
    int64_t monthlyAmount = 0;  // cents

    friend bool operator==(const Budget&, const Budget&) = default;
};

}  // namespace copperwick
