#pragma once

// What a person would read when an entry is refused: the EntryError's words,
// or "accepted" when nothing was refused. Tables of typed text compare one
// string per case this way.

#include <string>
#include <utility>

#include "core/operations/entry_error.h"

namespace copperwick::testing {

template <typename Entry>
std::string refusal(Entry&& entry) {
    try {
        (void)std::forward<Entry>(entry)();
    } catch (const EntryError& error) {
        return error.what();
    }
    return "accepted";
}

}  // namespace copperwick::testing
