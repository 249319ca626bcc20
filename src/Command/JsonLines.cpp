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

QByteArray contents(const FileUrl& url, std::int64_t mostBytes, const QString& place)
try {
    const OpenedFile file = OpenedFile::open(url);
    if (file.size() > mostBytes)
        throw SystemError{EFBIG, url};
    QByteArray bytes(qsizetype(file.size()), Qt::Uninitialized);
    const std::span room(bytes.data(), std::size_t(bytes.size()));
    bytes.resize(qsizetype(file.source().readAt(0, std::as_writable_bytes(room))));
    return bytes;
} catch (const SystemError& error) {
    throw UsageError{place + QStringLiteral(": ") + onOneLine(UserFacingError::message(error))};
} catch (const InputOutputError& error) {
    throw UsageError{place + QStringLiteral(": ") + onOneLine(UserFacingError::message(error))};
}

} // namespace

void readJsonLines(const FileUrl& file, std::int64_t mostBytes, const QString& place,
                   const std::function<void(const JsonLine&)>& take)
{
    const QByteArray bytes = contents(file, mostBytes, place);
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

void refuseLine(const QString& place, std::int64_t number, const QString& reason)
{
    throw UsageError{place + QStringLiteral(", line %1: ").arg(number) + reason};
}

} // namespace ferrow::Command
