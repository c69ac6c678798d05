#pragma once

// What the model reads of a file whose layout nobody knows: its first rows,
// numbered as a person would count them, each field cut short and its long
// digit runs masked, so that an account number in the file never reaches
// the model in clear. The layout rules themselves, and the check of what the
// model answers, are LayoutProposal's in core/import; these texts belong
// with the model's other words. Pure; safe on any thread.

#include <string>
#include <vector>

namespace copperwick::LayoutProposal {

// One line per row, "Row 1: [1] Date | [2] Description | [3] Amount", rows
// and columns counted from 1, each field its first 60 characters after
// masking.
[[nodiscard]] std::string promptText(const std::vector<std::vector<std::string>>& rows);

// The whole question: the rows, then what the model is to say about them.
[[nodiscard]] std::string question(const std::vector<std::vector<std::string>>& rows);

}  // namespace copperwick::LayoutProposal
