#pragma once

// What the window knows of a section's screen: a widget, shown in the
// window's stack when its section is chosen, and the checks that the
// packaged-application self-check (--check-package) runs on it while it
// shows on a demo workspace.
//
// A screen adds its own check by overriding selfChecks(): one real action a
// person would take there, and what should follow. Main thread only.

#include <functional>
#include <string>
#include <vector>

#include <QWidget>

namespace copperwick::app {

struct SelfCheckOutcome {
    bool ok = false;
    // What was found, in plain words; said whether or not the check passed.
    std::string detail;
};

struct SelfCheck {
    std::string name;
    std::function<SelfCheckOutcome()> run;
};

class SectionPage : public QWidget {
    Q_OBJECT

  public:
    explicit SectionPage(QWidget* parent = nullptr);

    // Run on the demo workspace with this page showing, in order; a check may
    // change the ledger through the runtime, as a person would. None by default.
    [[nodiscard]] virtual std::vector<SelfCheck> selfChecks();
};

}  // namespace copperwick::app
