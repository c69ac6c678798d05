#pragma once

// The frame every sheet stands in: a dialog with one job. Its title heads
// it and names it (the window's title and its accessible name), an optional
// line under the title says what the sheet does, the body between is the
// sheet's own, and the foot holds the buttons: the default button at the
// right end, which Enter in any field presses; "Cancel" beside it, which
// like Escape closes the sheet with nothing done; and at the left end what
// the sheet offers besides its one job (Delete Rule, Import Saved
// Layout…). Every button is named by its words, and Enter or Space presses
// the one that has the keyboard. Main thread only.

#include <functional>

#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpacerItem>
#include <QString>
#include <QVBoxLayout>

#include "app/widgets/refusal_line.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class SheetDialog : public QDialog {
    Q_OBJECT

  public:
    // An empty `intro` leaves the line out.
    SheetDialog(const QString& title, const QString& intro, QWidget* parent = nullptr);
    ~SheetDialog() override;

    [[nodiscard]] QLabel* titleLabel() const { return m_title; }
    [[nodiscard]] QLabel* introLabel() const { return m_intro; }

    // Closing, by any road, ends an entry sheet's count at once.
    void done(int result) override;

    // From how many transactions the sheet's save runs beside the window.
    // Tests lower it to see the sheet wait.
    void setSaveInBackgroundFrom(std::size_t transactions) {
        m_saveInBackgroundFrom = transactions;
    }

  protected:
    // The sheet's own part, between the intro and the foot.
    [[nodiscard]] QVBoxLayout* body() const { return m_body; }
    // At least `width` wide, and wider when its fields need it. (A minimum
    // set on the dialog itself would stand in place of what the fields need,
    // and cut them off.)
    void keepAtLeastWide(int width);
    // A form added to the body: labels at the right, beside fields that
    // take the rest of the width.
    [[nodiscard]] QFormLayout* addForm();
    // The button Enter presses, at the right end of the foot.
    QPushButton* addDefaultButton(const QString& text);
    // Beside the default button; it rejects the sheet, as Escape does.
    QPushButton* addCancelButton(const QString& text = QStringLiteral("Cancel"));
    // At the left end of the foot, in the order added.
    QPushButton* addFootButton(const QString& text);
    // Tab follows the fields as they are laid out, top to bottom, whatever
    // order they were made in. Done as the sheet shows; a sheet that makes
    // fields afresh while open calls it again.
    void orderTabsAsLaidOut();
    // Saves `change` and closes the sheet once it stands: saved, or nothing
    // was left to save. A refused or failed save leaves the sheet open with
    // what was typed (the message bar says why). On a long history the save
    // runs beside the window and the sheet waits for it, disabled.
    void saveThenClose(LedgerRuntime& runtime, LedgerRuntime::PossibleChange change);
    // The same for an entry typed by hand, with its safety copy: a refusal
    // goes to `refused`, to stand under the field it concerns.
    void saveEntryThenClose(LedgerRuntime& runtime, LedgerRuntime::Change change,
                            std::function<void(const EntryError&)> refused);
    // A sheet for entries typed by hand counts among the runtime's entry
    // editors from now until it closes.
    void countAsEntryEditor(LedgerRuntime& runtime);

    void showEvent(QShowEvent* event) override;

  private:
    // Sets the sheet waiting until `done` is told, unless it already was.
    void waitFor(const std::function<void(std::function<void(const ApplyResult&)>)>& save,
                 std::function<void(const ApplyResult&)> settled);

    QLabel* m_title;
    QLabel* m_intro;
    QSpacerItem* m_width;
    QVBoxLayout* m_body;
    QHBoxLayout* m_lead;
    QHBoxLayout* m_trail;
    std::size_t m_saveInBackgroundFrom = LedgerRuntime::kLongHistory;
    // The runtime the sheet counts in while open, if it is an entry sheet.
    LedgerRuntime* m_countedIn = nullptr;

    void stopCounting();
};

// Lays the fields of one form row side by side in `box`, flush with the
// form's column.
QHBoxLayout* fieldRowLayout(QWidget* box);
// A form's field with the line of its refusal under it, as one row's field.
// `refusal` is set to the line, hidden until the form says why.
[[nodiscard]] QWidget* withRefusalLine(QWidget* field, RefusalLine*& refusal, QWidget* parent);

}  // namespace copperwick::app
