#pragma once

// The surface the Review screen's cards and sections stand on: a rounded
// panel in the palette's surface colour with a hairline edge, so that it
// reads as one piece on the window's colour in light and dark. Also the few
// text styles the screen's cards share. Main thread only.

#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace copperwick::app {

class CardFrame : public QFrame {
    Q_OBJECT

  public:
    explicit CardFrame(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

// A softer panel inside a card, tinted with the skin's selection colour:
// where the system speaks (a suggestion) rather than the person.
class TintPanel : public QFrame {
    Q_OBJECT

  public:
    explicit TintPanel(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

// Gives a button the look of the action the card is for: the selection
// colour while it can be pressed, the plain look while it can't. Called
// again when the palette changes, since the colours are the skin's.
void makePrimary(QPushButton* button);

// A label in the card's heading weight.
[[nodiscard]] QLabel* headingLabel(const QString& text, QWidget* parent, double scale = 1.0);
// A label in the secondary colour, wrapped, for notes and explanations.
[[nodiscard]] QLabel* noteLabel(const QString& text, QWidget* parent, bool small = false);

}  // namespace copperwick::app
