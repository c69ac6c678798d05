#pragma once

// Where files come in: the drop target at the head of the Import screen,
// with the two buttons that open the file chooser and the list of bank file
// layouts. While files are dragged over it, it lights up in the skin's
// accent. It only says what came in; the page hands it to the import model.
// Main thread only.

#include <filesystem>
#include <vector>

#include <QPushButton>

#include "app/widgets/card_frame.h"

namespace copperwick::app {

class DropArea : public CardFrame {
    Q_OBJECT

  public:
    explicit DropArea(QWidget* parent = nullptr);

    [[nodiscard]] bool isDragTarget() const { return m_dragTarget; }
    [[nodiscard]] QPushButton* chooseFilesButton() const { return m_chooseFiles; }
    [[nodiscard]] QPushButton* layoutsButton() const { return m_layouts; }

  Q_SIGNALS:
    void filesDropped(const std::vector<std::filesystem::path>& files);
    void chooseFilesClicked();
    void layoutsClicked();

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void setDragTarget(bool target);

    QPushButton* m_chooseFiles;
    QPushButton* m_layouts;
    bool m_dragTarget = false;
};

}  // namespace copperwick::app
