#include "app/settings/local_ai_card.h"

#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/sheet_dialog.h"
#include "app/widgets/text_styles.h"
#include "runtime/loopback_endpoint.h"
#include "runtime/preferences.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kAddressHint = "http://127.0.0.1:8080/v1";
constexpr std::string_view kModelHint = "The first model the server lists";

// A command to type, in the fixed-width face a terminal shows it in.
QLabel* commandLabel(const QString& command, QWidget* parent) {
    QLabel* label = textLabel(command, parent);
    label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setContentsMargins(12, 0, 0, 0);
    return label;
}

}  // namespace

LocalAICard::LocalAICard(RuntimeBridge& bridge, QWidget* parent)
    : SectionCard(QStringLiteral("Local AI"), toQString(kNote), "sparkles", parent),
      m_bridge(bridge) {
    auto* switches = new QWidget(this);
    auto* switchList = new QVBoxLayout(switches);
    switchList->setContentsMargins(0, 0, 0, 0);
    switchList->setSpacing(6);
    m_enabled =
        addSwitch(QStringLiteral("Use Local AI"), preference_keys::aiEnabled, switches, switchList);
    // The features hang from the master switch.
    auto* features = new QVBoxLayout;
    features->setContentsMargins(22, 0, 0, 0);
    features->setSpacing(6);
    switchList->addLayout(features);
    m_autoSuggest = addSwitch(QStringLiteral("Look at what an import leaves in Review"),
                              preference_keys::aiAutoSuggest, switches, features);
    m_autoFile = addSwitch(QStringLiteral("File what it is sure of, rather than only suggest"),
                           preference_keys::aiAutoFile, switches, features);
    m_tidyNames = addSwitch(QStringLiteral("Tidy merchant names after an import"),
                            preference_keys::aiTidyNames, switches, features);
    body()->addWidget(switches);

    // The model server.
    auto* server = new QWidget(this);
    auto* form = new QFormLayout(server);
    form->setContentsMargins(0, 6, 0, 0);
    form->setVerticalSpacing(8);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_address = new QLineEdit(server);
    m_address->setPlaceholderText(toQString(kAddressHint));
    m_address->setMaximumWidth(360);
    form->addRow(fieldLabel(QStringLiteral("Server address"), m_address, server),
                 withRefusalLine(m_address, m_refusal, server));
    m_model = new QLineEdit(server);
    m_model->setPlaceholderText(toQString(kModelHint));
    m_model->setMaximumWidth(360);
    form->addRow(fieldLabel(QStringLiteral("Model"), m_model, server), m_model);
    m_use = pushButton(QStringLiteral("Use This Server"), server);
    auto* useRow = new QHBoxLayout;
    useRow->addWidget(m_use);
    useRow->addStretch(1);
    form->addRow(QString(), useRow);
    body()->addWidget(server);

    auto* statusRow = new QHBoxLayout;
    statusRow->setSpacing(10);
    m_status = textLabel({}, this);
    m_status->setWordWrap(true);
    statusRow->addWidget(m_status, 1);
    m_checkAgain = pushButton(QStringLiteral("Check Again"), this);
    statusRow->addWidget(m_checkAgain, 0, Qt::AlignTop);
    body()->addLayout(statusRow);

    // How to start a server, as the README tells it.
    body()->addWidget(
        noteLabel(QStringLiteral("With llama.cpp, start its server with a model file, then enter "
                                 "http://127.0.0.1:8080/v1 above:"),
                  this, true));
    body()->addWidget(
        commandLabel(QStringLiteral("llama-server -m model.gguf --port 8080 --jinja"), this));
    body()->addWidget(noteLabel(
        QStringLiteral("With Ollama, whose server listens once it is installed, fetch a model, "
                       "then enter http://localhost:11434/v1 and the model llama3.2:"),
        this, true));
    body()->addWidget(commandLabel(QStringLiteral("ollama pull llama3.2"), this));
    body()->addWidget(noteLabel(QStringLiteral("Ask needs a model that can call tools (--jinja "
                                               "lets llama-server offer them)."),
                                this, true));

    const Preferences& model = m_bridge.runtime().modelPreferences();
    m_address->setText(toQString(model.stringValue(preference_keys::aiEndpoint).value_or("")));
    m_model->setText(toQString(model.stringValue(preference_keys::aiModel).value_or("")));
    if (m_bridge.runtime().isDemo()) {
        for (QWidget* field : std::initializer_list<QWidget*>{m_address, m_model, m_use})
            field->setEnabled(false);
        body()->insertWidget(body()->indexOf(server) + 1, noteLabel(toQString(kDemo), this, true));
    }

    connect(m_address, &QLineEdit::textEdited, this, &LocalAICard::addressEdited);
    connect(m_address, &QLineEdit::returnPressed, this, &LocalAICard::useServer);
    connect(m_model, &QLineEdit::returnPressed, this, &LocalAICard::useServer);
    connect(m_use, &QPushButton::clicked, this, &LocalAICard::useServer);
    connect(m_checkAgain, &QPushButton::clicked, this, [this] { m_bridge.checkModel(); });
    connect(&m_bridge, &RuntimeBridge::modelStatusChanged, this, &LocalAICard::showStatus);
    connect(&m_bridge, &RuntimeBridge::intelligenceChanged, this, [this] {
        readSwitches();
        showStatus();
    });
    readSwitches();
    addressEdited();
    showStatus();
}

