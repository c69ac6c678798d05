#pragma once

// A rounded card on the skin's surface colour, with a hairline border, as
// each file, section and figure group of the Import screen sits on. Its
// colours come from the palette (Base for the surface), so light and dark
// both work. Main thread only.

#include <QFrame>

namespace copperwick::app {

class CardFrame : public QFrame {
    Q_OBJECT

  public:
    explicit CardFrame(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace copperwick::app
