// Pictures of the Review screen on the demo workspace in the light and the
// dark form of the default skin, for a person to look at: written only when
// COPPERWICK_SCREENSHOT_DIR names a folder.

#include <filesystem>

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QStyleFactory>

#include "app/review/review_page.h"
#include "app/shell/main_window.h"
#include "core/presentation/skin.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/temp_folder.h"

namespace copperwick::app {
namespace {

QColor colour(const RGB& rgb) {
    return QColor::fromRgbF(static_cast<float>(rgb.red), static_cast<float>(rgb.green),
                            static_cast<float>(rgb.blue));
}

QColor mix(const QColor& from, const QColor& to, double t) {
    const auto channel = [t](float a, float b) { return static_cast<float>(a + (b - a) * t); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

// The skin's colours in Qt's roles, the way the application's skin store
// puts them, so that the pictures show what a person sees.
QPalette skinPalette(Skin skin, bool dark) {
    const SkinPalette colours = palette(skin, dark);
    const QColor window = colour(colours.window);
    const QColor surface = colour(colours.surface);
    const QColor accent = colour(colours.accent);
    const QColor text = mix(dark ? QColor(240, 240, 240) : QColor(22, 24, 23), accent, 0.12);
    QPalette result;
    result.setColor(QPalette::Window, window);
    result.setColor(QPalette::WindowText, text);
    result.setColor(QPalette::Base, surface);
    result.setColor(QPalette::AlternateBase, colour(colours.sidebar));
    result.setColor(QPalette::Text, text);
    result.setColor(QPalette::Button, dark ? mix(surface, text, 0.06) : surface);
    result.setColor(QPalette::ButtonText, text);
    result.setColor(QPalette::Highlight, colour(colours.selection));
    result.setColor(QPalette::HighlightedText, colour(palette(skin, false).onAccent));
    result.setColor(QPalette::Link, accent);
    result.setColor(QPalette::PlaceholderText, mix(text, window, 0.42));
    result.setColor(QPalette::Light, mix(window, dark ? text : QColor(Qt::white), 0.1));
    result.setColor(QPalette::Midlight, mix(window, text, 0.07));
    result.setColor(QPalette::Mid, mix(window, text, 0.22));
    result.setColor(QPalette::Dark, mix(window, text, 0.4));
    result.setColor(QPalette::Shadow, mix(window, QColor(Qt::black), 0.6));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        result.setColor(QPalette::Disabled, role, mix(text, window, 0.55));
    return result;
}

TEST(ReviewScreenshots, DemoWorkspaceInLightAndDark) {
    const QString folder = qEnvironmentVariable("COPPERWICK_SCREENSHOT_DIR");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_SCREENSHOT_DIR names no folder";
    copperwick::testing::TempFolder preferences;
    RuntimeOptions options;
    options.demo = true;
    options.preferencesFolder = preferences.path();
    LedgerRuntime runtime(std::move(options));
    ImportModel importer;

    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QStringList paths = QIcon::themeSearchPaths();
    paths << QStringLiteral("/usr/share/icons");
    QIcon::setThemeSearchPaths(paths);
    for (const bool dark : {false, true}) {
        QIcon::setThemeName(dark ? QStringLiteral("breeze-dark") : QStringLiteral("breeze"));
        QApplication::setPalette(skinPalette(Skin::forest, dark));
        MainWindow window(runtime, importer);
        window.resize(1180, 900);
        runtime.setSection(AppSection::review);
        window.show();
        QApplication::processEvents();
        const QString name = QDir(folder).filePath(dark ? QStringLiteral("review-dark.png")
                                                        : QStringLiteral("review-light.png"));
        EXPECT_TRUE(window.grab().save(name));
    }
}

}  // namespace
}  // namespace copperwick::app
