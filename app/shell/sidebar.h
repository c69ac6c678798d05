#pragma once

// The window's left column: "Demo workspace" on a demo, one row per section
// in the sidebar's order, the Review row's count, and the privacy note at the
// foot. Choosing a row (mouse, arrow keys, or assistive technology selecting
// it) tells sectionChosen; the window answers by setting the runtime's
// section, whose observer then calls setCurrentSection. Main thread only.

#include <cstddef>

#include <QLabel>
#include <QListWidget>
#include <QWidget>

#include "runtime/app_section.h"

namespace copperwick::app {

class Sidebar : public QWidget {
    Q_OBJECT

  public:
    // Item data: the count a row shows, as text; empty for none.
    static constexpr int kBadgeRole = Qt::UserRole + 1;

    explicit Sidebar(bool isDemo, QWidget* parent = nullptr);

    // Selects the section's row without telling sectionChosen.
    void setCurrentSection(AppSection section);
    // The Review row's count; 0 shows none at all.
    void setReviewCount(std::size_t count);

    [[nodiscard]] QListWidget* list() const { return m_list; }
    [[nodiscard]] QLabel* demoLabel() const { return m_demoLabel; }
    // The count the Review row shows, empty when it shows none.
    [[nodiscard]] QString reviewBadge() const;

  Q_SIGNALS:
    void sectionChosen(copperwick::AppSection section);

  private:
    void selectionChanged();

    QLabel* m_demoLabel = nullptr;
    QListWidget* m_list;
    AppSection m_current = AppSection::importFiles;
    bool m_updating = false;
};

}  // namespace copperwick::app
