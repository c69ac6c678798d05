#pragma once

// The data roles the rows of the Rules & Merchants screen share, so that one
// delegate paints both lists of rules.

#include <Qt>

namespace copperwick::app {

// A row's line of detail under its name: a rule's description.
inline constexpr int kDescriptionRole = Qt::UserRole + 1;
// A record's id as text: a rule's, a built-in rule's, a merchant's.
inline constexpr int kRecordIDRole = Qt::UserRole + 2;

}  // namespace copperwick::app
