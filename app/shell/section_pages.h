#pragma once

// Which screen stands for which section. A section's new screen is wired in
// here, in one place, and the window, the Go menu and the self-check follow.

#include <QWidget>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_page.h"
#include "runtime/app_section.h"

namespace copperwick::app {

// The screen of `section`, made once, when the window is built.
[[nodiscard]] SectionPage* makeSectionPage(AppSection section, RuntimeBridge& bridge,
                                           QWidget* parent);

}  // namespace copperwick::app
