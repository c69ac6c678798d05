#pragma once

// What a person meets on a screen, checked the same way for every screen and
// sheet: that each control is named by its own words, that nothing is cut
// short or drawn over something else, and that Tab walks the controls in
// the order they read. Each check describes what it found wrong, one line a
// fault, so that a failure says where to look.

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollArea>
#include <QStringList>
#include <QTest>

#include "app/widgets/card_frame.h"
#include "app/widgets/elided_label.h"
#include "runtime/app_section.h"

namespace copperwick::testing {

// The sections with a screen of their own: all eight.
inline constexpr AppSection kBuiltScreens[] = {
    AppSection::importFiles, AppSection::review, AppSection::transactions, AppSection::reports,
    AppSection::cash,        AppSection::ask,    AppSection::rules,        AppSection::settings};

// Words as a person sees them: a mnemonic's "&" isn't shown.
inline QString shownWords(QString text) {
    return text.replace(QStringLiteral("&&"), QStringLiteral("\x01"))
        .remove(QLatin1Char('&'))
        .replace(QLatin1Char('\x01'), QLatin1Char('&'));
}

inline QString describe(const QWidget* widget) {
    QString words = widget->accessibleName();
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget);
        button && words.isEmpty())
        words = button->text();
    return QString::fromLatin1(widget->metaObject()->className()) + QStringLiteral(" \u201C") +
           words + QStringLiteral("\u201D");
}

// Shown now: the widget and every parent up to its window.
inline bool isShown(const QWidget* widget) {
    return widget->isVisible();
}

// Part of a field, a combo box or a list (a clear button, an editor)
// rather than a control of its own.
inline bool insideControl(const QWidget* widget) {
    for (const QWidget* up = widget->parentWidget(); up; up = up->parentWidget()) {
        if (qobject_cast<const QComboBox*>(up) || qobject_cast<const QAbstractItemView*>(up) ||
            qobject_cast<const QLineEdit*>(up))
            return true;
    }
    return false;
}

// The controls under `root` that Tab reaches: shown, enabled and taking
// Tab. Of an exclusive group of radio buttons only the chosen one (or the
// first, when none is) is a stop; arrows move within the group.
inline std::vector<QWidget*> reachableControls(QWidget* root) {
    std::vector<QWidget*> controls;
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        if (!isShown(widget) || !widget->isEnabled() || !(widget->focusPolicy() & Qt::TabFocus))
            continue;
        // A combo box's own line and list, and a list's editors, aren't stops of their own.
        if (insideControl(widget))
            continue;
        if (auto* radio = qobject_cast<QRadioButton*>(widget)) {
            if (QButtonGroup* group = radio->group(); group && group->exclusive()) {
                QAbstractButton* stop = group->checkedButton();
                if (!stop && !group->buttons().isEmpty())
                    stop = group->buttons().front();
                if (radio != stop)
                    continue;
            }
        }
        controls.push_back(widget);
    }
    return controls;
}