QCheckBox* LocalAICard::addSwitch(const QString& words, std::string_view key, QWidget* parent,
                                  QVBoxLayout* list) {
    auto* box = new QCheckBox(words, parent);
    box->setAccessibleName(words);
    list->addWidget(box);
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) {
        m_bridge.runtime().defaults().set(key, on);
        m_bridge.intelligenceSettingsChanged();
    });
    return box;
}

void LocalAICard::readSwitches() {
    const IntelligenceSwitches on = m_bridge.intelligence().switches();
    const std::pair<QCheckBox*, bool> boxes[] = {{m_enabled, on.enabled},
                                                 {m_autoSuggest, on.autoSuggest},
                                                 {m_autoFile, on.autoFile},
                                                 {m_tidyNames, on.tidyNames}};
    for (const auto& [box, value] : boxes) {
        const QSignalBlocker quiet(box);
        box->setChecked(value);
    }
    for (QCheckBox* feature : {m_autoSuggest, m_autoFile, m_tidyNames})
        feature->setEnabled(on.enabled);
}

void LocalAICard::addressEdited() {
    // Refused as typed, so that the words stand under the field before Enter.
    const QString text = m_address->text().trimmed();
    const bool fits = LoopbackEndpoint::parse(toStdString(text)).has_value();
    m_refusal->setRefusal(text.isEmpty() || fits ? QString()
                                                 : toQString(OnDeviceModelText::kNotLoopback));
    m_use->setEnabled(fits && !m_bridge.runtime().isDemo());
}

void LocalAICard::useServer() {
    if (m_bridge.runtime().isDemo())
        return;
    const auto refusal = IntelligenceController::setUpModel(
        m_bridge.runtime().defaults(), toStdString(m_address->text().trimmed()),
        toStdString(m_model->text()));
    if (refusal) {
        m_refusal->setRefusal(toQString(*refusal));
        return;
    }
    m_refusal->setRefusal({});
    // The address as it is kept: "localhost:8080" comes back in full.
    m_address->setText(toQString(
        m_bridge.runtime().defaults().stringValue(preference_keys::aiEndpoint).value_or("")));
    m_bridge.intelligenceSettingsChanged();
    showStatus();
}

void LocalAICard::showStatus() {
    const ModelStatus& status = m_bridge.modelStatus();
    QString words;
    if (m_bridge.isCheckingModel() || !status.known)
        words = toQString(kChecking);
    else if (status.unavailableReason)
        words = toQString(*status.unavailableReason);
    else
        words = toQString(kReady);
    setLabelText(m_status, words);
    m_checkAgain->setEnabled(!m_bridge.isCheckingModel());
}

}  // namespace copperwick::app
