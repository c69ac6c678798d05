#pragma once

// The fictional household of the demo workspace: three people, six accounts
// and fourteen months of filed, paired, corrected and waiting lines, so that
// every screen, report, note and review group has something to show without
// a person's own files.
//
// A pure function of the date: everything is dated relative to `today`, and
// the same day always gives the same records (ids, which are random, aside).
// Safe on any thread; the result is an ordinary Ledger value.

#include "core/model/ledger.h"
#include "core/model/local_date.h"

namespace copperwick::DemoLedger {

// Fourteen months up to and including today's month, every row of the current
// month included, also those dated after `today`. No date lies past the end
// of today's month.
[[nodiscard]] Ledger make(LocalDate today);

}  // namespace copperwick::DemoLedger
