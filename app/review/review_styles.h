#pragma once

// The Review screen's own touches on its cards: the tinted panel where the
// system speaks (a suggestion) rather than the person, and the look of the
// card's main button. Colours are the palette's. Main thread only.

#include <QFrame>
#include <QPushButton>

namespace copperwick::app {

// A softer panel inside a card, tinted with the skin's selection colour.
class TintPanel : public QFrame {
    Q_OBJECT

  public:
    explicit TintPanel(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

// Gives a button the look of the action its card is for: the selection
// colour while it can be pressed, the plain look while it can't. Called
// again when the palette changes, since the colours are the skin's.
void makePrimary(QPushButton* button);

}  // namespace copperwick::app
