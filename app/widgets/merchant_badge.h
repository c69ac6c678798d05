#pragma once

// The round badge a merchant wears wherever it is named: its logo when the
// file loads, else the symbol of its category through symbolIcon, else its
// initials, always on the colour of its tone. Which of these it is comes
// from MerchantIconCatalog; this only draws it.
//
// The tones take their lightness from the palette (a soft fill of the tone
// over the surface, the ink drawn in the tone's deeper or paler form), so
// that the badge sits on the surface in light and dark alike. Decorative:
// the name beside it carries the meaning, so it has no accessible name of
// its own. Main thread only.

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPalette>
#include <QWidget>

#include "core/presentation/merchant_icons.h"

namespace copperwick::app {

class MerchantBadge : public QWidget {
    Q_OBJECT

  public:
    // What the badge shows, the first that is there.
    enum class Face {
        logo,
        symbol,
        initials,
    };

    explicit MerchantBadge(int size, QWidget* parent = nullptr);

    void setDescriptor(const MerchantIconDescriptor& descriptor);
    [[nodiscard]] const MerchantIconDescriptor& descriptor() const { return m_descriptor; }
    [[nodiscard]] Face face() const;
    [[nodiscard]] QSize sizeHint() const override { return {m_size, m_size}; }

    // What a badge with `descriptor` shows.
    [[nodiscard]] static Face faceOf(const MerchantIconDescriptor& descriptor);
    // Draws the badge of `descriptor` into `area`, as the widget does; for a
    // list's delegate, which paints rows rather than holding widgets.
    static void paint(QPainter& painter, const QRect& area,
                      const MerchantIconDescriptor& descriptor, const QPalette& palette,
                      const QFont& font);

    // The round's fill and the colour of the symbol or initials on it.
    [[nodiscard]] static QColor toneFill(MerchantIconDescriptor::Tone tone,
                                         const QPalette& palette);
    [[nodiscard]] static QColor toneInk(MerchantIconDescriptor::Tone tone, const QPalette& palette);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    MerchantIconDescriptor m_descriptor;
    int m_size;
};

}  // namespace copperwick::app
