#pragma once

// Whether a saved change can have changed what a part of a screen shows: a change without a delta
// (the file read again) touches everything, otherwise only records of the kinds named, changed or
// deleted.

#include <initializer_list>

#include "core/model/ledger_delta.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

[[nodiscard]] inline bool touches(const SavedChange& change,
                                  std::initializer_list<RecordKind> kinds) {
    if (!change.delta)
        return true;
    for (const RecordKind kind : kinds) {
        if (change.delta->changes(kind))
            return true;
        const auto deleted = change.delta->deleted.find(kind);
        if (deleted != change.delta->deleted.end() && !deleted->second.empty())
            return true;
    }
    return false;
}

}  // namespace copperwick::app
