#include "app/import/import_page.h"

#include <system_error>

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QProgressBar>
#include <QTimer>

#include "app/import/bundled_samples.h"
#include "app/shell/sections.h"
#include "app/widgets/card_frame.h"
#include "app/widgets/page_header.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/import/import_words.h"
#include "runtime/preferences.h"

namespace copperwick::app {

namespace {

const QString kSubtitle = QStringLiteral(
    "Add bank CSV, OFX, QFX, QIF or CAMT.053 files. Copperwick shows exactly what it found, and "
    "nothing is "
    "saved until you choose Import.");

}  // namespace

ImportPage::ImportPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge) {
    // The title scrolls with the rest, as on every screen; the import bar
    // stays at the foot.
    QVBoxLayout* column =
        makeScrollingColumn(toQString(sectionInfo(AppSection::importFiles).label), kSubtitle);
    QWidget* content = scrollArea()->widget();

    m_dropArea = new DropArea(content);
    column->addWidget(m_dropArea);

    m_lastResult = new QWidget(content);
    auto* resultRow = new QHBoxLayout(m_lastResult);
    resultRow->setContentsMargins(2, 0, 0, 0);
    resultRow->setSpacing(8);
    resultRow->addWidget(new SymbolView("checkmark.circle.fill", 18, m_lastResult));
    m_lastResultText = textLabel({}, m_lastResult);
    m_lastResultText->setWordWrap(true);
    resultRow->addWidget(m_lastResultText, 1);
    m_lastResult->setVisible(false);
    column->addWidget(m_lastResult);

    m_filesHeader = new QWidget(content);
    auto* filesRow = new QHBoxLayout(m_filesHeader);
    filesRow->setContentsMargins(0, 0, 0, 0);
    filesRow->addStretch(1);
    m_clear = pushButton(QStringLiteral("Clear"), m_filesHeader);
    filesRow->addWidget(m_clear);
    m_filesHeader->setVisible(false);
    column->addWidget(m_filesHeader);

    m_pendingRows = new QVBoxLayout;
    m_pendingRows->setSpacing(10);
    column->addLayout(m_pendingRows);

    m_cardsBox = new QWidget(content);
    m_cardRows = new QVBoxLayout(m_cardsBox);
    m_cardRows->setContentsMargins(0, 0, 0, 0);
    m_cardRows->setSpacing(14);
    column->addWidget(m_cardsBox);

    m_history = new RecentImportsSection(bridge, content);
    column->addWidget(m_history);
    m_freshness = new AccountFreshnessView(bridge, content);
    column->addWidget(m_freshness);
    column->addStretch(1);

    m_bar = new ImportBar(this);
    m_bar->setVisible(false);
    layout()->addWidget(m_bar);

    connect(m_dropArea, &DropArea::filesDropped, this,
            [this](const std::vector<std::filesystem::path>& files) {
                m_bridge.importer().add(files, m_bridge.runtime());
            });
    connect(m_dropArea, &DropArea::chooseFilesClicked, this, &ImportPage::chooseFiles);
    connect(m_dropArea, &DropArea::layoutsClicked, this, &ImportPage::showLayouts);
    connect(m_clear, &QPushButton::clicked, this, [this] { m_bridge.importer().clear(); });
    connect(m_bar, &ImportBar::importClicked, this, &ImportPage::importFiles);
    connect(&m_bridge, &RuntimeBridge::importChanged, this, &ImportPage::importChanged);
    // A save elsewhere (a new account, an archived one, another program's
    // import) changes what the cards offer and plan against.
    connect(&m_bridge, &RuntimeBridge::changeSaved, this, [this] { showCards(); });
    importChanged();
}

void ImportPage::importChanged() {
    ImportModel& importer = m_bridge.importer();
    if (importer.requestFilePicker()) {
        // Answered once: the request is taken back before the chooser opens,
        // and the chooser opens after this change has reached everyone.
        importer.setRequestFilePicker(false);
        QTimer::singleShot(0, this, &ImportPage::chooseFiles);
        return;
    }
    showPending();
    showCards();
    syncMappingSheet();
}

