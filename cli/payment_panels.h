#pragma once

// The payment-service panel and the household's own money moves, as the
// Reports overview shows them; shared by `report` and `payments`.

#include <iosfwd>

#include "core/model/ledger.h"
#include "core/reports/report_bundle.h"

namespace copperwick::cli {

// The "Payment services" panel; nothing when the settings track no service.
void printPaymentServices(std::ostream& out, const Ledger& ledger, const ReportBundle& bundle);

// "Money moved within the household", for a scope short of the whole
// household that has such moves.
void printHouseholdMoney(std::ostream& out, const ReportBundle& bundle);

// Zelle payments by person, with how each was counted.
void printZelle(std::ostream& out, const ReportBundle& bundle);

}  // namespace copperwick::cli
