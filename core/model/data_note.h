#pragma once

// A short sentence that stands on a report and says what its totals leave
// out, with the one-click answer that makes it go away when there is one.
// Answers are stored on the account or in LedgerSettings::dismissedNotes
// (see operations/report_notes.h). A plain copyable value, kept with the
// records because the reports that write notes and the operations that store
// their answers both speak of it.

#include <optional>
#include <string>
#include <variant>

#include "core/model/enum_text.h"
#include "core/model/local_date.h"
#include "core/model/uuid.h"

namespace copperwick {

struct DataNote {
    enum class Severity {
        info,
        warning,
    };

    // The person's answer to a note, as it is stored.
    struct UpToDate {
        Uuid accountID;
        LocalDate through;
        friend bool operator==(const UpToDate&, const UpToDate&) = default;
    };
    struct HistoryStart {
        Uuid accountID;
        LocalDate on;
        friend bool operator==(const HistoryStart&, const HistoryStart&) = default;
    };
    struct RarelyUsed {
        Uuid accountID;
        friend bool operator==(const RarelyUsed&, const RarelyUsed&) = default;
    };
    struct Dismiss {
        std::string key;
        friend bool operator==(const Dismiss&, const Dismiss&) = default;
    };
    using Acknowledgement = std::variant<UpToDate, HistoryStart, RarelyUsed, Dismiss>;

    std::string id;
    Severity severity = Severity::info;
    std::string text;
    std::optional<Acknowledgement> acknowledgement;

    // The account the answer is stored on, when it is stored on one.
    [[nodiscard]] std::optional<Uuid> accountID() const;

    friend bool operator==(const DataNote&, const DataNote&) = default;
};

template <>
struct EnumTraits<DataNote::Severity> {
    static constexpr std::array<std::pair<DataNote::Severity, std::string_view>, 2> cases{{
        {DataNote::Severity::info, "info"},
        {DataNote::Severity::warning, "warning"},
    }};
};

}  // namespace copperwick
