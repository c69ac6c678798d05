#pragma once

// Enter on a tool button does what Space does. Qt gives Enter only to push
// buttons (an auto-default one, or any in a dialog); a tool button of a
// screen (an icon, a fold, a status with its menu) would take Space alone.
// Main thread only.

#include <QAbstractButton>

namespace copperwick::app {

// For as long as `button` lives.
void pressOnEnter(QAbstractButton* button);

}  // namespace copperwick::app
