#pragma once

// What the commands that use Local AI share: the two checks every one of
// them makes first, and the progress a long run shows while it works.

#include <optional>
#include <ostream>
#include <string>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "runtime/intelligence_controller.h"
#include "runtime/intelligence_prompts.h"

namespace copperwick::cli {

// Says why Local AI can't be used now (switched off, or no model
// answering) and fails the command; false, saying nothing, when it can be.
// Asks the model server.
[[nodiscard]] inline bool refuseLocalAI(CommandContext& context,
                                        const IntelligenceController& intelligence) {
    std::optional<std::string> refusal;
    if (!intelligence.switches().enabled)
        refusal = std::string(IntelligencePrompts::kTurnedOff);
    else
        refusal = intelligence.model().unavailableReason();
    if (!refusal)
        return false;
    context.err << *refusal << '\n';
    context.exitCode = kExitFailure;
    return true;
}

// Writes each new progress line of a look-at run to `err` while it lasts: a
// run of a hundred groups on a laptop takes minutes.
class ProgressLines {
  public:
    ProgressLines(IntelligenceController& intelligence, std::ostream& err)
        : m_intelligence(intelligence) {
        m_observer = intelligence.observe([this, &err] {
            const std::string& line = m_intelligence.suggestionProgress();
            if (!line.empty() && line != m_last)
                err << line << '\n';
            m_last = line;
        });
    }
    ~ProgressLines() { m_intelligence.removeObserver(m_observer); }
    ProgressLines(const ProgressLines&) = delete;
    ProgressLines& operator=(const ProgressLines&) = delete;

  private:
    IntelligenceController& m_intelligence;
    ObserverID m_observer = 0;
    std::string m_last;
};

}  // namespace copperwick::cli
