#include "app/shell/app_icon.h"

#include <QBuffer>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSvgGenerator>

namespace copperwick::app {

namespace {

QColor toColor(const RGB& rgb, double alpha = 1.0) {
    return QColor::fromRgbF(static_cast<float>(rgb.red), static_cast<float>(rgb.green),
                            static_cast<float>(rgb.blue), static_cast<float>(alpha));
}

}  // namespace

void paintAppIcon(QPainter& painter, const SkinIconColors& colors, double size) {
    painter.setRenderHint(QPainter::Antialiasing);

    // Desktop icons keep a little air around the tile, as their neighbours do.
    const double inset = size * 0.06;
    const QRectF tile(inset, inset, size - 2 * inset, size - 2 * inset);
    QLinearGradient shade(tile.topLeft(), tile.bottomLeft());
    shade.setColorAt(0, toColor(colors.tileTop));
    shade.setColorAt(1, toColor(colors.tileBottom));
    QPainterPath path;
    path.addRoundedRect(tile, tile.width() * 0.22, tile.width() * 0.22);
    painter.fillPath(path, shade);

    // Two faint ledger lines and the stripe under them: a page of figures
    // with its total ruled off.
    const double left = tile.left() + tile.width() * 0.2;
    const double height = tile.height() * 0.085;
    const auto bar = [&](double top, double widthShare, const QColor& color) {
        QPainterPath line;
        line.addRoundedRect(
            QRectF(left, tile.top() + tile.height() * top, tile.width() * widthShare, height),
            height / 2, height / 2);
        painter.fillPath(line, color);
    };
    bar(0.24, 0.6, toColor(colors.stripe, 0.45));
    bar(0.40, 0.42, toColor(colors.stripe, 0.45));
    bar(0.62, 0.6, toColor(colors.stripe));
}

QImage drawAppIcon(const SkinIconColors& colors, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintAppIcon(painter, colors, size);
    return image;
}

QByteArray appIconSVG(const SkinIconColors& colors) {
    // Drawn at the size the hicolor theme's scalable icons are designed at;
    // the viewBox lets a desktop scale it to any other.
    constexpr int kSize = 256;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(QSize(kSize, kSize));
    generator.setViewBox(QRect(0, 0, kSize, kSize));
    generator.setTitle(QStringLiteral("Copperwick"));
    {
        QPainter painter(&generator);
        paintAppIcon(painter, colors, kSize);
    }
    return buffer.data();
}

QIcon appIcon(Skin skin) {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(QPixmap::fromImage(drawAppIcon(iconColors(skin), size)));
    return icon;
}

}  // namespace copperwick::app
