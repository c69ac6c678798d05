#include "core/model/rule.h"

#include "core/model/text.h"

namespace copperwick {

bool Rule::hasOutcome() const {
    return (merchantName && !text::trimmed(*merchantName).empty()) || kind || categoryID;
}

}  // namespace copperwick
