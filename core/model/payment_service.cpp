#include "core/model/payment_service.h"

namespace copperwick {

std::string_view name(PaymentService service) {
    switch (service) {
        case PaymentService::zelle:
            return "Zelle";
        case PaymentService::venmo:
            return "Venmo";
        case PaymentService::cashApp:
            return "Cash App";
        case PaymentService::paypal:
            return "PayPal";
        case PaymentService::appleCash:
            return "Apple Cash";
    }
    return {};
}

std::string_view asset(PaymentService service) {
    switch (service) {
        case PaymentService::zelle:
            return "zelle";
        case PaymentService::venmo:
            return "venmo";
        case PaymentService::cashApp:
            return "cashapp";
        case PaymentService::paypal:
            return "paypal";
        case PaymentService::appleCash:
            return "consumer-apple-cash";
    }
    return {};
}

}  // namespace copperwick
