#include "app/widgets/section_page.h"

namespace copperwick::app {

SectionPage::SectionPage(QWidget* parent) : QWidget(parent) {}

std::vector<SelfCheck> SectionPage::selfChecks() {
    return {};
}

}  // namespace copperwick::app
