#pragma once

// The settings cards of the household's records: its people, its accounts
// and its categories. Each lists its records as rows with their buttons,
// opens the record's sheet to add or change one, and lists its rows again
// when a save touches its kind of record. Main thread only.

#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_card.h"

namespace copperwick::app {

class RecordRow;

class PeopleCard : public SectionCard {
    Q_OBJECT

  public:
    explicit PeopleCard(RuntimeBridge& bridge, QWidget* parent = nullptr);
    [[nodiscard]] QPushButton* addButton() const { return m_add; }
    void changeSaved(const SavedChange& change);

  private:
    void showRows();
    void remove(const Uuid& personID);

    RuntimeBridge& m_bridge;
    QPushButton* m_add = nullptr;
};

class AccountsCard : public SectionCard {
    Q_OBJECT

  public:
    explicit AccountsCard(RuntimeBridge& bridge, QWidget* parent = nullptr);
    [[nodiscard]] QPushButton* addButton() const { return m_add; }
    // The "Edit…" button of an account's row, or null.
    [[nodiscard]] QPushButton* editButton(const Uuid& accountID) const;
    void changeSaved(const SavedChange& change);

  private:
    void showRows();

    RuntimeBridge& m_bridge;
    QPushButton* m_add = nullptr;
};

class CategoriesCard : public SectionCard {
    Q_OBJECT

  public:
    explicit CategoriesCard(RuntimeBridge& bridge, QWidget* parent = nullptr);
    [[nodiscard]] QPushButton* addButton() const { return m_add; }
    // The "Delete…" or "Edit…" button of a category's row, or null.
    [[nodiscard]] QPushButton* rowButton(const Uuid& categoryID, const QString& text) const;
    void changeSaved(const SavedChange& change);

  private:
    void showRows();

    RuntimeBridge& m_bridge;
    QPushButton* m_add = nullptr;
};

}  // namespace copperwick::app
