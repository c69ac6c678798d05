#pragma once

// The review section's screen. For now it shows the section's title; the
// screen itself grows here, reading the ledger through the runtime and
// changing it only through runtime calls.

#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_page.h"

namespace copperwick::app {

class ReviewPage : public SectionPage {
    Q_OBJECT

  public:
    explicit ReviewPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

  private:
    [[maybe_unused]] RuntimeBridge& m_bridge;
};

}  // namespace copperwick::app
