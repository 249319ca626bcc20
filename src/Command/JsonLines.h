// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Platform/Base/FileUrl.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

namespace ferrow::Command {

/// One line of a file of JSON Lines.
struct JsonLine {
    std::int64_t number = 1;
    QByteArray text;                   ///< Without its end.
    std::optional<QJsonObject> object; ///< Absent where the line is none.
    bool isCutOff = false;             ///< The last one, without an end: whoever wrote it was stopped.
};

/// Tells of each line of `file` but blank ones. Throws UsageError, which begins with `place`, where the file can't be
/// read or has more than `mostBytes`, and what `take` throws.
void readJsonLines(const FileUrl& file, std::int64_t mostBytes, const QString& place,
                   const std::function<void(const JsonLine&)>& take);

/// Throws UsageError: "`place`, line 3: " and the reason.
[[noreturn]] void refuseLine(const QString& place, std::int64_t number, const QString& reason);

} // namespace ferrow::Command
