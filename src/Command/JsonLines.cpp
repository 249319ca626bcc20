// SPDX-License-Identifier: GPL-3.0-or-later
#include "Command/JsonLines.h"

#include "Command/Arguments.h"
#include "Command/Output.h"
#include "Platform/Files/FileAccess.h"
#include "Shared/UserFacingError.h"

#include <QJsonDocument>

#include <algorithm>
#include <cerrno>
#include <span>
#include <utility>

namespace ferrow::Command {

namespace {

constexpr std::int64_t chunkSize = 1 << 20; // Bytes.

/// The next bytes of `file` from `offset` on; none at its end.
QByteArray chunkAt(const OpenedFile& file, std::int64_t offset)
{
    QByteArray bytes(qsizetype(std::min(chunkSize, file.size() - offset)), Qt::Uninitialized);
    const std::span room(bytes.data(), std::size_t(bytes.size()));
    bytes.resize(qsizetype(file.source().readAt(offset, std::as_writable_bytes(room))));
    return bytes;
}

void tell(JsonLine& line, const QByteArray& text, const std::function<void(const JsonLine&)>& take)
{
    line.text = text;
    if (!text.trimmed().isEmpty()) {
        const QJsonDocument document = QJsonDocument::fromJson(text);
        line.object = document.isObject() ? std::optional(document.object()) : std::nullopt;
        take(line);
    }
    ++line.number;
}

} // namespace

void readJsonLines(const FileUrl& file, std::int64_t mostBytes, const QString& place,
                   const std::function<void(const JsonLine&)>& take)
try {
    const OpenedFile opened = OpenedFile::open(file);
    if (opened.size() > mostBytes)
        throw SystemError{EFBIG, file};
    JsonLine line;
    QByteArray begun; // Of a line whose end is yet to be read.
    std::int64_t offset = 0;
    for (QByteArray chunk; !(chunk = chunkAt(opened, offset)).isEmpty(); offset += chunk.size()) {
        qsizetype start = 0;
        for (qsizetype end = 0; (end = chunk.indexOf('\n', start)) >= 0; start = end + 1)
            tell(line, std::exchange(begun, {}) + chunk.sliced(start, end - start), take);
        begun += chunk.sliced(start);
    }
    line.isCutOff = !begun.isEmpty();
    if (line.isCutOff)
        tell(line, begun, take);
} catch (const SystemError& error) {
    throw UsageError{place + QStringLiteral(": ") + onOneLine(UserFacingError::message(error))};
} catch (const InputOutputError& error) {
    throw UsageError{place + QStringLiteral(": ") + onOneLine(UserFacingError::message(error))};
}

void refuseLine(const QString& place, std::int64_t number, const QString& reason)
{
    throw UsageError{place + QStringLiteral(", line %1: ").arg(number) + reason};
}

} // namespace ferrow::Command
