// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/Notifications.h"

#include "Platform/Desktop/Portal.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QGuiApplication>
#include <QVariantMap>

namespace ferrow::Notifications {

namespace {

QDBusMessage portalMessage(const QString& title, const QString& body)
{
    QDBusMessage call =
        portalCall(QStringLiteral("org.freedesktop.portal.Notification"), QStringLiteral("AddNotification"));
    call << QStringLiteral("batch-finished")
         << QVariantMap{{QStringLiteral("title"), title}, {QStringLiteral("body"), body}};
    return call;
}

QDBusMessage desktopMessage(const QString& title, const QString& body)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    // The body may hold mark-up; ours is plain text.
    call << QGuiApplication::applicationDisplayName() << uint(0) << QGuiApplication::desktopFileName() << title
         << body.toHtmlEscaped() << QStringList()
         << QVariantMap{{QStringLiteral("desktop-entry"), QGuiApplication::desktopFileName()}} << -1;
    return call;
}

} // namespace

void show(const QString& title, const QString& body)
{
    const QDBusMessage call = isSandboxed() ? portalMessage(title, body) : desktopMessage(title, body);
    QDBusConnection::sessionBus().asyncCall(call);
}

} // namespace ferrow::Notifications
