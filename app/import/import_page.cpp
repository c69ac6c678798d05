#include "app/import/import_page.h"

#include <QVBoxLayout>

#include "app/shell/sections.h"
#include "app/widgets/page_header.h"
#include "app/widgets/qt_text.h"

namespace copperwick::app {

ImportPage::ImportPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 24, 28, 24);
    const auto& info = sectionInfo(AppSection::importFiles);
    layout->addWidget(new PageHeader(toQString(info.label), {}, this));
    layout->addStretch(1);
}

}  // namespace copperwick::app
