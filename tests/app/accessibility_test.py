"""The window as a screen reader finds it, through AT-SPI.

Run by run_accessibility_test.sh, with copperwick-app already starting on a
demo workspace. Finds the application, checks that the sidebar's rows carry
their labels, chooses the row "Review" as assistive technology does (by
selecting it, or by its action), and waits for the Review screen's title to
show; then walks every other section the same way. Every wait is bounded;
the whole script gives up after 140 seconds, before the runner does.
"""

import signal
import sys
import time

import pyatspi

SECTIONS = ["Import", "Review", "Transactions", "Reports", "Cash", "Ask",
            "Rules & Merchants", "Settings"]
APPLICATION_NAMES = {"copperwick-app", "copperwick", "Copperwick"}
# The title a section's screen opens with, where it isn't the row's label.
TITLES = {"Ask": "Ask Copperwick"}


def fail(message):
    print("FAILED: " + message, file=sys.stderr)
    sys.exit(1)


def wait_for(what, probe, seconds=20):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        try:
            found = probe()
        except Exception:  # the tree may change under the walk
            found = None
        if found:
            return found
        time.sleep(0.2)
    fail("gave up waiting for " + what)


def children(node):
    for index in range(node.childCount):
        child = node.getChildAtIndex(index)
        if child is not None:
            yield child


def walk(node):
    yield node
    for child in children(node):
        yield from walk(child)


def application():
    for app in children(pyatspi.Registry.getDesktop(0)):
        if app.name in APPLICATION_NAMES:
            return app
    return None


def showing(node):
    return node.getState().contains(pyatspi.STATE_SHOWING)


def sidebar_rows(app):
    rows = {}
    for node in walk(app):
        if node.getRole() in (pyatspi.ROLE_LIST_ITEM, pyatspi.ROLE_TABLE_CELL) \
                and node.name in SECTIONS:
            rows[node.name] = node
    return rows if len(rows) == len(SECTIONS) else None


def showing_title(app, text):
    for node in walk(app):
        if node.getRole() == pyatspi.ROLE_LABEL and node.name == text and showing(node):
            return node
    return None


def choose(row):
    """Chooses a row the two ways assistive technology can: selection, then action."""
    parent = row.parent
    try:
        selection = parent.querySelection()
        if selection.selectChild(row.getIndexInParent()):
            return "selection"
    except NotImplementedError:
        pass
    try:
        action = row.queryAction()
    except NotImplementedError:
        fail("the row \"%s\" can be neither selected nor activated" % row.name)
    names = [action.getName(i) for i in range(action.nActions)]
    for wanted in ("toggle", "select", "press", "click", "activate", "setfocus"):
        for index, name in enumerate(names):
            if name.lower().replace(" ", "") == wanted:
                action.doAction(index)
                return "action " + name
    fail("the row \"%s\" offers no action to choose it: %s" % (row.name, names))


def main():
    signal.alarm(140)
    app = wait_for("the application on the accessibility bus", application, 90)
    rows = wait_for("the sidebar's eight rows", lambda: sidebar_rows(app))

    # The demo opens on Reports; the Review screen isn't showing yet.
    wait_for("the Reports screen", lambda: showing_title(app, "Reports"))
    if showing_title(app, "Review"):
        fail("the Review screen shows before its row was chosen")

    how = choose(rows["Review"])
    wait_for("the Review screen after choosing its row by " + how,
             lambda: showing_title(app, "Review"))
    if not rows["Review"].getState().contains(pyatspi.STATE_SELECTED):
        fail("the Review row isn't marked as chosen")
    print("The Review row chosen by %s shows the Review screen." % how)

    for section in SECTIONS:
        how = choose(rows[section])
        title = TITLES.get(section, section)
        wait_for("the %s screen after choosing its row by %s" % (section, how),
                 lambda: showing_title(app, title))
    print("Every section's row shows its screen.")


if __name__ == "__main__":
    main()
