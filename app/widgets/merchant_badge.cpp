#include "app/widgets/merchant_badge.h"

#include <algorithm>
#include <array>

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_icons.h"

namespace copperwick::app {

namespace {

using Tone = MerchantIconDescriptor::Tone;

// Each tone's hue and how strongly it is coloured; neutral has none and is
// made of the palette's own text and surface.
struct ToneHue {
    float hue;  // degrees
    float saturation;
};

constexpr std::array<ToneHue, 6> kHues{{
    {150, 0.55f},  // forest
    {95, 0.35f},   // sage
    {40, 0.70f},   // ochre
    {212, 0.60f},  // blue
    {14, 0.62f},   // terracotta
    {0, 0.0f},     // neutral
}};

QColor mix(const QColor& from, const QColor& to, double t) {
    const auto channel = [t](float a, float b) { return static_cast<float>(a + (b - a) * t); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Base).lightnessF() < 0.5;
}

// The tone at full strength, pale on a dark surface and deep on a light one.
QColor toneColour(Tone tone, const QPalette& palette) {
    const ToneHue& hue = kHues[static_cast<std::size_t>(tone)];
    if (tone == Tone::neutral)
        return mix(palette.color(QPalette::Text), palette.color(QPalette::Base), 0.25);
    return QColor::fromHslF(hue.hue / 360.0f, hue.saturation, isDark(palette) ? 0.70f : 0.36f);
}

// Logos load once; a file that doesn't load is remembered as such, and the
// badge falls back to the symbol or the initials without trying again.
const QPixmap& logo(const std::string& asset) {
    static QHash<QString, QPixmap> loaded;
    const QString key = toQString(asset);
    auto found = loaded.find(key);
    if (found == loaded.end()) {
        QPixmap pixmap;
        if (const auto file = MerchantIconCatalog::shared().logoURL(asset))
            pixmap.load(QString::fromStdString(file->string()));
        found = loaded.insert(key, pixmap);
    }
    return *found;
}

}  // namespace

MerchantBadge::MerchantBadge(int size, QWidget* parent) : QWidget(parent), m_size(size) {
    setFixedSize(size, size);
    m_descriptor.initials = "?";
}

void MerchantBadge::setDescriptor(const MerchantIconDescriptor& descriptor) {
    if (descriptor == m_descriptor)
        return;
    m_descriptor = descriptor;
    update();
}

MerchantBadge::Face MerchantBadge::face() const {
    return faceOf(m_descriptor);
}

MerchantBadge::Face MerchantBadge::faceOf(const MerchantIconDescriptor& descriptor) {
    if (descriptor.logo && !logo(*descriptor.logo).isNull())
        return Face::logo;
    if (descriptor.symbol && !symbolIcon(*descriptor.symbol).isNull())
        return Face::symbol;
    return Face::initials;
}

QColor MerchantBadge::toneFill(Tone tone, const QPalette& palette) {
    const QColor base = palette.color(QPalette::Base);
    return mix(base, toneColour(tone, palette), isDark(palette) ? 0.30 : 0.17);
}

QColor MerchantBadge::toneInk(Tone tone, const QPalette& palette) {
    return toneColour(tone, palette);
}

void MerchantBadge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint(painter, rect(), m_descriptor, palette(), font());
}

void MerchantBadge::paint(QPainter& painter, const QRect& area,
                          const MerchantIconDescriptor& descriptor, const QPalette& palette,
                          const QFont& font) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF round = QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath circle;
    circle.addEllipse(round);
    const Tone tone = descriptor.tone;
    const int size = std::min(area.width(), area.height());

    switch (faceOf(descriptor)) {
        case Face::logo: {
            painter.fillPath(circle, palette.color(QPalette::Base));
            painter.setClipPath(circle);
            const QPixmap& picture = logo(*descriptor.logo);
            const QSize fitted = picture.size().scaled(area.size(), Qt::KeepAspectRatio);
            const QRect target(QPoint(area.left() + (area.width() - fitted.width()) / 2,
                                      area.top() + (area.height() - fitted.height()) / 2),
                               fitted);
            painter.drawPixmap(target, picture);
            painter.setClipping(false);
            painter.setPen(QPen(palette.color(QPalette::Midlight), 1));
            painter.drawEllipse(round);
            break;
        }
        case Face::symbol: {
            painter.fillPath(circle, toneFill(tone, palette));
            // The symbol is drawn in the tone's ink, whatever colours the
            // icon theme gave it, so every badge reads as one family.
            const int side = qRound(size * 0.52);
            const qreal ratio = painter.device() ? painter.device()->devicePixelRatioF() : 1.0;
            QPixmap glyph = symbolIcon(*descriptor.symbol).pixmap(QSize(side, side), ratio);
            {
                QPainter tint(&glyph);
                tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
                tint.fillRect(glyph.rect(), toneInk(tone, palette));
            }
            const QRect target(area.left() + (area.width() - side) / 2,
                               area.top() + (area.height() - side) / 2, side, side);
            painter.drawPixmap(target, glyph);
            break;
        }
        case Face::initials: {
            painter.fillPath(circle, toneFill(tone, palette));
            // Sized by characters, not bytes: "É" is one letter.
            const QString letters = toQString(descriptor.initials);
            QFont initials = font;
            initials.setPixelSize(qMax(8, qRound(size * (letters.size() > 1 ? 0.36 : 0.42))));
            initials.setWeight(QFont::DemiBold);
            painter.setFont(initials);
            painter.setPen(toneInk(tone, palette));
            painter.drawText(area, Qt::AlignCenter, letters);
            break;
        }
    }
    painter.restore();
}

}  // namespace copperwick::app
