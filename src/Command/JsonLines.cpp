// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/JsonLines.h"

#include "Command/Arguments.h"
#include "Command/Output.h"
#include "Platform/Files/FileAccess.h"
#include "Shared/UserFacingError.h"

#include <QJsonDocument>

#include <span>

namespace ferrow::Command {

namespace {

[[noreturn]] void refuseFile(const FileUrl& file, const QString& reason)
{
    // The name comes last: it may hold what looks like a placeholder.
    throw UsageError{onOneLine(reason) + QStringLiteral(" — ") + file.displayPath()};
}

QByteArray contents(const FileUrl& url, std::int64_t mostBytes)
try {
    const OpenedFile file = OpenedFile::open(url);
    if (file.size() > mostBytes)
        throw SystemError{EFBIG, url};
    QByteArray bytes(qsizetype(file.size()), Qt::Uninitialized);
    const std::span room(bytes.data(), std::size_t(bytes.size()));
    bytes.resize(qsizetype(file.source().readAt(0, std::as_writable_bytes(room))));
    return bytes;
} catch (const SystemError& error) {
    refuseFile(url, UserFacingError::message(error));
} catch (const InputOutputError& error) {
    refuseFile(url, UserFacingError::message(error));
}

} // namespace

void readJsonLines(const FileUrl& file, std::int64_t mostBytes, const std::function<void(const JsonLine&)>& take)
{
    const QByteArray bytes = contents(file, mostBytes);
    JsonLine line;
    for (qsizetype start = 0; start < bytes.size(); ++line.number) {
        const qsizetype end = bytes.indexOf('\n', start);
        line.isCutOff = end < 0;
        line.text = QByteArray::fromRawData(bytes.constData() + start, (line.isCutOff ? bytes.size() : end) - start);
        start += line.text.size() + 1;
        if (line.text.trimmed().isEmpty())
            continue;
        const QJsonDocument document = QJsonDocument::fromJson(line.text);
        line.object = document.isObject() ? std::optional(document.object()) : std::nullopt;
        take(line);
    }
}

void refuseLine(const FileUrl& file, std::int64_t number, const QString& reason)
{
    throw UsageError{QStringLiteral("line %1 of ").arg(number) + file.displayPath() + QStringLiteral(": ") + reason};
}

} // namespace ferrow::Command
