#pragma once

// Tab order by what the person sees. Qt chains widgets in the order they were
// made, so a card made after the sections below it would be reached last;
// this chains the focusable controls under each root in the order their
// layouts place them, top to bottom, root after root. Main thread only.

#include <vector>

#include <QWidget>

namespace copperwick::app {

void orderTabs(const std::vector<QWidget*>& roots);

}  // namespace copperwick::app
