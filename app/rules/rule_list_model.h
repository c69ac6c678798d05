#pragma once

// The person's rules in running order, one row each: the name, the rule's
// description as core words it, and its switch as the row's check state.
// Dragging a row within a view moves it, and so does moveRule from the
// keyboard; either way the model asks for the new order with orderRequested,
// and a switch flipped asks with switchRequested. The model changes nothing
// in the ledger itself: whoever owns it runs the change through the runtime
// and calls refresh after a save (a failed one too, to put the rows back).
//
// Main thread only.

#include <optional>
#include <unordered_map>
#include <vector>

#include "app/rules/keyed_list_model.h"
#include "app/rules/row_roles.h"
#include "core/model/ledger.h"

namespace copperwick::app {

class RuleListModel : public KeyedListModel {
    Q_OBJECT

  public:
    // Beside the name: the rule's description ("Text contains “ACME” → Dining, Spending") and its
    // id as text.
    static constexpr int DescriptionRole = kDescriptionRole;
    static constexpr int RuleIDRole = kRecordIDRole;

    explicit RuleListModel(QObject* parent = nullptr);

    // Reads the rules again.
    void refresh(const Ledger& ledger);

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] Qt::DropActions supportedDropActions() const override;
    // Only single rows move: the view drops a dragged row with this.
    bool moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                  const QModelIndex& destinationParent, int destinationChild) override;

    [[nodiscard]] const Rule* rule(int row) const;
    // One step up (-1) or down (+1), as a keyboard move; false at an end.
    bool moveRule(int row, int step);

  Q_SIGNALS:
    void orderRequested(const std::vector<copperwick::Uuid>& ids);
    void switchRequested(const copperwick::Uuid& id, bool enabled);

  private:
    struct Row {
        Rule rule;
        QString description;

        friend bool operator==(const Row&, const Row&) = default;
    };

    void requestOrder();

    std::unordered_map<std::string, Row> m_rows;
};

}  // namespace copperwick::app
