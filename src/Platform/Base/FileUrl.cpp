// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Base/FileUrl.h"

#include "Platform/Base/ByteText.h"
#include "Platform/Base/Releaser.h"

#include <QList>
#include <QSysInfo>

#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace ferrow {

namespace {

QByteArray currentFolder()
{
    const std::unique_ptr<char, Releaser<std::free>> folder(::getcwd(nullptr, 0));
    return folder ? QByteArray(folder.get()) : QByteArray("/");
}

/// End of the last component, behind which only slashes follow.
qsizetype endOfName(const QByteArray& path)
{
    qsizetype end = path.size();
    while (end > 0 && path[end - 1] == '/')
        --end;
    return end;
}

/// Where the dot of the extension is; −1 without one.
qsizetype extensionDot(const QByteArray& name)
{
    const qsizetype dot = name.lastIndexOf('.');
    return dot > 0 && dot + 1 < name.size() ? dot : -1;
}

/// Whether no component of an absolute path is to be collapsed, nor a slash at its end.
bool isStandardized(const QByteArray& path)
{
    if (path.size() == 1)
        return true;
    for (qsizetype start = 1; start <= path.size();) {
        const qsizetype slash = path.indexOf('/', start);
        const qsizetype end = slash < 0 ? path.size() : slash;
        const QByteArrayView component = QByteArrayView(path).sliced(start, end - start);
        if (component.isEmpty() || component == "." || component == "..")
            return false;
        start = end + 1;
    }
    return true;
}

bool isThisMachine(const QString& host)
{
    return host.isEmpty() || host.compare(QLatin1StringView("localhost"), Qt::CaseInsensitive) == 0 ||
           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
}

} // namespace

FileUrl FileUrl::fromPath(const QByteArray& path)
{
    FileUrl url;
    if (path.isEmpty() || path.startsWith('/')) {
        url.path_ = path;
        return url;
    }
    url.path_ = currentFolder();
    return url.appending(path);
}

FileUrl FileUrl::fromPath(const QString& path)
{
    return fromPath(ByteText::encode(path));
}

std::optional<FileUrl> FileUrl::fromUrl(const QUrl& url)
{
    if (!url.isLocalFile() || !isThisMachine(url.host()))
        return std::nullopt;
    // The decoded path would already have lost bytes that are not UTF-8.
    const QByteArray path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (!path.startsWith('/'))
        return std::nullopt;
    return fromPath(path);
}

QUrl FileUrl::toUrl() const
{
    if (isEmpty())
        return {};
    return QUrl::fromEncoded("file://" + path_.toPercentEncoding("/"), QUrl::StrictMode);
}

bool FileUrl::hasFileSystemRepresentation() const
{
    return !path_.contains('\0');
}

QByteArray FileUrl::lastPathComponentBytes() const
{
    const qsizetype end = endOfName(path_);
    if (end == 0)
        return path_.left(1);
    const qsizetype slash = path_.lastIndexOf('/', end - 1);
    return path_.mid(slash + 1, end - slash - 1);
}

QString FileUrl::lastPathComponent() const
{
    return ByteText::display(lastPathComponentBytes());
}

QString FileUrl::displayPath() const
{
    return ByteText::display(path_);
}

QByteArray FileUrl::pathExtension() const
{
    const QByteArray name = lastPathComponentBytes();
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? QByteArray() : name.mid(dot + 1);
}

QByteArray FileUrl::stem() const
{
    const QByteArray name = lastPathComponentBytes();
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? name : name.left(dot);
}

FileUrl FileUrl::appending(const QByteArray& component) const
{
    if (isEmpty())
        return {};
    FileUrl url;
    // Lists hold millions of them: joined piece by piece they would keep room to grow.
    url.path_.reserve(path_.size() + 1 + component.size());
    url.path_ += path_;
    if (!path_.endsWith('/'))
        url.path_ += '/';
    url.path_ += component;
    return url;
}

FileUrl FileUrl::deletingLastPathComponent() const
{
    const qsizetype end = endOfName(path_);
    FileUrl url;
    if (end == 0) {
        url.path_ = path_.left(1);
        return url;
    }
    const qsizetype slash = path_.lastIndexOf('/', end - 1);
    url.path_ = path_.left(std::max<qsizetype>(endOfName(path_.left(slash)), 1));
    return url;
}

FileUrl FileUrl::standardized() const
{
    if (isEmpty())
        return {};
    if (isStandardized(path_))
        return *this;
    QList<QByteArray> kept;
    for (const QByteArray& component : path_.split('/')) {
        if (component.isEmpty() || component == ".")
            continue;
        if (component != "..")
            kept.append(component);
        else if (!kept.isEmpty())
            kept.removeLast();
    }
    FileUrl url;
    url.path_ = '/' + kept.join('/');
    return url;
}

} // namespace ferrow
