#pragma once

// One dropped file on the Import screen: its name and layout, whether it is
// included, where its rows go (an account, or a new one and the new
// account's details), why it can't be imported yet, the sign toggle, and
// what importing it would do.
//
// A card lives as long as its file is on the list and is brought in line
// with the import model by setFile whenever anything changes, in place: the
// field a person is typing in keeps its text and focus, and what they
// opened stays open. What the person does goes straight to the import
// model, by the file's id. A file no layout fits can be read by Local AI
// while its switch is on, and the card says how that went. Main thread
// only.

#include <functional>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include "app/import/import_plan_summary.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/card_frame.h"
#include "app/widgets/elided_label.h"
#include "core/model/uuid.h"
#include "runtime/import_model.h"

namespace copperwick::app {

class ImportFileCard : public CardFrame {
    Q_OBJECT

  public:
    ImportFileCard(RuntimeBridge& bridge, const Uuid& fileID, QWidget* parent = nullptr);

    [[nodiscard]] const Uuid& fileID() const { return m_fileID; }
    // Shows the file as the import model now holds it.
    void setFile(const ImportFile& file);

    [[nodiscard]] QString fileName() const { return m_fileName->fullText(); }
    [[nodiscard]] QLabel* layoutLabel() const { return m_layout; }
    // Which columns were read, when the layout was worked out from the file.
    [[nodiscard]] QLabel* workedOutLabel() const { return m_workedOut; }
    [[nodiscard]] QCheckBox* includeBox() const { return m_include; }
    [[nodiscard]] QToolButton* removeButton() const { return m_remove; }
    [[nodiscard]] QPushButton* chooseColumnsButton() const { return m_chooseColumns; }
    // "Ask Local AI", for a file no layout fits, while Local AI is on.
    [[nodiscard]] QPushButton* askLocalAIButton() const { return m_askLocalAI; }
    // What Local AI is doing with the file's columns, or what came of it.
    [[nodiscard]] QWidget* layoutHelp() const { return m_help; }
    [[nodiscard]] QLabel* layoutHelpLabel() const { return m_helpText; }
    // "Choose Columns Myself…", while Local AI is working the columns out.
    [[nodiscard]] QPushButton* chooseMyselfButton() const { return m_chooseMyself; }
    [[nodiscard]] QComboBox* accountPicker() const { return m_account; }
    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QComboBox* ownerPicker() const { return m_owner; }
    [[nodiscard]] QComboBox* typePicker() const { return m_type; }
    [[nodiscard]] QLineEdit* lastFourField() const { return m_lastFour; }
    [[nodiscard]] QCheckBox* sharedBox() const { return m_shared; }
    [[nodiscard]] QLabel* suggestionLabel() const { return m_suggestion; }
    // The blocker's words, or empty when the file can be imported.
    [[nodiscard]] QString blockerText() const;
    [[nodiscard]] QCheckBox* flipBox() const { return m_flip; }
    [[nodiscard]] ImportPlanSummary* summary() const { return m_summary; }

  private:
    QWidget* makeHeader();
    QWidget* makeDraftForm();
    void fillAccounts(const Ledger& ledger);
    void fillPeople(const Ledger& ledger);
    void showChoice(const ImportFile& file);
    void showDraft(const ImportFile::NewAccountDraft& draft);
    void chooseAccount(int index);
    // Local AI's part, by the file and by its switch.
    void showLayoutHelp(const ImportFile& file);
    // Changes the new account's details in the import model.
    void editDraft(const std::function<void(ImportFile::NewAccountDraft&)>& change);

    RuntimeBridge& m_bridge;
    Uuid m_fileID;
    ElidedLabel* m_fileName;
    QLabel* m_layout;
    QLabel* m_workedOut;
    QCheckBox* m_include;
    QToolButton* m_remove;
    QWidget* m_body;
    QWidget* m_unrecognized;
    QPushButton* m_chooseColumns;
    QPushButton* m_askLocalAI;
    QWidget* m_help;
    class SymbolView* m_helpSymbol;
    QLabel* m_helpText;
    QPushButton* m_chooseMyself;
    QComboBox* m_account;
    QWidget* m_draftForm;
    QLineEdit* m_name;
    QComboBox* m_owner;
    QComboBox* m_type;
    QLineEdit* m_lastFour;
    QCheckBox* m_shared;
    QLabel* m_suggestion;
    QWidget* m_blocker;
    QLabel* m_blockerText;
    QWidget* m_flipRow;
    QCheckBox* m_flip;
    ImportPlanSummary* m_summary;
    // What the pickers list now, to fill them again only when it changes.
    std::vector<std::pair<Uuid, std::string>> m_accountsShown;
    std::vector<std::pair<Uuid, std::string>> m_peopleShown;
};

}  // namespace copperwick::app
