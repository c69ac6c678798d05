#pragma once

// One line of text that gives way when space runs short, ending in "…"
// rather than pushing the card wider; the whole text stays in its tooltip
// and accessible name. Main thread only.

#include <QLabel>

namespace copperwick::app {

class ElidedLabel : public QLabel {
    Q_OBJECT

  public:
    explicit ElidedLabel(const QString& text = {}, QWidget* parent = nullptr);

    void setFullText(const QString& text);
    [[nodiscard]] const QString& fullText() const { return m_fullText; }
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void elide();

    QString m_fullText;
};

}  // namespace copperwick::app
