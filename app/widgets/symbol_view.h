#pragma once

// A symbol's icon at a fixed size, for a row or a bar that shows one. It
// looks the icon up each time it paints, so that it follows the skin's switch
// between the light and dark icon themes. Decorative: the words beside it
// carry the meaning, so it has no accessible name of its own.

#include <string>
#include <string_view>

#include <QWidget>

namespace copperwick::app {

class SymbolView : public QWidget {
    Q_OBJECT

  public:
    SymbolView(std::string_view symbol, int size, QWidget* parent = nullptr);

    void setSymbol(std::string_view symbol);
    [[nodiscard]] const std::string& symbol() const { return m_symbol; }
    [[nodiscard]] QSize sizeHint() const override { return {m_size, m_size}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::string m_symbol;
    int m_size;
};

}  // namespace copperwick::app
