#include "app/settings/settings_page.h"

#include <utility>

#include <QApplication>
#include <QPointer>

#include "app/settings/appearance_card.h"
#include "app/settings/budgets_card.h"
#include "app/settings/category_sheets.h"
#include "app/settings/data_card.h"
#include "app/settings/local_ai_card.h"
#include "app/settings/record_cards.h"
#include "app/settings/report_settings_card.h"
#include "app/settings/updates_card.h"
#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/tab_order.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kIntro =
    "Your household, its accounts and categories, budgets, backups, and how Copperwick looks.";

// The application's SkinStore, when main() made it a child of the
// application object; otherwise one of the page's own.
SkinStore* applicationSkins(Preferences& preferences, QObject* owner) {
    if (auto* found = qApp->findChild<SkinStore*>(QString(), Qt::FindDirectChildrenOnly))
        return found;
    return new SkinStore(preferences, owner);
}

// The application's update service, when main() made one; otherwise one of
// the page's own on this build's configuration, which is never started.
UpdateService* applicationUpdates(LedgerRuntime& runtime, QObject* owner) {
    if (auto* found = UpdateService::ofApplication())
        return found;
    return new UpdateService(runtime, UpdateConfiguration::fromBuild(), owner);
}

}  // namespace

SettingsPage::SettingsPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge) {
    m_skins = applicationSkins(bridge.runtime().defaults(), this);
    QVBoxLayout* column =
        makeScrollingColumn(toQString(sectionInfo(AppSection::settings).label), toQString(kIntro));
    m_appearance = new AppearanceCard(*m_skins, this);
    m_people = new PeopleCard(bridge, this);
    m_accounts = new AccountsCard(bridge, this);
    m_categories = new CategoriesCard(bridge, this);
    m_budgets = new BudgetsCard(bridge, this);
    m_reportSettings = new ReportSettingsCard(bridge, this);
    m_data = new DataCard(bridge, this);
    for (QWidget* card : std::initializer_list<QWidget*>{
             m_appearance, m_people, m_accounts, m_categories, m_budgets, m_reportSettings, m_data})
        column->addWidget(card);
    m_localAI = new LocalAICard(bridge, this);
    column->addWidget(m_localAI);
    m_updates = new UpdatesCard(*applicationUpdates(bridge.runtime(), this), this);
    column->addWidget(m_updates);
    column->addStretch(1);
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, &SettingsPage::changeSaved);
}

void SettingsPage::showEvent(QShowEvent* event) {
    SectionPage::showEvent(event);
    if (std::exchange(m_outdated, false))
        changeSaved(SavedChange{.revision = m_bridge.runtime().revision(), .delta = std::nullopt});
    // Whether the model server answers is asked anew on each visit.
    m_bridge.checkModel();
}

void SettingsPage::changeSaved(const SavedChange& change) {
    // A hidden screen reads what changed when it next shows, not on every save.
    if (!isVisible()) {
        m_outdated = true;
        return;
    }
    m_people->changeSaved(change);
    m_accounts->changeSaved(change);
    m_categories->changeSaved(change);
    m_budgets->changeSaved(change);
    m_reportSettings->changeSaved(change);
    m_data->changeSaved(change);
    // Rows and fields made afresh come last in Qt's chain, whichever card
    // they stand in; Tab follows the page as it reads.
    orderTabs({m_appearance, m_people, m_accounts, m_categories, m_budgets, m_reportSettings,
               m_data, m_localAI, m_updates});
}

std::vector<SelfCheck> SettingsPage::selfChecks() {
    return {
        SelfCheck{"Choose another skin, then the one before", [this] { return checkSkinChange(); }},
        SelfCheck{"Rename a category, then rename it back",
                  [this] { return checkCategoryRename(); }},
    };
}

SelfCheckOutcome SettingsPage::checkSkinChange() {
    const SkinPreference before = m_skins->preference();
    const Skin other = before.skin == Skin::sky ? Skin::bordeaux : Skin::sky;
    m_appearance->skinButton(other)->click();
    const SkinPreference kept = SkinPreference::load(m_bridge.runtime().defaults());
    const QColor accent = QApplication::palette().color(QPalette::Link);
    const QColor wanted = SkinStore::qtPalette(other, m_skins->isDark()).color(QPalette::Link);
    m_appearance->skinButton(before.skin)->click();
    const std::string name(displayName(other));
    if (kept.skin != other)
        return {false, "Choosing " + name + " wasn't kept in the preferences."};
    if (accent != wanted)
        return {false, "Choosing " + name + " left the window's accent as it was."};
    if (m_skins->preference() != before)
        return {false, "Choosing the skin before didn't bring it back."};
    return {true, "Chose " + name +
                      ": the preferences and the window's colours followed, and the "
                      "skin before came back."};
}

SelfCheckOutcome SettingsPage::checkCategoryRename() {
    LedgerRuntime& runtime = m_bridge.runtime();
    if (runtime.ledger().categories.empty())
        return {false, "The demo workspace has no categories."};
    const LedgerCategory category = runtime.ledger().categories[0];
    const auto rename = [&](const std::string& name) {
        QPointer<CategorySheet> sheet =
            new CategorySheet(m_bridge, category.id, category.group, this);
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->open();
        sheet->nameField()->setText(toQString(name));
        sheet->saveButton()->click();
        const bool closed = !sheet || !sheet->isVisible();
        if (sheet)
            sheet->close();
        const LedgerCategory* now = runtime.ledger().category(category.id);
        return closed && now && now->name == name;
    };
    const std::string renamed = category.name + " (renamed)";
    if (!rename(renamed))
        return {false, "Renaming " + category.name + " wasn't saved."};
    if (!rename(category.name))
        return {false, "Renaming " + renamed + " back wasn't saved."};
    return {true, "Renamed " + category.name + " and renamed it back."};
}

}  // namespace copperwick::app
