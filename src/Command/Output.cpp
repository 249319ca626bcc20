// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/Output.h"

#include "Platform/Base/ByteText.h"

#include <QJsonDocument>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace ferrow::Command {

namespace {

QString printable(const QString& text)
{
    QString line = text;
    for (QChar& character : line)
        if (character.category() == QChar::Other_Control)
            character = QChar(QChar::ReplacementCharacter);
    return line;
}

bool outputFailed = false; ///< All printing happens on the main thread.

void print(std::FILE* stream, const QByteArray& bytes)
{
    const std::size_t written = std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stream);
    const bool flushed = std::fflush(stream) == 0;
    if (stream == stdout && (written != std::size_t(bytes.size()) || !flushed))
        outputFailed = true;
}

int terminalColumns()
{
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

void insertPath(QJsonObject& object, const QString& key, const FileUrl& url)
{
    const QString text = ByteText::display(url.path());
    object.insert(key, text);
    if (text.toUtf8() != url.path())
        object.insert(key + QStringLiteral("Bytes"), QString::fromLatin1(url.path().toBase64()));
}

QByteArray pathBytes(const QJsonObject& object, const QString& key)
{
    const QJsonValue bytes = object.value(key + QStringLiteral("Bytes"));
    return bytes.isString() ? QByteArray::fromBase64(bytes.toString().toLatin1())
                            : object.value(key).toString().toUtf8();
}

std::optional<FileUrl> pathIn(const QJsonObject& object, const QString& key)
{
    const QByteArray path = pathBytes(object, key);
    return path.startsWith('/') ? std::optional(FileUrl::fromPath(path)) : std::nullopt;
}

QJsonObject pathObject(const FileUrl& url)
{
    QJsonObject object;
    insertPath(object, QStringLiteral("path"), url);
    return object;
}

void printJson(const QJsonObject& object)
{
    print(stdout, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void printBytes(std::span<const std::byte> bytes)
{
    print(stdout, QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())));
}

void printText(const QString& text)
{
    print(stdout, text.toUtf8());
}

bool standardOutputFailed()
{
    return outputFailed;
}

void printLine(const QString& text)
{
    print(stdout, printable(text).toUtf8() + '\n');
}

void printError(const QString& text)
{
    print(stderr, printable(text).toUtf8() + '\n');
}

QString onOneLine(const QString& message)
{
    return message.simplified();
}

ProgressLine::ProgressLine(bool enabled) : enabled_(enabled && ::isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine()
{
    clear();
}

void ProgressLine::show(const QString& verb, std::int64_t completed, std::int64_t total, const QString& currentFilename)
{
    if (!enabled_)
        return;
    const QString counts = QStringLiteral("%1 %2 of %3").arg(verb).arg(completed).arg(total);
    const QString remaining = remainingTime(std::chrono::steady_clock::now() - start_, completed, total);
    QString line = counts;
    if (!remaining.isEmpty())
        line += QStringLiteral(" · ") + remaining;
    if (!currentFilename.isEmpty())
        line += QStringLiteral(" · ") + printable(currentFilename);
    clear();
    print(stderr, line.left(terminalColumns() - 1).toUtf8());
    shown_ = true;
}

void ProgressLine::clear()
{
    if (shown_)
        print(stderr, "\r\033[K");
    shown_ = false;
}

QString remainingTime(std::chrono::duration<double> elapsed, std::int64_t completed, std::int64_t total)
{
    // The first seconds say little about the rest.
    if (completed < 1 || completed >= total || elapsed.count() < 1)
        return {};
    const double seconds = elapsed.count() / double(completed) * double(total - completed);
    if (seconds < 90)
        return QStringLiteral("about %1 s left").arg(std::max(1L, std::lround(seconds)));
    const long minutes = std::lround(seconds / 60);
    if (minutes < 90)
        return QStringLiteral("about %1 min left").arg(minutes);
    return QStringLiteral("about %1 h left").arg(std::lround(seconds / 3600));
}

} // namespace ferrow::Command
