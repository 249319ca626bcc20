// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/DesktopAppearance.h"

#include "Platform/Desktop/Portal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QMap>

#include <utility>

namespace ferrow {

namespace {

using SettingGroups = QMap<QString, QVariantMap>;

const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");

// A portal that runs answers in a few milliseconds; one that must first be started can take seconds, and the window
// does not wait for that.
constexpr int startTimeout = 80; // Milliseconds.

/// Answers whether the value differs from the one before.
template <typename Value>
bool replace(Value& stored, Value value)
{
    return std::exchange(stored, value) != value;
}

} // namespace

DesktopAppearance::DesktopAppearance(QObject* parent) : QObject(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
                settingsInterface, QStringLiteral("SettingChanged"), this, SLOT(settingChanged(QDBusMessage)));

    QDBusMessage call = portalCall(settingsInterface, QStringLiteral("ReadAll"));
    call << QStringList{appearanceGroup};
    const QDBusMessage reply = bus.call(call, QDBus::Block, startTimeout);
    if (reply.type() == QDBusMessage::ReplyMessage) {
        takeAll(reply.arguments().value(0));
        return;
    }
    if (reply.errorName() != QLatin1StringView("org.freedesktop.DBus.Error.NoReply") &&
        reply.errorName() != QLatin1StringView("org.freedesktop.DBus.Error.Timeout"))
        return;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (watcher->isError())
            return;
        takeAll(watcher->reply().arguments().value(0));
        emit changed();
    });
}

void DesktopAppearance::takeAll(const QVariant& groups)
{
    const auto values = qdbus_cast<SettingGroups>(groups).value(appearanceGroup);
    for (auto entry = values.cbegin(); entry != values.cend(); ++entry)
        take(entry.key(), entry.value());
}

bool DesktopAppearance::take(const QString& key, const QVariant& value)
{
    const uint number = value.toUInt();
    if (key == QLatin1StringView("color-scheme"))
        return replace(prefersDark_, std::optional(number == 1)); // 0 is "no preference", 2 is light.
    if (key == QLatin1StringView("contrast"))
        return replace(moreContrast_, number == 1);
    if (key == QLatin1StringView("reduced-motion"))
        return replace(reducedMotion_, number == 1);
    return false;
}

void DesktopAppearance::settingChanged(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments(); // Group, key, value.
    if (arguments.size() == 3 && arguments[0].toString() == appearanceGroup &&
        take(arguments[1].toString(), arguments[2].value<QDBusVariant>().variant()))
        emit changed();
}

} // namespace ferrow
