#pragma once

// What the model asked the finance lookups while answering one question, and
// what they told it: the texts its answer is checked against, and what a
// person can open to see where an answer came from. The tools of one
// question share one log and may record from any thread at once; every call
// takes the one lock. Not copyable: it is shared, by reference or pointer.

#include <mutex>
#include <string>
#include <vector>

#include "core/model/uuid.h"

namespace copperwick {

class ToolCallLog {
  public:
    struct Entry {
        Uuid id;
        std::string tool;  // the lookup's label: "Summary", "Category", …
        std::string arguments;
        std::string result;

        friend bool operator==(const Entry&, const Entry&) = default;
    };

    ToolCallLog() = default;
    ToolCallLog(const ToolCallLog&) = delete;
    ToolCallLog& operator=(const ToolCallLog&) = delete;

    // Appends one call under a fresh id.
    void record(std::string tool, std::string arguments, std::string result);

    // A copy of the calls so far, in the order they were recorded.
    [[nodiscard]] std::vector<Entry> entries() const;

    // The results alone, in order: the sources of the grounding check.
    [[nodiscard]] std::vector<std::string> results() const;

  private:
    mutable std::mutex m_lock;
    std::vector<Entry> m_entries;
};

}  // namespace copperwick
