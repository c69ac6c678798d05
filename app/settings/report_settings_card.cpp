#include "app/settings/report_settings_card.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QMenu>

#include "app/settings/settings_rows.h"
#include "app/widgets/enter_presses.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/sheet_dialog.h"
#include "app/widgets/text_styles.h"
#include "core/model/enum_text.h"
#include "core/operations/currency_code.h"
#include "core/operations/entry_error.h"
#include "core/operations/report_notes.h"
#include "core/operations/update_settings.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kServicesNote =
    "Choose which payment services appear. Clear all hides the panel.";

std::vector<PaymentService> allServices() {
    std::vector<PaymentService> services;
    for (const auto& [service, raw] : EnumTraits<PaymentService>::cases)
        services.push_back(service);
    return services;
}

}  // namespace

ReportSettingsCard::ReportSettingsCard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Reports"),
                  QStringLiteral("What the reports count as today, the currency they add up in, "
                                 "and the payment services they follow."),
                  "chart.pie", parent),
      m_bridge(bridge) {
    auto* fields = new QWidget(this);
    auto* form = new QFormLayout(fields);
    form->setContentsMargins(0, 0, 0, 0);
    form->setVerticalSpacing(8);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_timeZone = new QLineEdit(fields);
    m_timeZone->setMaximumWidth(320);
    form->addRow(fieldLabel(QStringLiteral("Time zone"), m_timeZone, fields),
                 withRefusalLine(m_timeZone, m_timeZoneRefusal, fields));
    m_currency = new QLineEdit(fields);
    m_currency->setMaximumWidth(120);
    m_currency->setMaxLength(8);
    form->addRow(fieldLabel(QStringLiteral("Report currency"), m_currency, fields),
                 withRefusalLine(m_currency, m_currencyRefusal, fields));

    auto* services = new QWidget(fields);
    auto* servicesLayout = new QVBoxLayout(services);
    servicesLayout->setContentsMargins(0, 0, 0, 0);
    servicesLayout->setSpacing(4);
    m_services = new QToolButton(services);
    m_services->setPopupMode(QToolButton::InstantPopup);
    m_services->setToolButtonStyle(Qt::ToolButtonTextOnly);
    pressOnEnter(m_services);
    servicesLayout->addWidget(m_services, 0, Qt::AlignLeft);
    servicesLayout->addWidget(noteLabel(toQString(kServicesNote), services, true));
    form->addRow(textLabel(QStringLiteral("Payment services"), fields), services);

    auto* notes = new QWidget(fields);
    auto* notesLayout = new QHBoxLayout(notes);
    notesLayout->setContentsMargins(0, 0, 0, 0);
    m_notes = secondaryLabel({}, notes);
    notesLayout->addWidget(m_notes, 1);
    m_showAll = pushButton(QStringLiteral("Show All Again"), notes);
    notesLayout->addWidget(m_showAll);
    form->addRow(textLabel(QStringLiteral("Report notes"), fields), notes);
    body()->addWidget(fields);

    makeServicesMenu();
    connect(m_timeZone, &QLineEdit::editingFinished, this, &ReportSettingsCard::saveTimeZone);
    connect(m_currency, &QLineEdit::editingFinished, this, &ReportSettingsCard::saveCurrency);
    connect(m_showAll, &QPushButton::clicked, this, [this] {
        m_bridge.runtime().apply([](Ledger& copy) { return showAllReportNotes(copy); });
    });
    showSettings();
}

void ReportSettingsCard::makeServicesMenu() {
    auto* menu = new QMenu(m_services);
    connect(menu->addAction(QStringLiteral("Select All")), &QAction::triggered, this,
            [this] { saveServices(allServices()); });
    connect(menu->addAction(QStringLiteral("Clear All")), &QAction::triggered, this,
            [this] { saveServices({}); });
    menu->addSeparator();
    for (const PaymentService service : allServices()) {
        QAction* toggle = menu->addAction(toQString(name(service)));
        toggle->setCheckable(true);
        toggle->setData(static_cast<int>(service));
        connect(toggle, &QAction::triggered, this, [this, service](bool on) {
            // Kept in the services' own order, whatever order they were chosen in.
            const auto& tracked = m_bridge.runtime().ledger().settings->paymentServices;
            std::vector<PaymentService> chosen;
            for (const PaymentService each : allServices()) {
                const bool was = std::find(tracked.begin(), tracked.end(), each) != tracked.end();
                if (each == service ? on : was)
                    chosen.push_back(each);
            }
            saveServices(chosen);
        });
    }
    m_services->setMenu(menu);
}

void ReportSettingsCard::changeSaved(const SavedChange& change) {
    if (touches(change, RecordKind::settings) || touches(change, RecordKind::account))
        showSettings();
}

void ReportSettingsCard::showSettings() {
    const Ledger& ledger = m_bridge.runtime().ledger();
    const LedgerSettings& settings = *ledger.settings;
    if (!m_timeZone->hasFocus())
        m_timeZone->setText(toQString(settings.timeZoneID));
    if (!m_currency->hasFocus())
        m_currency->setText(toQString(settings.reportCurrency));
    const QString title = QStringLiteral("Services \u00B7 %1 selected")
                              .arg(static_cast<int>(settings.paymentServices.size()));
    m_services->setText(title);
    m_services->setAccessibleName(title);
    for (QAction* action : m_services->menu()->actions()) {
        if (!action->isCheckable())
            continue;
        const auto service = static_cast<PaymentService>(action->data().toInt());
        action->setChecked(std::find(settings.paymentServices.begin(),
                                     settings.paymentServices.end(),
                                     service) != settings.paymentServices.end());
    }
    const int64_t answered = acknowledgedNoteCount(ledger);
    setLabelText(m_notes,
                 answered == 0
                     ? QStringLiteral("No report notes are set aside.")
                     : QStringLiteral("%1 answered or set aside; they stay hidden on reports.")
                           .arg(answered));
    m_showAll->setEnabled(answered > 0);
}

void ReportSettingsCard::saveTimeZone() {
    LedgerRuntime& runtime = m_bridge.runtime();
    std::string zone;
    try {
        zone = timeZoneEntered(toStdString(m_timeZone->text()));
    } catch (const EntryError& refusal) {
        m_timeZoneRefusal->setRefusal(QString::fromUtf8(refusal.what()));
        return;
    }
    m_timeZoneRefusal->setRefusal({});
    if (zone == runtime.ledger().settings->timeZoneID)
        return;
    runtime.apply([&](Ledger& copy) {
        return updateSettings(copy, [&](LedgerSettings& settings) { settings.timeZoneID = zone; });
    });
}

void ReportSettingsCard::saveCurrency() {
    LedgerRuntime& runtime = m_bridge.runtime();
    std::string code;
    try {
        code = currencyEntered(toStdString(m_currency->text()));
    } catch (const EntryError& refusal) {
        m_currencyRefusal->setRefusal(QString::fromUtf8(refusal.what()));
        return;
    }
    m_currencyRefusal->setRefusal({});
    m_currency->setText(toQString(code));
    if (code == runtime.ledger().settings->reportCurrency)
        return;
    runtime.apply([&](Ledger& copy) {
        return updateSettings(copy,
                              [&](LedgerSettings& settings) { settings.reportCurrency = code; });
    });
}

void ReportSettingsCard::saveServices(const std::vector<PaymentService>& services) {
    m_bridge.runtime().apply([&](Ledger& copy) {
        return updateSettings(
            copy, [&](LedgerSettings& settings) { settings.paymentServices = services; });
    });
}

}  // namespace copperwick::app
