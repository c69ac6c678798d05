#pragma once

// The Settings section: one scrolling page of cards, each about one thing
// the person keeps here: the look of the application, the household's
// people, accounts and categories, budgets and the savings goal, what the
// reports count, the data file and its backups, Local AI and its model
// server, and updates. Each card reads the ledger through the runtime,
// changes it only through the runtime, and redraws when a save touches what
// it shows.
//
// The look goes through the application's SkinStore: the one made as a
// child of the application object when there is one, otherwise one of the
// page's own on the runtime's preferences. Updates go through the
// application's UpdateService in the same way. Main thread only.

#include <QLabel>
#include <QWidget>

#include "app/shell/runtime_bridge.h"
#include "app/shell/skin_store.h"
#include "app/shell/update_service.h"
#include "app/widgets/section_page.h"

namespace copperwick::app {

class AppearanceCard;
class PeopleCard;
class AccountsCard;
class CategoriesCard;
class BudgetsCard;
class ReportSettingsCard;
class DataCard;
class LocalAICard;
class UpdatesCard;

class SettingsPage : public SectionPage {
    Q_OBJECT

  public:
    explicit SettingsPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    [[nodiscard]] SkinStore& skins() const { return *m_skins; }
    [[nodiscard]] AppearanceCard* appearance() const { return m_appearance; }
    [[nodiscard]] PeopleCard* people() const { return m_people; }
    [[nodiscard]] AccountsCard* accounts() const { return m_accounts; }
    [[nodiscard]] CategoriesCard* categories() const { return m_categories; }
    [[nodiscard]] BudgetsCard* budgets() const { return m_budgets; }
    [[nodiscard]] ReportSettingsCard* reportSettings() const { return m_reportSettings; }
    [[nodiscard]] DataCard* data() const { return m_data; }
    [[nodiscard]] LocalAICard* localAI() const { return m_localAI; }
    [[nodiscard]] UpdatesCard* updates() const { return m_updates; }

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void changeSaved(const SavedChange& change);
    [[nodiscard]] SelfCheckOutcome checkSkinChange();
    [[nodiscard]] SelfCheckOutcome checkCategoryRename();

    RuntimeBridge& m_bridge;
    SkinStore* m_skins = nullptr;
    AppearanceCard* m_appearance = nullptr;
    PeopleCard* m_people = nullptr;
    AccountsCard* m_accounts = nullptr;
    CategoriesCard* m_categories = nullptr;
    BudgetsCard* m_budgets = nullptr;
    ReportSettingsCard* m_reportSettings = nullptr;
    DataCard* m_data = nullptr;
    LocalAICard* m_localAI = nullptr;
    UpdatesCard* m_updates = nullptr;
    // Saved while the page was hidden: it reads everything again when it shows.
    bool m_outdated = false;
};

}  // namespace copperwick::app
