// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/FileManager.h"

#include "Platform/Desktop/Portal.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QDesktopServices>
#include <QUrl>

#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <set>

namespace ferrow::FileManager {

namespace {

void callThen(const QDBusMessage& call, const std::function<void()>& otherwise)
{
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), qApp);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, qApp, [watcher, otherwise] {
        watcher->deleteLater();
        if (watcher->isError())
            otherwise();
    });
}

void openByDefaultProgram(const FileUrl& folder)
{
    QDesktopServices::openUrl(folder.toUrl());
}

/// Asks the portal for something with a place that it knows by the descriptor alone.
void askPortal(const QString& method, const FileUrl& place, const std::function<void()>& otherwise)
{
    const int descriptor = ::open(place.path().constData(), O_PATH | O_CLOEXEC);
    if (descriptor < 0)
        return otherwise();
    QDBusMessage call = portalCall(QStringLiteral("org.freedesktop.portal.OpenURI"), method);
    call << QString() << QVariant::fromValue(QDBusUnixFileDescriptor(descriptor)) << QVariantMap();
    ::close(descriptor); // The message holds a copy.
    callThen(call, otherwise);
}

void openThroughPortal(const FileUrl& folder)
{
    askPortal(QStringLiteral("OpenFile"), folder, [folder] { openByDefaultProgram(folder); });
}

/// What a sandbox was given alone lies in a folder of the document store, which nobody wants to see: the portal finds
/// the one that really holds it.
void showThroughPortal(const FileUrl& item)
{
    askPortal(QStringLiteral("OpenDirectory"), item, [item] { openThroughPortal(item.deletingLastPathComponent()); });
}

void ask(const QString& method, const std::vector<FileUrl>& places, const std::function<void()>& otherwise)
{
    if (places.empty())
        return;
    QStringList uris;
    for (const FileUrl& place : places)
        uris << place.toUrl().toString(QUrl::FullyEncoded);
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                                       QStringLiteral("/org/freedesktop/FileManager1"),
                                                       QStringLiteral("org.freedesktop.FileManager1"), method);
    call << uris << QString();
    callThen(call, otherwise);
}

} // namespace

void showItems(const std::vector<FileUrl>& items)
{
    ask(QStringLiteral("ShowItems"), items, [items] {
        std::set<FileUrl> shown;
        for (const FileUrl& item : items)
            if (shown.insert(item.deletingLastPathComponent()).second)
                showThroughPortal(item);
    });
}

void openFolders(const std::vector<FileUrl>& folders)
{
    ask(QStringLiteral("ShowFolders"), folders, [folders] {
        for (const FileUrl& folder : folders)
            openThroughPortal(folder);
    });
}

} // namespace ferrow::FileManager
