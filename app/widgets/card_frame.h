#pragma once

// The surface the screens' cards and sections stand on: a rounded panel in
// the palette's surface colour with a hairline edge, so that it reads as one
// piece on the window's colour in light and dark. Main thread only.

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

}  // namespace copperwick::app
