#include "core/model/data_note.h"

namespace copperwick {

std::optional<Uuid> DataNote::accountID() const {
    if (!acknowledgement)
        return std::nullopt;
    return std::visit(
        [](const auto& answer) -> std::optional<Uuid> {
            if constexpr (requires { answer.accountID; })
                return answer.accountID;
            else
                return std::nullopt;
        },
        *acknowledgement);
}

}  // namespace copperwick