void ImportPage::showPending() {
    QStringList texts;
    for (const auto& file : m_bridge.importer().pendingFiles())
        texts.append(QStringLiteral("Reading %1…").arg(toQString(file.filename().string())));
    if (texts == m_pendingTexts)
        return;
    for (QWidget* row : m_pendingShown) {
        // Out of sight at once: until it goes, it would stand over the card
        // that takes its place.
        m_pendingRows->removeWidget(row);
        row->hide();
        row->deleteLater();
    }
    m_pendingShown.clear();
    for (const QString& text : texts) {
        auto* card = new CardFrame(m_cardsBox->parentWidget());
        auto* row = new QHBoxLayout(card);
        row->setContentsMargins(kCardMargins);
        row->setSpacing(12);
        row->addWidget(new SymbolView("doc.text", 22, card));
        row->addWidget(textLabel(text, card), 1);
        auto* progress = new QProgressBar(card);
        progress->setRange(0, 0);
        progress->setTextVisible(false);
        progress->setFixedWidth(140);
        progress->setAccessibleName(text);
        row->addWidget(progress);
        card->setAccessibleName(text);
        m_pendingRows->addWidget(card);
        card->show();
        m_pendingShown.push_back(card);
    }
    m_pendingTexts = texts;
}

QStringList ImportPage::pendingTexts() const {
    return m_pendingTexts;
}

void ImportPage::showCards() {
    const ImportModel& importer = m_bridge.importer();
    for (auto it = m_cards.begin(); it != m_cards.end();) {
        if (importer.file(it->first)) {
            ++it;
            continue;
        }
        // The card may be the sender of what removed it: it goes after the event.
        it->second->hide();
        m_cardRows->removeWidget(it->second);
        it->second->deleteLater();
        it = m_cards.erase(it);
    }
    std::vector<ImportFileCard*> order;
    for (const auto& file : importer.files()) {
        ImportFileCard*& card = m_cards[file.id];
        if (!card)
            card = new ImportFileCard(m_bridge, file.id, m_cardsBox);
        card->setFile(file);
        order.push_back(card);
    }
    if (order != m_order) {
        for (ImportFileCard* card : m_order) {
            if (std::find(order.begin(), order.end(), card) != order.end())
                m_cardRows->removeWidget(card);
        }
        for (ImportFileCard* card : order) {
            m_cardRows->addWidget(card);
            card->show();
        }
        m_order = std::move(order);
    }
    // Cards come and go, and the freshness rows are made again after a save.
    orderTabs();

    const bool hasFiles = !importer.files().empty();
    m_filesHeader->setVisible(hasFiles);
    // Empty, it would still take the column's spacing twice.
    m_cardsBox->setVisible(hasFiles);
    m_bar->setVisible(hasFiles);
    m_bar->showModel(importer);
    m_lastResult->setVisible(importer.lastResult().has_value());
    if (importer.lastResult())
        setLabelText(m_lastResultText, toQString(*importer.lastResult()));
}

void ImportPage::orderTabs() {
    app::orderTabs({m_dropArea, m_filesHeader, m_cardsBox, m_bar, m_history, m_freshness});
}

