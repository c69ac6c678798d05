#pragma once

// A group of controls on the skin's surface colour with a hairline edge and
// round corners, as the Rules & Merchants screen and its sheets set their
// parts apart. Its layout is a vertical one with the card's own margins.

#include <QVBoxLayout>
#include <QWidget>

namespace copperwick::app {

class SurfaceCard : public QWidget {
    Q_OBJECT

  public:
    explicit SurfaceCard(QWidget* parent = nullptr, int margin = 18);

    [[nodiscard]] QVBoxLayout* cardLayout() const { return m_layout; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QVBoxLayout* m_layout;
};

}  // namespace copperwick::app
