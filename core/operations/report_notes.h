#pragma once

// The person's answers to report notes: stored on the account ("up to date
// through", "history starts on", "rarely used") or as a dismissed note key in
// the settings. Not undoable; showAllReportNotes takes every answer back.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/data_note.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// The one-click answers to a report's notes: the named note's, or with no
// name every note's that has one ("Mark All as Fine"). Absent when no note
// has the id. Throws EntryError (note) for a named note without an answer,
// which goes only when its cause does.
[[nodiscard]] std::optional<std::vector<DataNote::Acknowledgement>> noteAnswers(
    const std::vector<DataNote>& notes, const std::optional<std::string>& noteID);

// Stores each answer in order. An up-to-date date never moves back; an
// account that isn't found is passed over.
[[nodiscard]] LedgerDelta acknowledge(Ledger& ledger,
                                      const std::vector<DataNote::Acknowledgement>& answers);

// Clears every answer, so that the notes can come back.
[[nodiscard]] LedgerDelta showAllReportNotes(Ledger& ledger);

// Accounts with any answer stored, plus dismissed keys.
[[nodiscard]] int64_t acknowledgedNoteCount(const Ledger& ledger);

}  // namespace copperwick
