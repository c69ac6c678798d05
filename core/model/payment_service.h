#pragma once

// The person-to-person payment services whose activity reports track.

#include <string_view>

#include "core/model/enum_text.h"

namespace copperwick {

enum class PaymentService {
    zelle,
    venmo,
    cashApp,
    paypal,
    appleCash,
};

template <>
struct EnumTraits<PaymentService> {
    static constexpr std::array<std::pair<PaymentService, std::string_view>, 5> cases{{
        {PaymentService::zelle, "zelle"},
        {PaymentService::venmo, "venmo"},
        {PaymentService::cashApp, "cashApp"},
        {PaymentService::paypal, "paypal"},
        {PaymentService::appleCash, "appleCash"},
    }};
};

// The service's name as people write it: "Zelle", "Cash App".
[[nodiscard]] std::string_view name(PaymentService service);
// The service's mark in the merchant icon set.
[[nodiscard]] std::string_view asset(PaymentService service);

}  // namespace copperwick
