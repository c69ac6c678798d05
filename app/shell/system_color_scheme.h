#pragma once

// Whether the desktop asks for light or dark, as Linux desktops say it: the
// "color-scheme" setting of the freedesktop settings portal, which GNOME,
// KDE and others keep, with a signal when the person changes it. Without a
// session bus or a portal there is no answer and nothing is ever told.
// Main thread only.

#include <cstdint>
#include <optional>

#include <QDBusVariant>
#include <QObject>
#include <QVariant>

namespace copperwick::app {

class SystemColorScheme : public QObject {
    Q_OBJECT

  public:
    explicit SystemColorScheme(QObject* parent = nullptr);

    // True for dark, false for light; absent while unknown or when the
    // desktop has no preference.
    [[nodiscard]] std::optional<bool> prefersDark() const { return m_prefersDark; }

    // The portal's value, in whatever wrapping D-Bus delivered it: 1 asks
    // for dark, 2 for light, 0 for no preference.
    [[nodiscard]] static std::optional<bool> fromPortalValue(const QVariant& value);

  Q_SIGNALS:
    void changed();

  private Q_SLOTS:
    // The portal's signal: any setting of any namespace.
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void take(const QVariant& value);

    std::optional<bool> m_prefersDark;
};

}  // namespace copperwick::app
