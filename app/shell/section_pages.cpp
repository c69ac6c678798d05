#include "app/shell/section_pages.h"

#include "app/ask/ask_page.h"
#include "app/cash/cash_page.h"
#include "app/import/import_page.h"
#include "app/reports/reports_page.h"
#include "app/review/review_page.h"
#include "app/rules/rules_page.h"
#include "app/settings/settings_page.h"
#include "app/transactions/transactions_page.h"

namespace copperwick::app {

SectionPage* makeSectionPage(AppSection section, RuntimeBridge& bridge, QWidget* parent) {
    switch (section) {
        case AppSection::importFiles:
            return new ImportPage(bridge, parent);
        case AppSection::review:
            return new ReviewPage(bridge, parent);
        case AppSection::transactions:
            return new TransactionsPage(bridge, parent);
        case AppSection::reports:
            return new ReportsPage(bridge, parent);
        case AppSection::cash:
            return new CashPage(bridge, parent);
        case AppSection::ask:
            return new AskPage(bridge, parent);
        case AppSection::rules:
            return new RulesPage(bridge, parent);
        case AppSection::settings:
            return new SettingsPage(bridge, parent);
    }
    return new SectionPage(parent);
}

}  // namespace copperwick::app