// Every shown control whose accessible name isn't the words a person sees
// on it or beside it: a button's own words (an icon's tooltip when it has
// no words), a field's label (or, with none, its placeholder), a label's
// text (an eliding label's whole text).
inline QStringList misnamedControls(QWidget* root) {
    QStringList faults;
    std::map<const QWidget*, QString> labelled;
    for (QLabel* label : root->findChildren<QLabel*>()) {
        if (label->buddy() && isShown(label))
            labelled[label->buddy()] = shownWords(label->text());
    }
    const auto fault = [&](const QWidget* widget, const QString& wanted) {
        faults.append(describe(widget) + QStringLiteral(" should be named \u201C") + wanted +
                      QStringLiteral("\u201D"));
    };
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        if (!isShown(widget) || insideControl(widget))
            continue;
        const QString name = widget->accessibleName();
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            const QString words =
                button->text().isEmpty() ? button->toolTip() : shownWords(button->text());
            if (words.isEmpty() || name != words)
                fault(widget, words);
        } else if (auto* elided = qobject_cast<app::ElidedLabel*>(widget)) {
            if (!name.isEmpty() && name != elided->fullText())
                fault(widget, elided->fullText());
        } else if (auto* label = qobject_cast<QLabel*>(widget)) {
            // A label read out under stale words said what it no longer shows.
            if (!name.isEmpty() && name != label->text())
                fault(widget, label->text());
        } else if (qobject_cast<QLineEdit*>(widget) || qobject_cast<QComboBox*>(widget) ||
                   qobject_cast<QAbstractItemView*>(widget)) {
            QString wanted = labelled.contains(widget) ? labelled[widget] : QString();
            if (const auto* line = qobject_cast<QLineEdit*>(widget); wanted.isEmpty() && line)
                wanted = line->placeholderText();
            if (name.isEmpty() || (!wanted.isEmpty() && name != wanted))
                fault(widget, wanted);
        }
    }
    return faults;
}

// Every shown label or button cut short (a wrapped label lower than its
// lines need, a line of words narrower than its words), and
// every label, field or button that stands partly outside its parent or
// over another one beside it.
inline QStringList layoutFaults(QWidget* root) {
    QStringList faults;
    const auto isPart = [](const QWidget* widget) {
        return qobject_cast<const QLabel*>(widget) ||
               qobject_cast<const QAbstractButton*>(widget) ||
               qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QComboBox*>(widget) ||
               qobject_cast<const app::CardFrame*>(widget);
    };
    const auto where = [](const QWidget* widget) {
        const QRect r = widget->geometry();
        return QStringLiteral(" at %1,%2 %3\u00D7%4")
            .arg(r.x())
            .arg(r.y())
            .arg(r.width())
            .arg(r.height());
    };
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        if (!isShown(widget) || !isPart(widget) || insideControl(widget))
            continue;
        QWidget* parent = widget->parentWidget();
        // A scrolling area's content is as large as it needs; the rest of a
        // scrolling area or a list is its own affair.
        if (!parent || qobject_cast<QAbstractScrollArea*>(parent->parentWidget()) ||
            qobject_cast<QAbstractItemView*>(parent) || qobject_cast<QComboBox*>(parent) ||
            qobject_cast<QLineEdit*>(parent))
            continue;
        if (auto* label = qobject_cast<QLabel*>(widget);
            label && label->wordWrap() && !label->text().isEmpty()) {
            const int needed = label->heightForWidth(label->width());
            if (label->height() < needed)
                faults.append(describe(label) + QStringLiteral(" is cut short: %1 of %2 high")
                                                    .arg(label->height())
                                                    .arg(needed));
        }
        // A line of words or a button narrower than its words.
        const auto* label = qobject_cast<const QLabel*>(widget);
        const bool oneLine =
            qobject_cast<const QAbstractButton*>(widget) ||
            (label && !label->wordWrap() && !qobject_cast<const app::ElidedLabel*>(widget));
        if (oneLine && widget->width() < widget->minimumSizeHint().width())
            faults.append(describe(widget) + QStringLiteral(" is cut short: %1 of %2 wide")
                                                 .arg(widget->width())
                                                 .arg(widget->minimumSizeHint().width()));
        if (!parent->rect().adjusted(-1, -1, 1, 1).contains(widget->geometry()))
            faults.append(describe(widget) + where(widget) + QStringLiteral(" stands outside ") +
                          describe(parent) + where(parent));
    }
    // Siblings over one another.
    std::set<QWidget*> parents;
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        if (isShown(widget) && isPart(widget) && widget->parentWidget())
            parents.insert(widget->parentWidget());
    }
    for (QWidget* parent : parents) {
        std::vector<QWidget*> parts;
        for (QWidget* child : parent->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
            if (isShown(child) && isPart(child) && !child->isWindow())
                parts.push_back(child);
        }
        for (std::size_t a = 0; a < parts.size(); ++a) {
            for (std::size_t b = a + 1; b < parts.size(); ++b) {
                const QRect overlap =
                    parts[a]->geometry().intersected(parts[b]->geometry()).adjusted(1, 1, -1, -1);
                if (overlap.isValid() && !overlap.isEmpty())
                    faults.append(describe(parts[a]) + where(parts[a]) + QStringLiteral(" and ") +
                                  describe(parts[b]) + where(parts[b]) +
                                  QStringLiteral(" overlap"));
            }
        }
    }
    return faults;
}

