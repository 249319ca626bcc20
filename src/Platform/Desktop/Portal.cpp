// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/Portal.h"

#include <QDBusConnection>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>
#include <QVariantMap>

#include <algorithm>

namespace ferrow {

namespace {

constexpr auto transferFormat = "application/vnd.portal.filetransfer";
constexpr int transferTimeout = 1'000; // Milliseconds.

std::vector<FileUrl> transferredFiles(const QByteArray& key)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Documents"), QStringLiteral("/org/freedesktop/portal/documents"),
        QStringLiteral("org.freedesktop.portal.FileTransfer"), QStringLiteral("RetrieveFiles"));
    call << QString::fromUtf8(key) << QVariantMap();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, transferTimeout);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    std::vector<FileUrl> files;
    for (const QString& path : reply.arguments().constFirst().toStringList())
        files.push_back(FileUrl::fromPath(path));
    return files;
}

} // namespace

bool isSandboxed()
{
    static const bool sandboxed =
        QFileInfo::exists(QStringLiteral("/.flatpak-info")) || qEnvironmentVariableIsSet("SNAP");
    return sandboxed;
}

QDBusMessage portalCall(const QString& interface, const QString& method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
                                          QStringLiteral("/org/freedesktop/portal/desktop"), interface, method);
}

std::vector<FileUrl> droppedFiles(const QMimeData& data)
{
    if (data.hasFormat(QLatin1StringView(transferFormat))) {
        // Some senders end the key with a NUL byte.
        const QByteArray key = data.data(QLatin1StringView(transferFormat)).split('\0').constFirst();
        if (std::vector<FileUrl> files = transferredFiles(key); !files.empty())
            return files;
    }
    std::vector<FileUrl> files;
    for (const QUrl& url : data.urls())
        if (const std::optional<FileUrl> file = FileUrl::fromUrl(url))
            files.push_back(*file);
    return files;
}

bool carriesFiles(const QMimeData& data)
{
    return data.hasFormat(QLatin1StringView(transferFormat)) || carriedFileCount(data) > 0;
}

int carriedFileCount(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    return int(std::ranges::count_if(urls, [](const QUrl& url) { return url.isLocalFile(); }));
}

} // namespace ferrow
