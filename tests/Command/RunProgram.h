// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Support/Pictures.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
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
        Words variables = environment;
        for (const char* kept : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"})
            if (qEnvironmentVariableIsSet(kept))
                variables.insert(variables.begin(), QByteArray(kept) + '=' + qgetenv(kept));
        const auto pointers = [](const Words& list) {
            std::vector<char*> result;
            for (const QByteArray& word : list)
                result.push_back(const_cast<char*>(word.constData()));
            result.push_back(nullptr);
            return result;
        };
        const std::vector<char*> arguments = pointers(words);
        const std::vector<char*> exported = pointers(variables);
        process_ = ::fork();
        if (process_ != 0)
            return;
        ::dup2(output_.descriptor(), STDOUT_FILENO);
        ::dup2(errors_.descriptor(), STDERR_FILENO);
        for (const int number : {SIGINT, SIGTERM, SIGHUP})
            ::signal(number, SIG_DFL); // Test runners in the background ignore some.
        prepare();
        ::execve(arguments[0], arguments.data(), exported.data());
        ::_exit(127);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Sends `number` once `text` was printed; false when the program ended before.
    bool signalAfter(const QByteArray& text, int number)
    {
        siginfo_t ended{};
        while (!output_.bytes().contains(text)) {
            ::waitid(P_PID, id_t(process_), &ended, WEXITED | WNOHANG | WNOWAIT);
            if (ended.si_pid != 0)
                return false;
            ::usleep(1'000);
        }
        return ::kill(process_, number) == 0;
    }
    Ended wait()
    {
        int status = 0;
        ::waitpid(process_, &status, 0);
        return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), output_.bytes(), errors_.bytes()};
    }

private:
    MemoryFile output_;
    MemoryFile errors_;
    pid_t process_ = -1;
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
