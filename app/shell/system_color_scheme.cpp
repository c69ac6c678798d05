#include "app/shell/system_color_scheme.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace copperwick::app {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");

}  // namespace

SystemColorScheme::SystemColorScheme(QObject* parent) : QObject(parent) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    // Asked without waiting: a portal that is slow to start must not hold
    // the window back. Until the answer comes, the palette's darkness decides.
    QDBusMessage read =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
    read << kGroup << kKey;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* call) {
                const QDBusPendingReply<QVariant> reply = *call;
                if (!reply.isError())
                    take(reply.value());
                call->deleteLater();
            });
}

std::optional<bool> SystemColorScheme::fromPortalValue(const QVariant& value) {
    // Read answers a variant inside a variant; the signal, one variant.
    QVariant inner = value;
    for (int depth = 0; depth < 3 && inner.canConvert<QDBusVariant>() &&
                        inner.metaType() == QMetaType::fromType<QDBusVariant>();
         ++depth)
        inner = inner.value<QDBusVariant>().variant();
    if (inner.metaType() == QMetaType::fromType<QDBusArgument>()) {
        QDBusVariant unwrapped;
        inner.value<QDBusArgument>() >> unwrapped;
        inner = unwrapped.variant();
    }
    bool isNumber = false;
    const uint scheme = inner.toUInt(&isNumber);
    if (!isNumber)
        return std::nullopt;
    if (scheme == 1)
        return true;
    if (scheme == 2)
        return false;
    return std::nullopt;
}

void SystemColorScheme::settingChanged(const QString& group, const QString& key,
                                       const QDBusVariant& value) {
    if (group == kGroup && key == kKey)
        take(value.variant());
}

void SystemColorScheme::take(const QVariant& value) {
    const auto prefersDark = fromPortalValue(value);
    if (prefersDark == m_prefersDark)
        return;
    m_prefersDark = prefersDark;
    Q_EMIT changed();
}

}  // namespace copperwick::app
