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

#include <QScrollArea>
#include <QString>
#include <QVBoxLayout>
#include <QWidget>

namespace copperwick::app {

// The room between a screen's content and the sides of its column, which
// every screen keeps and the message bars above the screens follow.
inline constexpr int kPageSideMargin = 28;

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

    // What the page scrolls in, when it is laid out as a scrolling column.
    [[nodiscard]] QScrollArea* scrollArea() const { return m_scroll; }

  protected:
    // Lays the page out as one column that scrolls as a whole, opening with
    // the screen's title and `subtitle`, in the standard margins; the page
    // adds its parts to the column returned.
    QVBoxLayout* makeScrollingColumn(const QString& title, const QString& subtitle);

  private:
    QScrollArea* m_scroll = nullptr;
};

}  // namespace copperwick::app
