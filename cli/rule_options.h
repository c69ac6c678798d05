#pragma once
// The options that describe a rule on the command line, shared by
// `rules add`, `rules update` and `rules preview`. A rule reads back in a
// listing as core's describeRule words it.
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "cli/command_line.h"
#include "core/model/ledger.h"

namespace copperwick::cli {

struct RuleOptions {
    std::optional<std::string> name;
    std::optional<std::string> match;
    std::optional<std::string> pattern;
    std::optional<std::string> account;
    std::optional<std::string> direction;
    std::optional<std::string> minimum;
    std::optional<std::string> maximum;
    std::optional<std::string> merchant;
    std::optional<std::string> kind;
    std::optional<std::string> category;
};

void addRuleOptions(CLI::App& command, RuleOptions& options);

// Applies the given options over `rule` and has core check the result as the
// rule editor does (ruleEntered). On a refusal it prints why, sets the exit
// code and returns absent.
[[nodiscard]] std::optional<Rule> editedRule(const Ledger& ledger, Rule rule,
                                             const RuleOptions& options, CommandContext& context);

}  // namespace copperwick::cli