// Where a control stands on the page as it reads; defined below.
inline QRect readingPlace(const QWidget* widget, const QWidget* root);

// Presses Tab from where the keyboard is now, as long as it stays in
// `root` (the first press may bring it there), and gives the controls it
// stopped on, until it left or came round again. A walk that came round is
// given from the control that reads first, as a person starting at the top
// would meet them.
inline std::vector<QWidget*> tabWalk(QWidget* root, int most = 400) {
    std::vector<QWidget*> walk;
    bool entered = false;
    bool cameRound = false;
    for (int press = 0; press < most; ++press) {
        QWidget* from = QApplication::focusWidget();
        QTest::keyClick(from ? from : root, Qt::Key_Tab);
        QWidget* now = QApplication::focusWidget();
        const bool inside = now && (now == root || root->isAncestorOf(now));
        if (!inside) {
            if (entered)
                break;
            continue;
        }
        entered = true;
        if (std::find(walk.begin(), walk.end(), now) != walk.end()) {
            cameRound = true;
            break;
        }
        walk.push_back(now);
    }
    if (cameRound && !walk.empty()) {
        const auto first = std::min_element(walk.begin(), walk.end(), [&](auto* a, auto* b) {
            const QRect pa = readingPlace(a, root);
            const QRect pb = readingPlace(b, root);
            return std::pair(pa.top(), pa.left()) < std::pair(pb.top(), pb.left());
        });
        std::rotate(walk.begin(), first, walk.end());
    }
    return walk;
}

// Where a control stands on the page as it reads, whatever the scrolling:
// a scrolling area's content as if unrolled in full, and what stands below
// the area moved down by what the area hides.
QRect readingPlace(const QWidget* widget, const QWidget* root) {
    QRect place(widget->mapTo(root, QPoint()), widget->size());
    for (const QScrollArea* area : root->findChildren<QScrollArea*>()) {
        const QWidget* content = area->widget();
        if (!content || !area->isVisible())
            continue;
        if (content->isAncestorOf(widget)) {
            place.translate(-content->pos());
        } else {
            const QRect shown(area->mapTo(root, QPoint()), area->size());
            if (place.top() >= shown.bottom())
                place.translate(0, std::max(0, content->height() - area->viewport()->height()));
        }
    }
    return place;
}

// Each step of `walk` that goes back up the page, or left along a line.
inline QStringList outOfReadingOrder(const std::vector<QWidget*>& walk, const QWidget* root) {
    QStringList faults;
    for (std::size_t i = 1; i < walk.size(); ++i) {
        const QRect before = readingPlace(walk[i - 1], root);
        const QRect after = readingPlace(walk[i], root);
        const bool sameLine = after.top() < before.bottom() && before.top() < after.bottom();
        const bool onward = sameLine ? after.left() >= before.left() : after.top() >= before.top();
        if (!onward)
            faults.append(describe(walk[i - 1]) + QStringLiteral(" then ") + describe(walk[i]));
    }
    return faults;
}

// The reachable controls of `root` that `walk` never stopped on.
inline QStringList unreached(const std::vector<QWidget*>& walk, QWidget* root) {
    QStringList faults;
    for (QWidget* control : reachableControls(root)) {
        if (std::find(walk.begin(), walk.end(), control) == walk.end())
            faults.append(describe(control));
    }
    return faults;
}

}  // namespace copperwick::testing
