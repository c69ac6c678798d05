#pragma once

// What a page of a printed report draws, recorded as plain values before
// anything is drawn: the composer decides where everything goes, and the
// painter later plays the list into the PDF. Because a command is a value,
// a test can read a page's words, places and sizes without rendering it.
//
// Sizes are points on a US Letter page, 612 by 792, measured from the top
// left. Values; copyable and comparable.

#include <optional>
#include <string>
#include <vector>

#include "core/presentation/merchant_icons.h"
#include "core/presentation/skin.h"

namespace copperwick::pdf {

struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    [[nodiscard]] double right() const { return x + width; }
    [[nodiscard]] double bottom() const { return y + height; }

    friend bool operator==(const Rect&, const Rect&) = default;
};

struct FontSpec {
    std::string family;
    double size = 10;
    bool bold = false;
    bool italic = false;

    friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

enum class TextAlign {
    left,
    center,
    right,
};

struct DrawCommand {
    enum class Kind {
        text,          // `text` in `font`, wrapped at the rect's width
        fill,          // a filled rectangle; rules are fills 0.6 high
        roundedFill,   // a rectangle with corners of `radius`
        roundedFrame,  // its outline, `lineWidth` wide
        circle,        // a filled circle inside the rect
        arc,           // a ring's segment inside the rect, `lineWidth` thick
        badge,         // a merchant's round badge inside the rect
    };

    Kind kind = Kind::text;
    Rect rect;
    RGB colour;
    std::string text;
    FontSpec font;
    TextAlign align = TextAlign::left;
    double radius = 0;
    double lineWidth = 0;
    // An arc's ends, in radians clockwise from twelve o'clock.
    double startAngle = 0;
    double endAngle = 0;
    std::optional<MerchantIconDescriptor> badge;

    friend bool operator==(const DrawCommand&, const DrawCommand&) = default;
};

// One page's own content; the frame (header, footer, page number) is added
// when the pages are played, once their number is known.
struct Page {
    std::string title;
    std::vector<DrawCommand> commands;

    friend bool operator==(const Page&, const Page&) = default;
};

}  // namespace copperwick::pdf
