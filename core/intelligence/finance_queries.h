#pragma once

// The six lookups the local model may call when it answers a question, and
// the sentence that tells it what the ledger holds. Each answers in plain
// text, success and failure alike: a failure is a sentence beginning
// "Error: " that tells the model what to ask instead, because a lookup that
// threw would end the conversation. Every figure in an answer comes from
// ReportEngine::build or Insights::recurring, written with Money::format, so
// the grounding check can later find the model's numbers in these texts.
//
// Pure functions of a ledger nobody writes meanwhile; safe on any thread.
// Dates and names arrive as the model wrote them. Checks run in a fixed
// order: dates, then the person, then the lookup's own argument.

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "core/model/date_span.h"
#include "core/model/ledger.h"
#include "core/model/local_date.h"
#include "core/reports/report.h"

namespace copperwick::FinanceQueries {

// The longest period a lookup accepts, in days, both ends counted.
inline constexpr int64_t kMaximumDays = 1830;

// What every lookup that takes dates answers when they don't make a period.
inline constexpr std::string_view kDateError =
    "Error: dates must look like 2026-09-01 (or 2026-09 for a whole month), the start must "
    "not be after the end, and a period can be at most five years.";

// Income, spending after refunds, savings and the top categories.
[[nodiscard]] std::string summary(const Ledger& ledger, std::string_view start,
                                  std::string_view end, const std::optional<std::string>& person,
                                  LocalDate today);

// One category: spending with its top merchants, or income received.
[[nodiscard]] std::string category(const Ledger& ledger, std::string_view name,
                                   std::string_view start, std::string_view end,
                                   const std::optional<std::string>& person, LocalDate today);

// Spending at every merchant whose name holds `name`, in any category.
[[nodiscard]] std::string merchant(const Ledger& ledger, std::string_view name,
                                   std::string_view start, std::string_view end,
                                   const std::optional<std::string>& person, LocalDate today);

// Spending, income and the categories that moved most between two periods.
[[nodiscard]] std::string compare(const Ledger& ledger, std::string_view firstStart,
                                  std::string_view firstEnd, std::string_view secondStart,
                                  std::string_view secondEnd,
                                  const std::optional<std::string>& person, LocalDate today);

// The largest posted lines of a period, transfers and unfiled ones too,
// narrowed by text, category and a smallest amount in whole dollars. At
// most `limit` lines are listed, 1 to 25.
[[nodiscard]] std::string transactions(const Ledger& ledger, std::string_view start,
                                       std::string_view end, std::string_view text,
                                       std::string_view category,
                                       std::optional<int64_t> minimumDollars,
                                       const std::optional<std::string>& person, int64_t limit,
                                       LocalDate today);

// The recurring charges still running as of `today`.
[[nodiscard]] std::string recurring(const Ledger& ledger, const std::optional<std::string>& person,
                                    LocalDate today);

// One sentence for the model's instructions: today, how far the data
// reaches, the people and the categories.
[[nodiscard]] std::string context(const Ledger& ledger, LocalDate today);

// The people a name stands for: empty for the whole household (and for the
// words "shared" and "unassigned", which the report filter takes apart), one
// person by full or first name, or several named in full and separated by
// commas. Absent when any name is nobody's.
[[nodiscard]] std::optional<std::set<Uuid>> peopleFilter(const std::optional<std::string>& person,
                                                         const Ledger& ledger);

// The days from `start` to `end`, each a date or a whole month; absent when
// either can't be read, they run backwards, or they cover more than
// kMaximumDays.
[[nodiscard]] std::optional<DateSpan> period(std::string_view start, std::string_view end);

// "2026-09-01" is that day; "2026-09" is its first day, or with `end` its last.
[[nodiscard]] std::optional<LocalDate> parseDay(std::string_view text, bool end);

// The answer to a name nobody has, listing the people there are.
[[nodiscard]] std::string unknownPerson(const std::optional<std::string>& person,
                                        const Ledger& ledger);

// What the report leaves out because it waits for review; absent when nothing does.
[[nodiscard]] std::optional<std::string> reviewLine(const Report& report);

}  // namespace copperwick::FinanceQueries
