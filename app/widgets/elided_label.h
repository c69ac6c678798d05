#pragma once

// A one-line label that shortens its text with "…" to the width it is given,
// for names that can run long (a file's, an account's). Assistive technology
// and the tooltip always have the whole text. Main thread only.

#include <QLabel>
#include <QString>

namespace copperwick::app {

class ElidedLabel : public QLabel {
    Q_OBJECT

  public:
    explicit ElidedLabel(QWidget* parent = nullptr);
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    void setFullText(const QString& text);
    [[nodiscard]] const QString& fullText() const { return m_fullText; }
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void elide();

    QString m_fullText;
};

}  // namespace copperwick::app
