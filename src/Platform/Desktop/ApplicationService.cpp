// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/ApplicationService.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QUrl>

#include <utility>

namespace ferrow {

namespace {

/// A window that works answers within milliseconds; one that was suspended must not keep a second one from opening.
constexpr int patience = 3'000; // Milliseconds.

const QString tokenKey = QStringLiteral("activation-token");
const QString startupKey = QStringLiteral("desktop-startup-id"); ///< What X11 calls the same.

QByteArray tokenIn(const QVariantMap& platformData)
{
    const QString token = platformData.value(tokenKey).toString();
    return (token.isEmpty() ? platformData.value(startupKey).toString() : token).toUtf8();
}

} // namespace

ApplicationService::ApplicationService(const QString& id, QDBusConnection bus)
    : bus_(std::move(bus)), id_(id), path_(QLatin1Char('/') + QString(id).replace(QLatin1Char('.'), QLatin1Char('/')))
{
    if (!bus_.isConnected())
        return;
    // The object before the name: whoever sees the name may call at once.
    bus_.registerObject(path_, this, QDBusConnection::ExportScriptableInvokables);
    isOwner_ = bus_.registerService(id_);
}

ApplicationService::~ApplicationService()
{
    if (!bus_.isConnected())
        return;
    bus_.unregisterObject(path_);
    if (isOwner_)
        bus_.unregisterService(id_);
}

bool ApplicationService::handOver(const std::vector<FileUrl>& files, const QByteArray& activationToken) const
{
    if (isOwner_ || !bus_.isConnected())
        return false;
    QDBusMessage call =
        QDBusMessage::createMethodCall(id_, path_, QStringLiteral("org.freedesktop.Application"),
                                       files.empty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    call.setAutoStartService(false); // The one that had the name may just have ended.
    if (!files.empty()) {
        QStringList uris;
        for (const FileUrl& file : files)
            uris << file.toUrl().toString(QUrl::FullyEncoded);
        call << uris;
    }
    QVariantMap platformData;
    if (!activationToken.isEmpty())
        platformData = {{tokenKey, QString::fromUtf8(activationToken)},
                        {startupKey, QString::fromUtf8(activationToken)}};
    call << platformData;
    return bus_.call(call, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

void ApplicationService::Activate(const QVariantMap& platformData)
{
    emit called({}, tokenIn(platformData));
}

void ApplicationService::Open(const QStringList& uris, const QVariantMap& platformData)
{
    std::vector<FileUrl> files;
    for (const QString& uri : uris)
        if (const std::optional<FileUrl> file = FileUrl::fromUrl(QUrl::fromEncoded(uri.toUtf8())))
            files.push_back(*file);
    emit called(files, tokenIn(platformData));
}

void ApplicationService::ActivateAction(const QString&, const QVariantList&, const QVariantMap&)
{
    // The desktop entry names no actions.
}

QByteArray activationTokenOfThisStart()
{
    const QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : token;
}

} // namespace ferrow
