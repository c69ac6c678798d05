#include "core/model/import_profile.h"

namespace copperwick {

std::string_view label(SignConvention convention) {
    switch (convention) {
        case SignConvention::positiveIsMoneyIn:
            return "Purchases are negative";
        case SignConvention::positiveIsMoneyOut:
            return "Purchases are positive";
    }
    return {};
}

}  // namespace copperwick
