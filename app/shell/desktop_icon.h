#pragma once

// The icon the desktop shows for Copperwick (--show-finder-icon SKIN|none):
// the skin's icon drawn into
//   $XDG_DATA_HOME/icons/hicolor/256x256/apps/copperwick-SKIN.png
// and named by the Icon line of the person's own desktop entry,
//   $XDG_DATA_HOME/applications/copperwick.desktop
// (XDG_DATA_HOME defaulting to ~/.local/share). The skin's raw value is kept
// under "Copperwick.appearance.finderIconShown.v1"; asking again for the
// skin already shown changes nothing. "none" removes the key and the Icon
// line, so the desktop shows the standard icon again.
//
// Runs before any window and needs no display. Main thread only.

#include <filesystem>
#include <optional>
#include <ostream>

#include "core/presentation/skin.h"
#include "runtime/preferences.h"

namespace copperwick::app {

struct DesktopPlaces {
    std::filesystem::path applications;  // where copperwick.desktop goes
    std::filesystem::path icons;         // where copperwick-SKIN.png goes

    // Under $XDG_DATA_HOME, or ~/.local/share when that is unset or relative.
    [[nodiscard]] static DesktopPlaces standard();
};

// Shows `skin`'s icon for the application started by `executable`, or the
// standard icon for none. True when done (or nothing was needed).
[[nodiscard]] bool showDesktopIcon(std::optional<Skin> skin, Preferences& preferences,
                                   const DesktopPlaces& places,
                                   const std::filesystem::path& executable);

// When the arguments hold "--show-finder-icon" and a value, runs it with the
// standard preferences and returns the exit status: 0 when done, 1 when it
// failed, 2 with "Unknown skin VALUE" on `err` for a value that is neither a
// skin nor "none". Absent when the arguments don't ask for it.
[[nodiscard]] std::optional<int> runDesktopIconCommandIfAsked(int argc, char** argv,
                                                              std::ostream& err);

}  // namespace copperwick::app
