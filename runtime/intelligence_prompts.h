#pragma once

// The words Copperwick sends the local model with each question, and the
// words it tells the person about what the model did. Every prompt is built
// from the ledger by the program itself: bank text goes in as data, with long
// digit runs masked, in the user's message and never in the instructions.
// Pure functions of values, safe on any thread for a ledger nobody writes
// meanwhile.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/report_facts.h"
#include "core/reports/report_filter.h"
#include "core/review/review_queue.h"

namespace copperwick::IntelligencePrompts {

// The answer that stands in for anything Local AI does while switched off.
inline constexpr std::string_view kTurnedOff = "Local AI features are turned off in Settings.";
inline constexpr std::string_view kTookTooLong = "Local AI took too long. Try again.";
inline constexpr std::string_view kNotSure =
    "Local AI isn't sure about this one. Check a receipt or your bank's app.";
inline constexpr std::string_view kSummaryDidntMatch =
    "Local AI's summary didn't match the numbers, so it isn't shown. The key facts are below.";
inline constexpr std::string_view kBestMatch = "Local AI's best match.";
inline constexpr std::string_view kTidied = "Local AI tidied merchant names. Undo puts them back.";
inline constexpr std::string_view kAnswerTookTooLong =
    "Local AI took too long to answer. Try a simpler question.";
inline constexpr std::string_view kNotGrounded =
    "Some numbers here don't match Copperwick's calculations. Check the lookups below or the "
    "Reports screen.";

// The question about one review group: the transaction told as
// SuggestionCheck tells it, how often it was seen, Copperwick's own guess,
// how this person filed similar ones, and the categories allowed.
[[nodiscard]] std::string merchantPrompt(const LedgerTransaction& transaction,
                                         const ReviewGroup& group, const Ledger& ledger);

// "Local AI suggests Joe's Diner (Dining). Check before approving."
[[nodiscard]] std::string suggestionEvidence(const Suggestion& suggestion, const Ledger& ledger);

// What a run of look-at came to, or empty when it filed and suggested nothing.
[[nodiscard]] std::string lookStatus(std::size_t filed, std::size_t suggested);

// "Local AI is looking at 3 of 12…"
[[nodiscard]] std::string lookProgress(std::size_t number, std::size_t total);

// The question about one merchant's name.
[[nodiscard]] std::string tidyPrompt(const Merchant& merchant);

// What the model may say about a charge, and what its explanation is checked
// against: the transaction told as SuggestionCheck tells it, its date, how
// often the same bank text appears, and how it is filed.
[[nodiscard]] std::string explanationFacts(const LedgerTransaction& transaction,
                                           const Ledger& ledger);
[[nodiscard]] std::string explainPrompt(const std::string& facts);
// "Local AI couldn't explain this charge (…)."
[[nodiscard]] std::string explainFailure(std::string_view error);

// The key a report summary is kept under: every part of the filter, and the
// ledger's revision, so that a summary of older figures is never looked up.
[[nodiscard]] std::string narrativeKey(const ReportFilter& filter, int64_t revision);
[[nodiscard]] std::string narrativePrompt(const std::vector<ReportFact>& facts);
// "Local AI couldn't write a summary (…)."
[[nodiscard]] std::string narrativeFailure(std::string_view error);

// The instructions of a question: the fixed text and the ledger's context.
[[nodiscard]] std::string askInstructions(const Ledger& ledger, LocalDate today);
// "Local AI couldn't answer that (…)."
[[nodiscard]] std::string askFailure(std::string_view error);
// "How Copperwick worked this out (2 lookups)"
[[nodiscard]] std::string lookupsHeading(std::size_t count);

// Layout proposal, in the person's words.
inline constexpr std::string_view kFileTooShort =
    "The file is too short for Local AI to work out its columns.";
inline constexpr std::string_view kLayoutTookTooLong = "Local AI took too long to read this file.";
inline constexpr std::string_view kLayoutDidntFit =
    "Local AI's reading of the columns didn't fit this file.";
// "Local AI couldn't read this file (…)."
[[nodiscard]] std::string layoutFailure(std::string_view error);

}  // namespace copperwick::IntelligencePrompts
