#pragma once

// The panel beside the Transactions table that tells where the chosen line
// came from and why it is filed as it is, and offers what can be done to
// it. With nothing chosen it says how to begin; with several it shows their
// sum and the actions for all of them; with one it shows the line in
// sections: its filing (with an editor like the review card's), its
// details, why it is filed so, its source, its note, corrections and
// splits, and the way back to automatic matching or out of the records.
// A line Local AI filed can be kept as it is ("Looks Right"), and any line
// can be asked about ("What is this charge?").
//
// Everything it changes goes through the runtime as one undoable step. It
// reads the live ledger again whenever a save names a line it shows.
// Main thread only. The bridge and its runtime must outlive it.

#include <vector>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "app/shell/runtime_bridge.h"
#include "app/transactions/charge_question.h"
#include "app/transactions/transaction_actions.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class TransactionInspector : public QScrollArea {
    Q_OBJECT

  public:
    TransactionInspector(RuntimeBridge& bridge, TransactionActions& actions,
                         QWidget* parent = nullptr);

    void setSelection(std::vector<Uuid> ids);
    [[nodiscard]] const std::vector<Uuid>& selection() const { return m_ids; }
    // Reads the lines again when the save touched one of them.
    void changeSaved(const SavedChange& change);

    // The person's actions on the one line shown.
    void saveFiling();
    void approveSuggestion();
    // Keeps Local AI's filing of the line shown as the person's own.
    void looksRight();
    void saveNote();
    void openCorrection();
    void openSplit();

    // The controls of the one line shown; null while none is.
    [[nodiscard]] QLineEdit* merchantField() const { return m_merchant; }
    [[nodiscard]] QComboBox* kindBox() const { return m_kind; }
    [[nodiscard]] QComboBox* categoryBox() const { return m_category; }
    [[nodiscard]] QCheckBox* rememberBox() const { return m_remember; }
    [[nodiscard]] QPushButton* saveFilingButton() const { return m_saveFiling; }
    [[nodiscard]] QLineEdit* noteField() const { return m_note; }
    [[nodiscard]] QPushButton* saveNoteButton() const { return m_saveNote; }
    [[nodiscard]] QPushButton* correctButton() const { return m_correct; }
    [[nodiscard]] QPushButton* splitButton() const { return m_split; }
    // "Looks Right", for a line Local AI filed that nobody has checked.
    [[nodiscard]] QPushButton* looksRightButton() const { return m_looksRight; }
    [[nodiscard]] ChargeQuestion* chargeQuestion() const { return m_chargeQuestion; }
    // Any button of the panel by its words; null when there is none.
    [[nodiscard]] QPushButton* button(const QString& words) const;
    // Every text the panel shows, one a line, as a person reads it.
    [[nodiscard]] QString shownText() const;

  private:
    void rebuild();
    void buildNone(QVBoxLayout* layout);
    void buildSeveral(QVBoxLayout* layout);
    void buildOne(QVBoxLayout* layout, const LedgerTransaction& line);
    void addActionButtons(QVBoxLayout* layout, bool withFiling);
    void fillCategories();
    QLabel* addHeading(QVBoxLayout* layout, const QString& words);
    QLabel* addText(QVBoxLayout* layout, const QString& words, bool quiet = false);

    RuntimeBridge& m_bridge;
    LedgerRuntime& m_runtime;
    TransactionActions& m_actions;
    std::vector<Uuid> m_ids;
    QWidget* m_content = nullptr;
    QLineEdit* m_merchant = nullptr;
    QComboBox* m_kind = nullptr;
    QComboBox* m_category = nullptr;
    QCheckBox* m_remember = nullptr;
    class RefusalLine* m_filingRefusal = nullptr;
    QPushButton* m_saveFiling = nullptr;
    QLineEdit* m_note = nullptr;
    QPushButton* m_saveNote = nullptr;
    QPushButton* m_correct = nullptr;
    QPushButton* m_split = nullptr;
    QPushButton* m_looksRight = nullptr;
    ChargeQuestion* m_chargeQuestion = nullptr;
};

}  // namespace copperwick::app