void ImportPage::syncMappingSheet() {
    ImportModel& importer = m_bridge.importer();
    const auto& wanted = importer.mappingFileID();
    if (m_mappingSheet && (!wanted || *wanted != m_mappingSheet->fileID() ||
                           !importer.file(m_mappingSheet->fileID()))) {
        m_mappingSheet->reject();
        return;
    }
    if (!wanted || m_mappingSheet)
        return;
    const ImportFile* file = importer.file(*wanted);
    if (!file) {
        importer.setMappingFileID(std::nullopt);
        return;
    }
    auto* sheet = new ColumnMappingSheet(m_bridge, *file, window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_mappingSheet = sheet;
    connect(sheet, &QDialog::finished, this, [this, sheet] {
        if (m_mappingSheet == sheet)
            m_mappingSheet = nullptr;
        m_bridge.importer().setMappingFileID(std::nullopt);
    });
    sheet->open();
}

void ImportPage::chooseFiles() {
    const auto files = m_panels.openBankFiles(window());
    m_bridge.importer().add(files, m_bridge.runtime());
}

void ImportPage::showLayouts() {
    if (m_layoutsSheet) {
        m_layoutsSheet->raise();
        m_layoutsSheet->activateWindow();
        return;
    }
    auto* sheet = new ImportLayoutsSheet(m_bridge, m_panels, window());
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    m_layoutsSheet = sheet;
    sheet->open();
}

void ImportPage::importFiles() {
    ImportModel& importer = m_bridge.importer();
    if (importer.isBusy() || importer.readyFiles().empty())
        return;
    LedgerRuntime& runtime = m_bridge.runtime();
    const std::string archive =
        runtime.defaults().stringValue(preference_keys::archiveFolder).value_or("");
    importer.startCommit(runtime, archive);
}

std::vector<SelfCheck> ImportPage::selfChecks() {
    return {{"import a sample bank file", [this] { return importSample(); }}};
}

SelfCheckOutcome ImportPage::importSample() {
    LedgerRuntime& runtime = m_bridge.runtime();
    ImportModel& importer = m_bridge.importer();
    const auto folder = samplesFolder();
    if (!folder)
        return {false, "The sample bank files aren't installed."};
    // A copy in the demo's own folder: an archive folder in the preferences
    // would otherwise move the installed sample away.
    const std::string name = "chase-checking.csv";
    const auto copy = runtime.dataFolder() / name;
    std::error_code error;
    std::filesystem::copy_file(*folder / name, copy,
                               std::filesystem::copy_options::overwrite_existing, error);
    if (error)
        return {false, "Couldn't copy " + name + ": " + error.message()};

    importer.add({copy}, runtime);
    importer.waitForAnalyses(runtime);
    QCoreApplication::processEvents();
    const auto card = std::find_if(m_order.begin(), m_order.end(), [&](ImportFileCard* shown) {
        return shown->fileName() == toQString(name);
    });
    if (card == m_order.end())
        return {false, name + " has no card: " + runtime.errorMessage().value_or("no message")};
    // Where Copperwick can't tell the account, the first one offered, as a
    // person might choose.
    const ImportFile* file = importer.file((*card)->fileID());
    if (file->choice.kind == ImportFile::AccountChoice::Kind::undecided) {
        QComboBox* picker = (*card)->accountPicker();
        if (picker->count() < 3)
            return {false, "The account picker offers no account."};
        picker->setCurrentIndex(1);
        Q_EMIT picker->activated(1);
    }
    if (const auto blocker = importer.file((*card)->fileID())->blocker())
        return {false, name + " waits: " + *blocker};

    const std::size_t before = runtime.ledger().transactions.size();
    QPushButton* button = m_bar->importButton();
    if (!button->isEnabled())
        return {false, "The Import button is off with a ready file."};
    button->click();
    // The import saves in the background; the window goes on meanwhile.
    runtime.mainQueue()->runUntil([&importer] { return !importer.isCommitting(); });

    const auto& batches = importer.lastBatches();
    if (batches.empty())
        return {false, "Import saved nothing: " +
                           runtime.errorMessage().value_or(importer.lastResult().value_or(""))};
    const auto added = static_cast<std::size_t>(transactionsAdded(batches.front().counts));
    const std::size_t after = runtime.ledger().transactions.size();
    const bool listed =
        m_history->model()->rowCount() > 0 && m_history->model()->batch(0).id == batches.front().id;
    const Account* account = runtime.ledger().account(batches.front().accountID);
    const bool ok = added > 0 && after == before + added && listed;
    return {ok, importer.lastResult().value_or("") + " The ledger went from " +
                    std::to_string(before) + " to " + std::to_string(after) +
                    " transactions, into " + (account ? account->name : "no account") + "; " +
                    (listed ? "the history lists it first." : "the history doesn't list it.")};
}

}  // namespace copperwick::app
