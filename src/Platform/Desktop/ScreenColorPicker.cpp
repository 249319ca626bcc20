// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/ScreenColorPicker.h"

#include "Platform/Desktop/Portal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace ferrow {

namespace {

const QString screenshotInterface = QStringLiteral("org.freedesktop.portal.Screenshot");
constexpr uint firstVersionThatPicks = 2;

} // namespace

ScreenColorPicker::ScreenColorPicker(QObject* parent) : QObject(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    QDBusMessage call = portalCall(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << screenshotInterface << QStringLiteral("version");
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isError() || reply.value().variant().toUInt() < firstVersionThatPicks)
            return;
        available_ = true;
        emit availableChanged();
    });
}

void ScreenColorPicker::pick()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    // The answer comes from an object whose path is known beforehand, so that it can't be missed.
    const QString token = QStringLiteral("ferrowColor");
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    bus.connect(QStringLiteral("org.freedesktop.portal.Desktop"),
                QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token),
                QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"), this,
                SLOT(answered(QDBusMessage)));
    QDBusMessage call = portalCall(screenshotInterface, QStringLiteral("PickColor"));
    call << QString() << QVariantMap{{QStringLiteral("handle_token"), token}};
    bus.asyncCall(call);
}

void ScreenColorPicker::answered(const QDBusMessage& message)
{
    const QVariantList arguments = message.arguments(); // Response, 0 for success; results by name.
    const QVariantMap results = qdbus_cast<QVariantMap>(arguments.value(1));
    if (arguments.value(0).toUInt() != 0 || !results.contains(QStringLiteral("color")))
        return;
    const auto structure = results.value(QStringLiteral("color")).value<QDBusArgument>();
    double red = 0;
    double green = 0;
    double blue = 0;
    structure.beginStructure();
    structure >> red >> green >> blue;
    structure.endStructure();
    emit picked(QColor::fromRgbF(float(red), float(green), float(blue)));
}

} // namespace ferrow
