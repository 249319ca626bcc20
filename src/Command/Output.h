// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Models/BatchExportModels.h"
#include "Platform/Base/FileUrl.h"

#include <QJsonObject>
#include <QString>

#include <chrono>
#include <optional>
#include <span>

namespace ferrow::Command {

/// Puts `url` into `object` as text under `key`, with its bytes in base64 under `key`Bytes where they are not UTF-8.
void insertPath(QJsonObject& object, const QString& key, const FileUrl& url);
/// The bytes that insertPath() put there; empty where there are none.
[[nodiscard]] QByteArray pathBytes(const QJsonObject& object, const QString& key);
/// As a place; absent where that is no whole path.
[[nodiscard]] std::optional<FileUrl> pathIn(const QJsonObject& object, const QString& key);
/// An object with the "path" of `url`.
[[nodiscard]] QJsonObject pathObject(const FileUrl& url);
/// One object a line on standard output, flushed.
void printJson(const QJsonObject& object);
/// What is no text, as it is, on standard output.
void printBytes(std::span<const std::byte> bytes);
/// Text of our own, as it is, on standard output.
void printText(const QString& text);
/// Whether anything meant for standard output was lost: a full disk, a reader that went away.
[[nodiscard]] bool standardOutputFailed();
/// One line on standard output or standard error; characters that would break the line or the terminal are replaced.
void printLine(const QString& text);
void printError(const QString& text);
/// A message of several paragraphs on one line.
[[nodiscard]] QString onOneLine(const QString& message);

/// The progress line on a terminal: count, current file, remaining time. Silent where standard error is no terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool enabled);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const QString& verb, std::int64_t completed, std::int64_t total, const QString& currentFilename);
    /// Makes room for other output.
    void clear();

private:
    bool enabled_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// "about 3 min left", from what has been done in `elapsed`; empty while nothing can be said.
[[nodiscard]] QString remainingTime(std::chrono::duration<double> elapsed, std::int64_t completed, std::int64_t total);

} // namespace ferrow::Command
