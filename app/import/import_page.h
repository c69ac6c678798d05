#pragma once

// The Import section's screen: the drop area, a card for each file (and one
// for each file still being read), "Clear", the import bar, the last
// import's summary, the history of imports and how current each account is.
// Everything shown comes from the import model and the runtime; the screen
// holds only view state, and each card keeps its own across every change of
// the model, being made once per file and brought up to date in place.
//
// It opens the file chooser when the model asks for it (Ctrl+O), the column
// sheet for the model's mappingFileID, and the layouts sheet from its
// button. Main thread only.

#include <map>
#include <vector>

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "app/import/account_freshness_view.h"
#include "app/import/column_mapping_sheet.h"
#include "app/import/drop_area.h"
#include "app/import/file_panels.h"
#include "app/import/import_bar.h"
#include "app/import/import_file_card.h"
#include "app/import/import_layouts_sheet.h"
#include "app/import/recent_imports_section.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_page.h"

namespace copperwick::app {

class ImportPage : public SectionPage {
    Q_OBJECT

  public:
    explicit ImportPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // Imports the bundled sample file as a person would and checks the
    // ledger and the history afterwards.
    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    // Tests answer in the platform's panels' place.
    void setFilePanels(FilePanels panels) { m_panels = std::move(panels); }

    // Opens the file chooser and adds what was chosen.
    void chooseFiles();
    // Opens "Bank file layouts".
    void showLayouts();
    // The Import button: every ready file, in one save.
    void importFiles();

    [[nodiscard]] DropArea* dropArea() const { return m_dropArea; }
    // The file cards, in the model's order.
    [[nodiscard]] const std::vector<ImportFileCard*>& cards() const { return m_order; }
    // "Reading {file}…", one for each file still being read.
    [[nodiscard]] QStringList pendingTexts() const;
    [[nodiscard]] QPushButton* clearButton() const { return m_clear; }
    [[nodiscard]] ImportBar* importBar() const { return m_bar; }
    // The last import's summary; hidden when there is none.
    [[nodiscard]] QLabel* lastResultLabel() const { return m_lastResultText; }
    [[nodiscard]] RecentImportsSection* history() const { return m_history; }
    [[nodiscard]] AccountFreshnessView* freshness() const { return m_freshness; }
    [[nodiscard]] ColumnMappingSheet* mappingSheet() const { return m_mappingSheet; }
    [[nodiscard]] ImportLayoutsSheet* layoutsSheet() const { return m_layoutsSheet; }

  private:
    void importChanged();
    void showPending();
    void showCards();
    void syncMappingSheet();
    void orderTabs();
    SelfCheckOutcome importSample();

    RuntimeBridge& m_bridge;
    FilePanels m_panels = FilePanels::standard();
    DropArea* m_dropArea;
    QWidget* m_lastResult;
    QLabel* m_lastResultText;
    QWidget* m_filesHeader;
    QPushButton* m_clear;
    QVBoxLayout* m_pendingRows;
    std::vector<QWidget*> m_pendingShown;
    QStringList m_pendingTexts;
    QWidget* m_cardsBox;
    QVBoxLayout* m_cardRows;
    std::map<Uuid, ImportFileCard*> m_cards;
    std::vector<ImportFileCard*> m_order;
    RecentImportsSection* m_history;
    AccountFreshnessView* m_freshness;
    ImportBar* m_bar;
    QPointer<ColumnMappingSheet> m_mappingSheet;
    QPointer<ImportLayoutsSheet> m_layoutsSheet;
};

}  // namespace copperwick::app
