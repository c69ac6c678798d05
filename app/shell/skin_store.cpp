#include "app/shell/skin_store.h"

#include <QApplication>
#include <QDir>
#include <QStyle>
#include <QStyleFactory>

#include "app/shell/app_icon.h"
#include "app/widgets/colour_mix.h"

namespace copperwick::app {

namespace {

QColor toColor(const RGB& rgb) {
    return QColor::fromRgbF(static_cast<float>(rgb.red), static_cast<float>(rgb.green),
                            static_cast<float>(rgb.blue));
}

// Where icon themes live by the XDG base directories. Desktop platform themes
// say so themselves; offscreen and minimal platforms say nothing, and without
// these the Breeze icons wouldn't be found there.
void addIconThemeFolders() {
    QStringList paths = QIcon::themeSearchPaths();
    QStringList folders;
    const QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    folders << (dataHome.isEmpty() ? QDir::homePath() + QStringLiteral("/.local/share") : dataHome);
    const QString dataDirs = qEnvironmentVariable("XDG_DATA_DIRS");
    folders << (dataDirs.isEmpty() ? QStringLiteral("/usr/local/share:/usr/share") : dataDirs)
                   .split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString& folder : folders) {
        const QString icons = folder + QStringLiteral("/icons");
        if (!paths.contains(icons))
            paths << icons;
    }
    QIcon::setThemeSearchPaths(paths);
}

}  // namespace

SkinStore::SkinStore(Preferences& preferences, QObject* parent)
    : QObject(parent),
      m_preferences(preferences),
      m_preference(SkinPreference::load(preferences)),
      m_systemPalette(QGuiApplication::palette()),
      m_systemScheme(new SystemColorScheme(this)) {
    // "Follow the system" follows it live: the desktop's switch to dark
    // turns the window dark at once.
    connect(m_systemScheme, &SystemColorScheme::changed, this, [this] {
        if (m_preference.appearance == AppearanceMode::followMac)
            applyAppearance();
    });
}

void SkinStore::update(const SkinPreference& preference) {
    if (preference == m_preference)
        return;
    m_preference = preference;
    m_preference.save(m_preferences);
    applyAppearance();
    applyAppIcon();
    Q_EMIT preferenceChanged(m_preference);
}

bool SkinStore::isDark() const {
    switch (m_preference.appearance) {
        case AppearanceMode::light:
            return false;
        case AppearanceMode::dark:
            return true;
        case AppearanceMode::followMac:
            break;
    }
    if (const auto prefersDark = m_systemScheme->prefersDark())
        return *prefersDark;
    // A desktop without the portal's setting: the platform theme's own
    // palette (KDE's, or GTK's through its theme plugin) is dark on a dark
    // desktop, and light where there is no such theme.
    return m_systemPalette.color(QPalette::Window).lightness() < 128;
}

QPalette SkinStore::qtPalette(Skin skin, bool dark) {
    const SkinPalette colors = palette(skin, dark);
    const QColor window = toColor(colors.window);
    const QColor surface = toColor(colors.surface);
    const QColor accent = toColor(colors.accent);
    // Text is near black or near white, tinted a little by the skin's accent
    // so that it sits with the skin's colours.
    const QColor text = mix(dark ? QColor(240, 240, 240) : QColor(22, 24, 23), accent, 0.12);
    const QColor secondary = mix(text, window, 0.42);

    QPalette result;
    result.setColor(QPalette::Window, window);
    result.setColor(QPalette::WindowText, text);
    result.setColor(QPalette::Base, surface);
    result.setColor(QPalette::AlternateBase, toColor(colors.sidebar));
    result.setColor(QPalette::Text, text);
    result.setColor(QPalette::Button, dark ? mix(surface, text, 0.06) : surface);
    result.setColor(QPalette::ButtonText, text);
    result.setColor(QPalette::BrightText, toColor(colors.onAccent));
    result.setColor(QPalette::Highlight, toColor(colors.selection));
    result.setColor(QPalette::HighlightedText, toColor(palette(skin, false).onAccent));
    result.setColor(QPalette::Link, accent);
    result.setColor(QPalette::LinkVisited, accent);
    result.setColor(QPalette::PlaceholderText, secondary);
    result.setColor(QPalette::ToolTipBase, surface);
    result.setColor(QPalette::ToolTipText, text);
    // The bevels and lines Fusion draws with.
    result.setColor(QPalette::Light, mix(window, dark ? text : QColor(Qt::white), 0.1));
    result.setColor(QPalette::Midlight, mix(window, text, 0.07));
    result.setColor(QPalette::Mid, mix(window, text, 0.22));
    result.setColor(QPalette::Dark, mix(window, text, 0.4));
    result.setColor(QPalette::Shadow, mix(window, QColor(Qt::black), 0.6));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        result.setColor(QPalette::Disabled, role, mix(text, window, 0.55));
    result.setColor(QPalette::Disabled, QPalette::Highlight, mix(window, text, 0.2));
    return result;
}

void SkinStore::applyAppearance() {
    if (QApplication::style()->name().compare(QStringLiteral("fusion"), Qt::CaseInsensitive) != 0)
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const bool dark = isDark();
    addIconThemeFolders();
    QIcon::setFallbackThemeName(QStringLiteral("breeze"));
    QIcon::setThemeName(dark ? QStringLiteral("breeze-dark") : QStringLiteral("breeze"));
    QApplication::setPalette(qtPalette(m_preference.skin, dark));
}

void SkinStore::applyAppIcon() {
    const Skin skin = m_preference.iconFollowsSkin ? m_preference.skin : Skin::forest;
    auto it = m_icons.find(skin);
    if (it == m_icons.end())
        it = m_icons.emplace(skin, appIcon(skin)).first;
    QApplication::setWindowIcon(it->second);
}

}  // namespace copperwick::app
