#pragma once

// The settings card of what reports count and how: the time zone that
// decides "today", the report currency, the payment services tracked, and
// the answers given to report notes, which "Show All Again" takes back.
// Each field is held to core's rule for it as it is left, with the refusal
// under it. Main thread only.

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/section_card.h"

namespace copperwick::app {

class ReportSettingsCard : public SectionCard {
    Q_OBJECT

  public:
    explicit ReportSettingsCard(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* timeZoneField() const { return m_timeZone; }
    [[nodiscard]] RefusalLine* timeZoneRefusal() const { return m_timeZoneRefusal; }
    [[nodiscard]] QLineEdit* currencyField() const { return m_currency; }
    [[nodiscard]] RefusalLine* currencyRefusal() const { return m_currencyRefusal; }
    [[nodiscard]] QToolButton* servicesButton() const { return m_services; }
    [[nodiscard]] QPushButton* showAllNotesButton() const { return m_showAll; }
    void changeSaved(const SavedChange& change);

  private:
    void makeServicesMenu();
    void showSettings();
    void saveTimeZone();
    void saveCurrency();
    void saveServices(const std::vector<PaymentService>& services);

    RuntimeBridge& m_bridge;
    QLineEdit* m_timeZone = nullptr;
    RefusalLine* m_timeZoneRefusal = nullptr;
    QLineEdit* m_currency = nullptr;
    RefusalLine* m_currencyRefusal = nullptr;
    QToolButton* m_services = nullptr;
    QLabel* m_notes = nullptr;
    QPushButton* m_showAll = nullptr;
};

}  // namespace copperwick::app
