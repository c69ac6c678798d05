#pragma once

// What Local AI filed by itself and nobody has looked at yet, one row per
// bank text as the review queue groups it. These lines count in reports
// already; "Looks Right" makes a filing the person's own (remembered for
// the merchant), "All Look Right" does so for every row, and "Change"
// opens the review card in the row's place, where filing it differently
// tells Local AI never to file that bank text again. Each is one undoable
// step through the runtime.
//
// Hidden while there is nothing to check. Main thread only. The runtime
// must outlive the section.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QAbstractItemModel>
#include <QPushButton>

#include "app/review/review_group_card.h"
#include "app/widgets/section_card.h"
#include "core/review/review_queue.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class AIFiledSection : public SectionCard {
    Q_OBJECT

  public:
    static constexpr std::string_view kTitle = "Filed by Local AI";
    static constexpr std::string_view kDetail =
        "Local AI filed these on this computer and they're counted in your reports. Looks Right "
        "keeps the filing and teaches Copperwick; Change lets you file it yourself, and Local AI "
        "won't file that bank text again.";

    // `merchantNames` completes the merchant field of a card opened by Change.
    AIFiledSection(LedgerRuntime& runtime, QAbstractItemModel* merchantNames,
                   QWidget* parent = nullptr);

    void setGroups(const std::vector<ReviewGroup>& groups);
    [[nodiscard]] const std::vector<ReviewGroup>& groups() const { return m_groups; }

    // Keeps the model's filing of the group's lines.
    void looksRight(const std::string& groupID);
    void allLookRight();
    // Opens the review card in the row's place, or closes it again.
    void change(const std::string& groupID);
    void cancelChange();

    [[nodiscard]] QPushButton* allLookRightButton() const { return m_all; }
    [[nodiscard]] QPushButton* looksRightButton(const std::string& groupID) const;
    [[nodiscard]] QPushButton* changeButton(const std::string& groupID) const;
    // The card opened by Change, while it is.
    [[nodiscard]] ReviewGroupCard* editor() const { return m_editor; }
    [[nodiscard]] const std::optional<std::string>& editingID() const { return m_editingID; }

  Q_SIGNALS:
    // The card opened by Change saved its decision.
    void groupChanged(const std::string& groupID);

  private:
    void rebuild();
    void confirm(std::vector<Uuid> ids);
    QWidget* makeRow(const ReviewGroup& group);

    LedgerRuntime& m_runtime;
    QAbstractItemModel* m_merchantNames;
    std::vector<ReviewGroup> m_groups;
    std::optional<std::string> m_editingID;
    QPushButton* m_all = nullptr;
    ReviewGroupCard* m_editor = nullptr;
    std::map<std::string, std::pair<QPushButton*, QPushButton*>> m_buttons;
};

}  // namespace copperwick::app
