#pragma once

// The words of a refusal under the field they are about, behind a warning
// sign. Hidden until a form shows it; the words are the label's, and they are
// also its accessible name, so that a screen reader says why.

#include <QLabel>
#include <QWidget>

namespace copperwick::app {

class RefusalLine : public QWidget {
    Q_OBJECT

  public:
    explicit RefusalLine(QWidget* parent = nullptr);

    [[nodiscard]] QLabel* label() const { return m_label; }
    // Shows `text`, or hides the line for an empty one.
    void setRefusal(const QString& text);

  private:
    QLabel* m_label;
};

}  // namespace copperwick::app
