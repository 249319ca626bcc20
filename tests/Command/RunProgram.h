// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/Files.h"
#include "Support/Pictures.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <functional>
#include <vector>

namespace ferrow::test {

using Words = std::vector<QByteArray>;

struct Ended {
    int status = 0; ///< Exit status, or 128 and the number of the signal that killed it.
    QByteArray output;
    QByteArray errors;

    [[nodiscard]] std::vector<QJsonObject> lines() const
    {
        std::vector<QJsonObject> objects;
        for (const QByteArray& line : output.trimmed().split('\n')) {
            objects.push_back(QJsonDocument::fromJson(line).object());
            EXPECT_FALSE(objects.back().isEmpty()) << line.constData();
        }
        return objects;
    }
};

/// A running program with nothing of this process's environment but what sanitizers need.
class Program {
public:
    /// `prepare` runs in the new process before the program does: system calls alone.
    Program(
        const Words& words, const Words& environment, const std::function<void()>& prepare = [] {})
    {
        QStringList all{QStringLiteral("-i")};
        for (const char* kept : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"})
            if (qEnvironmentVariableIsSet(kept))
                all << QString::fromLatin1(kept) + QLatin1Char('=') + qEnvironmentVariable(kept);
        for (const Words& list : {environment, words})
            for (const QByteArray& word : list)
                all << QString::fromUtf8(word);
        process_.setChildProcessModifier([prepare] {
            for (const int number : {SIGINT, SIGTERM, SIGHUP})
                ::signal(number, SIG_DFL); // Test runners in the background ignore some.
            prepare();
        });
        process_.start(QStringLiteral("/usr/bin/env"), all);
    }

    /// Sends `number` once `text` was printed; false when the program ended before.
    bool signalAfter(const QByteArray& text, int number)
    {
        while (!process_.peek(process_.bytesAvailable()).contains(text))
            if (!process_.waitForReadyRead(-1))
                return false;
        return ::kill(pid_t(process_.processId()), number) == 0;
    }
    /// Gives it `input` through a pipe, and the end of it.
    Ended wait(const QByteArray& input = {})
    {
        process_.write(input);
        process_.closeWriteChannel();
        process_.waitForFinished(-1);
        const int signaled = process_.exitStatus() == QProcess::CrashExit ? 128 : 0;
        return {signaled + process_.exitCode(), process_.readAllStandardOutput(), process_.readAllStandardError()};
    }

private:
    QProcess process_;
};

/// Paths below `folder`, hidden ones too, in byte order; folders end in a slash.
inline QList<QByteArray> everythingBelow(const FileUrl& folder)
{
    QList<QByteArray> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path().toStdString())) {
        const QByteArray path = QByteArray::fromStdString(entry.path().string());
        names << path.mid(folder.path().size() + 1) + (entry.is_directory() ? "/" : "");
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace ferrow::test
