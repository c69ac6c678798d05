#pragma once

// How an instant reads on screen: "Mar 9, 2026 at 2:15 PM", in this
// computer's time zone.

#include <string>

#include "core/model/instant.h"

namespace copperwick {

[[nodiscard]] std::string abbreviatedDateTime(Instant instant);

}  // namespace copperwick
