#pragma once

// Which person-to-person service carried a payment, read from its bank text.
// A line such as "ZELLE TO JANE DOE" says neither whom it was for nor what it
// bought, so these lines get an account of their own and ask the person what
// the money was for. Pure functions with shared, read-only patterns; safe on
// any thread.

#include <optional>
#include <string_view>

#include "core/model/payment_service.h"

namespace copperwick {

// The service the bank text names: the payment-service reading of the text
// first, then the services' own words. Zelle may stand anywhere in the text;
// the others only at its start ("MY VENMO" names none).
[[nodiscard]] std::optional<PaymentService> detectPaymentService(std::string_view text);

// Whether the person has to say what the money was for before it is filed.
// PayPal usually has a business behind it and goes through ordinary filing.
[[nodiscard]] bool requiresPurpose(std::string_view text);

// True only when no service can be read from the text. Cheap, so that a
// build over a whole ledger skips most lines without parsing them; it may
// say false for a line that names no service after all.
[[nodiscard]] bool surelyNamesNoService(std::string_view text);

}  // namespace copperwick
