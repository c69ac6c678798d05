#include "core/intelligence/tool_call_log.h"

#include <utility>

namespace copperwick {

void ToolCallLog::record(std::string tool, std::string arguments, std::string result) {
    Entry entry{.id = Uuid::random(),
                .tool = std::move(tool),
                .arguments = std::move(arguments),
                .result = std::move(result)};
    const std::lock_guard guard(m_lock);
    m_entries.push_back(std::move(entry));
}

std::vector<ToolCallLog::Entry> ToolCallLog::entries() const {
    const std::lock_guard guard(m_lock);
    return m_entries;
}

std::vector<std::string> ToolCallLog::results() const {
    const std::lock_guard guard(m_lock);
    std::vector<std::string> texts;
    texts.reserve(m_entries.size());
    for (const auto& entry : m_entries)
        texts.push_back(entry.result);
    return texts;
}

}  // namespace copperwick
