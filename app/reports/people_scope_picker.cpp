#include "app/reports/people_scope_picker.h"

#include <QActionGroup>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

namespace {

const QString kWholeHousehold = QStringLiteral("Whole household");
const QString kWholeHouseholdCaption =
    QStringLiteral("Everyone, shared spending, and unassigned transactions");
const QString kChoose = QStringLiteral("Choose one or more");
const QString kAssigned = QStringLiteral("Spending assigned to them");
const QString kAssignedCaption = QStringLiteral(
    "Follows who each purchase was assigned to, including single purchases you reassigned.");
const QString kCards = QStringLiteral("Everything on their cards");
const QString kCardsCaption = QStringLiteral(
    "Includes every purchase on a card they use, even ones you reassigned to someone else.");

bool isWholeHousehold(const PeopleScope& scope) {
    return scope.wholeHousehold.value_or(scope.personIDs.empty());
}

}  // namespace

PeopleScopePicker::PeopleScopePicker(QWidget* parent)
    : QWidget(parent),
      m_button(pushButton({}, this)),
      m_menu(new QMenu(this)),
      m_caption(noteLabel({}, this, true)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    m_button->setMenu(m_menu);
    m_button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    layout->addWidget(m_button, 0, Qt::AlignLeft);
    layout->addWidget(m_caption);
    setPeople({}, kWholeHousehold);
}

void PeopleScopePicker::setScope(const PeopleScope& scope) {
    m_scope = scope;
    rebuildMenu();
}

void PeopleScopePicker::setPeople(const std::vector<Person>& people, const QString& scopeLabel) {
    m_people = people;
    // A person no longer in the ledger leaves the choice too.
    std::set<Uuid> kept;
    for (const Person& person : m_people) {
        if (m_scope.personIDs.contains(person.id))
            kept.insert(person.id);
    }
    m_scope.personIDs = std::move(kept);
    m_button->setText(scopeLabel);
    m_button->setAccessibleName(scopeLabel);
    m_button->setToolTip(QStringLiteral("People: ") + scopeLabel);
    rebuildMenu();
}

void PeopleScopePicker::choose(PeopleScope scope) {
    m_scope = std::move(scope);
    rebuildMenu();
    Q_EMIT changed(m_scope);
}

void PeopleScopePicker::rebuildMenu() {
    m_menu->clear();
    const bool whole = isWholeHousehold(m_scope);
    QAction* household = m_menu->addAction(kWholeHousehold);
    household->setCheckable(true);
    household->setChecked(whole);
    household->setToolTip(kWholeHouseholdCaption);
    household->setStatusTip(kWholeHouseholdCaption);
    connect(household, &QAction::triggered, this, [this] {
        PeopleScope scope;
        scope.peopleMode = m_scope.peopleMode;
        choose(scope);
    });

    m_menu->addSection(kChoose);
    // A choice made among the people leaves the whole household; taking the
    // last one away keeps the choice explicit ("No people selected").
    const auto toggled = [this](auto edit) {
        PeopleScope scope = m_scope;
        if (isWholeHousehold(scope)) {
            scope.personIDs.clear();
            scope.includeShared = false;
            scope.includeUnassigned = false;
        }
        scope.wholeHousehold = false;
        edit(scope);
        choose(scope);
    };
    for (const Person& person : m_people) {
        QAction* action = m_menu->addAction(toQString(person.name));
        action->setCheckable(true);
        action->setChecked(!whole && m_scope.personIDs.contains(person.id));
        connect(action, &QAction::triggered, this, [toggled, id = person.id](bool on) {
            toggled([&](PeopleScope& scope) {
                if (on)
                    scope.personIDs.insert(id);
                else
                    scope.personIDs.erase(id);
            });
        });
    }
    QAction* shared = m_menu->addAction(QStringLiteral("Shared household"));
    shared->setCheckable(true);
    shared->setChecked(!whole && m_scope.includeShared);
    connect(shared, &QAction::triggered, this,
            [toggled](bool on) { toggled([&](PeopleScope& scope) { scope.includeShared = on; }); });
    QAction* unassigned = m_menu->addAction(QStringLiteral("Unassigned"));
    unassigned->setCheckable(true);
    unassigned->setChecked(!whole && m_scope.includeUnassigned);
    connect(unassigned, &QAction::triggered, this, [toggled](bool on) {
        toggled([&](PeopleScope& scope) { scope.includeUnassigned = on; });
    });

    m_menu->addSeparator();
    auto* modes = new QActionGroup(m_menu);
    const auto addMode = [&](const QString& text, const QString& caption, PeopleMode mode) {
        QAction* action = m_menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(m_scope.peopleMode == mode);
        action->setToolTip(caption);
        action->setStatusTip(caption);
        modes->addAction(action);
        connect(action, &QAction::triggered, this, [this, mode] {
            PeopleScope scope = m_scope;
            scope.peopleMode = mode;
            choose(scope);
        });
    };
    addMode(kAssigned, kAssignedCaption, PeopleMode::assigned);
    addMode(kCards, kCardsCaption, PeopleMode::cards);
    m_menu->setToolTipsVisible(true);

    const QString caption = whole                                     ? kWholeHouseholdCaption
                            : m_scope.peopleMode == PeopleMode::cards ? kCardsCaption
                                                                      : kAssignedCaption;
    setLabelText(m_caption, caption);
}

}  // namespace copperwick::app
