#pragma once

// The sample bank files that ship with Copperwick (chase-checking.csv,
// chase-card.csv): beside the sources for a program run from its build
// folder, else in the installed data folder. The self-check imports one of
// them through the Import screen. Main thread only (it asks Qt where the
// program is).

#include <filesystem>
#include <optional>

namespace copperwick::app {

// The folder holding the samples, or absent when neither place has it.
[[nodiscard]] std::optional<std::filesystem::path> samplesFolder();

}  // namespace copperwick::app
