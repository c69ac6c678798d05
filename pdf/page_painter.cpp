#include "pdf/page_painter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <cairo.h>
#include <pango/pangocairo.h>

#include "core/model/text.h"

namespace copperwick::pdf {

namespace {

void setColour(cairo_t* cairo, const RGB& colour) {
    cairo_set_source_rgb(cairo, colour.red, colour.green, colour.blue);
}

RGB lighter(const RGB& colour, double towardsWhite) {
    return {colour.red + (1 - colour.red) * towardsWhite,
            colour.green + (1 - colour.green) * towardsWhite,
            colour.blue + (1 - colour.blue) * towardsWhite};
}

}  // namespace

PagePainter::PagePainter(cairo_t* cairo, const TextMeasure& measure)
    : m_cairo(cairo), m_measure(measure) {
    pango_cairo_update_context(m_cairo, m_measure.context());
}

PagePainter::~PagePainter() {
    for (auto& [asset, surface] : m_logos) {
        if (surface)
            cairo_surface_destroy(surface);
    }
}

void PagePainter::play(const std::vector<DrawCommand>& commands) {
    for (const DrawCommand& command : commands) {
        const Rect& r = command.rect;
        switch (command.kind) {
            case DrawCommand::Kind::text:
                drawText(command);
                break;
            case DrawCommand::Kind::fill:
                setColour(m_cairo, command.colour);
                cairo_rectangle(m_cairo, r.x, r.y, r.width, r.height);
                cairo_fill(m_cairo);
                break;
            case DrawCommand::Kind::roundedFill:
                setColour(m_cairo, command.colour);
                roundedPath(r, command.radius);
                cairo_fill(m_cairo);
                break;
            case DrawCommand::Kind::roundedFrame: {
                // The outline stays inside its rectangle.
                const double half = command.lineWidth / 2;
                setColour(m_cairo, command.colour);
                roundedPath({r.x + half, r.y + half, r.width - command.lineWidth,
                             r.height - command.lineWidth},
                            std::max(0.0, command.radius - half));
                cairo_set_line_width(m_cairo, command.lineWidth);
                cairo_stroke(m_cairo);
                break;
            }
            case DrawCommand::Kind::circle:
                setColour(m_cairo, command.colour);
                cairo_new_sub_path(m_cairo);
                cairo_arc(m_cairo, r.x + r.width / 2, r.y + r.height / 2,
                          std::min(r.width, r.height) / 2, 0, 2 * std::numbers::pi);
                cairo_fill(m_cairo);
                break;
            case DrawCommand::Kind::arc: {
                // Angles run clockwise from twelve o'clock; Cairo's from three.
                const double quarter = std::numbers::pi / 2;
                setColour(m_cairo, command.colour);
                cairo_set_line_width(m_cairo, command.lineWidth);
                cairo_set_line_cap(m_cairo, CAIRO_LINE_CAP_BUTT);
                cairo_new_sub_path(m_cairo);
                cairo_arc(m_cairo, r.x + r.width / 2, r.y + r.height / 2,
                          std::min(r.width, r.height) / 2 - command.lineWidth / 2,
                          command.startAngle - quarter, command.endAngle - quarter);
                cairo_stroke(m_cairo);
                break;
            }
            case DrawCommand::Kind::badge:
                drawBadge(command);
                break;
        }
    }
}

void PagePainter::drawText(const DrawCommand& command) {
    PangoLayout* layout =
        m_measure.layout(command.text, command.font, command.rect.width, command.align);
    setColour(m_cairo, command.colour);
    cairo_move_to(m_cairo, command.rect.x, command.rect.y);
    pango_cairo_show_layout(m_cairo, layout);
}

void PagePainter::roundedPath(const Rect& r, double radius) {
    const double corner = std::min({radius, r.width / 2, r.height / 2});
    const double pi = std::numbers::pi;
    cairo_new_sub_path(m_cairo);
    cairo_arc(m_cairo, r.x + r.width - corner, r.y + corner, corner, -pi / 2, 0);
    cairo_arc(m_cairo, r.x + r.width - corner, r.y + r.height - corner, corner, 0, pi / 2);
    cairo_arc(m_cairo, r.x + corner, r.y + r.height - corner, corner, pi / 2, pi);
    cairo_arc(m_cairo, r.x + corner, r.y + corner, corner, pi, 3 * pi / 2);
    cairo_close_path(m_cairo);
}

cairo_surface_t* PagePainter::logo(const std::string& asset) {
    auto found = m_logos.find(asset);
    if (found != m_logos.end())
        return found->second;
    cairo_surface_t* surface = nullptr;
    if (const auto file = MerchantIconCatalog::shared().logoURL(asset)) {
        surface = cairo_image_surface_create_from_png(file->c_str());
        if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
            cairo_surface_destroy(surface);
            surface = nullptr;
        }
    }
    m_logos.emplace(asset, surface);
    return surface;
}

void PagePainter::drawBadge(const DrawCommand& command) {
    const Rect& r = command.rect;
    const MerchantIconDescriptor& descriptor = *command.badge;
    const double size = std::min(r.width, r.height);
    const double centreX = r.x + r.width / 2;
    const double centreY = r.y + r.height / 2;
    const auto circle = [&](double radius) {
        cairo_new_sub_path(m_cairo);
        cairo_arc(m_cairo, centreX, centreY, radius, 0, 2 * std::numbers::pi);
    };

    cairo_surface_t* picture = descriptor.logo ? logo(*descriptor.logo) : nullptr;
    if (picture) {
        const double width = cairo_image_surface_get_width(picture);
        const double height = cairo_image_surface_get_height(picture);
        const double scale = size / std::max(width, height);
        cairo_save(m_cairo);
        circle(size / 2);
        cairo_set_source_rgb(m_cairo, 1, 1, 1);
        cairo_fill_preserve(m_cairo);
        cairo_clip(m_cairo);
        cairo_translate(m_cairo, centreX - width * scale / 2, centreY - height * scale / 2);
        cairo_scale(m_cairo, scale, scale);
        cairo_set_source_surface(m_cairo, picture, 0, 0);
        cairo_paint(m_cairo);
        cairo_restore(m_cairo);
        setColour(m_cairo, lighter(command.colour, 0.6));
        cairo_set_line_width(m_cairo, 0.5);
        circle(size / 2 - 0.25);
        cairo_stroke(m_cairo);
        return;
    }

    // The initials on a soft round of the tone, in the tone itself.
    setColour(m_cairo, lighter(command.colour, 0.83));
    circle(size / 2);
    cairo_fill(m_cairo);
    const FontSpec font{std::string(TextMeasure::kSystemFamily),
                        size * (text::characterCount(descriptor.initials) > 1 ? 0.36 : 0.42), true,
                        false};
    const TextSize measured = m_measure.measure(descriptor.initials, font, 0);
    DrawCommand initials{.kind = DrawCommand::Kind::text,
                         .rect = {r.x, centreY - measured.height / 2, r.width, measured.height},
                         .colour = command.colour,
                         .text = descriptor.initials,
                         .font = font,
                         .align = TextAlign::center};
    drawText(initials);
}

}  // namespace copperwick::pdf
