#pragma once

// Text measured exactly as it will be drawn: one Pango context over the
// thread's fontconfig fonts, with the unhinted metrics of a PDF page, shared
// by the composer that measures and the painter that draws. A text that is
// measured at a width wraps into the same lines when it is drawn at it.
//
// Not copyable; one per PDF being made, on the thread that makes it.

#include <cstddef>
#include <memory>
#include <string_view>

#include "pdf/draw_command.h"

typedef struct _PangoContext PangoContext;
typedef struct _PangoLayout PangoLayout;

namespace copperwick::pdf {

struct TextSize {
    double width = 0;
    double height = 0;
};

class TextMeasure {
  public:
    TextMeasure();
    ~TextMeasure();
    TextMeasure(const TextMeasure&) = delete;
    TextMeasure& operator=(const TextMeasure&) = delete;

    // The system font, and the serif that elegant headings are set in:
    // Georgia when fontconfig has it, else DejaVu Serif.
    static constexpr std::string_view kSystemFamily = "DejaVu Sans";
    [[nodiscard]] std::string_view serifFamily() const;

    // The size of `text` wrapped at `width`; a width of 0 or less doesn't wrap.
    [[nodiscard]] TextSize measure(std::string_view text, const FontSpec& font, double width) const;

    // How many bytes of `text` fit within `width` and `height`: whole lines,
    // so the cut falls between words (or inside a word too long for a line).
    // The whole length when everything fits; 0 when not even a line does.
    [[nodiscard]] std::size_t fittingPrefix(std::string_view text, const FontSpec& font,
                                            double width, double height) const;

    // The layout of `text`, set up as measure() sets it, for the painter.
    [[nodiscard]] PangoLayout* layout(std::string_view text, const FontSpec& font, double width,
                                      TextAlign align) const;
    [[nodiscard]] PangoContext* context() const;

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace copperwick::pdf
