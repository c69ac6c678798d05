#pragma once

// The surface the screens' cards and sections stand on: a rounded panel in
// the palette's surface colour with a hairline edge, so that it reads as one
// piece on the window's colour in light and dark. Also the few text styles
// the cards share. Main thread only.

#include <QFrame>
#include <QLabel>
#include <QMargins>

namespace copperwick::app {

// The inner margins of a card whose layout sits flush with its frame.
inline const QMargins kCardMargins{16, 14, 16, 14};

class CardFrame : public QFrame {
    Q_OBJECT

  public:
    explicit CardFrame(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

// A label in the card's heading weight.
[[nodiscard]] QLabel* headingLabel(const QString& text, QWidget* parent, double scale = 1.0);
// A label in the secondary colour, wrapped, for notes and explanations.
[[nodiscard]] QLabel* noteLabel(const QString& text, QWidget* parent, bool small = false);

}  // namespace copperwick::app
