#include "pdf/text_measure.h"

#include <cmath>
#include <mutex>
#include <string>

#include <cairo.h>
#include <pango/pangocairo.h>

namespace copperwick::pdf {

namespace {

bool fontconfigHas(std::string_view family) {
    PangoFontMap* map = pango_cairo_font_map_get_default();
    PangoFontFamily** families = nullptr;
    int count = 0;
    pango_font_map_list_families(map, &families, &count);
    bool found = false;
    for (int i = 0; i < count && !found; ++i)
        found = g_ascii_strcasecmp(pango_font_family_get_name(families[i]),
                                   std::string(family).c_str()) == 0;
    g_free(families);
    return found;
}

// Fonts don't come and go while a report is made; the answer is kept for
// the life of the process.
std::string_view serifOfThisMachine() {
    static std::once_flag once;
    static bool hasGeorgia = false;
    std::call_once(once, [] { hasGeorgia = fontconfigHas("Georgia"); });
    return hasGeorgia ? "Georgia" : "DejaVu Serif";
}

PangoAlignment pangoAlignment(TextAlign align) {
    switch (align) {
        case TextAlign::left:
            return PANGO_ALIGN_LEFT;
        case TextAlign::center:
            return PANGO_ALIGN_CENTER;
        case TextAlign::right:
            return PANGO_ALIGN_RIGHT;
    }
    return PANGO_ALIGN_LEFT;
}

}  // namespace

struct TextMeasure::State {
    PangoContext* context = nullptr;
    PangoLayout* layout = nullptr;
    PangoFontDescription* description = nullptr;
    FontSpec described;  // what `description` holds

    State() {
        context = pango_font_map_create_context(pango_cairo_font_map_get_default());
        // A PDF page has no pixels to snap to: metrics unhinted and glyphs
        // placed where the font says, the same when measured and when drawn.
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        pango_cairo_context_set_font_options(context, options);
        cairo_font_options_destroy(options);
        pango_context_set_round_glyph_positions(context, FALSE);
        layout = pango_layout_new(context);
        pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    }
    ~State() {
        if (description)
            pango_font_description_free(description);
        g_object_unref(layout);
        g_object_unref(context);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    PangoLayout* prepare(std::string_view text, const FontSpec& font, double width,
                         TextAlign align) {
        if (!description || !(described == font)) {
            if (description)
                pango_font_description_free(description);
            description = pango_font_description_new();
            pango_font_description_set_family(description, font.family.c_str());
            pango_font_description_set_absolute_size(description, font.size * PANGO_SCALE);
            pango_font_description_set_weight(description,
                                              font.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
            pango_font_description_set_style(description,
                                             font.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
            described = font;
            pango_layout_set_font_description(layout, description);
        }
        pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
        pango_layout_set_width(layout,
                               width > 0 ? static_cast<int>(std::floor(width * PANGO_SCALE)) : -1);
        pango_layout_set_alignment(layout, pangoAlignment(align));
        return layout;
    }
};

TextMeasure::TextMeasure() : m_state(std::make_unique<State>()) {}

TextMeasure::~TextMeasure() = default;

std::string_view TextMeasure::serifFamily() const {
    return serifOfThisMachine();
}

TextSize TextMeasure::measure(std::string_view text, const FontSpec& font, double width) const {
    PangoLayout* layout = m_state->prepare(text, font, width, TextAlign::left);
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    return {static_cast<double>(logical.x + logical.width) / PANGO_SCALE,
            static_cast<double>(logical.height) / PANGO_SCALE};
}

std::size_t TextMeasure::fittingPrefix(std::string_view text, const FontSpec& font, double width,
                                       double height) const {
    PangoLayout* layout = m_state->prepare(text, font, width, TextAlign::left);
    PangoLayoutIter* iter = pango_layout_get_iter(layout);
    std::size_t fits = 0;
    bool all = true;
    do {
        PangoRectangle logical;
        pango_layout_iter_get_line_extents(iter, nullptr, &logical);
        if (static_cast<double>(logical.y + logical.height) / PANGO_SCALE > height) {
            all = false;
            break;
        }
        const PangoLayoutLine* line = pango_layout_iter_get_line_readonly(iter);
        fits = static_cast<std::size_t>(line->start_index + line->length);
    } while (pango_layout_iter_next_line(iter));
    pango_layout_iter_free(iter);
    return all ? text.size() : fits;
}

PangoLayout* TextMeasure::layout(std::string_view text, const FontSpec& font, double width,
                                 TextAlign align) const {
    return m_state->prepare(text, font, width, align);
}

PangoContext* TextMeasure::context() const {
    return m_state->context;
}

}  // namespace copperwick::pdf
