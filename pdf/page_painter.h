#pragma once

// Plays a page's recorded commands into a Cairo context, text through the
// same Pango context that measured it, so that every line breaks where the
// composer expected. Merchant badges are drawn as the screens draw them: the
// logo when its file loads, else the initials on the tone's colour (a PDF
// has no icon theme to take symbols from).
//
// One painter per PDF, on the thread that makes it; not copyable.

#include <map>
#include <string>
#include <vector>

#include "pdf/draw_command.h"
#include "pdf/text_measure.h"

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace copperwick::pdf {

class PagePainter {
  public:
    PagePainter(cairo_t* cairo, const TextMeasure& measure);
    ~PagePainter();
    PagePainter(const PagePainter&) = delete;
    PagePainter& operator=(const PagePainter&) = delete;

    void play(const std::vector<DrawCommand>& commands);

  private:
    void drawText(const DrawCommand& command);
    void drawBadge(const DrawCommand& command);
    void roundedPath(const Rect& rect, double radius);
    // The logo's image, loaded once per PDF; null when it doesn't load.
    cairo_surface_t* logo(const std::string& asset);

    cairo_t* m_cairo;
    const TextMeasure& m_measure;
    std::map<std::string, cairo_surface_t*> m_logos;
};

}  // namespace copperwick::pdf
