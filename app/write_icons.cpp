// Writes the application's icon for the desktop's hicolor theme, in the
// standard skin's colours, so that the package's icon and the one the window
// shows are drawn by the same code:
//
//   copperwick-write-icons OUT
//
// makes OUT/scalable/apps/copperwick.svg and OUT/SIZExSIZE/apps/copperwick.png.

#include <filesystem>
#include <iostream>

#include <QBuffer>
#include <QFile>
#include <QString>

#include "app/shell/app_icon.h"

namespace {

bool writeFile(const std::filesystem::path& path, const QByteArray& bytes) {
    std::filesystem::create_directories(path.parent_path());
    QFile file(QString::fromStdString(path.string()));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

}  // namespace

int main(int argc, char** argv) {
    using namespace copperwick;
    if (argc != 2) {
        std::cerr << "usage: copperwick-write-icons OUT\n";
        return 2;
    }
    // Drawn into images alone: no application object and no display, which
    // the build machine may not have.
    const std::filesystem::path out = argv[1];
    const SkinIconColors colors = iconColors(Skin::forest);

    if (!writeFile(out / "scalable" / "apps" / "copperwick.svg", app::appIconSVG(colors))) {
        std::cerr << "Couldn't write the scalable icon into " << out << '\n';
        return 1;
    }
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
        const auto side = std::to_string(size);
        const std::filesystem::path path = out / (side + "x" + side) / "apps" / "copperwick.png";
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        if (!app::drawAppIcon(colors, size).save(&buffer, "PNG") || !writeFile(path, png)) {
            std::cerr << "Couldn't write " << path << '\n';
            return 1;
        }
    }
    return 0;
}
