#pragma once

// The bar under the file cards while there are files: how many transactions
// are ready from how many files, the promise of a backup and an undo, which
// files still wait for a decision, and the Import button, with progress
// while the import model is busy. It only shows what the page tells it and
// says when Import is pressed. Main thread only.

#include <optional>

#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include "runtime/import_model.h"

namespace copperwick::app {

class ImportBar : public QFrame {
    Q_OBJECT

  public:
    explicit ImportBar(QWidget* parent = nullptr);

    // Shows the import model as it stands.
    void showModel(const ImportModel& model);

    [[nodiscard]] QLabel* readyLabel() const { return m_ready; }
    [[nodiscard]] QLabel* blockedLabel() const { return m_blocked; }
    [[nodiscard]] QPushButton* importButton() const { return m_import; }
    [[nodiscard]] QProgressBar* progress() const { return m_progress; }

  Q_SIGNALS:
    void importClicked();

  protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void applyAccent();

    QLabel* m_ready;
    QLabel* m_blocked;
    QProgressBar* m_progress;
    QPushButton* m_import;
};

}  // namespace copperwick::app
